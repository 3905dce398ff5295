// Bind values read from a program's buffers: element `row` of a bind, by its external
// type, into a Value that StoreValue then converts into a column's slot.
#include "statements/convert.h"

#include <cctype>
#include <cstring>
#include <limits>

#include "statements/buffer_layout.h"
#include "collections/coll.h"
#include "lob/lob.h"
#include "lob/lob_data.h"
#include "session/session_nls.h"
#include "objects/value_descriptors.h"
#include "objects/value_slot.h"
#include "values/date_format.h"
#include "values/number.h"
#include "values/oci_common.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

using values::Decimal;
using values::NumberError;

bool EncodeDecimal(const Decimal& d, OCINumber* out) {
  std::memset(out, 0, sizeof *out);
  return values::EncodeNumber(d, out->OCINumberPart) == NumberError::None;
}

template <typename T>
T ReadAt(const void* base, size_t offset) {
  T v;
  std::memcpy(&v, static_cast<const unsigned char*>(base) + offset, sizeof v);
  return v;
}

}  // namespace

namespace {

// A signed or unsigned binary integer of 1, 2, 4 or 8 bytes; false for other sizes.
bool ReadBinaryInteger(const unsigned char* p, size_t size, bool is_signed, Decimal* out) {
  switch (size) {
    case 1:
      return is_signed ? values::DecimalFromInteger(ReadAt<std::int8_t>(p, 0), out)
                       : values::DecimalFromUnsigned(ReadAt<std::uint8_t>(p, 0), out);
    case 2:
      return is_signed ? values::DecimalFromInteger(ReadAt<std::int16_t>(p, 0), out)
                       : values::DecimalFromUnsigned(ReadAt<std::uint16_t>(p, 0), out);
    case 4:
      return is_signed ? values::DecimalFromInteger(ReadAt<std::int32_t>(p, 0), out)
                       : values::DecimalFromUnsigned(ReadAt<std::uint32_t>(p, 0), out);
    case 8:
      return is_signed ? values::DecimalFromInteger(ReadAt<std::int64_t>(p, 0), out)
                       : values::DecimalFromUnsigned(ReadAt<std::uint64_t>(p, 0), out);
    default:
      return false;
  }
}

}  // namespace

