// Deep copies of values: AssignSlot, ConstructSlot and CopyCollection.  Embedded objects are
// walked by WalkObject; a collection met on the way is queued and its elements copied after
// the value around it, so that objects holding collections of objects holding collections,
// however deep, are copied in a loop rather than one call inside the other.
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "collections/coll.h"
#include "collections/var_block.h"
#include "lob/lob.h"
#include "objects/ref.h"
#include "objects/value_descriptors.h"
#include "objects/value_slot.h"
#include "objects/walk.h"

namespace ocimem {
namespace {

template <typename T>
T*& SlotPointer(void* slot) {
  return *static_cast<T**>(slot);
}

// Collections made or cleared for a copy whose elements are still to be copied.
class PendingCopies {
 public:
  bool Add(const OCIColl* src, OCIColl* dst) {
    try {
      list_.emplace_back(src, dst);
    } catch (const std::bad_alloc&) {
      return false;
    }
    return true;
  }
  bool empty() const { return list_.empty(); }
  std::pair<const OCIColl*, OCIColl*> Take() {
    std::pair<const OCIColl*, OCIColl*> next = list_.back();
    list_.pop_back();
    return next;
  }

 private:
  std::vector<std::pair<const OCIColl*, OCIColl*>> list_;
};

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

// The source collection of a copy into a collection of type `t`, or nullptr when `elem` is
// none of the same element type.
const OCIColl* SourceCollection(const ValueType& t, const void* elem) {
  const OCIColl* src = AsColl(elem);
  if (src == nullptr || src->type->element.kind != t.named->element.kind ||
      src->type->element.named != t.named->element.named) {
    return nullptr;
  }
  return src;
}

// AssignSlot of any kind but an embedded object; a collection's elements are left in
// `pending`.
AssignResult AssignValue(Env* env, const ValueType& t, void* slot, const void* elem,
                         PendingCopies* pending) {
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
    case ValueKind::kCollection: {
      const OCIColl* src = SourceCollection(t, elem);
      if (src == nullptr) return AssignResult::kBadValue;
      OCIColl*& dst = SlotPointer<OCIColl>(slot);
      if (dst == src) return AssignResult::kOk;
      if (dst == nullptr) {
        dst = new (std::nothrow) OCIColl(env, t.named);
        if (dst == nullptr) return AssignResult::kNoMemory;
      }
      return pending->Add(src, dst) ? AssignResult::kOk : AssignResult::kNoMemory;
    }
    case ValueKind::kObject:
      break;
  }
  return AssignResult::kBadValue;
}

// AssignSlot without the collections' elements, which are left in `pending`.
AssignResult Assign(Env* env, const ValueType& t, void* slot, const void* elem,
                    PendingCopies* pending) {
  if (elem == slot) return AssignResult::kOk;
  if (t.kind != ValueKind::kObject) return AssignValue(env, t, slot, elem, pending);
  AssignResult result = AssignResult::kOk;
  WalkPlace at;
  at.slot = static_cast<unsigned char*>(slot);
  at.other = static_cast<const unsigned char*>(elem);
  WalkObject(
      *t.named, at, [](const Attribute&, WalkPlace&) { return WalkStep::kInto; },
      [&](const Attribute& a, const WalkPlace& p) {
        result = AssignValue(env, a.type, p.slot, ElementForm(a.type, p.other), pending);
        return result == AssignResult::kOk;
      });
  return result;
}

// ConstructSlot of any kind but an embedded object; a collection's elements are left in
// `pending`.
AssignResult ConstructValue(Env* env, const ValueType& t, void* slot, const void* elem,
                            PendingCopies* pending) {
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
    case ValueKind::kCollection: {
      const OCIColl* src = SourceCollection(t, elem);
      if (src == nullptr) return AssignResult::kBadValue;
      OCIColl*& dst = SlotPointer<OCIColl>(slot);
      dst = new (std::nothrow) OCIColl(env, t.named);
      if (dst == nullptr) return AssignResult::kNoMemory;
      return pending->Add(src, dst) ? AssignResult::kOk : AssignResult::kNoMemory;
    }
    case ValueKind::kObject:
      break;
  }
  return AssignResult::kBadValue;
}

