#include "objects/instance.h"

#include <cstdlib>
#include <mutex>
#include <new>

#include "collections/coll.h"
#include "session/handles.h"
#include "lob/lob.h"
#include "objects/value_slot.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

Instance* Register(Env* env, std::unique_ptr<Instance> instance) {
  Instance* raw = instance.get();
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  env->instances[raw->value] = std::move(instance);
  return raw;
}

}  // namespace

Instance* NewObjectInstance(Env* env, std::shared_ptr<OCIType> type) {
  auto instance = std::make_unique<Instance>();
  instance->kind = Instance::Kind::kObject;
  // calloc: every slot starts zeroed, so a partly initialised instance frees cleanly.
  instance->value = std::calloc(1, type->size == 0 ? 1 : type->size);
  instance->null_struct = static_cast<OCIInd*>(std::calloc(1, type->ind_size));
  instance->type = std::move(type);
  if (instance->value == nullptr || instance->null_struct == nullptr) {
    FreeInstanceMemory(instance.get());
    return nullptr;
  }
  ValueType t;
  t.kind = ValueKind::kObject;
  t.typecode = OCI_TYPECODE_OBJECT;
  t.named = instance->type;
  bool not_null = env->new_not_null;
  if (!InitSlot(env, t, instance->value, instance->null_struct, not_null)) {
    FreeInstanceMemory(instance.get());
    return nullptr;
  }
  return Register(env, std::move(instance));
}

Instance* NewCollectionInstance(Env* env, std::shared_ptr<OCIType> type) {
  auto instance = std::make_unique<Instance>();
  instance->kind = Instance::Kind::kCollection;
  auto* coll = new (std::nothrow) OCIColl(env, type);
  if (coll == nullptr) return nullptr;
  instance->type = std::move(type);
  instance->value = coll;
  instance->null_struct = &coll->ind;
  return Register(env, std::move(instance));
}

Instance* NewValueInstance(Env* env, const ValueType& type) {
  auto instance = std::make_unique<Instance>();
  instance->kind = Instance::Kind::kValue;
  instance->value_type = type;
  instance->null_struct = &instance->own_ind;
  if (type.IsHandleSlot()) {
    void* handle = nullptr;
    if (!InitSlot(env, type, &handle, &instance->own_ind, true)) {
      FreeSlot(type, &handle);
      return nullptr;
    }
    instance->value = handle;
    if (type.kind == ValueKind::kString || type.kind == ValueKind::kRaw) {
      MarkStandalone(handle, true);
    }
  } else {
    instance->value = std::calloc(1, type.Size());
    if (instance->value == nullptr) return nullptr;
    InitSlot(env, type, instance->value, &instance->own_ind, true);
  }
  return Register(env, std::move(instance));
}

Instance* FindInstance(Env* env, const void* value) {
  if (value == nullptr) return nullptr;
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  auto it = env->instances.find(const_cast<void*>(value));
  return it == env->instances.end() ? nullptr : it->second.get();
}

void FreeInstanceMemory(Instance* instance) {
  switch (instance->kind) {
    case Instance::Kind::kObject:
      if (instance->value != nullptr) {
        ValueType t;
        t.kind = ValueKind::kObject;
        t.named = instance->type;
        FreeSlot(t, instance->value);
      }
      std::free(instance->value);
      std::free(instance->null_struct);
      break;
    case Instance::Kind::kCollection:
      delete static_cast<OCIColl*>(instance->value);
      break;
    case Instance::Kind::kValue:
      if (instance->value_type.IsHandleSlot()) {
        FreeSlot(instance->value_type, &instance->value);
      } else {
        std::free(instance->value);
      }
      break;
  }
  instance->value = nullptr;
  instance->null_struct = nullptr;
}

void DestroyInstance(Env* env, void* value) {
  std::unique_ptr<Instance> instance;
  {
    std::lock_guard<std::mutex> lock(env->registry_mutex);
    auto it = env->instances.find(value);
    if (it == env->instances.end()) return;
    instance = std::move(it->second);
    env->instances.erase(it);
  }
  FreeInstanceMemory(instance.get());
}

void RekeyInstance(Env* env, void* old_value, void* new_value) {
  if (env == nullptr) return;
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  auto it = env->instances.find(old_value);
  if (it == env->instances.end()) return;
  std::unique_ptr<Instance> instance = std::move(it->second);
  env->instances.erase(it);
  instance->value = new_value;
  env->instances[new_value] = std::move(instance);
}

void ForgetInstance(Env* env, void* value) {
  if (env == nullptr) return;
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  env->instances.erase(value);
}

}  // namespace ocimem
