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

// With pnLobsPending NULL nothing at all is done: no stream is read and no
// object is built (adpProcessBuffer, in contrast, only skips the store).
extern "C" int adpProcessStream(VARNADP* pCtx, CKelTrace* pTrace, CKelStream* pStream,
                                Column_Def** ppColumnDef, OCIEnv* pEnv, OCIError* pErr,
                                OCISvcCtx* pSvc, void** ppInstance, short** ppIndicator,
                                short* pnIndicator, OCIType* pType, int* pnLobsPending) {
  CKelTraceFunc trace(pTrace, "adpProcessStream", -2);
  try {
    if (pCtx == nullptr || pStream == nullptr || ppInstance == nullptr || ppIndicator == nullptr ||
        pnIndicator == nullptr || pType == nullptr || ppColumnDef == nullptr) {
      throw ArgumentError("adpProcessStream");
    }
    if (pnLobsPending != nullptr) {
      *pnLobsPending =
          AsAdp(pCtx)->ProcessStream(pTrace, *pStream, *ppColumnDef, pEnv, pErr, pSvc,
                                     *ppInstance, *ppIndicator, *pnIndicator, pType);
    }
    trace.SetRC(0);
    return 0;
  } catch (CKelException& e) {
    KelSetLastException(e);
    return e.GetRC();
  }
}

// Carries the trace name of adpProcessStream, as it always has. A NULL
// buffer holder is refused: the call advances it.
extern "C" int adpProcessBuffer(VARNADP* pCtx, CKelTrace* pTrace, const void** ppBuffer,
                                unsigned long nSize, Column_Def** ppColumnDef, OCIEnv* pEnv,
                                OCIError* pErr, OCISvcCtx* pSvc, void** ppInstance,
                                short** ppIndicator, short* pnIndicator, OCIType* pType,
                                int* pnLobsPending) {
  CKelTraceFunc trace(pTrace, "adpProcessStream", -2);
  try {
    // A buffer that is not there but has bytes would be read through NULL.
    if (pCtx == nullptr || ppInstance == nullptr || ppIndicator == nullptr ||
        pnIndicator == nullptr || pType == nullptr || ppBuffer == nullptr ||
        ppColumnDef == nullptr || (*ppBuffer == nullptr && nSize != 0)) {
      throw ArgumentError("adpProcessStream");
    }
    CAdp* pAdp = AsAdp(pCtx);
    CKelStream& stream = pAdp->StreamFromBuffer(*ppBuffer, nSize);
    const int bLobsPending = pAdp->ProcessStream(pTrace, stream, *ppColumnDef, pEnv, pErr, pSvc,
                                                 *ppInstance, *ppIndicator, *pnIndicator, pType);
    if (pnLobsPending != nullptr) *pnLobsPending = bLobsPending;
    *ppBuffer = static_cast<const char*>(*ppBuffer) + stream.Tell();
    trace.SetRC(0);
    return 0;
  } catch (CKelException& e) {
    KelSetLastException(e);
    return e.GetRC();
  }
}

extern "C" int adpWriteLobs(VARNADP* pCtx, CKelTrace* pTrace, const char* pszSelect) {
  CKelTraceFunc trace(pTrace, "adpWriteLobs", -2);
  try {
    if (pCtx == nullptr || pszSelect == nullptr) throw ArgumentError("adpWriteLobs");
    AsAdp(pCtx)->ProcessStreamWriteLobs(pTrace, pszSelect);
    trace.SetRC(0);
    return 0;
  } catch (CKelException& e) {
    KelSetLastException(e);
    return e.GetRC();
  }
}

int AdpProcessStream(VARNADP* pCtx, CKelTrace* pTrace, CKelStream& stream, Column_Def*& pColumnDef,
                     OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc, void*& pInstance,
                     short*& pIndicator, short& nIndicator, OCIType* pType) {
  CKelTraceFunc trace(pTrace, "AdpProcessStream", -2);
  int bLobsPending = 0;
  try {
    if (pCtx == nullptr || pType == nullptr) throw ArgumentError("AdpProcessStream");
    bLobsPending = AsAdp(pCtx)->ProcessStream(pTrace, stream, pColumnDef, pEnv, pErr, pSvc,
                                              pInstance, pIndicator, nIndicator, pType);
  } catch (CKelException&) {
    throw;
  } catch (...) {
    std::terminate();
  }
  trace.SetRC(0);
  return bLobsPending;
}

int AdpProcessBuffer(VARNADP* pCtx, CKelTrace* pTrace, const void* pBuffer, unsigned long nSize,
                     Column_Def*& pColumnDef, OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                     void*& pInstance, short*& pIndicator, short& nIndicator, OCIType* pType) {
  CKelTraceFunc trace(pTrace, "AdpProcessBuffer", -2);
  int bLobsPending = 0;
  try {
    if (pCtx == nullptr || pType == nullptr || (pBuffer == nullptr && nSize != 0)) {
      throw ArgumentError("AdpProcessBuffer");
    }
    CAdp* pAdp = AsAdp(pCtx);
    CKelStream& stream = pAdp->StreamFromBuffer(pBuffer, nSize);
    bLobsPending = pAdp->ProcessStream(pTrace, stream, pColumnDef, pEnv, pErr, pSvc, pInstance,
                                       pIndicator, nIndicator, pType);
  } catch (CKelException&) {
    throw;
  } catch (...) {
    std::terminate();
  }
  trace.SetRC(0);
  return bLobsPending;
}

void AdpWriteLobs(VARNADP* pCtx, CKelTrace* pTrace, const char* pszSelect) {
  CKelTraceFunc trace(pTrace, "AdpProcessStreamWriteLobs", -2);
  try {
    if (pCtx == nullptr || pszSelect == nullptr) throw ArgumentError("AdpProcessStreamWriteLobs");
    AsAdp(pCtx)->ProcessStreamWriteLobs(pTrace, pszSelect);
  } catch (CKelException&) {
    throw;
  } catch (...) {
    std::terminate();
  }
  trace.SetRC(0);
}
