// Equality of short byte runs (attribute names, format masks) compared in line, a word at
// a time, instead of by a call to memcmp.
#ifndef OCIMEM_SRC_SESSION_SAME_BYTES_H
#define OCIMEM_SRC_SESSION_SAME_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ocimem {

inline bool SameBytes(const char* a, const char* b, std::size_t n) {
  auto load64 = [](const char* p) {
    std::uint64_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
  };
  auto load32 = [](const char* p) {
    std::uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
  };
  if (n >= 8) {
    for (std::size_t i = 0; i + 8 <= n; i += 8) {
      if (load64(a + i) != load64(b + i)) return false;
    }
    // The last (possibly overlapping) word covers the rest.
    return load64(a + n - 8) == load64(b + n - 8);
  }
  if (n >= 4) return load32(a) == load32(b) && load32(a + n - 4) == load32(b + n - 4);
  for (std::size_t i = 0; i < n; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

}  // namespace ocimem

#endif  // OCIMEM_SRC_SESSION_SAME_BYTES_H
