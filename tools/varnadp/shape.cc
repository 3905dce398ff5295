#include "shape.h"

#include <strings.h>

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
  if (!ResolveTypes(root.get(), session)) return nullptr;
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
