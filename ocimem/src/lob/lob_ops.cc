#include "lob/lob_ops.h"

#include <algorithm>

#include "database/table.h"

namespace ocimem {

sword InvalidLocator(OCIError* err) { return Fail(err, 22275, "invalid LOB locator specified"); }

sword IllegalParameter(OCIError* err) {
  return Fail(err, 24801, "illegal parameter value in OCI lob function");
}

sword TooLarge(OCIError* err) {
  return Fail(err, 22925, "operation would exceed maximum size allowed for a LOB value");
}

std::uint64_t SessionTxn(const SvcCtx* svc) {
  const Session* session = svc->LiveSession();
  if (session == nullptr || !session->txn) return 0;
  return session->txn->id;
}

const std::string& Visible(const OCILobLocator& l, std::uint64_t txn) {
  static const std::string kEmpty;
  if (!l.cell) return kEmpty;
  if (txn != 0 && l.cell->has_pending && l.cell->pending_txn == txn) return l.cell->pending;
  return l.cell->data;
}

size_t LobLength(const std::string& content, bool clob) {
  return clob ? ClobChars(content) : content.size();
}

sword CheckReadable(OCIError* err, const OCILobLocator* l) {
  if (l == nullptr || l->state == LobState::kUnset) return InvalidLocator(err);
  if (l->lob_type == OCI_TYPECODE_BFILE) return InvalidLocator(err);
  return OCI_SUCCESS;
}

LobOpening* OpeningOf(const SvcCtx* svc, const OCILobLocator& l) {
  const Session* session = svc->LiveSession();
  if (!l.cell || session == nullptr || !session->txn) return nullptr;
  const std::shared_ptr<const int>& token = session->txn->token;
  for (LobOpening& o : l.cell->openings) {
    if (o.owner.lock() == token) return &o;
  }
  return nullptr;
}

sword Writable(OCIError* err, SvcCtx* svc, OCILobLocator* l, std::string** content) {
  sword rc = CheckReadable(err, l);
  if (rc != OCI_SUCCESS) return rc;
  // decision D11: the empty LOB of an instance never stored cannot be written
  if (l->state == LobState::kNewInstance) return InvalidLocator(err);
  const LobOpening* opening = OpeningOf(svc, *l);
  if (opening != nullptr && opening->mode == OCI_LOB_READONLY) {
    return Fail(err, 22294, "cannot update a LOB opened in read-only mode");
  }
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

bool WriteFits(const std::string& content, std::uint64_t offset, size_t data_bytes) {
  if (offset > kMaxLobBytes + 1) return false;
  size_t start = static_cast<size_t>(offset) - 1;
  size_t before = std::max(content.size(), start);
  return before <= kMaxLobBytes && data_bytes <= kMaxLobBytes - before;
}

void Overwrite(std::string* content, bool clob, std::uint64_t offset, const std::string& data) {
  size_t start_units = static_cast<size_t>(offset) - 1;
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
  if (!IsClob(l) || csfrm == 0) return OCI_SUCCESS;
  ub1 own = l.csfrm == SQLCS_NCHAR ? ub1{SQLCS_NCHAR} : ub1{SQLCS_IMPLICIT};
  if (csfrm != own) return Fail(err, 24806, "LOB form mismatch");
  return OCI_SUCCESS;
}

sword StreamEntry(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp,
                  const void* amtp, const void* bufp, std::uint64_t bufl, int buf_position,
                  ub1 csfrm, SvcCtx** svc, OCILobLocator** l) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  *svc = AsSvcCtx(svchp);
  if (*svc == nullptr) return OCI_INVALID_HANDLE;
  *l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, *l)) != OCI_SUCCESS) return rc;
  if (amtp == nullptr) return FailArgument(errhp, 4);
  if (bufp == nullptr && bufl > 0) return FailArgument(errhp, buf_position);
  return CheckForm(errhp, **l, csfrm);
}

void UnitRange(const std::string& content, bool clob, std::uint64_t offset, std::uint64_t amount,
               size_t* start, size_t* end) {
  size_t size = content.size();
  size_t first = offset - 1 > size ? size : static_cast<size_t>(offset - 1);
  size_t count = amount > size ? size : static_cast<size_t>(amount);
  if (clob) {
    *start = ClobBytePosition(content, first);
    *end = amount == 0 ? size : ClobBytePosition(content, first + count);
  } else {
    *start = first;
    *end = amount == 0 ? size : std::min(size, first + count);
  }
}

}  // namespace ocimem
