#include "shape.h"

#include <strings.h>

#include <orid.h>

#include "json_text.h"
#include "oci_session.h"

namespace varnadp {
namespace {

// Reads members up to the record that closes the group (or the list's end).
void ReadMembers(const Column_Def*& record, Shape* parent) {
  while (record != nullptr) {
    const Column_Def* def = record;
    record = record->Next;
    if ((def->Flags & COLDEF_END) != 0) return;
    Shape member;
    member.def = def;
    if (def->ColumnName != nullptr && def->InCollection == 0) member.name = def->ColumnName;
    AppendJsonString(member.name, &member.json_key);
    member.json_key.push_back(':');
    if ((def->Flags & COLDEF_COMPLEX) != 0) {
      member.kind = def->DataType == SQLT_NCO ? Shape::Kind::kCollection : Shape::Kind::kObject;
      if (def->TypeName != nullptr) member.type_name = def->TypeName;
      ReadMembers(record, &member);
    }
    parent->members.push_back(std::move(member));
  }
}

bool ResolveTypes(Shape* shape, OciSession& session) {
  if (shape->IsComplex()) {
    shape->tdo = session.TypeByName(shape->type_name);
    if (shape->tdo == nullptr) return false;
  }
  for (Shape& member : shape->members) {
    if (!ResolveTypes(&member, session)) return false;
  }
  return true;
}

}  // namespace

void LayOutNullStructures(Shape* shape) {
  size_t count = 1;  // the object's _atomic
  for (Shape& member : shape->members) {
    LayOutNullStructures(&member);
    if (shape->kind != Shape::Kind::kObject) continue;  // an item has a null structure of its own
    member.ind_index = count;
    count += member.kind == Shape::Kind::kObject ? member.ind_count : 1;
  }
  shape->ind_count = shape->kind == Shape::Kind::kObject ? count : 1;
}

namespace {

size_t RoundUp(size_t n, size_t align) { return (n + align - 1) / align * align; }

// Bytes and alignment of an attribute's value in its parent's struct.
void ValueLayout(const Shape& member, size_t* size, size_t* align) {
  if (member.kind == Shape::Kind::kObject) {
    *size = member.value_size;
    *align = member.value_align;
  } else if (member.kind == Shape::Kind::kScalar && member.def->DataType == SQLT_NUM) {
    *size = sizeof(OCINumber);
    *align = alignof(OCINumber);
  } else if (member.kind == Shape::Kind::kScalar && member.def->DataType == SQLT_DAT) {
    *size = sizeof(OCIDate);
    *align = alignof(OCIDate);
  } else {
    // Text, RAW, datetimes, intervals, LOBs and REFs are held by pointer, as
    // are collections.
    *size = sizeof(void*);
    *align = alignof(void*);
  }
}

// Whether Oracle places every attribute of `object` (and of the objects
// embedded in it) where the layouts say, on the instance at `instance` with
// null structure `null_struct`, all of whose OCIInds are null. An attribute's
// indicator is found by making it present with OCIObjectSetAttr: the OCIInd
// the layout names must turn present, and is made null again; one that
// turned present elsewhere is left so for the caller's last look.
bool Matches(const Shape& object, char* instance, OCIInd* null_struct, OciSession& session) {
  for (const Shape& member : object.members) {
    const OraText* names[1] = {reinterpret_cast<const OraText*>(member.name.c_str())};
    const ub4 lengths[1] = {static_cast<ub4>(member.name.size())};
    OCIInd status = OCI_IND_NOTNULL;
    void* attr_null_struct = nullptr;
    void* slot = nullptr;
    OCIType* attr_tdo = nullptr;
    if (OCIObjectGetAttr(session.env(), session.err(), instance, null_struct, object.tdo, names, lengths, 1,
                         nullptr, 0, &status, &attr_null_struct, &slot, &attr_tdo) != OCI_SUCCESS) {
      return false;
    }
    if (slot != instance + member.value_offset || status != null_struct[member.ind_index]) return false;
    if (member.kind == Shape::Kind::kObject && attr_null_struct != null_struct + member.ind_index) return false;
    if (OCIObjectSetAttr(session.env(), session.err(), instance, null_struct, object.tdo, names, lengths, 1,
                         nullptr, 0, OCI_IND_NOTNULL, nullptr, nullptr) != OCI_SUCCESS) {
      return false;
    }
    OCIInd* const place = null_struct + member.ind_index;
    if (*place != OCI_IND_NOTNULL) return false;
    *place = OCI_IND_NULL;
    if (member.kind == Shape::Kind::kObject &&
        !Matches(member, instance + member.value_offset, place, session)) {
      return false;
    }
  }
  return true;
}

void MarkDirect(Shape* object) {
  for (Shape& member : object->members) {
    member.direct = true;
    if (member.kind == Shape::Kind::kObject) MarkDirect(&member);
  }
}

// Checks the object type of `object` on a new instance of it.
void CheckObjectLayout(Shape* object, OciSession& session) {
  void* instance = nullptr;
  if (OCIObjectNew(session.env(), session.err(), session.svc(), OCI_TYPECODE_OBJECT, object->tdo, nullptr,
                   OCI_DURATION_DEFAULT, TRUE, &instance) != OCI_SUCCESS) {
    return;
  }
  OCIInd* ind = nullptr;
  bool ok = OCIObjectGetInd(session.env(), session.err(), instance, reinterpret_cast<void**>(&ind)) ==
            OCI_SUCCESS;
  if (ok) {
    for (size_t i = 0; i < object->ind_count; ++i) ind[i] = OCI_IND_NULL;
    ok = Matches(*object, static_cast<char*>(instance), ind, session);
    // No attribute's indicator turned present anywhere but where it was made null again.
    for (size_t i = 0; ok && i < object->ind_count; ++i) ok = ind[i] == OCI_IND_NULL;
  }
  OCIObjectFree(session.env(), session.err(), instance, OCI_OBJECTFREE_FORCE);
  if (ok) MarkDirect(object);
}

}  // namespace

void LayOutInstances(Shape* shape) {
  size_t offset = 0;
  size_t align = 1;
  for (Shape& member : shape->members) {
    LayOutInstances(&member);
    if (shape->kind != Shape::Kind::kObject) continue;  // an item is a value of its own
    size_t size = 0;
    size_t member_align = 1;
    ValueLayout(member, &size, &member_align);
    offset = RoundUp(offset, member_align);
    member.value_offset = offset;
    offset += size;
    if (member_align > align) align = member_align;
  }
  if (shape->kind == Shape::Kind::kObject) {
    shape->value_align = align;
    shape->value_size = RoundUp(offset, align);
  }
}

namespace {

// Checks every item, at any depth below `shape`, that is an object: each is
// an instance of its own type.
void CheckItems(Shape* shape, OciSession& session) {
  for (Shape& member : shape->members) {
    if (shape->kind == Shape::Kind::kCollection && member.kind == Shape::Kind::kObject &&
        member.tdo != nullptr) {
      CheckObjectLayout(&member, session);
    }
    CheckItems(&member, session);
  }
}

}  // namespace

void CheckLayouts(Shape* shape, OciSession& session) {
  // Objects embedded in an object are checked with it.
  if (shape->kind == Shape::Kind::kObject && shape->tdo != nullptr) CheckObjectLayout(shape, session);
  CheckItems(shape, session);
}

const Shape* Shape::FindMember(std::string_view key) const {
  for (const Shape& member : members) {
    if (member.name == key) return &member;
  }
  for (const Shape& member : members) {
    if (member.name.size() == key.size() &&
        strncasecmp(member.name.data(), key.data(), key.size()) == 0) {
      return &member;
    }
  }
  return nullptr;
}

std::unique_ptr<Shape> BuildShape(const Column_Def* list, const std::string& type_name,
                                  OciSession& session) {
  auto root = std::make_unique<Shape>();
  root->type_name = type_name;
  const bool collection = list != nullptr && list->InCollection != 0;
  root->kind = collection ? Shape::Kind::kCollection : Shape::Kind::kObject;
  const Column_Def* record = list;
  ReadMembers(record, root.get());
  LayOutNullStructures(root.get());
  LayOutInstances(root.get());
  if (!ResolveTypes(root.get(), session)) return nullptr;
  CheckLayouts(root.get(), session);
  return root;
}

const char* DataTypeName(const Column_Def& def) {
  switch (def.DataType) {
    case SQLT_NUM: return "NUMBER";
    case SQLT_CHR: return "VARCHAR2";
    case SQLT_AFC: return "CHAR";
    case SQLT_LNG: return "LONG";
    case SQLT_LVC: return "LONG VARCHAR";
    case SQLT_DAT: return "DATE";
    case SQLT_BIN: return "RAW";
    case SQLT_LBI: return "LONG RAW";
    case SQLT_CLOB: return "CLOB";
    case SQLT_BLOB: return "BLOB";
    case SQLT_TIMESTAMP: return "TIMESTAMP";
    case SQLT_TIMESTAMP_TZ: return "TIMESTAMP WITH TIME ZONE";
    case SQLT_TIMESTAMP_LTZ: return "TIMESTAMP WITH LOCAL TIME ZONE";
    case SQLT_INTERVAL_YM: return "INTERVAL YEAR TO MONTH";
    case SQLT_INTERVAL_DS: return "INTERVAL DAY TO SECOND";
    case SQLT_REF: return "REF";
    case SQLT_BFILEE: return "BFILE";
    default: return "an unsupported type";
  }
}

}  // namespace varnadp
