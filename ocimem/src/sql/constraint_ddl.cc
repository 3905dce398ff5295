// Constraints and defaults at CREATE TABLE, and the foreign keys that stop DROP TABLE and
// TRUNCATE TABLE.
#include "sql/constraint_ddl.h"

#include <algorithm>
#include <cstdio>
#include <set>

#include "sql/sql_rows.h"

namespace ocimem {
namespace {

using Kind = ConstraintClause::Kind;

bool InvalidIdentifier(SqlError* error, const std::string& name) {
  return SetError(error, 904, "\"" + name + "\": invalid identifier");
}

}  // namespace

bool CanBeKey(const ValueType& t) {
  return t.kind == ValueKind::kNumber || t.kind == ValueKind::kString ||
         t.kind == ValueKind::kDate || t.kind == ValueKind::kRaw;
}

// decision CN8 for datetime, interval and REF columns.
bool NotAKeyType(SqlError* error, const ValueType& t) {
  std::string name = t.kind == ValueKind::kLob ? "LOB"
                     : t.kind == ValueKind::kObject || t.kind == ValueKind::kCollection
                         ? "Named Type"
                         : TypeName(t);
  return SetError(error, 2329,
                  "column of datatype " + name + " cannot be unique or a primary key");
}

// Column positions of a constraint's columns: ORA-00904 for an unknown one, ORA-00957
// for one named twice.
bool ResolveColumns(const Table& table, const std::vector<std::string>& names,
                    std::vector<size_t>* out, SqlError* error) {
  for (const std::string& name : names) {
    int pos = table.FindColumn(name);
    if (pos < 0) return InvalidIdentifier(error, name);
    size_t p = static_cast<size_t>(pos);
    if (std::find(out->begin(), out->end(), p) != out->end()) {
      return SetError(error, 957, "duplicate column name");
    }
    out->push_back(p);
  }
  return true;
}

bool SameColumnSet(std::vector<size_t> a, std::vector<size_t> b) {
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  return a == b;
}

namespace {

// The columns of the primary and unique keys declared so far.
struct DeclaredKeys {
  std::vector<std::vector<size_t>> keys;

