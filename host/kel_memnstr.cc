#include <host/kel_memory.h>

#include <cstring>

void* kel_memnstr(const void* pData, const void* pNeedle,
                  unsigned long nDataLen, unsigned long nNeedleLen) noexcept {
  if (nNeedleLen == 0) return const_cast<void*>(pData);
  if (pData == nullptr || pNeedle == nullptr || nNeedleLen > nDataLen) {
    return nullptr;
  }
  const unsigned char* pHay = static_cast<const unsigned char*>(pData);
  const unsigned char* pPat = static_cast<const unsigned char*>(pNeedle);
  if (nNeedleLen == 1) return const_cast<void*>(memchr(pHay, pPat[0], nDataLen));

  // Let memchr skip to each candidate first byte; compare the rest only there.
  const unsigned char* pLast = pHay + (nDataLen - nNeedleLen);
  const unsigned char* p = pHay;
  while (p <= pLast) {
    p = static_cast<const unsigned char*>(
        memchr(p, pPat[0], static_cast<size_t>(pLast - p) + 1));
    if (p == nullptr) return nullptr;
    if (memcmp(p + 1, pPat + 1, nNeedleLen - 1) == 0) {
      return const_cast<unsigned char*>(p);
    }
    ++p;
  }
  return nullptr;
}
