// Queries: the select list, the rows found, and the locks of FOR UPDATE.
#include "statements/convert.h"
#include "sql/sql_exec.h"
#include "sql/query_shape.h"
#include "sql/query_collection.h"
#include "sql/sql_rows.h"

#include <cstdlib>

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

namespace {

bool IsPlain(const Expr& e) {
  return (e.kind == Expr::Kind::kColumn || e.kind == Expr::Kind::kValue) && e.path.empty();
}

// The select-list position an ORDER BY item names: a number, or an alias.
bool OrderPosition(const SelectStatement& s, const std::vector<const SelectItem*>& items,
                   const OrderItem& o, size_t* out, bool* is_position, SqlError* error) {
  *is_position = false;
  if (o.expr.kind == Expr::Kind::kNumber) {
    const std::string& t = o.expr.text;
    long long n = t.find_first_not_of("0123456789") == std::string::npos && t.size() < 10
                      ? std::atoll(t.c_str())
                      : 0;
    if (n < 1 || static_cast<size_t>(n) > items.size()) {
      return SetError(error, 1785, "ORDER BY item must be the number of a SELECT-list expression");
    }
    *out = static_cast<size_t>(n - 1);
    *is_position = true;
    return true;
  }
  if (o.expr.kind == Expr::Kind::kColumn && o.expr.qualifier.empty()) {
    for (size_t i = 0; i < items.size(); ++i) {
      if (items[i]->alias == o.expr.text) {
        *out = i;
        *is_position = true;
        return true;
      }
    }
  }
  for (size_t i = 0; i < items.size(); ++i) {
    if (items[i] != nullptr && SameExpr(items[i]->expr, o.expr) && s.distinct) {
      *out = i;
      *is_position = true;
      return true;
    }
  }
  if (s.distinct) return SetError(error, 1791, "not a SELECTed expression");
  return true;
}

}  // namespace

