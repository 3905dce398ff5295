// OCITransCommit and OCITransRollback: end the session's open transaction.
#include "database/database.h"
#include "session/internal.h"
#include "lob/lob_ops.h"

using namespace ocimem;

namespace {

sword EndTransaction(const char* function, OCISvcCtx* svchp, OCIError* errhp, bool commit) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  Session* session = svc->LiveSession();
  if (session == nullptr || !session->db) return Fail(errhp, 1012, "not logged on");
  // With no open transaction there is nothing to do.  LOBs left open are closed; a commit
  // still commits, then reports them (decision LB14; implicit commits say nothing).
  bool open_lobs = commit && HasOpenLobs(session);
  EndSessionTransaction(session, commit);
  return open_lobs ? OpenLobsAtCommit(errhp) : OCI_SUCCESS;
}

}  // namespace

sword OCITransCommit(OCISvcCtx* svchp, OCIError* errhp, ub4 flags) try {
  (void)flags;  // one-phase commit of a local transaction
  return EndTransaction("OCITransCommit", svchp, errhp, true);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCITransRollback(OCISvcCtx* svchp, OCIError* errhp, ub4 flags) try {
  (void)flags;
  return EndTransaction("OCITransRollback", svchp, errhp, false);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
