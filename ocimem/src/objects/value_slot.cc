#include "objects/value_slot.h"

#include <cstring>
#include <new>

#include "collections/coll.h"
#include "objects/instance.h"
#include "lob/lob.h"
#include "objects/ref.h"
#include "objects/value_descriptors.h"
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

unsigned char* At(void* base, size_t offset) { return static_cast<unsigned char*>(base) + offset; }
const unsigned char* At(const void* base, size_t offset) {
  return static_cast<const unsigned char*>(base) + offset;
}
OCIInd* IndAt(OCIInd* ind, size_t byte_offset) {
  return reinterpret_cast<OCIInd*>(reinterpret_cast<unsigned char*>(ind) + byte_offset);
}

}  // namespace

void SetNullInfo(const ValueType& t, OCIInd* ind, OCIInd value) {
  if (t.kind != ValueKind::kObject) {
    *ind = value;
    return;
  }
  ind[0] = value;
  for (const Attribute& a : t.named->attributes) SetNullInfo(a.type, IndAt(ind, a.ind_offset), value);
}

bool InitSlot(Env* env, const ValueType& t, void* slot, OCIInd* ind, bool not_null) {
  OCIInd state = not_null ? OCI_IND_NOTNULL : OCI_IND_NULL;
  if (ind != nullptr && t.kind != ValueKind::kObject) *ind = state;
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
    case ValueKind::kObject:
      return InitObject(env, *t.named, slot, ind, not_null);
    case ValueKind::kCollection:
      SlotPointer<OCIColl>(slot) = new (std::nothrow) OCIColl(env, t.named);
      return SlotPointer<OCIColl>(slot) != nullptr;
  }
  return false;
}

void FreeSlot(const ValueType& t, void* slot) {
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
    case ValueKind::kObject:
      FreeObject(*t.named, slot);
      return;
    case ValueKind::kCollection:
      delete SlotPointer<OCIColl>(slot);
      break;
  }
  SlotPointer<void>(slot) = nullptr;
}

// The attribute loops below handle numbers, dates, strings and raws in line (the attributes
// of most objects) and leave the other kinds to InitSlot, FreeSlot and ConstructSlot.
bool InitObject(Env* env, const OCIType& type, void* slot, OCIInd* ind, bool not_null) {
  const OCIInd state = not_null ? OCI_IND_NOTNULL : OCI_IND_NULL;
  if (ind != nullptr) ind[0] = state;
  bool ok = true;
  for (const Attribute& a : type.attributes) {
    void* s = At(slot, a.offset);
    OCIInd* attr_ind = ind != nullptr ? IndAt(ind, a.ind_offset) : nullptr;
    switch (a.type.kind) {
      case ValueKind::kNumber:
        if (attr_ind != nullptr) *attr_ind = state;
        SetZeroNumber(static_cast<OCINumber*>(s));
        break;
      case ValueKind::kDate:
        if (attr_ind != nullptr) *attr_ind = state;
        SetFirstDate(static_cast<OCIDate*>(s));
        break;
      case ValueKind::kString:
      case ValueKind::kRaw:
        if (attr_ind != nullptr) *attr_ind = state;
        SlotPointer<void>(s) = NewVarBlock(nullptr, 0);
        if (SlotPointer<void>(s) == nullptr) ok = false;
        break;
      default:
        ok = InitSlot(env, a.type, s, attr_ind, not_null) && ok;
        break;
    }
  }
  return ok;
}

