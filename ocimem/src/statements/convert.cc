#include "statements/convert.h"

#include <cctype>
#include <cstring>
#include <limits>
#include <new>
#include <vector>

#include "statements/buffer_layout.h"
#include "collections/coll.h"
#include "lob/lob.h"
#include "lob/lob_data.h"
#include "session/session_nls.h"
#include "sql/sql_time.h"
#include "objects/value_descriptors.h"
#include "objects/value_slot.h"
#include "objects/walk.h"
#include "values/date_format.h"
#include "values/number.h"
#include "values/oci_common.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

using values::Decimal;
using values::NumberError;

bool Inconsistent(SqlError* error, const std::string& expected, const std::string& got) {
  return SetError(error, 932, "inconsistent datatypes: expected " + expected + " got " + got);
}

bool EncodeDecimal(const Decimal& d, OCINumber* out) {
  std::memset(out, 0, sizeof *out);
  return values::EncodeNumber(d, out->OCINumberPart) == NumberError::None;
}

}  // namespace

size_t DateMaskText(const OCIDate& d, std::string* out) {
  const values::DateMask* mask = nullptr;
  if (values::CachedDateMask(CurrentNls().date_format, &mask) != 0) return 0;
  values::DateTimeFields v;
  v.year = d.OCIDateYYYY;
  v.month = d.OCIDateMM;
  v.day = d.OCIDateDD;
  v.hour = d.OCIDateTime.OCITimeHH;
  v.minute = d.OCIDateTime.OCITimeMI;
  v.second = d.OCIDateTime.OCITimeSS;
  if (values::FormatDateTime(*mask, v, false, 0, nullptr, out) != 0) return 0;
  return out->size();
}

namespace {

bool DateFromText(const std::string& text, OCIDate* out, SqlError* error) {
  const values::DateMask* mask = nullptr;
  if (int ora = values::CachedDateMask(CurrentNls().date_format, &mask)) {
    return SetError(error, ora, values::DateErrorText(ora));
  }
  values::DateParseOptions options;
  options.current_year = values::CurrentYear();
  options.current_month = values::CurrentMonth();
  values::DateTimeFields v;
  if (int ora = values::ParseDateTime(text, *mask, options, &v, nullptr)) {
    return SetError(error, ora, values::DateErrorText(ora));
  }
  std::memset(out, 0, sizeof *out);
  out->OCIDateYYYY = static_cast<sb2>(v.year);
  out->OCIDateMM = static_cast<ub1>(v.month);
  out->OCIDateDD = static_cast<ub1>(v.day);
  out->OCIDateTime.OCITimeHH = static_cast<ub1>(v.hour);
  out->OCIDateTime.OCITimeMI = static_cast<ub1>(v.minute);
  out->OCIDateTime.OCITimeSS = static_cast<ub1>(v.second);
  return true;
}

}  // namespace

std::string HexText(const std::string& bytes) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  for (unsigned char c : bytes) {
    out.push_back(kHex[c >> 4]);
    out.push_back(kHex[c & 15]);
  }
  return out;
}

namespace {

bool RawFromHex(const std::string& text, std::string* out, SqlError* error) {
  auto digit = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
  };
  out->clear();
  size_t i = text.size() % 2;  // an odd count has an implicit leading 0
  if (i == 1) {
    int d = digit(text[0]);
    if (d < 0) return SetError(error, 1465, "invalid hex number");
    out->push_back(static_cast<char>(d));
  }
  for (; i < text.size(); i += 2) {  // pairs remain
    int hi = digit(text[i]);
    int lo = digit(text[i + 1]);
    if (hi < 0 || lo < 0) return SetError(error, 1465, "invalid hex number");
    out->push_back(static_cast<char>(hi * 16 + lo));
  }
  return true;
}

}  // namespace

std::string NumberText(const OCINumber& n) {
  Decimal d;
  if (values::DecodeNumber(n.OCINumberPart, &d) != NumberError::None) return "";
  return values::DecimalToPlainText(d);
}

ub4 DescriptorTypeOfDty(ub2 dty) {
  switch (dty) {
    case SQLT_TIMESTAMP:
      return OCI_DTYPE_TIMESTAMP;
    case SQLT_TIMESTAMP_TZ:
      return OCI_DTYPE_TIMESTAMP_TZ;
    case SQLT_TIMESTAMP_LTZ:
      return OCI_DTYPE_TIMESTAMP_LTZ;
    case SQLT_INTERVAL_YM:
      return OCI_DTYPE_INTERVAL_YM;
    case SQLT_INTERVAL_DS:
      return OCI_DTYPE_INTERVAL_DS;
    default:
      return 0;
  }
}

namespace {

// Rounds a number to the scale of its column and checks the precision.
bool FitNumber(const ValueType& t, OCINumber* n, bool* fits) {
  *fits = true;
  if (t.precision <= 0 || t.scale == -127) return true;
  Decimal d;
  if (values::DecodeNumber(n->OCINumberPart, &d) != NumberError::None) return false;
  Decimal r = values::RoundToFraction(d, t.scale);
  if (!r.IsZero() && r.exponent > t.precision - t.scale) {
    *fits = false;
    return true;
  }
  return EncodeDecimal(r, n);
}

size_t CharCount(const std::string& s) {
  size_t n = 0;
  for (unsigned char c : s) {
    if ((c & 0xc0) != 0x80) ++n;
  }
  return n;
}

bool ValueTooLarge(const Target& target, size_t actual, size_t maximum, SqlError* error) {
  return SetError(error, 12899,
                  "value too large for column \"" + target.schema + "\".\"" + target.table +
                      "\".\"" + target.column + "\" (actual: " + std::to_string(actual) +
                      ", maximum: " + std::to_string(maximum) + ")");
}

}  // namespace

bool NumberFromText(const std::string& raw, OCINumber* out) {
  size_t b = raw.find_first_not_of(" \t\n\r");
  if (b == std::string::npos) return false;
  size_t e = raw.find_last_not_of(" \t\n\r");
  std::string text = raw.substr(b, e - b + 1);
  size_t i = 0;
  Decimal d;
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) d.negative = text[i++] == '-';
  std::string digits;
  int point = -1;
  bool any = false;
  for (; i < text.size(); ++i) {
    char c = text[i];
    if (std::isdigit(static_cast<unsigned char>(c)) != 0) {
      digits.push_back(c);
      any = true;
    } else if (c == '.' && point < 0) {
      point = static_cast<int>(digits.size());
    } else {
      break;
    }
  }
  if (!any) return false;
  long exponent = 0;
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    ++i;
    bool neg = false;
    if (i < text.size() && (text[i] == '-' || text[i] == '+')) neg = text[i++] == '-';
    if (i >= text.size()) return false;
    for (; i < text.size() && std::isdigit(static_cast<unsigned char>(text[i])) != 0; ++i) {
      exponent = exponent * 10 + (text[i] - '0');
      if (exponent > 100000) return false;
    }
    if (neg) exponent = -exponent;
  }
  if (i != text.size()) return false;
  d.digits = digits;
  d.exponent = static_cast<int>((point < 0 ? static_cast<long>(digits.size()) : point) + exponent);
  values::Normalize(&d);
  return EncodeDecimal(d, out);
}

std::string TypeName(const ValueType& t) {
  switch (t.kind) {
    case ValueKind::kNumber:
      return "NUMBER";
    case ValueKind::kDate:
      return "DATE";
    case ValueKind::kString:
      return "CHAR";
    case ValueKind::kRaw:
      return "BINARY";
    case ValueKind::kRef:
      return "REF";
    case ValueKind::kLob:
      return t.typecode == OCI_TYPECODE_BLOB    ? "BLOB"
             : t.typecode == OCI_TYPECODE_BFILE ? "FILE"
                                                : "CLOB";
    case ValueKind::kDateTime:
      return t.typecode == OCI_TYPECODE_TIMESTAMP_TZ    ? "TIMESTAMP WITH TIME ZONE"
             : t.typecode == OCI_TYPECODE_TIMESTAMP_LTZ ? "TIMESTAMP WITH LOCAL TIME ZONE"
                                                        : "TIMESTAMP";
    case ValueKind::kInterval:
      return t.typecode == OCI_TYPECODE_INTERVAL_YM ? "INTERVAL YEAR TO MONTH"
                                                    : "INTERVAL DAY TO SECOND";
    case ValueKind::kObject:
    case ValueKind::kCollection:
      return t.named ? t.named->schema + "." + t.named->name : "-";
  }
  return "-";
}

std::string ValueKindName(const Value& v) {
  switch (v.kind) {
    case Value::Kind::kNull:
      return "-";
    case Value::Kind::kNumber:
      return "NUMBER";
    case Value::Kind::kText:
      return "CHAR";
    case Value::Kind::kRaw:
      return "BINARY";
    case Value::Kind::kDate:
      return "DATE";
    case Value::Kind::kDateTime:
      return v.desc_type == OCI_DTYPE_TIMESTAMP_TZ    ? "TIMESTAMP WITH TIME ZONE"
             : v.desc_type == OCI_DTYPE_TIMESTAMP_LTZ ? "TIMESTAMP WITH LOCAL TIME ZONE"
                                                      : "TIMESTAMP";
    case Value::Kind::kInterval:
      return v.desc_type == OCI_DTYPE_INTERVAL_YM ? "INTERVAL YEAR TO MONTH"
                                                  : "INTERVAL DAY TO SECOND";
    case Value::Kind::kLob: {
      const OCILobLocator* l = AsLocator(v.handle);
      return l != nullptr && l->lob_type == OCI_TYPECODE_BLOB ? "BLOB" : "CLOB";
    }
    case Value::Kind::kEmptyClob:
      return "CLOB";
    case Value::Kind::kEmptyBlob:
      return "BLOB";
    case Value::Kind::kObject:
    case Value::Kind::kCollection:
      return v.tdo != nullptr ? v.tdo->schema + "." + v.tdo->name : "-";
  }
  return "-";
}

bool ValueFromLiteral(const Expr& expr, Value* out, SqlError* error) {
  *out = Value();
  switch (expr.kind) {
    case Expr::Kind::kNull:
      return true;
    case Expr::Kind::kNumber:
      out->kind = Value::Kind::kNumber;
      if (!NumberFromText(expr.text, &out->number)) return SetError(error, 1722, "invalid number");
      return true;
    case Expr::Kind::kString:
      // A zero-length string is NULL.
      if (expr.text.empty()) return true;
      out->kind = Value::Kind::kText;
      out->bytes = expr.text;
      return true;
    case Expr::Kind::kEmptyClob:
      out->kind = Value::Kind::kEmptyClob;
      return true;
    case Expr::Kind::kEmptyBlob:
      out->kind = Value::Kind::kEmptyBlob;
      return true;
    default:
      return SetError(error, 936, "missing expression");
  }
}

bool StoreValue(const Value& v, const ValueType& t, void* slot, OCIInd* ind, const Target& target,
                SqlError* error) {
  if (v.kind == Value::Kind::kNull) {
    SetNullInfo(t, ind, OCI_IND_NULL);
    return true;
  }
  auto mismatch = [&]() { return Inconsistent(error, TypeName(t), ValueKindName(v)); };
  switch (t.kind) {
    case ValueKind::kNumber: {
      OCINumber n;
      if (v.kind == Value::Kind::kNumber) {
        n = v.number;
      } else if (v.kind == Value::Kind::kText) {
        if (!NumberFromText(v.bytes, &n)) return SetError(error, 1722, "invalid number");
      } else {
        return mismatch();
      }
      bool fits = true;
      if (!FitNumber(t, &n, &fits)) return SetError(error, 1722, "invalid number");
      if (!fits) {
        return SetError(error, 1438,
                        "value larger than specified precision allowed for this column");
      }
      std::memcpy(slot, &n, sizeof n);
      *ind = OCI_IND_NOTNULL;
      return true;
    }
    case ValueKind::kString: {
      std::string text;
      if (v.kind == Value::Kind::kText) {
        text = v.bytes;
      } else if (v.kind == Value::Kind::kNumber) {
        text = NumberText(v.number);
      } else if (v.kind == Value::Kind::kDate) {
        DateMaskText(v.date, &text);
      } else if (v.kind == Value::Kind::kRaw) {
        text = HexText(v.bytes);
      } else if (v.kind == Value::Kind::kDateTime || v.kind == Value::Kind::kInterval) {
        // Their text in the session's formats, as TO_CHAR without a mask writes it.
        int leading = v.leading_precision != 0 ? v.leading_precision : 2;
        int fraction = v.fraction_precision != 0 ? v.fraction_precision : 6;
        if (int ora = DescriptorText(v.handle, leading, fraction, &text)) {
          return SetError(error, ora, values::DateErrorText(ora));
        }
      } else {
        return mismatch();
      }
      size_t actual = t.char_semantics ? CharCount(text) : text.size();
      if (t.length > 0 && actual > t.length) return ValueTooLarge(target, actual, t.length, error);
      // CHAR values are blank-padded to the column's length.
      if (t.typecode == OCI_TYPECODE_CHAR && t.length > 0) text.append(t.length - actual, ' ');
      if (!AssignVarBlock(nullptr, text.data(), static_cast<ub4>(text.size()),
                          static_cast<void**>(slot))) {
        return SetError(error, 4030, "out of process memory");
      }
      *ind = OCI_IND_NOTNULL;
      return true;
    }
    case ValueKind::kRaw: {
      std::string bytes;
      if (v.kind == Value::Kind::kRaw) {
        bytes = v.bytes;
      } else if (v.kind == Value::Kind::kText) {
        if (!RawFromHex(v.bytes, &bytes, error)) return false;
      } else {
        return mismatch();
      }
      if (t.length > 0 && bytes.size() > t.length) {
        return ValueTooLarge(target, bytes.size(), t.length, error);
      }
      if (!AssignVarBlock(nullptr, bytes.data(), static_cast<ub4>(bytes.size()),
                          static_cast<void**>(slot))) {
        return SetError(error, 4030, "out of process memory");
      }
      *ind = OCI_IND_NOTNULL;
      return true;
    }
    case ValueKind::kDate: {
      OCIDate d;
      if (v.kind == Value::Kind::kDate) {
        d = v.date;
      } else if (v.kind == Value::Kind::kText) {
        if (!DateFromText(v.bytes, &d, error)) return false;
      } else {
        return mismatch();
      }
      std::memcpy(slot, &d, sizeof d);
      *ind = OCI_IND_NOTNULL;
      return true;
    }
    case ValueKind::kDateTime:
    case ValueKind::kInterval: {
      bool kind_ok = (t.kind == ValueKind::kDateTime && v.kind == Value::Kind::kDateTime) ||
                     (t.kind == ValueKind::kInterval && v.kind == Value::Kind::kInterval);
      if (!kind_ok || v.desc_type != t.descriptor_type) return mismatch();
      if (AssignSlot(nullptr, t, slot, v.handle) != AssignResult::kOk) return mismatch();
      *ind = OCI_IND_NOTNULL;
      return true;
    }
    case ValueKind::kLob: {
      OCILobLocator* dst = *static_cast<OCILobLocator**>(slot);
      bool blob = t.typecode == OCI_TYPECODE_BLOB;
      if (v.kind == Value::Kind::kEmptyClob || v.kind == Value::Kind::kEmptyBlob) {
        if ((v.kind == Value::Kind::kEmptyBlob) != blob) return mismatch();
        dst->state = LobState::kNewInstance;
        dst->cell.reset();
      } else if (v.kind == Value::Kind::kLob) {
        const OCILobLocator* src = AsLocator(v.handle);
        if ((src->lob_type == OCI_TYPECODE_BLOB) != blob) return mismatch();
        CopyLocator(*src, dst);
      } else if ((v.kind == Value::Kind::kText && !blob) || (v.kind == Value::Kind::kRaw && blob)) {
        // Character or binary data into a LOB: a temporary-like cell with the bytes.
        auto cell = std::make_shared<LobCell>();
        cell->clob = !blob;
        cell->data = v.bytes;
        dst->state = LobState::kTemporary;
        dst->cell = std::move(cell);
      } else {
        return mismatch();
      }
      dst->lob_type = t.typecode;
      dst->csfrm = CharsetFormOf(t.typecode, t.charset_form);
      *ind = OCI_IND_NOTNULL;
      return true;
    }
    case ValueKind::kObject: {
      if (v.kind != Value::Kind::kObject || v.tdo != t.named.get()) return mismatch();
      if (AssignSlot(nullptr, t, slot, v.handle) != AssignResult::kOk) {
        return SetError(error, 4030, "out of process memory");
      }
      if (v.ind != nullptr) {
        std::memcpy(ind, v.ind, t.named->ind_size);
      } else {
        SetNullInfo(t, ind, OCI_IND_NOTNULL);
      }
      return FitNestedValues(t, slot, ind, error);
    }
    case ValueKind::kCollection: {
      if (v.kind != Value::Kind::kCollection || v.tdo != t.named.get()) return mismatch();
      if (AssignSlot(nullptr, t, slot, v.handle) != AssignResult::kOk) return mismatch();
      *ind = v.ind != nullptr ? *v.ind : OCI_IND_NOTNULL;
      return FitNestedValues(t, slot, ind, error);
    }
    case ValueKind::kRef:
      return mismatch();
  }
  return mismatch();
}

namespace {

bool TooLarge(SqlError* error) {
  return SetError(error, 22814, "attribute or element value is larger than specified in type");
}

// FitNestedValues of anything but an embedded object; a collection is queued in `colls`
// rather than walked.
bool FitLeaf(const ValueType& t, void* slot, const OCIInd* ind, std::vector<OCIColl*>* colls,
             SqlError* error) {
  switch (t.kind) {
    case ValueKind::kString:
    case ValueKind::kRaw: {
      if (*ind == OCI_IND_NULL || t.length == 0) return true;
      void** value = static_cast<void**>(slot);
      if (*value == nullptr) return true;
      std::string bytes(reinterpret_cast<const char*>(VarBytes(*value)), VarLength(*value));
      size_t actual =
          t.kind == ValueKind::kString && t.char_semantics ? CharCount(bytes) : bytes.size();
      if (actual > t.length) return TooLarge(error);
      if (t.kind == ValueKind::kString && t.typecode == OCI_TYPECODE_CHAR && actual < t.length) {
        bytes.append(t.length - actual, ' ');
        if (!AssignVarBlock(nullptr, bytes.data(), static_cast<ub4>(bytes.size()), value)) {
          return SetError(error, 4030, "out of process memory");
        }
      }
      return true;
    }
    case ValueKind::kNumber: {
      if (*ind == OCI_IND_NULL) return true;
      OCINumber n;
      std::memcpy(&n, slot, sizeof n);
      bool fits = true;
      FitNumber(t, &n, &fits);
      return fits || TooLarge(error);
    }
    case ValueKind::kCollection: {
      OCIColl* coll = *static_cast<OCIColl**>(slot);
      if (*ind == OCI_IND_NULL || coll == nullptr) return true;
      try {
        colls->push_back(coll);
      } catch (const std::bad_alloc&) {
        return SetError(error, 4030, "out of process memory");
      }
      return true;
    }
    default:
      return true;
  }
}

// FitNestedValues of one value, with the collections in it queued in `colls`.
bool FitValue(const ValueType& t, void* slot, const OCIInd* ind, std::vector<OCIColl*>* colls,
              SqlError* error) {
  if (t.kind != ValueKind::kObject) return FitLeaf(t, slot, ind, colls, error);
  if (ind[0] == OCI_IND_NULL) return true;
  WalkPlace at;
  at.slot = static_cast<unsigned char*>(slot);
  at.ind = const_cast<OCIInd*>(ind);  // read only
  return WalkObject(
      *t.named, at,
      [](const Attribute&, WalkPlace& p) {
        return p.ind[0] == OCI_IND_NULL ? WalkStep::kOver : WalkStep::kInto;
      },
      [&](const Attribute& a, const WalkPlace& p) {
        return FitLeaf(a.type, p.slot, p.ind, colls, error);
      });
}

}  // namespace

bool FitNestedValues(const ValueType& t, void* slot, const OCIInd* ind, SqlError* error) {
  std::vector<OCIColl*> colls;
  if (!FitValue(t, slot, ind, &colls, error)) return false;
  while (!colls.empty()) {
    OCIColl* coll = colls.back();
    colls.pop_back();
    if (coll->type->max_elements > 0 &&
        coll->size() > static_cast<size_t>(coll->type->max_elements)) {
      return SetError(error, 22909, "exceeded maximum VARRAY limit");
    }
    for (size_t i = 0; i < coll->size(); ++i) {
      if (!FitValue(coll->element_type(), coll->ValueAt(i), coll->IndAt(i), &colls, error)) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace ocimem
