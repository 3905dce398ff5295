// CREATE INDEX, DROP INDEX and COMMENT ON.  An index shares its schema's namespace with
// tables, views, sequences and types.  A plain index changes no result; a UNIQUE one keeps
// its rows' keys unique as a UNIQUE constraint would, under the index's name.
#include <algorithm>
#include <mutex>
#include <unordered_set>

#include "sql/constraint_ddl.h"
#include "sql/ddl_alter.h"
#include "sql/sql_rows.h"

namespace ocimem {
namespace {

std::string SchemaOf(const ExecContext& ctx, const QualifiedName& name) {
  return name.schema.empty() ? ctx.schema : name.schema;
}

// The table of the schema whose primary or unique key (and so the index Oracle keeps for
// it) is named `name`, or nullptr.
const Table* KeyIndexOwner(const Catalog& catalog, const std::string& schema,
                           const std::string& name) {
  for (const Table* t : catalog.Tables(schema)) {
    // A key that took an existing index over has no index of its name.
    bool took_over = false;
    for (const TableIndex& i : t->indexes) took_over = took_over || i.enforces == name;
    if (took_over) continue;
    if (!t->primary_key.empty() && t->primary_key_name == name) return t;
    for (const UniqueKey& u : t->unique_keys) {
      if (!u.index_only && u.name == name) return t;
    }
  }
  return nullptr;
}

// Whether an index (made by CREATE INDEX or for a key) has exactly these columns.
bool AlreadyIndexed(const Table& table, const std::vector<size_t>& columns) {
  if (table.primary_key == columns) return true;
  for (const UniqueKey& u : table.unique_keys) {
    if (u.index.columns == columns) return true;
  }
  for (const TableIndex& i : table.indexes) {
    if (i.columns == columns) return true;
  }
  return false;
}

bool CanBeIndexed(const ValueType& t) {
  return t.kind != ValueKind::kLob && t.kind != ValueKind::kObject &&
         t.kind != ValueKind::kCollection && t.kind != ValueKind::kRef;
}

}  // namespace

bool CreateIndex(const ExecContext& ctx, const CreateIndexStatement& s, SqlError* error) {
  const std::string schema = SchemaOf(ctx, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  std::shared_ptr<Table> found = catalog.FindTable(SchemaOf(ctx, s.table), s.table.name);
  if (!found || found->dual) return SetError(error, 942, "table or view does not exist");
  Table* table = found.get();
  if (catalog.Find(schema, s.name.name) != nullptr ||
      KeyIndexOwner(catalog, schema, s.name.name) != nullptr) {
    return SetError(error, 955, "name is already used by an existing object");
  }
  std::vector<size_t> columns;
  if (!ResolveColumns(*table, s.columns, &columns, error)) return false;
  for (size_t col : columns) {
    const ValueType& t = table->columns()[col].type;
    if (!CanBeIndexed(t)) {
      std::string name = t.kind == ValueKind::kLob ? "LOB" : "Named Type";
      return SetError(error, 2327, "cannot create index on expression with datatype " + name);
    }
    // decision AT6: a UNIQUE index takes the key types a UNIQUE constraint takes.
    if (s.unique && !CanBeKey(t)) return NotAKeyType(error, t);
  }
  if (AlreadyIndexed(*table, columns)) {
    return SetError(error, 1408, "such column list already indexed");
  }
  if (!CheckNoLocks(ctx, *table, error)) return false;
  std::vector<RowRecord*> rows = CommittedRows(*table);
  if (s.unique) {
    UniqueKey key;
    key.name = s.name.name;
    key.index_only = true;
    key.index.columns = columns;
    std::unordered_set<std::string> seen;
    for (RowRecord* r : rows) {
      std::string k;
      bool any_null = false;
      if (RowKey(*table, columns, *r->committed, &k, &any_null) && !seen.insert(k).second) {
        return SetError(error, 1452, "cannot CREATE UNIQUE INDEX; duplicate keys found");
      }
    }
    for (RowRecord* r : rows) key.index.Add(*table, r);
    table->unique_keys.push_back(std::move(key));
  }
  table->indexes.push_back(TableIndex{schema, s.name.name, columns, s.unique, ""});
  catalog.PutIndex(schema, s.name.name, table);
  return true;
}

bool DropIndex(const ExecContext& ctx, const DropIndexStatement& s, SqlError* error) {
  const std::string schema = SchemaOf(ctx, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  const CatalogEntry* entry = catalog.Find(schema, s.name.name);
  if (entry == nullptr || entry->kind != ObjectKind::kIndex) {
    if (KeyIndexOwner(catalog, schema, s.name.name) != nullptr) {
      return SetError(error, 2429, "cannot drop index used for enforcement of unique/primary key");
    }
    return SetError(error, 1418, "specified index does not exist");
  }
  Table* table = entry->indexed;
  for (const TableIndex& i : table->indexes) {
    if (i.schema == schema && i.name == s.name.name && !i.enforces.empty()) {
      return SetError(error, 2429, "cannot drop index used for enforcement of unique/primary key");
    }
  }
  if (!CheckNoLocks(ctx, *table, error)) return false;
  auto& keys = table->unique_keys;
  keys.erase(std::remove_if(keys.begin(), keys.end(),
                            [&](const UniqueKey& u) { return u.index_only && u.name == s.name.name; }),
             keys.end());
  auto& indexes = table->indexes;
  indexes.erase(std::remove_if(indexes.begin(), indexes.end(),
                               [&](const TableIndex& i) {
                                 return i.schema == schema && i.name == s.name.name;
                               }),
                indexes.end());
  catalog.Remove(schema, s.name.name);
  return true;
}

void DropTableIndexes(Catalog* catalog, const Table& table) {
  for (const TableIndex& i : table.indexes) catalog->Remove(i.schema, i.name);
}

bool CommentOn(const ExecContext& ctx, const CommentStatement& s, SqlError* error) {
  const std::string schema = SchemaOf(ctx, s.table);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  const CatalogEntry* entry = ctx.db->catalog.Find(schema, s.table.name);
  if (entry == nullptr || (entry->kind != ObjectKind::kTable && entry->kind != ObjectKind::kView)) {
    return SetError(error, 942, "table or view does not exist");
  }
  if (entry->kind == ObjectKind::kView) {
    // decision AT10: a view's comments are taken and not kept.
    if (s.column.empty()) return true;
    const std::vector<std::string>& names = entry->view->column_names;
    if (std::find(names.begin(), names.end(), s.column) != names.end()) return true;
    return SetError(error, 904, "\"" + s.column + "\": invalid identifier");
  }
  Table* table = entry->table.get();
  if (!s.column.empty() && table->FindColumn(s.column) < 0) {
    return SetError(error, 904, "\"" + s.column + "\": invalid identifier");
  }
  table->comments[s.column] = s.text;
  return true;
}

}  // namespace ocimem
