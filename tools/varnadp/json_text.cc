#include "json_text.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace varnadp {
namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

// The length of the well-formed UTF-8 sequence at p (1..4), or 0.
size_t Utf8Length(const unsigned char* p, size_t left) {
  const unsigned char c = p[0];
  size_t n;
  unsigned min;
  unsigned code;
  if (c < 0x80) return 1;
  if (c >= 0xC2 && c <= 0xDF) {
    n = 2; min = 0x80; code = c & 0x1F;
  } else if (c >= 0xE0 && c <= 0xEF) {
    n = 3; min = 0x800; code = c & 0x0F;
  } else if (c >= 0xF0 && c <= 0xF4) {
    n = 4; min = 0x10000; code = c & 0x07;
  } else {
    return 0;
  }
  if (left < n) return 0;
  for (size_t k = 1; k < n; ++k) {
    if ((p[k] & 0xC0) != 0x80) return 0;
    code = (code << 6) | (p[k] & 0x3F);
  }
  if (code < min || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  return n;
}

// The bytes a JSON string holds as they are: printable ASCII but the quote
// and the backslash.
struct PlainBytes {
  bool plain[256] = {};
  constexpr PlainBytes() {
    for (unsigned c = 0x20; c < 0x80; ++c) plain[c] = c != '"' && c != '\\';
  }
};
constexpr PlainBytes kPlain;

// Where the next byte at or after p that is not plain stands (end when
// none): sixteen bytes at a time while that many are left.
const unsigned char* NextToEscape(const unsigned char* p, const unsigned char* end) {
#ifdef __SSE2__
  const __m128i space = _mm_set1_epi8(0x20);
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i backslash = _mm_set1_epi8('\\');
  while (end - p >= 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    // Compared as signed bytes, those of 0x80 and above are below 0x20 too.
    const __m128i hits = _mm_or_si128(_mm_cmplt_epi8(block, space),
                                      _mm_or_si128(_mm_cmpeq_epi8(block, quote), _mm_cmpeq_epi8(block, backslash)));
    const unsigned bits = static_cast<unsigned>(_mm_movemask_epi8(hits));
    if (bits != 0) return p + __builtin_ctz(bits);
    p += 16;
  }
#endif
  while (p < end && kPlain.plain[*p]) ++p;
  return p;
}

void AppendUnicodeEscape(unsigned code, std::string* out) {
  out->append("\\u00");
  out->push_back(kHexDigits[(code >> 4) & 0xF]);
  out->push_back(kHexDigits[code & 0xF]);
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

void AppendJsonString(std::string_view text, std::string* out) {
  out->push_back('"');
  const auto* p = reinterpret_cast<const unsigned char*>(text.data());
  const unsigned char* end = p + text.size();
  const unsigned char* run = p;
  while (p < end) {
    p = NextToEscape(p, end);
    if (p == end) break;
    const unsigned char c = *p;
    size_t length = c >= 0x80 ? Utf8Length(p, static_cast<size_t>(end - p)) : 0;
    if (length != 0) {
      p += length;
      continue;
    }
    out->append(reinterpret_cast<const char*>(run), static_cast<size_t>(p - run));
    switch (c) {
      case '"': out->append("\\\""); break;
      case '\\': out->append("\\\\"); break;
      case '\n': out->append("\\n"); break;
      case '\r': out->append("\\r"); break;
      case '\t': out->append("\\t"); break;
      case '\b': out->append("\\b"); break;
      case '\f': out->append("\\f"); break;
      default: AppendUnicodeEscape(c, out); break;
    }
    run = ++p;
  }
  out->append(reinterpret_cast<const char*>(run), static_cast<size_t>(end - run));
  out->push_back('"');
}

void AppendHex(const unsigned char* bytes, size_t size, std::string* out) {
  const size_t at = out->size();
  out->resize(at + 2 * size);
  char* q = &(*out)[at];
  for (size_t i = 0; i < size; ++i) {
    *q++ = kHexDigits[bytes[i] >> 4];
    *q++ = kHexDigits[bytes[i] & 0xF];
  }
}

bool ParseHex(std::string_view hex, std::string* bytes) {
  if (hex.size() % 2 != 0) return false;
  bytes->resize(hex.size() / 2);
  for (size_t i = 0; i < bytes->size(); ++i) {
    const int high = HexValue(hex[2 * i]);
    const int low = HexValue(hex[2 * i + 1]);
    if (high < 0 || low < 0) return false;
    (*bytes)[i] = static_cast<char>(high * 16 + low);
  }
  return true;
}

}  // namespace varnadp
