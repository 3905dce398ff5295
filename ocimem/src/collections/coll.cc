#include "collections/coll.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>

#include "objects/value_slot.h"

namespace {
size_t RoundUp(size_t n, size_t align) { return (n + align - 1) / align * align; }

// Chunks stay under 1 KiB (where the system allocator is quickest), with at least one block.
constexpr size_t kChunkBytes = 960;

#if defined(__SANITIZE_ADDRESS__)
#define OCIMEM_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define OCIMEM_ASAN 1
#endif
#endif

#ifdef OCIMEM_ASAN
extern "C" void __asan_poison_memory_region(void const volatile* addr, size_t size);
extern "C" void __asan_unpoison_memory_region(void const volatile* addr, size_t size);
// A kept block is poisoned, so a stale element address still reads as freed memory.
void Poison(void* p, size_t n) { __asan_poison_memory_region(p, n); }
void Unpoison(void* p, size_t n) { __asan_unpoison_memory_region(p, n); }
#else
void Poison(void*, size_t) {}
void Unpoison(void*, size_t) {}
#endif

}  // namespace

OCIColl::OCIColl(ocimem::Env* owner, std::shared_ptr<OCIType> collection_type)
    : env(owner),
      type(std::move(collection_type)),
      ind_offset_(RoundUp(type->element.Size(), alignof(OCIInd))),
      stride_(RoundUp(ind_offset_ + type->element.IndSize(), alignof(std::max_align_t))) {}

OCIColl::~OCIColl() {
  Clear();
  for (OCIIter* it : iterators) {
    it->live = 0;
    delete it;
  }
  for (const auto& chunk : chunks_) {
    Unpoison(chunk.first, chunk.second);  // the allocator owns the bytes again
    ::operator delete(chunk.first);
  }
  if (first_chunk_.first != nullptr) {
    Unpoison(first_chunk_.first, first_chunk_.second);
    ::operator delete(first_chunk_.first);
  }
  live = 0;
}

unsigned char* OCIColl::NextBlock() {
  unsigned char* block;
  if (size_ < blocks_.size()) {
    block = blocks_[size_];
  } else {
    if (chunk_used_ == chunk_blocks_) {
      const size_t count = std::max<size_t>(1, kChunkBytes / stride_);
      // Room for every block of the chunk first, so that no push_back below can fail.
      const bool first = first_chunk_.first == nullptr;
      try {
        if (blocks_.capacity() - blocks_.size() < count) {
          blocks_.reserve(std::max(blocks_.size() + count, 2 * blocks_.capacity()));
        }
        // Doubling, as for blocks_: one more each time would copy the list on every chunk.
        if (!first && chunks_.size() == chunks_.capacity()) {
          chunks_.reserve(std::max<size_t>(4, 2 * chunks_.capacity()));
        }
      } catch (const std::bad_alloc&) {
        return nullptr;
      }
      auto* chunk = static_cast<unsigned char*>(::operator new(count * stride_, std::nothrow));
      if (chunk == nullptr) return nullptr;
      Poison(chunk, count * stride_);
      (first ? first_chunk_ : chunks_.emplace_back()) = {chunk, count * stride_};
      current_chunk_ = chunk;
      chunk_blocks_ = count;
      chunk_used_ = 0;
    }
    block = current_chunk_ + chunk_used_ * stride_;
    ++chunk_used_;
    blocks_.push_back(block);
  }
  Unpoison(block, stride_);
  std::memset(block, 0, stride_);
  return block;
}

bool OCIColl::Grow() {
  const ocimem::ValueType& t = element_type();
  unsigned char* block = NextBlock();
  if (block == nullptr) return false;
  auto* ind = reinterpret_cast<OCIInd*>(block + ind_offset_);
  if (!ocimem::InitSlot(env, t, block, ind, true)) {
    ocimem::FreeSlot(t, block);
    Poison(block, stride_);
    return false;
  }
  ++size_;
  return true;
}

void OCIColl::Unused(unsigned char* block) { Poison(block, stride_); }

void OCIColl::TrimBack(size_t n) {
  n = std::min(n, size_);
  for (size_t i = 0; i < n; ++i) {
    --size_;
    unsigned char* block = blocks_[size_];
    ocimem::FreeSlot(element_type(), block);
    Poison(block, stride_);
  }
  // Trimmed holes go with their positions.
  while (deleted_.size() > size_) {
    if (deleted_.back()) --holes_;
    deleted_.pop_back();
  }
}

bool OCIColl::MakeHole(size_t i) {
  if (i >= size_ || IsHole(i)) return false;
  if (deleted_.size() <= i) {
    try {
      deleted_.resize(size_, false);
    } catch (const std::bad_alloc&) {
      return false;
    }
  }
  deleted_[i] = true;
  ++holes_;
  return true;
}

void OCIColl::FillHole(size_t i) {
  if (!IsHole(i)) return;
  deleted_[i] = false;
  --holes_;
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

void ReleaseCollection(OCIColl* coll) {
  if (coll == nullptr) return;
  // Collections released while one is being deleted on this thread (those inside its
  // elements) wait in a list for the outermost call, which deletes them one by one: a
  // collection of objects holding collections, however deep, goes without recursion.
  static thread_local OCIColl* waiting = nullptr;
  static thread_local bool deleting = false;
  coll->next_released = waiting;
  waiting = coll;
  if (deleting) return;
  deleting = true;
  while (waiting != nullptr) {
    OCIColl* next = waiting;
    waiting = next->next_released;
    delete next;
  }
  deleting = false;
}

}  // namespace ocimem