bool ValueFromBind(const BindHandle& bind, size_t row, Value* out, SqlError* error) {
  *out = Value();
  if (bind.dty == SQLT_NTY) {
    if (bind.tdo == nullptr || bind.pgvpp == nullptr) {
      return SetError(error, 24358, "OCIBindObject not invoked for a Object type or Reference");
    }
    const void* instance = bind.pgvpp[row];
    const OCIInd* ind =
        bind.indpp != nullptr ? static_cast<const OCIInd*>(bind.indpp[row]) : nullptr;
    if (instance == nullptr) return true;  // no instance: NULL
    out->kind = bind.tdo->IsCollection() ? Value::Kind::kCollection : Value::Kind::kObject;
    out->handle = instance;
    out->ind = ind;
    out->tdo = bind.tdo;
    if (out->kind == Value::Kind::kCollection && AsColl(instance) == nullptr) {
      return SetError(error, 932, "inconsistent datatypes: expected - got -");
    }
    return true;
  }
  const BindSource src = BindSourceAt(bind, row);
  // Every input indicator below zero means NULL, -1 and the values under it alike.
  if (src.null) return true;
  const unsigned char* p = src.p;
  const size_t stride = src.cap;
  const size_t len = src.len;
  if (p == nullptr) return true;  // no buffer binds NULL
  if (IsLongBindType(bind.dty)) return LongValueFromBind(bind.dty, src, out, error);
  switch (bind.dty) {
    case SQLT_STR: {
      size_t n = 0;
      while (n < stride && p[n] != 0) ++n;
      if (stride == 0) n = std::strlen(reinterpret_cast<const char*>(p));
      if (n == 0) return true;  // '' is NULL
      out->kind = Value::Kind::kText;
      out->bytes.assign(reinterpret_cast<const char*>(p), n);
      return true;
    }
    case SQLT_CHR:
    case SQLT_AFC:
    case SQLT_VCS:
      if (len == 0) return true;
      out->kind = Value::Kind::kText;
      out->bytes.assign(reinterpret_cast<const char*>(p), len);
      return true;
    case SQLT_BIN:
    case SQLT_LBI:
      if (len == 0) return true;
      out->kind = Value::Kind::kRaw;
      out->bytes.assign(reinterpret_cast<const char*>(p), len);
      return true;
    case SQLT_INT:
    case SQLT_UIN: {
      Decimal d;
      bool ok = ReadBinaryInteger(p, stride, bind.dty == SQLT_INT, &d);
      if (!ok) return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
      out->kind = Value::Kind::kNumber;
      return EncodeDecimal(d, &out->number) || SetError(error, 1426, "numeric overflow");
    }
    case SQLT_FLT: {
      double v = 0;
      if (stride == sizeof(float)) {
        v = ReadAt<float>(p, 0);
      } else if (stride == sizeof(double)) {
        v = ReadAt<double>(p, 0);
      } else {
        return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
      }
      if (v != v || v == std::numeric_limits<double>::infinity() ||
          v == -std::numeric_limits<double>::infinity()) {
        return SetError(error, 1426, "numeric overflow");
      }
      out->kind = Value::Kind::kNumber;
      return EncodeDecimal(values::DecimalFromDouble(v), &out->number) ||
             SetError(error, 1426, "numeric overflow");
    }
    case SQLT_VNU: {
      if (stride < 1)
        return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
      size_t n = p[0];
      if (n == 0) return true;  // a zero length byte is NULL
      if (n > OCI_NUMBER_SIZE - 1 || n + 1 > stride) return SetError(error, 1722, "invalid number");
      out->kind = Value::Kind::kNumber;
      std::memcpy(out->number.OCINumberPart, p, n + 1);
      Decimal d;
      if (values::DecodeNumber(out->number.OCINumberPart, &d) != NumberError::None) {
        return SetError(error, 1722, "invalid number");
      }
      return true;
    }
    case SQLT_NUM: {
      if (len == 0) return true;
      if (len > OCI_NUMBER_SIZE - 1) return SetError(error, 1722, "invalid number");
      out->kind = Value::Kind::kNumber;
      out->number.OCINumberPart[0] = static_cast<ub1>(len);
      std::memcpy(out->number.OCINumberPart + 1, p, len);
      Decimal d;
      if (values::DecodeNumber(out->number.OCINumberPart, &d) != NumberError::None) {
        return SetError(error, 1722, "invalid number");
      }
      return true;
    }
    case SQLT_DAT: {
      if (stride < 7)
        return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
      out->kind = Value::Kind::kDate;
      out->date.OCIDateYYYY = static_cast<sb2>((p[0] - 100) * 100 + (p[1] - 100));
      out->date.OCIDateMM = p[2];
      out->date.OCIDateDD = p[3];
      out->date.OCIDateTime.OCITimeHH = static_cast<ub1>(p[4] - 1);
      out->date.OCIDateTime.OCITimeMI = static_cast<ub1>(p[5] - 1);
      out->date.OCIDateTime.OCITimeSS = static_cast<ub1>(p[6] - 1);
      return true;
    }
    case SQLT_ODT:
      out->kind = Value::Kind::kDate;
      std::memcpy(&out->date, p, sizeof(OCIDate));
      return true;
    case SQLT_CLOB:
    case SQLT_BLOB: {
      const void* handle = ReadAt<const void*>(p, 0);
      const OCILobLocator* l = AsLocator(handle);
      if (l == nullptr || l->state == LobState::kUnset) {
        return SetError(error, 22275, "invalid LOB locator specified");
      }
      out->kind = Value::Kind::kLob;
      out->handle = l;
      return true;
    }
    default: {
      ub4 desc_type = DescriptorTypeOfDty(bind.dty);
      if (desc_type == 0)
        return SetError(error, 3115, "unsupported network datatype or representation");
      const void* handle = ReadAt<const void*>(p, 0);
      if (!IsValueDescriptor(handle, desc_type)) {
        return SetError(error, 932, "inconsistent datatypes: expected - got -");
      }
      out->kind = desc_type == OCI_DTYPE_INTERVAL_YM || desc_type == OCI_DTYPE_INTERVAL_DS
                      ? Value::Kind::kInterval
                      : Value::Kind::kDateTime;
      out->handle = handle;
      out->desc_type = desc_type;
      return true;
    }
  }
}

}  // namespace ocimem
