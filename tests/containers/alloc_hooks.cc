// Replacement of the global allocation functions for the container tests.
// Every block carries a small header saying whether it was tracked, so the
// matching delete can keep the live count. All forms go through malloc and
// free, which keeps ASan's leak and use-after-free checks working.
#include "alloc_hooks.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "containers/kel_mem.h"

namespace {

// Keeps the user part aligned like max_align_t.
constexpr std::size_t kHeaderSize = alignof(std::max_align_t) > 16 ? alignof(std::max_align_t) : 16;
constexpr unsigned kUntracked = 0x55d0a11cu;
constexpr unsigned kTracked = 0x7acced01u;

std::atomic<long> g_live{0};
std::atomic<unsigned long> g_attempts{0};
std::atomic<unsigned long> g_fail_at{0};
std::atomic<bool> g_injected{false};

// Counts one tracked attempt; true when it is the one to fail.
bool ShouldFail() {
  const unsigned long attempt = ++g_attempts;
  const unsigned long fail_at = g_fail_at.load();
  if (fail_at != 0 && attempt == fail_at) {
    g_injected = true;
    return true;
  }
  return false;
}

void* Allocate(std::size_t size, bool tracked) {
  void* raw = std::malloc(size + kHeaderSize);
  if (raw == nullptr) return nullptr;
  *static_cast<unsigned*>(raw) = tracked ? kTracked : kUntracked;
  if (tracked) ++g_live;
  return static_cast<char*>(raw) + kHeaderSize;
}

void Release(void* p) {
  if (p == nullptr) return;
  char* raw = static_cast<char*>(p) - kHeaderSize;
  const unsigned tag = *reinterpret_cast<unsigned*>(raw);
  if (tag == kTracked) --g_live;
  std::free(raw);
}

void* AllocateOrThrow(std::size_t size) {
  void* p = Allocate(size, false);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}

void* AllocateTracked(std::size_t size) {
  if (ShouldFail()) return nullptr;
  return Allocate(size, true);
}

// The C-heap hooks count blocks, not bytes: a successful realloc of an
// existing block keeps the count, a failed one leaves the block in place.
void* TrackedCHeapRealloc(void* p, std::size_t size) {
  if (ShouldFail()) return nullptr;
  if (p != nullptr) return std::realloc(p, size);
  void* block = std::malloc(size);
  if (block != nullptr) ++g_live;
  return block;
}

void TrackedCHeapFree(void* p) {
  if (p == nullptr) return;
  --g_live;
  std::free(p);
}

struct InstallCHeapHooks {
  InstallCHeapHooks() {
    gKelCHeapRealloc = TrackedCHeapRealloc;
    gKelCHeapFree = TrackedCHeapFree;
  }
} g_install_cheap_hooks;

}  // namespace

namespace kel_test {

long LiveTrackedBlocks() { return g_live.load(); }

unsigned long TrackedAttempts() { return g_attempts.load(); }

void ArmFailure(unsigned long n) {
  g_injected = false;
  g_attempts = 0;
  g_fail_at = n;
}

bool DisarmFailure() {
  g_fail_at = 0;
  return g_injected.exchange(false);
}

}  // namespace kel_test

void* operator new(std::size_t size) { return AllocateOrThrow(size); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return AllocateTracked(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return AllocateTracked(size); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
