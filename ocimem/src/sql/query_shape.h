// The parts of a query past finding its rows: grouping and aggregates, DISTINCT and
// ORDER BY (query_shape.cc).
#ifndef OCIMEM_SRC_SQL_QUERY_SHAPE_H
#define OCIMEM_SRC_SQL_QUERY_SHAPE_H

#include <map>
#include <memory>
#include <vector>

#include "sql/sql_expr.h"
#include "sql/sql_rows.h"

namespace ocimem {

// One row of a query's result before it goes into the cursor.
struct ResultRow {
  std::shared_ptr<RowData> base;  // the table's row (one of the group's rows, or none)
  ub4 rownum = 0;
  std::map<const Expr*, Value> aggregates;  // of the row's group
  std::vector<Value> items;                 // the select list's values
  std::vector<Value> keys;                  // the ORDER BY values
};

// True when two expressions are written alike (the same tree).
bool SameExpr(const Expr& a, const Expr& b);

// ORA-00937 / ORA-00979 when `e` reads a column outside an aggregate that is not one of
// the GROUP BY expressions.
bool CheckGrouped(const Expr& e, const std::vector<Expr>& group_by, SqlError* error);

// Groups `found` by the GROUP BY values (one group of all rows when there is no GROUP BY
// but aggregates) and computes each group's aggregates; groups failing HAVING are left out.
bool GroupRows(const ExecContext& ctx, Table* table, const TableRef& ref,
               const SelectStatement& s, const std::vector<const Expr*>& aggregates, const std::vector<Found>& found,
               std::vector<ResultRow>* out, SqlError* error);

// The aggregates in `e`, appended to `out`.
void CollectAggregates(const Expr& e, std::vector<const Expr*>* out);

// Removes rows whose items equal an earlier row's.
void RemoveDuplicates(std::vector<ResultRow>* rows);

// Sorts by the keys, as ORDER BY `order` asks.
void SortRows(const std::vector<OrderItem>& order, std::vector<ResultRow>* rows);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_QUERY_SHAPE_H
