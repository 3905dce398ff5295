// OCIStmtGetPieceInfo and OCIStmtSetPieceInfo: after an execute or fetch answered
// OCI_NEED_DATA, which bind or define wants a piece, and the program's buffer for it.
#include "session/internal.h"
#include "statements/stmt_exec.h"

namespace ocimem {
namespace {

sword NothingAsked(OCIError* err) { return Fail(err, 24338, "statement handle not executed"); }

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCIStmtGetPieceInfo(OCIStmt* stmtp, OCIError* errhp, void** hndlpp, ub4* typep, ub1* in_outp,
                          ub4* iterp, ub4* idxp, ub1* piecep) try {
  sword rc;
  if (Enter("OCIStmtGetPieceInfo", errhp, &rc)) return rc;
  StmtHandle* s = AsStmt(stmtp);
  if (s == nullptr) return OCI_INVALID_HANDLE;
  if (hndlpp == nullptr) return FailArgument(errhp, 3);
  if (typep == nullptr) return FailArgument(errhp, 4);
  if (in_outp == nullptr) return FailArgument(errhp, 5);
  if (iterp == nullptr) return FailArgument(errhp, 6);
  if (idxp == nullptr) return FailArgument(errhp, 7);
  if (piecep == nullptr) return FailArgument(errhp, 8);
  if (s->pending_execute && s->pending_execute->waiting != nullptr) {
    const PendingExecute& p = *s->pending_execute;
    *hndlpp = p.waiting;
    *typep = OCI_HTYPE_BIND;
    *in_outp = OCI_PARAM_IN;
    *iterp = p.iter;
    *idxp = 0;
    *piecep = p.piece_asked;
    return OCI_SUCCESS;
  }
  if (s->pending_fetch && s->pending_fetch->waiting != nullptr) {
    const PendingFetch& f = *s->pending_fetch;
    *hndlpp = f.waiting;
    *typep = OCI_HTYPE_DEFINE;
    *in_outp = OCI_PARAM_OUT;
    *iterp = f.row;
    *idxp = 0;
    *piecep = f.piece_asked;
    return OCI_SUCCESS;
  }
  return NothingAsked(errhp);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIStmtSetPieceInfo(void* hndlp, ub4 type, OCIError* errhp, const void* bufp, ub4* alenp,
                          ub1 piece, const void* indp, ub2* rcodep) try {
  sword rc;
  if (Enter("OCIStmtSetPieceInfo", errhp, &rc)) return rc;
  GivenPiece* given = nullptr;
  if (type == OCI_HTYPE_BIND) {
    BindHandle* b = AsBind(hndlp);
    if (b == nullptr) return OCI_INVALID_HANDLE;
    StmtHandle* s = AsStmt(b->stmt);
    if (s != nullptr && s->pending_execute && s->pending_execute->waiting == b) {
      given = &s->pending_execute->given;
    }
  } else if (type == OCI_HTYPE_DEFINE) {
    DefineHandle* d = AsDefine(hndlp);
    if (d == nullptr) return OCI_INVALID_HANDLE;
    StmtHandle* s = AsStmt(d->stmt);
    if (s != nullptr && s->pending_fetch && s->pending_fetch->waiting == d) {
      given = &s->pending_fetch->given;
    }
  } else {
    return OCI_INVALID_HANDLE;
  }
  if (given == nullptr) return NothingAsked(errhp);
  if (piece > OCI_LAST_PIECE) return Fail(errhp, 24300, "bad value for mode");
  given->given = true;
  given->buf = bufp;
  given->alenp = alenp;
  given->piece = piece;
  given->indp = indp;
  given->rcodep = rcodep;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
