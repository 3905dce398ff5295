// OCITypeByName: type descriptors from the session's database.
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

#include "database/database.h"
#include "session/internal.h"
#include "session/same_bytes.h"

using namespace ocimem;

sword OCITypeByName(OCIEnv* envh, OCIError* err, const OCISvcCtx* svc,
                    const oratext* schema_name, ub4 s_length, const oratext* type_name,
                    ub4 t_length, const oratext* version_name, ub4 v_length,
                    OCIDuration pin_duration, OCITypeGetOpt get_option, OCIType** tdo) try {
  // Only the current version exists; a header-only TDO is as complete as a full one, and
  // a pinned TDO stays valid while its database lives whatever the duration.
  (void)version_name;
  (void)v_length;
  (void)pin_duration;
  (void)get_option;
  sword rc;
  if (Enter("OCITypeByName", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  SvcCtx* ctx = AsSvcCtx(svc);
  if (ctx == nullptr) return OCI_INVALID_HANDLE;
  if (type_name == nullptr || t_length == 0) return FailArgument(err, 6);
  if (tdo == nullptr) return FailArgument(err, 12);
  Session* session = ctx->LiveSession();
  if (session == nullptr || !session->db) return Fail(err, 1012, "not logged on");
  // Names are matched as stored: nothing is upper-cased or unquoted here.
  const std::string_view name(reinterpret_cast<const char*>(type_name), t_length);
  bool qualified = schema_name != nullptr && s_length > 0;
  const std::string_view schema =
      qualified ? std::string_view(reinterpret_cast<const char*>(schema_name), s_length)
                : std::string_view(session->schema);
  Database* db = session->db.get();
  // The same name as last time on this error handle, and the catalog unchanged since:
  // the same type, found without the database's lock.
  TypeLookup& last = AsError(err)->type_lookup;
  if (last.db == db && last.name_length == name.size() && last.schema_length == schema.size() &&
      last.generation == db->catalog.Generation() &&
      SameBytes(last.name, name.data(), name.size()) &&
      SameBytes(last.schema, schema.data(), schema.size())) {
    last.type->pins.fetch_add(1);
    *tdo = last.type;
    return OCI_SUCCESS;
  }
  OCIType* type = nullptr;
  std::uint64_t generation = 0;
  {
    std::lock_guard<std::mutex> lock(db->mutex);
    type = db->catalog.FindTypeRaw(schema, name);
    generation = db->catalog.Generation();
  }
  if (type != nullptr && name.size() <= TypeLookup::kMaxName &&
      schema.size() <= TypeLookup::kMaxName) {
    last.db = db;
    last.generation = generation;
    last.type = type;
    last.name_length = static_cast<ub4>(name.size());
    last.schema_length = static_cast<ub4>(schema.size());
    std::memcpy(last.name, name.data(), name.size());
    std::memcpy(last.schema, schema.data(), schema.size());
  }
  if (type == nullptr) {
    std::string shown(name);
    if (qualified) shown = std::string(schema) + "." + shown;
    return Fail(err, 4043, "object " + shown + " does not exist");
  }
  type->pins.fetch_add(1);
  *tdo = type;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}