  bool Add(std::vector<size_t> columns, SqlError* error) {
    for (const auto& k : keys) {
      if (SameColumnSet(k, columns)) {
        return SetError(error, 2261, "such unique or primary key already exists in the table");
      }
    }
    keys.push_back(std::move(columns));
    return true;
  }
};

// What a CHECK condition may read: the row's own columns (a column constraint only its
// column), literals and functions of them; no clock, session value, ROWNUM or aggregate.
bool CheckExpr(const Table& table, const ConstraintClause& c, const Expr& e, SqlError* error) {
  bool clock = e.kind == Expr::Kind::kFunction &&
               (e.text == "SYSDATE" || e.text == "CURRENT_DATE" || e.text == "SYSTIMESTAMP" ||
                e.text == "CURRENT_TIMESTAMP" || e.text == "LOCALTIMESTAMP");
  if (e.kind == Expr::Kind::kSessionTimeZone || e.kind == Expr::Kind::kDbTimeZone ||
      e.kind == Expr::Kind::kRownum || clock) {
    return SetError(error, 2436, "date or system variable wrongly specified in CHECK constraint");
  }
  if (e.kind == Expr::Kind::kAggregate) {
    return SetError(error, 934, "group function is not allowed here");
  }
  if (e.kind == Expr::Kind::kColumn) {
    if (!e.qualifier.empty() || table.FindColumn(e.text) < 0) {
      std::string shown = e.qualifier.empty() ? "\"" + e.text + "\""
                                              : "\"" + e.qualifier + "\".\"" + e.text + "\"";
      return SetError(error, 904, shown + ": invalid identifier");
    }
    if (c.on_column && e.text != c.columns.front()) {
      return SetError(error, 2438, "Column check constraint cannot reference other columns");
    }
  }
  for (const Expr& a : e.args) {
    if (!CheckExpr(table, c, a, error)) return false;
  }
  return true;
}

}  // namespace

bool CheckCondition(const Table& table, const ConstraintClause& c, SqlError* error) {
  for (const Condition& cond : c.check) {
    if (!CheckExpr(table, c, cond.expr, error)) return false;
  }
  return true;
}

namespace {

// Whether a child column can refer to a parent column (decision CN4 for CHAR and VARCHAR2).
bool Compatible(const ValueType& child, const ValueType& parent) {
  if (child.kind != parent.kind) return false;
  if (child.kind != ValueKind::kString) return true;
  return (child.typecode == OCI_TYPECODE_CHAR) == (parent.typecode == OCI_TYPECODE_CHAR);
}

}  // namespace

bool ResolveForeignKey(const ExecContext& ctx, const ConstraintClause& c, Table* table,
                       ForeignKey* fk, SqlError* error) {
  std::vector<size_t> columns;
  if (!ResolveColumns(*table, c.columns, &columns, error)) return false;
  const std::string schema = c.parent.schema.empty() ? ctx.schema : c.parent.schema;
  Table* parent = nullptr;
  if (schema == table->schema && c.parent.name == table->name) {
    parent = table;
  } else {
    std::shared_ptr<Table> found = ctx.db->catalog.FindTable(schema, c.parent.name);
    if (!found || found->dual) return SetError(error, 942, "table or view does not exist");
    parent = found.get();
  }
  // The parent's key that the columns name, in the order that key has.
  std::vector<size_t> key;
  if (c.parent_columns.empty()) {
    if (parent->primary_key.empty()) {
      return SetError(error, 2268, "referenced table does not have a primary key");
    }
    if (columns.size() != parent->primary_key.size()) {
      return SetError(error, 2256, "number of referencing columns must match referenced columns");
    }
    key = parent->primary_key;
  } else {
    std::vector<size_t> named;
    if (!ResolveColumns(*parent, c.parent_columns, &named, error)) return false;
    if (columns.size() != named.size()) {
      return SetError(error, 2256, "number of referencing columns must match referenced columns");
    }
    if (!parent->primary_key.empty() && SameColumnSet(parent->primary_key, named)) {
      key = parent->primary_key;
    }
    for (const UniqueKey& u : parent->unique_keys) {
      if (key.empty() && !u.index_only && SameColumnSet(u.index.columns, named)) {
        key = u.index.columns;
      }
    }
    if (key.empty()) {
      return SetError(error, 2270, "no matching unique or primary key for this column-list");
    }
    // Child columns follow the key's order.
    std::vector<size_t> ordered;
    for (size_t k : key) {
      size_t at = static_cast<size_t>(std::find(named.begin(), named.end(), k) - named.begin());
      ordered.push_back(columns[at]);
    }
    columns = std::move(ordered);
  }
  for (size_t i = 0; i < key.size(); ++i) {
    if (!Compatible(table->columns()[columns[i]].type, parent->columns()[key[i]].type)) {
      return SetError(error, 2267, "column type incompatible with referenced column type");
    }
  }
  fk->parent = parent;
  fk->parent_columns = std::move(key);
  fk->on_delete = c.on_delete;
  fk->index.columns = std::move(columns);
  return true;
}

bool ApplyDefault(const ExecContext& ctx, const ColumnSpec& column, const ValueType& t,
                  ColumnDefault* out, SqlError* error) {
  out->given = true;
  out->value = column.default_value;
  Expr& e = out->value;
  if (e.kind == Expr::Kind::kSequence) {
    if (!SequencesExist(ctx, e, error)) return false;
    if (e.type.schema.empty()) e.type.schema = ctx.schema;
  }
  // decision CN5: a number where no number converts is refused at once; a string is
  // converted by each INSERT that takes it.
  bool number_kind = e.kind == Expr::Kind::kNumber;
  bool takes_number = t.kind == ValueKind::kNumber || t.kind == ValueKind::kString ||
                      (t.kind == ValueKind::kLob && t.typecode != OCI_TYPECODE_BLOB);
  if (number_kind && !takes_number) {
    return SetError(error, 2262, "ORA-932 occurs while type-checking column default value expression");
  }
  return true;
}

bool ReferencedType(const ExecContext& ctx, const CreateTableStatement& s,
                    const std::string& column, ValueType* out, SqlError* error) {
  const ConstraintClause* fk = nullptr;
  for (const ConstraintClause& c : s.constraints) {
    if (c.on_column && c.kind == Kind::kForeignKey && c.columns.front() == column) fk = &c;
  }
  const std::string own_schema = s.name.schema.empty() ? ctx.schema : s.name.schema;
  const std::string schema = fk->parent.schema.empty() ? ctx.schema : fk->parent.schema;
  if (schema == own_schema && fk->parent.name == s.name.name) {
    // The table refers to itself: the named column, or the column of its primary key.
    std::string target = fk->parent_columns.empty() ? std::string() : fk->parent_columns.front();
    if (target.empty()) {
      for (const ConstraintClause& c : s.constraints) {
        if (c.kind == Kind::kPrimaryKey && c.columns.size() == 1) target = c.columns.front();
      }
    }
    for (const ColumnSpec& c : s.columns) {
      if (c.name == target && !c.type_of_parent) return ResolveType(ctx, c.type, "", "", out, error);
    }
    return SetError(error, 2270, "no matching unique or primary key for this column-list");
  }
  std::shared_ptr<Table> parent = ctx.db->catalog.FindTable(schema, fk->parent.name);
  if (!parent || parent->dual) return SetError(error, 942, "table or view does not exist");
  std::vector<size_t> key;
  if (fk->parent_columns.empty()) {
    if (parent->primary_key.empty()) {
      return SetError(error, 2268, "referenced table does not have a primary key");
    }
    key = parent->primary_key;
  } else if (!ResolveColumns(*parent, fk->parent_columns, &key, error)) {
    return false;
  }
  if (key.size() != 1) {
    return SetError(error, 2256, "number of referencing columns must match referenced columns");
  }
  *out = parent->columns()[key.front()].type;
  return true;
}

bool ApplyConstraints(const ExecContext& ctx, const CreateTableStatement& s, Table* table,
                      SqlError* error) {
  const std::vector<Attribute>& columns = table->columns();
  table->not_null.assign(columns.size(), false);
  table->not_null_names.assign(columns.size(), std::string());
  table->defaults.assign(columns.size(), ColumnDefault());
  for (const ColumnSpec& c : s.columns) {
    int pos = table->FindColumn(c.name);
    if (pos < 0) return InvalidIdentifier(error, c.name);
    size_t p = static_cast<size_t>(pos);
    if (c.has_default && !ApplyDefault(ctx, c, columns[p].type, &table->defaults[p], error)) {
      return false;
    }
  }
  // Names written in the statement, each new in the schema.
  std::set<std::string> written;
  for (const ConstraintClause& c : s.constraints) {
    if (c.name.empty() || c.kind == Kind::kNull) continue;
    if (!written.insert(c.name).second ||
        ctx.db->constraint_names.count({table->schema, c.name}) != 0) {
      return SetError(error, 2264, "name already used by an existing constraint");
    }
  }
  DeclaredKeys keys;
  // Keys and checks first: a foreign key may refer to a key of its own table written after it.
  for (const ConstraintClause& c : s.constraints) {
    std::vector<size_t> cols;
    switch (c.kind) {
      case Kind::kNull:
      case Kind::kNotNull:
        if (!ResolveColumns(*table, c.columns, &cols, error)) return false;
        table->not_null[cols.front()] = c.kind == Kind::kNotNull;
        break;
      case Kind::kPrimaryKey:
      case Kind::kUnique:
        if (!ResolveColumns(*table, c.columns, &cols, error)) return false;
        for (size_t col : cols) {
          if (!CanBeKey(columns[col].type)) return NotAKeyType(error, columns[col].type);
        }
        if (c.kind == Kind::kPrimaryKey) {
          if (!table->primary_key.empty()) {
            return SetError(error, 2260, "table can have only one primary key");
          }
          if (!keys.Add(cols, error)) return false;
          table->primary_key = cols;
          for (size_t col : cols) table->not_null[col] = true;  // key columns are NOT NULL
        } else {
          if (!keys.Add(cols, error)) return false;
          table->unique_keys.emplace_back();
          table->unique_keys.back().index.columns = cols;
        }
        break;
      case Kind::kCheck:
        if (!CheckCondition(*table, c, error)) return false;
        table->checks.push_back(CheckConstraint{"", c.check});
        break;
      case Kind::kForeignKey:
        break;
    }
  }
  for (const ConstraintClause& c : s.constraints) {
    if (c.kind != Kind::kForeignKey) continue;
    ForeignKey fk;
    if (!ResolveForeignKey(ctx, c, table, &fk, error)) return false;
    table->foreign_keys.push_back(std::move(fk));
  }
  // Every check passed: name the constraints in the order written.
  size_t unique = 0;
  size_t check = 0;
  size_t foreign = 0;
  for (const ConstraintClause& c : s.constraints) {
    if (c.kind == Kind::kNull) continue;
    std::string name = c.name;
    if (name.empty()) {
      char system_name[32];
      std::snprintf(system_name, sizeof system_name, "SYS_C%06llu",
                    static_cast<unsigned long long>(ctx.db->next_constraint++));
      name = system_name;
    }
    switch (c.kind) {
      case Kind::kPrimaryKey: table->primary_key_name = name; break;
      case Kind::kUnique: table->unique_keys[unique++].name = name; break;
      case Kind::kCheck: table->checks[check++].name = name; break;
      case Kind::kForeignKey: table->foreign_keys[foreign++].name = name; break;
      case Kind::kNotNull:
        table->not_null_names[static_cast<size_t>(table->FindColumn(c.columns.front()))] = name;
        break;
      default: break;
    }
    table->constraint_names.push_back(std::move(name));
  }
  return true;
}

void RegisterConstraints(Database* db, Table* table) {
  for (const std::string& name : table->constraint_names) {
    db->constraint_names.insert({table->schema, name});
  }
  for (const ForeignKey& fk : table->foreign_keys) {
    fk.parent->referrers.push_back(Referrer{table, fk.name});
  }
}

bool CheckDropTable(const Table& table, bool cascade_constraints, SqlError* error) {
  if (cascade_constraints) return true;
  for (const Referrer& r : table.referrers) {
    if (r.child != &table) {
      return SetError(error, 2449, "unique/primary keys in table referenced by foreign keys");
    }
  }
  return true;
}

void DropConstraints(Database* db, Table* table) {
  for (const std::string& name : table->constraint_names) {
    db->constraint_names.erase({table->schema, name});
  }
  // The foreign keys of other tables that refer to this one go (CASCADE CONSTRAINTS).
  for (const Referrer& r : table->referrers) {
    Table* child = r.child;
    if (child == table) continue;
    auto& fks = child->foreign_keys;
    fks.erase(std::remove_if(fks.begin(), fks.end(),
                             [&](const ForeignKey& fk) { return fk.name == r.name; }),
              fks.end());
    auto& names = child->constraint_names;
    names.erase(std::remove(names.begin(), names.end(), r.name), names.end());
    db->constraint_names.erase({child->schema, r.name});
  }
  // This table's foreign keys no longer refer to their parents.
  for (const ForeignKey& fk : table->foreign_keys) {
    if (fk.parent == table) continue;
    auto& refs = fk.parent->referrers;
    refs.erase(std::remove_if(refs.begin(), refs.end(),
                              [&](const Referrer& r) { return r.child == table; }),
               refs.end());
  }
  table->referrers.clear();
  table->foreign_keys.clear();
}

bool CheckTruncateTable(const Table& table, SqlError* error) {
  for (const Referrer& r : table.referrers) {
    if (r.child != &table) {
      return SetError(error, 2266, "unique/primary keys in table referenced by enabled foreign keys");
    }
  }
  return true;
}

}  // namespace ocimem
