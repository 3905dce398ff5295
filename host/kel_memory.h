// Byte search of the host services.
#ifndef HOST_KEL_MEMORY_H_
#define HOST_KEL_MEMORY_H_

#include <host/kel_api.h>

// The first occurrence of the nNeedleLen bytes at pNeedle within the
// nDataLen bytes at pData, compared exactly (NUL bytes included), or NULL.
// An empty needle is found at pData (returned as is, even if NULL). A NULL
// pData or pNeedle with a nonzero length finds nothing.
KEL_API void* kel_memnstr(const void* pData, const void* pNeedle,
                          unsigned long nDataLen,
                          unsigned long nNeedleLen) noexcept;

#endif  // HOST_KEL_MEMORY_H_
