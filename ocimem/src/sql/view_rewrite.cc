// Statements on a view, run as the same statements on its base table: the view's columns
// become what they read there, and the view's conditions join the statement's.  A column
// that reads no base column (a literal, VALUE()) cannot be inserted or updated
// (ORA-01733); everything else a view of one table shows can be, as in Oracle.
#include "database/catalog.h"
#include "sql/sql_rows.h"
#include "database/view.h"

namespace ocimem {
namespace {

bool VirtualColumn(SqlError* error) {
  return SetError(error, 1733, "virtual column not allowed here");
}

// The base column an INSERT or UPDATE names through the view.
bool MapTarget(const Source& src, const TableRef& ref, const Expr& e, Expr* out,
               SqlError* error) {
  ViewColumn c;
  if (!MapColumn(src, ref, e, &c, error)) return false;
  if (!c.base_column) return VirtualColumn(error);
  *out = std::move(c.source);
  return true;
}

bool MapReturning(const Source& src, const TableRef& ref,
                  const std::vector<ReturningClause>& returning,
                  std::vector<ReturningClause>* out, SqlError* error) {
  for (const ReturningClause& r : returning) {
    ReturningClause mapped;
    mapped.into = r.into;
    for (const Expr& e : r.items) {
      Expr item;
      if (!MapItem(src, ref, e, &item, error)) return false;
      mapped.items.push_back(std::move(item));
    }
    out->push_back(std::move(mapped));
  }
  return true;
}

bool RewriteSelect(const Source& src, const SelectStatement& s, Statement* out,
                   SqlError* error) {
  // decision TC7: a view's rows are not joined to a collection.
  if (s.has_joined) return SetError(error, 933, "SQL command not properly ended");
  SelectStatement b;
  b.table = src.base;
  b.for_update = s.for_update;
  for (const SelectItem& item : s.items) {
    if (!item.star) {
      SelectItem mapped;
      mapped.alias = item.alias;
      if (!MapItem(src, s.table, item.expr, &mapped.expr, error)) return false;
      b.items.push_back(std::move(mapped));
      continue;
    }
    const std::string& q = item.expr.qualifier;
    if (!q.empty() && q != (s.table.alias.empty() ? s.table.name.name : s.table.alias)) {
      return SetError(error, 904, "\"" + q + "\": invalid identifier");
    }
    for (const ViewColumn& c : *src.view->columns) {
      SelectItem column;
      column.expr = c.source;
      b.items.push_back(std::move(column));
    }
  }
  if (!MapWhere(src, s.table, s.where, &b.where, error)) return false;
  b.distinct = s.distinct;
  for (const Expr& g : s.group_by) {
    Expr mapped;
    if (!MapItem(src, s.table, g, &mapped, error)) return false;
    b.group_by.push_back(std::move(mapped));
  }
  for (const Condition& c : s.having) {
    Condition mapped;
    if (!MapItem(src, s.table, c.expr, &mapped.expr, error)) return false;
    b.having.push_back(std::move(mapped));
  }
  for (const OrderItem& o : s.order_by) {
    OrderItem mapped = o;
    // A select-list alias stays as written; ExecuteSelect finds it among the items.
    bool alias = false;
    if (o.expr.kind == Expr::Kind::kColumn && o.expr.qualifier.empty()) {
      for (const SelectItem& item : s.items) alias = alias || item.alias == o.expr.text;
    }
    if (!alias && !MapItem(src, s.table, o.expr, &mapped.expr, error)) return false;
    b.order_by.push_back(std::move(mapped));
  }
  *out = std::move(b);
  return true;
}

bool RewriteInsert(const Source& src, const InsertStatement& s, Statement* out,
                   SqlError* error) {
  InsertStatement b;
  b.table = src.base;
  b.has_columns = true;
  b.values = s.values;
  if (!MapReturning(src, s.table, s.returning, &b.returning, error)) return false;
  if (s.has_columns) {
    for (const Expr& c : s.columns) {
      Expr target;
      if (!MapTarget(src, s.table, c, &target, error)) return false;
      b.columns.push_back(std::move(target));
    }
  } else {
    for (const ViewColumn& c : *src.view->columns) {
      if (!c.base_column) return VirtualColumn(error);
      b.columns.push_back(c.source);
    }
  }
  *out = std::move(b);
  return true;
}

bool RewriteUpdate(const Source& src, const UpdateStatement& s, Statement* out,
                   SqlError* error) {
  UpdateStatement b;
  b.table = src.base;
  if (!MapReturning(src, s.table, s.returning, &b.returning, error)) return false;
  for (const auto& [column, value] : s.sets) {
    Expr target;
    if (!MapTarget(src, s.table, column, &target, error)) return false;
    b.sets.emplace_back(std::move(target), value);
  }
  if (!MapWhere(src, s.table, s.where, &b.where, error)) return false;
  *out = std::move(b);
  return true;
}

bool RewriteDelete(const Source& src, const DeleteStatement& s, Statement* out,
                   SqlError* error) {
  DeleteStatement b;
  b.table = src.base;
  if (!MapReturning(src, s.table, s.returning, &b.returning, error)) return false;
  if (!MapWhere(src, s.table, s.where, &b.where, error)) return false;
  *out = std::move(b);
  return true;
}

const TableRef* TableOf(const Statement& s) {
  if (const auto* q = std::get_if<SelectStatement>(&s)) return &q->table;
  if (const auto* i = std::get_if<InsertStatement>(&s)) return &i->table;
  if (const auto* u = std::get_if<UpdateStatement>(&s)) return &u->table;
  if (const auto* d = std::get_if<DeleteStatement>(&s)) return &d->table;
  return nullptr;
}

}  // namespace

bool RewriteOnView(const ExecContext& ctx, const Statement& s, Statement* out, bool* on_view,
                   SqlError* error) {
  *on_view = false;
  const TableRef* ref = TableOf(s);
  if (ref == nullptr) return true;
  const std::string& schema = ref->name.schema.empty() ? ctx.schema : ref->name.schema;
  const CatalogEntry* entry = ctx.db->catalog.Find(schema, ref->name.name);
  if (entry == nullptr || entry->kind != ObjectKind::kView) return true;
  *on_view = true;
  Source src;
  if (!OpenSource(ctx, *ref, ctx.schema, &src, error)) return false;
  if (const auto* q = std::get_if<SelectStatement>(&s)) return RewriteSelect(src, *q, out, error);
  if (const auto* i = std::get_if<InsertStatement>(&s)) return RewriteInsert(src, *i, out, error);
  if (const auto* u = std::get_if<UpdateStatement>(&s)) return RewriteUpdate(src, *u, out, error);
  return RewriteDelete(src, std::get<DeleteStatement>(s), out, error);
}

}  // namespace ocimem
