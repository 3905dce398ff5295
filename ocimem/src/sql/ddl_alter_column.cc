// ALTER TABLE on columns: ADD, MODIFY, RENAME COLUMN, and RENAME TO.  A change of the
// columns' types makes a new row type and a new committed version of every row.
#include <algorithm>
#include <set>

#include "database/view.h"
#include "objects/value_slot.h"
#include "sql/constraint_ddl.h"
#include "sql/ddl_alter.h"
#include "sql/sql_rows.h"

namespace ocimem {
namespace {

using Kind = ConstraintClause::Kind;
constexpr size_t kNone = static_cast<size_t>(-1);

bool NoMemory(SqlError* error) { return SetError(error, 4030, "out of process memory"); }

// A relational row type with the attributes `attributes`.
std::shared_ptr<OCIType> RowType(const Table& table, std::vector<Attribute> attributes) {
  auto type = std::make_shared<OCIType>();
  type->schema = table.schema;
  type->name = table.name;
  type->attributes = std::move(attributes);
  type->Layout();
  return type;
}

// Gives every row a committed version of `type`, whose first columns are the old ones
// (but `skip`, left NULL).
bool RebuildRows(Table* table, const std::shared_ptr<OCIType>& type, size_t skip,
                 SqlError* error) {
  const std::vector<Attribute>& old_columns = table->columns();
  for (RowRecord* r : CommittedRows(*table)) {
    std::shared_ptr<RowData> row = NewRow(type);
    if (!row) return NoMemory(error);
    for (const Attribute& a : type->attributes) {
      SetNullInfo(a.type, IndAt(*row, a.ind_offset), OCI_IND_NULL);
    }
    const RowData& old = *r->committed;
    for (size_t i = 0; i < old_columns.size(); ++i) {
      if (i == skip) continue;
      const Attribute& from = old_columns[i];
      const Attribute& to = type->attributes[i];
      size_t end = i + 1 < old_columns.size() ? old_columns[i + 1].ind_offset
                                              : old.type->ind_size;
      const void* elem = ElementForm(from.type, SlotAt(old, from));
      if (*IndAt(old, from.ind_offset) == OCI_IND_NULL || elem == nullptr) continue;
      if (AssignSlot(nullptr, to.type, SlotAt(*row, to), elem) != AssignResult::kOk) {
        return NoMemory(error);
      }
      std::copy(IndAt(old, from.ind_offset), IndAt(old, end), IndAt(*row, to.ind_offset));
    }
    r->committed = std::move(row);
  }
  table->row_type = type;
  return true;
}

bool IsMandatory(const AlterTableStatement& s, const std::string& column) {
  for (const ConstraintClause& c : s.constraints) {
    if (c.on_column && c.columns.front() == column &&
        (c.kind == Kind::kNotNull || c.kind == Kind::kPrimaryKey)) {
      return true;
    }
  }
  return false;
}

// The default of a new column in every existing row.
bool FillDefault(const ExecContext& ctx, Table* table, size_t col, const Expr& e,
                 SqlError* error) {
  const Attribute& a = table->columns()[col];
  Target target{table->schema, table->name, a.name};
  for (RowRecord* r : CommittedRows(*table)) {
    Value v;
    ctx.row_nextvals.clear();
    if (HasSequence(e) ? !AdvanceSequences(ctx, e, error) || !SequenceValue(ctx, e, &v, error)
                       : !Evaluate(ctx, e, &v, error)) {
      return false;
    }
    if (!StoreValue(v, a.type, SlotAt(*r->committed, a), IndAt(*r->committed, a.ind_offset),
                    target, error)) {
      return false;
    }
  }
  return true;
}

bool HasValues(const Table& table, size_t col) {
  const Attribute& a = table.columns()[col];
  for (RowRecord* r : CommittedRows(table)) {
    if (*IndAt(*r->committed, a.ind_offset) != OCI_IND_NULL) return true;
  }
  return false;
}

// The longest value of a string or raw column, in bytes.
ub4 LongestValue(const Table& table, size_t col) {
  const Attribute& a = table.columns()[col];
  ub4 longest = 0;
  for (RowRecord* r : CommittedRows(table)) {
    if (*IndAt(*r->committed, a.ind_offset) == OCI_IND_NULL) continue;
    longest = std::max(longest, static_cast<ub4>(KeyText(a.type, SlotAt(*r->committed, a)).size()));
  }
  return longest;
}

// Whether NUMBER `to` holds fewer digits, or fewer after the point, than `from`.
bool Narrower(const ValueType& from, const ValueType& to) {
  if (to.precision == 0) return false;
  if (from.precision == 0) return true;
  return to.precision < from.precision || to.scale < from.scale;
}

bool ChangeType(const ExecContext& ctx, const ColumnChange& c, size_t col, Table* table,
                SqlError* error) {
  ValueType to;
  if (!ResolveType(ctx, c.type, "", "", &to, error)) return false;
  const ValueType& from = table->columns()[col].type;
  bool same = from.kind == to.kind && from.typecode == to.typecode && from.named == to.named;
  auto structured = [](const ValueType& t) {
    return t.kind == ValueKind::kLob || t.kind == ValueKind::kObject ||
           t.kind == ValueKind::kCollection || t.kind == ValueKind::kRef;
  };
  if (!same && (structured(from) || structured(to))) {
    return SetError(error, 22859, "invalid modification of columns");
  }
  if (!same && HasValues(*table, col)) {
    return SetError(error, 1439, "column to be modified must be empty to change datatype");
  }
  if (same && (to.kind == ValueKind::kString || to.kind == ValueKind::kRaw) &&
      to.length < LongestValue(*table, col)) {
    return SetError(error, 1441, "cannot decrease column length because some value is too big");
  }
  if (same && to.kind == ValueKind::kNumber && Narrower(from, to) && HasValues(*table, col)) {
    return SetError(error, 1440, "column to be modified must be empty to decrease precision or scale");
  }
  std::vector<Attribute> attributes = table->columns();
  attributes[col].type = to;
  return RebuildRows(table, RowType(*table, std::move(attributes)), same ? kNone : col, error);
}

bool ChangeNullity(const ExecContext& ctx, const ColumnChange& c, size_t col, Table* table,
                   AlterEffects* effects, SqlError* error) {
  if (c.nullity == ColumnChange::Nullity::kNull) {
    bool in_key = std::find(table->primary_key.begin(), table->primary_key.end(), col) !=
                  table->primary_key.end();
    // A primary-key column stays NOT NULL.
    if (!table->not_null[col] || in_key) {
      return SetError(error, 1451, "column to be modified to NULL cannot be modified to NULL");
    }
    std::string name = table->not_null_names[col];
    auto& names = table->constraint_names;
    names.erase(std::remove(names.begin(), names.end(), name), names.end());
    effects->dropped.push_back(name);
    table->not_null_names[col].clear();
    table->not_null[col] = false;
    return true;
  }
  if (table->not_null[col]) {
    return SetError(error, 1442, "column to be modified to NOT NULL is already NOT NULL");
  }
  ConstraintClause clause;
  clause.kind = Kind::kNotNull;
  clause.name = c.constraint;
  clause.on_column = true;
  clause.columns.push_back(c.name);
  return AddConstraints(ctx, {clause}, table, effects, error);
}

// Renames the column `from` where `e` reads it.
void RenameIn(Expr* e, const std::string& from, const std::string& to) {
  if (e->kind == Expr::Kind::kColumn && e->text == from) e->text = to;
  for (Expr& a : e->args) RenameIn(&a, from, to);
}

}  // namespace

bool AddColumns(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                SqlError* error) {
  if (s.columns.empty()) return true;
  if (table->object_table) return SetError(error, 22856, "cannot add columns to object tables");
  std::vector<Attribute> attributes = table->columns();
  const size_t first = attributes.size();
  std::set<std::string> seen;
  bool has_rows = !CommittedRows(*table).empty();
  for (const ColumnSpec& c : s.columns) {
    if (table->FindColumn(c.name) >= 0) {
      return SetError(error, 1430, "column being added already exists in table");
    }
    if (!seen.insert(c.name).second) return SetError(error, 957, "duplicate column name");
    Attribute a;
    a.name = c.name;
    if (c.type_of_parent) {
      CreateTableStatement as_created;
      as_created.name = s.name;
      as_created.columns = s.columns;
      as_created.constraints = s.constraints;
      if (!ReferencedType(ctx, as_created, c.name, &a.type, error)) return false;
    } else if (!ResolveType(ctx, c.type, "", "", &a.type, error)) {
      return false;
    }
    if (has_rows && IsMandatory(s, c.name) && !c.has_default) {
      return SetError(error, 1758, "table must be empty to add mandatory (NOT NULL) column");
    }
    attributes.push_back(std::move(a));
  }
  if (!RebuildRows(table, RowType(*table, std::move(attributes)), kNone, error)) return false;
  for (size_t i = 0; i < s.columns.size(); ++i) {
    const ColumnSpec& c = s.columns[i];
    size_t col = first + i;
    table->not_null.push_back(false);
    table->not_null_names.emplace_back();
    table->defaults.emplace_back();
    if (!c.has_default) continue;
    if (!ApplyDefault(ctx, c, table->columns()[col].type, &table->defaults[col], error) ||
        !FillDefault(ctx, table, col, table->defaults[col].value, error)) {
      return false;
    }
  }
  return true;
}

bool ModifyColumns(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                   AlterEffects* effects, SqlError* error) {
  std::set<std::string> seen;
  for (const ColumnChange& c : s.changes) {
    int pos = table->FindColumn(c.name);
    if (pos < 0) return SetError(error, 904, "\"" + c.name + "\": invalid identifier");
    if (!seen.insert(c.name).second) return SetError(error, 957, "duplicate column name");
    size_t col = static_cast<size_t>(pos);
    if (c.has_type) {
      if (table->object_table) return SetError(error, 22857, "cannot modify columns of object tables");
      if (!ChangeType(ctx, c, col, table, error)) return false;
    }
    if (c.has_default) {
      ColumnSpec with_default;
      with_default.name = c.name;
      with_default.has_default = true;
      with_default.default_value = c.default_value;
      if (!ApplyDefault(ctx, with_default, table->columns()[col].type, &table->defaults[col],
                        error)) {
        return false;
      }
    }
    if (c.nullity != ColumnChange::Nullity::kKeep &&
        !ChangeNullity(ctx, c, col, table, effects, error)) {
      return false;
    }
  }
  return true;
}

bool RenameColumn(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                  SqlError* error) {
  int pos = table->FindColumn(s.from);
  if (pos < 0) return SetError(error, 904, "\"" + s.from + "\": invalid identifier");
  if (table->FindColumn(s.to) >= 0) return SetError(error, 957, "duplicate column name");
  // decision AT8: the columns of an object table are its type's attributes.
  if (table->object_table) return SetError(error, 1735, "invalid ALTER TABLE option");
  std::vector<Attribute> attributes = table->columns();
  attributes[static_cast<size_t>(pos)].name = s.to;
  // Same layout: the rows keep their versions.
  table->row_type = RowType(*table, std::move(attributes));
  for (CheckConstraint& check : table->checks) {
    for (Condition& cond : check.condition) RenameIn(&cond.expr, s.from, s.to);
  }
  auto comment = table->comments.find(s.from);
  if (comment != table->comments.end()) {
    table->comments[s.to] = comment->second;
    table->comments.erase(s.from);
  }
  InvalidateDependents(&ctx.db->catalog, table->schema, table->name);
  return true;
}

bool RenameTable(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                 SqlError* error) {
  Catalog& catalog = ctx.db->catalog;
  if (catalog.Find(table->schema, s.to) != nullptr) {
    return SetError(error, 955, "name is already used by an existing object");
  }
  std::shared_ptr<Table> keep = catalog.FindTable(table->schema, table->name);
  const std::string old_name = table->name;
  catalog.Remove(table->schema, old_name);
  table->name = s.to;
  if (!table->object_table) table->row_type = RowType(*table, table->columns());
  catalog.PutTable(std::move(keep));
  InvalidateDependents(&catalog, table->schema, old_name);
  return true;
}

}  // namespace ocimem
