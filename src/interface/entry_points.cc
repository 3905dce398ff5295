// The exported entry points: thin shells that check their arguments, open a
// trace scope, run one driver of CAdp and translate the outcome. The C
// flavour hands an error to KelSetLastException and returns its code; the
// C++ flavour lets the CKelException travel to the caller.
#include <exception>
#include <new>

#include <varnadp.h>

#include <host/kel.h>

#include "adapter/adp.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"

namespace {

CKelException ArgumentError(const char* pszFunc) {
  return CKelException(KEL_ERR_ARGUMENT, pszFunc, gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
}

CAdp* AsAdp(VARNADP* pCtx) { return static_cast<CAdp*>(pCtx); }

}  // namespace

extern "C" int adpCreateContext(VARNADP** ppCtx, CKelTrace* pTrace,
                                DB_SPECIAL_STRINGS* pSpecialStrings) {
  CKelTraceFunc trace(pTrace, "adpCreateContext", -2);
  try {
    if (ppCtx == nullptr) throw ArgumentError("adpCreateContext");
    CAdp* pAdp = new (std::nothrow) CAdp(pSpecialStrings);
    if (pAdp == nullptr) {
      throw CKelException(KEL_ERR_MEMORY, "adpCreateContext", gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
    }
    *ppCtx = pAdp;
    trace.SetRC(0);
    return 0;
  } catch (CKelException& e) {
    KelSetLastException(e);
    return e.GetRC();
  }
}

extern "C" int adpDestroyContext(VARNADP* pCtx, CKelTrace* pTrace) {
  CKelTraceFunc trace(pTrace, "adpDestroyContext", -2);
  try {
    if (pCtx == nullptr) throw ArgumentError("adpDestroyContext");
    delete AsAdp(pCtx);
    trace.SetRC(0);
    return 0;
  } catch (CKelException& e) {
    KelSetLastException(e);
    return e.GetRC();
  }
}

// A NULL stream or column-definition holder is refused here too: the driver
// takes both by reference and would otherwise read through NULL.
extern "C" int adpProcessObject(VARNADP* pCtx, CKelTrace* pTrace, CKelStream* pStream,
                                Column_Def** ppColumnDef, OCIEnv* pEnv, OCIError* pErr,
                                OCISvcCtx* pSvc, void* pInstance, short* pIndicator,
                                short nIndicator, OCIType* pType) {
  CKelTraceFunc trace(pTrace, "adpProcessObject", -2);
  try {
    if (pCtx == nullptr || pInstance == nullptr || pType == nullptr || pStream == nullptr ||
        ppColumnDef == nullptr) {
      throw ArgumentError("adpProcessObject");
    }
    AsAdp(pCtx)->ProcessObject(pTrace, *pStream, *ppColumnDef, pEnv, pErr, pSvc, pInstance,
                               pIndicator, nIndicator, pType);
    trace.SetRC(0);
    return 0;
  } catch (CKelException& e) {
    KelSetLastException(e);
    return e.GetRC();
  }
}

// Only CKelException leaves the C++ entry points; anything else reaching
// their boundary ends the process, as a violated exception specification
// would.
void AdpProcessObject(VARNADP* pCtx, CKelTrace* pTrace, CKelStream& stream,
                      Column_Def*& pColumnDef, OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                      void* pInstance, short* pIndicator, short nIndicator, OCIType* pType) {
  CKelTraceFunc trace(pTrace, "AdpProcessObject", -2);
  try {
    if (pCtx == nullptr || pInstance == nullptr || pType == nullptr) {
      throw ArgumentError("AdpProcessObject");
    }
    AsAdp(pCtx)->ProcessObject(pTrace, stream, pColumnDef, pEnv, pErr, pSvc, pInstance,
                               pIndicator, nIndicator, pType);
  } catch (CKelException&) {
    throw;
  } catch (...) {
    std::terminate();
  }
  trace.SetRC(0);
}
