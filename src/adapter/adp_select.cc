// Fetching the object the host stored, for the LOB pass to write into its
// large objects.
#include <cstring>

#include "adapter/adp.h"
#include "interface/trace_func.h"

void CAdp::_OraSelectObject(const char* pszSelect) {
  const char* const kFunc = "_OraSelectObject";
  CKelTraceFunc trace(m_pTrace, kFunc, -2);
  OCIDefine* pDefine = nullptr;
  OCIStmt* pStmt = nullptr;
  void* pObject = nullptr;
  OCIInd* pInd = nullptr;
  CAdpElementData& root = m_Tree.m_Data;

  _OraCheck(OCIHandleAlloc(m_pEnv, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT, 0, nullptr),
            "OCIHandleAlloc(OCI_HTYPE_STMT)", kFunc);
  try {
    _OraCheck(OCIStmtPrepare(pStmt, m_pErr, reinterpret_cast<const OraText*>(pszSelect),
                             static_cast<ub4>(std::strlen(pszSelect)), OCI_NTV_SYNTAX,
                             OCI_DEFAULT),
              "OCIStmtPrepare", kFunc);
    _OraCheck(OCIDefineByPos(pStmt, &pDefine, m_pErr, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr,
                             nullptr, OCI_DEFAULT),
              "OCIDefineByPos", kFunc);
    _OraCheck(OCIDefineObject(pDefine, m_pErr, root.m_pTdo, &pObject, nullptr,
                              reinterpret_cast<void**>(&root.m_pInd), nullptr),
              "OCIDefineObject", kFunc);
    _OraCheck(OCIStmtExecute(m_pSvc, pStmt, m_pErr, 1, 0, nullptr, nullptr, OCI_DEFAULT),
              "OCIStmtExecute", kFunc);
  } catch (...) {
    // A fetch that failed may still have handed over an object: nobody else frees it.
    if (pObject != nullptr) OCIObjectFree(m_pEnv, m_pErr, pObject, OCI_OBJECTFREE_FORCE);
    OCIHandleFree(pStmt, OCI_HTYPE_STMT);
    throw;
  }
  // As this adapter has always done: a collection root is left without its
  // fetched value, and the indicator structure OCI returned is not kept, so
  // the root's nullness falls back to its own indicator.
  if (_IsColl(m_Tree)) {
    root.m_pField = pObject;
    root.m_pField = nullptr;
    // Nothing reaches the fetched collection any more.
    OCIObjectFree(m_pEnv, m_pErr, pObject, OCI_OBJECTFREE_FORCE);
  } else {
    root.m_pField = pObject;
  }
  root.m_pInd = pInd;
  OCIHandleFree(pStmt, OCI_HTYPE_STMT);
  trace.SetRC(0);
}
