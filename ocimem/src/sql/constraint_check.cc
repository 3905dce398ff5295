// CHECK conditions on one row, by SQL's three values: the row passes unless the condition
// is FALSE (decided by the condition evaluator of WHERE clauses).
#include "sql/constraint_enforce.h"
#include "sql/sql_condition.h"

namespace ocimem {

bool CheckSatisfied(const ExecContext& ctx, const Table& table, const CheckConstraint& check,
                    const RowData& row, bool* satisfied, SqlError* error) {
  *satisfied = true;
  TableRef ref;
  ref.name.schema = table.schema;
  ref.name.name = table.name;
  for (const Condition& cond : check.condition) {
    Truth t = Truth::kTrue;
    if (!EvaluateCondition(ctx, table, ref, row, cond.expr, &t, error)) return false;
    if (t == Truth::kFalse) {
      *satisfied = false;
      return true;
    }
  }
  return true;
}

}  // namespace ocimem
