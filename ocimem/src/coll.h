// Collections (VARRAY and nested table values) and their iterators.  Each element lives in
// its own block, so element addresses handed out stay valid while the collection grows;
// the element's null information follows its value in the block.  A collection owns the
// iterators made on it, so iterators that are never deleted go with their collection.
#ifndef OCIMEM_SRC_COLL_H
#define OCIMEM_SRC_COLL_H

#include <memory>
#include <vector>

#include "type.h"
#include "recycle.h"

namespace ocimem {
constexpr ub4 kLiveColl = 0x434f4c4cU;
constexpr ub4 kLiveIter = 0x49544552U;
struct Env;
}  // namespace ocimem

struct OCIColl {
  OCIColl(ocimem::Env* owner, std::shared_ptr<OCIType> collection_type);
  ~OCIColl();
  OCIColl(const OCIColl&) = delete;
  OCIColl& operator=(const OCIColl&) = delete;
  OCIMEM_RECYCLED(OCIColl)

  ub4 live = ocimem::kLiveColl;
  ocimem::Env* env;
  std::shared_ptr<OCIType> type;
  std::vector<unsigned char*> elements;
  OCIInd ind = OCI_IND_NOTNULL;  // a standalone collection's own indicator (decision D2)
  std::vector<OCIIter*> iterators;

  const ocimem::ValueType& element_type() const { return type->element; }
  size_t size() const { return elements.size(); }
  void* ValueAt(size_t i) const { return elements[i]; }
  OCIInd* IndAt(size_t i) const {
    return reinterpret_cast<OCIInd*>(elements[i] + ind_offset_);
  }
  // Appends an initialised element (value null-free, indicators "not null").
  bool Grow();
  void TrimBack(size_t n);
  void Clear() { TrimBack(elements.size()); }
  void Adopt(OCIIter* it) { iterators.push_back(it); }
  void Disown(OCIIter* it);

 private:
  size_t ind_offset_;
};

struct OCIIter {
  OCIMEM_RECYCLED(OCIIter)
  ub4 live = ocimem::kLiveIter;
  OCIColl* coll = nullptr;
  sb4 position = -1;  // -1: before the first element
};

namespace ocimem {
OCIColl* AsColl(const void* p);
OCIIter* AsIter(const void* p);
// Deep copy of every element of src into dst (same element type), replacing dst's.
bool CopyCollection(Env* env, const OCIColl& src, OCIColl* dst);
}  // namespace ocimem

#endif  // OCIMEM_SRC_COLL_H
