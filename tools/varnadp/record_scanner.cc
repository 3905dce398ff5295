#include "record_scanner.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace varnadp {
namespace {

constexpr std::string_view kGroupStart = "[";
constexpr std::string_view kGroupEnd = "]";
constexpr std::string_view kLengthEnd = "|";  // after a binary value's count

bool IsBinary(const Column_Def& def) {
  return def.DataType == SQLT_BIN || def.DataType == SQLT_LBI || def.DataType == SQLT_BLOB;
}

}  // namespace

RecordScanner::RecordScanner(const Shape& root, const SpecialStrings& special)
    : root_(root), special_(special) {
  for (const std::string_view s :
       {std::string_view(special.release), std::string_view(special.delimiter),
        std::string_view(special.terminator), kGroupEnd}) {
    if (!s.empty()) stops_[static_cast<unsigned char>(s[0])] = true;
  }
  // Each block holds one stop byte; blocks beyond the distinct bytes repeat
  // the group end, which is always one.
  int n = 0;
  for (unsigned c = 0; c < 256 && n < 4; ++c) {
    if (stops_[c]) std::memset(stop_blocks_[n++], static_cast<int>(c), 16);
  }
  while (n < 4) std::memset(stop_blocks_[n++], ']', 16);
}

// The first stop byte at or after `at` in data[0, size), or size.
size_t RecordScanner::NextStop(const char* data, size_t at, size_t size) const {
#ifdef __SSE2__
  const __m128i b0 = _mm_load_si128(reinterpret_cast<const __m128i*>(stop_blocks_[0]));
  const __m128i b1 = _mm_load_si128(reinterpret_cast<const __m128i*>(stop_blocks_[1]));
  const __m128i b2 = _mm_load_si128(reinterpret_cast<const __m128i*>(stop_blocks_[2]));
  const __m128i b3 = _mm_load_si128(reinterpret_cast<const __m128i*>(stop_blocks_[3]));
  for (; at + 16 <= size; at += 16) {
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + at));
    const __m128i hit = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, b0), _mm_cmpeq_epi8(v, b1)),
                                     _mm_or_si128(_mm_cmpeq_epi8(v, b2), _mm_cmpeq_epi8(v, b3)));
    const unsigned bits = static_cast<unsigned>(_mm_movemask_epi8(hit));
    if (bits != 0) return at + static_cast<size_t>(__builtin_ctz(bits));
  }
#endif
  while (at < size && !stops_[static_cast<unsigned char>(data[at])]) ++at;
  return at;
}

RecordScanner::Result RecordScanner::Scan(std::string_view text, size_t from, bool last,
                                          size_t* end, BinaryMarks* marks) const {
  text_ = text;
  marks_ = marks;
  size_t pos = from;
  const Step step = Fields(root_, &pos);
  if (step == Step::kShort) return last ? Result::kNoMatch : Result::kNeedMore;
  if (step == Step::kNoMatch) return Result::kNoMatch;
  if (pos == text.size()) {
    if (!last) return Result::kNeedMore;
    *end = pos;
    return Result::kEnd;
  }
  if (text.size() - pos < special_.terminator.size() &&
      std::memcmp(text.data() + pos, special_.terminator.data(), text.size() - pos) == 0) {
    return last ? Result::kNoMatch : Result::kNeedMore;
  }
  if (!At(pos, special_.terminator)) return Result::kNoMatch;
  *end = pos;
  return Result::kEnd;
}

