// CKelArray<T>: CKelAllocator<T> seen as a plain array of elements, with no
// terminator and no state of its own. Used with T = unsigned char.
#ifndef SRC_CONTAINERS_KEL_ARRAY_H_
#define SRC_CONTAINERS_KEL_ARRAY_H_

#include "containers/kel_allocator.h"

template <class T>
class CKelArray : public CKelAllocator<T> {
 public:
  CKelArray(unsigned long nSize, unsigned long nGrowBy, int nZeroFill)
      : CKelAllocator<T>(nSize, nGrowBy, nZeroFill) {}

  // NULL while the array holds no elements.
  T* GetPtr() const { return this->GetData(); }
};

#endif  // SRC_CONTAINERS_KEL_ARRAY_H_
