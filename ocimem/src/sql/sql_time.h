// Datetime and interval values in SQL: the literals DATE '...', TIMESTAMP '...' and
// INTERVAL '...' fields, the text of TIMESTAMP and INTERVAL values, arithmetic with
// intervals, and the interval functions.
#ifndef OCIMEM_SRC_SQL_SQL_TIME_H
#define OCIMEM_SRC_SQL_SQL_TIME_H

#include <string>
#include <string_view>

#include "sql/sql_expr.h"
#include "values/value_types.h"

namespace ocimem {

// The fields of an interval, most significant first.
enum IntervalFieldNumber { kYearField, kMonthField, kDayField, kHourField, kMinuteField,
                           kSecondField };
// The field a word names, or -1.
int IntervalFieldOf(std::string_view word);
const char* IntervalFieldName(int field);

// The text of INTERVAL 'text' start [TO end], its leading field at most `leading` digits
// and its fraction rounded to `fraction` digits: 0 or the ORA error (01867 for text that
// does not have the fields, 01873 for a leading field too wide, 01843, 01850, 01851, 01852
// for a trailing field out of range).
int ReadIntervalLiteral(std::string_view text, int start, int end, int leading, int fraction,
                        values::IntervalValue* out);
// DATE 'YYYY-MM-DD': 0 or the date parser's error.
int ReadDateLiteral(std::string_view text, values::DateTimeFields* out);
// TIMESTAMP 'YYYY-MM-DD HH24:MI:SS[.FF] [zone]': the fields, and with a zone (an offset or
// a region, with its abbreviation) the zoned value. 0 or the ORA error.
int ReadTimestampLiteral(std::string_view text, values::DateTimeFields* fields, bool* zoned,
                         values::DateTimeValue* zoned_value);

// The value of a kTimeLiteral expression.
bool TimeLiteralValue(const ExecContext& ctx, const Expr& e, Value* out, SqlError* error);
// The type of a kTimeLiteral expression.
void TimeLiteralType(const Expr& e, ValueType* out);

// New values, kept until the statement ends.
bool MakeDateTimeValue(const ExecContext& ctx, values::DateTimeKind kind,
                       const values::DateTimeValue& value, Value* out, SqlError* error);
// The same in a descriptor of the given OCI_DTYPE_ (the kind alone does not tell a DATE's).
bool MakeDateTimeValueOf(const ExecContext& ctx, ub4 type, values::DateTimeKind kind,
                         const values::DateTimeValue& value, Value* out, SqlError* error);
bool MakeIntervalValue(const ExecContext& ctx, values::IntervalKind kind,
                       const values::IntervalValue& value, int leading, int fraction,
                       Value* out, SqlError* error);
// An interval (or text read as one) fitted to an interval type: the fraction rounded to its
// precision, ORA-01873 for a leading field wider than its precision. Other values are left.
bool FitInterval(const ExecContext& ctx, const ValueType& t, Value* v, SqlError* error);
// Types of datetime and interval results.
ValueType DateTimeValueType(ub4 descriptor_type, int fraction);
ValueType IntervalValueType(bool year_month, int leading, int fraction);

// The text of a datetime descriptor (NLS_TIMESTAMP_FORMAT, NLS_TIMESTAMP_TZ_FORMAT for
// WITH TIME ZONE; FF with `fraction` digits) or of an interval descriptor (`+dd hh:mi:ss.ff`,
// `+yy-mm`, padded to `leading` digits). 0 or the ORA error.
int DescriptorText(const void* descriptor, int leading, int fraction, std::string* out);

// Datetimes with datetimes and DATEs, intervals with intervals of their kind; -1, 0, 1
// (sql_expr_time.cc).
bool CompareTimes(const Value& a, const Value& b, int* out, SqlError* error);
// NUMBER and DATE arithmetic of `+`, `-`, `*`, `/` (sql_expr.cc).
bool DateNumberArithmetic(const std::string& op, const Value& a, const Value& b, Value* out,
                          SqlError* error);
// Arithmetic where an operand is an interval or a TIMESTAMP (sql_expr_interval.cc); the
// others are left to TimestampArithmetic. Neither operand is NULL.
bool DateTimeArithmetic(const ExecContext& ctx, const std::string& op, const Value& a,
                        const Value& b, Value* out, SqlError* error);
// The type of `a + b`, `a - b`, `a * b` or `a / b` where either is an interval; false when
// neither is.
bool DateTimeArithmeticType(const ValueType& a, const ValueType& b, ValueType* out);

// NUMTODSINTERVAL, NUMTOYMINTERVAL, TO_DSINTERVAL and TO_YMINTERVAL, their arguments
// evaluated and not NULL (sql_functions_interval.cc).
bool IntervalFunction(const ExecContext& ctx, const std::string& name,
                      const std::vector<Value>& args, Value* out, SqlError* error);
bool IsIntervalFunction(const std::string& name);
// EXTRACT of a field of an interval.
bool ExtractInterval(const std::string& field, const Value& v, Value* out, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_TIME_H
