// Finds where a record of a type ends in a stream, without reading it into
// an object: it follows the type's fields as the writer lays them out, so a
// terminator inside a RAW or BLOB value (whose bytes are not escaped) is not
// taken for the record's end. Records the writer would not have written (a
// field missing, say) are not scanned; the caller then falls back to the
// first unescaped terminator.
#ifndef TOOLS_VARNADP_RECORD_SCANNER_H
#define TOOLS_VARNADP_RECORD_SCANNER_H

#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

#include "shape.h"
#include "special_strings.h"

namespace varnadp {

class RecordScanner {
 public:
  RecordScanner(const Shape& root, const SpecialStrings& special);

  enum class Result { kEnd, kNeedMore, kNoMatch };
  // Scans the record that starts at `from`. kEnd: *end is where its
  // terminator starts (or text.size() when `last` and the text ends there).
  // kNeedMore: the text ends inside the record and more may come (not `last`).
  // Where the "|" bytes of binary values stand: after a count, for a null
  // BLOB, and for a null RAW.
  struct BinaryMarks {
    std::vector<size_t> length_ends;  // after a count, or a null BLOB's
    std::vector<size_t> null_raws;
    void clear() {
      length_ends.clear();
      null_raws.clear();
    }
  };
  // With marks, the binary values' bars are added to it.
  Result Scan(std::string_view text, size_t from, bool last, size_t* end,
              BinaryMarks* marks = nullptr) const;

 private:
  enum class Step { kOk, kShort, kNoMatch };
  Step Fields(const Shape& shape, size_t* pos) const;
  Step Field(const Shape& field, size_t* pos) const;
  Step Text(size_t* pos) const;
  size_t NextStop(const char* data, size_t at, size_t size) const;
  Step Binary(const Column_Def& def, size_t* pos) const;
  // Whether `what` (not empty) stands whole at pos.
  bool At(size_t pos, std::string_view what) const {
    if (what.empty() || text_.size() - pos < what.size()) return false;
    if (what.size() == 1) return text_[pos] == what[0];
    return std::memcmp(text_.data() + pos, what.data(), what.size()) == 0;
  }

  const Shape& root_;
  const SpecialStrings& special_;
  // The bytes where a text value may end or hold a release: the first bytes
  // of the release, the delimiter and the terminator, and the group end.
  bool stops_[256] = {};
  // The same four bytes, each repeated over 16 bytes, for a scan 16 bytes at
  // a time.
  alignas(16) unsigned char stop_blocks_[4][16] = {};
  // The text being scanned, for the duration of Scan.
  mutable std::string_view text_;
  mutable BinaryMarks* marks_ = nullptr;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_RECORD_SCANNER_H
