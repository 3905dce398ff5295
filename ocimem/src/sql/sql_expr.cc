// Values of expressions: columns, operators with Oracle's datatype rules, CASE.
#include "sql/sql_expr.h"

#include <cmath>
#include <cstring>

#include "objects/value_slot.h"
#include "sql/sql_rows.h"
#include "sql/sql_time.h"
#include "values/calendar.h"
#include "values/date_format.h"
#include "values/datetime.h"
#include "values/descriptor.h"
#include "session/session_nls.h"
#include "values/number_arith.h"

namespace ocimem {

using values::Decimal;

bool IsNull(const Value& v) { return v.kind == Value::Kind::kNull; }

bool Inconsistent(const std::string& expected, const Value& got, SqlError* error) {
  return SetError(error, 932,
                  "inconsistent datatypes: expected " + expected + " got " + ValueKindName(got));
}

bool HasAggregate(const Expr& e) {
  if (e.kind == Expr::Kind::kAggregate) return true;
  for (const Expr& a : e.args) {
    if (HasAggregate(a)) return true;
  }
  return false;
}

void TextValue(std::string text, Value* out) {
  *out = Value();
  if (text.empty()) return;  // a zero-length string is NULL
  out->kind = Value::Kind::kText;
  out->bytes = std::move(text);
}

bool NumberValue(const Decimal& d, Value* out, SqlError* error) {
  *out = Value();
  out->kind = Value::Kind::kNumber;
  std::memset(&out->number, 0, sizeof out->number);
  if (values::EncodeNumber(d, out->number.OCINumberPart) != values::NumberError::None) {
    return SetError(error, 1426, "numeric overflow");
  }
  return true;
}

bool ToNumber(const Value& v, Decimal* out, SqlError* error) {
  OCINumber n;
  if (v.kind == Value::Kind::kNumber) {
    n = v.number;
  } else if (v.kind == Value::Kind::kText) {
    if (!NumberFromText(v.bytes, &n)) return SetError(error, 1722, "invalid number");
  } else {
    return Inconsistent("NUMBER", v, error);
  }
  if (values::DecodeNumber(n.OCINumberPart, out) != values::NumberError::None) {
    return SetError(error, 1722, "invalid number");
  }
  return true;
}

bool ToText(const Value& v, std::string* out, SqlError* error) {
  switch (v.kind) {
    case Value::Kind::kNull:
      out->clear();
      return true;
    case Value::Kind::kText:
      *out = v.bytes;
      return true;
    case Value::Kind::kNumber:
      *out = NumberText(v.number);
      return true;
    case Value::Kind::kDate:
      out->clear();
      DateMaskText(v.date, out);
      return true;
    case Value::Kind::kRaw:
      *out = HexText(v.bytes);
      return true;
    case Value::Kind::kDateTime:
    case Value::Kind::kInterval: {
      // The text of the value's type; precisions not known: DAY(2), six digits (IV8).
      out->clear();
      int leading = v.leading_precision != 0 ? v.leading_precision : 2;
      int fraction = v.fraction_precision != 0 ? v.fraction_precision : 6;
      if (int ora = DescriptorText(v.handle, leading, fraction, out)) {
        return SetError(error, ora, values::DateErrorText(ora));
      }
      return true;
    }
    default:
      return Inconsistent("CHAR", v, error);
  }
}

bool ToDate(const Value& v, OCIDate* out, SqlError* error) {
  if (v.kind == Value::Kind::kDate) {
    *out = v.date;
    return true;
  }
  if (v.kind != Value::Kind::kText) return Inconsistent("DATE", v, error);
  ValueType t;
  t.kind = ValueKind::kDate;
  t.typecode = OCI_TYPECODE_DATE;
  OCIInd ind = OCI_IND_NULL;
  return StoreValue(v, t, out, &ind, Target(), error);
}

void ColumnValue(const Attribute& a, const RowData& row, Value* out) {
  *out = Value();
  const unsigned char* slot = SlotAt(row, a);
  if (*IndAt(row, a.ind_offset) == OCI_IND_NULL) return;
  const ValueType& t = a.type;
  switch (t.kind) {
    case ValueKind::kNumber:
      out->kind = Value::Kind::kNumber;
      std::memcpy(&out->number, slot, sizeof out->number);
      return;
    case ValueKind::kDate:
      out->kind = Value::Kind::kDate;
      std::memcpy(&out->date, slot, sizeof out->date);
      return;
    case ValueKind::kString:
    case ValueKind::kRaw:
      out->kind = t.kind == ValueKind::kString ? Value::Kind::kText : Value::Kind::kRaw;
      out->bytes = KeyText(t, slot);
      out->fixed_char = t.typecode == OCI_TYPECODE_CHAR;
      if (out->bytes.empty()) *out = Value();
      return;
    case ValueKind::kLob:
      out->kind = Value::Kind::kLob;
      out->handle = *reinterpret_cast<void* const*>(slot);
      return;
    case ValueKind::kDateTime:
    case ValueKind::kInterval:
      out->kind = t.kind == ValueKind::kDateTime ? Value::Kind::kDateTime
                                                 : Value::Kind::kInterval;
      out->handle = *reinterpret_cast<void* const*>(slot);
      out->desc_type = t.descriptor_type;
      out->leading_precision = t.leading_precision;
      out->fraction_precision = t.fraction_precision;
      return;
    case ValueKind::kObject:
    case ValueKind::kCollection:
    case ValueKind::kRef:
      out->kind = t.kind == ValueKind::kCollection ? Value::Kind::kCollection
                                                   : Value::Kind::kObject;
      out->handle = t.kind == ValueKind::kCollection ? *reinterpret_cast<void* const*>(slot)
                                                     : static_cast<const void*>(slot);
      out->tdo = t.named.get();
      return;
  }
}

namespace {

std::int64_t DateSeconds(const OCIDate& d) {
  return values::ToEpochSeconds(d.OCIDateYYYY, d.OCIDateMM, d.OCIDateDD,
                                d.OCIDateTime.OCITimeHH, d.OCIDateTime.OCITimeMI,
                                d.OCIDateTime.OCITimeSS);
}

bool DateFromSeconds(std::int64_t s, Value* out, SqlError* error) {
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, se = 0;
  values::FromEpochSeconds(s, &y, &mo, &d, &h, &mi, &se);
  if (y < values::kMinYear || y > values::kMaxYear || y == 0) {
    return SetError(error, values::kOraBadYear, values::DateErrorText(values::kOraBadYear));
  }
  *out = Value();
  out->kind = Value::Kind::kDate;
  out->date.OCIDateYYYY = static_cast<sb2>(y);
  out->date.OCIDateMM = static_cast<ub1>(mo);
  out->date.OCIDateDD = static_cast<ub1>(d);
  out->date.OCIDateTime.OCITimeHH = static_cast<ub1>(h);
  out->date.OCIDateTime.OCITimeMI = static_cast<ub1>(mi);
  out->date.OCIDateTime.OCITimeSS = static_cast<ub1>(se);
  return true;
}

// A date moved by `days` (a fraction moves by seconds, rounded to the nearest second).
bool AddDays(const OCIDate& date, const Decimal& days, bool subtract, Value* out,
             SqlError* error) {
  Decimal seconds = values::MultiplyDecimals(days, Decimal{false, "864", 5});
  seconds = values::RoundToFraction(seconds, 0);
  std::int64_t s = 0;
  if (!values::DecimalToInt64(seconds, &s) || s > 400000000000LL || s < -400000000000LL) {
    return SetError(error, values::kOraBadYear, values::DateErrorText(values::kOraBadYear));
  }
  return DateFromSeconds(DateSeconds(date) + (subtract ? -s : s), out, error);
}

// Text converted to RAW: hexadecimal digits, two to a byte (ORA-01465 otherwise).
bool RawOfHex(const std::string& text, std::string* out, SqlError* error) {
  auto nibble = [](char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  out->clear();
  size_t i = text.size() % 2;  // an odd count has a leading 0 understood
  if (i == 1) {
    if (nibble(text[0]) < 0) return SetError(error, 1465, "invalid hex number");
    out->push_back(static_cast<char>(nibble(text[0])));
  }
  for (; i < text.size(); i += 2) {
    int hi = nibble(text[i]);
    int lo = nibble(text[i + 1]);
    if (hi < 0 || lo < 0) return SetError(error, 1465, "invalid hex number");
    out->push_back(static_cast<char>(hi * 16 + lo));
  }
  return true;
}

bool IsDateLike(const Value& v) { return v.kind == Value::Kind::kDate; }

bool NotNumeric(const Value& v) {
  return v.kind != Value::Kind::kNumber && v.kind != Value::Kind::kText &&
         v.kind != Value::Kind::kDate;
}

bool Arithmetic(const std::string& op, const Value& a, const Value& b, Value* out,
                SqlError* error) {
  if (NotNumeric(a)) return Inconsistent("NUMBER", a, error);
  if (NotNumeric(b)) return Inconsistent("NUMBER", b, error);
  if (IsDateLike(a) || IsDateLike(b)) {
    if (op == "*" || op == "/") return Inconsistent("NUMBER", IsDateLike(a) ? a : b, error);
    if (IsDateLike(a) && IsDateLike(b)) {
      if (op == "+") return SetError(error, 975, "date + date not allowed");
      // DATE - DATE: days, with the time of day as a fraction.
      Decimal seconds;
      values::DecimalFromInteger(DateSeconds(a.date) - DateSeconds(b.date), &seconds);
      Decimal days;
      values::DivideDecimals(seconds, Decimal{false, "864", 5}, &days);
      return NumberValue(days, out, error);
    }
    if (IsDateLike(b) && op == "-") return Inconsistent("NUMBER", b, error);
    const Value& date = IsDateLike(a) ? a : b;
    Decimal days;
    if (!ToNumber(IsDateLike(a) ? b : a, &days, error)) return false;
    return AddDays(date.date, days, op == "-", out, error);
  }
  Decimal x;
  Decimal y;
  if (!ToNumber(a, &x, error) || !ToNumber(b, &y, error)) return false;
  Decimal r;
  if (op == "+") {
    r = values::AddDecimals(x, y);
  } else if (op == "-") {
    r = values::SubtractDecimals(x, y);
  } else if (op == "*") {
    r = values::MultiplyDecimals(x, y);
  } else if (!values::DivideDecimals(x, y, &r)) {
    return SetError(error, 1476, "divisor is equal to zero");
  }
  return NumberValue(r, out, error);
}

}  // namespace

bool DateNumberArithmetic(const std::string& op, const Value& a, const Value& b, Value* out,
                          SqlError* error) {
  return Arithmetic(op, a, b, out, error);
}

namespace {

bool Concatenate(const Value& a, const Value& b, Value* out, SqlError* error) {
  std::string x;
  std::string y;
  for (const Value* v : {&a, &b}) {
    if (v->kind == Value::Kind::kLob || v->kind == Value::Kind::kObject ||
        v->kind == Value::Kind::kCollection) {
      return Inconsistent("CHAR", *v, error);
    }
  }
  if (!ToText(a, &x, error) || !ToText(b, &y, error)) return false;
  TextValue(x + y, out);
  return true;
}

bool EvalCase(const ExecContext& ctx, const RowScope& scope, const Expr& e, Value* out,
              SqlError* error) {
  size_t i = 0;
  Value operand;
  if (e.has_operand && !EvalExpr(ctx, scope, e.args[i++], &operand, error)) return false;
  size_t pairs_end = e.args.size() - (e.has_else ? 1 : 0);
  for (; i + 1 < pairs_end; i += 2) {
    bool hit = false;
    if (e.has_operand) {
      Value when;
      if (!EvalExpr(ctx, scope, e.args[i], &when, error)) return false;
      int cmp = 1;
      if (!IsNull(operand) && !IsNull(when) && !CompareValues(operand, when, &cmp, error)) {
        return false;
      }
      hit = !IsNull(operand) && !IsNull(when) && cmp == 0;
    } else {
      Truth t = Truth::kUnknown;
      if (!EvalCondition(ctx, scope, e.args[i], &t, error)) return false;
      hit = t == Truth::kTrue;
    }
    if (hit) return EvalExpr(ctx, scope, e.args[i + 1], out, error);
  }
  if (e.has_else) return EvalExpr(ctx, scope, e.args.back(), out, error);
  *out = Value();
  return true;
}

}  // namespace

bool EvalExpr(const ExecContext& ctx, const RowScope& scope, const Expr& e, Value* out,
              SqlError* error) {
  switch (e.kind) {
    case Expr::Kind::kColumn: {
      if (scope.table == nullptr || scope.row == nullptr) {
        return SetError(error, 984, "column not allowed here");
      }
      if (!e.path.empty()) return PathValue(*scope.table, *scope.ref, e, *scope.row, out, error);
      size_t pos = 0;
      if (!ResolveColumn(*scope.table, *scope.ref, e, &pos, error)) return false;
      ColumnValue(scope.table->columns()[pos], *scope.row, out);
      return true;
    }
    case Expr::Kind::kValue: {
      if (scope.table == nullptr || scope.row == nullptr) {
        return SetError(error, 984, "column not allowed here");
      }
      if (!e.path.empty()) return PathValue(*scope.table, *scope.ref, e, *scope.row, out, error);
      Projection p;
      if (!ProjectItem(ctx, *scope.table, *scope.ref, e, &p, error)) return false;
      *out = Value();
      out->kind = Value::Kind::kObject;
      out->handle = scope.row->value;
      out->ind = scope.row->ind;
      out->tdo = scope.table->row_type.get();
      return true;
    }
    case Expr::Kind::kRownum: {
      if (scope.rownum == 0)
        return SetError(error, 976, "Specified pseudocolumn or operator not allowed here.");
      Decimal d;
      values::DecimalFromUnsigned(scope.rownum, &d);
      return NumberValue(d, out, error);
    }
    case Expr::Kind::kUnary: {
      Value v;
      if (!EvalExpr(ctx, scope, e.args[0], &v, error)) return false;
      if (IsNull(v)) {
        *out = Value();
        return true;
      }
      if (v.kind == Value::Kind::kInterval && e.text == "-") {
        // Minus an interval: the interval with the other sign.
        const values::IntervalDescriptor* iv = values::AsInterval(v.handle);
        if (iv == nullptr) return Inconsistent("NUMBER", v, error);
        values::IntervalValue negated;
        negated.months = -iv->value.months;
        negated.seconds = -iv->value.seconds;
        negated.nanos = -iv->value.nanos;
        return MakeIntervalValue(ctx, iv->kind, negated, v.leading_precision,
                                 v.fraction_precision, out, error);
      }
      if (v.kind == Value::Kind::kInterval) {
        *out = v;
        return true;
      }
      Decimal d;
      if (!ToNumber(v, &d, error)) return false;
      if (e.text == "-" && !d.IsZero()) d.negative = !d.negative;
      return NumberValue(d, out, error);
    }
    case Expr::Kind::kBinary: {
      Value a;
      Value b;
      if (!EvalExpr(ctx, scope, e.args[0], &a, error) ||
          !EvalExpr(ctx, scope, e.args[1], &b, error)) {
        return false;
      }
      if (e.text == "||") return Concatenate(a, b, out, error);
      bool timed = a.kind == Value::Kind::kDateTime || b.kind == Value::Kind::kDateTime ||
                   a.kind == Value::Kind::kInterval || b.kind == Value::Kind::kInterval;
      if (IsNull(a) || IsNull(b)) {
        // NULL still has to be of a type the operator takes.
        if (!IsNull(a) && NotNumeric(a) && !timed) return Inconsistent("NUMBER", a, error);
        if (!IsNull(b) && NotNumeric(b) && !timed) return Inconsistent("NUMBER", b, error);
        *out = Value();
        return true;
      }
      if (timed) return DateTimeArithmetic(ctx, e.text, a, b, out, error);
      return Arithmetic(e.text, a, b, out, error);
    }
    case Expr::Kind::kCase:
      return EvalCase(ctx, scope, e, out, error);
    case Expr::Kind::kTimeLiteral:
      return TimeLiteralValue(ctx, e, out, error);
    case Expr::Kind::kFunction:
      return CallFunction(ctx, scope, e, out, error);
    case Expr::Kind::kAggregate: {
      if (scope.aggregates == nullptr) {
        return SetError(error, 934, "group function is not allowed here");
      }
      auto it = scope.aggregates->find(&e);
      if (it == scope.aggregates->end()) {
        return SetError(error, 934, "group function is not allowed here");
      }
      *out = it->second;
      return true;
    }
    case Expr::Kind::kCompare:
    case Expr::Kind::kIsNull:
    case Expr::Kind::kIn:
    case Expr::Kind::kBetween:
    case Expr::Kind::kLike:
    case Expr::Kind::kAnd:
    case Expr::Kind::kOr:
    case Expr::Kind::kNot:
      return SetError(error, 920, "invalid relational operator");
    case Expr::Kind::kConstructor: {
      const std::string schema = e.type.schema.empty() ? ctx.schema : e.type.schema;
      if (!ctx.db->catalog.FindType(schema, e.type.name)) {
        return SetError(error, 904, "\"" + e.type.name + "\": invalid identifier");
      }
      return Evaluate(ctx, e, out, error);
    }
    case Expr::Kind::kString:
      if (!Evaluate(ctx, e, out, error)) return false;
      out->fixed_char = true;  // a text literal is CHAR
      return true;
    case Expr::Kind::kBind: {
      if (!Evaluate(ctx, e, out, error)) return false;
      // A bind of the CHAR external types is CHAR; the others are VARCHAR2 (EX1).
      const BindHandle* b = BindForOccurrence(*ctx.stmt, e.bind);
      out->fixed_char = b != nullptr && (b->dty == SQLT_AFC || b->dty == SQLT_AVC);
      return true;
    }
    default:
      return Evaluate(ctx, e, out, error);
  }
}

bool CompareValues(const Value& a, const Value& b, int* out, SqlError* error) {
  auto timed = [](const Value& v) {
    return v.kind == Value::Kind::kDateTime || v.kind == Value::Kind::kInterval;
  };
  if (timed(a) || timed(b)) return CompareTimes(a, b, out, error);
  auto bad = [&](const Value& v) {
    return v.kind == Value::Kind::kLob || v.kind == Value::Kind::kObject ||
           v.kind == Value::Kind::kCollection || v.kind == Value::Kind::kEmptyClob ||
           v.kind == Value::Kind::kEmptyBlob || v.kind == Value::Kind::kDateTime ||
           v.kind == Value::Kind::kInterval;
  };
  if (bad(a)) return Inconsistent("-", a, error);
  if (bad(b)) return Inconsistent("-", b, error);
  if (a.kind == Value::Kind::kNumber || b.kind == Value::Kind::kNumber) {
    if (a.kind == Value::Kind::kDate) return Inconsistent("DATE", b, error);
    if (b.kind == Value::Kind::kDate) return Inconsistent("DATE", a, error);
    if (a.kind == Value::Kind::kRaw) return Inconsistent("NUMBER", a, error);
    if (b.kind == Value::Kind::kRaw) return Inconsistent("NUMBER", b, error);
    Decimal x;
    Decimal y;
    if (!ToNumber(a, &x, error) || !ToNumber(b, &y, error)) return false;
    *out = values::CompareDecimals(x, y);
    return true;
  }
  if (a.kind == Value::Kind::kDate || b.kind == Value::Kind::kDate) {
    if (a.kind == Value::Kind::kRaw) return Inconsistent("DATE", a, error);
    if (b.kind == Value::Kind::kRaw) return Inconsistent("DATE", b, error);
    OCIDate x;
    OCIDate y;
    if (!ToDate(a, &x, error) || !ToDate(b, &y, error)) return false;
    std::int64_t sx = DateSeconds(x);
    std::int64_t sy = DateSeconds(y);
    *out = sx < sy ? -1 : sx > sy ? 1 : 0;
    return true;
  }
  if (a.kind == Value::Kind::kRaw || b.kind == Value::Kind::kRaw) {
    std::string x = a.bytes;
    std::string y = b.bytes;
    if (a.kind == Value::Kind::kText && !RawOfHex(a.bytes, &x, error)) return false;
    if (b.kind == Value::Kind::kText && !RawOfHex(b.bytes, &y, error)) return false;
    int c = x.compare(y);
    *out = c < 0 ? -1 : c > 0 ? 1 : 0;
    return true;
  }
  std::string x = a.bytes;
  std::string y = b.bytes;
  if (a.fixed_char && b.fixed_char) {
    // Blank-padded comparison: the shorter value is padded with blanks.
    if (x.size() < y.size()) x.append(y.size() - x.size(), ' ');
    if (y.size() < x.size()) y.append(x.size() - y.size(), ' ');
  }
  int c = x.compare(y);
  *out = c < 0 ? -1 : c > 0 ? 1 : 0;
  return true;
}

}  // namespace ocimem
