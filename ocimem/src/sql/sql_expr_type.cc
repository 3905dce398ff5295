// The types of select-list expressions, worked out before any row is read: what a query's
// column fetches as and how a view's column describes.
#include <algorithm>

#include "sql/sql_expr.h"
#include "sql/sql_rows.h"
#include "sql/sql_time.h"

namespace ocimem {
namespace {

ValueType NumberType() {
  ValueType t;
  t.kind = ValueKind::kNumber;
  t.typecode = OCI_TYPECODE_NUMBER;
  t.precision = 0;
  t.scale = -127;
  return t;
}

ValueType DateType() {
  ValueType t;
  t.kind = ValueKind::kDate;
  t.typecode = OCI_TYPECODE_DATE;
  return t;
}

ValueType TextType(ub4 length) {
  ValueType t;
  t.kind = ValueKind::kString;
  t.typecode = OCI_TYPECODE_VARCHAR2;
  t.charset_form = SQLCS_IMPLICIT;
  t.length = std::min<ub4>(length, 4000);
  return t;
}

// Bytes of a value of type `t` turned into text.
ub4 TextLength(const ValueType& t) {
  switch (t.kind) {
    case ValueKind::kString:
    case ValueKind::kRaw:
      return t.kind == ValueKind::kRaw ? t.length * 2 : t.length;
    case ValueKind::kNumber:
      return 40;
    case ValueKind::kDate:
      return 75;
    default:
      return 4000;
  }
}

bool IsNullLiteral(const Expr& e) {
  return e.kind == Expr::Kind::kNull || (e.kind == Expr::Kind::kString && e.text.empty());
}

}  // namespace

bool FunctionType(const ExecContext& ctx, const Table& table, const TableRef& ref,
                  const Expr& e, ValueType* out, SqlError* error) {
  const std::string& n = e.text;
  std::vector<ValueType> args(e.args.size());
  for (size_t i = 0; i < e.args.size(); ++i) {
    if (!ExprType(ctx, table, ref, e.args[i], &args[i], error)) return false;
  }
  auto first_result = [&](const std::vector<size_t>& positions) {
    for (size_t i : positions) {
      if (i < e.args.size() && !IsNullLiteral(e.args[i])) {
        *out = args[i];
        return true;
      }
    }
    *out = TextType(0);
    return true;
  };
  if (n == "NVL" || n == "COALESCE") {
    std::vector<size_t> all(e.args.size());
    for (size_t i = 0; i < all.size(); ++i) all[i] = i;
    return first_result(all);
  }
  if (n == "NVL2") return first_result({1, 2});
  if (n == "DECODE") {
    std::vector<size_t> results;
    for (size_t i = 2; i < e.args.size(); i += 2) results.push_back(i);
    if (e.args.size() % 2 == 0) results.push_back(e.args.size() - 1);
    return first_result(results);
  }
  if (n == "CAST" && e.cast) return CastType(ctx, *e.cast, out, error);
  if ((n == "GREATEST" || n == "LEAST" || n == "NULLIF") && !args.empty()) {
    *out = args[0];
    return true;
  }
  if (n == "ROUND" || n == "TRUNC") {
    *out = !args.empty() && args[0].kind == ValueKind::kDate ? DateType() : NumberType();
    return true;
  }
  if (n == "SYSTIMESTAMP" || n == "CURRENT_TIMESTAMP" || n == "LOCALTIMESTAMP" ||
      n == "TO_TIMESTAMP") {
    out->kind = ValueKind::kDateTime;
    out->fraction_precision = n == "TO_TIMESTAMP" ? 9 : 6;
    bool zoned = n == "SYSTIMESTAMP" || n == "CURRENT_TIMESTAMP";
    out->typecode = zoned ? OCI_TYPECODE_TIMESTAMP_TZ : OCI_TYPECODE_TIMESTAMP;
    out->descriptor_type = zoned ? OCI_DTYPE_TIMESTAMP_TZ : OCI_DTYPE_TIMESTAMP;
    return true;
  }
  if (IsIntervalFunction(n)) {
    *out = IntervalValueType(n == "NUMTOYMINTERVAL" || n == "TO_YMINTERVAL", 9, 9);
    return true;
  }
  if (n == "TO_DATE" || n == "SYSDATE" || n == "CURRENT_DATE" || n == "ADD_MONTHS" ||
      n == "LAST_DAY") {
    *out = DateType();
    return true;
  }
  if (n == "UPPER" || n == "LOWER" || n == "SUBSTR" || n == "TRIM" || n == "LTRIM" ||
      n == "RTRIM" || n == "REPLACE" || n == "CONCAT" || n == "TO_CHAR" || n == "LPAD" ||
      n == "RPAD") {
    ub4 length = args.empty() ? 0 : TextLength(args[0]);
    if (n == "CONCAT" && args.size() > 1) length += TextLength(args[1]);
    if (n == "REPLACE" || n == "LPAD" || n == "RPAD") length = 4000;
    *out = TextType(length);
    if ((n == "UPPER" || n == "LOWER") && !args.empty() && args[0].kind == ValueKind::kString) {
      *out = args[0];
    }
    return true;
  }
  *out = NumberType();
  return true;
}

bool ExprType(const ExecContext& ctx, const Table& table, const TableRef& ref, const Expr& e,
              ValueType* out, SqlError* error) {
  if (!e.path.empty() && (e.kind == Expr::Kind::kColumn || e.kind == Expr::Kind::kValue)) {
    ColumnPlace place;
    if (!ResolvePlace(table, ref, e, &place, error)) return false;
    *out = place.attr.type;
    return true;
  }
  switch (e.kind) {
    case Expr::Kind::kColumn: {
      size_t pos = 0;
      if (!ResolveColumn(table, ref, e, &pos, error)) return false;
      *out = table.columns()[pos].type;
      return true;
    }
    case Expr::Kind::kValue: {
      Projection p;
      if (!ProjectItem(ctx, table, ref, e, &p, error)) return false;
      *out = p.type;
      return true;
    }
    case Expr::Kind::kUnary:
      if (!ExprType(ctx, table, ref, e.args[0], out, error)) return false;
      if (out->kind != ValueKind::kInterval) *out = NumberType();
      return true;
    case Expr::Kind::kTimeLiteral:
      TimeLiteralType(e, out);
      return true;
    case Expr::Kind::kNumber:
    case Expr::Kind::kRownum:
    case Expr::Kind::kSequence:
      *out = NumberType();
      return true;
    case Expr::Kind::kNull:
      *out = TextType(0);
      return true;
    case Expr::Kind::kString: {
      *out = TextType(static_cast<ub4>(e.text.size()));
      out->typecode = e.text.empty() ? OCI_TYPECODE_VARCHAR2 : OCI_TYPECODE_CHAR;
      return true;
    }
    case Expr::Kind::kBinary: {
      ValueType a;
      ValueType b;
      if (!ExprType(ctx, table, ref, e.args[0], &a, error) ||
          !ExprType(ctx, table, ref, e.args[1], &b, error)) {
        return false;
      }
      if (e.text == "||") {
        *out = TextType(TextLength(a) + TextLength(b));
        return true;
      }
      if (DateTimeArithmeticType(a, b, out)) return true;
      bool ta = a.kind == ValueKind::kDateTime;
      bool tb = b.kind == ValueKind::kDateTime;
      bool da = a.kind == ValueKind::kDate || ta;
      bool db = b.kind == ValueKind::kDate || tb;
      if ((ta || tb) && da && db && e.text == "-") {
        out->kind = ValueKind::kInterval;
        out->typecode = OCI_TYPECODE_INTERVAL_DS;
        out->descriptor_type = OCI_DTYPE_INTERVAL_DS;
        out->leading_precision = 9;
        out->fraction_precision = 9;
        return true;
      }
      *out = (da != db && (e.text == "+" || e.text == "-")) ? DateType() : NumberType();
      return true;
    }
    case Expr::Kind::kCase: {
      size_t first = e.has_operand ? 2 : 1;
      for (size_t i = first; i < e.args.size(); i += 2) {
        if (!IsNullLiteral(e.args[i])) return ExprType(ctx, table, ref, e.args[i], out, error);
      }
      if (e.has_else && !IsNullLiteral(e.args.back())) {
        return ExprType(ctx, table, ref, e.args.back(), out, error);
      }
      *out = TextType(0);
      return true;
    }
    case Expr::Kind::kFunction:
      return FunctionType(ctx, table, ref, e, out, error);
    case Expr::Kind::kAggregate:
      if ((e.text == "MIN" || e.text == "MAX") && !e.args.empty()) {
        return ExprType(ctx, table, ref, e.args[0], out, error);
      }
      *out = NumberType();
      return true;
    default: {
      // Binds and the other operands: the type of their value.
      Value v;
      RowScope none;
      if (!EvalExpr(ctx, none, e, &v, error)) return false;
      switch (v.kind) {
        case Value::Kind::kNumber:
          *out = NumberType();
          return true;
        case Value::Kind::kDate:
          *out = DateType();
          return true;
        case Value::Kind::kNull:
        case Value::Kind::kText:
          *out = TextType(4000);
          return true;
        case Value::Kind::kRaw:
          out->kind = ValueKind::kRaw;
          out->typecode = OCI_TYPECODE_RAW;
          out->length = 2000;
          return true;
        case Value::Kind::kDateTime:
          *out = DateTimeValueType(v.desc_type, 9);
          return true;
        case Value::Kind::kInterval:
          *out = IntervalValueType(v.desc_type == OCI_DTYPE_INTERVAL_YM, 9, 9);
          return true;
        default:
          return Inconsistent("-", v, error);
      }
    }
  }
}

}  // namespace ocimem
