// The replaced allocation functions of every_allocation.h. The real work is
// done by the C library's allocator, or under the address sanitizer by the
// sanitizer's malloc, which keeps its leak and use-after-free checks working.
#include "every_allocation.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
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

#ifdef EVERY_ALLOCATION_ASAN
// The sanitizer owns malloc and its family: they are not replaced (and not
// failed) under it, only operator new is.
void* RealMalloc(std::size_t n) { return std::malloc(n); }
void RealFree(void* p) { std::free(p); }
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

bool CountsMalloc() {
#ifdef EVERY_ALLOCATION_ASAN
  return false;
#else
  return true;
#endif
}

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

bool Live(const void* p) {
  if (p == nullptr || g_live == 0) return false;
  const auto a = reinterpret_cast<std::uintptr_t>(p);
  for (std::size_t i = SlotOf(a);; i = (i + 1) & (kSlots - 1)) {
    if (g_watched[i] == 0) return false;
    if (g_watched[i] == a) return true;
  }
}

}  // namespace every_allocation

#ifndef EVERY_ALLOCATION_ASAN
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
#endif

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
