// Collection and iterator calls of orl.h.
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "collections/coll.h"
#include "session/internal.h"
#include "objects/value_slot.h"

namespace ocimem {
namespace {

std::string Bracket(long long v) { return "[" + std::to_string(v) + "]"; }

sword IndexError(OCIError* err, long long index, long long low, long long high) {
  return Fail(err, 22165,
              "given index " + Bracket(index) + " must be in the range of " + Bracket(low) +
                  " to " + Bracket(high));
}

// Stores the element given in by OCICollAppend/OCICollAssignElem at index i.
sword StoreElement(Env* env, OCIError* err, OCIColl* coll, size_t i, const void* elem,
                   const void* elemind, int elem_position) {
  const ValueType& t = coll->element_type();
  if (!ObjectValueFits(env, t, elem)) return FailArgument(err, elem_position);
  AssignResult r = AssignSlot(env, t, coll->ValueAt(i), elem);
  if (r == AssignResult::kBadValue) return FailArgument(err, elem_position);
  if (r == AssignResult::kNoMemory) {
    return OutOfMemory(err);
  }
  if (elemind == nullptr) {
    SetNullInfo(t, coll->IndAt(i), OCI_IND_NOTNULL);
  } else if (elemind != coll->IndAt(i)) {
    std::memmove(coll->IndAt(i), elemind, t.IndSize());
  }
  return OCI_SUCCESS;
}

// In line: the iterator calls are made once per element.
[[gnu::always_inline]] inline sword EnterCollCall(const char* function, OCIEnv* envh,
                                                 OCIError* err, Env** env) {
  sword rc;
  if (Enter(function, err, &rc)) return rc;
  return CheckObjectEnv(envh, err, env);
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCICollSize(OCIEnv* envh, OCIError* err, const OCIColl* coll, sb4* size) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCICollSize", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(coll);
  if (c == nullptr) return FailArgument(err, 3);
  if (size == nullptr) return FailArgument(err, 4);
  *size = static_cast<sb4>(c->size());
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sb4 OCICollMax(OCIEnv* envh, const OCIColl* coll) try {
  sword rc;
  if (EnterNoErr("OCICollMax", &rc)) return rc;
  (void)envh;
  const OCIColl* c = AsColl(coll);
  if (c == nullptr || c->type->collection_typecode != OCI_TYPECODE_VARRAY) return 0;
  return c->type->max_elements;
} catch (...) {
  return 0;
}

sword OCICollTrim(OCIEnv* envh, OCIError* err, sb4 trim_num, OCIColl* coll) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCICollTrim", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  OCIColl* c = AsColl(coll);
  if (c == nullptr) return FailArgument(err, 4);
  auto size = static_cast<long long>(c->size());
  if (trim_num < 0 || trim_num > size) {
    return Fail(err, 22167,
                "given trim size " + Bracket(trim_num) + " must be less than or equal to " +
                    Bracket(size));
  }
  c->TrimBack(static_cast<size_t>(trim_num));
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCICollAppend(OCIEnv* envh, OCIError* err, const void* elem, const void* elemind,
                    OCIColl* coll) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCICollAppend", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  if (elem == nullptr) return FailArgument(err, 3);  // decision D8
  OCIColl* c = AsColl(coll);
  if (c == nullptr) return FailArgument(err, 5);
  const OCIType& type = *c->type;
  if (type.collection_typecode == OCI_TYPECODE_VARRAY &&
      c->size() >= static_cast<size_t>(type.max_elements)) {
    return IndexError(err, static_cast<long long>(c->size()), 0, type.max_elements - 1LL);
  }
  // The element is copied straight into its block (what Grow and StoreElement make of it).
  unsigned char* block = c->NextFree();
  if (block == nullptr) return OutOfMemory(err);
  const ValueType& t = c->element_type();
  if (!ObjectValueFits(env, t, elem)) {
    c->Unused(block);
    return FailArgument(err, 3);
  }
  OCIInd* ind = c->IndIn(block);
  AssignResult r = AssignResult::kOk;
  if (elem != block) {
    r = ConstructSlot(env, t, block, elem);
  } else if (!InitSlot(env, t, block, ind, true)) {  // a stale address: the new value stays
    r = AssignResult::kNoMemory;
  }
  if (r != AssignResult::kOk) {
    FreeSlot(t, block);
    c->Unused(block);
    return r == AssignResult::kBadValue ? FailArgument(err, 3) : OutOfMemory(err);
  }
  if (elemind == nullptr || elemind == ind) {
    SetNullInfo(t, ind, OCI_IND_NOTNULL);
  } else {
    std::memmove(ind, elemind, t.IndSize());
  }
  c->Push();
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCICollGetElem(OCIEnv* envh, OCIError* err, const OCIColl* coll, sb4 index,
                     boolean* exists, void** elem, void** elemind) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCICollGetElem", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(coll);
  if (c == nullptr) return FailArgument(err, 3);
  if (exists == nullptr) return FailArgument(err, 5);
  if (elem == nullptr) return FailArgument(err, 6);
  if (index < 0 || !c->Exists(static_cast<size_t>(index))) {
    *exists = FALSE;  // past the end, or a deleted element of a nested table
    return OCI_SUCCESS;
  }
  *exists = TRUE;
  *elem = c->ValueAt(static_cast<size_t>(index));
  if (elemind != nullptr) *elemind = c->IndAt(static_cast<size_t>(index));
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCICollAssignElem(OCIEnv* envh, OCIError* err, sb4 index, const void* elem,
                        const void* elemind, OCIColl* coll) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCICollAssignElem", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  if (elem == nullptr) return FailArgument(err, 4);
  OCIColl* c = AsColl(coll);
  if (c == nullptr) return FailArgument(err, 6);
  if (index < 0 || static_cast<size_t>(index) >= c->size()) {
    return IndexError(err, index, 0, static_cast<long long>(c->size()) - 1);
  }
  const auto i = static_cast<size_t>(index);
  rc = StoreElement(env, err, c, i, elem, elemind, 4);
  if (rc == OCI_SUCCESS) c->FillHole(i);  // a deleted element is inserted again
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCICollAssign(OCIEnv* envh, OCIError* err, const OCIColl* rhs, OCIColl* lhs) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCICollAssign", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* src = AsColl(rhs);
  if (src == nullptr) return FailArgument(err, 3);
  OCIColl* dst = AsColl(lhs);
  if (dst == nullptr) return FailArgument(err, 4);
  // Both of one element type: the copy is element by element, deep.
  if (src->element_type().kind != dst->element_type().kind ||
      src->element_type().named != dst->element_type().named) {
    return FailArgument(err, 3);
  }
  const OCIType& type = *dst->type;
  if (type.collection_typecode == OCI_TYPECODE_VARRAY &&
      src->size() > static_cast<size_t>(type.max_elements)) {
    return Fail(err, 22909, "exceeded maximum VARRAY limit");
  }
  return CopyCollection(env, *src, dst) ? OCI_SUCCESS : OutOfMemory(err);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIterCreate(OCIEnv* envh, OCIError* err, const OCIColl* coll, OCIIter** itr) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCIIterCreate", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  OCIColl* c = AsColl(coll);
  if (c == nullptr) return FailArgument(err, 3);
  if (itr == nullptr) return FailArgument(err, 4);
  std::unique_ptr<OCIIter> it(new (std::nothrow) OCIIter);
  if (it == nullptr) return OutOfMemory(err);
  it->coll = c;
  c->Adopt(it.get());
  *itr = it.release();
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIterInit(OCIEnv* envh, OCIError* err, const OCIColl* coll, OCIIter* itr) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCIIterInit", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  OCIColl* c = AsColl(coll);
  if (c == nullptr) return FailArgument(err, 3);
  OCIIter* it = AsIter(itr);
  if (it == nullptr) return FailArgument(err, 4);
  if (it->coll != c) {
    // The iterator now goes with the collection it walks.
    c->Adopt(it);  // first: when it cannot be, the iterator stays as it was
    it->coll->Disown(it);
    it->coll = c;
  }
  it->position = -1;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIterNext(OCIEnv* envh, OCIError* err, OCIIter* itr, void** elem, void** elemind,
                  boolean* eoc) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCIIterNext", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  OCIIter* it = AsIter(itr);
  if (it == nullptr) return FailArgument(err, 3);
  if (elem == nullptr) return FailArgument(err, 4);
  if (eoc == nullptr) return FailArgument(err, 6);
  auto next = static_cast<size_t>(it->position + 1);
  while (next < it->coll->size() && it->coll->IsHole(next)) ++next;  // holes are skipped
  if (next >= it->coll->size()) {
    *eoc = TRUE;  // stays on the last element; elem and elemind untouched
    return OCI_SUCCESS;
  }
  it->position = static_cast<sb4>(next);
  *elem = it->coll->ValueAt(next);
  if (elemind != nullptr) *elemind = it->coll->IndAt(next);
  *eoc = FALSE;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIIterDelete(OCIEnv* envh, OCIError* err, OCIIter** itr) try {
  Env* env = nullptr;
  sword rc = EnterCollCall("OCIIterDelete", envh, err, &env);
  if (rc != OCI_SUCCESS) return rc;
  if (itr == nullptr) return FailArgument(err, 3);
  OCIIter* it = AsIter(*itr);
  if (it == nullptr) return FailArgument(err, 3);
  it->coll->Disown(it);
  it->live = 0;
  delete it;
  *itr = nullptr;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}
