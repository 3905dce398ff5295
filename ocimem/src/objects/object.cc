// The object interface: OCIObjectNew, OCIObjectGetInd, OCIObjectCopy, OCIObjectFree and
// OCIObjectUnpin.  Attribute access by name is in object_attr.cc.
#include <cstring>
#include <mutex>

#include "collections/coll.h"
#include "objects/instance.h"
#include "session/internal.h"
#include "objects/value_slot.h"
#include "objects/walk.h"

namespace ocimem {
namespace {

// The value kind of a built-in type code that OCIObjectNew accepts without a TDO.
bool BuiltinValueType(OCITypeCode code, ValueType* t) {
  t->typecode = code;
  switch (code) {
    case OCI_TYPECODE_VARCHAR:
    case OCI_TYPECODE_VARCHAR2:
    case OCI_TYPECODE_CHAR:
      t->kind = ValueKind::kString;
      return true;
    case OCI_TYPECODE_NUMBER:
    case OCI_TYPECODE_INTEGER:
    case OCI_TYPECODE_FLOAT:
    case OCI_TYPECODE_DECIMAL:
    case OCI_TYPECODE_SMALLINT:
    case OCI_TYPECODE_REAL:
    case OCI_TYPECODE_DOUBLE:
    case OCI_TYPECODE_SIGNED8:
    case OCI_TYPECODE_SIGNED16:
    case OCI_TYPECODE_SIGNED32:
    case OCI_TYPECODE_UNSIGNED8:  // decision D5: 23 is a number, not RAW
    case OCI_TYPECODE_UNSIGNED16:
    case OCI_TYPECODE_UNSIGNED32:
    case OCI_TYPECODE_OCTET:
      t->kind = ValueKind::kNumber;
      return true;
    case OCI_TYPECODE_DATE:
      t->kind = ValueKind::kDate;
      return true;
    case OCI_TYPECODE_RAW:
      t->kind = ValueKind::kRaw;
      return true;
    case OCI_TYPECODE_REF:
      t->kind = ValueKind::kRef;
      return true;
    case OCI_TYPECODE_CLOB:
    case OCI_TYPECODE_BLOB:
    case OCI_TYPECODE_BFILE:
      t->kind = ValueKind::kLob;
      return true;
    case OCI_TYPECODE_TIMESTAMP:
      t->kind = ValueKind::kDateTime;
      t->descriptor_type = OCI_DTYPE_TIMESTAMP;
      return true;
    case OCI_TYPECODE_TIMESTAMP_TZ:
      t->kind = ValueKind::kDateTime;
      t->descriptor_type = OCI_DTYPE_TIMESTAMP_TZ;
      return true;
    case OCI_TYPECODE_TIMESTAMP_LTZ:
      t->kind = ValueKind::kDateTime;
      t->descriptor_type = OCI_DTYPE_TIMESTAMP_LTZ;
      return true;
    case OCI_TYPECODE_INTERVAL_YM:
      t->kind = ValueKind::kInterval;
      t->descriptor_type = OCI_DTYPE_INTERVAL_YM;
      return true;
    case OCI_TYPECODE_INTERVAL_DS:
      t->kind = ValueKind::kInterval;
      t->descriptor_type = OCI_DTYPE_INTERVAL_DS;
      return true;
    default:
      return false;
  }
}

bool IsNamedTypeCode(OCITypeCode code) {
  return code == OCI_TYPECODE_OBJECT || code == OCI_TYPECODE_NAMEDCOLLECTION ||
         code == OCI_TYPECODE_VARRAY || code == OCI_TYPECODE_TABLE;
}

// After a copy, LOB attributes are null in the target, and REFs too with NOREF.
void NullLobsAndRefs(const OCIType& type, OCIInd* ind, bool refs) {
  if (!type.has_lob && !type.has_file && !refs) return;
  WalkPlace at;
  at.ind = ind;
  WalkObject(
      type, at, [](const Attribute&, WalkPlace&) { return WalkStep::kInto; },
      [refs](const Attribute& a, const WalkPlace& p) {
        if (a.type.kind == ValueKind::kLob || (refs && a.type.kind == ValueKind::kRef)) {
          *p.ind = OCI_IND_NULL;
        }
        return true;
      });
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCIObjectNew(OCIEnv* envh, OCIError* err, const OCISvcCtx* svc, OCITypeCode typecode,
                   OCIType* tdo, void* table, OCIDuration duration, boolean value,
                   void** instance) try {
  (void)svc;       // only ties the duration to a service
  (void)table;     // no persistent objects: every instance is a value
  (void)duration;  // values live until freed or until their environment goes
  (void)value;
  sword rc;
  if (Enter("OCIObjectNew", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (instance == nullptr) return FailArgument(err, 9);
  Instance* made = nullptr;
  if (typecode == OCI_TYPECODE_REF) {
    ValueType t;
    BuiltinValueType(typecode, &t);
    made = NewValueInstance(env, t);
  } else if (tdo != nullptr) {
    OCIType* type = AsType(tdo);
    if (type == nullptr) return FailArgument(err, 5);
    if (type->IsObject()) {
      if (typecode != OCI_TYPECODE_OBJECT) return FailArgument(err, 4);
      made = NewObjectInstance(env, type->shared_from_this());
    } else {
      bool matches = typecode == OCI_TYPECODE_NAMEDCOLLECTION ||
                     typecode == type->collection_typecode;
      if (!matches) return FailArgument(err, 4);
      made = NewCollectionInstance(env, type->shared_from_this());
    }
  } else {
    if (IsNamedTypeCode(typecode)) return FailArgument(err, 5);
    ValueType t;
    if (!BuiltinValueType(typecode, &t)) {
      return Fail(err, 22161, "type code [" + std::to_string(typecode) + "] is not valid");
    }
    made = NewValueInstance(env, t);
  }
  if (made == nullptr) return OutOfMemory(err);
  *instance = made->value;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIObjectGetInd(OCIEnv* envh, OCIError* err, void* instance, void** null_struct) try {
  sword rc;
  if (Enter("OCIObjectGetInd", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (instance == nullptr) return FailArgument(err, 3);
  if (null_struct == nullptr) return FailArgument(err, 4);
  Instance* found = FindInstance(env, instance);
  // Only objects and collections (decision D2) carry null information of their own.
  if (found == nullptr || found->kind == Instance::Kind::kValue) {
    return Fail(err, 21710, "argument is expecting a valid memory address of an object");
  }
  *null_struct = found->null_struct;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIObjectCopy(OCIEnv* envh, OCIError* err, const OCISvcCtx* svc, void* source,
                    void* null_source, void* target, void* null_target, OCIType* tdo,
                    OCIDuration duration, ub1 option) try {
  (void)svc;
  (void)duration;
  sword rc;
  if (Enter("OCIObjectCopy", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (source == nullptr) return FailArgument(err, 4);
  if (null_source == nullptr) return FailArgument(err, 5);
  if (target == nullptr) return FailArgument(err, 6);
  if (null_target == nullptr) return FailArgument(err, 7);
  OCIType* type = AsType(tdo);
  if (type == nullptr || !type->IsObject()) return FailArgument(err, 8);
  ValueType t;
  t.kind = ValueKind::kObject;
  t.typecode = OCI_TYPECODE_OBJECT;
  t.named = type->shared_from_this();
  if (!ObjectValueFits(env, t, source)) return FailArgument(err, 4);
  if (!ObjectValueFits(env, t, target)) return FailArgument(err, 6);
  AssignResult r = AssignSlot(env, t, target, source);
  if (r == AssignResult::kBadValue) return FailArgument(err, 4);
  if (r == AssignResult::kNoMemory) {
    return OutOfMemory(err);
  }
  if (null_target != null_source) std::memmove(null_target, null_source, type->ind_size);
  NullLobsAndRefs(*type, static_cast<OCIInd*>(null_target),
                  (option & OCI_OBJECTCOPY_NOREF) != 0);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIObjectFree(OCIEnv* envh, OCIError* err, void* instance, ub2 flags) try {
  sword rc;
  if (Enter("OCIObjectFree", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (instance == nullptr) return FailArgument(err, 3);
  // Decision D9: anything but a standalone instance is refused, never dereferenced.
  std::unique_ptr<Instance> found =
      TakeInstance(env, instance, (flags & OCI_OBJECTFREE_NONULL) != 0);
  if (found == nullptr) {
    return Fail(err, 21710, "argument is expecting a valid memory address of an object");
  }
  FreeInstanceMemory(found.get());
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIObjectUnpin(OCIEnv* envh, OCIError* err, void* object) try {
  sword rc;
  if (Enter("OCIObjectUnpin", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (object == nullptr) return FailArgument(err, 3);
  // Values are never pinned; of the pinned objects ocimem has only type descriptors.
  OCIType* type = FindInstance(env, object) != nullptr ? nullptr : FindType(object);
  if (type == nullptr) {
    return Fail(err, 21710, "argument is expecting a valid memory address of an object");
  }
  int pins = type->pins.load();
  do {
    if (pins <= 0) {
      return Fail(err, 21710, "argument is expecting a valid memory address of an object");
    }
  } while (!type->pins.compare_exchange_weak(pins, pins - 1));
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}
