// The mix of an address used by the tables that map live values to what is known of them
// (descriptors, standalone instances): addresses from one allocator share their low bits,
// so these are spread over all of the word before a table takes the bits it needs.
#ifndef OCIMEM_SRC_SESSION_POINTER_HASH_H
#define OCIMEM_SRC_SESSION_POINTER_HASH_H

#include <cstddef>
#include <cstdint>

namespace ocimem {

inline std::size_t MixPointer(const void* p) {
  auto v = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(p));
  v ^= v >> 29;
  v *= 0xBF58476D1CE4E5B9ULL;
  v ^= v >> 32;
  return static_cast<std::size_t>(v);
}

}  // namespace ocimem

#endif  // OCIMEM_SRC_SESSION_POINTER_HASH_H
