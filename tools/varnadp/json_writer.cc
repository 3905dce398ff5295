#include "json_writer.h"

#include <orid.h>

#include "json_text.h"
#include "oci_session.h"
#include "scalar_values.h"

namespace varnadp {
namespace {

bool IsLob(const Shape& shape) {
  return !shape.IsComplex() && (shape.def->DataType == SQLT_CLOB || shape.def->DataType == SQLT_BLOB);
}

}  // namespace

bool JsonWriter::Oracle(sword status, const char* call) {
  if (status == OCI_SUCCESS) return true;
  error_ = std::string(call) + " failed: " + session_.OracleError();
  return false;
}

bool JsonWriter::Write(Value value, std::string* out, const Value* lobs) {
  if (root_.kind == Shape::Kind::kCollection) {
    return WriteCollection(root_, static_cast<OCIColl*>(value.instance),
                           lobs != nullptr ? static_cast<OCIColl*>(lobs->instance) : nullptr, out);
  }
  return WriteObject(root_, value, lobs, out);
}

// An attribute's indicator, value and (for an embedded object) null
// structure: from the layouts when they were checked on the type and the
// object has a null structure, else asked of Oracle by name.
bool JsonWriter::GetAttribute(const Shape& object, const Shape& member, Value value, OCIInd* status,
                              Value* attribute, void** slot) {
  if (member.direct && value.null_struct != nullptr) {
    OCIInd* ind = static_cast<OCIInd*>(value.null_struct) + member.ind_index;
    *status = *ind;
    *slot = static_cast<char*>(value.instance) + member.value_offset;
    attribute->null_struct = member.kind == Shape::Kind::kObject ? ind : nullptr;
    attribute->instance = *slot;
    return true;
  }
  const OraText* names[1] = {reinterpret_cast<const OraText*>(member.name.c_str())};
  const ub4 lengths[1] = {static_cast<ub4>(member.name.size())};
  OCIType* attr_tdo = nullptr;
  *slot = nullptr;
  attribute->null_struct = nullptr;
  if (!Oracle(OCIObjectGetAttr(session_.env(), session_.err(), value.instance, value.null_struct,
                               object.tdo, names, lengths, 1, nullptr, 0, status,
                               &attribute->null_struct, slot, &attr_tdo),
              "OCIObjectGetAttr")) {
    return false;
  }
  attribute->instance = *slot;
  return true;
}

bool JsonWriter::WriteObject(const Shape& shape, Value value, const Value* lobs, std::string* out) {
  out->push_back('{');
  bool first = true;
  for (const Shape& member : shape.members) {
    if (!first) out->push_back(',');
    first = false;
    out->append(member.json_key);
    // A LOB's contents, and anything that may hold one, come from the stored copy too.
    const bool from_lobs = lobs != nullptr && (IsLob(member) || member.IsComplex());
    const bool lob_only = lobs != nullptr && IsLob(member);
    OCIInd status = OCI_IND_NULL;
    Value attribute;
    void* slot = nullptr;
    if (!GetAttribute(shape, member, lob_only ? *lobs : value, &status, &attribute, &slot)) return false;
    Value stored;
    void* stored_slot = nullptr;
    if (from_lobs && !lob_only) {
      OCIInd stored_status = OCI_IND_NULL;
      if (!GetAttribute(shape, member, *lobs, &stored_status, &stored, &stored_slot)) return false;
    }
    if (status == OCI_IND_NULL) {
      out->append("null");
      continue;
    }
    const Value* inner = from_lobs && !lob_only ? &stored : nullptr;
    bool ok;
    if (member.kind == Shape::Kind::kObject) {
      ok = WriteObject(member, attribute, inner, out);
    } else if (member.kind == Shape::Kind::kCollection) {
      ok = WriteCollection(member, *static_cast<OCIColl**>(slot),
                           inner != nullptr ? *static_cast<OCIColl**>(stored_slot) : nullptr, out);
    } else {
      ok = AppendScalar(session_, *member.def, slot, out, &error_);
      if (!ok) error_ = "attribute " + member.name + " " + error_;
    }
    if (!ok) return false;
  }
  out->push_back('}');
  return true;
}

bool JsonWriter::GetItem(OCIColl* coll, sb4 index, bool* exists, Value* item) {
  boolean found = FALSE;
  item->instance = nullptr;
  item->null_struct = nullptr;
  if (!Oracle(OCICollGetElem(session_.env(), session_.err(), coll, index, &found, &item->instance,
                             &item->null_struct),
              "OCICollGetElem")) {
    return false;
  }
  *exists = found != FALSE;
  return true;
}

bool JsonWriter::IsNullItem(OCIColl* coll) {
  bool exists = false;
  Value item;
  return GetItem(coll, 0, &exists, &item) && exists && item.null_struct != nullptr &&
         *static_cast<OCIInd*>(item.null_struct) == OCI_IND_NULL;
}

bool JsonWriter::WriteCollection(const Shape& shape, OCIColl* coll, OCIColl* lob_coll, std::string* out) {
  sb4 size = 0;
  if (!Oracle(OCICollSize(session_.env(), session_.err(), coll, &size), "OCICollSize")) return false;
  sb4 lob_size = 0;
  if (lob_coll != nullptr &&
      !Oracle(OCICollSize(session_.env(), session_.err(), lob_coll, &lob_size), "OCICollSize")) {
    return false;
  }
  if (size == 1 && IsNullItem(coll)) {
    // The stream writes an empty collection and one holding a single null
    // item alike ("[]"), and the reader gives the latter: it is shown as the
    // far more common empty collection.
    out->append("[]");
    return true;
  }
  out->push_back('[');
  bool first = true;
  sb4 lob_index = 0;
  for (sb4 i = 0; i < size; ++i) {
    bool exists = false;
    Value item;
    if (!GetItem(coll, i, &exists, &item)) return false;
    if (!exists) continue;  // a deleted element of a nested table
    // The stored copy holds the same items in the same order, without holes.
    Value stored;
    bool stored_exists = false;
    while (lob_coll != nullptr && !stored_exists && lob_index < lob_size) {
      if (!GetItem(lob_coll, lob_index++, &stored_exists, &stored)) return false;
    }
    if (!first) out->push_back(',');
    first = false;
    if (!WriteItem(shape.members[0], item, stored_exists ? &stored : nullptr, out)) return false;
  }
  out->push_back(']');
  return true;
}

bool JsonWriter::WriteItem(const Shape& item, Value value, const Value* lobs, std::string* out) {
  if (value.null_struct != nullptr && *static_cast<OCIInd*>(value.null_struct) == OCI_IND_NULL) {
    out->append("null");
    return true;
  }
  switch (item.kind) {
    case Shape::Kind::kObject:
      return WriteObject(item, value, lobs, out);
    case Shape::Kind::kCollection:
      // An element of a collection of collections is the collection itself.
      return WriteCollection(item, static_cast<OCIColl*>(value.instance),
                             lobs != nullptr ? static_cast<OCIColl*>(lobs->instance) : nullptr, out);
    case Shape::Kind::kScalar:
      break;
  }
  const void* slot = lobs != nullptr && IsLob(item) ? lobs->instance : value.instance;
  if (!AppendScalar(session_, *item.def, slot, out, &error_)) {
    error_ = "an item " + error_;
    return false;
  }
  return true;
}

}  // namespace varnadp
