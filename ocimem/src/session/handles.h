// Handles of the environment tree.  Every handle starts with a tag (a live marker and
// its OCI_HTYPE_ value) so that a handle of the wrong kind is answered with
// OCI_INVALID_HANDLE instead of being used.  An environment owns every handle, descriptor
// and standalone instance made from it and releases them when it is freed.
#ifndef OCIMEM_SRC_SESSION_HANDLES_H
#define OCIMEM_SRC_SESSION_HANDLES_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <mutex>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "oci.h"
#include "objects/address_table.h"
#include "session/recycle.h"
#include "session/session_nls.h"

namespace ocimem {

constexpr ub4 kLiveHandle = 0x4f43494dU;

struct Env;
struct Database;
struct Instance;
struct Transaction;

struct Handle {
  Handle(ub4 handle_type, Env* owner) : type(handle_type), env(owner) {}
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  virtual ~Handle() { live = 0; }
  // Recycled memory (recycle.h); the live tag is cleared by a raw write, as a destroyed
  // handle is no Handle any more.
  static void* operator new(std::size_t size) {
    void* p = RecycledAlloc(size);
    if (p == nullptr) throw std::bad_alloc();
    return p;
  }
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return RecycledAlloc(size);
  }
  static void operator delete(void* p) noexcept;
  static void operator delete(void* p, const std::nothrow_t&) noexcept { operator delete(p); }

  ub4 live = kLiveHandle;
  ub4 type;
  Env* env;
  std::unique_ptr<unsigned char[]> user_memory;
};

struct ErrorRecord {
  sb4 code;
  std::string text;  // "ORA-NNNNN: message"
};

// The last type OCITypeByName found through an error handle (a thread's own, as
// Oracle asks of error handles), so that looking the same name up again, as hosts do
// for every element of a collection, takes no lock while the catalog is unchanged.
struct TypeLookup {
  enum : ub4 { kMaxName = 128 };  // Oracle's longest identifier
  const void* db = nullptr;
  std::uint64_t generation = 0;
  OCIType* type = nullptr;
  ub4 schema_length = 0;
  ub4 name_length = 0;
  char schema[kMaxName];
  char name[kMaxName];
};

// Number masks OCINumberToText read through an error handle, and what it found: whether
// the mask is a plain fill-mode one ("FM999.99"), and its positions. A host uses a few
// masks over and over, one for each kind of column; each is kept in the entry its
// length and last byte choose.
struct NumberMaskLookup {
  enum : ub4 { kMaxMask = 48 };
  ub4 length = 0;  // 0: nothing remembered
  bool plain = false;
  bool has_point = false;
  long int_positions = 0;
  long frac_positions = 0;
  char text[kMaxMask];
};
enum : ub4 { kNumberMaskLookups = 16 };
inline ub4 NumberMaskSlot(const char* mask, ub4 length) {
  return (length * 7U + static_cast<unsigned char>(mask[length - 1])) % kNumberMaskLookups;
}

struct ErrorHandle : Handle {
  // Room for one record from the start, so that OutOfMemory can always leave one.
  explicit ErrorHandle(Env* owner) : Handle(OCI_HTYPE_ERROR, owner) { records.reserve(1); }
  std::vector<ErrorRecord> records;
  TypeLookup type_lookup;
  NumberMaskLookup number_masks[kNumberMaskLookups];
};

// Byte offset of Handle::live in every handle (Handle::type follows it). Handle is not
// standard-layout (it has a virtual destructor), which makes offsetof conditionally
// supported; GCC and Clang give the member's offset for a class without virtual bases.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
inline constexpr std::size_t kHandleTagOffset = offsetof(Handle, live);
static_assert(offsetof(Handle, live) + sizeof(ub4) == offsetof(Handle, type),
              "the tag is live followed by type");
#pragma GCC diagnostic pop

// Reads live and type straight from memory: a stale pointer to a freed handle holds no
// object that could be accessed as one.
inline void ReadHandleTag(const void* p, ub4* live, ub4* type) {
  ub4 tag[2];
  std::memcpy(tag, static_cast<const unsigned char*>(p) + kHandleTagOffset, sizeof tag);
  *live = tag[0];
  *type = tag[1];
}