// One attribute that is not an embedded object, made as a copy of the one at `other`:
// numbers, dates, strings and raws (the attributes of most objects) in line, the other
// kinds by ConstructValue.
inline AssignResult ConstructLeaf(Env* env, const ValueType& t, unsigned char* place,
                                  const unsigned char* other, PendingCopies* pending) {
  switch (t.kind) {
    case ValueKind::kNumber:
      std::memmove(place, other, sizeof(OCINumber));
      return AssignResult::kOk;
    case ValueKind::kDate:
      std::memmove(place, other, sizeof(OCIDate));
      return AssignResult::kOk;
    case ValueKind::kString:
    case ValueKind::kRaw: {
      const void* value = *reinterpret_cast<void* const*>(other);
      const void* bytes = value != nullptr ? VarBytes(value) : nullptr;
      const ub4 length = value != nullptr ? VarLength(value) : 0;
      SlotPointer<void>(place) = NewVarBlock(bytes, length);
      return SlotPointer<void>(place) != nullptr ? AssignResult::kOk : AssignResult::kNoMemory;
    }
    default:
      return ConstructValue(env, t, place, ElementForm(t, other), pending);
  }
}

// ConstructSlot without the collections' elements, which are left in `pending`.  A type
// with a list of every attribute it reaches goes through the list; others are walked.
AssignResult Construct(Env* env, const ValueType& t, void* slot, const void* elem,
                       PendingCopies* pending) {
  if (t.kind != ValueKind::kObject) return ConstructValue(env, t, slot, elem, pending);
  if (t.named->flat) {
    auto* base = static_cast<unsigned char*>(slot);
    const auto* from = static_cast<const unsigned char*>(elem);
    for (const OCIType::FlatAttribute& f : t.named->flat_attributes) {
      const AssignResult result = ConstructLeaf(env, *f.type, base + f.offset, from + f.offset, pending);
      if (result != AssignResult::kOk) return result;
    }
    return AssignResult::kOk;
  }
  AssignResult result = AssignResult::kOk;
  WalkPlace at;
  at.slot = static_cast<unsigned char*>(slot);
  at.other = static_cast<const unsigned char*>(elem);
  WalkObject(
      *t.named, at, [](const Attribute&, WalkPlace&) { return WalkStep::kInto; },
      [&](const Attribute& a, const WalkPlace& p) {
        result = ConstructLeaf(env, a.type, p.slot, p.other, pending);
        return result == AssignResult::kOk;
      });
  return result;
}

// Copies the elements of `src` into `dst`, replacing dst's; collections inside them are
// left in `pending`.  Holes are copied as holes into a collection of the client; a
// collection held by the database (owned by no environment) receives only the existing
// elements, in order, as Oracle stores a nested table without its deleted elements.
bool CopyElements(Env* env, const OCIColl& src, OCIColl* dst, PendingCopies* pending) {
  if (&src == dst) return true;
  dst->Clear();
  const ValueType& t = dst->element_type();
  const bool stored = dst->env == nullptr;
  for (size_t i = 0; i < src.size(); ++i) {
    if (src.IsHole(i)) {
      if (stored) continue;
      if (!dst->Grow() || !dst->MakeHole(dst->size() - 1)) return false;
      continue;
    }
    // Made in place, as OCICollAppend makes an element: no fresh value only to be replaced.
    unsigned char* block = dst->NextFree();
    if (block == nullptr) return false;
    if (Construct(env, t, block, ElementForm(t, src.ValueAt(i)), pending) != AssignResult::kOk) {
      FreeSlot(t, block);
      dst->Unused(block);
      return false;
    }
    std::memcpy(dst->IndIn(block), src.IndAt(i), t.IndSize());
    dst->Push();
  }
  return true;
}

// Copies the elements of every collection left in `pending`, and of those met on the way.
AssignResult CopyPending(Env* env, PendingCopies* pending) {
  while (!pending->empty()) {
    const std::pair<const OCIColl*, OCIColl*> next = pending->Take();
    if (!CopyElements(env, *next.first, next.second, pending)) return AssignResult::kNoMemory;
  }
  return AssignResult::kOk;
}

}  // namespace

AssignResult AssignSlot(Env* env, const ValueType& t, void* slot, const void* elem) {
  PendingCopies pending;
  AssignResult r = Assign(env, t, slot, elem, &pending);
  return r == AssignResult::kOk ? CopyPending(env, &pending) : r;
}

AssignResult ConstructSlot(Env* env, const ValueType& t, void* slot, const void* elem) {
  PendingCopies pending;
  AssignResult r = Construct(env, t, slot, elem, &pending);
  return r == AssignResult::kOk ? CopyPending(env, &pending) : r;
}

bool CopyCollection(Env* env, const OCIColl& src, OCIColl* dst) {
  PendingCopies pending;
  if (!CopyElements(env, src, dst, &pending)) return false;
  return CopyPending(env, &pending) == AssignResult::kOk;
}

}  // namespace ocimem
