// Conditions under SQL's three-valued logic, for WHERE clauses and for constraints that
// test a row.
#ifndef OCIMEM_SRC_SQL_SQL_CONDITION_H
#define OCIMEM_SRC_SQL_SQL_CONDITION_H

#include "sql/sql_exec.h"

namespace ocimem {

enum class Truth { kFalse, kTrue, kUnknown };

// Evaluates `condition` (a condition node of the parser: a comparison, IS NULL, IN,
// BETWEEN, LIKE, AND, OR, NOT) on `row` of `table`, which the statement names as `ref`
// (its alias or its name qualifies columns).  False with `error` set when Oracle raises
// an error (ORA-01722 for text that is no number, ORA-00932 for values that cannot be
// compared, ...).  The caller holds the database mutex.
bool EvaluateCondition(const ExecContext& ctx, const Table& table, const TableRef& ref,
                       const RowData& row, const Expr& condition, Truth* out, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_CONDITION_H
