// The constraints of a table beyond NOT NULL and the primary key: UNIQUE keys, foreign keys,
// CHECK conditions, and column defaults.  UNIQUE keys and foreign keys keep an index of the
// rows by their key, so that a statement finds a duplicate, a parent or a child row without
// a pass over the table.  Guarded by the database mutex, as the tables are.
#ifndef OCIMEM_SRC_DATABASE_CONSTRAINT_H
#define OCIMEM_SRC_DATABASE_CONSTRAINT_H

#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "sql/sql_ast.h"

namespace ocimem {

struct RowData;
struct RowRecord;
struct Table;

// The rows (committed or pending versions) by the value of some columns.  A version whose
// key columns are all NULL is not indexed: it can neither collide nor be a parent or child.
struct KeyIndex {
  std::vector<size_t> columns;
  std::unordered_map<std::string, std::unordered_set<RowRecord*>> rows;

  void Add(const Table& table, RowRecord* record);
  void Remove(const Table& table, RowRecord* record);
  const std::unordered_set<RowRecord*>* Find(const std::string& key) const;
};

// The key of `columns` in `row`: each value as length:text, a NULL as "N".  False when all
// of them are NULL; `any_null` tells whether one is.
bool RowKey(const Table& table, const std::vector<size_t>& columns, const RowData& row,
            std::string* key, bool* any_null);

struct UniqueKey {
  std::string name;
  KeyIndex index;
  bool index_only = false;  // kept by a UNIQUE index (named `name`), not a constraint
};

struct ForeignKey {
  std::string name;
  Table* parent = nullptr;              // the table itself when it refers to itself
  std::vector<size_t> parent_columns;   // the parent's primary or unique key
  ConstraintClause::OnDelete on_delete = ConstraintClause::OnDelete::kNoAction;
  KeyIndex index;  // the child rows by their foreign-key columns
};

struct CheckConstraint {
  std::string name;
  std::vector<Condition> condition;  // joined by AND
};

// A foreign key of another table (or of this one) that refers to this table.
struct Referrer {
  Table* child = nullptr;
  std::string name;  // of the foreign key
};

// DEFAULT of a column; a sequence in it is named with its schema.
struct ColumnDefault {
  bool given = false;
  Expr value;
};

// An index made by CREATE INDEX; a UNIQUE one also keeps a UniqueKey (index_only).
struct TableIndex {
  std::string schema;
  std::string name;
  std::vector<size_t> columns;
  bool unique = false;
  std::string enforces;  // the primary or UNIQUE key that took the index over, or ""
};

}  // namespace ocimem

#endif  // OCIMEM_SRC_DATABASE_CONSTRAINT_H
