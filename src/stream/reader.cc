// The structure of the stream on input: groups, delimiters, how many items
// a collection has and what is null. Each scalar's value is converted by
// _OraStreamToField; values reach their parents through _OraSetIndicator
// and _OraAddCollItem.
#include <cstring>

#include "adapter/adp.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"

int CAdp::_ReadGroupStart() {
  m_pStream->Tell();
  char c = 0;
  const unsigned long nRead = m_pStream->Read(&c, 1);
  if (nRead == 1 && c == ADP_GROUP_START[0]) return 1;
  m_pStream->Seek(-static_cast<long>(nRead), 1);
  return 0;
}

int CAdp::_ReadGroupEnd() {
  m_pStream->Tell();
  char c = 0;
  const unsigned long nRead = m_pStream->Read(&c, 1);
  if (nRead == 1 && c == ADP_GROUP_END[0]) return 1;
  m_pStream->Seek(-static_cast<long>(nRead), 1);
  return 0;
}

int CAdp::_ReadDelimiter() {
  const unsigned long nLength = static_cast<unsigned long>(m_nDelimiterLen);
  // An empty delimiter is never met: read as met, it would consume nothing
  // and announce one more collection item after every item, without end.
  if (nLength == 0) return 0;
  const unsigned long nRead = m_pStream->Read(m_szValueBuf, nLength);
  // Over one byte strncmp is a comparison of that byte.
  if (nRead == nLength && (nLength == 1 ? m_szValueBuf[0] == m_szDelimiter[0]
                                        : std::strncmp(m_szValueBuf, m_szDelimiter, nLength) == 0)) {
    return 1;
  }
  m_pStream->Seek(-static_cast<long>(nRead), 1);
  return 0;
}

unsigned long CAdp::_ReadElementSize() {
  CKelTraceFunc trace(m_pTrace, "CAdp::_ReadElementSize", -2);
  const long nStart = m_pStream->Tell();
  int nIndex = -1;
  long nLength = m_pStream->GetDelimitedLength(m_ValueEndSet, nIndex);
  // The first string met in the field is its first release, if it has one.
  m_bReleaseInField = nIndex != -1 && m_apszValueEnd[nIndex] == m_szRelease;
  while (nIndex != -1 && m_apszValueEnd[nIndex] == m_szRelease) {
    nLength += m_nReleaseLen;
    m_pStream->Seek(nStart + nLength, 0);
    const long n = m_pStream->GetDelimitedLength(m_SpecialSet, nIndex);
    if (n != 0 || nIndex == -1) {
      m_pTrace->Printf("*ERR: at offset %d", static_cast<int>(m_pStream->Tell()));
      throw CKelException(ADP_ERR_RELEASE_POSITION, "CAdp::_ReadElementSize", gAdpErrLookup,
                          ADP_ERR_LOOKUP_COUNT);
    }
    nLength += m_anSpecialLen[nIndex];
    m_pStream->Seek(nStart + nLength, 0);
    nLength += m_pStream->GetDelimitedLength(m_ValueEndSet, nIndex);
  }
  if (m_pStream->Tell() != nStart) m_pStream->Seek(nStart, 0);
  trace.SetRC(0);
  return static_cast<unsigned long>(nLength);
}

void CAdp::_ReadStream(CAdpTree& element) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_ReadStream", -2);
  CAdpTree* pChild = element.GetFirstChild();
  if (pChild == nullptr) {
    Column_Def* pDef = element.m_Data.m_pColumnDef->Next;
    _BuildElementTree(element, pDef);
    pChild = element.GetFirstChild();
  }
  while (pChild != nullptr) {
    CAdpTree& child = *pChild;
    const int bItem = _InColl(child);
    if (bItem && child.m_Data.m_pField == nullptr) {
      _OraCreateObject(child);
      _DevelopOraObjects(child, 0);
    }
    if (_IsComplex(child)) {
      const unsigned short nFlags = child.m_Data.m_pColumnDef->Flags;
      if (_ReadGroupStart()) {
        _ReadStream(child);
        if (!_ReadGroupEnd()) {
          throw CKelException(KEL_ERR_FORMAT, "CAdp::_ReadStream", gAdpErrLookup,
                              ADP_ERR_LOOKUP_COUNT);
        }
        if (!bItem) {
          _OraSetIndicator(child, element, 1);
        } else if (child.m_Data.m_pInd != nullptr) {
          // An item's indicator travels with OCICollAppend. A new object is
          // atomically null in Oracle until someone says otherwise, so an
          // item whose group was read is marked present here.
          *child.m_Data.m_pInd = OCI_IND_NOTNULL;
        }
      } else if ((nFlags & 0x0002) && _IsNestedColl(child)) {
        // Read without group marks, the item is as present as one read
        // from a group.
        _ReadStream(child);
        if (child.m_Data.m_pInd != nullptr) *child.m_Data.m_pInd = OCI_IND_NOTNULL;
      } else if (bItem && child.m_Data.m_pField != nullptr) {
        _OraDestroyObject(child);
      } else if ((nFlags & 0x0002) && _IsColl(child)) {
        // The collection its items were read into is present, or the new
        // object would keep it null.
        _ReadStream(child);
        if (!bItem) _OraSetIndicator(child, element, 1);
      }
    } else {
      const unsigned long nSize = _ReadElementSize();
      _OraStreamToField(child, nSize);
      _OraSetIndicator(child, element, 0);
    }
    if (bItem) _OraAddCollItem(child, element);
    CAdpTree* pNext = child.GetNextSibling();
    if (bItem && pNext == nullptr) {
      if (_ReadDelimiter()) {
        // The same node reads the next item into the same value; the one
        // just appended was copied into the collection.
        if (_IsComplex(child) && child.m_Data.m_pField != nullptr) _ClearForNextItem(child);
        pNext = &child;
      }
    } else {
      _ReadDelimiter();
    }
    pChild = pNext;
  }
  trace.SetRC(0);
}

// Every scalar of an item is written again by the next item, fields of
// extent 0 as null; nested objects and collections are written only when
// their group is there. So before the next item, each of them at any depth
// is made null again and each collection emptied, or the next item would
// keep what the one before held.
void CAdp::_ClearForNextItem(CAdpTree& node) {
  for (CAdpTree* pChild = node.GetFirstChild(); pChild != nullptr;
       pChild = pChild->GetNextSibling()) {
    if (!_IsComplex(*pChild) || pChild->m_Data.m_pField == nullptr) continue;
    if (_IsColl(*pChild)) {
      _OraEmptyColl(*pChild);
    } else {
      _ClearForNextItem(*pChild);
    }
    pChild->m_Data.m_nInd = OCI_IND_NULL;
    _OraSetIndicator(*pChild, node, 0);
  }
}
