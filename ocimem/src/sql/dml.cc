// INSERT, UPDATE and DELETE.  Each statement first works out everything it will change, so
// that an error leaves the table as it was, then applies the changes.
#include <cstring>
#include <set>

#include "collections/coll.h"
#include "statements/convert.h"
#include "sql/column_default.h"
#include "sql/constraint_enforce.h"
#include "sql/sql_exec.h"
#include "sql/sql_expr.h"
#include "sql/sql_rows.h"
#include "objects/value_slot.h"

namespace ocimem {
namespace {

bool StoreLoose(const ExecContext& ctx, const Expr& e, const ValueType& t, void* slot, OCIInd* ind,
                SqlError* error);

// Builds the value of a constructor type(value, ...) in an initialised slot.
bool BuildConstructed(const ExecContext& ctx, const Expr& e, const ValueType& t, void* slot,
                      OCIInd* ind, SqlError* error) {
  const std::string schema = e.type.schema.empty() ? ctx.schema : e.type.schema;
  if ((t.kind != ValueKind::kObject && t.kind != ValueKind::kCollection) || !t.named ||
      t.named->schema != schema || t.named->name != e.type.name) {
    if (!ctx.db->catalog.FindType(schema, e.type.name)) {
      return SetError(error, 904, "\"" + e.type.name + "\": invalid identifier");
    }
    return SetError(
        error, 932,
        "inconsistent datatypes: expected " + TypeName(t) + " got " + schema + "." + e.type.name);
  }
  if (t.kind == ValueKind::kObject) {
    const std::vector<Attribute>& attrs = t.named->attributes;
    if (e.args.size() != attrs.size()) {
      return SetError(error, 2315, "incorrect number of arguments for default constructor");
    }
    ind[0] = OCI_IND_NOTNULL;
    for (size_t i = 0; i < attrs.size(); ++i) {
      const Attribute& a = attrs[i];
      auto* attr_ind =
          reinterpret_cast<OCIInd*>(reinterpret_cast<unsigned char*>(ind) + a.ind_offset);
      if (!StoreLoose(ctx, e.args[i], a.type, static_cast<unsigned char*>(slot) + a.offset,
                      attr_ind, error)) {
        return false;
      }
    }
    return true;
  }
  OCIColl* coll = *static_cast<OCIColl**>(slot);
  coll->Clear();
  for (const Expr& arg : e.args) {
    if (!coll->Grow()) return SetError(error, 4030, "out of process memory");
    size_t last = coll->size() - 1;
    if (!StoreLoose(ctx, arg, coll->element_type(), coll->ValueAt(last), coll->IndAt(last),
                    error)) {
      return false;
    }
  }
  *ind = OCI_IND_NOTNULL;
  return true;
}

// Stores a value inside a constructed one; sizes are checked on the whole value after.
bool StoreLoose(const ExecContext& ctx, const Expr& e, const ValueType& t, void* slot, OCIInd* ind,
                SqlError* error) {
  if (e.kind == Expr::Kind::kConstructor) return BuildConstructed(ctx, e, t, slot, ind, error);
  Value v;
  if (!EvalExpr(ctx, RowScope(), e, &v, error)) return false;
  ValueType loose = t;
  loose.length = 0;
  loose.precision = 0;
  return StoreValue(v, loose, slot, ind, Target(), error);
}

// Stores the value of a VALUES or SET expression (evaluated as `v` unless a constructor).
bool StoreColumn(const ExecContext& ctx, const Expr& e, const Value& v, const ValueType& t,
                 void* slot, OCIInd* ind, const Target& target, SqlError* error) {
  if (e.kind == Expr::Kind::kConstructor) {
    return BuildConstructed(ctx, e, t, slot, ind, error) && FitNestedValues(t, slot, ind, error);
  }
  return StoreValue(v, t, slot, ind, target, error);
}

Target TargetOf(const Table& table, size_t column) {
  return Target{table.schema, table.name, table.columns()[column].name};
}

bool HasPathOf(const std::set<std::vector<std::string>>& paths, const std::string& column) {
  for (const std::vector<std::string>& p : paths) {
    if (p.front() == column) return true;
  }
  return false;
}

// SET alias.column.attr... = value: the attribute inside the row's object.  An object along
// the way that is NULL has no attribute to set (decision TC2).
bool StoreAttribute(const ExecContext& ctx, const Table& table, size_t column,
                    const Expr& target, const ColumnPlace& place, const Expr& e, Value* v,
                    RowData* row, SqlError* error) {
  for (size_t ind : place.objects) {
    if (*IndAt(*row, ind) == OCI_IND_NULL) {
      return SetError(error, 6530, "Reference to uninitialized composite");
    }
  }
  Target where = TargetOf(table, column);
  for (const std::string& a : target.path) where.column += "\".\"" + a;
  return FitDateTime(ctx, place.attr.type, v, error) &&
         StoreColumn(ctx, e, *v, place.attr.type, SlotAt(*row, place.attr),
                     IndAt(*row, place.attr.ind_offset), where, error);
}

// Bytes of a LOB as the transaction sees them.
std::string VisibleLobBytes(const OCILobLocator& l, std::uint64_t txn) {
  if (!l.cell) return std::string();
  if (l.cell->has_pending && l.cell->pending_txn == txn && txn != 0) return l.cell->pending;
  return l.cell->data;
}

// Room for one more element, grown by doubling as push_back would (reserve alone grows
// to the exact size asked, which would copy the list on every row).
template <typename T>
void RoomForOne(std::vector<T>* v) {
  if (v->size() == v->capacity()) v->reserve(v->capacity() < 8 ? 8 : 2 * v->capacity());
}

// Gives every LOB of a value about to be stored a cell of its own in `record`'s row.
void MaterializeLobs(const ExecContext& ctx, const ValueType& t, void* slot, OCIInd* ind,
                     const std::shared_ptr<RowRecord>& record) {
  std::uint64_t txn = CurrentTxn(ctx);
  ForEachLob(t, slot, ind, [&](OCILobLocator* l, bool is_null) {
    if (l == nullptr) return;
    if (is_null) {
      l->state = LobState::kUnset;
      l->cell.reset();
      return;
    }
    auto cell = std::make_shared<LobCell>();
    cell->clob = l->lob_type != OCI_TYPECODE_BLOB;
    if (l->state == LobState::kPersistent || l->state == LobState::kTemporary) {
      cell->data = VisibleLobBytes(*l, txn);
    }
    cell->db = ctx.db_ref;
    cell->row = record;
    l->state = LobState::kPersistent;
    l->cell = std::move(cell);
    l->select_txn = 0;
  });
}

bool CannotBeNull(const Table& table, size_t column, const RowData& row, bool update,
                  SqlError* error) {
  const Attribute& a = table.columns()[column];
  if (*IndAt(row, a.ind_offset) != OCI_IND_NULL) return true;
  std::string name = "(\"" + table.schema + "\".\"" + table.name + "\".\"" + a.name + "\")";
  if (update) return SetError(error, 1407, "cannot update " + name + " to NULL");
  return SetError(error, 1400, "cannot insert NULL into " + name);
}

// ORA-00001 when another visible row holds `key`; ORA-00054 when another transaction's
// uncommitted row may hold it.
bool CheckKeyFree(const ExecContext& ctx, const Table& table, const std::string& key,
                  const RowRecord* self, SqlError* error) {
  if (table.primary_key.empty()) return true;
  std::uint64_t mine = CurrentTxn(ctx);
  auto range = table.key_index.equal_range(key);
  for (auto it = range.first; it != range.second; ++it) {
    const RowRecord* r = it->second;
    if (r == self || r->dead) continue;
    bool committed_has = r->committed && r->committed_key == key;
    bool pending_has = r->has_pending && r->pending && r->pending_key == key;
    bool occupied;
    if (r->has_pending && mine != 0 && r->lock_txn == mine) {
      occupied = pending_has;
    } else if (r->has_pending && r->lock_txn != 0) {
      if (committed_has || pending_has) return Busy(error);
      occupied = false;
    } else {
      occupied = committed_has;
    }
    if (occupied) {
      return SetError(
          error, 1,
          "unique constraint (" + table.schema + "." + table.primary_key_name + ") violated");
    }
  }
  return true;
}

}  // namespace

bool ExecuteInsert(const ExecContext& ctx, const InsertStatement& s, ExecResult* result,
                   SqlError* error) {
  Table* table = nullptr;
  if (!ResolveTable(ctx, s.table, &table, error)) return false;
  if (table->dual) return SetError(error, 1031, "insufficient privileges");
  if (!ProjectReturning(ctx, *table, s.table, s.returning, result, error)) return false;
  const std::vector<Attribute>& columns = table->columns();
  std::vector<size_t> targets;
  if (s.has_columns) {
    std::set<size_t> seen;
    for (const Expr& c : s.columns) {
      size_t pos = 0;
      if (!ResolveColumn(*table, s.table, c, &pos, error)) return false;
      if (!seen.insert(pos).second) return SetError(error, 957, "duplicate column name");
      targets.push_back(pos);
    }
  } else {
    for (size_t i = 0; i < columns.size(); ++i) targets.push_back(i);
  }
  const size_t written = targets.size();
  std::vector<Expr> exprs = s.values;
  if (!WithDefaults(*table, s.has_columns, &targets, &exprs)) {
    return SetError(error, 913, "too many values");
  }
  std::vector<Value> values(exprs.size());
  ctx.row_nextvals.clear();
  for (const Expr& e : exprs) {
    if (!AdvanceSequences(ctx, e, error)) return false;
  }
  RowScope no_row;
  for (size_t i = 0; i < exprs.size(); ++i) {
    if (exprs[i].kind == Expr::Kind::kConstructor) continue;  // built where stored
    if (!EvalExpr(ctx, no_row, exprs[i], &values[i], error)) return false;
  }
  // An object table also takes one instance of its type for the whole row.
  bool one_instance =
      values.size() == 1 &&
      ((values[0].kind == Value::Kind::kObject && values[0].tdo == table->row_type.get()) ||
       (exprs[0].kind == Expr::Kind::kConstructor &&
        exprs[0].type.name == table->row_type->name &&
        (exprs[0].type.schema.empty() ? ctx.schema : exprs[0].type.schema) ==
            table->row_type->schema));
  bool whole_row = table->object_table && !s.has_columns &&
                   (one_instance || (values.size() == 1 && columns.size() != 1 &&
                                     values[0].kind == Value::Kind::kObject));
  if (!whole_row) {
    if (s.values.size() < written) return SetError(error, 947, "not enough values");
    if (s.values.size() > written) return SetError(error, 913, "too many values");
  }
  std::shared_ptr<RowData> row = NewRow(table->row_type);
  if (!row) return SetError(error, 4030, "out of process memory");
  if (whole_row) {
    ValueType t = RowValueType(*table);
    if (!StoreColumn(ctx, exprs[0], values[0], t, row->value, row->ind, Target(), error)) {
      return false;
    }
    row->ind[0] = OCI_IND_NOTNULL;
  } else {
    for (size_t i = 0; i < targets.size(); ++i) {
      const Attribute& a = columns[targets[i]];
      if (!FitDateTime(ctx, a.type, &values[i], error)) return false;
      if (!StoreColumn(ctx, exprs[i], values[i], a.type, SlotAt(*row, a),
                       IndAt(*row, a.ind_offset), TargetOf(*table, targets[i]), error)) {
        return false;
      }
    }
  }
  for (size_t c = 0; c < columns.size(); ++c) {
    if (table->not_null[c] && !CannotBeNull(*table, c, *row, false, error)) return false;
  }
  std::string key = table->KeyOf(*row);
  if (!CheckKeyFree(ctx, *table, key, nullptr, error)) return false;
  if (!CheckInsertedRow(ctx, table, *row, error)) return false;
  if (!FillReturning(ctx, *table, s.table, s.returning, {row.get()}, result, error)) {
    return false;
  }
  auto record = std::make_shared<RowRecord>();
  record->table = table;
  ValueType t = RowValueType(*table);
  MaterializeLobs(ctx, t, row->value, row->ind, record);
  record->pending = std::move(row);
  record->has_pending = true;
  record->pending_key = std::move(key);
  // All or nothing: room is made first, so that only the indexes can fail for want of
  // memory once the row is in, and they take it out again.
  RoomForOne(&ctx.session->txn->rows);
  RoomForOne(&table->rows);
  RoomForOne(&result->returned);
  try {
    table->IndexRecord(record.get());
  } catch (...) {
    table->UnindexRecord(record.get());
    throw;
  }
  LockRecord(ctx, record);
  table->rows.push_back(record);
  if (!s.returning.empty()) result->returned.push_back(record->pending);
  result->row_count = 1;
  return true;
}

bool ExecuteUpdate(const ExecContext& ctx, const UpdateStatement& s, ExecResult* result,
                   SqlError* error) {
  Table* table = nullptr;
  if (!ResolveTable(ctx, s.table, &table, error)) return false;
  if (table->dual) return SetError(error, 1031, "insufficient privileges");
  if (!ProjectReturning(ctx, *table, s.table, s.returning, result, error)) return false;
  const std::vector<Attribute>& columns = table->columns();
  std::vector<size_t> targets;
  std::vector<ColumnPlace> places(s.sets.size());  // of SET alias.column.attr = ...
  std::set<size_t> seen;
  std::set<std::vector<std::string>> seen_paths;
  std::vector<Value> values;
  for (size_t i = 0; i < s.sets.size(); ++i) {
    const Expr& target = s.sets[i].first;
    size_t pos = 0;
    if (!ResolveColumn(*table, s.table, target, &pos, error)) return false;
    if (!target.path.empty()) {
      if (!ResolvePlace(*table, s.table, target, &places[i], error)) return false;
      std::vector<std::string> key = target.path;
      key.insert(key.begin(), columns[pos].name);
      // decision TC2: an attribute is set once, and not with its whole column.
      if (seen.count(pos) != 0 || !seen_paths.insert(key).second) {
        return SetError(error, 957, "duplicate column name");
      }
    } else if (!seen.insert(pos).second || HasPathOf(seen_paths, columns[pos].name)) {
      return SetError(error, 957, "duplicate column name");
    }
    targets.push_back(pos);
  }
  // SET column = DEFAULT takes the column's default.
  std::vector<Expr> set_values;
  for (size_t i = 0; i < s.sets.size(); ++i) {
    const Expr& e = s.sets[i].second;
    if (e.kind == Expr::Kind::kDefault && !s.sets[i].first.path.empty()) {
      return SetError(error, 936, "missing expression");  // decision TC2
    }
    set_values.push_back(e.kind == Expr::Kind::kDefault ? DefaultOf(*table, targets[i]) : e);
  }
  for (const Expr& e : set_values) {
    if (e.kind == Expr::Kind::kValue && e.path.empty()) {
      return SetError(error, 936, "missing expression");
    }
    if (HasAggregate(e)) return SetError(error, 934, "group function is not allowed here");
    if (!SequencesExist(ctx, e, error)) return false;
    if (!CheckWhereExpr(*table, s.table, e, error)) return false;
  }
  values.resize(s.sets.size());
  std::vector<Found> found;
  if (!FindRows(ctx, table, s.table, s.where, &found, error)) return false;
  if (!CheckLocks(ctx, found, error)) return false;
  std::vector<std::shared_ptr<RowData>> updated;
  std::vector<std::string> keys;
  std::set<std::string> new_keys;
  for (const Found& f : found) {
    std::shared_ptr<RowData> row = CopyRow(*f.row);
    if (!row) return SetError(error, 4030, "out of process memory");
    ctx.row_nextvals.clear();
    for (size_t i = 0; i < targets.size(); ++i) {
      if (!AdvanceSequences(ctx, set_values[i], error)) return false;
    }
    // Every SET value reads the row as it was before the statement.
    RowScope scope;
    scope.table = table;
    scope.ref = &s.table;
    scope.row = f.row.get();
    scope.rownum = f.rownum;
    for (size_t i = 0; i < targets.size(); ++i) {
      const Expr& e = set_values[i];
      if (e.kind != Expr::Kind::kConstructor && !EvalExpr(ctx, scope, e, &values[i], error)) {
        return false;
      }
    }
    for (size_t i = 0; i < targets.size(); ++i) {
      if (!s.sets[i].first.path.empty()) {
        if (!StoreAttribute(ctx, *table, targets[i], s.sets[i].first, places[i], set_values[i],
                            &values[i], row.get(), error)) {
          return false;
        }
        continue;
      }
      const Attribute& a = columns[targets[i]];
      if (!FitDateTime(ctx, a.type, &values[i], error)) return false;
      if (!StoreColumn(ctx, set_values[i], values[i], a.type, SlotAt(*row, a),
                       IndAt(*row, a.ind_offset), TargetOf(*table, targets[i]), error)) {
        return false;
      }
      if (table->not_null[targets[i]] && !CannotBeNull(*table, targets[i], *row, true, error)) {
        return false;
      }
    }
    std::string key = table->KeyOf(*row);
    if (!table->primary_key.empty()) {
      if (!new_keys.insert(key).second) {
        return SetError(
            error, 1,
            "unique constraint (" + table->schema + "." + table->primary_key_name + ") violated");
      }
      if (!CheckKeyFree(ctx, *table, key, f.record.get(), error)) return false;
    }
    for (size_t target : targets) {
      const Attribute& a = columns[target];
      MaterializeLobs(ctx, a.type, SlotAt(*row, a), IndAt(*row, a.ind_offset), f.record);
    }
    updated.push_back(std::move(row));
    keys.push_back(std::move(key));
  }
  if (!CheckUpdatedRows(ctx, table, found, updated, error)) return false;
  std::vector<const RowData*> returned_rows;
  for (const auto& row : updated) returned_rows.push_back(row.get());
  if (!FillReturning(ctx, *table, s.table, s.returning, returned_rows, result, error)) {
    return false;
  }
  for (size_t i = 0; i < found.size(); ++i) {
    const std::shared_ptr<RowRecord>& record = found[i].record;
    table->UnindexRecord(record.get());
    LockRecord(ctx, record);
    record->pending = std::move(updated[i]);
    record->pending_key = std::move(keys[i]);
    record->has_pending = true;
    table->IndexRecord(record.get());
    if (!s.returning.empty()) result->returned.push_back(record->pending);
  }
  result->row_count = static_cast<ub4>(found.size());
  return true;
}

bool ExecuteDelete(const ExecContext& ctx, const DeleteStatement& s, ExecResult* result,
                   SqlError* error) {
  Table* table = nullptr;
  if (!ResolveTable(ctx, s.table, &table, error)) return false;
  if (table->dual) return SetError(error, 1031, "insufficient privileges");
  if (!ProjectReturning(ctx, *table, s.table, s.returning, result, error)) return false;
  std::vector<Found> found;
  if (!FindRows(ctx, table, s.table, s.where, &found, error)) return false;
  if (!CheckLocks(ctx, found, error)) return false;
  StatementChanges cascade;
  if (!PlanDelete(ctx, table, found, &cascade, error)) return false;
  std::vector<const RowData*> returned_rows;
  for (const Found& f : found) returned_rows.push_back(f.row.get());
  if (!FillReturning(ctx, *table, s.table, s.returning, returned_rows, result, error)) {
    return false;
  }
  ApplyCascade(ctx, cascade);
  for (const Found& f : found) {
    if (!s.returning.empty()) result->returned.push_back(f.row);
    table->UnindexRecord(f.record.get());
    LockRecord(ctx, f.record);
    f.record->pending.reset();
    f.record->pending_key.clear();
    f.record->has_pending = true;
    table->IndexRecord(f.record.get());
  }
  result->row_count = static_cast<ub4>(found.size());
  return true;
}

}  // namespace ocimem
