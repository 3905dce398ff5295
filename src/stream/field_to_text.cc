// One scalar value to its text on the output stream. NUMBER, DATE,
// TIMESTAMP and INTERVAL text is made by Oracle directly in the writer's
// output buffer; text goes out with release characters, RAW and BLOB bytes behind
// their length; BFILE, REF and unknown types are refused.
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "adapter/adp.h"
#include "containers/kel_mem.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"
#include "stream/datetime_masks.h"

namespace {

const char kFunc[] = "CAdp::_OraFieldToStream";

CKelException Unsupported() {
  return CKelException(ADP_ERR_UNSUPPORTED_TYPE, kFunc, gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
}


// Builds "FM" and the nines of the NUMBER text mask into pMask (room
// nRoom) and returns its length, or the room needed when it does not fit.
size_t BuildNumberMask(const Column_Def& def, char* pMask, size_t nRoom) {
  const long long nPrecision = static_cast<unsigned>(def.Precision);
  const long long nScale = def.Scale;
  long long nIntegerNines = 0;
  long long nFractionNines = 0;
  bool bPoint = false;
  if (nPrecision != 0 && nScale == 0) {
    nIntegerNines = nPrecision;
  } else if (nScale >= -84) {
    nIntegerNines = nPrecision - nScale > 0 ? nPrecision - nScale : 0;
    if (nScale > 0) {
      bPoint = true;
      nFractionNines = nScale;
    }
  } else {
    nIntegerNines = 28;
    bPoint = true;
    nFractionNines = 29;
  }
  const size_t nLength = static_cast<size_t>(2 + nIntegerNines + (bPoint ? 1 : 0) + nFractionNines);
  if (nLength + 1 > nRoom) return nLength;
  char* p = pMask;
  *p++ = 'F';
  *p++ = 'M';
  std::memset(p, '9', static_cast<size_t>(nIntegerNines));
  p += nIntegerNines;
  if (bPoint) *p++ = '.';
  std::memset(p, '9', static_cast<size_t>(nFractionNines));
  p += nFractionNines;
  *p = '\0';
  return nLength;
}

}  // namespace

// Masks of every NUMBER(p, s) Oracle declares fit a cached one; longer
// ones, which only an odd definition asks for, are built on the heap each
// time (nLength then says how long).
const char* CAdp::_NumberMask(const Column_Def& def, size_t& nLength) {
  const unsigned long nKey = def.Precision * 131U + static_cast<unsigned short>(def.Scale);
  const unsigned nSlot = static_cast<unsigned>(nKey % ADP_NUMBER_MASKS);
  SNumberMask& cached = m_aNumberMasks[nSlot];
  if (cached.nLength != 0 && cached.nPrecision == def.Precision && cached.nScale == def.Scale) {
    nLength = cached.nLength;
    return cached.szMask;
  }
  return _NewNumberMask(def, cached, nLength);
}

const char* CAdp::_NewNumberMask(const Column_Def& def, SNumberMask& cached, size_t& nLength) {
  nLength = BuildNumberMask(def, cached.szMask, sizeof cached.szMask);
  if (nLength + 1 > sizeof cached.szMask) {
    cached.nLength = 0;
    return nullptr;
  }
  cached.nPrecision = def.Precision;
  cached.nScale = def.Scale;
  cached.nLength = static_cast<unsigned short>(nLength);
  return cached.szMask;
}

void CAdp::_OraFieldToStream(CAdpTree& element) {
  CKelTraceFunc trace(m_pTrace, kFunc, -2);
  CAdpElementData& data = element.m_Data;
  const Column_Def& def = *data.m_pColumnDef;
  // The indicator is read through m_pInd alone; only -1 is null.
  const bool bNull = data.m_pInd != nullptr && static_cast<unsigned short>(*data.m_pInd) == 0xFFFF;

  switch (def.DataType) {
    case SQLT_NUM: {
      ADP_PROGRESS("Processing NUMBER field...");
      if (bNull) {
        ADP_PROGRESS("NUMBER: NULL");
        break;
      }
      const OCINumber* pNumber = static_cast<const OCINumber*>(data.m_pField);
      if (def.ExtType == 5) {
        size_t nMask = 0;
        const char* pMask = _NumberMask(def, nMask);
        std::unique_ptr<char[]> pLongMask;
        if (pMask == nullptr) {
          pLongMask.reset(new (std::nothrow) char[nMask + 1]);
          if (!pLongMask) throw CKelException(KEL_ERR_MEMORY, kFunc, gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
          nMask = BuildNumberMask(def, pLongMask.get(), nMask + 1);
          pMask = pLongMask.get();
        }
        ub4 nSize = static_cast<ub4>(nMask + 1);
        char* pPage = _BeginValue(nSize);
        _OraCheck(OCINumberToText(m_pErr, pNumber, reinterpret_cast<const oratext*>(pMask),
                                  static_cast<ub4>(nMask), nullptr, 0, &nSize,
                                  reinterpret_cast<oratext*>(pPage)),
                  "OCINumberToText", kFunc);
        _EndValue(nSize);
        ADP_PROGRESS("NUMBER->TEXT: precision %d, scale %d, format \"%s\", size = %d",
                         static_cast<int>(def.Precision), static_cast<int>(def.Scale), pMask,
                         static_cast<int>(nSize));
      } else if (def.ExtType == 4) {
        const ub4 nSize = static_cast<ub4>(def.DataSize);
        char* pPage = _BeginValue(nSize);
        _OraCheck(OCINumberToReal(m_pErr, pNumber, nSize, pPage), "OCINumberToReal",
                  kFunc);
        _EndValue(nSize);
        ADP_PROGRESS("NUMBER->REAL: size = %d", static_cast<int>(nSize));
      } else {
        ADP_PROGRESS("*ERROR: NUMBER type %d not supported", static_cast<int>(def.ExtType));
        throw Unsupported();
      }
      break;
    }

    case SQLT_CHR:
    case SQLT_LNG:
    case SQLT_LVC:
    case SQLT_AFC: {
      ADP_PROGRESS("Processing TEXT field...");
      if (bNull) {
        ADP_PROGRESS("TEXT: NULL");
        break;
      }
      // A string resized to nothing is freed by Oracle and its slot holds
      // NULL: that is an empty text.
      const OCIString* pString = *static_cast<OCIString**>(data.m_pField);
      const ub4 nLength = pString != nullptr ? OCIStringSize(m_pEnv, pString) : 0;
      void* pText = pString != nullptr ? OCIStringPtr(m_pEnv, pString) : nullptr;
      const long nWritten = _WriteStringAddRelease(pText, nLength, 1);
      ADP_PROGRESS("TEXT: size = %d", static_cast<int>(nWritten));
      break;
    }

    case SQLT_DAT: {
      ADP_PROGRESS("Processing DATE field...");
      if (bNull) {
        ADP_PROGRESS("DATE: NULL");
        break;
      }
      const char* pszMask;
      if (def.ExtType == 12 && def.DisplaySize == 19) {
        pszMask = ADP_DATE_MASK_FULL;
      } else if (def.ExtType == 5 && def.DisplaySize == 20) {
        pszMask = ADP_DATE_MASK_SHORT;
      } else {
        ADP_PROGRESS("*ERROR: DATE type %d, size %d, not supported",
                         static_cast<int>(def.ExtType), static_cast<int>(def.DisplaySize));
        throw Unsupported();
      }
      ub4 nSize = def.DisplaySize;
      char* pPage = _BeginValue(nSize);
      _OraCheck(OCIDateToText(m_pErr, static_cast<const OCIDate*>(data.m_pField),
                              reinterpret_cast<const oratext*>(pszMask),
                              static_cast<ub1>(std::strlen(pszMask)), nullptr, 0, &nSize,
                              reinterpret_cast<oratext*>(pPage)),
                "OCIDateToText", kFunc);
      _EndValue(nSize);
      ADP_PROGRESS("DATE: format %s, size %d", pszMask, static_cast<int>(nSize));
      break;
    }

    case SQLT_BIN:
    case SQLT_LBI: {
      ADP_PROGRESS("Processing RAW field...");
      if (bNull) {
        m_Out.Write(ADP_BINARY_LENGTH_END, 1);
        ADP_PROGRESS("RAW: NULL");
        break;
      }
      // As for text, a RAW resized to nothing has a NULL slot: an empty RAW.
      const OCIRaw* pRaw = *static_cast<OCIRaw**>(data.m_pField);
      const ub4 nLength = pRaw != nullptr ? OCIRawSize(m_pEnv, pRaw) : 0;
      // Its count, "|" and its bytes, as any binary value goes out.
      _WriteStringAddRelease(nLength != 0 ? OCIRawPtr(m_pEnv, pRaw) : nullptr, nLength, 0);
      ADP_PROGRESS("RAW: size %d", static_cast<int>(nLength));
      break;
    }

    case SQLT_CLOB:
    case SQLT_BLOB: {
      ADP_PROGRESS("Processing LOB field...");
      const bool bClob = _IsClob(element) != 0;
      if (bNull) {
        if (bClob) {
          ADP_PROGRESS("CLOB: NULL");
        } else {
          m_Out.Write(ADP_BINARY_LENGTH_END, 1);
          ADP_PROGRESS("LOB: NULL");
        }
        break;
      }
      OCILobLocator* pLocator = *static_cast<OCILobLocator**>(data.m_pField);
      ub4 nLength = 0;
      _OraCheck(OCILobGetLength(m_pSvc, m_pErr, pLocator, &nLength), "OCILobGetLength", kFunc);
      // Up to four bytes per character of a CLOB; the amount is a 32-bit
      // count, so the room stops there.
      unsigned long long nRoom = nLength;
      if (def.DataType == SQLT_CLOB) nRoom *= 4;
      if (nRoom > 0xFFFFFFFFull) nRoom = 0xFFFFFFFFull;
      const ub4 nBuffer = static_cast<ub4>(nRoom);
      std::unique_ptr<void, void (*)(void*)> buffer(gKelCHeapRealloc(nullptr, nBuffer != 0 ? nBuffer : 1),
                                                    gKelCHeapFree);
      if (!buffer) throw CKelException(KEL_ERR_MEMORY, kFunc, gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
      ub4 nAmount = nBuffer;
      _OraCheck(OCILobRead(m_pSvc, m_pErr, pLocator, &nAmount, 1, buffer.get(), nBuffer, nullptr,
                           nullptr, 0, SQLCS_IMPLICIT),
                "OCILobRead", kFunc);
      const long nWritten = _WriteStringAddRelease(buffer.get(), nAmount, bClob ? 1 : 0);
      buffer.reset();
      ADP_PROGRESS(bClob ? "CLOB: size %d" : "LOB: size %d", static_cast<int>(nWritten));
      break;
    }

    case SQLT_BFILEE:
      ADP_PROGRESS("Processing BFILE field...");
      ADP_PROGRESS("*ERR: BFILE type not supported");
      throw Unsupported();

    case SQLT_REF:
      ADP_PROGRESS("Processing REF field...");
      ADP_PROGRESS("*ERR: REF type not supported");
      throw Unsupported();

    case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ:
    case SQLT_TIMESTAMP_LTZ: {
      ADP_PROGRESS("Processing TIMESTAMP field...");
      if (bNull) {
        ADP_PROGRESS("TIMESTAMP: NULL");
        break;
      }
      const char* pszMask = AdpTimestampMask(def.DataType, def.Scale);
      ub4 nSize = def.DisplaySize;
      char* pPage = _BeginValue(nSize);
      _OraCheck(OCIDateTimeToText(m_pEnv, m_pErr, *static_cast<OCIDateTime**>(data.m_pField),
                                  reinterpret_cast<const OraText*>(pszMask),
                                  static_cast<ub1>(std::strlen(pszMask)),
                                  static_cast<ub1>(def.Scale), nullptr, 0, &nSize,
                                  reinterpret_cast<OraText*>(pPage)),
                "OCIDateTimeToText", kFunc);
      _EndValue(nSize);
      ADP_PROGRESS("TIMESTAMP: format %s, size %d", pszMask, static_cast<int>(nSize));
      break;
    }

    case SQLT_INTERVAL_YM:
    case SQLT_INTERVAL_DS: {
      ADP_PROGRESS("Processing INTERVAL field...");
      if (bNull) {
        ADP_PROGRESS("INTERVAL: NULL");
        break;
      }
      size_t nResult = 0;
      char* pPage = _BeginValue(def.DisplaySize);
      _OraCheck(OCIIntervalToText(m_pEnv, m_pErr, *static_cast<OCIInterval**>(data.m_pField),
                                  static_cast<ub1>(def.Precision), static_cast<ub1>(def.Scale),
                                  reinterpret_cast<OraText*>(pPage), def.DisplaySize,
                                  &nResult),
                "OCIIntervalToText", kFunc);
      _EndValue(static_cast<unsigned long>(nResult));
      ADP_PROGRESS("INTERVAL: size %d", static_cast<int>(nResult));
      break;
    }

    default: {
      const int nType = static_cast<short>(def.DataType);
      ADP_PROGRESS("Processing '%d' field...", nType);
      ADP_PROGRESS("*ERR: '%d' type not supported", nType);
      throw Unsupported();
    }
  }
  trace.SetRC(0);
}
