#include "coll.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "value_slot.h"

namespace {
size_t RoundUp(size_t n, size_t align) { return (n + align - 1) / align * align; }
}  // namespace

OCIColl::OCIColl(ocimem::Env* owner, std::shared_ptr<OCIType> collection_type)
    : env(owner),
      type(std::move(collection_type)),
      ind_offset_(RoundUp(type->element.Size(), alignof(OCIInd))) {}

OCIColl::~OCIColl() {
  Clear();
  for (OCIIter* it : iterators) {
    it->live = 0;
    delete it;
  }
  live = 0;
}

bool OCIColl::Grow() {
  const ocimem::ValueType& t = element_type();
  auto* block = new (std::nothrow) unsigned char[ind_offset_ + t.IndSize()]();
  if (block == nullptr) return false;
  auto* ind = reinterpret_cast<OCIInd*>(block + ind_offset_);
  if (!ocimem::InitSlot(env, t, block, ind, true)) {
    ocimem::FreeSlot(t, block);
    delete[] block;
    return false;
  }
  elements.push_back(block);
  return true;
}

void OCIColl::TrimBack(size_t n) {
  n = std::min(n, elements.size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char* block = elements.back();
    elements.pop_back();
    ocimem::FreeSlot(element_type(), block);
    delete[] block;
  }
}

void OCIColl::Disown(OCIIter* it) {
  iterators.erase(std::remove(iterators.begin(), iterators.end(), it), iterators.end());
}

namespace ocimem {

OCIColl* AsColl(const void* p) {
  if (p == nullptr) return nullptr;
  auto* c = static_cast<OCIColl*>(const_cast<void*>(p));
  return c->live == kLiveColl ? c : nullptr;
}

OCIIter* AsIter(const void* p) {
  if (p == nullptr) return nullptr;
  auto* i = static_cast<OCIIter*>(const_cast<void*>(p));
  return i->live == kLiveIter ? i : nullptr;
}

bool CopyCollection(Env* env, const OCIColl& src, OCIColl* dst) {
  if (&src == dst) return true;
  dst->Clear();
  const ValueType& t = dst->element_type();
  for (size_t i = 0; i < src.size(); ++i) {
    if (!dst->Grow()) return false;
    size_t last = dst->size() - 1;
    if (AssignSlot(env, t, dst->ValueAt(last), ElementForm(t, src.ValueAt(i))) !=
        AssignResult::kOk) {
      return false;
    }
    std::memcpy(dst->IndAt(last), src.IndAt(i), t.IndSize());
  }
  return true;
}

}  // namespace ocimem
