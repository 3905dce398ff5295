// UNIQUE keys, foreign keys and CHECK conditions at INSERT, UPDATE and DELETE.  Every
// lookup goes through a key index (the primary key's, a UNIQUE key's or a foreign key's):
// no statement reads a whole table to check a constraint.
#include "sql/constraint_enforce.h"

#include <unordered_set>

#include "objects/value_slot.h"

namespace ocimem {
namespace {

enum class Seen { kNo, kYes, kBusy };

std::string Qualified(const Table& table, const std::string& name) {
  return "(" + table.schema + "." + name + ")";
}

bool UniqueViolated(const Table& table, const std::string& name, SqlError* error) {
  return SetError(error, 1, "unique constraint " + Qualified(table, name) + " violated");
}

// The records an index lists under `key` for `columns` of `table`: the primary key's own
// index, a UNIQUE key's, or (child rows) a foreign key's.
std::vector<RowRecord*> Candidates(const Table& table, const std::vector<size_t>& columns,
                                   const std::string& key) {
  std::vector<RowRecord*> out;
  if (!table.primary_key.empty() && columns == table.primary_key) {
    auto range = table.key_index.equal_range(key);
    for (auto it = range.first; it != range.second; ++it) out.push_back(it->second);
    return out;
  }
  const KeyIndex* index = nullptr;
  for (const UniqueKey& u : table.unique_keys) {
    if (u.index.columns == columns) index = &u.index;
  }
  for (const ForeignKey& f : table.foreign_keys) {
    if (index == nullptr && f.index.columns == columns) index = &f.index;
  }
  if (index == nullptr) return out;
  if (const auto* rows = index->Find(key)) out.assign(rows->begin(), rows->end());
  return out;
}

bool HasKey(const Table& table, const std::vector<size_t>& columns, const RowData* row,
            const std::string& key) {
  if (row == nullptr) return false;
  std::string k;
  bool any_null = false;
  return RowKey(table, columns, *row, &k, &any_null) && k == key;
}

// Whether `record` holds `key` once the statement is done, as the session sees it.  A row
// another transaction is changing, with the key in either version, is kBusy: Oracle would
// wait for that transaction (decision CN1).
Seen Holds(const ExecContext& ctx, const Table& table, const std::vector<size_t>& columns,
           const RowRecord& record, const std::string& key, const StatementChanges& changes) {
  if (record.dead) return Seen::kNo;
  auto changed = changes.rows.find(&record);
  if (changed != changes.rows.end()) {
    return HasKey(table, columns, changed->second.get(), key) ? Seen::kYes : Seen::kNo;
  }
  std::uint64_t mine = CurrentTxn(ctx);
  if (record.lock_txn != 0 && record.lock_txn != mine && record.has_pending) {
    bool either = HasKey(table, columns, record.committed.get(), key) ||
                  HasKey(table, columns, record.pending.get(), key);
    return either ? Seen::kBusy : Seen::kNo;
  }
  return HasKey(table, columns, VisibleVersion(record, mine).get(), key) ? Seen::kYes
                                                                          : Seen::kNo;
}

// Whether some row of `table` other than `self` holds `key` in `columns` after the
// statement, besides the statement's own new versions (`new_keys`).
Seen KeyExists(const ExecContext& ctx, const Table& table, const std::vector<size_t>& columns,
               const std::string& key, const RowRecord* self, const StatementChanges& changes) {
  Seen result = Seen::kNo;
  for (RowRecord* r : Candidates(table, columns, key)) {
    if (r == self) continue;
    Seen s = Holds(ctx, table, columns, *r, key, changes);
    if (s == Seen::kYes) return s;
    if (s == Seen::kBusy) result = s;
  }
  return result;
}

bool CheckConditions(const ExecContext& ctx, const Table& table, const RowData& row,
                     SqlError* error) {
  for (const CheckConstraint& check : table.checks) {
    bool ok = true;
    if (!CheckSatisfied(ctx, table, check, row, &ok, error)) return false;
    if (!ok) {
      return SetError(error, 2290, "check constraint " + Qualified(table, check.name) + " violated");
    }
  }
  return true;
}

// The new versions `rows` (of `records`; nullptr for a row being inserted) against the
// table's UNIQUE keys.
bool CheckUniqueKeys(const ExecContext& ctx, const Table& table,
                     const std::vector<const RowRecord*>& records,
                     const std::vector<const RowData*>& rows, const StatementChanges& changes,
                     SqlError* error) {
  for (const UniqueKey& u : table.unique_keys) {
    std::unordered_set<std::string> seen;
    for (size_t i = 0; i < rows.size(); ++i) {
      std::string key;
      bool any_null = false;
      if (!RowKey(table, u.index.columns, *rows[i], &key, &any_null)) continue;
      if (!seen.insert(key).second) return UniqueViolated(table, u.name, error);
      Seen s = KeyExists(ctx, table, u.index.columns, key, records[i], changes);
      if (s == Seen::kBusy) return Busy(error);
      if (s == Seen::kYes) return UniqueViolated(table, u.name, error);
    }
  }
  return true;
}

// The new versions `rows` against the table's foreign keys: each key without NULLs must
// be a parent's key after the statement.  A row whose old version (`old_rows`) had the
// same key is not checked again.
bool CheckParents(const ExecContext& ctx, const Table& table,
                  const std::vector<const RowData*>& rows,
                  const std::vector<const RowData*>& old_rows, const StatementChanges& changes,
                  SqlError* error) {
  for (const ForeignKey& fk : table.foreign_keys) {
    // A table that refers to itself may take its parents from the statement's own rows.
    std::unordered_set<std::string> own_parents;
    if (fk.parent == &table) {
      for (const RowData* row : rows) {
        std::string key;
        bool any_null = false;
        if (RowKey(table, fk.parent_columns, *row, &key, &any_null) && !any_null) {
          own_parents.insert(key);
        }
      }
    }
    for (size_t i = 0; i < rows.size(); ++i) {
      std::string key;
      bool any_null = false;
      if (!RowKey(table, fk.index.columns, *rows[i], &key, &any_null) || any_null) continue;
      if (old_rows[i] != nullptr && HasKey(table, fk.index.columns, old_rows[i], key)) continue;
      if (own_parents.count(key) != 0) continue;
      Seen s = KeyExists(ctx, *fk.parent, fk.parent_columns, key, nullptr, changes);
      if (s == Seen::kBusy) return Busy(error);
      if (s == Seen::kNo) {
        return SetError(error, 2291, "integrity constraint " + Qualified(table, fk.name) +
                                         " violated - parent key not found");
      }
    }
  }
  return true;
}

bool ChildFound(const Table& child, const std::string& name, SqlError* error) {
  return SetError(error, 2292, "integrity constraint " + Qualified(child, name) +
                                   " violated - child record found");
}

// The foreign key of `child` named `name`.
const ForeignKey* FindForeignKey(const Table& child, const std::string& name) {
  for (const ForeignKey& fk : child.foreign_keys) {
    if (fk.name == name) return &fk;
  }
  return nullptr;
}

// The row `record` of `table` had, before the statement, the key `old` that child rows may
// refer to, and the statement removes it.  On update (`deleting` false), children are an
// error; on delete, each foreign key's ON DELETE rule decides, adding to `changes`.
bool RemoveParentKey(const ExecContext& ctx, const Table& table, const RowData& old,
                     bool deleting, StatementChanges* changes,
                     std::vector<std::shared_ptr<RowRecord>>* work, SqlError* error) {
  for (const Referrer& ref : table.referrers) {
    const ForeignKey* fk = FindForeignKey(*ref.child, ref.name);
    if (fk == nullptr) continue;
    std::string key;
    bool any_null = false;
    if (!RowKey(table, fk->parent_columns, old, &key, &any_null) || any_null) continue;
    // Still held by a row after the statement: nothing is orphaned.
    Seen still = KeyExists(ctx, table, fk->parent_columns, key, nullptr, *changes);
    if (still == Seen::kBusy) return Busy(error);
    if (still == Seen::kYes) continue;
    Table& child = *ref.child;
    for (RowRecord* c : Candidates(child, fk->index.columns, key)) {
      Seen s = Holds(ctx, child, fk->index.columns, *c, key, *changes);
      if (s == Seen::kBusy) return Busy(error);
      if (s == Seen::kNo) continue;
      if (!deleting || fk->on_delete == ConstraintClause::OnDelete::kNoAction) {
        return ChildFound(child, fk->name, error);
      }
      if (c->lock_txn != 0 && c->lock_txn != CurrentTxn(ctx)) return Busy(error);
      std::shared_ptr<RowRecord> record = c->shared_from_this();
      auto it = changes->rows.find(c);
      bool known = it != changes->rows.end();
      if (fk->on_delete == ConstraintClause::OnDelete::kCascade) {
        changes->rows[c] = nullptr;
        work->push_back(record);
      } else {
        std::shared_ptr<RowData> base = known ? it->second : VisibleVersion(*c, CurrentTxn(ctx));
        std::shared_ptr<RowData> row = CopyRow(*base);
        if (!row) return SetError(error, 4030, "out of process memory");
        for (size_t col : fk->index.columns) {
          const Attribute& a = child.columns()[col];
          if (child.not_null[col]) {
            return SetError(error, 1407, "cannot update (\"" + child.schema + "\".\"" +
                                             child.name + "\".\"" + a.name + "\") to NULL");
          }
          *IndAt(*row, a.ind_offset) = OCI_IND_NULL;
        }
        changes->rows[c] = std::move(row);
      }
      if (!known) changes->cascaded.push_back(record);
    }
  }
  return true;
}

}  // namespace

bool CheckInsertedRow(const ExecContext& ctx, Table* table, const RowData& row,
                      SqlError* error) {
  StatementChanges none;
  return CheckConditions(ctx, *table, row, error) &&
         CheckUniqueKeys(ctx, *table, {nullptr}, {&row}, none, error) &&
         CheckParents(ctx, *table, {&row}, {nullptr}, none, error);
}

bool CheckUpdatedRows(const ExecContext& ctx, Table* table, const std::vector<Found>& found,
                      const std::vector<std::shared_ptr<RowData>>& rows, SqlError* error) {
  StatementChanges changes;
  std::vector<const RowRecord*> records;
  std::vector<const RowData*> new_rows;
  std::vector<const RowData*> old_rows;
  for (size_t i = 0; i < found.size(); ++i) {
    if (!CheckConditions(ctx, *table, *rows[i], error)) return false;
    changes.rows[found[i].record.get()] = rows[i];
    records.push_back(found[i].record.get());
    new_rows.push_back(rows[i].get());
    old_rows.push_back(found[i].row.get());
  }
  if (!CheckUniqueKeys(ctx, *table, records, new_rows, changes, error) ||
      !CheckParents(ctx, *table, new_rows, old_rows, changes, error)) {
    return false;
  }
  std::vector<std::shared_ptr<RowRecord>> unused;
  for (size_t i = 0; i < found.size(); ++i) {
    if (!RemoveParentKey(ctx, *table, *found[i].row, false, &changes, &unused, error)) {
      return false;
    }
  }
  return true;
}

bool PlanDelete(const ExecContext& ctx, Table* table, const std::vector<Found>& found,
                StatementChanges* cascade, SqlError* error) {
  if (table->referrers.empty()) return true;
  std::vector<std::shared_ptr<RowRecord>> work;
  for (const Found& f : found) {
    cascade->rows[f.record.get()] = nullptr;
    work.push_back(f.record);
  }
  // Each deleted row's keys go; rows deleted by cascade are added to the work as found.
  for (size_t i = 0; i < work.size(); ++i) {
    RowRecord* record = work[i].get();
    const std::shared_ptr<RowData>& old = VisibleVersion(*record, CurrentTxn(ctx));
    if (!old) continue;
    if (!RemoveParentKey(ctx, *record->table, *old, true, cascade, &work, error)) return false;
  }
  return true;
}

void ApplyCascade(const ExecContext& ctx, const StatementChanges& cascade) {
  for (const std::shared_ptr<RowRecord>& record : cascade.cascaded) {
    Table* table = record->table;
    std::shared_ptr<RowData> row = cascade.rows.at(record.get());
    table->UnindexRecord(record.get());
    LockRecord(ctx, record);
    record->pending_key = row ? table->KeyOf(*row) : std::string();
    record->pending = std::move(row);
    record->has_pending = true;
    table->IndexRecord(record.get());
  }
}

}  // namespace ocimem
