// OCILobOpen, OCILobClose and OCILobIsOpen, and what a locator tells about its LOB without
// reading it: OCILobCharSetForm, OCILobCharSetId and OCILobGetChunkSize.  Openness belongs to
// the LOB, not to the locator: every locator of the LOB sees it open, for the session that
// opened it.  A LOB opened in a transaction is closed when the transaction ends; committing
// it while still open reports ORA-22291 after the commit.
#include <algorithm>

#include "lob/lob_ops.h"
#include "database/table.h"

namespace ocimem {
namespace {

// The locator of an open, close or is-open call: a stored or temporary CLOB or BLOB.
sword EnterOpenCall(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp,
                    SvcCtx** svc, OCILobLocator** l) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  *svc = AsSvcCtx(svchp);
  if (*svc == nullptr) return OCI_INVALID_HANDLE;
  *l = AsLocator(locp);
  return CheckReadable(errhp, *l);
}

// Chunk sizes of a LOB stored in 8 KB blocks.
constexpr ub4 kChunkBytes = 8132;
constexpr ub4 kChunkChars = kChunkBytes / 2;  // CLOB characters are kept as UTF-16

}  // namespace

bool HasOpenLobs(Session* session) {
  if (session == nullptr || !session->db || !session->txn || session->txn->id == 0) return false;
  std::lock_guard<std::mutex> lock(session->db->mutex);
  const Transaction& txn = *session->txn;
  for (const std::shared_ptr<LobCell>& cell : txn.opened) {
    for (const LobOpening& o : cell->openings) {
      if (o.txn == txn.id && o.owner.lock() == txn.token) return true;
    }
  }
  return false;
}

sword OpenLobsAtCommit(OCIError* err) {
  return Fail(err, 22291, "Open LOBs exist at transaction commit time");
}

}  // namespace ocimem

using namespace ocimem;

sword OCILobOpen(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub1 mode) try {
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc = EnterOpenCall("OCILobOpen", svchp, errhp, locp, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  // decisions D11, LB17: the empty LOB of an instance never stored is no LOB to open
  if (l->state == LobState::kNewInstance) return InvalidLocator(errhp);
  // decision LB6: modes other than read-only and read-write are refused
  if (mode != OCI_LOB_READONLY && mode != OCI_LOB_READWRITE) return IllegalParameter(errhp);
  Session* session = svc->LiveSession();
  if (session == nullptr || !session->txn) return Fail(errhp, 1012, "not logged on");
  LobLock lock(*l);
  std::vector<LobOpening>& openings = l->cell->openings;
  openings.erase(std::remove_if(openings.begin(), openings.end(),
                                [](const LobOpening& o) { return o.owner.expired(); }),
                 openings.end());
  if (OpeningOf(svc, *l) != nullptr) {
    return Fail(errhp, 22293, "LOB already opened in the same transaction");
  }
  LobOpening opening;
  opening.owner = session->txn->token;
  opening.mode = mode;
  // decision LB15: a temporary LOB's openness is no transaction's
  if (l->state == LobState::kPersistent) {
    opening.txn = session->txn->id;
    if (opening.txn == 0 && mode == OCI_LOB_READWRITE) {
      return Fail(errhp, 22292, "Cannot open a LOB in read-write mode without a transaction");
    }
    if (opening.txn != 0) session->txn->opened.push_back(l->cell);
  }
  openings.push_back(opening);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobClose(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp) try {
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc = EnterOpenCall("OCILobClose", svchp, errhp, locp, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  if (l->state == LobState::kNewInstance) return InvalidLocator(errhp);
  LobLock lock(*l);
  LobOpening* opening = OpeningOf(svc, *l);
  if (opening == nullptr) {
    // decision LB7: the operation named in the message is CLOSE
    return Fail(errhp, 22289, "cannot perform CLOSE operation on an unopened file or LOB");
  }
  std::vector<LobOpening>& openings = l->cell->openings;
  openings.erase(openings.begin() + (opening - openings.data()));
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobIsOpen(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, boolean* flag) try {
  SvcCtx* svc = nullptr;
  OCILobLocator* l = nullptr;
  sword rc = EnterOpenCall("OCILobIsOpen", svchp, errhp, locp, &svc, &l);
  if (rc != OCI_SUCCESS) return rc;
  if (flag == nullptr) return FailArgument(errhp, 4);
  LobLock lock(*l);
  *flag = OpeningOf(svc, *l) != nullptr ? TRUE : FALSE;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobCharSetForm(OCIEnv* envhp, OCIError* errhp, const OCILobLocator* locp, ub1* csfrm) try {
  sword rc;
  if (Enter("OCILobCharSetForm", errhp, &rc)) return rc;
  if (AsEnv(envhp) == nullptr) return OCI_INVALID_HANDLE;
  const OCILobLocator* l = AsLocator(locp);
  if (l == nullptr) return InvalidLocator(errhp);
  if (csfrm == nullptr) return FailArgument(errhp, 4);
  // BLOBs and BFILEs have no character set: 0.
  if (l->lob_type == OCI_TYPECODE_BLOB || l->lob_type == OCI_TYPECODE_BFILE) {
    *csfrm = 0;
    return OCI_SUCCESS;
  }
  // decision LB8: a locator that designates no LOB has no form (ORA-22275)
  if (l->state == LobState::kUnset) return InvalidLocator(errhp);
  *csfrm = CharsetFormOf(l->lob_type, l->csfrm);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobCharSetId(OCIEnv* envhp, OCIError* errhp, const OCILobLocator* locp, ub2* csid) try {
  sword rc;
  if (Enter("OCILobCharSetId", errhp, &rc)) return rc;
  if (AsEnv(envhp) == nullptr) return OCI_INVALID_HANDLE;
  const OCILobLocator* l = AsLocator(locp);
  if (l == nullptr) return InvalidLocator(errhp);
  if (csid == nullptr) return FailArgument(errhp, 4);
  if (l->lob_type == OCI_TYPECODE_BLOB || l->lob_type == OCI_TYPECODE_BFILE) {
    *csid = 0;
    return OCI_SUCCESS;
  }
  if (l->state == LobState::kUnset) return InvalidLocator(errhp);
  // AL32UTF8 for CLOBs, AL16UTF16 for NCLOBs, as the describe calls report.
  *csid = l->csfrm == SQLCS_NCHAR ? ub2{2000} : ub2{873};
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobGetChunkSize(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp,
                         ub4* chunksizep) try {
  sword rc;
  if (Enter("OCILobGetChunkSize", errhp, &rc)) return rc;
  if (AsSvcCtx(svchp) == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  if (chunksizep == nullptr) return FailArgument(errhp, 4);
  // decision LB9: an 8 KB block's usable chunk, in bytes for a BLOB, characters for a CLOB
  *chunksizep = IsClob(*l) ? kChunkChars : kChunkBytes;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
