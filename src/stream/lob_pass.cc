// The second pass for large objects: once the host has stored the object,
// each CLOB and BLOB recorded by the first pass is copied from the stream
// into the stored row's locator, page by page.
#include "adapter/adp.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"
#include "stream/release.h"

namespace {

enum : unsigned char { kOnePiece = 0, kFirstPiece = 1, kNextPiece = 2, kLastPiece = 3 };

}  // namespace

// Carries the reader's scope name, as this walk always has.
void CAdp::_ReadStreamLobs(CAdpTree& element) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_ReadStream", -2);
  for (CAdpTree* pChild = element.GetFirstChild(); pChild != nullptr;
       pChild = pChild->GetNextSibling()) {
    if (_IsComplex(*pChild)) {
      _ReadStreamLobs(*pChild);
    } else if (_IsLob(*pChild)) {
      _OraStreamToLobField(*pChild);
    }
  }
  trace.SetRC(0);
}

void CAdp::_OraStreamToLobField(CAdpTree& element) {
  const char* const kFunc = "CAdp::_OraStreamToLobField";
  CKelTraceFunc trace(m_pTrace, kFunc, -2);
  CAdpElementData& data = element.m_Data;
  ADP_PROGRESS("Processing LOB field - second pass...");
  const unsigned long nSize = data.m_nLobSize;
  if (nSize == 0) {
    ADP_PROGRESS("LOB: NULL");
    data.m_nInd = OCI_IND_NULL;
    trace.SetRC(0);
    return;
  }
  OCILobLocator* pLocator = *static_cast<OCILobLocator**>(data.m_pField);
  m_pStream->Seek(data.m_nLobPos, 0);
  unsigned long nDone = 0;
  long nTotal = 0;
  while (nDone < nSize) {
    if (m_pStream->IsEnd()) {
      throw CKelException(KEL_ERR_LOB, kFunc, gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
    }
    CKelStreamPage& page = m_pStream->ReadPage();
    const unsigned long nLeft = nSize - nDone;
    const unsigned long n = page.GetSize() < nLeft ? page.GetSize() : nLeft;
    nDone += n;
    // Every page starts a write of its own at the large object's first
    // byte, as this adapter always has.
    nTotal += _OraWriteLobElementFromPage(pLocator, page.GetData(), n, kFirstPiece, _IsClob(element));
  }
  ADP_PROGRESS("LOB: size %d", static_cast<int>(nTotal));
  data.m_nInd = OCI_IND_NOTNULL;
  trace.SetRC(0);
}

long CAdp::_OraWriteLobElementFromPage(OCILobLocator* pLocator, const void* pData,
                                       unsigned long nSize, unsigned char nPiece, int bClob) {
  const char* const kFunc = "CAdp::_OraWriteLobElementFromPage";
  CKelTraceFunc trace(m_pTrace, kFunc, -2);
  ub4 nAmount = 0;
  long nWritten = 0;
  CAdpReleseParser parser(*this, pData, nSize, bClob);
  for (;;) {
    CAdpReleaseDataBlock block;
    const int bLast = !parser.GetNextBlock(*m_pTrace, block);
    if (bLast) {
      if (nPiece == kFirstPiece) {
        nPiece = kOnePiece;
        nAmount = static_cast<ub4>(nSize);
      } else {
        nPiece = kLastPiece;
      }
    }
    const sword nStatus =
        OCILobWrite(m_pSvc, m_pErr, pLocator, &nAmount, 1, const_cast<char*>(block.GetData()),
                    static_cast<ub4>(block.GetSize()), nPiece, nullptr, nullptr, 0, SQLCS_IMPLICIT);
    if (nStatus != OCI_NEED_DATA && nStatus != OCI_SUCCESS &&
        adpOraLogError(m_pTrace, m_pEnv, m_pErr, m_pSvc, "OCILobWrite", nStatus) != 0) {
      throw CKelException(KEL_ERR_DATABASE, kFunc);
    }
    nWritten += static_cast<long>(block.GetSize());
    if (bLast) {
      trace.SetRC(0);
      return nWritten;
    }
    if (nPiece == kFirstPiece) nPiece = kNextPiece;
  }
}
