// Queries: the select list, the rows found, and the locks of FOR UPDATE.
#include "statements/convert.h"
#include "sql/sql_exec.h"
#include "sql/sql_rows.h"

namespace ocimem {
namespace {

// A literal's value as the one column of a row of its own.
bool LiteralProjection(const Value& v, Projection* out, SqlError* error) {
  auto type = std::make_shared<OCIType>();
  Attribute a;
  a.name = "LITERAL";
  if (v.kind == Value::Kind::kNumber) {
    a.type.kind = ValueKind::kNumber;
    a.type.typecode = OCI_TYPECODE_NUMBER;
    a.type.scale = -127;
  } else if (v.kind == Value::Kind::kText || v.kind == Value::Kind::kNull) {
    a.type.kind = ValueKind::kString;
    a.type.typecode = OCI_TYPECODE_VARCHAR2;
    a.type.charset_form = SQLCS_IMPLICIT;
  } else if (v.kind == Value::Kind::kDate) {
    a.type.kind = ValueKind::kDate;
    a.type.typecode = OCI_TYPECODE_DATE;
  } else if (v.kind == Value::Kind::kRaw) {
    a.type.kind = ValueKind::kRaw;
    a.type.typecode = OCI_TYPECODE_RAW;
  } else {
    return SetError(error, 932, "inconsistent datatypes: expected - got " + ValueKindName(v));
  }
  type->attributes.push_back(a);
  type->Layout();
  out->literal = true;
  out->literal_row = NewRow(type);
  if (!out->literal_row) return SetError(error, 4030, "out of process memory");
  const Attribute& la = type->attributes[0];
  RowData& row = *out->literal_row;
  if (!StoreValue(v, la.type, SlotAt(row, la), IndAt(row, la.ind_offset), Target(), error)) {
    return false;
  }
  out->type = la.type;
  out->offset = la.offset;
  out->ind_offset = la.ind_offset;
  return true;
}

// The values of the NEXTVAL and CURRVAL items (`items`, at `positions` of the cursor's),
// row by row: each row advances a sequence once.
bool FillSequenceItems(const ExecContext& ctx, const std::vector<const Expr*>& items,
                       const std::vector<size_t>& positions, Cursor* cursor, SqlError* error) {
  for (size_t r = 0; r < cursor->rows.size(); ++r) {
    ctx.row_nextvals.clear();
    for (const Expr* e : items) {
      if (!AdvanceSequences(ctx, *e, error)) return false;
    }
    for (size_t i = 0; i < items.size(); ++i) {
      Value v;
      Projection literal;
      if (!Evaluate(ctx, *items[i], &v, error) || !LiteralProjection(v, &literal, error)) {
        return false;
      }
      cursor->items[positions[i]].per_row.push_back(std::move(literal.literal_row));
    }
  }
  ctx.row_nextvals.clear();
  return true;
}

}  // namespace

bool ProjectItem(const ExecContext& ctx, const Table& table, const TableRef& ref, const Expr& e,
                 Projection* out, SqlError* error) {
  const std::vector<Attribute>& columns = table.columns();
  if (e.kind == Expr::Kind::kColumn) {
    size_t pos = 0;
    if (!ResolveColumn(table, ref, e, &pos, error)) return false;
    out->type = columns[pos].type;
    out->offset = columns[pos].offset;
    out->ind_offset = columns[pos].ind_offset;
  } else if (e.kind == Expr::Kind::kValue) {
    if (ref.alias.empty() || e.qualifier != ref.alias || !table.object_table) {
      return SetError(error, 904, "\"" + e.qualifier + "\": invalid identifier");
    }
    out->type = RowValueType(table);
  } else if (e.kind == Expr::Kind::kSequence) {
    // Its values come row by row once the rows are found (FillSequenceItems).
    const std::string& schema = e.type.schema.empty() ? ctx.schema : e.type.schema;
    if (ctx.db->catalog.FindSequence(schema, e.type.name) == nullptr) {
      return SetError(error, 2289, "sequence does not exist");
    }
    out->type.kind = ValueKind::kNumber;
    out->type.typecode = OCI_TYPECODE_NUMBER;
    out->type.scale = -127;
  } else {
    Value v;
    if (!Evaluate(ctx, e, &v, error)) return false;
    return LiteralProjection(v, out, error);
  }
  return true;
}

bool ExecuteSelect(const ExecContext& ctx, const SelectStatement& s, ExecResult* result,
                   SqlError* error) {
  Table* table = nullptr;
  if (!ResolveTable(ctx, s.table, &table, error)) return false;
  auto cursor = std::make_unique<Cursor>();
  const std::vector<Attribute>& columns = table->columns();
  std::vector<const Expr*> sequence_items;
  std::vector<size_t> sequence_positions;
  for (const SelectItem& item : s.items) {
    if (item.star) {
      if (!item.expr.qualifier.empty()) {
        const std::string& q = item.expr.qualifier;
        bool ok = s.table.alias.empty() ? q == s.table.name.name : q == s.table.alias;
        if (!ok) return SetError(error, 904, "\"" + q + "\": invalid identifier");
      }
      for (const Attribute& a : columns) {
        Projection p;
        p.type = a.type;
        p.offset = a.offset;
        p.ind_offset = a.ind_offset;
        cursor->items.push_back(std::move(p));
      }
      continue;
    }
    Projection p;
    if (!ProjectItem(ctx, *table, s.table, item.expr, &p, error)) return false;
    if (item.expr.kind == Expr::Kind::kSequence) {
      sequence_items.push_back(&item.expr);
      sequence_positions.push_back(cursor->items.size());
    }
    cursor->items.push_back(std::move(p));
  }
  std::vector<PreparedCondition> conds;
  if (!PrepareWhere(ctx, *table, s.table, s.where, &conds, error)) return false;
  std::vector<Found> found = FindRows(ctx, table, conds);
  if (s.for_update) {
    if (table->dual) return SetError(error, 1031, "insufficient privileges");
    if (!CheckLocks(ctx, found, error)) return false;
    EnsureTxn(ctx);
    for (const Found& f : found) LockRecord(ctx, f.record);
    cursor->for_update = true;
    cursor->txn = CurrentTxn(ctx);
  }
  cursor->rows.reserve(found.size());
  for (Found& f : found) cursor->rows.push_back(std::move(f.row));
  if (!FillSequenceItems(ctx, sequence_items, sequence_positions, cursor.get(), error)) {
    return false;
  }
  result->cursor = std::move(cursor);
  return true;
}

}  // namespace ocimem
