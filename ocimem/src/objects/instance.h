// Standalone instances made by OCIObjectNew, registered in their environment by the
// address handed out, so that OCIObjectGetInd and OCIObjectFree can tell them from
// embedded values and from arbitrary pointers.
#ifndef OCIMEM_SRC_OBJECTS_INSTANCE_H
#define OCIMEM_SRC_OBJECTS_INSTANCE_H

#include <memory>

#include "objects/type.h"

namespace ocimem {

struct Env;

struct Instance {
  enum class Kind { kObject, kCollection, kValue };
  Kind kind = Kind::kValue;
  std::shared_ptr<OCIType> type;  // kObject and kCollection
  ValueType value_type;           // kValue
  void* value = nullptr;          // what OCIObjectNew handed out
  OCIInd* null_struct = nullptr;  // the object's null struct, or the single indicator
  OCIInd own_ind = OCI_IND_NOTNULL;
};

// Makes a standalone instance; nullptr when out of memory.
Instance* NewObjectInstance(Env* env, std::shared_ptr<OCIType> type);
Instance* NewCollectionInstance(Env* env, std::shared_ptr<OCIType> type);
Instance* NewValueInstance(Env* env, const ValueType& type);
// Registered instance at `value`, or nullptr.
Instance* FindInstance(Env* env, const void* value);
// Frees the instance and everything it reaches and unregisters it.
void DestroyInstance(Env* env, void* value);
// Frees without touching the registry (used when the environment goes).
void FreeInstanceMemory(Instance* instance);
// A string or raw instance moved by a resize.
void RekeyInstance(Env* env, void* old_value, void* new_value);
// Forgets an instance whose memory was released elsewhere (a resize to 0).
void ForgetInstance(Env* env, void* value);

}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_INSTANCE_H
