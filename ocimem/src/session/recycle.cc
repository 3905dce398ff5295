#include "session/recycle.h"

#include <mutex>
#include <unordered_map>
#include <vector>

namespace ocimem {
namespace {

// Each block starts with its size, so that a free needs nothing but the pointer.
constexpr std::size_t kHeader = alignof(std::max_align_t);

struct Pool {
  std::mutex mutex;
  std::unordered_map<std::size_t, std::vector<void*>> free_blocks;  // by size
};

// Never destroyed: objects may still be freed while static destructors run.
Pool& ThePool() {
  static Pool* pool = new Pool;
  return *pool;
}

}  // namespace

void* RecycledAlloc(std::size_t size) noexcept {
  Pool& pool = ThePool();
  {
    std::lock_guard<std::mutex> lock(pool.mutex);
    auto it = pool.free_blocks.find(size);
    if (it != pool.free_blocks.end() && !it->second.empty()) {
      void* block = it->second.back();
      it->second.pop_back();
      return static_cast<unsigned char*>(block) + kHeader;
    }
  }
  void* block = ::operator new(size + kHeader, std::nothrow);
  if (block == nullptr) return nullptr;
  *static_cast<std::size_t*>(block) = size;
  return static_cast<unsigned char*>(block) + kHeader;
}

void RecycledFree(void* p) noexcept {
  if (p == nullptr) return;
  void* block = static_cast<unsigned char*>(p) - kHeader;
  std::size_t size = *static_cast<std::size_t*>(block);
  Pool& pool = ThePool();
  std::lock_guard<std::mutex> lock(pool.mutex);
  try {
    pool.free_blocks[size].push_back(block);
  } catch (...) {
    // No room to remember it: give it back, stale pointers to it are then unchecked.
    ::operator delete(block);
  }
}

}  // namespace ocimem
