// CREATE TABLE and DROP TABLE.
#include <mutex>
#include <set>

#include "collections/coll.h"
#include "sql/constraint_ddl.h"
#include "sql/ddl_alter.h"
#include "sql/sql_exec.h"
#include "database/view.h"

namespace ocimem {
namespace {

std::string SchemaOf(const ExecContext& ctx, const QualifiedName& name) {
  return name.schema.empty() ? ctx.schema : name.schema;
}

bool InvalidIdentifier(SqlError* error, const std::string& name) {
  return SetError(error, 904, "\"" + name + "\": invalid identifier");
}

bool IsNestedTable(const ValueType& t) {
  return t.kind == ValueKind::kCollection && t.named &&
         t.named->collection_typecode == OCI_TYPECODE_TABLE;
}

}  // namespace

bool CreateTable(const ExecContext& ctx, const CreateTableStatement& s, SqlError* error) {
  std::string schema = SchemaOf(ctx, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  if (catalog.Find(schema, s.name.name) != nullptr) {
    return SetError(error, 955, "name is already used by an existing object");
  }
  auto table = std::make_shared<Table>();
  table->schema = schema;
  table->name = s.name.name;
  table->object_table = s.object_table;
  if (s.object_table) {
    std::shared_ptr<OCIType> type = catalog.FindType(SchemaOf(ctx, s.of_type), s.of_type.name);
    if (!type || !type->IsObject()) return SetError(error, 902, "invalid datatype");
    table->row_type = type;
  } else {
    auto type = std::make_shared<OCIType>();
    type->schema = schema;
    type->name = s.name.name;
    std::set<std::string> seen;
    for (const ColumnSpec& c : s.columns) {
      if (!seen.insert(c.name).second) return SetError(error, 957, "duplicate column name");
      Attribute a;
      a.name = c.name;
      if (c.type_of_parent ? !ReferencedType(ctx, s, c.name, &a.type, error)
                           : !ResolveType(ctx, c.type, "", "", &a.type, error)) {
        return false;
      }
      type->attributes.push_back(std::move(a));
    }
    if (type->attributes.empty()) return SetError(error, 904, ": invalid identifier");
    type->Layout();
    table->row_type = type;
  }
  if (!ApplyConstraints(ctx, s, table.get(), error)) return false;
  const std::vector<Attribute>& columns = table->columns();
  // Nested-table columns need their storage table named.
  std::set<std::string> stored;
  for (const NestedStorage& n : s.nested) {
    int pos = table->FindColumn(n.column);
    if (pos < 0) return InvalidIdentifier(error, n.column);
    if (!IsNestedTable(columns[static_cast<size_t>(pos)].type)) {
      return SetError(error, 22912, "specified column or attribute is not a nested table type");
    }
    if (catalog.Find(schema, n.storage) != nullptr) {
      return SetError(error, 955, "name is already used by an existing object");
    }
    stored.insert(n.column);
    table->nested_storage.push_back(n.storage);
  }
  for (const Attribute& a : columns) {
    if (IsNestedTable(a.type) && stored.count(a.name) == 0) {
      return SetError(error, 22913, "must specify table name for nested table column or attribute");
    }
  }
  table->object_id = ctx.db->next_object_id++;
  RegisterConstraints(ctx.db, table.get());
  catalog.PutTable(std::move(table));
  return true;
}

bool DropTable(const ExecContext& ctx, const DropTableStatement& s, SqlError* error) {
  std::string schema = SchemaOf(ctx, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  std::shared_ptr<Table> table = catalog.FindTable(schema, s.name.name);
  if (!table) return SetError(error, 942, "table or view does not exist");
  std::uint64_t mine = ctx.session->txn ? ctx.session->txn->id : 0;
  for (const auto& record : table->rows) {
    if (record->lock_txn != 0 && record->lock_txn != mine) {
      return SetError(error, 54,
                      "resource busy and acquire with NOWAIT specified or timeout expired");
    }
  }
  if (!CheckDropTable(*table, s.cascade_constraints, error)) return false;
  DropConstraints(ctx.db, table.get());
  DropTableIndexes(&catalog, *table);
  catalog.Remove(schema, s.name.name);
  InvalidateDependents(&catalog, schema, s.name.name);
  return true;
}

}  // namespace ocimem
