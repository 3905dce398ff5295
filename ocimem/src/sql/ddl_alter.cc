// ALTER TABLE: the statement as a whole (a failed one leaves the table as it was), and the
// constraints it adds and drops.  A constraint added is checked against every row first.
#include "sql/ddl_alter.h"

#include <algorithm>
#include <cstdio>
#include <mutex>
#include <set>
#include <unordered_set>

#include "sql/constraint_ddl.h"
#include "sql/constraint_enforce.h"
#include "sql/sql_rows.h"

namespace ocimem {
namespace {

using Kind = ConstraintClause::Kind;

bool CannotValidate(SqlError* error, int code, const Table& table, const std::string& name,
                    const std::string& what) {
  return SetError(error, code,
                  "cannot validate " + QualifiedConstraint(table, name) + " - " + what);
}

// Whether `columns` are those of the primary key or of a UNIQUE constraint.
bool IsDeclaredKey(const Table& table, const std::vector<size_t>& columns) {
  if (!table.primary_key.empty() && SameColumnSet(table.primary_key, columns)) return true;
  for (const UniqueKey& u : table.unique_keys) {
    if (!u.index_only && SameColumnSet(u.index.columns, columns)) return true;
  }
  return false;
}

bool AddKey(const ExecContext& ctx, const ConstraintClause& c, const std::string& name,
            Table* table, SqlError* error) {
  (void)ctx;
  std::vector<size_t> cols;
  if (!ResolveColumns(*table, c.columns, &cols, error)) return false;
  for (size_t col : cols) {
    if (!CanBeKey(table->columns()[col].type)) return NotAKeyType(error, table->columns()[col].type);
  }
  bool primary = c.kind == Kind::kPrimaryKey;
  if (primary && !table->primary_key.empty()) {
    return SetError(error, 2260, "table can have only one primary key");
  }
  if (IsDeclaredKey(*table, cols)) {
    return SetError(error, 2261, "such unique or primary key already exists in the table");
  }
  std::unordered_set<std::string> seen;
  std::vector<RowRecord*> rows = CommittedRows(*table);
  for (RowRecord* r : rows) {
    std::string key;
    bool any_null = false;
    bool has_key = RowKey(*table, cols, *r->committed, &key, &any_null);
    if (primary && any_null) {
      return SetError(error, 1449, "column contains NULL values; cannot alter to NOT NULL");
    }
    if (has_key && !seen.insert(key).second) {
      return primary ? CannotValidate(error, 2437, *table, name, "primary key violated")
                     : CannotValidate(error, 2299, *table, name, "duplicate keys found");
    }
  }
  // A key takes over an index with its columns (in any order) as Oracle does.
  for (TableIndex& index : table->indexes) {
    if (index.enforces.empty() && SameColumnSet(index.columns, cols)) {
      index.enforces = name;
      break;
    }
  }
  if (primary) {
    table->primary_key = cols;
    table->primary_key_name = name;
    for (size_t col : cols) table->not_null[col] = true;
    table->key_index.clear();
    for (RowRecord* r : rows) {
      r->committed_key = table->KeyOf(*r->committed);
      table->key_index.emplace(r->committed_key, r);
    }
    return true;
  }
  // Constraints come before UNIQUE indexes, so that a row breaking both names the constraint.
  auto at = std::find_if(table->unique_keys.begin(), table->unique_keys.end(),
                         [](const UniqueKey& u) { return u.index_only; });
  UniqueKey key;
  key.name = name;
  key.index.columns = cols;
  for (RowRecord* r : rows) key.index.Add(*table, r);
  table->unique_keys.insert(at, std::move(key));
  return true;
}

bool AddCheck(const ExecContext& ctx, const ConstraintClause& c, const std::string& name,
              Table* table, SqlError* error) {
  if (!CheckCondition(*table, c, error)) return false;
  CheckConstraint check{name, c.check};
  for (RowRecord* r : CommittedRows(*table)) {
    bool ok = true;
    if (!CheckSatisfied(ctx, *table, check, *r->committed, &ok, error)) return false;
    if (!ok) return CannotValidate(error, 2293, *table, name, "check constraint violated");
  }
  table->checks.push_back(std::move(check));
  return true;
}

bool AddForeignKey(const ExecContext& ctx, const ConstraintClause& c, const std::string& name,
                   Table* table, AlterEffects* effects, SqlError* error) {
  ForeignKey fk;
  if (!ResolveForeignKey(ctx, c, table, &fk, error)) return false;
  fk.name = name;
  if (fk.parent != table && !CheckNoLocks(ctx, *fk.parent, error)) return false;
  std::unordered_set<std::string> parents;
  for (RowRecord* r : CommittedRows(*fk.parent)) {
    std::string key;
    bool any_null = false;
    if (RowKey(*fk.parent, fk.parent_columns, *r->committed, &key, &any_null) && !any_null) {
      parents.insert(key);
    }
  }
  std::vector<RowRecord*> rows = CommittedRows(*table);
  for (RowRecord* r : rows) {
    std::string key;
    bool any_null = false;
    if (!RowKey(*table, fk.index.columns, *r->committed, &key, &any_null) || any_null) continue;
    if (parents.count(key) == 0) {
      return CannotValidate(error, 2298, *table, name, "parent keys not found");
    }
  }
  for (RowRecord* r : rows) fk.index.Add(*table, r);
  effects->referrers.emplace_back(fk.parent, Referrer{table, name});
  table->foreign_keys.push_back(std::move(fk));
  return true;
}

bool AddNotNull(const ConstraintClause& c, const std::string& name, Table* table,
                SqlError* error) {
  std::vector<size_t> cols;
  if (!ResolveColumns(*table, c.columns, &cols, error)) return false;
  size_t col = cols.front();
  const Attribute& a = table->columns()[col];
  for (RowRecord* r : CommittedRows(*table)) {
    if (*IndAt(*r->committed, a.ind_offset) == OCI_IND_NULL) {
      // decision AT3: a NOT NULL named by the system is shown without its name.
      return SetError(error, 2296, "cannot enable " +
                                       QualifiedConstraint(*table, c.name.empty() ? "" : name) +
                                       " - null values found");
    }
  }
  table->not_null[col] = true;
  table->not_null_names[col] = name;
  return true;
}

// The foreign keys (as their child table and name) that refer to the key `columns`.
std::vector<Referrer> ReferrersOf(const Table& table, const std::vector<size_t>& columns) {
  std::vector<Referrer> out;
  for (const Referrer& r : table.referrers) {
    for (const ForeignKey& fk : r.child->foreign_keys) {
      if (fk.name == r.name && fk.parent == &table && fk.parent_columns == columns) {
        out.push_back(r);
      }
    }
  }
  return out;
}

void ForgetName(Database* db, Table* table, const std::string& name) {
  for (TableIndex& index : table->indexes) {
    if (index.enforces == name) index.enforces.clear();
  }
  auto& names = table->constraint_names;
  names.erase(std::remove(names.begin(), names.end(), name), names.end());
  db->constraint_names.erase({table->schema, name});
}

void DropForeignKey(Database* db, Table* child, const std::string& name) {
  auto& fks = child->foreign_keys;
  auto it = std::find_if(fks.begin(), fks.end(), [&](const ForeignKey& f) { return f.name == name; });
  if (it == fks.end()) return;
  auto& refs = it->parent->referrers;
  refs.erase(std::remove_if(refs.begin(), refs.end(),
                            [&](const Referrer& r) { return r.child == child && r.name == name; }),
             refs.end());
  fks.erase(it);
  ForgetName(db, child, name);
}

// Drops the primary key or the UNIQUE key `unique` (nullptr: the primary key), with the
// foreign keys that refer to it when `cascade`; ORA-02273 when some do and not `cascade`.
bool DropKey(const ExecContext& ctx, Table* table, const UniqueKey* unique, bool cascade,
             SqlError* error) {
  const std::vector<size_t> columns = unique ? unique->index.columns : table->primary_key;
  std::vector<Referrer> refs = ReferrersOf(*table, columns);
  if (!refs.empty() && !cascade) {
    return SetError(error, 2273, "this unique/primary key is referenced by some foreign keys");
  }
  for (const Referrer& r : refs) DropForeignKey(ctx.db, r.child, r.name);
  if (unique != nullptr) {
    std::string name = unique->name;
    auto& keys = table->unique_keys;
    keys.erase(std::find_if(keys.begin(), keys.end(),
                            [&](const UniqueKey& u) { return &u == unique; }));
    ForgetName(ctx.db, table, name);
    return true;
  }
  for (size_t col : table->primary_key) {
    table->not_null[col] = !table->not_null_names[col].empty();
  }
  ForgetName(ctx.db, table, table->primary_key_name);
  table->primary_key.clear();
  table->primary_key_name.clear();
  table->key_index.clear();
  for (const auto& r : table->rows) {
    r->committed_key.clear();
    r->pending_key.clear();
  }
  return true;
}

const UniqueKey* FindUnique(const Table& table, const std::string& name) {
  for (const UniqueKey& u : table.unique_keys) {
    if (!u.index_only && u.name == name) return &u;
  }
  return nullptr;
}

}  // namespace

std::vector<RowRecord*> CommittedRows(const Table& table) {
  std::vector<RowRecord*> out;
  for (const auto& r : table.rows) {
    if (!r->dead && r->committed) out.push_back(r.get());
  }
  return out;
}

bool CheckNoLocks(const ExecContext& ctx, const Table& table, SqlError* error) {
  for (const auto& record : table.rows) {
    if (record->lock_txn != 0 && record->lock_txn != CurrentTxn(ctx)) return Busy(error);
  }
  return true;
}

std::string SystemConstraintName(Database* db) {
  char name[32];
  std::snprintf(name, sizeof name, "SYS_C%06llu",
                static_cast<unsigned long long>(db->next_constraint++));
  return name;
}

std::string QualifiedConstraint(const Table& table, const std::string& name) {
  return "(" + table.schema + "." + name + ")";
}

bool AddConstraints(const ExecContext& ctx, const std::vector<ConstraintClause>& clauses,
                    Table* table, AlterEffects* effects, SqlError* error) {
  std::set<std::string> written;
  for (const ConstraintClause& c : clauses) {
    if (c.name.empty() || c.kind == Kind::kNull) continue;
    if (!written.insert(c.name).second ||
        ctx.db->constraint_names.count({table->schema, c.name}) != 0) {
      return SetError(error, 2264, "name already used by an existing constraint");
    }
  }
  // Keys, checks and NOT NULL first: a foreign key may refer to a key added with it.
  for (int pass = 0; pass < 2; ++pass) {
    for (const ConstraintClause& c : clauses) {
      if (c.kind == Kind::kNull || (c.kind == Kind::kForeignKey) != (pass == 1)) continue;
      std::string name = c.name.empty() ? SystemConstraintName(ctx.db) : c.name;
      bool ok = false;
      switch (c.kind) {
        case Kind::kPrimaryKey:
        case Kind::kUnique: ok = AddKey(ctx, c, name, table, error); break;
        case Kind::kCheck: ok = AddCheck(ctx, c, name, table, error); break;
        case Kind::kForeignKey: ok = AddForeignKey(ctx, c, name, table, effects, error); break;
        case Kind::kNotNull: ok = AddNotNull(c, name, table, error); break;
        case Kind::kNull: break;
      }
      if (!ok) return false;
      table->constraint_names.push_back(name);
      effects->names.push_back(name);
    }
  }
  return true;
}

bool DropConstraint(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                    SqlError* error) {
  using Action = AlterTableStatement::Action;
  if (s.action == Action::kDropPrimaryKey) {
    if (table->primary_key.empty()) {
      return SetError(error, 2441, "Cannot drop nonexistent primary key");
    }
    return DropKey(ctx, table, nullptr, s.cascade, error);
  }
  if (s.action == Action::kDropUnique) {
    std::vector<size_t> cols;
    if (!ResolveColumns(*table, s.key_columns, &cols, error)) return false;
    for (const UniqueKey& u : table->unique_keys) {
      if (!u.index_only && SameColumnSet(u.index.columns, cols)) {
        return DropKey(ctx, table, &u, s.cascade, error);
      }
    }
    return SetError(error, 2442, "Cannot drop nonexistent unique key");
  }
  const std::string& name = s.constraint;
  if (!table->primary_key.empty() && table->primary_key_name == name) {
    return DropKey(ctx, table, nullptr, s.cascade, error);
  }
  if (const UniqueKey* u = FindUnique(*table, name)) return DropKey(ctx, table, u, s.cascade, error);
  for (const ForeignKey& fk : table->foreign_keys) {
    if (fk.name == name) {
      DropForeignKey(ctx.db, table, name);
      return true;
    }
  }
  auto& checks = table->checks;
  for (auto it = checks.begin(); it != checks.end(); ++it) {
    if (it->name == name) {
      checks.erase(it);
      ForgetName(ctx.db, table, name);
      return true;
    }
  }
  for (size_t col = 0; col < table->not_null_names.size(); ++col) {
    if (table->not_null_names[col] != name) continue;
    table->not_null_names[col].clear();
    table->not_null[col] = std::find(table->primary_key.begin(), table->primary_key.end(), col) !=
                           table->primary_key.end();
    ForgetName(ctx.db, table, name);
    return true;
  }
  // decision AT2: Oracle's text, with the gap where a name would stand.
  return SetError(error, 2443, "Cannot drop constraint  - nonexistent constraint");
}

bool AlterTable(const ExecContext& ctx, const AlterTableStatement& s, SqlError* error) {
  using Action = AlterTableStatement::Action;
  const std::string schema = s.name.schema.empty() ? ctx.schema : s.name.schema;
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  std::shared_ptr<Table> found = ctx.db->catalog.FindTable(schema, s.name.name);
  if (!found) return SetError(error, 942, "table or view does not exist");
  Table* table = found.get();
  if (table->dual) return SetError(error, 1031, "insufficient privileges");
  // The session's own transaction ended before; rows another one holds stop the change.
  if (!CheckNoLocks(ctx, *table, error)) return false;
  if (table->not_null_names.size() != table->columns().size()) {
    table->not_null_names.resize(table->columns().size());
  }
  switch (s.action) {
    case Action::kDropConstraint:
    case Action::kDropPrimaryKey:
    case Action::kDropUnique:
      return DropConstraint(ctx, s, table, error);
    case Action::kRenameColumn:
      return RenameColumn(ctx, s, table, error);
    case Action::kRenameTable:
      return RenameTable(ctx, s, table, error);
    case Action::kAdd:
    case Action::kModify:
      break;
  }
  // ADD and MODIFY change the table in place; a copy (and each row's committed version)
  // puts it back when they fail.
  Table backup = *table;
  std::vector<std::pair<std::shared_ptr<RowData>, std::string>> versions;
  for (const auto& r : table->rows) versions.emplace_back(r->committed, r->committed_key);
  AlterEffects effects;
  bool ok = s.action == Action::kAdd
                ? AddColumns(ctx, s, table, error) &&
                      AddConstraints(ctx, s.constraints, table, &effects, error)
                : ModifyColumns(ctx, s, table, &effects, error);
  if (!ok) {
    *table = std::move(backup);
    for (size_t i = 0; i < versions.size(); ++i) {
      table->rows[i]->committed = std::move(versions[i].first);
      table->rows[i]->committed_key = std::move(versions[i].second);
    }
    return false;
  }
  for (const std::string& name : effects.names) ctx.db->constraint_names.insert({table->schema, name});
  for (auto& [parent, referrer] : effects.referrers) parent->referrers.push_back(referrer);
  for (const std::string& name : effects.dropped) ctx.db->constraint_names.erase({table->schema, name});
  return true;
}

}  // namespace ocimem
