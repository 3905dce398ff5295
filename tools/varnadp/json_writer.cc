#include "json_writer.h"

#include <orid.h>

#include "json_text.h"
#include "oci_session.h"
#include "scalar_values.h"

namespace varnadp {

bool JsonWriter::Oracle(sword status, const char* call) {
  if (status == OCI_SUCCESS) return true;
  error_ = std::string(call) + " failed: " + session_.OracleError();
  return false;
}

bool JsonWriter::Write(void* instance, void* null_struct, std::string* out) {
  if (root_.kind == Shape::Kind::kCollection) {
    return WriteCollection(root_, static_cast<OCIColl*>(instance), out);
  }
  return WriteObject(root_, instance, null_struct, out);
}

bool JsonWriter::WriteObject(const Shape& shape, void* instance, void* null_struct, std::string* out) {
  out->push_back('{');
  bool first = true;
  for (const Shape& member : shape.members) {
    if (!first) out->push_back(',');
    first = false;
    AppendJsonString(member.name, out);
    out->push_back(':');
    const OraText* names[1] = {reinterpret_cast<const OraText*>(member.name.c_str())};
    const ub4 lengths[1] = {static_cast<ub4>(member.name.size())};
    OCIInd status = OCI_IND_NULL;
    void* attr_null_struct = nullptr;
    void* slot = nullptr;
    OCIType* attr_tdo = nullptr;
    if (!Oracle(OCIObjectGetAttr(session_.env(), session_.err(), instance, null_struct, shape.tdo,
                                 names, lengths, 1, nullptr, 0, &status, &attr_null_struct, &slot,
                                 &attr_tdo),
                "OCIObjectGetAttr")) {
      return false;
    }
    if (status == OCI_IND_NULL) {
      out->append("null");
      continue;
    }
    bool ok;
    if (member.kind == Shape::Kind::kObject) {
      ok = WriteObject(member, slot, attr_null_struct, out);
    } else if (member.kind == Shape::Kind::kCollection) {
      ok = WriteCollection(member, *static_cast<OCIColl**>(slot), out);
    } else {
      ok = AppendScalar(session_, *member.def, slot, out, &error_);
      if (!ok) error_ = "attribute " + member.name + " " + error_;
    }
    if (!ok) return false;
  }
  out->push_back('}');
  return true;
}

bool JsonWriter::WriteCollection(const Shape& shape, OCIColl* coll, std::string* out) {
  sb4 size = 0;
  if (!Oracle(OCICollSize(session_.env(), session_.err(), coll, &size), "OCICollSize")) return false;
  out->push_back('[');
  bool first = true;
  if (size == 1 && IsNullItem(coll)) {
    // The stream writes an empty collection and one holding a single null
    // item alike ("[]"), and the reader gives the latter: it is shown as the
    // far more common empty collection.
    out->push_back(']');
    return true;
  }
  for (sb4 i = 0; i < size; ++i) {
    boolean exists = FALSE;
    void* element = nullptr;
    void* element_ind = nullptr;
    if (!Oracle(OCICollGetElem(session_.env(), session_.err(), coll, i, &exists, &element, &element_ind),
                "OCICollGetElem")) {
      return false;
    }
    if (!exists) continue;  // a deleted element of a nested table
    if (!first) out->push_back(',');
    first = false;
    if (!WriteItem(shape.members[0], element, element_ind, out)) return false;
  }
  out->push_back(']');
  return true;
}

bool JsonWriter::IsNullItem(OCIColl* coll) {
  boolean exists = FALSE;
  void* element = nullptr;
  void* element_ind = nullptr;
  return OCICollGetElem(session_.env(), session_.err(), coll, 0, &exists, &element, &element_ind) ==
             OCI_SUCCESS &&
         exists && element_ind != nullptr && *static_cast<OCIInd*>(element_ind) == OCI_IND_NULL;
}

bool JsonWriter::WriteItem(const Shape& item, void* element, void* element_ind, std::string* out) {
  if (element_ind != nullptr && *static_cast<OCIInd*>(element_ind) == OCI_IND_NULL) {
    out->append("null");
    return true;
  }
  switch (item.kind) {
    case Shape::Kind::kObject:
      return WriteObject(item, element, element_ind, out);
    case Shape::Kind::kCollection:
      // An element of a collection of collections is the collection itself.
      return WriteCollection(item, static_cast<OCIColl*>(element), out);
    case Shape::Kind::kScalar:
      break;
  }
  if (!AppendScalar(session_, *item.def, element, out, &error_)) {
    error_ = "an item " + error_;
    return false;
  }
  return true;
}

}  // namespace varnadp
