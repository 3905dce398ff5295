// Where element `row` of a bind or define lies in the program's buffers: arrays of values,
// indicators, lengths and return codes, each with its own skip (OCIBindArrayOfStruct,
// OCIDefineArrayOfStruct) or the natural size of its elements.
#ifndef OCIMEM_SRC_STATEMENTS_BUFFER_LAYOUT_H
#define OCIMEM_SRC_STATEMENTS_BUFFER_LAYOUT_H

#include <cstddef>
#include <cstring>

#include "statements/statement.h"

namespace ocimem {

// External types whose buffer holds a pointer to a locator or descriptor.
inline bool HoldsPointer(ub2 dty) {
  switch (dty) {
    case SQLT_CLOB:
    case SQLT_BLOB:
    case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ:
    case SQLT_TIMESTAMP_LTZ:
    case SQLT_INTERVAL_YM:
    case SQLT_INTERVAL_DS:
      return true;
    default:
      return false;
  }
}

// Bytes from one value to the next of an array of `value_sz` values.
inline size_t ValueStride(ub2 dty, sb4 value_sz, ub4 skip) {
  if (skip != 0) return skip;
  size_t size = value_sz > 0 ? static_cast<size_t>(value_sz) : 0;
  if (HoldsPointer(dty) && size < sizeof(void*)) return sizeof(void*);
  return size;
}

template <typename T>
T* ElementAt(void* base, size_t row, ub4 skip) {
  if (base == nullptr) return nullptr;
  size_t step = skip != 0 ? skip : sizeof(T);
  return reinterpret_cast<T*>(static_cast<unsigned char*>(base) + row * step);
}

// One input value of a bind.
struct BindSource {
  const unsigned char* p = nullptr;  // the value (nullptr: no buffer)
  size_t cap = 0;                    // value_sz: the room of one value
  size_t len = 0;                    // its length (alenp, else value_sz)
  bool null = false;                 // the indicator says NULL
};

inline sb2 ReadSb2(const void* p) {
  sb2 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

inline ub2 ReadUb2(const void* p) {
  ub2 v;
  std::memcpy(&v, p, sizeof v);
  return v;
}

inline BindSource BindSourceAt(const BindHandle& b, size_t row) {
  BindSource s;
  if (b.mode == OCI_DATA_AT_EXEC) {  // gathered at execute for the running iteration
    s.null = b.staged_null;
    s.p = reinterpret_cast<const unsigned char*>(b.staged.data());
    s.cap = b.staged.size();
    s.len = b.staged.size();
    return s;
  }
  s.cap = b.value_sz > 0 ? static_cast<size_t>(b.value_sz) : 0;
  if (const sb2* ind = ElementAt<sb2>(b.indp, row, b.indskip)) s.null = ReadSb2(ind) < 0;
  const ub2* alen = ElementAt<ub2>(b.alenp, row, b.alskip);
  s.len = alen != nullptr ? ReadUb2(alen) : s.cap;
  if (b.valuep != nullptr) {
    s.p = static_cast<const unsigned char*>(b.valuep) + row * ValueStride(b.dty, b.value_sz, b.pvskip);
  }
  return s;
}

// Where one output value goes: a define's row, a RETURNING bind's element, or the buffer an
// out-bind callback gave.
struct OutSlot {
  unsigned char* value = nullptr;
  size_t cap = 0;
  sb2* ind = nullptr;
  ub2* len = nullptr;
  ub2* rcode = nullptr;
};

inline OutSlot DefineSlotAt(const DefineHandle& d, size_t row) {
  OutSlot s;
  s.cap = d.value_sz > 0 ? static_cast<size_t>(d.value_sz) : 0;
  if (d.valuep != nullptr) {
    s.value = static_cast<unsigned char*>(d.valuep) + row * ValueStride(d.dty, d.value_sz, d.pvskip);
  }
  s.ind = ElementAt<sb2>(d.indp, row, d.indskip);
  s.len = ElementAt<ub2>(d.rlenp, row, d.rlskip);
  s.rcode = ElementAt<ub2>(d.rcodep, row, d.rcskip);
  return s;
}

inline OutSlot BindSlotAt(const BindHandle& b, size_t row) {
  OutSlot s;
  s.cap = b.value_sz > 0 ? static_cast<size_t>(b.value_sz) : 0;
  if (b.valuep != nullptr) {
    s.value = static_cast<unsigned char*>(b.valuep) + row * ValueStride(b.dty, b.value_sz, b.pvskip);
  }
  s.ind = ElementAt<sb2>(b.indp, row, b.indskip);
  s.len = ElementAt<ub2>(b.alenp, row, b.alskip);
  s.rcode = ElementAt<ub2>(b.rcodep, row, b.rcskip);
  return s;
}

}  // namespace ocimem

#endif  // OCIMEM_SRC_STATEMENTS_BUFFER_LAYOUT_H
