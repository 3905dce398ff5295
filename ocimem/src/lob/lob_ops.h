// What the LOB calls share: the checks of a locator, the contents a session sees, making a
// LOB writable, and overwriting part of it.  CLOB contents are UTF-8 (the client character
// set); their lengths and offsets count characters as UTF-16 units (decision D13).
#ifndef OCIMEM_SRC_LOB_LOB_OPS_H
#define OCIMEM_SRC_LOB_LOB_OPS_H

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "database/database.h"
#include "session/internal.h"
#include "lob/lob.h"

namespace ocimem {

sword InvalidLocator(OCIError* err);    // ORA-22275
sword IllegalParameter(OCIError* err);  // ORA-24801
sword TooLarge(OCIError* err);          // ORA-22925

// The open transaction of the service context's session (0: none).
std::uint64_t SessionTxn(const SvcCtx* svc);

// Holds the database mutex of a stored LOB's database while the LOB is used.
class LobLock {
 public:
  explicit LobLock(const OCILobLocator& l) {
    if (l.cell) db_ = l.cell->db.lock();
    if (db_) lock_ = std::unique_lock<std::mutex>(db_->mutex);
  }

 private:
  std::shared_ptr<Database> db_;
  std::unique_lock<std::mutex> lock_;
};

// The contents transaction `txn` sees.
const std::string& Visible(const OCILobLocator& l, std::uint64_t txn);

inline bool IsClob(const OCILobLocator& l) { return l.lob_type != OCI_TYPECODE_BLOB; }

// Length of contents: characters (UTF-16 units) of a CLOB, bytes of a BLOB.
size_t LobLength(const std::string& content, bool clob);

// A locator that designates a CLOB or BLOB: OCI_SUCCESS, or ORA-22275.
sword CheckReadable(OCIError* err, const OCILobLocator* l);

// Makes the LOB writable by the session (row lock, transaction, not opened read-only) and
// returns the contents to change.
sword Writable(OCIError* err, SvcCtx* svc, OCILobLocator* l, std::string** content);

// A LOB lives in memory here, so it is held to a size far below Oracle's own limit: a write
// at an offset near 4 GB would otherwise try to fill the gap before it.
constexpr size_t kMaxLobBytes = size_t{1} << 30;

// True when writing `data_bytes` at `offset` keeps the LOB within kMaxLobBytes.  A gap is
// counted as one byte per character, which is what it is filled with.
bool WriteFits(const std::string& content, std::uint64_t offset, size_t data_bytes);

// Overwrites from `offset` (1-based characters or bytes) without shortening the LOB; a gap
// before the offset is filled with spaces (CLOB) or zero bytes (BLOB).  The caller checked
// WriteFits.
void Overwrite(std::string* content, bool clob, std::uint64_t offset, const std::string& data);

// ORA-24806 when `csfrm` (0 accepted) is not the form of the CLOB or NCLOB.
sword CheckForm(OCIError* err, const OCILobLocator& l, ub1 csfrm);

// The checks every streaming read and write makes first: the handles, a locator that can
// be read, the amount pointer (argument 4), the buffer (argument buf_position) and the form.
sword StreamEntry(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp,
                  const void* amtp, const void* bufp, std::uint64_t bufl, int buf_position,
                  ub1 csfrm, SvcCtx** svc, OCILobLocator** l);

// Byte range [*start, *end) of `amount` characters (CLOB) or bytes (BLOB) from the 1-based
// `offset`, clamped to the contents; amount 0 runs to the end.
void UnitRange(const std::string& content, bool clob, std::uint64_t offset, std::uint64_t amount,
               size_t* start, size_t* end);

// The opening of the LOB by the service context's session, or nullptr.
LobOpening* OpeningOf(const SvcCtx* svc, const OCILobLocator& l);

// True when the session's open transaction opened LOBs that are still open (a commit then
// answers ORA-22291 after committing); locks the database itself.
bool HasOpenLobs(Session* session);
sword OpenLobsAtCommit(OCIError* err);  // ORA-22291

}  // namespace ocimem

#endif  // OCIMEM_SRC_LOB_LOB_OPS_H
