// Opening the table or view a query reads, mapping names through views, and compiling a
// view's query into its columns.
#include "database/view.h"

#include <set>

#include "database/catalog.h"
#include "sql/sql_expr.h"
#include "sql/sql_rows.h"

namespace ocimem {
namespace {

// The type of an attribute path read on `table` (the path unqualified, as views keep it).
bool AttributeType(const Table& table, const Expr& e, ValueType* out, SqlError* error) {
  ColumnPlace place;
  if (!ResolvePlace(table, TableRef(), e, &place, error)) return false;
  *out = place.attr.type;
  return true;
}

// A qualifier names the alias, or the table or view itself when the statement gave none.
bool QualifierFits(const TableRef& ref, const std::string& qualifier) {
  if (qualifier.empty()) return true;
  return ref.alias.empty() ? qualifier == ref.name.name : qualifier == ref.alias;
}

// Oracle does not say how it types these columns of a view; see decision VW3.
ValueType ExpressionColumnType(const Expr& e, const ValueType& projected) {
  ValueType t = projected;
  if (e.kind == Expr::Kind::kString && !e.text.empty()) {
    t.typecode = OCI_TYPECODE_CHAR;
    t.length = static_cast<ub4>(e.text.size());
  } else if (e.kind == Expr::Kind::kSessionTimeZone || e.kind == Expr::Kind::kDbTimeZone) {
    t.length = 64;
  }
  return t;
}

// The columns of a source, for `*`.
std::vector<std::string> SourceColumnNames(const Source& src) {
  std::vector<std::string> names;
  if (src.view != nullptr) {
    for (const ViewColumn& c : *src.view->columns) names.push_back(c.name);
  } else {
    for (const Attribute& a : src.table->columns()) names.push_back(a.name);
  }
  return names;
}

}  // namespace

bool OpenSource(const ExecContext& ctx, const TableRef& ref, const std::string& default_schema,
                Source* out, SqlError* error) {
  Catalog& catalog = ctx.db->catalog;
  out->schema = ref.name.schema.empty() ? default_schema : ref.name.schema;
  out->name = ref.name.name;
  const CatalogEntry* entry = catalog.Find(out->schema, out->name);
  // DUAL is everybody's.
  if (entry == nullptr && ref.name.schema.empty() && ref.name.name == "DUAL") {
    out->schema = "SYS";
    entry = catalog.Find(out->schema, out->name);
  }
  if (entry != nullptr && entry->kind == ObjectKind::kTable) {
    out->table = entry->table.get();
    out->base.name.schema = out->schema;
    out->base.name.name = out->name;
    out->base.alias = ref.alias;
    return true;
  }
  if (entry == nullptr || entry->kind != ObjectKind::kView) {
    return SetError(error, 942, "table or view does not exist");
  }
  View* view = entry->view.get();
  std::shared_ptr<Table> base;
  if (view->valid) base = catalog.FindTable(view->base.name.schema, view->base.name.name);
  if (!base) {
    SqlError ignored;
    if (!CompileView(ctx, view, {}, &ignored)) {
      view->valid = false;
      return SetError(error, 4063,
                      "view \"" + view->schema + "." + view->name + "\" has errors");
    }
    base = catalog.FindTable(view->base.name.schema, view->base.name.name);
  }
  out->table = base.get();
  out->base = view->base;
  out->view = view;
  out->where = view->where;
  return true;
}

bool MapColumn(const Source& src, const TableRef& ref, const Expr& e, ViewColumn* out,
               SqlError* error) {
  if (src.view == nullptr) {
    size_t pos = 0;
    if (!ResolveColumn(*src.table, ref, e, &pos, error)) return false;
    const Attribute& a = src.table->columns()[pos];
    out->name = e.path.empty() ? a.name : e.path.back();
    out->type = a.type;
    out->nullable = e.path.empty() ? !src.table->not_null[pos] : true;
    out->source = Expr();
    out->source.kind = Expr::Kind::kColumn;
    out->source.text = a.name;
    out->source.offset = e.offset;
    out->base_column = e.path.empty();
    // An attribute path, checked here: on the base table it reads the column unqualified.
    out->source.path = e.path;
    return e.path.empty() || AttributeType(*src.table, out->source, &out->type, error);
  }
  if (!QualifierFits(ref, e.qualifier)) return UnknownColumn(error, e);
  // A path through a view's column needs the view's alias, as one through a table's.
  if (!e.path.empty() && (ref.alias.empty() || e.qualifier != ref.alias)) {
    return UnknownColumn(error, e);
  }
  for (const ViewColumn& c : *src.view->columns) {
    if (c.name == e.text) {
      *out = c;
      if (e.path.empty()) return true;
      if (c.source.kind != Expr::Kind::kColumn) return UnknownColumn(error, e);
      out->source.path.insert(out->source.path.end(), e.path.begin(), e.path.end());
      out->base_column = false;
      out->nullable = true;
      SqlError ignored;
      if (!AttributeType(*src.table, out->source, &out->type, &ignored)) {
        return UnknownColumn(error, e);
      }
      return true;
    }
  }
  return UnknownColumn(error, e);
}

bool MapItem(const Source& src, const TableRef& ref, const Expr& e, Expr* out, SqlError* error) {
  if (e.kind == Expr::Kind::kColumn) {
    ViewColumn c;
    if (!MapColumn(src, ref, e, &c, error)) return false;
    *out = std::move(c.source);
    return true;
  }
  // A view holds no row objects of its own (ocimem has no object views).
  if (e.kind == Expr::Kind::kValue && src.view != nullptr) {
    return SetError(error, 904, "\"" + e.qualifier + "\": invalid identifier");
  }
  *out = e;
  for (size_t i = 0; i < e.args.size(); ++i) {
    if (!MapItem(src, ref, e.args[i], &out->args[i], error)) return false;
  }
  return true;
}

bool MapWhere(const Source& src, const TableRef& ref, const std::vector<Condition>& where,
              std::vector<Condition>* out, SqlError* error) {
  for (const Condition& c : where) {
    Condition mapped;
    if (!MapItem(src, ref, c.expr, &mapped.expr, error)) return false;
    out->push_back(std::move(mapped));
  }
  out->insert(out->end(), src.where.begin(), src.where.end());
  return true;
}

bool CompileView(const ExecContext& ctx, View* view, const std::vector<std::string>& column_list,
                 SqlError* error) {
  Source src;
  const SelectStatement& q = view->query;
  if (!OpenSource(ctx, q.table, view->schema, &src, error)) return false;
  std::vector<SelectItem> items;
  for (const SelectItem& item : q.items) {
    if (!item.star) {
      items.push_back(item);
      continue;
    }
    if (!QualifierFits(q.table, item.expr.qualifier)) {
      return SetError(error, 904, "\"" + item.expr.qualifier + "\": invalid identifier");
    }
    for (std::string& name : SourceColumnNames(src)) {
      SelectItem column;
      column.expr.kind = Expr::Kind::kColumn;
      column.expr.text = std::move(name);
      column.expr.offset = item.expr.offset;
      items.push_back(std::move(column));
    }
  }
  auto columns = std::make_shared<ViewColumns>();
  std::vector<std::string> default_names;
  for (const SelectItem& item : items) {
    ViewColumn c;
    if (item.expr.kind == Expr::Kind::kColumn) {
      if (!MapColumn(src, q.table, item.expr, &c, error)) return false;
    } else if (!MapItem(src, q.table, item.expr, &c.source, error)) {
      return false;
    }
    // The item as a query on the base table would take it: literals and VALUE() checked.
    Projection p;
    bool plain = c.source.kind == Expr::Kind::kColumn || c.source.kind == Expr::Kind::kValue;
    if (plain && !ProjectItem(ctx, *src.table, src.base, c.source, &p, error)) return false;
    if (!plain && !ExprType(ctx, *src.table, src.base, c.source, &p.type, error)) return false;
    if (item.expr.kind != Expr::Kind::kColumn) {
      c.type = ExpressionColumnType(c.source, p.type);
      c.nullable = true;  // decision VW3
      c.base_column = false;
    }
    if (!item.alias.empty()) {
      default_names.push_back(item.alias);
    } else if (item.expr.kind == Expr::Kind::kColumn) {
      default_names.push_back(c.name);
    } else if (view->column_names.empty() && column_list.empty()) {
      return SetError(error, 998, "must name this expression with a column alias");
    }
    columns->push_back(std::move(c));
  }
  std::vector<std::string> names = view->column_names;
  if (names.empty()) {
    if (!column_list.empty() && column_list.size() != items.size()) {
      return SetError(error, 1730, "invalid number of column names specified");
    }
    names = column_list.empty() ? default_names : column_list;
    std::set<std::string> seen;
    for (const std::string& name : names) {
      if (!seen.insert(name).second) return SetError(error, 957, "duplicate column name");
    }
  }
  for (size_t i = 0; i < columns->size(); ++i) (*columns)[i].name = names[i];
  std::vector<Condition> where;
  if (!MapWhere(src, q.table, q.where, &where, error)) return false;
  for (const Condition& c : where) {
    if (!CheckWhereExpr(*src.table, src.base, c.expr, error)) return false;
  }
  view->query.items = std::move(items);
  view->column_names = std::move(names);
  view->from_schema = src.schema;
  view->from_name = src.name;
  view->columns = std::move(columns);
  view->base = src.base;
  view->where = std::move(where);
  view->valid = true;
  return true;
}

void InvalidateDependents(Catalog* catalog, const std::string& schema, const std::string& name) {
  std::vector<std::pair<std::string, std::string>> changed{{schema, name}};
  std::vector<View*> views = catalog->Views();
  while (!changed.empty()) {
    auto [s, n] = changed.back();
    changed.pop_back();
    for (View* v : views) {
      if (v->from_schema != s || v->from_name != n || !v->valid) continue;
      v->valid = false;
      changed.emplace_back(v->schema, v->name);
    }
  }
}

}  // namespace ocimem
