// Collections (VARRAY and nested table values) and their iterators.  Each element lives in
// its own block, carved from chunks of under 1 KiB the collection allocates, so
// element addresses handed out stay valid while the collection grows; the element's null
// information follows its value in the block.  Blocks of trimmed elements are kept for the
// elements appended next.  A nested table's deleted elements stay in place as holes (their
// blocks keep a value, so an address handed out before stays readable) until trimmed or
// assigned again.  A collection owns the
// iterators made on it, so iterators that are never deleted go with their collection.
#ifndef OCIMEM_SRC_COLLECTIONS_COLL_H
#define OCIMEM_SRC_COLLECTIONS_COLL_H

#include <memory>
#include <utility>
#include <vector>

#include "objects/type.h"
#include "session/recycle.h"

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
  OCIInd ind = OCI_IND_NOTNULL;  // a standalone collection's own indicator (decision D2)
  std::vector<OCIIter*> iterators;
  OCIColl* next_released = nullptr;  // in the list ReleaseCollection works through

  const ocimem::ValueType& element_type() const { return type->element; }
  // Positions in use, holes included (OCICollSize).
  size_t size() const { return size_; }
  // Positions that hold an element (OCITableSize).
  size_t live_count() const { return size_ - holes_; }
  bool IsHole(size_t i) const { return i < deleted_.size() && deleted_[i]; }
  // Existing positions: i < size() and not a hole.
  bool Exists(size_t i) const { return i < size_ && !IsHole(i); }
  // Makes element i a hole; false when out of memory.
  bool MakeHole(size_t i);
  // Element i holds an element again (OCICollAssignElem on a hole).
  void FillHole(size_t i);
  void* ValueAt(size_t i) const { return blocks_[i]; }
  OCIInd* IndAt(size_t i) const {
    return reinterpret_cast<OCIInd*>(blocks_[i] + ind_offset_);
  }
  // Appends an initialised element (value null-free, indicators "not null").
  bool Grow();
  // Appending an element made in place: the zeroed block of element size() (nullptr when
  // out of memory), then Push() to append it, or Unused() when it was not filled (its
  // value freed).
  unsigned char* NextFree() { return NextBlock(); }
  OCIInd* IndIn(unsigned char* block) const {
    return reinterpret_cast<OCIInd*>(block + ind_offset_);
  }
  void Push() { ++size_; }
  void Unused(unsigned char* block);
  void TrimBack(size_t n);
  void Clear() { TrimBack(size_); }
  void Adopt(OCIIter* it) { iterators.push_back(it); }
  void Disown(OCIIter* it);

 private:
  // A zeroed block for element size_ (a kept one, or one carved from a chunk).
  unsigned char* NextBlock();

  size_t ind_offset_;
  size_t stride_;                       // bytes per block, a multiple of the max alignment
  size_t size_ = 0;                     // elements in use: blocks_[0, size_)
  // Deleted positions; empty until the first OCITableDelete, never longer than size_.
  std::vector<bool> deleted_;
  size_t holes_ = 0;  // true entries of deleted_
  std::vector<unsigned char*> blocks_;  // every block carved so far, in element order
  // What the blocks are carved from, with their sizes in bytes: the first chunk, the
  // others, and the one blocks are carved from now.
  std::pair<unsigned char*, size_t> first_chunk_{nullptr, 0};
  std::vector<std::pair<unsigned char*, size_t>> chunks_;
  unsigned char* current_chunk_ = nullptr;
  size_t chunk_blocks_ = 0;  // blocks chunks_.back() has room for
  size_t chunk_used_ = 0;    // blocks carved from it so far
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
// Deletes a collection with its elements (objects/value_copy.cc has the copy below).
void ReleaseCollection(OCIColl* coll);
// Deep copy of every element of src into dst (same element type), replacing dst's.  Holes
// are copied as holes into a collection of the client; a collection held by the database
// (owned by no environment) receives only the existing elements, in order, as Oracle stores
// a nested table without its deleted elements.
bool CopyCollection(Env* env, const OCIColl& src, OCIColl* dst);
}  // namespace ocimem

#endif  // OCIMEM_SRC_COLLECTIONS_COLL_H
