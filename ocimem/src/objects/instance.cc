#include "objects/instance.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "collections/coll.h"
#include "session/handles.h"
#include "lob/lob.h"
#include "objects/value_slot.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

size_t RoundUp(size_t n, size_t align) { return (n + align - 1) / align * align; }

Instance* Register(Env* env, std::unique_ptr<Instance> instance) {
  Instance* raw = instance.get();
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  try {
    // An entry left at this address by memory released elsewhere goes, as its
    // instance's memory went.
    delete env->instances.Insert(raw->value, raw);
  } catch (...) {
    // No room in the registry: the instance was never the caller's.
    FreeInstanceMemory(raw);
    throw;
  }
  return instance.release();
}

}  // namespace

Instance* NewObjectInstance(Env* env, std::shared_ptr<OCIType> type) {
  const OCIType& t = *type;
  const size_t ind_bytes = RoundUp(t.ind_size, alignof(std::max_align_t));
  const size_t bytes = ind_bytes + (t.size == 0 ? 1 : t.size);
  auto* block = static_cast<unsigned char*>(PooledAlloc(bytes));
  if (block == nullptr) return nullptr;
  std::unique_ptr<Instance> instance(new (std::nothrow) Instance);
  if (instance == nullptr) {
    PooledFree(block, bytes);
    return nullptr;
  }
  instance->kind = Instance::Kind::kObject;
  instance->block_bytes = bytes;
  instance->null_struct = reinterpret_cast<OCIInd*>(block);
  // Every slot starts zeroed, so a partly initialised instance frees cleanly; InitObject
  // writes every indicator of the null struct.
  instance->value = block + ind_bytes;
  std::memset(instance->value, 0, bytes - ind_bytes);
  instance->type = std::move(type);
  if (!InitObject(env, t, instance->value, instance->null_struct, env->new_not_null)) {
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
  return env->instances.Find(value);
}

void FreeInstanceMemory(Instance* instance) {
  switch (instance->kind) {
    case Instance::Kind::kObject:
      if (instance->value != nullptr) FreeObject(*instance->type, instance->value);
      // Without its null struct (left to the caller) the block is the caller's.
      if (instance->null_struct != nullptr) {
        PooledFreeInstance(instance->null_struct, instance->block_bytes);
      }
      break;
    case Instance::Kind::kCollection:
      ReleaseCollection(static_cast<OCIColl*>(instance->value));
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

std::unique_ptr<Instance> TakeInstance(Env* env, void* value, bool keep_null_struct) {
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  Instance* found = env->instances.Find(value);
  if (found == nullptr) return nullptr;
  if (keep_null_struct && found->kind == Instance::Kind::kObject) {
    // Noted before the instance leaves the registry: when there is no room to note
    // it, the instance stays as it was.
    env->kept_null_structs.push_back(found->null_struct);
    found->null_struct = nullptr;
  }
  return std::unique_ptr<Instance>(env->instances.Erase(value));
}

void DestroyInstance(Env* env, void* value) {
  std::unique_ptr<Instance> instance = TakeInstance(env, value, false);
  if (instance != nullptr) FreeInstanceMemory(instance.get());
}

void RekeyInstance(Env* env, void* old_value, void* new_value) {
  if (env == nullptr) return;
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  Instance* instance = env->instances.Find(old_value);
  if (instance == nullptr || new_value == old_value) return;
  // The new key's entry is made first, the only step that allocates: when it throws,
  // the instance is still registered under its old value.
  delete env->instances.Insert(new_value, instance);
  env->instances.Erase(old_value);
  instance->value = new_value;
}

void ForgetInstance(Env* env, void* value) {
  if (env == nullptr) return;
  std::lock_guard<std::mutex> lock(env->registry_mutex);
  delete env->instances.Erase(value);
}

}  // namespace ocimem
