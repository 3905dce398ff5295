// Environments, handle and descriptor allocation, and handle attributes.
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <map>
#include <new>

#include "describe/describe.h"
#include "objects/instance.h"
#include "session/internal.h"
#include "lob/lob.h"
#include "statements/statement.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

constexpr ub4 kKnownModes = OCI_THREADED | OCI_OBJECT;

// Mode given to OCIInitialize, used by the environments OCIEnvInit makes.
std::atomic<ub4> g_initialize_mode{OCI_DEFAULT};

// Descriptors do not point back at their environment; this map finds it for
// OCIDescriptorFree.
std::mutex& DescriptorMutex() {
  static std::mutex m;
  return m;
}
std::map<void*, Env*>& DescriptorOwners() {
  static std::map<void*, Env*> owners;
  return owners;
}

void FreeDescriptor(void* desc, ub4 type) {
  if (type == OCI_DTYPE_LOB || type == OCI_DTYPE_FILE) {
    FreeLocator(AsLocator(desc));
  } else {
    FreeValueDescriptor(desc);
  }
}

bool GiveUserMemory(Handle* h, size_t xtramem_sz, void** usrmempp) {
  if (xtramem_sz == 0 || usrmempp == nullptr) return true;
  h->user_memory.reset(new (std::nothrow) unsigned char[xtramem_sz]());
  if (!h->user_memory) return false;
  *usrmempp = h->user_memory.get();
  return true;
}

sword CreateEnv(OCIEnv** envp, ub4 mode, size_t xtramem_sz, void** usrmempp) {
  if (envp == nullptr) return OCI_INVALID_HANDLE;
  auto* env = new (std::nothrow) Env(mode);
  if (env == nullptr) return OCI_ERROR;
  if (!GiveUserMemory(env, xtramem_sz, usrmempp)) {
    delete env;
    return OCI_ERROR;
  }
  *envp = reinterpret_cast<OCIEnv*>(env);
  if ((mode & ~kKnownModes) != 0) {
    env->records.push_back({24300, "ORA-24300: bad value for mode"});
    return OCI_ERROR;
  }
  return OCI_SUCCESS;
}

}  // namespace

Env::Env(ub4 create_mode)
    : Handle(OCI_HTYPE_ENV, nullptr), mode(create_mode), object_mode((create_mode & OCI_OBJECT) != 0) {
  env = this;
}

Env::~Env() {
  instances.ForEach([](Instance* instance) {
    FreeInstanceMemory(instance);
    delete instance;
  });
  instances.Clear();
  for (void* p : kept_null_structs) std::free(p);
  FreeLooseValues(this);
  {
    std::lock_guard<std::mutex> lock(DescriptorMutex());
    for (auto& [desc, type] : descriptors) {
      DescriptorOwners().erase(desc);
      FreeDescriptor(desc, type);
    }
  }
  for (Handle* h : handles) delete h;
}

void Env::Adopt(Handle* h) {
  std::lock_guard<std::mutex> lock(registry_mutex);
  handles.insert(h);
}

bool Env::Release(Handle* h) {
  {
    std::lock_guard<std::mutex> lock(registry_mutex);
    if (handles.erase(h) == 0) return false;
  }
  delete h;
  return true;
}

Env* EnvFromHandle(const void* hndl) {
  if (hndl == nullptr) return nullptr;
  ub4 live = 0;
  ub4 type = 0;
  ReadHandleTag(hndl, &live, &type);
  if (live != kLiveHandle) return nullptr;
  return static_cast<const Handle*>(hndl)->env;
}

}  // namespace ocimem

using namespace ocimem;

sword OCIEnvCreate(OCIEnv** envp, ub4 mode, void* ctxp, void* (*malocfp)(void* ctxp, size_t size),
                   void* (*ralocfp)(void* ctxp, void* memptr, size_t newsize),
                   void (*mfreefp)(void* ctxp, void* memptr), size_t xtramem_sz,
                   void** usrmempp) try {
  // Memory comes from the C++ allocator; the callbacks are accepted and not called.
  (void)ctxp;
  (void)malocfp;
  (void)ralocfp;
  (void)mfreefp;
  sword rc;
  if (EnterNoErr("OCIEnvCreate", &rc)) return rc;
  return CreateEnv(envp, mode, xtramem_sz, usrmempp);
} catch (...) {
  return OCI_ERROR;
}

sword OCIInitialize(ub4 mode, void* ctxp, void* (*malocfp)(void* ctxp, size_t size),
                    void* (*ralocfp)(void* ctxp, void* memptr, size_t newsize),
                    void (*mfreefp)(void* ctxp, void* memptr)) try {
  (void)ctxp;
  (void)malocfp;
  (void)ralocfp;
  (void)mfreefp;
  sword rc;
  if (EnterNoErr("OCIInitialize", &rc)) return rc;
  if ((mode & ~kKnownModes) != 0) return OCI_ERROR;
  g_initialize_mode.store(mode);
  return OCI_SUCCESS;
} catch (...) {
  return OCI_ERROR;
}

sword OCIEnvInit(OCIEnv** envp, ub4 mode, size_t xtramem_sz, void** usrmempp) try {
  sword rc;
  if (EnterNoErr("OCIEnvInit", &rc)) return rc;
  if (mode != OCI_DEFAULT) return CreateEnv(envp, mode, xtramem_sz, usrmempp);
  return CreateEnv(envp, g_initialize_mode.load(), xtramem_sz, usrmempp);
} catch (...) {
  return OCI_ERROR;
}

