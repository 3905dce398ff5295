// CKelString<T>: a NUL-terminated string on top of CKelAllocator<T>. It adds
// no state; the allocator's capacity is the room for the characters and the
// terminator. Used with T = char.
#ifndef SRC_CONTAINERS_KEL_STRING_H_
#define SRC_CONTAINERS_KEL_STRING_H_

#include "containers/kel_allocator.h"

template <class T>
class CKelString : public CKelAllocator<T> {
 public:
  // A failing SetSize leaves through the constructor body, so the allocator
  // base is destroyed and releases whatever it holds.
  CKelString(unsigned long nSize, unsigned long nGrowBy)
      : CKelAllocator<T>(0, nGrowBy, 0) {
    if (nSize != 0) SetSize(nSize);
  }

  // Room for n elements, terminator included. A string that already had a
  // buffer keeps at most n - 1 characters; a string's first buffer starts
  // empty, whatever the memory held.
  T* SetSize(unsigned long n) {
    const bool bHadBuffer = this->m_nAllocated != 0;
    if (n == 0) n = 1;
    T* p = CKelAllocator<T>::SetSize(n, nullptr);
    _keltrm(p + (bHadBuffer ? n - 1 : 0));
    return p;
  }

  // Never NULL: a string without a buffer gets an empty one.
  T* GetPtr() {
    if (this->m_pData == nullptr) SetSize(1);
    return this->m_pData;
  }

  T& GetAt(unsigned long i) { return GetPtr()[i]; }
  T& operator[](unsigned long i) { return GetPtr()[i]; }
  operator T*() { return GetPtr(); }
};

#endif  // SRC_CONTAINERS_KEL_STRING_H_
