// Finding and locking the rows a statement works on.
#include "sql/sql_rows.h"

#include <cstring>

#include "session/session_nls.h"
#include "objects/value_slot.h"
#include "values/date_format.h"

namespace ocimem {
namespace {

bool InvalidIdentifier(SqlError* error, const Expr& e) {
  std::string shown =
      e.qualifier.empty() ? "\"" + e.text + "\"" : "\"" + e.qualifier + "\".\"" + e.text + "\"";
  return SetError(error, 904, shown + ": invalid identifier");
}

}  // namespace

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

namespace {

bool Matches(const Table& table, const RowData& row, const std::vector<PreparedCondition>& conds) {
  for (const PreparedCondition& c : conds) {
    if (c.never) return false;
    if (c.column == static_cast<size_t>(-1)) continue;
    const Attribute& a = table.columns()[c.column];
    if (*IndAt(row, a.ind_offset) == OCI_IND_NULL) return false;
    if (KeyText(a.type, SlotAt(row, a)) != c.key) return false;
  }
  return true;
}

}  // namespace

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
  if (!e.qualifier.empty()) {
    bool ok = ref.alias.empty() ? e.qualifier == ref.name.name : e.qualifier == ref.alias;
    if (!ok) return InvalidIdentifier(error, e);
  }
  int pos = table.FindColumn(e.text);
  if (pos < 0) return InvalidIdentifier(error, e);
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

bool ProjectReturning(const ExecContext& ctx, const Table& table, const TableRef& ref,
                      const std::vector<ReturningClause>& returning, ExecResult* result,
                      SqlError* error) {
  for (const ReturningClause& r : returning) {
    for (const Expr& e : r.items) {
      Projection p;
      if (!ProjectItem(ctx, table, ref, e, &p, error)) return false;
      result->returning.push_back(std::move(p));
    }
  }
  return true;
}

bool PrepareWhere(const ExecContext& ctx, const Table& table, const TableRef& ref,
                  const std::vector<Condition>& where, std::vector<PreparedCondition>* out,
                  SqlError* error) {
  for (const Condition& c : where) {
    PreparedCondition p;
    if (c.column.kind != Expr::Kind::kColumn) {
      // literal = literal: only equal literals let rows through
      Value a;
      Value b;
      if (!Evaluate(ctx, c.column, &a, error) || !Evaluate(ctx, c.value, &b, error)) return false;
      p.never = a.kind == Value::Kind::kNull || b.kind == Value::Kind::kNull || a.kind != b.kind ||
                a.bytes != b.bytes || std::memcmp(&a.number, &b.number, sizeof a.number) != 0;
      p.column = static_cast<size_t>(-1);
      out->push_back(std::move(p));
      continue;
    }
    if (!ResolveColumn(table, ref, c.column, &p.column, error)) return false;
    if (c.value.kind == Expr::Kind::kColumn || c.value.kind == Expr::Kind::kValue) {
      return SetError(error, 920, "invalid relational operator");
    }
    Value v;
    if (!Evaluate(ctx, c.value, &v, error)) return false;
    const ValueType& t = table.columns()[p.column].type;
    if (t.kind != ValueKind::kNumber && t.kind != ValueKind::kString &&
        t.kind != ValueKind::kDate && t.kind != ValueKind::kRaw) {
      return SetError(error, 932, "inconsistent datatypes: expected - got " + TypeName(t));
    }
    if (v.kind == Value::Kind::kNull) {
      p.never = true;
    } else {
      // The compared value in the column's own type.
      alignas(16) unsigned char slot[sizeof(OCINumber)] = {0};
      OCIInd ind = OCI_IND_NULL;
      InitSlot(nullptr, t, slot, &ind, true);
      ValueType loose = t;
      loose.length = 0;  // a longer value simply matches nothing
      loose.precision = 0;
      bool ok = StoreValue(v, loose, slot, &ind, Target(), error);
      if (ok) p.key = KeyText(t, slot);
      // A CHAR column compares blank-padded.
      if (ok && t.typecode == OCI_TYPECODE_CHAR && p.key.size() < t.length) {
        p.key.append(t.length - p.key.size(), ' ');
      }
      FreeSlot(t, slot);
      if (!ok) return false;
    }
    out->push_back(std::move(p));
  }
  return true;
}

// Rows the session sees that satisfy the conditions, through the key index when the
// conditions fix the whole primary key.
std::vector<Found> FindRows(const ExecContext& ctx, Table* table,
                            const std::vector<PreparedCondition>& conds) {
  std::vector<Found> found;
  for (const PreparedCondition& c : conds) {
    if (c.never) return found;
  }
  std::uint64_t txn = CurrentTxn(ctx);
  auto consider = [&](const std::shared_ptr<RowRecord>& record) {
    if (record->dead) return;
    const std::shared_ptr<RowData>& row = VisibleVersion(*record, txn);
    if (row && Matches(*table, *row, conds)) found.push_back({record, row});
  };
  if (!table->primary_key.empty()) {
    std::string key;
    bool complete = true;
    for (size_t column : table->primary_key) {
      const PreparedCondition* hit = nullptr;
      for (const PreparedCondition& c : conds) {
        if (c.column == column) hit = &c;
      }
      if (hit == nullptr) {
        complete = false;
        break;
      }
      key += std::to_string(hit->key.size()) + ':' + hit->key;
    }
    if (complete) {
      std::vector<std::shared_ptr<RowRecord>> candidates;
      auto range = table->key_index.equal_range(key);
      for (auto it = range.first; it != range.second; ++it) {
        candidates.push_back(it->second->shared_from_this());
      }
      for (const auto& record : candidates) consider(record);
      return found;
    }
  }
  for (const auto& record : table->rows) consider(record);
  return found;
}

bool CheckLocks(const ExecContext& ctx, const std::vector<Found>& rows, SqlError* error) {
  std::uint64_t mine = CurrentTxn(ctx);
  for (const Found& f : rows) {
    if (f.record->lock_txn != 0 && f.record->lock_txn != mine) return Busy(error);
  }
  return true;
}
}  // namespace ocimem