inline void Handle::operator delete(void* p) noexcept {
  if (p != nullptr) {
    const ub4 dead = 0;
    std::memcpy(static_cast<unsigned char*>(p) + kHandleTagOffset, &dead, sizeof dead);
  }
  RecycledFree(p);
}

// The handle behind `p` when it is a live handle of `type`, else nullptr.
template <typename T>
T* AsHandle(const void* p, ub4 type) {
  if (p == nullptr) return nullptr;
  ub4 live = 0;
  ub4 actual = 0;
  ReadHandleTag(p, &live, &actual);
  if (live != kLiveHandle || actual != type) return nullptr;
  return static_cast<T*>(static_cast<Handle*>(const_cast<void*>(p)));
}

struct Server : Handle {
  explicit Server(Env* owner) : Handle(OCI_HTYPE_SERVER, owner) {}
  std::shared_ptr<Database> db;  // set while attached
};

struct Session : Handle {
  explicit Session(Env* owner);
  // Rolls back a transaction still open.
  ~Session() override;
  std::string username;
  std::string password;
  bool has_username = false;
  bool has_password = false;
  std::shared_ptr<Database> db;  // set while the session is begun
  std::string schema;            // default schema of the begun session
  std::unique_ptr<Transaction> txn;  // open transaction (id 0 when none)
  std::shared_ptr<const SessionNls> nls = DefaultNls();  // replaced whole by ALTER SESSION
  // CURRVAL of each sequence (by Sequence::id) that NEXTVAL has used in this session.
  std::map<std::uint64_t, std::string> currvals;
};

struct SvcCtx : Handle {
  explicit SvcCtx(Env* owner) : Handle(OCI_HTYPE_SVCCTX, owner) {}
  Server* server = nullptr;
  Session* session = nullptr;
  bool from_logon = false;  // made by OCILogon/OCILogon2: owns server and session

  // The server and session set, or nullptr when none is set or the caller has freed the
  // handle since (a freed handle's memory stays readable, see recycle.h).
  Server* LiveServer() const;
  Session* LiveSession() const;
};


struct Env : Handle {
  explicit Env(ub4 create_mode);
  ~Env() override;

  ub4 mode;
  bool object_mode;
  bool new_not_null = false;
  std::string session_time_zone;
  std::vector<ErrorRecord> records;  // diagnostics of OCIEnvCreate, read with OCI_HTYPE_ENV

  // Guards the registries below; an OCI_THREADED environment may be shared by threads.
  std::mutex registry_mutex;
  std::unordered_set<Handle*> handles;
  std::unordered_map<void*, ub4> descriptors;  // OCIDescriptorAlloc'd: address -> OCI_DTYPE_
  AddressTable<Instance> instances;  // by the address handed out; owned
  // Null structs that OCIObjectFree(..., OCI_OBJECTFREE_NONULL) left to the caller.
  std::vector<void*> kept_null_structs;
  // Strings and raws that OCIStringAssignText & co. allocated for a NULL value.
  std::unordered_set<void*> loose_values;

  void Adopt(Handle* h);
  // Destroys a child handle (and what it owns).  False when it is not ours.
  bool Release(Handle* h);
};

inline Env* AsEnv(const void* p) { return AsHandle<Env>(p, OCI_HTYPE_ENV); }
inline ErrorHandle* AsError(const void* p) { return AsHandle<ErrorHandle>(p, OCI_HTYPE_ERROR); }
inline SvcCtx* AsSvcCtx(const void* p) { return AsHandle<SvcCtx>(p, OCI_HTYPE_SVCCTX); }
inline Server* AsServer(const void* p) { return AsHandle<Server>(p, OCI_HTYPE_SERVER); }
inline Session* AsSession(const void* p) { return AsHandle<Session>(p, OCI_HTYPE_SESSION); }
inline Server* SvcCtx::LiveServer() const { return AsServer(server); }
inline Session* SvcCtx::LiveSession() const { return AsSession(session); }

}  // namespace ocimem

#endif  // OCIMEM_SRC_SESSION_HANDLES_H