bool ExecuteSelect(const ExecContext& ctx, const SelectStatement& s, ExecResult* result,
                   SqlError* error) {
  Table* table = nullptr;
  // FROM TABLE(...): the query reads rows made of the collection's elements.
  CollectionRows from_collection;
  const TableRef* from = &s.table;
  if (ReadsCollection(s)) {
    if (!CollectionSource(ctx, s, &from_collection, error)) return false;
    table = from_collection.table.get();
    from = &from_collection.ref;
  } else if (!ResolveTable(ctx, s.table, &table, error)) {
    return false;
  }
  const TableRef& ref = *from;
  auto cursor = std::make_unique<Cursor>();
  const std::vector<Attribute>& columns = table->columns();
  // The select list with `*` spelled out: one item per column of the cursor.
  std::vector<SelectItem> spelled;
  for (const SelectItem& item : s.items) {
    if (!item.star) {
      spelled.push_back(item);
      continue;
    }
    const std::string& q = item.expr.qualifier;
    if (!q.empty() && ref.owners.empty()) {
      bool ok = ref.alias.empty() ? q == ref.name.name : q == ref.alias;
      if (!ok) return SetError(error, 904, "\"" + q + "\": invalid identifier");
    }
    size_t before = spelled.size();
    for (size_t i = 0; i < columns.size(); ++i) {
      if (!ref.owners.empty() && !q.empty() && ref.owners[i] != q) continue;
      SelectItem column;
      column.expr.kind = Expr::Kind::kColumn;
      column.expr.text = columns[i].name;
      if (!ref.owners.empty()) column.expr.qualifier = ref.owners[i];
      spelled.push_back(std::move(column));
    }
    if (spelled.size() == before && !q.empty()) {
      return SetError(error, 904, "\"" + q + "\": invalid identifier");
    }
  }
  std::vector<const Expr*> aggregates;
  for (const SelectItem& item : spelled) CollectAggregates(item.expr, &aggregates);
  for (const Condition& c : s.having) CollectAggregates(c.expr, &aggregates);
  for (const OrderItem& o : s.order_by) CollectAggregates(o.expr, &aggregates);
  for (const Expr& g : s.group_by) {
    if (HasAggregate(g)) return SetError(error, 934, "group function is not allowed here");
    if (!CheckWhereExpr(*table, ref, g, error)) return false;
  }
  const bool grouped = !aggregates.empty() || !s.group_by.empty() || !s.having.empty();
  // Only a plain query keeps the table's rows under its plain columns.
  const bool reshaped = grouped || s.distinct || !s.order_by.empty();
  std::vector<const SelectItem*> item_ptrs;
  std::vector<bool> computed;
  std::vector<const Expr*> sequence_items;
  std::vector<size_t> sequence_positions;
  auto result_type = std::make_shared<OCIType>();
  for (const SelectItem& item : spelled) {
    item_ptrs.push_back(&item);
    const Expr& e = item.expr;
    if (grouped && !CheckGrouped(e, s.group_by, error)) return false;
    if (e.kind == Expr::Kind::kSequence) {
      if (reshaped) return SetError(error, 2287, "sequence number not allowed here");
      Projection p;
      if (!ProjectItem(ctx, *table, ref, e, &p, error)) return false;
      sequence_items.push_back(&e);
      sequence_positions.push_back(cursor->items.size());
      cursor->items.push_back(std::move(p));
      computed.push_back(false);
      continue;
    }
    if (HasSequence(e)) return SetError(error, 2287, "sequence number not allowed here");
    if (!grouped && IsPlain(e)) {
      Projection p;
      if (!ProjectItem(ctx, *table, ref, e, &p, error)) return false;
      cursor->items.push_back(std::move(p));
      computed.push_back(false);
      continue;
    }
    if (e.kind == Expr::Kind::kValue && e.path.empty()) {
      return SetError(error, 979, "not a GROUP BY expression");
    }
    Attribute a;
    a.name = "COLUMN" + std::to_string(result_type->attributes.size());
    if (!ExprType(ctx, *table, ref, e, &a.type, error)) return false;
    if (a.type.kind == ValueKind::kLob || a.type.kind == ValueKind::kObject ||
        a.type.kind == ValueKind::kCollection) {
      if (grouped && e.kind != Expr::Kind::kAggregate) {
        // A column of these types is read in place only by a plain query.
        return SetError(error, 932, "inconsistent datatypes: expected - got " + TypeName(a.type));
      }
    }
    result_type->attributes.push_back(a);
    cursor->items.emplace_back();
    computed.push_back(true);
  }
  for (const Condition& c : s.having) {
    if (!CheckGrouped(c.expr, s.group_by, error)) return false;
  }
  // Values that DISTINCT, GROUP BY and ORDER BY compare must be comparable.
  auto comparable = [&](const Expr& e) {
    ValueType t;
    SqlError ignored;  // other errors show when the values are worked out
    if (!ExprType(ctx, *table, ref, e, &t, &ignored)) return true;
    if (t.kind == ValueKind::kLob || t.kind == ValueKind::kObject ||
        t.kind == ValueKind::kCollection || t.kind == ValueKind::kRef) {
      return SetError(error, 932, "inconsistent datatypes: expected - got " + TypeName(t));
    }
    return true;
  };
  for (const SelectItem& item : spelled) {
    if (s.distinct && item.expr.kind != Expr::Kind::kSequence && !comparable(item.expr)) {
      return false;
    }
  }
  for (const Expr& g : s.group_by) {
    if (!comparable(g)) return false;
  }
  for (const OrderItem& o : s.order_by) {
    if (!comparable(o.expr)) return false;
  }
  result_type->Layout();
  std::vector<Found> found;
  if (!FindRows(ctx, table, ref, s.where, &found, error)) return false;
  if (s.for_update) {
    if (table->dual) return SetError(error, 1031, "insufficient privileges");
    // decision TC5: the rows of a collection are not locked.
    if (!ref.owners.empty()) {
      return SetError(error, 1786, "FOR UPDATE of this query expression is not allowed");
    }
    if (reshaped)
      return SetError(error, 1786, "FOR UPDATE of this query expression is not allowed");
    if (!CheckLocks(ctx, found, error)) return false;
    EnsureTxn(ctx);
    for (const Found& f : found) LockRecord(ctx, f.record);
    cursor->for_update = true;
    cursor->txn = CurrentTxn(ctx);
  }
  std::vector<ResultRow> rows;
  if (grouped) {
    if (!GroupRows(ctx, table, ref, s, aggregates, found, &rows, error)) return false;
  } else {
    rows.reserve(found.size());
    for (Found& f : found) {
      ResultRow r;
      r.base = std::move(f.row);
      r.rownum = f.rownum;
      rows.push_back(std::move(r));
    }
  }
  // The values of the select list and of ORDER BY, row by row.
  std::vector<size_t> order_positions(s.order_by.size());
  std::vector<bool> order_is_position(s.order_by.size());
  for (size_t i = 0; i < s.order_by.size(); ++i) {
    bool is_position = false;
    if (!OrderPosition(s, item_ptrs, s.order_by[i], &order_positions[i], &is_position, error)) {
      return false;
    }
    order_is_position[i] = is_position;
    if (is_position && !comparable(spelled[order_positions[i]].expr)) return false;
    if (!is_position && grouped && !CheckGrouped(s.order_by[i].expr, s.group_by, error)) {
      return false;
    }
    if (!is_position && !grouped && !CheckWhereExpr(*table, ref, s.order_by[i].expr, error)) {
      return false;
    }
  }
  for (ResultRow& r : rows) {
    RowScope scope;
    scope.table = table;
    scope.ref = &ref;
    scope.row = r.base.get();
    scope.rownum = r.rownum;
    if (grouped) scope.aggregates = &r.aggregates;
    bool need_items = s.distinct || !s.order_by.empty() || !result_type->attributes.empty();
    if (need_items) {
      r.items.resize(spelled.size());
      for (size_t i = 0; i < spelled.size(); ++i) {
        if (spelled[i].expr.kind == Expr::Kind::kSequence) continue;
        if (spelled[i].expr.kind == Expr::Kind::kValue && spelled[i].expr.path.empty()) continue;
        if (!computed[i] && !s.distinct && s.order_by.empty()) continue;
        if (!EvalExpr(ctx, scope, spelled[i].expr, &r.items[i], error)) return false;
      }
    }
    r.keys.resize(s.order_by.size());
    for (size_t i = 0; i < s.order_by.size(); ++i) {
      if (order_is_position[i]) {
        r.keys[i] = r.items[order_positions[i]];
      } else if (!EvalExpr(ctx, scope, s.order_by[i].expr, &r.keys[i], error)) {
        return false;
      }
    }
  }
  if (s.distinct) RemoveDuplicates(&rows);
  if (!s.order_by.empty()) SortRows(s.order_by, &rows);
  // Into the cursor: computed values in a row of the result's own type.
  cursor->rows.reserve(rows.size());
  size_t slot = 0;
  std::vector<size_t> slot_of(spelled.size(), 0);
  for (size_t i = 0; i < spelled.size(); ++i) {
    if (!computed[i]) continue;
    const Attribute& a = result_type->attributes[slot];
    cursor->items[i].type = a.type;
    cursor->items[i].offset = a.offset;
    cursor->items[i].ind_offset = a.ind_offset;
    slot_of[i] = slot++;
  }
  for (ResultRow& r : rows) {
    std::shared_ptr<RowData> values;
    if (!result_type->attributes.empty()) {
      values = NewRow(result_type);
      if (!values) return SetError(error, 4030, "out of process memory");
      for (size_t i = 0; i < spelled.size(); ++i) {
        if (!computed[i]) continue;
        const Attribute& a = result_type->attributes[slot_of[i]];
        ValueType loose = a.type;
        loose.length = 0;
        loose.precision = 0;
        loose.scale = a.type.kind == ValueKind::kNumber ? -127 : a.type.scale;
        if (!StoreValue(r.items[i], loose, SlotAt(*values, a), IndAt(*values, a.ind_offset),
                        Target(), error)) {
          return false;
        }
        cursor->items[i].per_row.push_back(values);
      }
    }
    cursor->rows.push_back(r.base ? r.base : values);
  }
  if (!FillSequenceItems(ctx, sequence_items, sequence_positions, cursor.get(), error)) {
    return false;
  }
  result->cursor = std::move(cursor);
  return true;
}

}  // namespace ocimem
