// CAdp construction and destruction, the per-call set-up and the drivers
// that the entry points call. The drivers only sequence the work.
#include "adapter/adp.h"

#include <cstdlib>
#include <cstring>

#include "interface/err_lookup.h"
#include "interface/trace_func.h"

namespace {

// The record's lengths are decimal texts. A length outside the 32 bytes the
// record's string can hold is cut to fit: the stream could not hold the
// string otherwise, and no byte outside the context's own copy is ever read.
long SpecialLength(const char* pszText, size_t nTextSize) {
  char szText[8] = {0};
  std::memcpy(szText, pszText, nTextSize < sizeof szText - 1 ? nTextSize : sizeof szText - 1);
  const long n = std::atoi(szText);
  if (n < 0) return 0;
  return n > ADP_SPECIAL_MAX ? ADP_SPECIAL_MAX : n;
}

// strncpy: at most nCount bytes, up to the source's NUL, the rest NUL.
void CopyPadded(char* pDest, const char* pSrc, size_t nCount) {
  size_t i = 0;
  for (; i < nCount && pSrc[i] != '\0'; ++i) pDest[i] = pSrc[i];
  for (; i < nCount; ++i) pDest[i] = '\0';
}

}  // namespace

CAdp::CAdp(DB_SPECIAL_STRINGS* pSpecialStrings)
    : m_pTrace(nullptr),
      m_pStream(nullptr),
      m_pEnv(nullptr),
      m_pErr(nullptr),
      m_pSvc(nullptr),
      m_pLastColumnDef(nullptr),
      m_pCheckedTdo(nullptr),
      m_nBuildDepth(0),
      m_RootDef(),
      m_Tree(),
      m_bLobsPending(0),
      m_Stream(0, nullptr, nullptr, 0),
      m_Trace(),
      m_bReleaseInField(1),
      m_pValuePage(nullptr),
      m_nSpare(0),
      m_nCall(0),
      m_Iterators(0, 16, 0),
      m_nIterators(0),
      m_nReleaseLater(0),
      m_aNumberMasks() {
  if (pSpecialStrings == nullptr) {
    CopyPadded(m_szDelimiter, ADP_DELIMITER, sizeof m_szDelimiter);
    CopyPadded(m_szTerminator, ADP_TERMINATOR, sizeof m_szTerminator);
    std::memcpy(m_szRelease, ADP_RELEASE, ADP_RELEASE_LEN);
    m_nDelimiterLen = ADP_DELIMITER_LEN;
    m_nTerminatorLen = ADP_TERMINATOR_LEN;
  } else {
    // No field falls back to its default, and the lengths never come from
    // the strings.
    CopyPadded(m_szDelimiter, pSpecialStrings->szDelimiter, sizeof m_szDelimiter);
    CopyPadded(m_szTerminator, pSpecialStrings->szTerminator, sizeof m_szTerminator);
    CopyPadded(m_szRelease, pSpecialStrings->szRelease, sizeof m_szRelease);
    m_nDelimiterLen =
        SpecialLength(pSpecialStrings->szDelimiterLen, sizeof pSpecialStrings->szDelimiterLen);
    m_nTerminatorLen =
        SpecialLength(pSpecialStrings->szTerminatorLen, sizeof pSpecialStrings->szTerminatorLen);
  }
  m_nReleaseLen = ADP_RELEASE_LEN;
  std::memset(m_szValueBuf, 0, sizeof m_szValueBuf);

  m_apszValueEnd[0] = m_szRelease;
  m_apszValueEnd[1] = ADP_GROUP_END;
  m_apszValueEnd[2] = m_szDelimiter;
  m_apszValueEnd[3] = nullptr;
  m_anValueEndLen[0] = static_cast<int>(m_nReleaseLen);
  m_anValueEndLen[1] = static_cast<int>(ADP_GROUP_END_LEN);
  m_anValueEndLen[2] = static_cast<int>(m_nDelimiterLen);
  m_anValueEndLen[3] = 0;

  m_apszSpecial[0] = m_szRelease;
  m_apszSpecial[1] = ADP_GROUP_END;
  m_apszSpecial[2] = m_szDelimiter;
  m_apszSpecial[3] = ADP_GROUP_START;
  m_apszSpecial[4] = m_szTerminator;
  m_apszSpecial[5] = nullptr;
  m_anSpecialLen[0] = static_cast<int>(m_nReleaseLen);
  m_anSpecialLen[1] = static_cast<int>(ADP_GROUP_END_LEN);
  m_anSpecialLen[2] = static_cast<int>(m_nDelimiterLen);
  m_anSpecialLen[3] = static_cast<int>(ADP_GROUP_START_LEN);
  m_anSpecialLen[4] = static_cast<int>(m_nTerminatorLen);
  m_anSpecialLen[5] = 0;
  m_ValueEndSet.Prepare(m_apszValueEnd, m_anValueEndLen);
  m_SpecialSet.Prepare(m_apszSpecial, m_anSpecialLen);

  std::memset(m_abSpecialLead, 0, sizeof m_abSpecialLead);
  m_bEmptySpecial = 0;
  m_nLeadBytes = 0;
  for (int i = 0; m_apszSpecial[i] != nullptr; ++i) {
    if (m_anSpecialLen[i] == 0) {
      m_bEmptySpecial = 1;
      continue;
    }
    const unsigned char bLead = static_cast<unsigned char>(m_apszSpecial[i][0]);
    if (!m_abSpecialLead[bLead]) std::memset(m_aabLeadBlocks[m_nLeadBytes++], bLead, 16);
    m_abSpecialLead[bLead] = 1;
  }

  std::memset(&m_RootDef, 0, sizeof m_RootDef);
  m_RootDef.Flags = COLDEF_COMPLEX;
  m_Tree.m_Data.m_pColumnDef = &m_RootDef;
  m_Tree.m_Data.m_bTopLevel = -1;  // a signed one-bit flag reads -1 when set
}

