// The LOB calls on whole LOBs: length, trim, temporary LOBs and locator assignment.  CLOB
// contents are kept in UTF-8, the client character set; lengths count characters as UTF-16
// units (decision D13).  Trimming a stored LOB needs its row locked by the session's
// transaction, and the change stays that transaction's until it commits.  Reads and writes
// are in lob_read.cc and lob_write.cc, the other changes in lob_edit.cc.
#include "lob/lob_ops.h"

namespace ocimem {
namespace {

sword GetLength(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp,
                bool has_out, std::uint64_t* length) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  if (!has_out) return FailArgument(errhp, 4);
  LobLock lock(*l);
  *length = LobLength(Visible(*l, SessionTxn(svc)), IsClob(*l));
  return OCI_SUCCESS;
}

sword Trim(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp,
           std::uint64_t newlen) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  LobLock lock(*l);
  std::string* content = nullptr;
  bool clob = IsClob(*l);
  if (l->state != LobState::kNewInstance &&
      newlen > LobLength(Visible(*l, SessionTxn(svc)), clob)) {
    return Fail(errhp, 22926, "specified trim length is greater than current LOB value's length");
  }
  if ((rc = Writable(errhp, svc, l, &content)) != OCI_SUCCESS) return rc;
  size_t n = static_cast<size_t>(newlen);
  content->resize(clob ? ClobBytePosition(*content, n) : n);
  return OCI_SUCCESS;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCILobGetLength(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4* lenp) try {
  std::uint64_t length = 0;
  sword rc = GetLength("OCILobGetLength", svchp, errhp, locp, lenp != nullptr, &length);
  if (rc == OCI_SUCCESS) *lenp = static_cast<ub4>(length);
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobGetLength2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, oraub8* lenp) try {
  std::uint64_t length = 0;
  sword rc = GetLength("OCILobGetLength2", svchp, errhp, locp, lenp != nullptr, &length);
  if (rc == OCI_SUCCESS) *lenp = length;
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobTrim(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4 newlen) try {
  return Trim("OCILobTrim", svchp, errhp, locp, newlen);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobTrim2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, oraub8 newlen) try {
  return Trim("OCILobTrim2", svchp, errhp, locp, newlen);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobCreateTemporary(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub2 csid,
                            ub1 csfrm, ub1 lobtype, boolean cache, OCIDuration duration) try {
  (void)csid;
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
  l->csfrm = CharsetFormOf(l->lob_type, csfrm);  // SQLCS_NCHAR makes an NCLOB
  l->state = LobState::kTemporary;
  l->cell = std::move(cell);
  l->select_txn = 0;
  l->write = LobPiecewise();
  l->read = LobStreamRead();
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobFreeTemporary(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp) try {
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
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobIsTemporary(OCIEnv* envp, OCIError* errhp, OCILobLocator* locp,
                        boolean* is_temporary) try {
  sword rc;
  if (Enter("OCILobIsTemporary", errhp, &rc)) return rc;
  if (AsEnv(envp) == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if (l == nullptr) return InvalidLocator(errhp);
  if (is_temporary == nullptr) return FailArgument(errhp, 4);
  *is_temporary = l->state == LobState::kTemporary ? TRUE : FALSE;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobLocatorAssign(OCISvcCtx* svchp, OCIError* errhp, const OCILobLocator* src_locp,
                          OCILobLocator** dst_locpp) try {
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
    cell->openings.clear();  // the copy is a LOB of its own, not open
    dst->cell = std::move(cell);
  }
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
