#include "session/recycle.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#define OCIMEM_POOL_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OCIMEM_POOL_ASAN 1
#endif
#endif

#ifdef OCIMEM_POOL_ASAN
extern "C" void __asan_poison_memory_region(void const volatile* addr, size_t size);
extern "C" void __asan_unpoison_memory_region(void const volatile* addr, size_t size);
#endif

namespace ocimem {
namespace {

// Each block starts with its size, so that a free needs nothing but the pointer; the next
// word links a free block of the exact lists below (the object's own bytes, its cleared
// live tag among them, stay as they are).
constexpr std::size_t kHeader = alignof(std::max_align_t);
static_assert(kHeader >= 2 * sizeof(void*), "room for the size and the link");

// Free blocks of other sizes, by size.
struct Pool {
  std::mutex mutex;
  std::unordered_map<std::size_t, std::vector<void*>> free_blocks;  // by size
};

// Free blocks of the sizes of handles and other small objects (multiples of 8 up to 2 KiB):
// one list per exact size, under a lock held for a few instructions.
constexpr std::size_t kExactGrain = 8;
constexpr std::size_t kExactMax = 2048;

bool IsExact(std::size_t size) { return size <= kExactMax && size % kExactGrain == 0; }

void*& LinkOf(void* block) { return static_cast<void**>(block)[1]; }

struct SpinLock {
  std::atomic<bool> held{false};
  void Lock() noexcept {
    while (held.exchange(true, std::memory_order_acquire)) {
      while (held.load(std::memory_order_relaxed)) std::this_thread::yield();
    }
  }
  void Unlock() noexcept { held.store(false, std::memory_order_release); }
};

struct ExactLists : SpinLock {
  void* head[kExactMax / kExactGrain + 1] = {};
};

// Constant-initialised and never destroyed.
ExactLists g_exact;

// Never destroyed: objects may still be freed while static destructors run.
Pool& ThePool() {
  static Pool* pool = new Pool;
  return *pool;
}

// The value pool: size classes of 64 bytes up to kPooledMax, each a list of free blocks
// linked through their first word.  Constant-initialised and never destroyed, like the
// pools above.
constexpr std::size_t kGrain = 64;
constexpr std::size_t kClasses = kPooledMax / kGrain;
// Bytes of free blocks a class keeps at most; a block freed beyond goes back to free().
constexpr std::size_t kKeptBytes = 256 * 1024;

struct ValuePool : SpinLock {
  void* free_list[kClasses] = {};
  std::size_t kept[kClasses] = {};
  void* set_aside[kClasses] = {};  // the instance block freed last (PooledFreeInstance)
};

ValuePool g_values;

// A free block is poisoned for the address sanitizer, so that a stale pointer into it still
// reads as freed memory; all but its first word, the link, which the leak checker follows.
void PoisonBlock(void* p, std::size_t n) {
#ifdef OCIMEM_POOL_ASAN
  __asan_poison_memory_region(static_cast<unsigned char*>(p) + sizeof(void*), n - sizeof(void*));
#else
  (void)p;
  (void)n;
#endif
}
void UnpoisonBlock(void* p, std::size_t n) {
#ifdef OCIMEM_POOL_ASAN
  __asan_unpoison_memory_region(p, n);
#else
  (void)p;
  (void)n;
#endif
}

}  // namespace

void* RecycledAlloc(std::size_t size) noexcept {
  if (IsExact(size)) {
    void* block = nullptr;
    g_exact.Lock();
    void*& head = g_exact.head[size / kExactGrain];
    if (head != nullptr) {
      block = head;
      head = LinkOf(block);
    }
    g_exact.Unlock();
    if (block != nullptr) return static_cast<unsigned char*>(block) + kHeader;
  } else {
    Pool& pool = ThePool();
    std::lock_guard<std::mutex> lock(pool.mutex);
    auto it = pool.free_blocks.find(size);
    if (it != pool.free_blocks.end() && !it->second.empty()) {
      void* block = it->second.back();
      it->second.pop_back();
      return static_cast<unsigned char*>(block) + kHeader;
    }
  }
  void* block = ::operator new(size + kHeader, std::nothrow);
  if (block == nullptr) return nullptr;
  *static_cast<std::size_t*>(block) = size;
  return static_cast<unsigned char*>(block) + kHeader;
}

void RecycledFree(void* p) noexcept {
  if (p == nullptr) return;
  void* block = static_cast<unsigned char*>(p) - kHeader;
  std::size_t size = *static_cast<std::size_t*>(block);
  if (IsExact(size)) {
    g_exact.Lock();
    void*& head = g_exact.head[size / kExactGrain];
    LinkOf(block) = head;
    head = block;
    g_exact.Unlock();
    return;
  }
  Pool& pool = ThePool();
  std::lock_guard<std::mutex> lock(pool.mutex);
  try {
    pool.free_blocks[size].push_back(block);
  } catch (...) {
    // No room to remember it: give it back, stale pointers to it are then unchecked.
    ::operator delete(block);
  }
}

namespace {

// The size class of a block of `size` bytes, or kNotPooled for a size the pool leaves to
// malloc and free.
constexpr std::size_t kNotPooled = ~std::size_t{0};
std::size_t ClassOf(std::size_t size) {
  return size == 0 || size > kPooledMax ? kNotPooled : (size - 1) / kGrain;
}

}  // namespace

void* PooledAlloc(std::size_t size) noexcept {
  const std::size_t c = ClassOf(size);
  if (c == kNotPooled) return std::malloc(size == 0 ? 1 : size);
  g_values.Lock();
  void* block = g_values.free_list[c];
  if (block != nullptr) {
    g_values.free_list[c] = *static_cast<void**>(block);
    --g_values.kept[c];
    g_values.Unlock();
    UnpoisonBlock(block, (c + 1) * kGrain);
    return block;
  }
  g_values.Unlock();
  return std::malloc((c + 1) * kGrain);
}

namespace {

// Keeps block `p` of class `c` (`bytes` bytes) on its free list, or gives it back to free()
// when the class keeps enough; called with the lock held, which it releases.
void KeepAndUnlock(void* p, std::size_t c, std::size_t bytes) {
  if (g_values.kept[c] * bytes >= kKeptBytes) {
    g_values.Unlock();
    std::free(p);
    return;
  }
  *static_cast<void**>(p) = g_values.free_list[c];
  PoisonBlock(p, bytes);
  g_values.free_list[c] = p;
  ++g_values.kept[c];
  g_values.Unlock();
}

}  // namespace

void PooledFree(void* p, std::size_t size) noexcept {
  const std::size_t c = ClassOf(size);
  if (p == nullptr || c == kNotPooled) {
    std::free(p);
    return;
  }
  g_values.Lock();
  KeepAndUnlock(p, c, (c + 1) * kGrain);
}

void PooledFreeInstance(void* p, std::size_t size) noexcept {
  const std::size_t c = ClassOf(size);
  if (p == nullptr || c == kNotPooled) {
    std::free(p);
    return;
  }
  const std::size_t bytes = (c + 1) * kGrain;
  PoisonBlock(p, bytes);
  g_values.Lock();
  void* previous = g_values.set_aside[c];
  g_values.set_aside[c] = p;
  if (previous == nullptr) {
    g_values.Unlock();
    return;
  }
  UnpoisonBlock(previous, bytes);
  KeepAndUnlock(previous, c, bytes);
}

}  // namespace ocimem
