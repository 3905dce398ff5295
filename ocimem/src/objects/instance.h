// Standalone instances made by OCIObjectNew, registered in their environment by the
// address handed out, so that OCIObjectGetInd and OCIObjectFree can tell them from
// embedded values and from arbitrary pointers.
#ifndef OCIMEM_SRC_OBJECTS_INSTANCE_H
#define OCIMEM_SRC_OBJECTS_INSTANCE_H

#include <cstddef>
#include <memory>
#include <new>

#include "objects/type.h"
#include "session/recycle.h"

namespace ocimem {

struct Env;

// An object's null struct and value share one block from the value pool (recycle.h), the
// null struct first: a null struct that OCIObjectFree leaves to the caller
// (OCI_OBJECTFREE_NONULL) is the start of a malloc'd block, which the environment frees.
struct Instance {
  enum class Kind { kObject, kCollection, kValue };
  Kind kind = Kind::kValue;
  std::shared_ptr<OCIType> type;  // kObject and kCollection
  ValueType value_type;           // kValue
  void* value = nullptr;          // what OCIObjectNew handed out
  OCIInd* null_struct = nullptr;  // the object's null struct, or the single indicator
  OCIInd own_ind = OCI_IND_NOTNULL;
  std::size_t block_bytes = 0;    // kObject: bytes of the block at null_struct

  static void* operator new(std::size_t size) {
    void* p = PooledAlloc(size);
    if (p == nullptr) throw std::bad_alloc();
    return p;
  }
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return PooledAlloc(size);
  }
  static void operator delete(void* p) noexcept { PooledFree(p, sizeof(Instance)); }
};

// Makes a standalone instance; nullptr when out of memory.
Instance* NewObjectInstance(Env* env, std::shared_ptr<OCIType> type);
Instance* NewCollectionInstance(Env* env, std::shared_ptr<OCIType> type);
Instance* NewValueInstance(Env* env, const ValueType& type);
// Registered instance at `value`, or nullptr.
Instance* FindInstance(Env* env, const void* value);
// Frees the instance and everything it reaches and unregisters it.
void DestroyInstance(Env* env, void* value);
// Unregisters the instance at `value` and hands it over (nullptr when there is none).  With
// `keep_null_struct`, an object's null struct goes to the environment's kept ones and
// stays allocated.  The caller frees it with FreeInstanceMemory.
std::unique_ptr<Instance> TakeInstance(Env* env, void* value, bool keep_null_struct);
// Frees without touching the registry (used when the environment goes).
void FreeInstanceMemory(Instance* instance);
// A string or raw instance moved by a resize.
void RekeyInstance(Env* env, void* old_value, void* new_value);
// Forgets an instance whose memory was released elsewhere (a resize to 0).
void ForgetInstance(Env* env, void* value);

}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_INSTANCE_H
