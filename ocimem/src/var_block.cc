#include "var_block.h"

#include <cstdlib>
#include <cstring>

#include "handles.h"
#include "instance.h"

namespace ocimem {
namespace {

constexpr ub4 kLiveVar = 0x56415242U;
constexpr ub4 kStandalone = 1;

struct VarPrefix {
  ub4 live;
  ub4 flags;
  ub4 capacity;  // bytes of room after the length word, NUL excluded
  ub4 reserved;
};
static_assert(sizeof(VarPrefix) == 16, "keeps the value 16-byte aligned");

VarPrefix* PrefixOf(const void* value) {
  return reinterpret_cast<VarPrefix*>(static_cast<unsigned char*>(const_cast<void*>(value)) -
                                      sizeof(VarPrefix));
}

void* Allocate(ub4 capacity) {
  size_t bytes = sizeof(VarPrefix) + kVarLengthSize + size_t{capacity} + 1;
  auto* block = static_cast<unsigned char*>(std::malloc(bytes));
  if (block == nullptr) return nullptr;
  auto* prefix = reinterpret_cast<VarPrefix*>(block);
  prefix->live = kLiveVar;
  prefix->flags = 0;
  prefix->capacity = capacity;
  prefix->reserved = 0;
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
  prefix->live = 0;
  std::free(prefix);
}

ub4 VarLength(const void* value) {
  ub4 length;
  std::memcpy(&length, value, sizeof length);
  return length;
}

unsigned char* VarBytes(const void* value) {
  return static_cast<unsigned char*>(const_cast<void*>(value)) + kVarLengthSize;
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
  void* fresh = Allocate(length);
  if (fresh == nullptr) return false;
  SetLength(fresh, length);
  void* old = *value;
  if (old != nullptr) {
    if ((PrefixOf(old)->flags & kStandalone) != 0) {
      MarkStandalone(fresh, true);
      RekeyInstance(env, old, fresh);
    }
    FreeVarBlock(old);
  }
  *value = fresh;
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
