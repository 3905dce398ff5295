#include "session/recycle.h"

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <unordered_map>
#include <vector>

#include "ocimem.h"

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

namespace {

// Each thread keeps up to kThreadKept free blocks a class of its own, and its own set-aside
// instance block, so that threads working on environments of their own do not meet at the
// pool's lock for every value; blocks beyond go to the shared lists in batches.
constexpr std::size_t kThreadKept = 32;
constexpr std::size_t kBatch = kThreadKept / 2;

// Keeps block `p` of class `c` (`bytes` bytes) on the shared free list, or gives it back to
// free() when the class keeps enough; called with the lock held. The block is poisoned.
void KeepShared(void* p, std::size_t c, std::size_t bytes) {
  if (g_values.kept[c] * bytes >= kKeptBytes) {
    UnpoisonBlock(p, bytes);
    std::free(p);
    return;
  }
  *static_cast<void**>(p) = g_values.free_list[c];
  g_values.free_list[c] = p;
  ++g_values.kept[c];
}

// Trivially destructible and constant-initialised, so that reaching it costs one
// thread-local access and no check of a guard: the flush at thread end is done by
// ThreadFlush, made live the first time the thread uses its blocks.
struct ThreadBlocks {
  enum State : unsigned char { kUnused, kInUse, kGone };
  void* free_list[kClasses];
  std::size_t kept[kClasses];
  void* set_aside[kClasses];
  State state;
};

thread_local ThreadBlocks t_blocks = {};

// The thread's blocks go to the shared lists when it ends; frees after that (by
// thread-local objects destroyed later) go straight to the shared lists.
struct ThreadFlush {
  bool armed = false;
  ~ThreadFlush();
};

thread_local ThreadFlush t_flush;

ThreadFlush::~ThreadFlush() {
  ThreadBlocks& t = t_blocks;
  t.state = ThreadBlocks::kGone;
  g_values.Lock();
  for (std::size_t c = 0; c < kClasses; ++c) {
    const std::size_t bytes = (c + 1) * kGrain;
    for (void* p = t.free_list[c]; p != nullptr;) {
      void* next = *static_cast<void**>(p);
      KeepShared(p, c, bytes);
      p = next;
    }
    t.free_list[c] = nullptr;
    t.kept[c] = 0;
    if (t.set_aside[c] != nullptr) KeepShared(t.set_aside[c], c, bytes);
    t.set_aside[c] = nullptr;
  }
  g_values.Unlock();
}

// This thread's blocks, or nullptr once they are gone.
[[gnu::noinline]] ThreadBlocks* FirstUse(ThreadBlocks& t) {
  if (t.state == ThreadBlocks::kGone) return nullptr;
  t_flush.armed = true;  // makes the flush live: its destructor runs when the thread ends
  t.state = ThreadBlocks::kInUse;
  return &t;
}

inline ThreadBlocks* Blocks() {
  ThreadBlocks& t = t_blocks;
  if (t.state == ThreadBlocks::kInUse) return &t;
  return FirstUse(t);
}

// Keeps a free block of class c on this thread's list, moving half the list to the shared
// one when it is full. The block is poisoned.
void KeepOnThread(ThreadBlocks& t, void* p, std::size_t c) {
  *static_cast<void**>(p) = t.free_list[c];
  t.free_list[c] = p;
  if (++t.kept[c] <= kThreadKept) return;
  const std::size_t bytes = (c + 1) * kGrain;
  g_values.Lock();
  for (std::size_t i = 0; i < kBatch; ++i) {
    void* block = t.free_list[c];
    t.free_list[c] = *static_cast<void**>(block);
    KeepShared(block, c, bytes);
  }
  g_values.Unlock();
  t.kept[c] -= kBatch;
}

}  // namespace

