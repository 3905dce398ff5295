// Memory helpers of the container templates. Every buffer operation of
// CKelAllocator goes through these, so the two element types keep their own
// memory source: char lives on the C heap (malloc/realloc/free), unsigned
// char on the free store (new[]/delete[]), copied and filled element by
// element.
#ifndef SRC_CONTAINERS_KEL_MEM_H_
#define SRC_CONTAINERS_KEL_MEM_H_

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

// The C-heap resize used by _kelrealloc<char>: realloc for an existing
// block, malloc for a first one.
inline void* kelCHeapRealloc(void* p, std::size_t nBytes) {
  return p != nullptr ? std::realloc(p, nBytes) : std::malloc(nBytes);
}

inline void kelCHeapFree(void* p) { std::free(p); }

// Test hooks: the functions through which the char helpers obtain and
// release C-heap memory. Tests swap them as a pair for counting versions
// that can fail on demand, which is the only reliable way to make a C-heap
// allocation fail; production code never changes them.
inline void* (*gKelCHeapRealloc)(void*, std::size_t) = kelCHeapRealloc;
inline void (*gKelCHeapFree)(void*) = kelCHeapFree;

// The zero value of T; the argument only selects the type.
template <class T>
inline T _kelzero(const T&) {
  return T();
}

template <class TDest, class TSrc>
inline TDest* _kelbcpy(TDest* pDest, const TSrc* pSrc, unsigned long n) {
  for (unsigned long i = 0; i < n; ++i) pDest[i] = pSrc[i];
  return pDest;
}

// Overlap-safe move of n elements.
template <class T>
inline T* _kelmove(T* pDest, T* pSrc, unsigned long n) {
  if (pDest < pSrc) {
    for (unsigned long i = 0; i < n; ++i) pDest[i] = pSrc[i];
  } else if (pDest > pSrc) {
    for (unsigned long i = n; i > 0; --i) pDest[i - 1] = pSrc[i - 1];
  }
  return pDest;
}

template <>
inline char* _kelmove<char>(char* pDest, char* pSrc, unsigned long n) {
  std::memmove(pDest, pSrc, n);
  return pDest;
}

template <class T>
inline T* _kelset(T* p, T value, unsigned long n) {
  for (unsigned long i = 0; i < n; ++i) p[i] = value;
  return p;
}

template <>
inline char* _kelset<char>(char* p, char value, unsigned long n) {
  std::memset(p, value, n);
  return p;
}

// Removes nCount elements at nPos from a buffer holding nSize elements; the
// buffer keeps its size, so its last nCount places keep their old values.
template <class T>
inline T* _kelbdel(T* pBuffer, unsigned long nSize, unsigned long nPos,
                   unsigned long nCount) {
  _kelmove(pBuffer + nPos, pBuffer + nPos + nCount, nSize - nPos - nCount);
  return pBuffer;
}

template <class T>
inline T* _keltrm(T* p) {
  *p = _kelzero(*p);
  return p;
}

// Returns a block of nNewCount elements holding the first
// min(nOldCount, nNewCount) elements of p, or NULL (p then stays valid and
// untouched). The free-store form always moves to a new block.
template <class T>
inline T* _kelrealloc(T* p, unsigned long nOldCount, unsigned long nNewCount) {
  T* pNew = new (std::nothrow) T[nNewCount];
  if (pNew == nullptr) return nullptr;
  if (p != nullptr) {
    _kelbcpy(pNew, p, nOldCount < nNewCount ? nOldCount : nNewCount);
    delete[] p;
  }
  return pNew;
}

template <>
inline char* _kelrealloc<char>(char* p, unsigned long, unsigned long nNewCount) {
  return static_cast<char*>(gKelCHeapRealloc(p, nNewCount));
}

template <class T>
inline void _kelfree(T* p) {
  delete[] p;
}

template <>
inline void _kelfree<char>(char* p) {
  gKelCHeapFree(p);
}

#endif  // SRC_CONTAINERS_KEL_MEM_H_
