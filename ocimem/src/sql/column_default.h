// Column defaults in INSERT and UPDATE (column_default.cc).
#ifndef OCIMEM_SRC_SQL_COLUMN_DEFAULT_H
#define OCIMEM_SRC_SQL_COLUMN_DEFAULT_H

#include <vector>

#include "database/table.h"
#include "sql/sql_ast.h"

namespace ocimem {

// The default of a column: its DEFAULT expression, or NULL.
Expr DefaultOf(const Table& table, size_t column);

// The values of an INSERT with defaults: DEFAULT in `values` becomes the default of its
// column, and with a column list (`has_columns`) every column the list leaves out that has
// a DEFAULT is added to `targets` and `values`.  False when DEFAULT stands beyond the
// columns (more values than columns).
bool WithDefaults(const Table& table, bool has_columns, std::vector<size_t>* targets,
                  std::vector<Expr>* values);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_COLUMN_DEFAULT_H
