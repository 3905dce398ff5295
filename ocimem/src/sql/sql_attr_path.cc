// Attribute paths through object columns: alias.column.attr... and VALUE(alias).attr....
#include "sql/sql_expr.h"
#include "sql/sql_rows.h"

namespace ocimem {

bool ResolvePlace(const Table& table, const TableRef& ref, const Expr& e, ColumnPlace* out,
                  SqlError* error) {
  const std::vector<Attribute>& columns = table.columns();
  std::vector<std::string>::const_iterator attr = e.path.begin();
  int pos = -1;
  if (e.kind == Expr::Kind::kValue) {
    // VALUE(alias) of an object table's row: the first attribute is a column.
    if (ref.alias.empty() || e.qualifier != ref.alias || !table.object_table) {
      return SetError(error, 904, "\"" + e.qualifier + "\": invalid identifier");
    }
    pos = table.FindColumn(*attr++);
    if (pos < 0) return UnknownColumn(error, e);
  } else {
    // Oracle reads a path only through a table alias: without one, t.column.attr names no
    // column it knows.  A statement always writes the alias; a path without one is a
    // view's column read on its base table, checked when the view was read.
    Expr column = e;
    column.path.clear();
    size_t found = 0;
    SqlError ignored;
    if (!ResolveColumn(table, ref, column, &found, &ignored)) return UnknownColumn(error, e);
    bool aliased = ref.owners.empty() ? !ref.alias.empty() : ref.owner_is_alias[found];
    if (!aliased && !e.qualifier.empty()) return UnknownColumn(error, e);
    pos = static_cast<int>(found);
  }
  out->column = static_cast<size_t>(pos);
  out->attr = columns[out->column];
  out->objects.clear();
  for (; attr != e.path.end(); ++attr) {
    const ValueType& t = out->attr.type;
    if (t.kind != ValueKind::kObject || !t.named) return UnknownColumn(error, e);
    const Attribute* next = nullptr;
    for (const Attribute& a : t.named->attributes) {
      if (a.name == *attr) next = &a;
    }
    if (next == nullptr) return UnknownColumn(error, e);
    out->objects.push_back(out->attr.ind_offset);
    Attribute moved = *next;
    moved.offset += out->attr.offset;
    moved.ind_offset += out->attr.ind_offset;
    out->attr = std::move(moved);
  }
  return true;
}

void PlaceValue(const ColumnPlace& place, const RowData& row, Value* out) {
  for (size_t ind : place.objects) {
    if (*IndAt(row, ind) == OCI_IND_NULL) {
      *out = Value();
      return;
    }
  }
  ColumnValue(place.attr, row, out);
  if (out->kind == Value::Kind::kObject && place.attr.type.kind == ValueKind::kObject) {
    out->ind = IndAt(row, place.attr.ind_offset);
  }
}

bool PathValue(const Table& table, const TableRef& ref, const Expr& e, const RowData& row,
               Value* out, SqlError* error) {
  ColumnPlace place;
  if (!ResolvePlace(table, ref, e, &place, error)) return false;
  PlaceValue(place, row, out);
  return true;
}

}  // namespace ocimem
