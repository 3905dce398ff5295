// The LOB calls.  CLOB contents are kept in UTF-8, the client character set; lengths and
// offsets count characters as UTF-16 units (decision D13), read amounts come back in
// bytes, and a one-piece write's amount is in bytes.  Writing into a stored LOB needs its
// row locked by the writer's transaction, and the bytes written stay that transaction's
// until it commits.
#include <algorithm>
#include <cstring>
#include <mutex>

#include "database.h"
#include "internal.h"
#include "lob.h"
#include "table.h"

namespace ocimem {
namespace {

sword InvalidLocator(OCIError* err) { return Fail(err, 22275, "invalid LOB locator specified"); }
sword IllegalParameter(OCIError* err) {
  return Fail(err, 24801, "illegal parameter value in OCI lob function");
}

std::uint64_t SessionTxn(const SvcCtx* svc) {
  const Session* session = svc->LiveSession();
  if (session == nullptr || !session->txn) return 0;
  return session->txn->id;
}

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

// The contents the session sees.
const std::string& Visible(const OCILobLocator& l, std::uint64_t txn) {
  static const std::string kEmpty;
  if (!l.cell) return kEmpty;
  if (txn != 0 && l.cell->has_pending && l.cell->pending_txn == txn) return l.cell->pending;
  return l.cell->data;
}

bool IsClob(const OCILobLocator& l) { return l.lob_type != OCI_TYPECODE_BLOB; }

// A locator that designates a LOB: OCI_SUCCESS, or the error.
sword CheckReadable(OCIError* err, const OCILobLocator* l) {
  if (l == nullptr || l->state == LobState::kUnset) return InvalidLocator(err);
  if (l->lob_type == OCI_TYPECODE_BFILE) return InvalidLocator(err);
  return OCI_SUCCESS;
}

// Makes the LOB writable by the session and returns the contents to change.
sword Writable(OCIError* err, SvcCtx* svc, OCILobLocator* l, std::string** content) {
  sword rc = CheckReadable(err, l);
  if (rc != OCI_SUCCESS) return rc;
  // decision D11: the empty LOB of an instance never stored cannot be written
  if (l->state == LobState::kNewInstance) return InvalidLocator(err);
  if (l->state == LobState::kTemporary) {
    *content = &l->cell->data;
    return OCI_SUCCESS;
  }
  std::uint64_t txn = SessionTxn(svc);
  if (l->select_txn != 0 && l->select_txn != txn) {
    return Fail(err, 22990, "LOB locators cannot span transactions");
  }
  std::shared_ptr<RowRecord> row = l->cell->row.lock();
  if (txn == 0 || !row || row->dead || row->lock_txn != txn) {
    return Fail(err, 22920, "row containing the LOB value is not locked");
  }
  LobCell& cell = *l->cell;
  if (!cell.has_pending) {
    cell.pending = cell.data;
    cell.has_pending = true;
    cell.pending_txn = txn;
    svc->LiveSession()->txn->cells.push_back(l->cell);
  }
  *content = &cell.pending;
  return OCI_SUCCESS;
}

// A LOB lives in memory here, so it is held to a size far below Oracle's own limit: a write
// at an offset near 4 GB would otherwise try to fill the gap before it.
constexpr size_t kMaxLobBytes = size_t{1} << 30;

sword TooLarge(OCIError* err) {
  return Fail(err, 22925, "operation would exceed maximum size allowed for a LOB value");
}

// True when writing `data_bytes` at `offset` keeps the LOB within kMaxLobBytes.  A gap is
// counted as one byte per character, which is what it is filled with.
bool WriteFits(const std::string& content, ub4 offset, size_t data_bytes) {
  size_t start = size_t{offset} - 1;
  size_t before = std::max(content.size(), start);
  return before <= kMaxLobBytes && data_bytes <= kMaxLobBytes - before;
}

// Overwrites from `offset` (1-based characters or bytes) without shortening the LOB; a gap
// before the offset is filled with spaces (CLOB) or zero bytes (BLOB).
void Overwrite(std::string* content, bool clob, ub4 offset, const std::string& data) {
  size_t start_units = offset - 1;
  if (!clob) {
    if (content->size() < start_units) content->resize(start_units, '\0');
    size_t end = std::min(content->size(), start_units + data.size());
    content->replace(start_units, end - start_units, data);
    return;
  }
  size_t chars = ClobChars(*content);
  if (chars < start_units) content->append(start_units - chars, ' ');
  size_t start = ClobBytePosition(*content, start_units);
  size_t end = ClobBytePosition(*content, start_units + ClobChars(data));
  content->replace(start, end - start, data);
}

sword CheckForm(OCIError* err, const OCILobLocator& l, ub1 csfrm) {
  if (IsClob(l) && csfrm != 0 && csfrm != SQLCS_IMPLICIT)
    return Fail(err, 24806, "LOB form mismatch");
  return OCI_SUCCESS;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCILobGetLength(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4* lenp) {
  sword rc;
  if (Enter("OCILobGetLength", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  if (lenp == nullptr) return FailArgument(errhp, 4);
  LobLock lock(*l);
  const std::string& content = Visible(*l, SessionTxn(svc));
  *lenp = static_cast<ub4>(IsClob(*l) ? ClobChars(content) : content.size());
  return OCI_SUCCESS;
}

sword OCILobRead(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4* amtp, ub4 offset,
                 void* bufp, ub4 bufl, void* ctxp, OCICallbackLobRead cbfp, ub2 csid, ub1 csfrm) {
  (void)ctxp;
  (void)csid;  // the client character set, UTF-8
  sword rc;
  if (Enter("OCILobRead", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  if (amtp == nullptr) return FailArgument(errhp, 4);
  if (bufp == nullptr && bufl > 0) return FailArgument(errhp, 6);
  if (cbfp != nullptr) return IllegalParameter(errhp);  // reads go to the caller's buffer
  if ((rc = CheckForm(errhp, *l, csfrm)) != OCI_SUCCESS) return rc;
  LobLock lock(*l);
  const std::string& content = Visible(*l, SessionTxn(svc));
  bool clob = IsClob(*l);
  auto* out = static_cast<char*>(bufp);
  if (l->read.open) {  // the next piece of a polling read
    size_t end = std::min(l->read.end, content.size());
    size_t start = std::min(l->read.next, end);
    size_t n = std::min<size_t>(bufl, end - start);
    if (clob && start + n < end) {
      while (n > 0 && (static_cast<unsigned char>(content[start + n]) & 0xc0) == 0x80) --n;
    }
    if (n > 0) std::memcpy(out, content.data() + start, n);
    *amtp = static_cast<ub4>(n);
    l->read.next = start + n;
    if (l->read.next >= end) {
      l->read = LobStreamRead();
      return OCI_SUCCESS;
    }
    return OCI_NEED_DATA;
  }
  if (offset == 0) return IllegalParameter(errhp);
  ub4 amount = *amtp;
  size_t start;
  size_t end;
  if (clob) {
    start = ClobBytePosition(content, offset - 1);
    end = amount == 0 ? content.size() : ClobBytePosition(content, size_t(offset) - 1 + amount);
  } else {
    start = std::min<size_t>(offset - 1, content.size());
    end = amount == 0 ? content.size() : std::min<size_t>(start + amount, content.size());
  }
  if (size_t(offset) - 1 >= (clob ? ClobChars(content) : content.size())) {
    // decision D10: nothing to read is a read of nothing
    *amtp = 0;
    return OCI_SUCCESS;
  }
  size_t total = end - start;
  if (total <= bufl) {
    if (total > 0) std::memcpy(out, content.data() + start, total);
    *amtp = static_cast<ub4>(total);
    return OCI_SUCCESS;
  }
  size_t n = bufl;
  if (clob) {
    while (n > 0 && (static_cast<unsigned char>(content[start + n]) & 0xc0) == 0x80) --n;
  }
  if (n == 0) return IllegalParameter(errhp);  // a buffer too small for one character
  std::memcpy(out, content.data() + start, n);
  *amtp = static_cast<ub4>(n);
  l->read.open = true;
  l->read.next = start + n;
  l->read.end = end;
  return OCI_NEED_DATA;
}

sword OCILobWrite(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4* amtp, ub4 offset,
                  void* bufp, ub4 buflen, ub1 piece, void* ctxp, OCICallbackLobWrite cbfp, ub2 csid,
                  ub1 csfrm) {
  (void)ctxp;
  (void)csid;
  sword rc;
  if (Enter("OCILobWrite", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  if (amtp == nullptr) return FailArgument(errhp, 4);
  if (bufp == nullptr && buflen > 0) return FailArgument(errhp, 6);
  if (cbfp != nullptr) return IllegalParameter(errhp);  // pieces come from the caller's buffer
  if (piece > OCI_LAST_PIECE) return IllegalParameter(errhp);
  if ((rc = CheckForm(errhp, *l, csfrm)) != OCI_SUCCESS) return rc;
  LobLock lock(*l);
  std::string* content = nullptr;
  if ((rc = Writable(errhp, svc, l, &content)) != OCI_SUCCESS) {
    l->write = LobPiecewise();
    return rc;
  }
  const char* data = static_cast<const char*>(bufp);
  bool clob = IsClob(*l);
  if (piece == OCI_ONE_PIECE) {
    if (l->write.open) return IllegalParameter(errhp);
    if (offset == 0) return IllegalParameter(errhp);
    ub4 amount = *amtp;
    if (amount > buflen) return Fail(errhp, 24811, "less data provided for writing than indicated");
    if (!WriteFits(*content, offset, amount)) return TooLarge(errhp);
    Overwrite(content, clob, offset,
              std::string(data == nullptr ? "" : data, data == nullptr ? 0 : amount));
    *amtp = amount;
    return OCI_SUCCESS;
  }
  LobPiecewise& w = l->write;
  if (piece == OCI_FIRST_PIECE) {
    if (offset == 0) return IllegalParameter(errhp);
    w = LobPiecewise();
    w.open = true;
    w.offset = offset;
    w.announced = *amtp;
  } else if (!w.open) {
    return IllegalParameter(errhp);  // a next or last piece without a first one
  }
  // decision D12: empty pieces are accepted
  if (!WriteFits(*content, w.offset, w.bytes.size() + buflen)) {
    w = LobPiecewise();
    return TooLarge(errhp);
  }
  if (buflen > 0) w.bytes.append(data, buflen);
  if (w.announced > 0 && w.bytes.size() > w.announced) {
    w = LobPiecewise();
    return Fail(errhp, 24810, "attempting to write more data than indicated");
  }
  if (piece != OCI_LAST_PIECE) return OCI_NEED_DATA;
  LobPiecewise done = std::move(w);
  w = LobPiecewise();
  if (done.announced > 0 && done.bytes.size() < done.announced) {
    return Fail(errhp, 24811, "less data provided for writing than indicated");
  }
  if (done.bytes.empty()) {
    return Fail(errhp, 22923, "amount of data specified in streaming LOB write is 0");
  }
  Overwrite(content, clob, done.offset, done.bytes);
  *amtp = static_cast<ub4>(done.bytes.size());
  return OCI_SUCCESS;
}

sword OCILobTrim(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4 newlen) {
  sword rc;
  if (Enter("OCILobTrim", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  LobLock lock(*l);
  std::string* content = nullptr;
  bool clob = IsClob(*l);
  {
    const std::string& now = Visible(*l, SessionTxn(svc));
    size_t length = clob ? ClobChars(now) : now.size();
    if (l->state != LobState::kNewInstance && newlen > length) {
      return Fail(errhp, 22926, "specified trim length is greater than current LOB value's length");
    }
  }
  if ((rc = Writable(errhp, svc, l, &content)) != OCI_SUCCESS) return rc;
  content->resize(clob ? ClobBytePosition(*content, newlen) : newlen);
  return OCI_SUCCESS;
}

sword OCILobCreateTemporary(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub2 csid,
                            ub1 csfrm, ub1 lobtype, boolean cache, OCIDuration duration) {
  (void)csid;
  (void)csfrm;
  (void)cache;
  (void)duration;  // the LOB lives until freed or until its locator goes
  sword rc;
  if (Enter("OCILobCreateTemporary", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if (l == nullptr || l->descriptor_type != OCI_DTYPE_LOB) return InvalidLocator(errhp);
  if (lobtype != OCI_TEMP_BLOB && lobtype != OCI_TEMP_CLOB) return IllegalParameter(errhp);
  auto cell = std::make_shared<LobCell>();
  cell->clob = lobtype == OCI_TEMP_CLOB;
  l->lob_type = lobtype == OCI_TEMP_CLOB ? OCI_TYPECODE_CLOB : OCI_TYPECODE_BLOB;
  l->state = LobState::kTemporary;
  l->cell = std::move(cell);
  l->select_txn = 0;
  l->write = LobPiecewise();
  l->read = LobStreamRead();
  return OCI_SUCCESS;
}

sword OCILobFreeTemporary(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp) {
  sword rc;
  if (Enter("OCILobFreeTemporary", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if (l == nullptr || l->state != LobState::kTemporary) return InvalidLocator(errhp);
  l->state = LobState::kUnset;
  l->cell.reset();
  l->write = LobPiecewise();
  l->read = LobStreamRead();
  return OCI_SUCCESS;
}

sword OCILobIsTemporary(OCIEnv* envp, OCIError* errhp, OCILobLocator* locp, boolean* is_temporary) {
  sword rc;
  if (Enter("OCILobIsTemporary", errhp, &rc)) return rc;
  if (AsEnv(envp) == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if (l == nullptr) return InvalidLocator(errhp);
  if (is_temporary == nullptr) return FailArgument(errhp, 4);
  *is_temporary = l->state == LobState::kTemporary ? TRUE : FALSE;
  return OCI_SUCCESS;
}

sword OCILobLocatorAssign(OCISvcCtx* svchp, OCIError* errhp, const OCILobLocator* src_locp,
                          OCILobLocator** dst_locpp) {
  sword rc;
  if (Enter("OCILobLocatorAssign", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  const OCILobLocator* src = AsLocator(src_locp);
  if (src == nullptr) return InvalidLocator(errhp);
  if (dst_locpp == nullptr) return FailArgument(errhp, 4);
  OCILobLocator* dst = AsLocator(*dst_locpp);
  if (dst == nullptr) return InvalidLocator(errhp);
  CopyLocator(*src, dst);
  if (src->state == LobState::kTemporary) {  // a temporary LOB is copied, not shared
    auto cell = std::make_shared<LobCell>(*src->cell);
    dst->cell = std::move(cell);
  }
  return OCI_SUCCESS;
}
