// OCIObjectGetAttr and OCIObjectSetAttr: attributes reached by a path of names.
#include <cstring>

#include "objects/instance.h"
#include "session/internal.h"
#include "orid.h"
#include "objects/value_slot.h"

namespace ocimem {
namespace {

struct AttributeRef {
  const Attribute* attribute = nullptr;
  unsigned char* slot = nullptr;
  OCIInd* ind = nullptr;  // the indicator, or the embedded object's null struct
};

// Follows `names` from the instance; returns OCI_SUCCESS with `out` set, or the failure.
// In line, as hosts call OCIObjectGetAttr once for every attribute they read.
[[gnu::always_inline]] inline sword Resolve(Env* env, OCIError* err, void* instance, void* null_struct, OCIType* tdo,
              const oratext** names, const ub4* lengths, ub4 name_count, const ub4* indexes,
              ub4 index_count, AttributeRef* out) {
  (void)indexes;
  if (instance == nullptr) return FailArgument(err, 3);
  OCIType* type = AsType(tdo);
  if (type == nullptr || !type->IsObject()) return FailArgument(err, 5);
  if (names == nullptr || name_count == 0) return FailArgument(err, 6);
  if (lengths == nullptr) return FailArgument(err, 7);
  if (index_count != 0) return FailArgument(err, 10);  // array indexes are not supported
  if (null_struct == nullptr) {
    // Decision D3: NULL means the standalone instance's own null struct.
    Instance* found = FindInstance(env, instance);
    if (found == nullptr || found->kind != Instance::Kind::kObject) return FailArgument(err, 4);
    null_struct = found->null_struct;
  }
  auto* slot = static_cast<unsigned char*>(instance);
  auto* ind = static_cast<unsigned char*>(null_struct);
  for (ub4 i = 0; i < name_count; ++i) {
    if (names[i] == nullptr) return FailArgument(err, 6);
    const Attribute* a =
        type->FindAttribute(reinterpret_cast<const char*>(names[i]), lengths[i]);
    if (a == nullptr) return FailArgument(err, 6);
    slot += a->offset;
    ind += a->ind_offset;
    out->attribute = a;
    if (i + 1 < name_count) {
      if (a->type.kind != ValueKind::kObject) return FailArgument(err, 6);
      type = a->type.named.get();
    }
  }
  out->slot = slot;
  out->ind = reinterpret_cast<OCIInd*>(ind);
  return OCI_SUCCESS;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCIObjectGetAttr(OCIEnv* envh, OCIError* err, void* instance, void* null_struct,
                       struct OCIType* tdo, const oratext** names, const ub4* lengths,
                       const ub4 name_count, const ub4* indexes, const ub4 index_count,
                       OCIInd* attr_null_status, void** attr_null_struct, void** attr_value,
                       struct OCIType** attr_tdo) try {
  sword rc;
  if (Enter("OCIObjectGetAttr", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  AttributeRef ref;
  rc = Resolve(env, err, instance, null_struct, tdo, names, lengths, name_count, indexes,
               index_count, &ref);
  if (rc != OCI_SUCCESS) return rc;
  const ValueType& t = ref.attribute->type;
  bool embedded = t.kind == ValueKind::kObject;
  // Decision D3: a null struct only for embedded objects, a TDO for objects and collections.
  if (attr_null_status != nullptr) *attr_null_status = ref.ind[0];
  if (attr_null_struct != nullptr) *attr_null_struct = embedded ? ref.ind : nullptr;
  if (attr_value != nullptr) *attr_value = ref.slot;
  if (attr_tdo != nullptr) {
    bool named = embedded || t.kind == ValueKind::kCollection;
    *attr_tdo = named ? t.named.get() : nullptr;
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIObjectSetAttr(OCIEnv* envh, OCIError* err, void* instance, void* null_struct,
                       struct OCIType* tdo, const oratext** names, const ub4* lengths,
                       const ub4 name_count, const ub4* indexes, const ub4 index_count,
                       const OCIInd null_status, const void* attr_null_struct,
                       const void* attr_value) try {
  sword rc;
  if (Enter("OCIObjectSetAttr", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  AttributeRef ref;
  rc = Resolve(env, err, instance, null_struct, tdo, names, lengths, name_count, indexes,
               index_count, &ref);
  if (rc != OCI_SUCCESS) return rc;
  const ValueType& t = ref.attribute->type;
  if (attr_value != nullptr) {
    if (!ObjectValueFits(env, t, attr_value)) return FailArgument(err, 13);
    AssignResult r = AssignSlot(env, t, ref.slot, attr_value);
    if (r == AssignResult::kBadValue) return FailArgument(err, 13);
    if (r == AssignResult::kNoMemory) {
      return OutOfMemory(err);
    }
  }
  // Decision D4: an embedded object takes the given null struct (unless it is the slot
  // itself) and then null_status as its atomic indicator; other attributes take
  // null_status as their indicator.
  if (t.kind == ValueKind::kObject && attr_null_struct != nullptr &&
      attr_null_struct != ref.ind) {
    std::memmove(ref.ind, attr_null_struct, t.IndSize());
  }
  ref.ind[0] = null_status;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}
