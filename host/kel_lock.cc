#include <host/kel_lock.h>

#include <mutex>
#include <new>

namespace {

static_assert(sizeof(std::mutex) <= sizeof(KEL_CRITICAL_SECTION::m_abOpaque),
              "KEL_CRITICAL_SECTION too small for the platform mutex");
static_assert(alignof(std::mutex) <= alignof(KEL_CRITICAL_SECTION),
              "KEL_CRITICAL_SECTION under-aligned for the platform mutex");

std::mutex* MutexOf(void* pSection) {
  return std::launder(reinterpret_cast<std::mutex*>(
      static_cast<KEL_CRITICAL_SECTION*>(pSection)->m_abOpaque));
}

}  // namespace

void kelCriticalSectionInitialize(void* pSection) noexcept {
  if (pSection == nullptr) return;
  new (static_cast<KEL_CRITICAL_SECTION*>(pSection)->m_abOpaque) std::mutex();
}

void kelCriticalSectionDestroy(void* pSection) noexcept {
  if (pSection == nullptr) return;
  MutexOf(pSection)->~mutex();
}

void kelCriticalSectionEnter(void* pSection) noexcept {
  if (pSection == nullptr) return;
  MutexOf(pSection)->lock();
}

void kelCriticalSectionLeave(void* pSection) noexcept {
  if (pSection == nullptr) return;
  MutexOf(pSection)->unlock();
}
