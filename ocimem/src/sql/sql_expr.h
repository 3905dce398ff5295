// Expressions evaluated on a row: columns, literals, bind variables, arithmetic with
// Oracle's datatype rules (exact NUMBER arithmetic, DATE plus or minus days, DATE minus
// DATE), concatenation, functions (sql_functions.cc), CASE, ROWNUM and aggregates already
// computed for a group.  The caller holds the database mutex.
#ifndef OCIMEM_SRC_SQL_SQL_EXPR_H
#define OCIMEM_SRC_SQL_SQL_EXPR_H

#include <map>
#include <string>

#include "sql/sql_condition.h"
#include "statements/convert.h"
#include "values/date_format.h"
#include "values/number.h"

namespace ocimem {

// What an expression reads besides literals and binds.
struct RowScope {
  const Table* table = nullptr;  // with `ref` and `row`: the row's columns; null: none
  const TableRef* ref = nullptr;
  const RowData* row = nullptr;
  ub4 rownum = 0;  // ROWNUM of the row (0: ROWNUM is not allowed)
  // Values of the aggregates of a group, by the aggregate's node; null: none allowed.
  const std::map<const Expr*, Value>* aggregates = nullptr;
};

bool EvalExpr(const ExecContext& ctx, const RowScope& scope, const Expr& e, Value* out,
              SqlError* error);
bool EvalCondition(const ExecContext& ctx, const RowScope& scope, const Expr& e, Truth* out,
                   SqlError* error);

// The value of a column of a row.
void ColumnValue(const Attribute& a, const RowData& row, Value* out);

// Compares two non-NULL values by Oracle's rules (text converted to NUMBER or DATE to meet
// the other side; CHAR with CHAR blank-padded); -1, 0, 1 in *out.
bool CompareValues(const Value& a, const Value& b, int* out, SqlError* error);

// The type a select-list item takes, worked out from the expression before any row.
bool ExprType(const ExecContext& ctx, const Table& table, const TableRef& ref, const Expr& e,
              ValueType* out, SqlError* error);

// Conversions SQL applies implicitly (ORA-01722 for text that is no number, the date
// parser's errors for text that is no date in NLS_DATE_FORMAT).
bool ToNumber(const Value& v, values::Decimal* out, SqlError* error);
bool ToText(const Value& v, std::string* out, SqlError* error);
bool ToDate(const Value& v, OCIDate* out, SqlError* error);
// A NUMBER value; ORA-01426 when it cannot be one.
bool NumberValue(const values::Decimal& d, Value* out, SqlError* error);
void TextValue(std::string text, Value* out);  // empty text is NULL
// ORA-00932 inconsistent datatypes: expected `expected` got `got`.
bool Inconsistent(const std::string& expected, const Value& got, SqlError* error);
bool IsNull(const Value& v);
// True for the aggregates (COUNT, MIN, MAX, SUM, AVG) anywhere in `e`.
bool HasAggregate(const Expr& e);

// Functions (sql_functions.cc): `args` evaluated already unless the function decides
// itself which to evaluate (NVL2, DECODE, COALESCE take them all).
bool CallFunction(const ExecContext& ctx, const RowScope& scope, const Expr& e, Value* out,
                  SqlError* error);
// SYSTIMESTAMP, CURRENT_TIMESTAMP, LOCALTIMESTAMP and TO_TIMESTAMP (sql_functions_time.cc),
// their arguments evaluated and not NULL.
bool TimestampFunction(const ExecContext& ctx, const std::string& name,
                       const std::vector<Value>& args, Value* out, SqlError* error);
// A DATE or datetime value turned into the datetime type of `t` (zones by Oracle's rules:
// the session's time zone for values without one); other values are left as they are.
// ROUND and TRUNC of a DATE to `unit` (a format element: YYYY, Q, MM, WW, IW, W, DD, DAY,
// HH, MI, CC and their synonyms); ORA-01899 for another.
bool RoundDate(bool round, const OCIDate& date, const std::string& unit, Value* out,
               SqlError* error);
// TIMESTAMP arithmetic: plus or minus days is a DATE; minus a TIMESTAMP or DATE an
// INTERVAL DAY TO SECOND (sql_expr_time.cc).
bool TimestampArithmetic(const ExecContext& ctx, const std::string& op, const Value& a,
                         const Value& b, Value* out, SqlError* error);
// A new INTERVAL DAY TO SECOND value, kept until the statement ends (sql_functions_time.cc).
bool MakeIntervalDs(const ExecContext& ctx, std::int64_t seconds, std::int32_t nanos,
                    Value* out, SqlError* error);
// Text read as a TIMESTAMP with `mask` (the date parser's errors).
bool ParseTimestampText(const std::string& text, const std::string& mask,
                        values::DateTimeFields* out, SqlError* error);
// GREATEST, LEAST, NULLIF and EXTRACT (`option` its field), their arguments evaluated
// (sql_functions_pick.cc).
bool PickFunction(const std::string& name, const std::string& option,
                  const std::vector<Value>& args, Value* out, SqlError* error);
// CAST(v AS type) for NUMBER, character, DATE and datetime types (sql_cast.cc).
bool CastValue(const ExecContext& ctx, const DataTypeSpec& type, const Value& v, Value* out,
               SqlError* error);
bool CastType(const ExecContext& ctx, const DataTypeSpec& type, ValueType* out,
              SqlError* error);
bool FitDateTime(const ExecContext& ctx, const ValueType& t, Value* v, SqlError* error);
bool FunctionType(const ExecContext& ctx, const Table& table, const TableRef& ref,
                  const Expr& e, ValueType* out, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_EXPR_H