sword OCIHandleAlloc(const void* parenth, void** hndlpp, const ub4 type, const size_t xtramem_sz,
                     void** usrmempp) try {
  sword rc;
  if (EnterNoErr("OCIHandleAlloc", &rc)) return rc;
  Env* env = AsEnv(parenth);
  if (env == nullptr || hndlpp == nullptr) return OCI_INVALID_HANDLE;
  Handle* h = nullptr;
  switch (type) {
    case OCI_HTYPE_ERROR:
      h = new (std::nothrow) ErrorHandle(env);
      break;
    case OCI_HTYPE_SVCCTX:
      h = new (std::nothrow) SvcCtx(env);
      break;
    case OCI_HTYPE_STMT:
      h = new (std::nothrow) StmtHandle(env);
      break;
    case OCI_HTYPE_SERVER:
      h = new (std::nothrow) Server(env);
      break;
    case OCI_HTYPE_SESSION:
      h = new (std::nothrow) Session(env);
      break;
    case OCI_HTYPE_DESCRIBE:
      h = new (std::nothrow) DescribeHandle(env);
      break;
    default:
      return OCI_INVALID_HANDLE;  // environments come from OCIEnvCreate, binds and defines
                                  // from their calls; other kinds are not provided
  }
  if (h == nullptr) return OCI_INVALID_HANDLE;
  if (!GiveUserMemory(h, xtramem_sz, usrmempp)) {
    delete h;
    return OCI_INVALID_HANDLE;
  }
  try {
    env->Adopt(h);
  } catch (...) {
    delete h;  // not registered: nobody else would free it
    throw;
  }
  *hndlpp = h;
  return OCI_SUCCESS;
} catch (...) {
  return OCI_INVALID_HANDLE;  // its only failure status, without diagnostics
}

sword OCIHandleFree(void* hndlp, const ub4 type) try {
  sword rc;
  if (EnterNoErr("OCIHandleFree", &rc)) return rc;
  if (hndlp == nullptr) return OCI_INVALID_HANDLE;
  if (type == OCI_HTYPE_ENV) {
    Env* env = AsEnv(hndlp);
    if (env == nullptr) return OCI_INVALID_HANDLE;
    delete env;
    return OCI_SUCCESS;
  }
  Handle* h = AsHandle<Handle>(hndlp, type);
  if (h == nullptr || h->env == nullptr) return OCI_INVALID_HANDLE;
  return h->env->Release(h) ? OCI_SUCCESS : OCI_INVALID_HANDLE;
} catch (...) {
  return OCI_ERROR;
}

sword OCIDescriptorAlloc(const void* parenth, void** descpp, const ub4 type,
                         const size_t xtramem_sz, void** usrmempp) try {
  (void)xtramem_sz;
  (void)usrmempp;
  sword rc;
  if (EnterNoErr("OCIDescriptorAlloc", &rc)) return rc;
  Env* env = AsEnv(parenth);
  if (env == nullptr || descpp == nullptr) return OCI_INVALID_HANDLE;
  void* desc = nullptr;
  switch (type) {
    case OCI_DTYPE_LOB:
    case OCI_DTYPE_FILE:
      desc = NewLocatorDescriptor(type);
      if (desc == nullptr) return OCI_INVALID_HANDLE;
      break;
    case OCI_DTYPE_TIMESTAMP:
    case OCI_DTYPE_TIMESTAMP_TZ:
    case OCI_DTYPE_TIMESTAMP_LTZ:
    case OCI_DTYPE_INTERVAL_YM:
    case OCI_DTYPE_INTERVAL_DS:
    case OCI_DTYPE_DATE:
      if (AllocValueDescriptor(env, type, &desc) != OCI_SUCCESS) return OCI_INVALID_HANDLE;
      break;
    default:
      return OCI_INVALID_HANDLE;  // parameter descriptors are made by OCI itself
  }
  // Registered in both tables or in neither, and freed when it cannot be.
  try {
    std::lock_guard<std::mutex> lock(DescriptorMutex());
    DescriptorOwners()[desc] = env;
  } catch (...) {
    FreeDescriptor(desc, type);
    throw;
  }
  try {
    std::lock_guard<std::mutex> lock(env->registry_mutex);
    env->descriptors[desc] = type;
  } catch (...) {
    std::lock_guard<std::mutex> lock(DescriptorMutex());
    DescriptorOwners().erase(desc);
    FreeDescriptor(desc, type);
    throw;
  }
  *descpp = desc;
  return OCI_SUCCESS;
} catch (...) {
  return OCI_INVALID_HANDLE;  // its only failure status, without diagnostics
}

sword OCIDescriptorFree(void* descp, const ub4 type) try {
  sword rc;
  if (EnterNoErr("OCIDescriptorFree", &rc)) return rc;
  if (descp == nullptr) return OCI_INVALID_HANDLE;
  std::lock_guard<std::mutex> lock(DescriptorMutex());
  auto it = DescriptorOwners().find(descp);
  if (it == DescriptorOwners().end()) return OCI_INVALID_HANDLE;
  Env* env = it->second;
  {
    std::lock_guard<std::mutex> env_lock(env->registry_mutex);
    auto own = env->descriptors.find(descp);
    if (own == env->descriptors.end() || own->second != type) return OCI_INVALID_HANDLE;
    env->descriptors.erase(own);
  }
  DescriptorOwners().erase(it);
  FreeDescriptor(descp, type);
  return OCI_SUCCESS;
} catch (...) {
  return OCI_ERROR;
}
