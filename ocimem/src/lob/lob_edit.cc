// OCILobAppend, OCILobCopy, OCILobCopy2, OCILobErase and OCILobErase2: changes of one LOB
// made from another or in place.  Amounts and offsets count characters for CLOBs (UTF-16
// units, decision D13) and bytes for BLOBs.  The LOB changed needs its row locked, as for a
// write; the source is read as the session sees it.
#include <algorithm>

#include "lob/lob_ops.h"

namespace ocimem {
namespace {

sword TypeMismatch(OCIError* err) { return Fail(err, 24805, "LOB type mismatch"); }

struct TwoLobs {
  SvcCtx* svc = nullptr;
  OCILobLocator* dst = nullptr;
  OCILobLocator* src = nullptr;
};

// The checks of a call taking a destination and a source LOB of the same kind.
sword EnterTwo(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* dst_locp,
               OCILobLocator* src_locp, TwoLobs* t) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  t->svc = AsSvcCtx(svchp);
  if (t->svc == nullptr) return OCI_INVALID_HANDLE;
  t->dst = AsLocator(dst_locp);
  t->src = AsLocator(src_locp);
  if ((rc = CheckReadable(errhp, t->dst)) != OCI_SUCCESS) return rc;
  if ((rc = CheckReadable(errhp, t->src)) != OCI_SUCCESS) return rc;
  if (IsClob(*t->dst) != IsClob(*t->src)) return TypeMismatch(errhp);  // CLOB and NCLOB agree
  return OCI_SUCCESS;
}

// The source's contents as the session sees them, copied out under the source's lock.
std::string SourceContents(const TwoLobs& t) {
  LobLock lock(*t.src);
  return Visible(*t.src, SessionTxn(t.svc));
}

sword Copy(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* dst_locp,
           OCILobLocator* src_locp, std::uint64_t amount, std::uint64_t dst_offset,
           std::uint64_t src_offset) {
  TwoLobs t;
  sword rc = EnterTwo(function, svchp, errhp, dst_locp, src_locp, &t);
  if (rc != OCI_SUCCESS) return rc;
  if (dst_offset == 0 || src_offset == 0) return IllegalParameter(errhp);
  bool clob = IsClob(*t.dst);
  {
    LobLock lock(*t.dst);
    std::string* content = nullptr;
    if ((rc = Writable(errhp, t.svc, t.dst, &content)) != OCI_SUCCESS) return rc;
  }
  std::string source = SourceContents(t);
  if (src_offset > LobLength(source, clob)) {
    return Fail(errhp, 22994, "source offset is beyond the end of the source LOB");
  }
  // decision LB4: an amount of 0 copies nothing; more than the source holds copies to its end
  if (amount == 0) return OCI_SUCCESS;
  size_t start = 0;
  size_t end = 0;
  UnitRange(source, clob, src_offset, amount, &start, &end);
  std::string data = source.substr(start, end - start);
  LobLock lock(*t.dst);
  std::string* content = nullptr;
  if ((rc = Writable(errhp, t.svc, t.dst, &content)) != OCI_SUCCESS) return rc;
  if (!WriteFits(*content, dst_offset, data.size())) return TooLarge(errhp);
  Overwrite(content, clob, dst_offset, data);
  return OCI_SUCCESS;
}

sword Erase(const char* function, OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp,
            bool has_amount, std::uint64_t* amount, std::uint64_t offset) {
  sword rc;
  if (Enter(function, errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  if (svc == nullptr) return OCI_INVALID_HANDLE;
  OCILobLocator* l = AsLocator(locp);
  if ((rc = CheckReadable(errhp, l)) != OCI_SUCCESS) return rc;
  if (!has_amount) return FailArgument(errhp, 4);
  if (offset == 0) return IllegalParameter(errhp);
  LobLock lock(*l);
  std::string* content = nullptr;
  if ((rc = Writable(errhp, svc, l, &content)) != OCI_SUCCESS) return rc;
  bool clob = IsClob(*l);
  // decision LB5: erasing from beyond the end erases nothing; the amount is cut at the end
  if (offset > LobLength(*content, clob) || *amount == 0) {
    *amount = 0;
    return OCI_SUCCESS;
  }
  size_t start = 0;
  size_t end = 0;
  UnitRange(*content, clob, offset, *amount, &start, &end);
  // Spaces for a CLOB, one per character unit, so that every later offset stays; zero
  // bytes for a BLOB.
  size_t units = clob ? ClobChars(content->substr(start, end - start)) : end - start;
  content->replace(start, end - start, std::string(units, clob ? ' ' : '\0'));
  *amount = units;
  return OCI_SUCCESS;
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

sword OCILobAppend(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* dst_locp,
                   OCILobLocator* src_locp) try {
  TwoLobs t;
  sword rc = EnterTwo("OCILobAppend", svchp, errhp, dst_locp, src_locp, &t);
  if (rc != OCI_SUCCESS) return rc;
  {
    LobLock lock(*t.dst);
    std::string* content = nullptr;
    if ((rc = Writable(errhp, t.svc, t.dst, &content)) != OCI_SUCCESS) return rc;
  }
  std::string source = SourceContents(t);
  LobLock lock(*t.dst);
  std::string* content = nullptr;
  if ((rc = Writable(errhp, t.svc, t.dst, &content)) != OCI_SUCCESS) return rc;
  if (content->size() > kMaxLobBytes || source.size() > kMaxLobBytes - content->size()) {
    return TooLarge(errhp);
  }
  content->append(source);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobCopy(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* dst_locp,
                 OCILobLocator* src_locp, ub4 amount, ub4 dst_offset, ub4 src_offset) try {
  return Copy("OCILobCopy", svchp, errhp, dst_locp, src_locp, amount, dst_offset, src_offset);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobCopy2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* dst_locp,
                  OCILobLocator* src_locp, oraub8 amount, oraub8 dst_offset,
                  oraub8 src_offset) try {
  return Copy("OCILobCopy2", svchp, errhp, dst_locp, src_locp, amount, dst_offset, src_offset);
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobErase(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, ub4* amount,
                  ub4 offset) try {
  std::uint64_t n = amount != nullptr ? *amount : 0;
  sword rc = Erase("OCILobErase", svchp, errhp, locp, amount != nullptr, &n, offset);
  if (rc == OCI_SUCCESS) *amount = static_cast<ub4>(n);
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCILobErase2(OCISvcCtx* svchp, OCIError* errhp, OCILobLocator* locp, oraub8* amount,
                   oraub8 offset) try {
  std::uint64_t n = amount != nullptr ? *amount : 0;
  sword rc = Erase("OCILobErase2", svchp, errhp, locp, amount != nullptr, &n, offset);
  if (rc == OCI_SUCCESS) *amount = n;
  return rc;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
