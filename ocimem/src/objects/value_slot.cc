#include "objects/value_slot.h"

#include <cstring>
#include <new>

#include "collections/coll.h"
#include "objects/instance.h"
#include "lob/lob.h"
#include "objects/ref.h"
#include "objects/value_descriptors.h"
#include "objects/walk.h"
#include "collections/var_block.h"

namespace ocimem {

OCIRef* AsRef(const void* p) {
  if (p == nullptr) return nullptr;
  auto* r = static_cast<OCIRef*>(const_cast<void*>(p));
  return r->live == kLiveRef ? r : nullptr;
}

void SetZeroNumber(OCINumber* n) {
  std::memset(n, 0, sizeof *n);
  n->OCINumberPart[0] = 1;     // one byte follows
  n->OCINumberPart[1] = 0x80;  // the exponent byte of zero
}

void SetFirstDate(OCIDate* d) {
  std::memset(d, 0, sizeof *d);
  d->OCIDateYYYY = -4712;
  d->OCIDateMM = 1;
  d->OCIDateDD = 1;
}

namespace {

template <typename T>
T*& SlotPointer(void* slot) {
  return *static_cast<T**>(slot);
}

}  // namespace

void SetNullInfo(const ValueType& t, OCIInd* ind, OCIInd value) {
  ind[0] = value;
  if (t.kind != ValueKind::kObject) return;
  if (t.named->flat) {
    auto* base = reinterpret_cast<unsigned char*>(ind);
    for (size_t at : t.named->flat_object_inds) *reinterpret_cast<OCIInd*>(base + at) = value;
    for (const OCIType::FlatAttribute& f : t.named->flat_attributes) {
      *reinterpret_cast<OCIInd*>(base + f.ind_offset) = value;
    }
    return;
  }
  WalkPlace at;
  at.ind = ind;
  WalkObject(
      *t.named, at,
      [value](const Attribute&, WalkPlace& p) {
        p.ind[0] = value;
        return WalkStep::kInto;
      },
      [value](const Attribute&, const WalkPlace& p) {
        *p.ind = value;
        return true;
      });
}

namespace {

// InitSlot of any kind but an embedded object.
bool InitValue(Env* env, const ValueType& t, void* slot, OCIInd* ind, bool not_null) {
  if (ind != nullptr) *ind = not_null ? OCI_IND_NOTNULL : OCI_IND_NULL;
  switch (t.kind) {
    case ValueKind::kNumber:
      SetZeroNumber(static_cast<OCINumber*>(slot));
      return true;
    case ValueKind::kDate:
      SetFirstDate(static_cast<OCIDate*>(slot));
      return true;
    case ValueKind::kString:
    case ValueKind::kRaw:
      SlotPointer<void>(slot) = NewVarBlock(nullptr, 0);
      return SlotPointer<void>(slot) != nullptr;
    case ValueKind::kRef:
      SlotPointer<OCIRef>(slot) = new (std::nothrow) OCIRef;
      return SlotPointer<OCIRef>(slot) != nullptr;
    case ValueKind::kLob:
      SlotPointer<OCILobLocator>(slot) = NewInstanceLocator(t.typecode, t.charset_form);
      return SlotPointer<OCILobLocator>(slot) != nullptr;
    case ValueKind::kDateTime:
    case ValueKind::kInterval: {
      void* desc = nullptr;
      if (AllocValueDescriptor(env, t.descriptor_type, &desc) != OCI_SUCCESS) return false;
      SlotPointer<void>(slot) = desc;
      return true;
    }
    case ValueKind::kCollection:
      SlotPointer<OCIColl>(slot) = new (std::nothrow) OCIColl(env, t.named);
      return SlotPointer<OCIColl>(slot) != nullptr;
    case ValueKind::kObject:
      break;
  }
  return false;
}

}  // namespace

bool InitSlot(Env* env, const ValueType& t, void* slot, OCIInd* ind, bool not_null) {
  if (t.kind == ValueKind::kObject) return InitObject(env, *t.named, slot, ind, not_null);
  return InitValue(env, t, slot, ind, not_null);
}

namespace {

// FreeSlot of any kind but an embedded object; in line, as freeing a whole value goes
// through it for every attribute.
[[gnu::always_inline]] inline void FreeValue(const ValueType& t, void* slot) {
  switch (t.kind) {
    case ValueKind::kNumber:
    case ValueKind::kDate:
      return;
    case ValueKind::kString:
    case ValueKind::kRaw:
      FreeVarBlock(SlotPointer<void>(slot));
      break;
    case ValueKind::kRef:
      if (OCIRef* r = SlotPointer<OCIRef>(slot)) {
        r->live = 0;
        delete r;
      }
      break;
    case ValueKind::kLob:
      FreeLocator(SlotPointer<OCILobLocator>(slot));
      break;
    case ValueKind::kDateTime:
    case ValueKind::kInterval:
      if (SlotPointer<void>(slot) != nullptr) FreeValueDescriptor(SlotPointer<void>(slot));
      break;
    case ValueKind::kCollection:
      ReleaseCollection(SlotPointer<OCIColl>(slot));
      break;
    case ValueKind::kObject:
      return;
  }
  SlotPointer<void>(slot) = nullptr;
}

}  // namespace

void FreeSlot(const ValueType& t, void* slot) {
  if (t.kind == ValueKind::kObject) {
    FreeObject(*t.named, slot);
  } else {
    FreeValue(t, slot);
  }
}

namespace {

// One attribute that is not an embedded object, made new: numbers, dates, strings and raws
// (the attributes of most objects) in line, the other kinds by InitValue.
inline bool InitLeaf(Env* env, const ValueType& t, unsigned char* place, OCIInd* ind, OCIInd state,
                     bool not_null) {
  switch (t.kind) {
    case ValueKind::kNumber:
      if (ind != nullptr) *ind = state;
      SetZeroNumber(reinterpret_cast<OCINumber*>(place));
      return true;
    case ValueKind::kDate:
      if (ind != nullptr) *ind = state;
      SetFirstDate(reinterpret_cast<OCIDate*>(place));
      return true;
    case ValueKind::kString:
    case ValueKind::kRaw:
      if (ind != nullptr) *ind = state;
      SlotPointer<void>(place) = NewVarBlock(nullptr, 0);
      return SlotPointer<void>(place) != nullptr;
    default:
      return InitValue(env, t, place, ind, not_null);
  }
}

}  // namespace

// A type with a list of every attribute it reaches goes through the list; others are
// walked.
bool InitObject(Env* env, const OCIType& type, void* slot, OCIInd* ind, bool not_null) {
  const OCIInd state = not_null ? OCI_IND_NOTNULL : OCI_IND_NULL;
  if (ind != nullptr) ind[0] = state;
  bool ok = true;
  if (type.flat) {
    auto* inds = reinterpret_cast<unsigned char*>(ind);
    if (inds != nullptr) {
      for (size_t at : type.flat_object_inds) *reinterpret_cast<OCIInd*>(inds + at) = state;
    }
    auto* base = static_cast<unsigned char*>(slot);
    for (const OCIType::FlatAttribute& f : type.flat_attributes) {
      OCIInd* attr_ind = inds != nullptr ? reinterpret_cast<OCIInd*>(inds + f.ind_offset) : nullptr;
      ok = InitLeaf(env, *f.type, base + f.offset, attr_ind, state, not_null) && ok;
    }
    return ok;
  }
  WalkPlace at;
  at.slot = static_cast<unsigned char*>(slot);
  at.ind = ind;
  WalkObject(
      type, at,
      [state](const Attribute&, WalkPlace& p) {
        if (p.ind != nullptr) p.ind[0] = state;
        return WalkStep::kInto;
      },
      [&](const Attribute& a, const WalkPlace& p) {
        ok = InitLeaf(env, a.type, p.slot, p.ind, state, not_null) && ok;
        return true;
      });
  return ok;
}

void FreeObject(const OCIType& type, void* slot) {
  if (type.flat) {
    auto* base = static_cast<unsigned char*>(slot);
    for (const OCIType::FlatAttribute& f : type.flat_attributes) FreeValue(*f.type, base + f.offset);
    return;
  }
  WalkPlace at;
  at.slot = static_cast<unsigned char*>(slot);
  WalkObject(
      type, at, [](const Attribute&, WalkPlace&) { return WalkStep::kInto; },
      [](const Attribute& a, const WalkPlace& p) {
        FreeValue(a.type, p.slot);
        return true;
      });
}

bool ObjectValueFits(Env* env, const ValueType& t, const void* elem) {
  if (t.kind != ValueKind::kObject) return true;
  const Instance* instance = FindInstance(env, elem);
  if (instance == nullptr) return true;
  return instance->kind == Instance::Kind::kObject && instance->type == t.named;
}

const void* ElementForm(const ValueType& t, const void* slot) {
  if (t.IsHandleSlot()) return *static_cast<void* const*>(slot);
  return slot;
}

}  // namespace ocimem
