// The plain data interface: character and binary buffers bound into CLOB and BLOB columns
// and fetched from them, and the LONG formats (SQLT_LNG, SQLT_LVC, SQLT_LVB) for every
// column that takes or gives text or raw bytes.  SQLT_LVC and SQLT_LVB buffers start with a
// native 4-byte length; their value_sz counts those 4 bytes.
#ifndef OCIMEM_SRC_LOB_LOB_DATA_H
#define OCIMEM_SRC_LOB_LOB_DATA_H

#include <cstdint>
#include <string>

#include "statements/buffer_layout.h"
#include "statements/convert.h"

namespace ocimem {

// SQLT_LNG, SQLT_LVC and SQLT_LVB: read by LongValueFromBind.
bool IsLongBindType(ub2 dty);
// Reads a SQLT_LNG (text), SQLT_LVC (text) or SQLT_LVB (raw) bind value; an empty value is
// NULL.  The caller handled the indicator and a NULL buffer.
bool LongValueFromBind(ub2 dty, const BindSource& src, Value* out, SqlError* error);

// True when a define of `dty` receives the data of a LOB of type `t` (not its locator):
// SQLT_CHR, SQLT_STR, SQLT_AFC, SQLT_LNG, SQLT_LVC for a CLOB or NCLOB; SQLT_BIN,
// SQLT_LBI, SQLT_LVB for a BLOB.
bool LobDataDefineFits(ub2 dty, const ValueType& t);

// Writes bytes into an output buffer of type `dty` (SQLT_CHR, SQLT_STR, SQLT_AFC, SQLT_LNG,
// SQLT_BIN, SQLT_LBI, SQLT_LVC, SQLT_LVB); `*rc` gets the column code: 0, or 1406 when the
// value was cut to the buffer (the indicator then holds its length).  False with `error`
// for an LVC or LVB buffer too small for its length word.
bool PutDefineBytes(ub2 dty, const OutSlot& o, const std::string& bytes, ub2* rc,
                    SqlError* error);

// The contents of the not-NULL LOB in `slot` (a slot holding an OCILobLocator*) as
// transaction `txn` sees them.
std::string LobContents(const void* slot, std::uint64_t txn);

// Fetches the contents of the not-NULL LOB in `slot`, as transaction `txn` sees them, into
// a data buffer of type `dty`.
bool FetchLobData(ub2 dty, const OutSlot& o, const void* slot, std::uint64_t txn, ub2* rc,
                  SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_LOB_LOB_DATA_H
