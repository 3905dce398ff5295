// Finding and locking the rows a statement works on.
#include "sql/sql_rows.h"

#include <cstring>
#include <map>

#include "session/session_nls.h"
#include "objects/value_slot.h"
#include "values/date_format.h"
#include "sql/sql_expr.h"

namespace ocimem {
namespace {

}  // namespace

bool UnknownColumn(SqlError* error, const Expr& e) {
  std::string shown =
      e.qualifier.empty() ? "\"" + e.text + "\"" : "\"" + e.qualifier + "\".\"" + e.text + "\"";
  if (e.kind == Expr::Kind::kValue) shown.clear();
  for (const std::string& a : e.path) shown += (shown.empty() ? "\"" : ".\"") + a + "\"";
  return SetError(error, 904, shown + ": invalid identifier");
}

BindHandle* BindForOccurrence(const StmtHandle& stmt, size_t occurrence) {
  BindHandle* by_name = nullptr;
  for (const auto& b : stmt.binds) {
    if (b->position == occurrence + 1) return b.get();
    if (b->position == 0 && occurrence < stmt.placeholders.size() &&
        b->name == stmt.placeholders[occurrence]) {
      by_name = b.get();
    }
  }
  return by_name;
}

bool Busy(SqlError* error) {
  return SetError(error, 54, "resource busy and acquire with NOWAIT specified or timeout expired");
}

ValueType RowValueType(const Table& table) {
  ValueType t;
  t.kind = ValueKind::kObject;
  t.typecode = OCI_TYPECODE_OBJECT;
  t.named = table.row_type;
  return t;
}

std::uint64_t CurrentTxn(const ExecContext& ctx) {
  return ctx.session->txn ? ctx.session->txn->id : 0;
}

std::uint64_t EnsureTxn(const ExecContext& ctx) {
  Transaction* txn = ctx.session->txn.get();
  if (txn->id == 0) txn->id = ctx.db->next_txn++;
  return txn->id;
}

void LockRecord(const ExecContext& ctx, const std::shared_ptr<RowRecord>& record) {
  if (record->lock_txn == CurrentTxn(ctx) && record->lock_txn != 0) return;
  record->lock_txn = EnsureTxn(ctx);
  ctx.session->txn->rows.push_back(record);
}

bool ResolveTable(const ExecContext& ctx, const TableRef& ref, Table** out, SqlError* error) {
  const std::string schema = ref.name.schema.empty() ? ctx.schema : ref.name.schema;
  std::shared_ptr<Table> table = ctx.db->catalog.FindTable(schema, ref.name.name);
  // DUAL is everybody's.
  if (!table && ref.name.schema.empty() && ref.name.name == "DUAL") {
    table = ctx.db->catalog.FindTable("SYS", "DUAL");
  }
  if (!table) return SetError(error, 942, "table or view does not exist");
  *out = table.get();
  return true;
}

// Column position of a column reference, checking its qualifier (the alias, or the table
// name when the statement gave no alias).
bool ResolveColumn(const Table& table, const TableRef& ref, const Expr& e, size_t* out,
                   SqlError* error) {
  if (!e.path.empty()) {
    ColumnPlace place;
    if (!ResolvePlace(table, ref, e, &place, error)) return false;
    *out = place.column;
    return true;
  }
  if (!ref.owners.empty()) {
    // A row of a table and a collection: the qualifier picks the side; a name both have
    // needs one.
    int found = -1;
    for (size_t i = 0; i < table.columns().size(); ++i) {
      if (table.columns()[i].name != e.text) continue;
      if (!e.qualifier.empty() && e.qualifier != ref.owners[i]) continue;
      if (found >= 0) return SetError(error, 918, "column ambiguously defined");
      found = static_cast<int>(i);
    }
    if (found < 0) return UnknownColumn(error, e);
    *out = static_cast<size_t>(found);
    return true;
  }
  if (!e.qualifier.empty()) {
    bool ok = ref.alias.empty() ? e.qualifier == ref.name.name : e.qualifier == ref.alias;
    if (!ok) return UnknownColumn(error, e);
  }
  int pos = table.FindColumn(e.text);
  if (pos < 0) return UnknownColumn(error, e);
  *out = static_cast<size_t>(pos);
  return true;
}

bool Evaluate(const ExecContext& ctx, const Expr& e, Value* out, SqlError* error) {
  if (e.kind == Expr::Kind::kConstructor) {
    // Constructors build values in place and only where a column or attribute takes them.
    return SetError(error, 932,
                    "inconsistent datatypes: expected - got " +
                        (e.type.schema.empty() ? ctx.schema : e.type.schema) + "." + e.type.name);
  }
  if (e.kind == Expr::Kind::kSequence) return SequenceValue(ctx, e, out, error);
  if (e.kind == Expr::Kind::kBind) {
    const BindHandle* b = BindForOccurrence(*ctx.stmt, e.bind);
    if (b == nullptr) return SetError(error, 1008, "not all variables bound");
    return ValueFromBind(*b, ctx.iteration, out, error);
  }
  if (e.kind == Expr::Kind::kSessionTimeZone || e.kind == Expr::Kind::kDbTimeZone) {
    *out = Value();
    out->kind = Value::Kind::kText;
    if (e.kind == Expr::Kind::kDbTimeZone) {
      out->bytes = DbTimeZoneText();
    } else if (int ora = SessionTimeZoneText(*ctx.session->nls, &out->bytes)) {
      return SetError(error, ora, values::DateErrorText(ora));
    }
    return true;
  }
  return ValueFromLiteral(e, out, error);
}

namespace {

// An operator or function among RETURNING items: computed for each row returned.
bool Computed(const Expr& e) {
  return !e.args.empty() || e.kind == Expr::Kind::kFunction || !e.path.empty();
}

}  // namespace

bool ProjectReturning(const ExecContext& ctx, const Table& table, const TableRef& ref,
                      const std::vector<ReturningClause>& returning, ExecResult* result,
                      SqlError* error) {
  for (const ReturningClause& r : returning) {
    for (const Expr& e : r.items) {
      Projection p;
      if (!Computed(e)) {
        if (!ProjectItem(ctx, table, ref, e, &p, error)) return false;
        result->returning.push_back(std::move(p));
        continue;
      }
      if (!CheckWhereExpr(table, ref, e, error)) return false;
      // A row of one column of the item's type; each returned row gets one (FillReturning).
      auto type = std::make_shared<OCIType>();
      Attribute a;
      a.name = "RETURNED";
      if (!ExprType(ctx, table, ref, e, &a.type, error)) return false;
      type->attributes.push_back(a);
      type->Layout();
      p.type = type->attributes[0].type;
      p.offset = type->attributes[0].offset;
      p.ind_offset = type->attributes[0].ind_offset;
      p.literal_row = NewRow(type);
      if (!p.literal_row) return SetError(error, 4030, "out of process memory");
      result->returning.push_back(std::move(p));
    }
  }
  return true;
}

bool FillReturning(const ExecContext& ctx, const Table& table, const TableRef& ref,
                   const std::vector<ReturningClause>& returning,
                   const std::vector<const RowData*>& rows, ExecResult* result,
                   SqlError* error) {
  size_t k = 0;
  for (const ReturningClause& r : returning) {
    for (const Expr& e : r.items) {
      Projection& p = result->returning[k++];
      if (!Computed(e)) continue;
      for (const RowData* row : rows) {
        RowScope scope;
        scope.table = &table;
        scope.ref = &ref;
        scope.row = row;
        Value v;
        if (!EvalExpr(ctx, scope, e, &v, error)) return false;
        std::shared_ptr<RowData> values = NewRow(p.literal_row->type);
        if (!values) return SetError(error, 4030, "out of process memory");
        const Attribute& a = p.literal_row->type->attributes[0];
        ValueType loose = a.type;
        loose.length = 0;
        loose.precision = 0;
        if (!FitDateTime(ctx, a.type, &v, error) ||
            !StoreValue(v, loose, SlotAt(*values, a), IndAt(*values, a.ind_offset), Target(),
                        error)) {
          return false;
        }
        p.per_row.push_back(std::move(values));
      }
    }
  }
  return true;
}

namespace {

// The conjuncts of an AND tree.
void Conjuncts(const Expr& e, std::vector<const Expr*>* out) {
  if (e.kind == Expr::Kind::kAnd) {
    Conjuncts(e.args[0], out);
    Conjuncts(e.args[1], out);
    return;
  }
  out->push_back(&e);
}

bool IsConstant(const Expr& e) {
  return e.kind == Expr::Kind::kNumber || e.kind == Expr::Kind::kString ||
         e.kind == Expr::Kind::kBind;
}

// The index text of `column = constant` when the key index can use it.
bool KeyOfEquality(const ExecContext& ctx, const Table& table, size_t column, const Expr& value,
                   std::string* key, bool* usable, SqlError* error) {
  *usable = false;
  Value v;
  if (!Evaluate(ctx, value, &v, error)) return false;
  const ValueType& t = table.columns()[column].type;
  bool fits = (t.kind == ValueKind::kNumber &&
               (v.kind == Value::Kind::kNumber || v.kind == Value::Kind::kText)) ||
              (t.kind == ValueKind::kString && v.kind == Value::Kind::kText) ||
              (t.kind == ValueKind::kDate &&
               (v.kind == Value::Kind::kDate || v.kind == Value::Kind::kText));
  if (!fits) return true;
  alignas(16) unsigned char slot[sizeof(OCINumber)] = {0};
  OCIInd ind = OCI_IND_NULL;
  InitSlot(nullptr, t, slot, &ind, true);
  ValueType loose = t;
  loose.length = 0;  // a longer value simply matches nothing
  loose.precision = 0;
  bool ok = StoreValue(v, loose, slot, &ind, Target(), error);
  if (ok) *key = KeyText(t, slot);
  // A CHAR column compares blank-padded.
  if (ok && t.typecode == OCI_TYPECODE_CHAR && key->size() < t.length) {
    key->append(t.length - key->size(), ' ');
  }
  FreeSlot(t, slot);
  *usable = ok;
  return ok;
}

}  // namespace

bool CheckWhereExpr(const Table& table, const TableRef& ref, const Expr& e, SqlError* error) {
  if (e.kind == Expr::Kind::kAggregate) {
    return SetError(error, 934, "group function is not allowed here");
  }
  if (e.kind == Expr::Kind::kColumn) {
    size_t pos = 0;
    return ResolveColumn(table, ref, e, &pos, error);
  }
  for (const Expr& a : e.args) {
    if (!CheckWhereExpr(table, ref, a, error)) return false;
  }
  return true;
}

bool CheckComparable(const ExecContext& ctx, const Table& table, const TableRef& ref,
                     const Expr& e, SqlError* error) {
  if (e.kind == Expr::Kind::kCompare || e.kind == Expr::Kind::kIn ||
      e.kind == Expr::Kind::kBetween || e.kind == Expr::Kind::kLike) {
    for (const Expr& a : e.args) {
      ValueType t;
      SqlError ignored;  // other errors show when the rows are read
      if (!ExprType(ctx, table, ref, a, &t, &ignored)) continue;
      if (t.kind == ValueKind::kLob || t.kind == ValueKind::kObject ||
          t.kind == ValueKind::kCollection || t.kind == ValueKind::kRef) {
        return SetError(error, 932, "inconsistent datatypes: expected - got " + TypeName(t));
      }
    }
    return true;
  }
  for (const Expr& a : e.args) {
    if (!CheckComparable(ctx, table, ref, a, error)) return false;
  }
  return true;
}

bool FindRows(const ExecContext& ctx, Table* table, const TableRef& ref,
              const std::vector<Condition>& where, std::vector<Found>* out, SqlError* error) {
  std::vector<const Expr*> conjuncts;
  for (const Condition& c : where) {
    if (!CheckWhereExpr(*table, ref, c.expr, error)) return false;
    if (!CheckComparable(ctx, *table, ref, c.expr, error)) return false;
    Conjuncts(c.expr, &conjuncts);
  }
  // Equalities of key columns with constants.
  std::map<size_t, std::string> fixed;
  for (const Expr* c : conjuncts) {
    if (c->kind != Expr::Kind::kCompare || c->text != "=") continue;
    const Expr* column = &c->args[0];
    const Expr* value = &c->args[1];
    if (column->kind != Expr::Kind::kColumn) std::swap(column, value);
    if (column->kind != Expr::Kind::kColumn || !IsConstant(*value)) continue;
    if (!column->path.empty()) continue;  // an attribute of an object column
    size_t pos = 0;
    if (!ResolveColumn(*table, ref, *column, &pos, error)) return false;
    std::string key;
    bool usable = false;
    if (!KeyOfEquality(ctx, *table, pos, *value, &key, &usable, error)) return false;
    if (usable) fixed[pos] = std::move(key);
  }
  std::vector<std::shared_ptr<RowRecord>> candidates;
  bool by_key = !table->primary_key.empty();
  std::string key;
  for (size_t column : table->primary_key) {
    auto hit = fixed.find(column);
    if (hit == fixed.end()) {
      by_key = false;
      break;
    }
    key += std::to_string(hit->second.size()) + ':' + hit->second;
  }
  if (by_key) {
    auto range = table->key_index.equal_range(key);
    for (auto it = range.first; it != range.second; ++it) {
      candidates.push_back(it->second->shared_from_this());
    }
  } else {
    candidates = table->rows;
  }
  std::uint64_t txn = CurrentTxn(ctx);
  ub4 rownum = 0;
  for (const auto& record : candidates) {
    if (record->dead) continue;
    const std::shared_ptr<RowData>& row = VisibleVersion(*record, txn);
    if (!row) continue;
    RowScope scope;
    scope.table = table;
    scope.ref = &ref;
    scope.row = row.get();
    scope.rownum = rownum + 1;
    bool pass = true;
    for (const Condition& c : where) {
      Truth t = Truth::kUnknown;
      if (!EvalCondition(ctx, scope, c.expr, &t, error)) return false;
      if (t != Truth::kTrue) {
        pass = false;
        break;
      }
    }
    if (!pass) continue;
    ++rownum;
    out->push_back({record, row, rownum});
  }
  return true;
}

bool CheckLocks(const ExecContext& ctx, const std::vector<Found>& rows, SqlError* error) {
  std::uint64_t mine = CurrentTxn(ctx);
  for (const Found& f : rows) {
    if (f.record->lock_txn != 0 && f.record->lock_txn != mine) return Busy(error);
  }
  return true;
}
}  // namespace ocimem