RecordScanner::Step RecordScanner::Fields(const Shape& shape, size_t* pos) const {
  if (shape.kind == Shape::Kind::kCollection) {
    // Items, one after another: none when the group ends (or the record does).
    if (*pos == text_.size()) return Step::kShort;
    if (At(*pos, kGroupEnd) || At(*pos, special_.terminator)) return Step::kOk;
    for (;;) {
      const Step step = Field(shape.members[0], pos);
      if (step != Step::kOk) return step;
      if (!At(*pos, special_.delimiter)) return *pos == text_.size() ? Step::kShort : Step::kOk;
      *pos += special_.delimiter.size();
    }
  }
  bool first = true;
  for (const Shape& member : shape.members) {
    if (!first) {
      if (*pos == text_.size()) return Step::kShort;
      if (!At(*pos, special_.delimiter)) return Step::kNoMatch;
      *pos += special_.delimiter.size();
    }
    first = false;
    const Step step = Field(member, pos);
    if (step != Step::kOk) return step;
  }
  return Step::kOk;
}

RecordScanner::Step RecordScanner::Field(const Shape& field, size_t* pos) const {
  if (field.IsComplex()) {
    if (*pos == text_.size()) return Step::kShort;
    if (!At(*pos, kGroupStart)) return Step::kOk;  // a null object or collection
    *pos += kGroupStart.size();
    const Step step = Fields(field, pos);
    if (step != Step::kOk) return step;
    if (*pos == text_.size()) return Step::kShort;
    if (!At(*pos, kGroupEnd)) return Step::kNoMatch;
    *pos += kGroupEnd.size();
    return Step::kOk;
  }
  return IsBinary(*field.def) ? Binary(*field.def, pos) : Text(pos);
}

// Escaped text up to the next delimiter, group end or terminator.
RecordScanner::Step RecordScanner::Text(size_t* pos) const {
  const std::string& release = special_.release;
  const char* data = text_.data();
  const size_t size = text_.size();
  size_t at = *pos;
  while (at < size) {
    at = NextStop(data, at, size);
    if (at == size) break;
    const char c = data[at];
    if (At(at, release)) {
      at += release.size();
      if (at == size) {
        *pos = at;
        return Step::kShort;
      }
      // The special string it stands before, in the order the reader tries them.
      if (At(at, release)) {
        at += release.size();
      } else if (At(at, kGroupEnd)) {
        at += kGroupEnd.size();
      } else if (At(at, special_.delimiter)) {
        at += special_.delimiter.size();
      } else if (At(at, kGroupStart)) {
        at += kGroupStart.size();
      } else if (At(at, special_.terminator)) {
        at += special_.terminator.size();
      }
      continue;
    }
    if (At(at, special_.delimiter) || c == ']' || At(at, special_.terminator)) {
      *pos = at;
      return Step::kOk;
    }
    ++at;
  }
  *pos = at;
  return Step::kShort;
}

// "count|bytes", "|" for null, or nothing.
RecordScanner::Step RecordScanner::Binary(const Column_Def& def, size_t* pos) const {
  if (*pos == text_.size()) return Step::kShort;
  if (At(*pos, kLengthEnd)) {
    if (marks_ != nullptr) {
      (def.DataType == SQLT_BLOB ? marks_->length_ends : marks_->null_raws).push_back(*pos);
    }
    *pos += kLengthEnd.size();
    return Step::kOk;
  }
  size_t count = 0;
  size_t digits = 0;
  while (*pos < text_.size() && text_[*pos] >= '0' && text_[*pos] <= '9') {
    if (count > (size_t{1} << 40)) return Step::kNoMatch;
    count = count * 10 + static_cast<size_t>(text_[*pos] - '0');
    ++*pos;
    ++digits;
  }
  if (*pos == text_.size()) return Step::kShort;
  if (digits == 0) {
    // A null value written as nothing, as at the end of an object.
    return At(*pos, special_.delimiter) || At(*pos, kGroupEnd) || At(*pos, special_.terminator)
               ? Step::kOk
               : Step::kNoMatch;
  }
  if (!At(*pos, kLengthEnd)) return Step::kNoMatch;
  if (marks_ != nullptr) marks_->length_ends.push_back(*pos);
  *pos += kLengthEnd.size();
  if (text_.size() - *pos < count) return Step::kShort;
  *pos += count;
  return Step::kOk;
}

}  // namespace varnadp
