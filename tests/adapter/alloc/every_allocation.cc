// The replaced allocation functions of every_allocation.h. The real work is
// done by the C library's allocator, or under the address sanitizer by the
// sanitizer's, which keeps its leak and use-after-free checks working.
#include "every_allocation.h"

#include <dlfcn.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define EVERY_ALLOCATION_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define EVERY_ALLOCATION_ASAN 1
#endif
#endif

namespace {

using MallocFn = void* (*)(std::size_t);
using CallocFn = void* (*)(std::size_t, std::size_t);
using ReallocFn = void* (*)(void*, std::size_t);
using FreeFn = void (*)(void*);

#ifdef EVERY_ALLOCATION_ASAN
// The sanitizer's functions, found behind ours. dlsym may itself ask for
// memory before they are known: that comes from a small static arena and is
// never given back.
MallocFn g_malloc = nullptr;
CallocFn g_calloc = nullptr;
ReallocFn g_realloc = nullptr;
FreeFn g_free = nullptr;
alignas(std::max_align_t) unsigned char g_arena[16384];
std::size_t g_arena_used = 0;
bool g_resolving = false;

void* FromArena(std::size_t size) {
  const std::size_t step = (size + alignof(std::max_align_t) - 1) & ~(alignof(std::max_align_t) - 1);
  if (g_arena_used + step > sizeof g_arena) return nullptr;
  void* p = g_arena + g_arena_used;
  g_arena_used += step;
  return p;
}
bool InArena(const void* p) {
  const auto* b = static_cast<const unsigned char*>(p);
  return b >= g_arena && b < g_arena + sizeof g_arena;
}
bool Resolve() {
  if (g_free != nullptr) return true;
  if (g_resolving) return false;
  g_resolving = true;
  g_malloc = reinterpret_cast<MallocFn>(dlsym(RTLD_NEXT, "malloc"));
  g_calloc = reinterpret_cast<CallocFn>(dlsym(RTLD_NEXT, "calloc"));
  g_realloc = reinterpret_cast<ReallocFn>(dlsym(RTLD_NEXT, "realloc"));
  g_free = reinterpret_cast<FreeFn>(dlsym(RTLD_NEXT, "free"));
  g_resolving = false;
  return g_free != nullptr;
}
void* RealMalloc(std::size_t n) { return Resolve() ? g_malloc(n) : FromArena(n); }
void* RealCalloc(std::size_t c, std::size_t n) {
  if (Resolve()) return g_calloc(c, n);
  void* p = FromArena(c * n);  // the arena is zero and never reused
  return p;
}
void* RealRealloc(void* p, std::size_t n) { return Resolve() ? g_realloc(p, n) : nullptr; }
void RealFree(void* p) {
  if (p == nullptr || InArena(p)) return;
  if (Resolve()) g_free(p);
}
#else
}  // namespace
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* p, std::size_t size);
void __libc_free(void* p);
}
namespace {
void* RealMalloc(std::size_t n) { return __libc_malloc(n); }
void* RealCalloc(std::size_t c, std::size_t n) { return __libc_calloc(c, n); }
void* RealRealloc(void* p, std::size_t n) { return __libc_realloc(p, n); }
void RealFree(void* p) { __libc_free(p); }
#endif

// Per thread, so that another thread's allocations neither count nor fail.
thread_local bool t_counting = false;
thread_local bool t_injected = false;
thread_local bool t_watching = false;
thread_local unsigned long t_attempts = 0;
thread_local unsigned long t_fail_at = 0;
thread_local every_allocation::Kind t_failed_kind = every_allocation::kNew;

bool ShouldFail(every_allocation::Kind kind) {
  if (!t_counting) return false;
  if (++t_attempts != t_fail_at) return false;
  t_injected = true;
  t_failed_kind = kind;
  return true;
}

// The watched blocks: an open-addressed set of addresses that needs no memory
// of its own. 0 is an empty slot, 1 a removed one.
constexpr std::size_t kSlots = std::size_t{1} << 20;
std::uintptr_t g_watched[kSlots];
long g_live = 0;

std::size_t SlotOf(std::uintptr_t a) { return ((a >> 4) * 0x9e3779b97f4a7c15ULL) >> 44; }

void Remember(void* p) {
  if (!t_watching || p == nullptr) return;
  const auto a = reinterpret_cast<std::uintptr_t>(p);
  for (std::size_t i = SlotOf(a);; i = (i + 1) & (kSlots - 1)) {
    if (g_watched[i] <= 1) {
      g_watched[i] = a;
      ++g_live;
      return;
    }
  }
}

bool Forget(void* p) {
  if (p == nullptr || g_live == 0) return false;
  const auto a = reinterpret_cast<std::uintptr_t>(p);
  for (std::size_t i = SlotOf(a);; i = (i + 1) & (kSlots - 1)) {
    if (g_watched[i] == 0) return false;
    if (g_watched[i] == a) {
      g_watched[i] = 1;
      --g_live;
      return true;
    }
  }
}

void* Allocate(std::size_t size, every_allocation::Kind kind) {
  if (ShouldFail(kind)) return nullptr;
  void* p = RealMalloc(size == 0 ? 1 : size);
  Remember(p);
  return p;
}

void Release(void* p) {
  Forget(p);
  RealFree(p);
}

}  // namespace

namespace every_allocation {

const char* KindName(Kind kind) {
  static const char* const kNames[kKinds] = {"new", "nothrow new", "malloc", "calloc", "realloc"};
  return kNames[kind];
}

void Arm(unsigned long n) {
  t_injected = false;
  t_attempts = 0;
  t_fail_at = n;
  t_counting = true;
}

bool Disarm() {
  t_counting = false;
  t_fail_at = 0;
  const bool injected = t_injected;
  t_injected = false;
  return injected;
}

unsigned long Attempts() { return t_attempts; }

Kind FailedKind() { return t_failed_kind; }

void Watch() {
  std::memset(g_watched, 0, sizeof g_watched);
  g_live = 0;
  t_watching = true;
}

long Unwatch() {
  t_watching = false;
  return g_live;
}

}  // namespace every_allocation

// Exported from the test program (ENABLE_EXPORTS), so that the shared
// libraries' calls bind to these.
#define EVERY_ALLOCATION_EXPORT __attribute__((visibility("default")))
extern "C" {
EVERY_ALLOCATION_EXPORT void* malloc(std::size_t size) noexcept {
  return Allocate(size, every_allocation::kMalloc);
}
EVERY_ALLOCATION_EXPORT void* calloc(std::size_t count, std::size_t size) noexcept {
  if (ShouldFail(every_allocation::kCalloc)) return nullptr;
  void* p = RealCalloc(count, size);
  Remember(p);
  return p;
}
EVERY_ALLOCATION_EXPORT void* realloc(void* p, std::size_t size) noexcept {
  if (p == nullptr) return Allocate(size, every_allocation::kRealloc);
  if (ShouldFail(every_allocation::kRealloc)) return nullptr;
  // A block watched before keeps being watched under its new address; one
  // got before watching began is not counted.
  const bool watched = Forget(p);
  void* moved = RealRealloc(p, size);
  if (moved == nullptr) {
    if (watched) Remember(p);
    return nullptr;
  }
  if (watched) Remember(moved);
  return moved;
}
EVERY_ALLOCATION_EXPORT void free(void* p) noexcept { Release(p); }
}

void* operator new(std::size_t size) {
  void* p = Allocate(size, every_allocation::kNew);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* operator new[](std::size_t size) {
  void* p = Allocate(size, every_allocation::kNew);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size, every_allocation::kNothrowNew);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size, every_allocation::kNothrowNew);
}
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }
