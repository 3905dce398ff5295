// Writing fetched values into the buffers of scalar defines.
#include <cstdint>
#include <cstring>

#include "statements/buffer_layout.h"
#include "statements/convert.h"
#include "lob/lob.h"
#include "lob/lob_data.h"
#include "objects/value_descriptors.h"
#include "objects/value_slot.h"
#include "values/number.h"
#include "collections/var_block.h"
#include "sql/sql_time.h"
#include "values/date_format.h"

namespace ocimem {
namespace {

using values::Decimal;

template <typename T>
bool PutInteger(T v, unsigned char* p) {
  std::memcpy(p, &v, sizeof v);
  return true;
}

// Writes a number as a binary integer of `size` bytes; false when it does not fit.
bool WriteBinaryInteger(const Decimal& d, size_t size, bool is_signed, unsigned char* p) {
  if (is_signed) {
    std::int64_t v = 0;
    if (!values::DecimalToInt64(d, &v)) return false;
    switch (size) {
      case 1:
        return v >= INT8_MIN && v <= INT8_MAX && PutInteger(static_cast<std::int8_t>(v), p);
      case 2:
        return v >= INT16_MIN && v <= INT16_MAX && PutInteger(static_cast<std::int16_t>(v), p);
      case 4:
        return v >= INT32_MIN && v <= INT32_MAX && PutInteger(static_cast<std::int32_t>(v), p);
      default:
        return PutInteger(v, p);
    }
  }
  std::uint64_t v = 0;
  if (!values::DecimalToUint64(d, &v)) return false;
  switch (size) {
    case 1:
      return v <= UINT8_MAX && PutInteger(static_cast<std::uint8_t>(v), p);
    case 2:
      return v <= UINT16_MAX && PutInteger(static_cast<std::uint16_t>(v), p);
    case 4:
      return v <= UINT32_MAX && PutInteger(static_cast<std::uint32_t>(v), p);
    default:
      return PutInteger(v, p);
  }
}

}  // namespace

bool DefineFits(ub2 dty, const ValueType& t) {
  // The character types every scalar can be shown in (SQLT_LNG and SQLT_LVC are LONG text).
  bool text = dty == SQLT_STR || dty == SQLT_CHR || dty == SQLT_AFC || dty == SQLT_LNG ||
              dty == SQLT_LVC;
  switch (t.kind) {
    case ValueKind::kNumber:
      return dty == SQLT_INT || dty == SQLT_UIN || dty == SQLT_FLT || dty == SQLT_VNU ||
             dty == SQLT_NUM || text;
    case ValueKind::kString:
      return text || dty == SQLT_INT || dty == SQLT_UIN || dty == SQLT_FLT || dty == SQLT_VNU ||
             dty == SQLT_NUM;
    case ValueKind::kDate:
      return dty == SQLT_ODT || dty == SQLT_DAT || text;
    case ValueKind::kRaw:
      return dty == SQLT_BIN || dty == SQLT_LBI || dty == SQLT_LVB || text;
    case ValueKind::kLob:
      return (dty == SQLT_CLOB && t.typecode == OCI_TYPECODE_CLOB) ||
             (dty == SQLT_BLOB && t.typecode == OCI_TYPECODE_BLOB) || LobDataDefineFits(dty, t);
    case ValueKind::kDateTime:
    case ValueKind::kInterval:
      // Also shown as text, as the client converts them.
      return DescriptorTypeOfDty(dty) == t.descriptor_type || dty == SQLT_STR ||
             dty == SQLT_CHR || dty == SQLT_AFC;
    case ValueKind::kObject:
    case ValueKind::kCollection:
      return dty == SQLT_NTY;
    case ValueKind::kRef:
      return false;
  }
  return false;
}

bool FetchScalar(const DefineHandle& d, size_t row, const ValueType& t, const void* slot,
                 const OCIInd* ind, std::uint64_t txn, ub2* rc, SqlError* error) {
  return FetchInto(d.dty, DefineSlotAt(d, row), t, slot, ind, txn, rc, error);
}

bool FetchInto(ub2 dty, const OutSlot& o, const ValueType& t, const void* slot, const OCIInd* ind,
               std::uint64_t txn, ub2* rc, SqlError* error) {
  *rc = 0;
  if (*ind == OCI_IND_NULL) {
    if (o.ind != nullptr) *o.ind = OCI_IND_NULL;
    if (o.len != nullptr) *o.len = 0;
    *rc = 1405;
    if ((dty == SQLT_CLOB || dty == SQLT_BLOB) && o.value != nullptr) {
      auto* loc = AsLocator(*reinterpret_cast<void**>(o.value));
      if (loc != nullptr) {
        loc->state = LobState::kUnset;
        loc->cell.reset();
      }
    }
    return true;
  }
  if (o.ind != nullptr) *o.ind = OCI_IND_NOTNULL;
  if (t.kind == ValueKind::kLob && dty != SQLT_CLOB && dty != SQLT_BLOB) {
    return FetchLobData(dty, o, slot, txn, rc, error);  // the data, not the locator
  }
  size_t cap = o.cap;
  unsigned char* p = o.value;
  // The value as a number, for numeric defines.
  auto as_number = [&](OCINumber* n) -> bool {
    if (t.kind == ValueKind::kNumber) {
      std::memcpy(n, slot, sizeof *n);
      return true;
    }
    const void* value = *static_cast<void* const*>(slot);
    std::string text(reinterpret_cast<const char*>(VarBytes(value)), VarLength(value));
    if (!NumberFromText(text, n)) return SetError(error, 1722, "invalid number");
    return true;
  };
  switch (dty) {
    case SQLT_INT:
    case SQLT_UIN: {
      OCINumber n;
      if (!as_number(&n)) return false;
      Decimal dec;
      values::DecodeNumber(n.OCINumberPart, &dec);
      if (cap != 1 && cap != 2 && cap != 4 && cap != 8) {
        return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
      }
      bool ok = WriteBinaryInteger(dec, cap, dty == SQLT_INT, p);
      if (!ok) return SetError(error, 1455, "converting column overflows integer datatype");
      if (o.len != nullptr) *o.len = static_cast<ub2>(cap);
      return true;
    }
    case SQLT_FLT: {
      OCINumber n;
      if (!as_number(&n)) return false;
      Decimal dec;
      values::DecodeNumber(n.OCINumberPart, &dec);
      if (cap == sizeof(float)) {
        float f = values::DecimalToFloat(dec);
        std::memcpy(p, &f, sizeof f);
      } else if (cap == sizeof(double)) {
        double f = values::DecimalToDouble(dec);
        std::memcpy(p, &f, sizeof f);
      } else {
        return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
      }
      if (o.len != nullptr) *o.len = static_cast<ub2>(cap);
      return true;
    }
    case SQLT_VNU:
    case SQLT_NUM: {
      OCINumber n;
      if (!as_number(&n)) return false;
      size_t len = n.OCINumberPart[0];
      if (dty == SQLT_VNU) {
        if (cap < len + 1)
          return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
        std::memcpy(p, n.OCINumberPart, len + 1);
        if (o.len != nullptr) *o.len = static_cast<ub2>(len + 1);
      } else {
        if (cap < len)
          return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
        std::memcpy(p, n.OCINumberPart + 1, len);
        if (o.len != nullptr) *o.len = static_cast<ub2>(len);
      }
      return true;
    }
    case SQLT_STR:
    case SQLT_CHR:
    case SQLT_AFC:
    case SQLT_LNG:
    case SQLT_LVC:
    case SQLT_BIN:
    case SQLT_LBI:
    case SQLT_LVB: {
      std::string bytes;
      switch (t.kind) {
        case ValueKind::kNumber:
          bytes = NumberText(*static_cast<const OCINumber*>(slot));
          break;
        case ValueKind::kDate:
          DateMaskText(*static_cast<const OCIDate*>(slot), &bytes);
          break;
        case ValueKind::kString:
        case ValueKind::kRaw: {
          const void* value = *static_cast<void* const*>(slot);
          bytes.assign(reinterpret_cast<const char*>(VarBytes(value)), VarLength(value));
          if (t.kind == ValueKind::kRaw && dty != SQLT_BIN && dty != SQLT_LBI &&
              dty != SQLT_LVB) {
            bytes = HexText(bytes);
          }
          break;
        }
        case ValueKind::kDateTime:
        case ValueKind::kInterval: {
          // NLS_TIMESTAMP_FORMAT (NLS_TIMESTAMP_TZ_FORMAT) with the column's precision;
          // an interval padded to its leading precision.
          const void* value = *static_cast<void* const*>(slot);
          if (int ora = DescriptorText(value, t.leading_precision, t.fraction_precision,
                                       &bytes)) {
            return SetError(error, ora, values::DateErrorText(ora));
          }
          break;
        }
        default:
          return SetError(error, 932, "inconsistent datatypes: expected - got " + TypeName(t));
      }
      return PutDefineBytes(dty, o, bytes, rc, error);
    }
    case SQLT_ODT:
      std::memcpy(p, slot, sizeof(OCIDate));
      if (o.len != nullptr) *o.len = sizeof(OCIDate);
      return true;
    case SQLT_DAT: {
      const auto* date = static_cast<const OCIDate*>(slot);
      unsigned char b[7];
      int year = date->OCIDateYYYY;
      b[0] = static_cast<unsigned char>(year / 100 + 100);
      b[1] = static_cast<unsigned char>(year % 100 + 100);
      b[2] = date->OCIDateMM;
      b[3] = date->OCIDateDD;
      b[4] = static_cast<unsigned char>(date->OCIDateTime.OCITimeHH + 1);
      b[5] = static_cast<unsigned char>(date->OCIDateTime.OCITimeMI + 1);
      b[6] = static_cast<unsigned char>(date->OCIDateTime.OCITimeSS + 1);
      std::memcpy(p, b, 7);
      if (o.len != nullptr) *o.len = 7;
      return true;
    }
    case SQLT_CLOB:
    case SQLT_BLOB: {
      void* target = p != nullptr ? *reinterpret_cast<void**>(p) : nullptr;
      OCILobLocator* dst = AsLocator(target);
      if (dst == nullptr) return SetError(error, 22275, "invalid LOB locator specified");
      const OCILobLocator* src = *static_cast<OCILobLocator* const*>(slot);
      CopyLocator(*src, dst);
      if (dst->state == LobState::kPersistent) dst->select_txn = txn;
      return true;
    }
    default: {
      void* target = p != nullptr ? *reinterpret_cast<void**>(p) : nullptr;
      if (!IsValueDescriptor(target, t.descriptor_type)) {
        return SetError(error, 932, "inconsistent datatypes: expected " + TypeName(t) + " got -");
      }
      CopyValueDescriptor(ElementForm(t, slot), target);
      return true;
    }
  }
}

}  // namespace ocimem
