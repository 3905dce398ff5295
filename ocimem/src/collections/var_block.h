// Storage of OCIString and OCIRaw values: a native ub4 length at offset 0 and the bytes
// from offset 4 (strings keep room for a NUL after them).  A hidden prefix in front of the
// value records its capacity and whether it is a standalone instance of OCIObjectNew, so a
// resize that moves it can keep the environment's instance registry up to date.
#ifndef OCIMEM_SRC_COLLECTIONS_VAR_BLOCK_H
#define OCIMEM_SRC_COLLECTIONS_VAR_BLOCK_H

#include <cstddef>
#include <cstring>

#include "oci.h"

namespace ocimem {

struct Env;

constexpr size_t kVarLengthSize = sizeof(ub4);

// A new value of `length` bytes copied from `bytes` (nullptr: contents undefined).
void* NewVarBlock(const void* bytes, ub4 length);
void FreeVarBlock(void* value);
inline ub4 VarLength(const void* value) {
  ub4 length;
  std::memcpy(&length, value, sizeof length);
  return length;
}
inline unsigned char* VarBytes(const void* value) {
  return static_cast<unsigned char*>(const_cast<void*>(value)) + kVarLengthSize;
}
// Makes *value hold `length` bytes; allocates when *value is nullptr and moves the value
// when it does not fit.  Contents are not kept.  False when out of memory.
bool ResizeVarBlock(Env* env, ub4 length, void** value);
// Copies `length` bytes into *value (resizing it as above).
bool AssignVarBlock(Env* env, const void* bytes, ub4 length, void** value);
void MarkStandalone(void* value, bool standalone);
// Frees the values the environment still owns because a call allocated them for a NULL
// value and they were never freed (as the environment goes).
void FreeLooseValues(Env* env);

}  // namespace ocimem

#endif  // OCIMEM_SRC_COLLECTIONS_VAR_BLOCK_H
