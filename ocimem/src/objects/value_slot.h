// Operations on one value slot of an instance or collection element, for every kind of
// value: initialise (allocating strings, descriptors, locators and collections as a new
// instance has them), free, and deep-assign from a value in the form OCI takes elements.
#ifndef OCIMEM_SRC_OBJECTS_VALUE_SLOT_H
#define OCIMEM_SRC_OBJECTS_VALUE_SLOT_H

#include "oci.h"
#include "objects/type.h"

namespace ocimem {

struct Env;

// Fills a zeroed slot with fresh values and writes its null information at `ind`
// (OCI_IND_NOTNULL or OCI_IND_NULL everywhere).  False when out of memory; the slot can
// then still be freed.
bool InitSlot(Env* env, const ValueType& t, void* slot, OCIInd* ind, bool not_null);
void FreeSlot(const ValueType& t, void* slot);
// InitSlot and FreeSlot of an object of type `type` (ValueKind::kObject).
bool InitObject(Env* env, const OCIType& type, void* slot, OCIInd* ind, bool not_null);
void FreeObject(const OCIType& type, void* slot);
// Sets every indicator of a value's null information.
void SetNullInfo(const ValueType& t, OCIInd* ind, OCIInd value);

enum class AssignResult { kOk, kBadValue, kNoMemory };
// Deep-assigns `elem` into an initialised slot.  `elem` is the element form: OCINumber*,
// OCIDate*, the struct of an object, or the handle itself (OCIString*, OCIRaw*, OCIRef*,
// OCILobLocator*, OCIDateTime*, OCIInterval*, OCIColl*).
AssignResult AssignSlot(Env* env, const ValueType& t, void* slot, const void* elem);
// Makes a zeroed slot hold a deep copy of `elem`: what InitSlot and then AssignSlot make of
// it, in one pass (no new value made only to be replaced).  `elem` must not be the slot.
// Unless kOk, the slot holds what was made so far and is freed with FreeSlot.
AssignResult ConstructSlot(Env* env, const ValueType& t, void* slot, const void* elem);
// False when `elem` is a standalone object instance of another type than `t` (an object
// value that is not standalone cannot be checked and is trusted).
bool ObjectValueFits(Env* env, const ValueType& t, const void* elem);
// The element form of the value held in a slot.
const void* ElementForm(const ValueType& t, const void* slot);
// A zero NUMBER and the first day of the Julian calendar, the defaults of new values.
void SetZeroNumber(OCINumber* n);
void SetFirstDate(OCIDate* d);

}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_VALUE_SLOT_H
