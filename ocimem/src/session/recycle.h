// Memory for the objects callers hold by address (handles, collections, iterators, LOB
// locators).  A freed block is kept for the next object of the same size instead of going
// back to the system allocator, with its live tag cleared, so that a stale pointer a caller
// passes in later reads "not alive" and is refused, instead of reading freed memory.
//
// Beside it, a pool for the values that are made and freed many times for each object a
// host reads (object instances, their null structures, strings and raws): blocks from
// malloc, sorted into size classes, a freed one kept (up to a limit per class) for the next
// request of its class.  These blocks carry no live tag: nothing reads them once freed.
#ifndef OCIMEM_SRC_SESSION_RECYCLE_H
#define OCIMEM_SRC_SESSION_RECYCLE_H

#include <cstddef>
#include <new>

namespace ocimem {

// nullptr when out of memory.
void* RecycledAlloc(std::size_t size) noexcept;
// `p` from RecycledAlloc, or nullptr.
void RecycledFree(void* p) noexcept;

// Largest request the value pool keeps blocks for; larger ones go to malloc and free.
constexpr std::size_t kPooledMax = 1024;
// A block of at least `size` bytes, aligned for any type; nullptr when out of memory.  The
// block comes from malloc, so it may also be released with std::free.
void* PooledAlloc(std::size_t size) noexcept;
// Releases `p` from PooledAlloc(size) (the same size), or nullptr.
void PooledFree(void* p, std::size_t size) noexcept;
// PooledFree for the block of an object instance: it is kept aside until the next instance
// block of its class is freed, so that the instance made right after a free never takes
// the address of the one freed (a host sees a new instance at a new address, and a stale
// pointer to the freed one does not name the next one).
void PooledFreeInstance(void* p, std::size_t size) noexcept;
// Calls `visit` with the address, as the allocator gave it, of every block kept for reuse:
// of RecycledAlloc (from operator new) and of the value pool (from malloc), the calling
// thread's own included (ocimemForEachKeptBlock).  `visit` runs under the pools' locks.
void ForEachKeptBlock(void (*visit)(void* block, void* arg), void* arg) noexcept;

}  // namespace ocimem

// Class-specific allocation for a type with a `live` tag.  The tag is cleared here rather
// than in the destructor, where the compiler may drop the store as dead.
#define OCIMEM_RECYCLED(Type)                                                        \
  static void* operator new(std::size_t size) {                                      \
    void* p = ::ocimem::RecycledAlloc(size);                                         \
    if (p == nullptr) throw std::bad_alloc();                                        \
    return p;                                                                        \
  }                                                                                  \
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept {      \
    return ::ocimem::RecycledAlloc(size);                                            \
  }                                                                                  \
  static void operator delete(void* p) noexcept {                                    \
    if (p != nullptr) static_cast<Type*>(p)->live = 0;                               \
    ::ocimem::RecycledFree(p);                                                       \
  }                                                                                  \
  static void operator delete(void* p, const std::nothrow_t&) noexcept {             \
    Type::operator delete(p);                                                        \
  }

#endif  // OCIMEM_SRC_SESSION_RECYCLE_H
