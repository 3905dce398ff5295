#include "special_strings.h"

#include <cstring>

namespace varnadp {
namespace {

constexpr size_t kMaxSpecial = 32;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool At(std::string_view text, size_t pos, const std::string& what) {
  return !what.empty() && text.size() - pos >= what.size() &&
         std::memcmp(text.data() + pos, what.data(), what.size()) == 0;
}

}  // namespace

bool Unescape(std::string_view text, std::string* bytes, std::string* error) {
  bytes->clear();
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes->push_back(text[i]);
      continue;
    }
    if (++i == text.size()) {
      *error = "a '\\' ends the text";
      return false;
    }
    switch (text[i]) {
      case 'r': bytes->push_back('\r'); break;
      case 'n': bytes->push_back('\n'); break;
      case 't': bytes->push_back('\t'); break;
      case '0': bytes->push_back('\0'); break;
      case '\\': bytes->push_back('\\'); break;
      case 'x': {
        const int high = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? HexDigit(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
          *error = "\\x needs two hex digits";
          return false;
        }
        bytes->push_back(static_cast<char>(high * 16 + low));
        i += 2;
        break;
      }
      default:
        *error = std::string("unknown escape \\") + text[i];
        return false;
    }
  }
  return true;
}

bool SpecialStrings::Validate(std::string* error) const {
  if (delimiter.empty() || delimiter.size() > kMaxSpecial) {
    *error = "the delimiter must have 1 to 32 bytes";
    return false;
  }
  if (terminator.empty() || terminator.size() > kMaxSpecial) {
    *error = "the terminator must have 1 to 32 bytes";
    return false;
  }
  if (release.size() != 1) {
    *error = "the release character must be one byte";
    return false;
  }
  return true;
}

void SpecialStrings::Fill(DB_SPECIAL_STRINGS* record) const {
  std::memset(record, 0, sizeof *record);
  const std::string delimiter_length = std::to_string(delimiter.size());
  const std::string terminator_length = std::to_string(terminator.size());
  std::memcpy(record->szDelimiterLen, delimiter_length.data(), delimiter_length.size());
  std::memcpy(record->szTerminatorLen, terminator_length.data(), terminator_length.size());
  std::memcpy(record->szDelimiter, delimiter.data(), delimiter.size());
  std::memcpy(record->szTerminator, terminator.data(), terminator.size());
  std::memcpy(record->szRelease, release.data(), release.size());
}

size_t SpecialStrings::FindRecordEnd(std::string_view text, size_t from) const {
  // The strings a release may stand before, in the order the reader tries them.
  const std::string group_end = "]";
  const std::string group_start = "[";
  const std::string* escaped[] = {&release, &group_end, &delimiter, &group_start, &terminator};
  const unsigned char first_release = static_cast<unsigned char>(release[0]);
  const unsigned char first_terminator = static_cast<unsigned char>(terminator[0]);
  size_t pos = from;
  while (pos < text.size()) {
    const unsigned char c = static_cast<unsigned char>(text[pos]);
    if (c != first_release && c != first_terminator) {
      ++pos;
      continue;
    }
    if (At(text, pos, release)) {
      pos += release.size();
      for (const std::string* special : escaped) {
        if (At(text, pos, *special)) {
          pos += special->size();
          break;
        }
      }
      continue;
    }
    if (At(text, pos, terminator)) return pos;
    ++pos;
  }
  return text.size();
}

}  // namespace varnadp
