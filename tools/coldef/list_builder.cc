#include "list_builder.h"

#include <cstdlib>
#include <cstring>

namespace coldef {
namespace {

char* CopyText(const std::optional<std::string>& text, char** pool) {
  if (!text) return nullptr;
  char* copy = *pool;
  std::memcpy(copy, text->c_str(), text->size() + 1);
  *pool += text->size() + 1;
  return copy;
}

}  // namespace

int ListBuilder::Build(const TypeDescription& top) {
  open_.push_back(Group{&top, 0, false});
  while (!open_.empty()) {
    Group& group = open_.back();
    const TypeDescription& type = *group.type;
    const size_t members = type.collection ? 1 : type.attributes.size();
    if (group.next < members) {
      const MemberDescription& member =
          type.collection ? type.element : type.attributes[group.next];
      ++group.next;
      // May open a group: `group` is not used after this.
      if (int rc = AddMember(member, type.collection); rc != COLDEF_OK) return rc;
      continue;
    }
    if (group.closed_by_record) {
      Entry closing;
      closing.def.Flags = COLDEF_END | COLDEF_DEFINED;
      entries_.push_back(std::move(closing));
    }
    open_.pop_back();
  }
  return COLDEF_OK;
}

int ListBuilder::AddMember(const MemberDescription& member, bool item) {
  Entry entry;
  entry.def.InCollection = item ? 1 : 0;
  if (!item) entry.column_name = member.name;  // an item has no name of its own
  if (!IsObjectCode(member.typecode) && !IsCollectionCode(member.typecode)) {
    FillScalarDef(member, &entry.def);
    entries_.push_back(std::move(entry));
    return COLDEF_OK;
  }
  const TypeDescription* type = nullptr;
  int rc = describer_->Describe(QualifiedName(member.type_schema, member.type_name), &type);
  if (rc != COLDEF_OK) return rc;
  if (IsOpen(*type)) return COLDEF_E_CYCLE;
  entry.def.Flags = COLDEF_COMPLEX | COLDEF_DEFINED;
  entry.def.DataType = type->collection ? SQLT_NCO : SQLT_NTY;
  entry.type_name = QualifiedName(type->schema, type->name);
  entries_.push_back(std::move(entry));
  open_.push_back(Group{type, 0, true});
  return COLDEF_OK;
}

// A type that is already open would repeat inside itself without end.
bool ListBuilder::IsOpen(const TypeDescription& type) const {
  for (const Group& group : open_) {
    if (group.type->schema == type.schema && group.type->name == type.name) return true;
  }
  return false;
}

int ListBuilder::Finish(Column_Def** list) const {
  *list = nullptr;
  if (entries_.empty()) return COLDEF_OK;
  size_t text_size = 0;
  for (const Entry& entry : entries_) {
    if (entry.column_name) text_size += entry.column_name->size() + 1;
    if (entry.type_name) text_size += entry.type_name->size() + 1;
  }
  const size_t count = entries_.size();
  void* block = std::calloc(1, count * sizeof(Column_Def) + text_size);
  if (block == nullptr) return COLDEF_E_NO_MEMORY;
  auto* records = static_cast<Column_Def*>(block);
  char* pool = reinterpret_cast<char*>(records + count);
  for (size_t i = 0; i < count; ++i) {
    records[i] = entries_[i].def;
    records[i].ColumnName = CopyText(entries_[i].column_name, &pool);
    records[i].TypeName = CopyText(entries_[i].type_name, &pool);
    records[i].Next = i + 1 < count ? &records[i + 1] : nullptr;
  }
  *list = records;
  return COLDEF_OK;
}

}  // namespace coldef
