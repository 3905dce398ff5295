// Oracle diagnostics to the trace, and the one code a failed call stands for.
#include <cstring>

#include <varnadp.h>

#include <host/kel.h>

namespace {

constexpr ub4 kMessageSize = 512;

const char* StatusLabel(int nStatus) {
  switch (nStatus) {
    case OCI_SUCCESS_WITH_INFO:
      return "Success with info";
    case OCI_NO_DATA:
      return "No data condition";
    default:
      return "Error";
  }
}

const char* FallbackText(int nStatus) {
  switch (nStatus) {
    case OCI_ERROR:
      return "Error";
    case OCI_SUCCESS_WITH_INFO:
      return "No extended error information available";
    case OCI_NO_DATA:
      return "No data";
    case OCI_NEED_DATA:
      return "Need data";
    case OCI_INVALID_HANDLE:
      return "Invalid handle";
    case OCI_STILL_EXECUTING:
      return "Still executing";
    case OCI_CONTINUE:
      return "Continue";
    default:
      return "Unexpected condition encountered";
  }
}

}  // namespace

extern "C" int adpOraLogError(CKelTrace* pTrace, OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                              const char* pszOciFunc, int nStatus) {
  if (nStatus == OCI_SUCCESS) return 0;
  // Printed as the C library prints a NULL string, without handing it one.
  if (pszOciFunc == nullptr) pszOciFunc = "(null)";

  const char* pszLabel = StatusLabel(nStatus);
  void* pHandle = pErr != nullptr ? static_cast<void*>(pErr) : static_cast<void*>(pEnv);
  const ub4 nHandleType = pErr != nullptr ? OCI_HTYPE_ERROR : OCI_HTYPE_ENV;

  char szMessage[kMessageSize];
  std::memset(szMessage, 0, sizeof szMessage);
  int nFirstError = nStatus;
  bool bFound = false;
  // Only OCI_NO_DATA ends the walk over the records; the record that
  // answers it is looked at too and found empty.
  for (ub4 nRecord = 1;; ++nRecord) {
    szMessage[0] = '\0';
    sb4 nErrCode = 0;
    const sword nGet = OCIErrorGet(pHandle, nRecord, nullptr, &nErrCode,
                                   reinterpret_cast<OraText*>(szMessage), kMessageSize, nHandleType);
    if (szMessage[0] != '\0') {
      bFound = true;
      szMessage[kMessageSize - 1] = '\0';
      const size_t nLength = std::strlen(szMessage);
      if (szMessage[nLength - 1] == '\n') szMessage[nLength - 1] = '\0';
      if (nRecord == 1) {
        if (pTrace != nullptr) {
          kelTracePrintf(pTrace, "%s (%d) returned by %s, errcode=%d\n%s", pszLabel, nStatus,
                         pszOciFunc, static_cast<int>(nErrCode), szMessage);
        }
        nFirstError = nErrCode;
      } else if (pTrace != nullptr) {
        kelTracePrintf(pTrace, "\n  Next errcode=%d\n%s", static_cast<int>(nErrCode), szMessage);
      }
    }
    if (nGet == OCI_NO_DATA) break;
  }
  if (pTrace != nullptr && !bFound) {
    kelTracePrintf(pTrace, "%s (%d) returned by %s\nORA-%d: %s", pszLabel, nStatus, pszOciFunc,
                   nStatus, FallbackText(nStatus));
  }

  if (nFirstError == 25228 || nFirstError == 25237) return nFirstError;
  if (nStatus != OCI_ERROR) nFirstError = nStatus;
  if (nFirstError == 12154) return KEL_ERR_CONNECTION;
  return adpOraCheckConnection(pEnv, pErr, pSvc) == KEL_ERR_CONNECTION ? KEL_ERR_CONNECTION
                                                                      : KEL_ERR_DATABASE;
}

extern "C" int adpOraCheckConnection(OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc) {
  static const char kQuery[] = "select 1 from dual";
  OCIStmt* pStmt = nullptr;
  sword nStatus = OCIHandleAlloc(pEnv, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT, 0, nullptr);
  if (nStatus == OCI_SUCCESS) {
    nStatus = OCIStmtPrepare(pStmt, pErr, reinterpret_cast<const OraText*>(kQuery),
                             sizeof kQuery - 1, OCI_NTV_SYNTAX, OCI_DEFAULT);
  }
  if (nStatus == OCI_SUCCESS) {
    nStatus = OCIStmtExecute(pSvc, pStmt, pErr, 0, 0, nullptr, nullptr, OCI_DEFAULT);
  }
  if (pStmt != nullptr) OCIHandleFree(pStmt, OCI_HTYPE_STMT);
  return nStatus == OCI_SUCCESS ? 0 : KEL_ERR_CONNECTION;
}
