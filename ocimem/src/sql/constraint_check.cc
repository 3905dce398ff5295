// CHECK conditions on one row.  A condition is the conditions of a WHERE clause (column =
// value joined by AND), evaluated with the WHERE clause's own preparation; SQL's three
// values decide: the row passes unless one comparison is FALSE.
#include <cstring>

#include "sql/constraint_enforce.h"

namespace ocimem {
namespace {

enum class Truth { kTrue, kFalse, kUnknown };

// One comparison of a condition against `row`.
bool Compare(const ExecContext& ctx, const Table& table, const Condition& cond,
             const RowData& row, Truth* out, SqlError* error) {
  TableRef ref;
  ref.name.schema = table.schema;
  ref.name.name = table.name;
  std::vector<PreparedCondition> prepared;
  if (!PrepareWhere(ctx, table, ref, {cond}, &prepared, error)) return false;
  const PreparedCondition& p = prepared.front();
  if (p.column == static_cast<size_t>(-1)) {
    // literal = literal: NULL on either side is UNKNOWN, otherwise equal or not.
    Value a;
    Value b;
    if (!Evaluate(ctx, cond.column, &a, error) || !Evaluate(ctx, cond.value, &b, error)) {
      return false;
    }
    bool has_null = a.kind == Value::Kind::kNull || b.kind == Value::Kind::kNull;
    *out = has_null ? Truth::kUnknown : p.never ? Truth::kFalse : Truth::kTrue;
    return true;
  }
  const Attribute& a = table.columns()[p.column];
  if (p.never || *IndAt(row, a.ind_offset) == OCI_IND_NULL) {
    *out = Truth::kUnknown;  // compared with NULL
    return true;
  }
  *out = KeyText(a.type, SlotAt(row, a)) == p.key ? Truth::kTrue : Truth::kFalse;
  return true;
}

}  // namespace

bool CheckSatisfied(const ExecContext& ctx, const Table& table, const CheckConstraint& check,
                    const RowData& row, bool* satisfied, SqlError* error) {
  *satisfied = true;
  for (const Condition& cond : check.condition) {
    Truth t = Truth::kTrue;
    if (!Compare(ctx, table, cond, row, &t, error)) return false;
    if (t == Truth::kFalse) {
      *satisfied = false;
      return true;
    }
  }
  return true;
}

}  // namespace ocimem
