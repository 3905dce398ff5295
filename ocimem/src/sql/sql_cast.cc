// CAST(expr AS type): a value converted to a NUMBER (rounded to its scale, ORA-01438 past its
// precision), a character type (trailing blanks past its length dropped, ORA-25137 for
// anything else past it; CHAR blank-padded),
// DATE, a datetime type or an interval type.  Other target types are ORA-00932.
#include <cstring>

#include "sql/sql_expr.h"
#include "sql/sql_time.h"
#include "values/descriptor.h"

namespace ocimem {
namespace {

size_t Characters(const std::string& s) {
  size_t n = 0;
  for (unsigned char c : s) n += (c & 0xC0) != 0x80 ? 1 : 0;
  return n;
}

}  // namespace

bool CastType(const ExecContext& ctx, const DataTypeSpec& type, ValueType* out,
              SqlError* error) {
  if (type.base == DataTypeSpec::Base::kNamed || type.base == DataTypeSpec::Base::kRef) {
    // Object and collection types take constructors, not CAST.
    return SetError(error, 932, "inconsistent datatypes: expected - got -");
  }
  return ResolveType(ctx, type, ctx.schema, "", out, error);
}

bool CastValue(const ExecContext& ctx, const DataTypeSpec& type, const Value& v, Value* out,
               SqlError* error) {
  ValueType t;
  if (!CastType(ctx, type, &t, error)) return false;
  switch (t.kind) {
    case ValueKind::kNumber: {
      values::Decimal d;
      if (!ToNumber(v, &d, error) || !NumberValue(d, out, error)) return false;
      // The column rules: rounded to the scale, ORA-01438 past the precision.
      OCINumber n;
      OCIInd ind = OCI_IND_NULL;
      if (!StoreValue(*out, t, &n, &ind, Target(), error)) return false;
      out->number = n;
      return true;
    }
    case ValueKind::kString: {
      std::string text;
      if (!ToText(v, &text, error)) return false;
      bool chars = t.char_semantics || t.charset_form == SQLCS_NCHAR;
      size_t length = chars ? Characters(text) : text.size();
      // Trailing blanks beyond the length are dropped; anything else does not fit.
      while (t.length > 0 && length > t.length && !text.empty() && text.back() == ' ') {
        text.pop_back();
        --length;
      }
      if (t.length > 0 && length > t.length) {
        return SetError(error, 25137, "Data value out of range");
      }
      bool fixed = t.typecode == OCI_TYPECODE_CHAR;
      if (fixed && t.length > length) text.append(t.length - length, ' ');
      TextValue(text, out);
      out->fixed_char = fixed;
      return true;
    }
    case ValueKind::kDate: {
      if (v.kind == Value::Kind::kDateTime) {
        const values::DateTimeDescriptor* d = values::AsDateTime(v.handle);
        if (d == nullptr) return Inconsistent("DATE", v, error);
        *out = Value();
        out->kind = Value::Kind::kDate;
        out->date.OCIDateYYYY = static_cast<sb2>(d->value.year);
        out->date.OCIDateMM = static_cast<ub1>(d->value.month);
        out->date.OCIDateDD = static_cast<ub1>(d->value.day);
        out->date.OCIDateTime.OCITimeHH = static_cast<ub1>(d->value.hour);
        out->date.OCIDateTime.OCITimeMI = static_cast<ub1>(d->value.minute);
        out->date.OCIDateTime.OCITimeSS = static_cast<ub1>(d->value.second);
        return true;
      }
      *out = Value();
      out->kind = Value::Kind::kDate;
      return ToDate(v, &out->date, error);
    }
    case ValueKind::kDateTime: {
      *out = v;
      if (!FitDateTime(ctx, t, out, error)) return false;
      if (out->kind != Value::Kind::kDateTime) return Inconsistent(TypeName(t), v, error);
      return true;
    }
    case ValueKind::kInterval: {
      // An interval of the type's kind, or text read as one, fitted to its precisions.
      *out = v;
      if (!FitInterval(ctx, t, out, error)) return false;
      if (out->kind != Value::Kind::kInterval || out->desc_type != t.descriptor_type) {
        return Inconsistent(TypeName(t), v, error);
      }
      return true;
    }
    default:
      return Inconsistent(TypeName(t), v, error);
  }
}

}  // namespace ocimem