void* PooledAlloc(std::size_t size) noexcept {
  const std::size_t c = ClassOf(size);
  if (c == kNotPooled) return std::malloc(size == 0 ? 1 : size);
  const std::size_t bytes = (c + 1) * kGrain;
  if (ThreadBlocks* tb = Blocks()) {
    ThreadBlocks& t = *tb;
    if (t.free_list[c] == nullptr) {
      // A batch from the shared list, under one lock.
      g_values.Lock();
      for (std::size_t i = 0; i < kBatch && g_values.free_list[c] != nullptr; ++i) {
        void* block = g_values.free_list[c];
        g_values.free_list[c] = *static_cast<void**>(block);
        --g_values.kept[c];
        *static_cast<void**>(block) = t.free_list[c];
        t.free_list[c] = block;
        ++t.kept[c];
      }
      g_values.Unlock();
    }
    void* block = t.free_list[c];
    if (block != nullptr) {
      t.free_list[c] = *static_cast<void**>(block);
      --t.kept[c];
      UnpoisonBlock(block, bytes);
      return block;
    }
    return std::malloc(bytes);
  }
  g_values.Lock();
  void* block = g_values.free_list[c];
  if (block != nullptr) {
    g_values.free_list[c] = *static_cast<void**>(block);
    --g_values.kept[c];
  }
  g_values.Unlock();
  if (block == nullptr) return std::malloc(bytes);
  UnpoisonBlock(block, bytes);
  return block;
}

void PooledFree(void* p, std::size_t size) noexcept {
  const std::size_t c = ClassOf(size);
  if (p == nullptr || c == kNotPooled) {
    std::free(p);
    return;
  }
  const std::size_t bytes = (c + 1) * kGrain;
  PoisonBlock(p, bytes);
  if (ThreadBlocks* t = Blocks()) {
    KeepOnThread(*t, p, c);
    return;
  }
  g_values.Lock();
  KeepShared(p, c, bytes);
  g_values.Unlock();
}

void PooledFreeInstance(void* p, std::size_t size) noexcept {
  const std::size_t c = ClassOf(size);
  if (p == nullptr || c == kNotPooled) {
    std::free(p);
    return;
  }
  const std::size_t bytes = (c + 1) * kGrain;
  PoisonBlock(p, bytes);
  ThreadBlocks* tb = Blocks();
  if (tb == nullptr) {
    g_values.Lock();
    KeepShared(p, c, bytes);
    g_values.Unlock();
    return;
  }
  // The block freed last is set aside until the next instance block of its class is
  // freed, so that the instance made right after a free is never at the address of the
  // one just freed, on this thread.
  ThreadBlocks& t = *tb;
  void* previous = t.set_aside[c];
  t.set_aside[c] = p;
  if (previous != nullptr) KeepOnThread(t, previous, c);
}

void ForEachKeptBlock(void (*visit)(void* block, void* arg), void* arg) noexcept {
  g_exact.Lock();
  for (void* head : g_exact.head) {
    for (void* p = head; p != nullptr; p = LinkOf(p)) visit(p, arg);
  }
  g_exact.Unlock();
  {
    Pool& pool = ThePool();
    std::lock_guard<std::mutex> lock(pool.mutex);
    for (const auto& sized : pool.free_blocks) {
      for (void* p : sized.second) visit(p, arg);
    }
  }
  g_values.Lock();
  for (void* head : g_values.free_list) {
    for (void* p = head; p != nullptr; p = *static_cast<void**>(p)) visit(p, arg);
  }
  g_values.Unlock();
  const ThreadBlocks& t = t_blocks;
  if (t.state != ThreadBlocks::kInUse) return;
  for (std::size_t c = 0; c < kClasses; ++c) {
    for (void* p = t.free_list[c]; p != nullptr; p = *static_cast<void**>(p)) visit(p, arg);
    if (t.set_aside[c] != nullptr) visit(t.set_aside[c], arg);
  }
}

}  // namespace ocimem

extern "C" void ocimemForEachKeptBlock(void (*visit)(void* block, void* arg), void* arg) try {
  if (visit != nullptr) ocimem::ForEachKeptBlock(visit, arg);
} catch (...) {
}
