// Lock object of the host services.
#ifndef HOST_KEL_LOCK_H_
#define HOST_KEL_LOCK_H_

#include <host/kel_api.h>

#include <cstddef>

// KEL_CRITICAL_SECTION: storage for one non-recursive mutex. The caller
// allocates it (by new, on the stack or inside its own object) and owns it;
// kelCriticalSectionInitialize turns the storage into a live lock and
// kelCriticalSectionDestroy ends it before the storage is released.
// Initialising twice, destroying a held or uninitialised lock, or entering
// a lock the thread already holds is undefined. A NULL section is ignored
// by every function.
struct KEL_CRITICAL_SECTION {
  alignas(std::max_align_t) unsigned char m_abOpaque[64];
};

KEL_API void kelCriticalSectionInitialize(void* pSection) noexcept;
KEL_API void kelCriticalSectionDestroy(void* pSection) noexcept;
KEL_API void kelCriticalSectionEnter(void* pSection) noexcept;
KEL_API void kelCriticalSectionLeave(void* pSection) noexcept;

#endif  // HOST_KEL_LOCK_H_
