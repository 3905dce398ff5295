#include "collections/var_block.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_set>

#include "session/handles.h"
#include "session/recycle.h"
#include "objects/instance.h"

namespace ocimem {
namespace {

constexpr ub4 kLiveVar = 0x56415242U;
constexpr ub4 kStandalone = 1;
constexpr ub4 kLoose = 2;  // allocated by a call given a NULL value: owned by `owner`

struct VarPrefix {
  ub4 live;
  ub4 flags;
  ub4 capacity;  // bytes of room after the length word, NUL excluded
  ub4 reserved;
  Env* owner;    // kLoose: the environment that frees it if nobody else does
  void* unused;
};
static_assert(sizeof(VarPrefix) == 32, "keeps the value 16-byte aligned");

VarPrefix* PrefixOf(const void* value) {
  return reinterpret_cast<VarPrefix*>(static_cast<unsigned char*>(const_cast<void*>(value)) -
                                      sizeof(VarPrefix));
}

// Room every block has at least, so that a short value assigned to a new (empty) value
// fits where it is: prefix, length word, 27 bytes and the NUL make 64 bytes.
constexpr ub4 kMinCapacity = 27;

// Bytes of a block with room for `capacity` bytes.
size_t BlockBytes(ub4 capacity) {
  return sizeof(VarPrefix) + kVarLengthSize + size_t{capacity} + 1;
}

// Blocks come from the value pool (recycle.h): strings and raws are made and freed for
// every object read.
void* Allocate(ub4 capacity) {
  if (capacity < kMinCapacity) capacity = kMinCapacity;
  auto* block = static_cast<unsigned char*>(PooledAlloc(BlockBytes(capacity)));
  if (block == nullptr) return nullptr;
  auto* prefix = reinterpret_cast<VarPrefix*>(block);
  prefix->live = kLiveVar;
  prefix->flags = 0;
  prefix->capacity = capacity;
  prefix->reserved = 0;
  prefix->owner = nullptr;
  prefix->unused = nullptr;
  return block + sizeof(VarPrefix);
}

void SetLength(void* value, ub4 length) {
  std::memcpy(value, &length, sizeof length);
  VarBytes(value)[length] = '\0';
}

}  // namespace

void* NewVarBlock(const void* bytes, ub4 length) {
  void* value = Allocate(length);
  if (value == nullptr) return nullptr;
  if (bytes != nullptr && length > 0) std::memcpy(VarBytes(value), bytes, length);
  SetLength(value, length);
  return value;
}

void FreeVarBlock(void* value) {
  if (value == nullptr) return;
  VarPrefix* prefix = PrefixOf(value);
  if ((prefix->flags & kLoose) != 0) {
    std::lock_guard<std::mutex> lock(prefix->owner->registry_mutex);
    prefix->owner->loose_values.erase(value);
  }
  prefix->live = 0;
  PooledFree(prefix, BlockBytes(prefix->capacity));
}

void FreeLooseValues(Env* env) {
  std::unordered_set<void*> values;
  {
    std::lock_guard<std::mutex> lock(env->registry_mutex);
    values.swap(env->loose_values);
  }
  for (void* value : values) {
    PrefixOf(value)->flags &= ~kLoose;
    FreeVarBlock(value);
  }
}

void MarkStandalone(void* value, bool standalone) {
  VarPrefix* prefix = PrefixOf(value);
  prefix->flags = standalone ? (prefix->flags | kStandalone) : (prefix->flags & ~kStandalone);
}

bool ResizeVarBlock(Env* env, ub4 length, void** value) {
  if (*value != nullptr && PrefixOf(*value)->capacity >= length) {
    SetLength(*value, length);
    return true;
  }
  // Until it replaces *value, the new block is this call's: a registration that throws
  // for want of memory frees it (and takes it off the loose values if it got there).
  std::unique_ptr<void, void (*)(void*)> fresh(Allocate(length), FreeVarBlock);
  if (fresh == nullptr) return false;
  SetLength(fresh.get(), length);
  void* old = *value;
  // A value made here from nothing, or moved from one that was, belongs to the environment
  // until it is freed: a caller's own OCIString* variable is never freed by anyone else.
  Env* owner = old == nullptr ? env
               : (PrefixOf(old)->flags & kLoose) != 0 ? PrefixOf(old)->owner
                                                      : nullptr;
  if (owner != nullptr) {
    std::lock_guard<std::mutex> lock(owner->registry_mutex);
    owner->loose_values.insert(fresh.get());
    PrefixOf(fresh.get())->flags |= kLoose;
    PrefixOf(fresh.get())->owner = owner;
  }
  if (old != nullptr && (PrefixOf(old)->flags & kStandalone) != 0) {
    MarkStandalone(fresh.get(), true);
    RekeyInstance(env, old, fresh.get());  // all or nothing
  }
  FreeVarBlock(old);
  *value = fresh.release();
  return true;
}

bool AssignVarBlock(Env* env, const void* bytes, ub4 length, void** value) {
  if (*value != nullptr && bytes != nullptr && VarBytes(*value) == bytes) {
    SetLength(*value, length);  // assigning a value's own bytes to itself
    return true;
  }
  if (!ResizeVarBlock(env, length, value)) return false;
  if (length > 0) std::memmove(VarBytes(*value), bytes, length);
  return true;
}

}  // namespace ocimem
