// CREATE TABLE and DROP TABLE.
#include <cstdio>
#include <mutex>
#include <set>

#include "collections/coll.h"
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

bool CanBeKey(const ValueType& t) {
  return t.kind == ValueKind::kNumber || t.kind == ValueKind::kString ||
         t.kind == ValueKind::kDate || t.kind == ValueKind::kRaw;
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
      if (!ResolveType(ctx, c.type, "", "", &a.type, error)) return false;
      type->attributes.push_back(std::move(a));
    }
    if (type->attributes.empty()) return SetError(error, 904, ": invalid identifier");
    type->Layout();
    table->row_type = type;
  }
  const std::vector<Attribute>& columns = table->columns();
  table->not_null.assign(columns.size(), false);
  std::string pk_name = s.primary_key_name;
  std::vector<std::string> pk_columns = s.primary_key;
  for (const ColumnSpec& c : s.columns) {
    int pos = table->FindColumn(c.name);
    if (pos < 0) return InvalidIdentifier(error, c.name);
    if (c.not_null) table->not_null[static_cast<size_t>(pos)] = true;
    if (c.primary_key) {
      if (!pk_columns.empty()) return SetError(error, 2260, "table can have only one primary key");
      pk_columns.push_back(c.name);
      pk_name = c.constraint_name;
    }
  }
  for (const std::string& name : pk_columns) {
    int pos = table->FindColumn(name);
    if (pos < 0) return InvalidIdentifier(error, name);
    const ValueType& t = columns[static_cast<size_t>(pos)].type;
    if (!CanBeKey(t)) {
      return SetError(error, 2329,
                      std::string("column of datatype ") +
                          (t.kind == ValueKind::kLob ? "LOB" : "Named Type") +
                          " cannot be unique or a primary key");
    }
    table->primary_key.push_back(static_cast<size_t>(pos));
    table->not_null[static_cast<size_t>(pos)] = true;  // key columns are NOT NULL
  }
  if (!pk_columns.empty()) {
    char system_name[32];
    std::snprintf(system_name, sizeof system_name, "SYS_C%06llu",
                  static_cast<unsigned long long>(ctx.db->next_constraint++));
    table->primary_key_name = pk_name.empty() ? std::string(system_name) : pk_name;
  }
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
  catalog.Remove(schema, s.name.name);
  InvalidateDependents(&catalog, schema, s.name.name);
  return true;
}

}  // namespace ocimem
