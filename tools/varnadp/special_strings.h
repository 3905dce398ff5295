// The delimiter, terminator and release of a run: read from the command line
// with C-style escapes, handed to the adapter as a DB_SPECIAL_STRINGS record,
// and used to find where each record of a stream ends.
#ifndef TOOLS_VARNADP_SPECIAL_STRINGS_H
#define TOOLS_VARNADP_SPECIAL_STRINGS_H

#include <cstddef>
#include <string>
#include <string_view>

#include <varnadp.h>

namespace varnadp {

// Reads "\r", "\n", "\t", "\\", "\0", "\xHH" and plain bytes. False with
// *error set for an unknown or incomplete escape.
bool Unescape(std::string_view text, std::string* bytes, std::string* error);

struct SpecialStrings {
  std::string delimiter = "|";
  std::string terminator = "\r\n";
  std::string release = "!";

  // False with *error set when a string is empty or too long for the
  // adapter (32 bytes; the release one byte).
  bool Validate(std::string* error) const;
  void Fill(DB_SPECIAL_STRINGS* record) const;

  // The offset of the first terminator at or after `from` that no release
  // stands before, or text.size() when there is none.
  size_t FindRecordEnd(std::string_view text, size_t from) const;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_SPECIAL_STRINGS_H
