#include "lob/lob_data.h"

#include <algorithm>
#include <cstring>

#include "lob/lob_ops.h"

namespace ocimem {
namespace {

bool Unreasonable(SqlError* error) {
  return SetError(error, 1460, "unimplemented or unreasonable conversion requested");
}

constexpr size_t kLengthBytes = 4;  // the length word of SQLT_LVC and SQLT_LVB

}  // namespace

bool IsLongBindType(ub2 dty) { return dty == SQLT_LNG || dty == SQLT_LVC || dty == SQLT_LVB; }

bool LongValueFromBind(ub2 dty, const BindSource& src, Value* out, SqlError* error) {
  *out = Value();
  const char* data = reinterpret_cast<const char*>(src.p);
  size_t len = src.len;
  if (dty != SQLT_LNG) {
    // decision LB11: the length word is read from the buffer (alenp is not used), and it must
    // lie within value_sz, which counts the word
    if (src.cap < kLengthBytes) return Unreasonable(error);
    sb4 word = 0;
    std::memcpy(&word, src.p, sizeof word);
    if (word < 0 || static_cast<size_t>(word) > src.cap - kLengthBytes) {
      return Unreasonable(error);
    }
    len = static_cast<size_t>(word);
    data += kLengthBytes;
  }
  if (len == 0) return true;  // an empty value is NULL
  out->kind = dty == SQLT_LVB ? Value::Kind::kRaw : Value::Kind::kText;
  out->bytes.assign(data, len);
  return true;
}

bool LobDataDefineFits(ub2 dty, const ValueType& t) {
  if (t.kind != ValueKind::kLob) return false;
  // decision LB13: SQLT_LVC serves CLOBs as SQLT_LNG does
  if (t.typecode == OCI_TYPECODE_CLOB) {
    return dty == SQLT_CHR || dty == SQLT_STR || dty == SQLT_AFC || dty == SQLT_LNG ||
           dty == SQLT_LVC;
  }
  if (t.typecode == OCI_TYPECODE_BLOB) {
    return dty == SQLT_BIN || dty == SQLT_LBI || dty == SQLT_LVB;
  }
  return false;
}

bool PutDefineBytes(ub2 dty, const OutSlot& o, const std::string& bytes, ub2* rc,
                    SqlError* error) {
  size_t cap = o.cap;
  bool terminate = dty == SQLT_STR;
  bool pad = dty == SQLT_AFC;
  bool prefixed = dty == SQLT_LVC || dty == SQLT_LVB;
  if (prefixed && cap < kLengthBytes) return Unreasonable(error);
  unsigned char* p = o.value;
  size_t room = cap;
  if (terminate) room = cap > 0 ? cap - 1 : 0;
  if (prefixed) room = cap - kLengthBytes;
  size_t n = std::min(bytes.size(), room);
  if (p != nullptr) {
    unsigned char* to = prefixed ? p + kLengthBytes : p;
    if (n > 0) std::memcpy(to, bytes.data(), n);
    if (pad && n < cap) std::memset(p + n, ' ', cap - n);
    if (terminate && cap > 0) p[n] = 0;
    if (prefixed) {
      sb4 word = static_cast<sb4>(n);
      std::memcpy(p, &word, sizeof word);
    }
  }
  if (o.len != nullptr) {
    // decisions LB12, LB11: a length beyond the ub2 of rlenp is told as 65535; an LVC or
    // LVB length leaves out the length word, which holds it too
    size_t told = pad ? cap : n;
    *o.len = static_cast<ub2>(std::min<size_t>(told, 65535));
  }
  *rc = 0;
  if (n < bytes.size()) {
    if (o.ind != nullptr) {
      *o.ind = bytes.size() > 32767 ? static_cast<sb2>(-2) : static_cast<sb2>(bytes.size());
    }
    *rc = 1406;
  }
  return true;
}

std::string LobContents(const void* slot, std::uint64_t txn) {
  const OCILobLocator* l = *static_cast<OCILobLocator* const*>(slot);
  if (l == nullptr) return std::string();
  LobLock lock(*l);
  return Visible(*l, txn);
}

bool FetchLobData(ub2 dty, const OutSlot& o, const void* slot, std::uint64_t txn, ub2* rc,
                  SqlError* error) {
  std::string bytes = LobContents(slot, txn);
  // decision LB10: an empty LOB comes as an empty value with indicator 0 (it is not NULL)
  return PutDefineBytes(dty, o, bytes, rc, error);
}

}  // namespace ocimem