// The destructor gives back every value the tree made, not the root's
// alone: items read from a stream own theirs too.
CAdp::~CAdp() {
  _DropSpares();
  _OraDestroySubtree(m_Tree);
  _ReleaseHandedOut();
}

// What a stream-to-object call handed out stays alive through the calls
// that follow (the host may write it back, or store it and run the LOB
// pass) and goes at the next stream-to-object call.
void CAdp::_KeepHandedOut() {
  CAdpElementData& root = m_Tree.m_Data;
  if (!root.m_bCreated) return;
  _ReleaseLater(root.m_bMadeInStruct ? root.m_pStruct : root.m_pField);
  root.m_bCreated = 0;
}

void CAdp::_ReleaseLater(void* pValue) {
  if (pValue == nullptr) return;
  if (m_nReleaseLater == ADP_RELEASE_LATER_MAX) {
    OCIObjectFree(m_pEnv, m_pErr, m_apReleaseLater[0], OCI_OBJECTFREE_FORCE);
    for (int i = 1; i < ADP_RELEASE_LATER_MAX; ++i) m_apReleaseLater[i - 1] = m_apReleaseLater[i];
    --m_nReleaseLater;
  }
  m_apReleaseLater[m_nReleaseLater++] = pValue;
}

void CAdp::_ReleaseHandedOut() {
  for (int i = 0; i < m_nReleaseLater; ++i) {
    OCIObjectFree(m_pEnv, m_pErr, m_apReleaseLater[i], OCI_OBJECTFREE_FORCE);
  }
  m_nReleaseLater = 0;
}

void CAdp::_Init(CKelTrace* pTrace) {
  ++m_nCall;
  m_bLobsPending = 0;
  m_pTrace = pTrace != nullptr ? pTrace : &m_Trace;
}

