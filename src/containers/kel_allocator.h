// CKelAllocator<T>: an owned, growable buffer of T whose capacity moves in
// whole growth steps, with optional zero fill of newly gained elements. It
// owns its buffer unless the buffer was attached (AttachBuffer), in which case
// it never moves, grows past its capacity or releases it.
#ifndef SRC_CONTAINERS_KEL_ALLOCATOR_H_
#define SRC_CONTAINERS_KEL_ALLOCATOR_H_

#include <host/kel.h>

#include "containers/kel_mem.h"

template <class T>
class CKelAllocator {
 public:
  enum {
    KEL_ALLOC_ZEROFILL = 1,  // newly gained elements are set to zero
    KEL_ALLOC_ATTACHED = 2   // the buffer belongs to someone else
  };

  CKelAllocator(unsigned long nInitialSize, unsigned long nGrowBy, int nZeroFill)
      : m_nAllocated(0),
        m_nSize(0),
        m_nGrowBy(nGrowBy),
        m_nFlags(static_cast<unsigned char>(nZeroFill & KEL_ALLOC_ZEROFILL)),
        m_pData(nullptr) {
    _Alloc(nInitialSize, nullptr);
  }

  ~CKelAllocator() {
    DetachBuffer();
    _Free();
  }

  CKelAllocator(const CKelAllocator&) = delete;
  CKelAllocator& operator=(const CKelAllocator&) = delete;

  T* SetSize(unsigned long n, const T* pHint) { return _Alloc(n, pHint); }

  // Resizes to n elements. pHint is NULL or points into the current buffer;
  // the result is the same element in the (possibly moved) buffer, or the
  // start of the buffer. On failure nothing changes.
  T* _Alloc(unsigned long n, const T* pHint) {
    if (m_nFlags & KEL_ALLOC_ATTACHED) {
      if (n > m_nAllocated) throw CKelException(-25, "CKelAllocator<>::Alloc");
      m_nSize = n;
      return pHint != nullptr ? const_cast<T*>(pHint) : m_pData;
    }
    if (m_nGrowBy == 0) m_nGrowBy = 1;
    // Unsigned arithmetic that wraps on purpose: for a shrink the difference
    // is "negative", and rounding it up to whole steps keeps the capacity a
    // whole number of steps away from the old one.
    const unsigned long nNew =
        m_nAllocated + (n - m_nAllocated + m_nGrowBy - 1) / m_nGrowBy * m_nGrowBy;
    // The offset is taken before the block can move; the old address is dead
    // after a reallocation.
    const unsigned long nHintOffset =
        pHint != nullptr ? static_cast<unsigned long>(pHint - m_pData) : 0;
    T* pNew = m_pData;
    if (nNew != m_nAllocated) {
      if (nNew != 0) {
        pNew = _kelrealloc(m_pData, m_nAllocated, nNew);
        if (pNew == nullptr) throw CKelException(-10, "CKelAllocator<>::Alloc");
        if ((m_nFlags & KEL_ALLOC_ZEROFILL) && nNew > m_nAllocated)
          _kelset(pNew + m_nAllocated, _kelzero(*pNew), nNew - m_nAllocated);
      } else {
        if (m_pData != nullptr) _kelfree(m_pData);
        pNew = nullptr;
      }
      m_nAllocated = nNew;
    }
    T* pResult = (pHint != nullptr && nNew != 0) ? pNew + nHintOffset : pNew;
    m_pData = pNew;
    m_nSize = n;
    return pResult;
  }

  // Hands the allocator a buffer of nAllocated elements that it must not
  // release or move; nSize of them count as in use. Any owned buffer is
  // released first.
  void AttachBuffer(T* pData, unsigned long nAllocated, unsigned long nSize) {
    DetachBuffer();
    _Free();
    m_pData = pData;
    m_nAllocated = nAllocated;
    m_nSize = nSize;
    m_nFlags = static_cast<unsigned char>(m_nFlags | KEL_ALLOC_ATTACHED);
  }

  // Forgets an attached buffer without releasing it; an owned one stays.
  void DetachBuffer() {
    if (!(m_nFlags & KEL_ALLOC_ATTACHED)) return;
    m_nFlags = static_cast<unsigned char>(m_nFlags & ~KEL_ALLOC_ATTACHED);
    m_pData = nullptr;
    m_nAllocated = 0;
    m_nSize = 0;
  }

  // Releases an owned buffer and leaves the allocator empty, so a second
  // call (or the destructor after an explicit call) releases nothing twice.
  void _Free() {
    if (m_pData == nullptr || (m_nFlags & KEL_ALLOC_ATTACHED)) return;
    _kelfree(m_pData);
    m_pData = nullptr;
    m_nAllocated = 0;
    m_nSize = 0;
  }

  T* GetData() const { return m_pData; }
  unsigned long GetSizeAllocated() const { return m_nAllocated; }
  unsigned long GetSize() const { return m_nSize; }
  unsigned long GetGrowBy() const { return m_nGrowBy; }
  bool IsAttached() const { return (m_nFlags & KEL_ALLOC_ATTACHED) != 0; }
  bool IsZeroFill() const { return (m_nFlags & KEL_ALLOC_ZEROFILL) != 0; }

 protected:
  unsigned long m_nAllocated;
  unsigned long m_nSize;
  unsigned long m_nGrowBy;
  unsigned char m_nFlags;
  T* m_pData;
};

#endif  // SRC_CONTAINERS_KEL_ALLOCATOR_H_
