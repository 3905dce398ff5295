// The nested-table calls of orl.h: sizes without the deleted elements, deletion, and
// navigation over the elements that exist.  Indexes start at 0, as for OCICollGetElem.
// A VARRAY has no holes: every call but OCITableDelete treats it as a table without any.
#include <string>

#include "collections/coll.h"
#include "session/internal.h"

namespace ocimem {
namespace {

std::string Bracket(long long v) { return "[" + std::to_string(v) + "]"; }

sword EnterTableCall(const char* function, OCIEnv* envh, OCIError* err) {
  sword rc;
  if (Enter(function, err, &rc)) return rc;
  Env* env = nullptr;
  return CheckObjectEnv(envh, err, &env);
}

// The first existing position at or after `from`, or -1.
long long FirstFrom(const OCIColl& c, long long from) {
  for (long long i = from < 0 ? 0 : from; i < static_cast<long long>(c.size()); ++i) {
    if (!c.IsHole(static_cast<size_t>(i))) return i;
  }
  return -1;
}

// The last existing position at or before `from`, or -1.
long long LastFrom(const OCIColl& c, long long from) {
  const auto size = static_cast<long long>(c.size());
  for (long long i = from >= size ? size - 1 : from; i >= 0; --i) {
    if (!c.IsHole(static_cast<size_t>(i))) return i;
  }
  return -1;
}

sword FailEmpty(OCIError* err) { return Fail(err, 22166, "collection is empty"); }

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCITableSize(OCIEnv* envh, OCIError* err, const OCITable* tbl, sb4* size) try {
  sword rc = EnterTableCall("OCITableSize", envh, err);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(tbl);
  if (c == nullptr) return FailArgument(err, 3);
  if (size == nullptr) return FailArgument(err, 4);
  *size = static_cast<sb4>(c->live_count());
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCITableExists(OCIEnv* envh, OCIError* err, const OCITable* tbl, sb4 index,
                     boolean* exists) try {
  sword rc = EnterTableCall("OCITableExists", envh, err);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(tbl);
  if (c == nullptr) return FailArgument(err, 3);
  if (exists == nullptr) return FailArgument(err, 5);
  *exists = index >= 0 && c->Exists(static_cast<size_t>(index)) ? TRUE : FALSE;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCITableDelete(OCIEnv* envh, OCIError* err, sb4 index, OCITable* tbl) try {
  sword rc = EnterTableCall("OCITableDelete", envh, err);
  if (rc != OCI_SUCCESS) return rc;
  OCIColl* c = AsColl(tbl);
  if (c == nullptr) return FailArgument(err, 4);
  if (c->type->collection_typecode == OCI_TYPECODE_VARRAY) {
    return Fail(err, 22164, "delete element operation is not allowed for variable-length array");
  }
  const auto size = static_cast<long long>(c->size());
  if (index < 0 || index >= size) {
    return Fail(err, 22165,
                "given index " + Bracket(index) + " must be in the range of " + Bracket(0) +
                    " to " + Bracket(size - 1));
  }
  if (c->IsHole(static_cast<size_t>(index))) {
    return Fail(err, 22162, "element at index " + Bracket(index) + " has been previously deleted");
  }
  if (!c->MakeHole(static_cast<size_t>(index))) {
    return OutOfMemory(err);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCITableFirst(OCIEnv* envh, OCIError* err, const OCITable* tbl, sb4* index) try {
  sword rc = EnterTableCall("OCITableFirst", envh, err);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(tbl);
  if (c == nullptr) return FailArgument(err, 3);
  if (index == nullptr) return FailArgument(err, 4);
  long long first = FirstFrom(*c, 0);
  if (first < 0) return FailEmpty(err);
  *index = static_cast<sb4>(first);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCITableLast(OCIEnv* envh, OCIError* err, const OCITable* tbl, sb4* index) try {
  sword rc = EnterTableCall("OCITableLast", envh, err);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(tbl);
  if (c == nullptr) return FailArgument(err, 3);
  if (index == nullptr) return FailArgument(err, 4);
  long long last = LastFrom(*c, static_cast<long long>(c->size()) - 1);
  if (last < 0) return FailEmpty(err);
  *index = static_cast<sb4>(last);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCITableNext(OCIEnv* envh, OCIError* err, sb4 index, const OCITable* tbl,
                   sb4* next_index, boolean* exists) try {
  sword rc = EnterTableCall("OCITableNext", envh, err);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(tbl);
  if (c == nullptr) return FailArgument(err, 4);
  if (next_index == nullptr) return FailArgument(err, 5);
  if (exists == nullptr) return FailArgument(err, 6);
  long long next = FirstFrom(*c, static_cast<long long>(index) + 1);
  if (next < 0) {
    *exists = FALSE;  // *next_index untouched
    return OCI_SUCCESS;
  }
  *next_index = static_cast<sb4>(next);
  *exists = TRUE;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCITablePrev(OCIEnv* envh, OCIError* err, sb4 index, const OCITable* tbl,
                   sb4* prev_index, boolean* exists) try {
  sword rc = EnterTableCall("OCITablePrev", envh, err);
  if (rc != OCI_SUCCESS) return rc;
  const OCIColl* c = AsColl(tbl);
  if (c == nullptr) return FailArgument(err, 4);
  if (prev_index == nullptr) return FailArgument(err, 5);
  if (exists == nullptr) return FailArgument(err, 6);
  long long prev = LastFrom(*c, static_cast<long long>(index) - 1);
  if (prev < 0) {
    *exists = FALSE;  // *prev_index untouched
    return OCI_SUCCESS;
  }
  *prev_index = static_cast<sb4>(prev);
  *exists = TRUE;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(err);
}