void FreeObject(const OCIType& type, void* slot) {
  for (const Attribute& a : type.attributes) {
    void* s = At(slot, a.offset);
    switch (a.type.kind) {
      case ValueKind::kNumber:
      case ValueKind::kDate:
        break;
      case ValueKind::kString:
      case ValueKind::kRaw:
        FreeVarBlock(SlotPointer<void>(s));
        SlotPointer<void>(s) = nullptr;
        break;
      default:
        FreeSlot(a.type, s);
        break;
    }
  }
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

namespace {

// A number or a date is its bytes: copied alike into a slot that holds a value and into one
// that does not.
AssignResult CopyInlineValue(const ValueType& t, void* slot, const void* elem) {
  std::memmove(slot, elem, t.kind == ValueKind::kNumber ? sizeof(OCINumber) : sizeof(OCIDate));
  return AssignResult::kOk;
}

// The bytes of a string or raw to copy. A value resized to 0 by its owner is NULL: it
// copies as an empty value.
struct VarSource {
  const void* bytes;
  ub4 length;
};
VarSource SourceOf(const void* elem) {
  return elem != nullptr ? VarSource{VarBytes(elem), VarLength(elem)} : VarSource{nullptr, 0};
}

}  // namespace

AssignResult AssignSlot(Env* env, const ValueType& t, void* slot, const void* elem) {
  if (elem == slot) return AssignResult::kOk;
  switch (t.kind) {
    case ValueKind::kNumber:
    case ValueKind::kDate:
      return CopyInlineValue(t, slot, elem);
    case ValueKind::kString:
    case ValueKind::kRaw: {
      void*& dst = SlotPointer<void>(slot);
      if (elem == dst && elem != nullptr) return AssignResult::kOk;
      const VarSource src = SourceOf(elem);
      return AssignVarBlock(env, src.bytes, src.length, &dst) ? AssignResult::kOk
                                                              : AssignResult::kNoMemory;
    }
    case ValueKind::kRef: {
      if (AsRef(elem) == nullptr) return AssignResult::kBadValue;
      if (SlotPointer<OCIRef>(slot) == nullptr) {
        SlotPointer<OCIRef>(slot) = new (std::nothrow) OCIRef;
        if (SlotPointer<OCIRef>(slot) == nullptr) return AssignResult::kNoMemory;
      }
      return AssignResult::kOk;
    }
    case ValueKind::kLob: {
      const OCILobLocator* src = AsLocator(elem);
      if (src == nullptr) return AssignResult::kBadValue;
      OCILobLocator*& dst = SlotPointer<OCILobLocator>(slot);
      if (dst == src) return AssignResult::kOk;
      if (dst == nullptr) {
        dst = NewInstanceLocator(t.typecode, t.charset_form);
        if (dst == nullptr) return AssignResult::kNoMemory;
      }
      CopyLocator(*src, dst);
      return AssignResult::kOk;
    }
    case ValueKind::kDateTime:
    case ValueKind::kInterval: {
      if (!IsValueDescriptor(elem, t.descriptor_type)) return AssignResult::kBadValue;
      void*& dst = SlotPointer<void>(slot);
      if (dst == elem) return AssignResult::kOk;
      if (dst == nullptr && AllocValueDescriptor(env, t.descriptor_type, &dst) != OCI_SUCCESS) {
        return AssignResult::kNoMemory;
      }
      CopyValueDescriptor(elem, dst);
      return AssignResult::kOk;
    }
    case ValueKind::kObject:
      for (const Attribute& a : t.named->attributes) {
        AssignResult r = AssignSlot(env, a.type, At(slot, a.offset),
                                    ElementForm(a.type, At(elem, a.offset)));
        if (r != AssignResult::kOk) return r;
      }
      return AssignResult::kOk;
    case ValueKind::kCollection: {
      const OCIColl* src = AsColl(elem);
      if (src == nullptr || src->type->element.kind != t.named->element.kind ||
          src->type->element.named != t.named->element.named) {
        return AssignResult::kBadValue;
      }
      OCIColl*& dst = SlotPointer<OCIColl>(slot);
      if (dst == src) return AssignResult::kOk;
      if (dst == nullptr) {
        dst = new (std::nothrow) OCIColl(env, t.named);
        if (dst == nullptr) return AssignResult::kNoMemory;
      }
      return CopyCollection(env, *src, dst) ? AssignResult::kOk : AssignResult::kNoMemory;
    }
  }
  return AssignResult::kBadValue;
}

AssignResult ConstructSlot(Env* env, const ValueType& t, void* slot, const void* elem) {
  switch (t.kind) {
    case ValueKind::kNumber:
    case ValueKind::kDate:
      return CopyInlineValue(t, slot, elem);
    case ValueKind::kString:
    case ValueKind::kRaw: {
      const VarSource src = SourceOf(elem);
      SlotPointer<void>(slot) = NewVarBlock(src.bytes, src.length);
      return SlotPointer<void>(slot) != nullptr ? AssignResult::kOk : AssignResult::kNoMemory;
    }
    case ValueKind::kRef:
      if (AsRef(elem) == nullptr) return AssignResult::kBadValue;
      SlotPointer<OCIRef>(slot) = new (std::nothrow) OCIRef;
      return SlotPointer<OCIRef>(slot) != nullptr ? AssignResult::kOk : AssignResult::kNoMemory;
    case ValueKind::kLob: {
      const OCILobLocator* src = AsLocator(elem);
      if (src == nullptr) return AssignResult::kBadValue;
      OCILobLocator*& dst = SlotPointer<OCILobLocator>(slot);
      dst = NewInstanceLocator(t.typecode, t.charset_form);
      if (dst == nullptr) return AssignResult::kNoMemory;
      CopyLocator(*src, dst);
      return AssignResult::kOk;
    }
    case ValueKind::kDateTime:
    case ValueKind::kInterval: {
      if (!IsValueDescriptor(elem, t.descriptor_type)) return AssignResult::kBadValue;
      void* desc = nullptr;
      if (AllocValueDescriptor(env, t.descriptor_type, &desc) != OCI_SUCCESS) {
        return AssignResult::kNoMemory;
      }
      SlotPointer<void>(slot) = desc;
      CopyValueDescriptor(elem, desc);
      return AssignResult::kOk;
    }
    case ValueKind::kObject:
      for (const Attribute& a : t.named->attributes) {
        void* s = At(slot, a.offset);
        const unsigned char* from = At(elem, a.offset);
        switch (a.type.kind) {
          case ValueKind::kNumber:
            std::memmove(s, from, sizeof(OCINumber));
            break;
          case ValueKind::kDate:
            std::memmove(s, from, sizeof(OCIDate));
            break;
          case ValueKind::kString:
          case ValueKind::kRaw: {
            const void* value = *reinterpret_cast<void* const*>(from);
            const void* bytes = value != nullptr ? VarBytes(value) : nullptr;
            ub4 length = value != nullptr ? VarLength(value) : 0;
            SlotPointer<void>(s) = NewVarBlock(bytes, length);
            if (SlotPointer<void>(s) == nullptr) return AssignResult::kNoMemory;
            break;
          }
          default: {
            AssignResult r = ConstructSlot(env, a.type, s, ElementForm(a.type, from));
            if (r != AssignResult::kOk) return r;
            break;
          }
        }
      }
      return AssignResult::kOk;
    case ValueKind::kCollection: {
      const OCIColl* src = AsColl(elem);
      if (src == nullptr || src->type->element.kind != t.named->element.kind ||
          src->type->element.named != t.named->element.named) {
        return AssignResult::kBadValue;
      }
      OCIColl*& dst = SlotPointer<OCIColl>(slot);
      dst = new (std::nothrow) OCIColl(env, t.named);
      if (dst == nullptr) return AssignResult::kNoMemory;
      return CopyCollection(env, *src, dst) ? AssignResult::kOk : AssignResult::kNoMemory;
    }
  }
  return AssignResult::kBadValue;
}

}  // namespace ocimem
