// The structure of the stream on output: group marks around every non-null
// nested object or collection, a delimiter between fields, nothing for a
// null. Each scalar's text comes from _OraFieldToStream.
#include "adapter/adp.h"
#include "interface/trace_func.h"

void CAdp::_WriteStream(CAdpTree& element, int bNull) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_WriteStream", -2);
  for (CAdpTree* pChild = element.GetFirstChild(); pChild != nullptr;) {
    if (_IsComplex(*pChild)) {
      if (bNull || _IsNull(*pChild)) {
        // Visits the subtree and writes nothing.
        _WriteStream(*pChild, 1);
      } else {
        _WriteGroupStart();
        _WriteStream(*pChild, _IsNull(*pChild));
        _WriteGroupEnd();
      }
    } else if (!bNull) {
      _OraFieldToStream(*pChild);
    }
    pChild = pChild->GetNextSibling();
    if (!bNull && pChild != nullptr) _WriteDelimiter();
  }
  trace.SetRC(0);
}

void CAdp::_WriteGroupStart() { m_Out.Write(ADP_GROUP_START, ADP_GROUP_START_LEN); }

void CAdp::_WriteGroupEnd() { m_Out.Write(ADP_GROUP_END, ADP_GROUP_END_LEN); }

void CAdp::_WriteDelimiter() {
  m_Out.Write(m_szDelimiter, static_cast<unsigned long>(m_nDelimiterLen));
}

char* CAdp::_BeginValue(unsigned long nSize) {
  if (char* pRoom = m_Out.Reserve(nSize)) {
    m_pValuePage = nullptr;
    return pRoom;
  }
  m_Out.Flush();
  m_pValuePage = &m_pStream->NewPage(nSize);
  return static_cast<char*>(m_pValuePage->GetData());
}

void CAdp::_EndValue(unsigned long nUsed) {
  if (m_pValuePage == nullptr) {
    m_Out.Commit(nUsed);
    return;
  }
  CKelStreamPage& page = *m_pValuePage;
  m_pValuePage = nullptr;
  m_pStream->WritePage(page, nUsed);
}