int CAdp::_Init(CKelStream& stream, CKelTrace* pTrace, OCIEnv* pEnv, OCIError* pErr,
                OCISvcCtx* pSvc, Column_Def* pColumnDef) {
  _Init(pTrace);
  CKelTraceFunc trace(m_pTrace, "CAdp::_Init", -2);
  m_pStream = &stream;
  m_Out.Bind(&stream);
  if (pEnv == nullptr || pErr == nullptr || pSvc == nullptr || pColumnDef == nullptr) {
    throw CKelException(KEL_ERR_ARGUMENT, "CAdp::_Init", gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
  }
  m_pEnv = pEnv;
  m_pErr = pErr;
  m_pSvc = pSvc;
  m_RootDef.Next = pColumnDef;
  // Decided through m_RootDef, so by the caller's first definition, before
  // any rebuild.
  m_RootDef.DataType = _IsColl(m_Tree) ? SQLT_NCO : SQLT_NTY;
  trace.SetRC(0);
  if (pColumnDef == m_pLastColumnDef) return 0;
  m_pLastColumnDef = pColumnDef;
  return 1;
}

void CAdp::ProcessObject(CKelTrace* pTrace, CKelStream& stream, Column_Def*& pColumnDef,
                         OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc, void* pInstance,
                         short* pIndicator, short nIndicator, OCIType* pType) {
  if (_Init(stream, pTrace, pEnv, pErr, pSvc, pColumnDef)) _RebuildTree(pColumnDef);
  CAdpElementData& root = m_Tree.m_Data;
  // A root made by an earlier stream-to-object call may be the very
  // instance to write now: it is kept until the next stream-to-object call.
  _KeepHandedOut();
  root.ClearOraObjects();
  if (_IsColl(m_Tree)) {
    root.m_pStruct = pInstance;
    root.m_pField = &root.m_pStruct;
  } else {
    root.m_pField = pInstance;
  }
  root.m_pInd = pIndicator;
  root.m_nInd = nIndicator;
  root.m_pTdo = pType;
  root.m_pColumnDef = &m_RootDef;
  if (pType != nullptr && pType != m_pCheckedTdo) _CheckElementTree(pType);
  try {
    _DevelopOraObjects(m_Tree, 0);
    _WriteStream(m_Tree, _IsNull(m_Tree));
  } catch (...) {
    _DeleteIterators();
    m_Out.Flush();
    throw;
  }
  _DeleteIterators();
  m_Out.Flush();
}

int CAdp::ProcessStream(CKelTrace* pTrace, CKelStream& stream, Column_Def*& pColumnDef,
                        OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc, void*& pInstance,
                        short*& pIndicator, short& nIndicator, OCIType* pType) {
  CKelTraceFunc trace(pTrace != nullptr ? pTrace : &m_Trace, "CAdp::ProcessStream", -2);
  if (_Init(stream, pTrace, pEnv, pErr, pSvc, pColumnDef)) _RebuildTree(pColumnDef);
  _ReleaseHandedOut();
  CAdpElementData& root = m_Tree.m_Data;
  // The object the last call made lived until now. A collection made here
  // stays to be emptied and filled again.
  if (root.m_bCreated && !(root.m_bMadeInStruct && _IsColl(m_Tree))) _OraDestroyObject(m_Tree);
  root.m_pInd = pIndicator;
  root.m_nInd = nIndicator;
  root.m_pTdo = pType;
  root.m_pColumnDef = &m_RootDef;
  if (pType != nullptr && pType != m_pCheckedTdo) _CheckElementTree(pType);
  try {
    _OraCreateObject(m_Tree);
    _DevelopOraObjects(m_Tree, 1);
    _ReadStream(m_Tree);
  } catch (...) {
    _DeleteIterators();
    throw;
  }
  _DeleteIterators();
  pInstance = _IsColl(m_Tree) ? root.m_pStruct : root.m_pField;
  pIndicator = root.m_pInd;
  nIndicator = root.m_nInd;
  trace.SetRC(0);
  return m_bLobsPending;
}

void CAdp::ProcessStreamWriteLobs(CKelTrace* pTrace, const char* pszSelect) {
  _Init(pTrace);
  CAdpElementData& root = m_Tree.m_Data;
  root.m_pColumnDef = &m_RootDef;
  // The stored object takes the root's place; the object the host was
  // handed stays alive until the next stream-to-object call.
  if (!_IsColl(m_Tree)) _KeepHandedOut();
  _OraSelectObject(pszSelect);
  // The fetched object is the adapter's to free once it is done with it.
  if (!_IsColl(m_Tree)) _ReleaseLater(root.m_pField);
  try {
    _DevelopOraObjects(m_Tree, 0);
    _ReadStreamLobs(m_Tree);
  } catch (...) {
    _DeleteIterators();
    throw;
  }
  _DeleteIterators();
}

CKelStream& CAdp::StreamFromBuffer(const void* pBuffer, unsigned long nSize) {
  m_Stream.SetSize(0);
  CKelStreamPage& page = m_Stream.NewPage(pBuffer, nSize, 0);
  m_Stream.WritePage(page, static_cast<unsigned long>(-1));
  m_Stream.Seek(0, 0);
  return m_Stream;
}

// Values that items of the old tree made go before the tree does. What the
// root made was handed to the host: it lives on until the next
// stream-to-object call, as it would have with the old list, and is not
// taken for a value of the new list's type.
void CAdp::_RebuildTree(Column_Def*& pColumnDef) {
  for (CAdpTree* pChild = m_Tree.GetFirstChild(); pChild != nullptr;
       pChild = pChild->GetNextSibling()) {
    _OraDestroySubtree(*pChild);
  }
  m_Tree.DeleteChildren();
  _KeepHandedOut();
  m_Tree.m_Data.ClearOraObjects();
  // Spares belong to the old list's definitions.
  _DropSpares();
  m_pCheckedTdo = nullptr;
  m_nBuildDepth = 0;
  try {
    _BuildElementTree(m_Tree, pColumnDef);
  } catch (CKelException& e) {
    // A list the tree cannot be built from is refused on every call, not
    // taken as built.
    if (e.GetRC() == KEL_ERR_ARGUMENT) m_pLastColumnDef = nullptr;
    throw;
  }
}

void CAdp::_OraFail(sword nStatus, const char* pszOciFunc, const char* pszFunc) {
  if (adpOraLogError(m_pTrace, m_pEnv, m_pErr, m_pSvc, pszOciFunc, nStatus) != 0) {
    throw CKelException(KEL_ERR_DATABASE, pszFunc);
  }
}
