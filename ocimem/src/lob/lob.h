// LOB locators.  A locator is a descriptor (OCIDescriptorAlloc with OCI_DTYPE_LOB or
// OCI_DTYPE_FILE) or a slot of an instance or of a stored row.  A slot's locator starts in
// the "new instance" state: not null, an empty LOB that can be read but not written until
// the instance is stored and fetched again.  The contents of a stored or temporary LOB live
// in a LobCell that every locator of that LOB shares; a stored cell keeps its committed
// bytes and the bytes written by the one transaction that holds its row's lock.
#ifndef OCIMEM_SRC_LOB_LOB_H
#define OCIMEM_SRC_LOB_LOB_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "oci.h"
#include "session/recycle.h"

namespace ocimem {

constexpr ub4 kLiveLob = 0x4c4f424cU;

struct Database;
struct RowRecord;

enum class LobState : ub1 {
  kUnset,        // a fresh descriptor, a freed temporary LOB, or a NULL LOB: no LOB at all
  kNewInstance,  // the empty LOB of a new instance (decision D11)
  kPersistent,   // a LOB stored in a row
  kTemporary,    // made by OCILobCreateTemporary
};

// An OCILobOpen of a LOB by one session: openness belongs to the LOB, not to the locator.
struct LobOpening {
  std::weak_ptr<const int> owner;  // the token of the opening session (Transaction::token)
  std::uint64_t txn = 0;           // its transaction then (0: none, or a temporary LOB)
  ub1 mode = 0;                    // OCI_LOB_READONLY or OCI_LOB_READWRITE
};

struct LobCell {
  bool clob = true;
  std::string data;  // committed contents (a temporary LOB keeps everything here)
  // Contents written by the transaction `pending_txn` and not yet committed.
  bool has_pending = false;
  std::uint64_t pending_txn = 0;
  std::string pending;
  // The database and row of a stored LOB; both empty for a temporary one.
  std::weak_ptr<Database> db;
  std::weak_ptr<RowRecord> row;
  std::vector<LobOpening> openings;
};

// Bytes handed over so far by an open piecewise OCILobWrite, applied by its last piece.
struct LobPiecewise {
  bool open = false;
  bool append = false;         // OCILobWriteAppend: written at the end of the LOB
  std::uint64_t offset = 1;
  std::uint64_t announced = 0;  // total given with the first piece, 0 = unknown
  bool announced_chars = false;  // OCILobWrite2 announced characters, not bytes
  std::string bytes;
};

// Position of an open polling OCILobRead.
struct LobStreamRead {
  bool open = false;
  size_t next = 0;  // byte position of the next piece
  size_t end = 0;   // byte position after the last byte to hand out
};

}  // namespace ocimem

struct OCILobLocator {
  OCIMEM_RECYCLED(OCILobLocator)
  ub4 live = ocimem::kLiveLob;
  ub4 descriptor_type = OCI_DTYPE_LOB;  // or OCI_DTYPE_FILE
  OCITypeCode lob_type = 0;             // OCI_TYPECODE_CLOB, _BLOB, _BFILE; 0 when unset
  ub1 csfrm = 0;                        // SQLCS_IMPLICIT (CLOB) or SQLCS_NCHAR (NCLOB), 0 else
  ocimem::LobState state = ocimem::LobState::kUnset;
  std::shared_ptr<ocimem::LobCell> cell;  // kPersistent and kTemporary
  // Transaction of the session that selected a persistent locator (0: none was open).
  std::uint64_t select_txn = 0;
  ocimem::LobPiecewise write;
  ocimem::LobStreamRead read;
};

namespace ocimem {

// The locator behind `p` when it is a live one, else nullptr.
OCILobLocator* AsLocator(const void* p);
// A descriptor of OCIDescriptorAlloc.
OCILobLocator* NewLocatorDescriptor(ub4 descriptor_type);
// The locator held by an instance slot of a CLOB, NCLOB (csfrm SQLCS_NCHAR), BLOB or BFILE
// attribute or element.
OCILobLocator* NewInstanceLocator(OCITypeCode lob_type, ub1 csfrm = 0);
void FreeLocator(OCILobLocator* locator);
// Makes dst refer to the LOB of src (the contents are shared, not copied).
void CopyLocator(const OCILobLocator& src, OCILobLocator* dst);
// The character set form of a LOB of `lob_type` declared with `csfrm`: SQLCS_NCHAR for an
// NCLOB, SQLCS_IMPLICIT for any other CLOB, 0 for BLOBs and BFILEs.
ub1 CharsetFormOf(OCITypeCode lob_type, ub1 csfrm);

// UTF-16 code units of UTF-8 text: the length of a CLOB in characters.
size_t ClobChars(const std::string& utf8);
// Byte position in UTF-8 text of the character (UTF-16 unit) `chars` from the start,
// clamped to the end.
size_t ClobBytePosition(const std::string& utf8, size_t chars);

}  // namespace ocimem

#endif  // OCIMEM_SRC_LOB_LOB_H
