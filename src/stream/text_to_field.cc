// One field's text from the input stream to its value in the instance: the
// inverse of field_to_text.cc. Large objects are only located here; the
// LOB pass writes them once the host has stored the object.
#include <cstdlib>
#include <cstring>

#include "adapter/adp.h"
#include "containers/kel_array.h"
#include "containers/kel_string.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"
#include "stream/datetime_masks.h"

namespace {

const char kFunc[] = "CAdp::_OraStreamToField";

CKelException AdapterError(int nCode) {
  return CKelException(nCode, kFunc, gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
}

// The byte a NUMBER's text byte stands for in the mask of its shape.
struct MaskBytes {
  char of[256];
  constexpr MaskBytes() : of() {
    for (int c = 0; c < 256; ++c) {
      of[c] = (c >= '0' && c <= '9') ? '9' : (c == '+' || c == '-') ? 'S' : static_cast<char>(c);
    }
  }
};
constexpr MaskBytes kMaskByte;

// The number of a binary value's length text (its extent); the read count
// replaces the size.
long ReadCount(CKelStream& stream, unsigned long nSize) {
  CKelString<char> text(nSize + 1, 1);
  const unsigned long nRead = stream.Read(text.GetPtr(), nSize);
  text[nRead] = '\0';
  return std::atoi(text.GetPtr());
}

}  // namespace

void CAdp::_OraStreamToField(CAdpTree& element, unsigned long nSize) {
  CKelTraceFunc trace(m_pTrace, kFunc, -2);
  CAdpElementData& data = element.m_Data;
  const Column_Def& def = *data.m_pColumnDef;
  OCIInd* pInd = data.m_pInd;

  switch (def.DataType) {
    case SQLT_NUM: {
      ADP_PROGRESS("Processing NUMBER field...");
      if (nSize == 0) {
        ADP_PROGRESS("NUMBER: NULL");
        *pInd = OCI_IND_NULL;
        break;
      }
      if (nSize > ADP_VALUE_BUF_SIZE) throw AdapterError(KEL_ERR_CONVERSION);
      nSize = m_pStream->Read(m_szValueBuf, nSize);
      OCINumber* pNumber = static_cast<OCINumber*>(data.m_pField);
      if (def.ExtType == 5) {
        if (nSize > 127) throw AdapterError(ADP_ERR_BAD_FORMAT);
        // A mask of the text's own shape: each digit a 9, a sign an S,
        // every other byte itself.
        // The mask's length is its strlen: up to a zero byte the text held.
        char szMask[128];
        for (unsigned long i = 0; i < nSize; ++i) {
          szMask[i] = kMaskByte.of[static_cast<unsigned char>(m_szValueBuf[i])];
        }
        szMask[nSize] = '\0';
        const void* pZero = std::memchr(m_szValueBuf, '\0', nSize);
        const unsigned long nMaskLen =
            pZero != nullptr ? static_cast<unsigned long>(static_cast<const char*>(pZero) - m_szValueBuf)
                             : nSize;
        _OraCheck(OCINumberFromText(m_pErr, reinterpret_cast<const oratext*>(m_szValueBuf),
                                    static_cast<ub4>(nSize), reinterpret_cast<const oratext*>(szMask),
                                    static_cast<ub4>(nMaskLen), nullptr, 0, pNumber),
                  "OCINumberFromText", kFunc);
        ADP_PROGRESS("TEXT->NUMBER: precision %d, scale %d, format \"%s\", size = %d",
                     static_cast<int>(def.Precision), static_cast<int>(def.Scale), szMask,
                     static_cast<int>(nSize));
      } else if (def.ExtType == 4) {
        _OraCheck(OCINumberFromReal(m_pErr, m_szValueBuf, static_cast<uword>(nSize), pNumber),
                  "OCINumberFromReal", kFunc);
        ADP_PROGRESS("REAL->NUMBER: size = %d", static_cast<int>(nSize));
      } else {
        ADP_PROGRESS("*ERR: NUMBER type %d not supported", static_cast<int>(def.ExtType));
        throw AdapterError(ADP_ERR_UNSUPPORTED_TYPE);
      }
      *pInd = OCI_IND_NOTNULL;
      break;
    }

    case SQLT_CHR:
    case SQLT_LNG:
    case SQLT_LVC:
    case SQLT_AFC: {
      ADP_PROGRESS("Processing TEXT field...");
      if (nSize == 0) {
        ADP_PROGRESS("TEXT: NULL");
        *pInd = OCI_IND_NULL;
        break;
      }
      OCIString** ppString = static_cast<OCIString**>(data.m_pField);
      _OraCheck(OCIStringResize(m_pEnv, m_pErr, static_cast<ub4>(nSize), ppString),
                "OCIStringResize", kFunc);
      oratext* pText = OCIStringPtr(m_pEnv, *ppString);
      nSize = m_pStream->Read(pText, nSize);
      // A text whose measure met no release holds none.
      const unsigned long nLength = m_bReleaseInField ? _RemoveReleaseChars(pText, nSize) : nSize;
      // The true length goes straight into the string's length word.
      const ub4 nWord = static_cast<ub4>(nLength);
      std::memcpy(*ppString, &nWord, sizeof nWord);
      ADP_PROGRESS("TEXT: size = %d", static_cast<int>(nLength));
      *pInd = OCI_IND_NOTNULL;
      break;
    }

    case SQLT_DAT: {
      ADP_PROGRESS("Processing DATE field...");
      if (nSize == 0) {
        ADP_PROGRESS("DATE: NULL");
        *pInd = OCI_IND_NULL;
        break;
      }
      if (nSize > ADP_VALUE_BUF_SIZE) throw AdapterError(KEL_ERR_CONVERSION);
      nSize = m_pStream->Read(m_szValueBuf, nSize);
      const char* pszMask;
      if (def.ExtType == 12 && def.DisplaySize == 19) {
        pszMask = nSize == 10 ? "YYYY-MM-DD" : nSize == 16 ? "YYYY-MM-DD HH24:MI" : ADP_DATE_MASK_FULL;
      } else if (def.ExtType == 5 && def.DataSize == 9) {
        pszMask = ADP_DATE_MASK_SHORT;
      } else {
        ADP_PROGRESS("*ERROR: DATE type %d, size %d, not supported", static_cast<int>(def.ExtType),
                     static_cast<int>(def.DisplaySize));
        throw AdapterError(ADP_ERR_UNSUPPORTED_TYPE);
      }
      _OraCheck(OCIDateFromText(m_pErr, reinterpret_cast<const oratext*>(m_szValueBuf),
                                static_cast<ub4>(nSize < 19 ? nSize : 19),
                                reinterpret_cast<const oratext*>(pszMask),
                                static_cast<ub1>(std::strlen(pszMask)), nullptr, 0,
                                static_cast<OCIDate*>(data.m_pField)),
                "OCIDateFromText", kFunc);
      ADP_PROGRESS("DATE: format %s, size %d", pszMask, static_cast<int>(nSize));
      *pInd = OCI_IND_NOTNULL;
      break;
    }

    case SQLT_TIMESTAMP:
    case SQLT_TIMESTAMP_TZ:
    case SQLT_TIMESTAMP_LTZ: {
      ADP_PROGRESS("Processing TIMESTAMP field...");
      if (nSize == 0) {
        ADP_PROGRESS("TIMESTAMP: NULL");
        *pInd = OCI_IND_NULL;
        break;
      }
      CKelArray<unsigned char> text(nSize, 1, 0);
      nSize = m_pStream->Read(text.GetPtr(), nSize);
      const char* pszMask = AdpTimestampMask(def.DataType, def.Scale);
      _OraCheck(OCIDateTimeFromText(m_pEnv, m_pErr, text.GetPtr(), nSize,
                                    reinterpret_cast<const OraText*>(pszMask),
                                    static_cast<ub1>(std::strlen(pszMask)), nullptr, 0,
                                    *static_cast<OCIDateTime**>(data.m_pField)),
                "OCIDateTimeFromText", kFunc);
      ADP_PROGRESS("TIMESTAMP: format %s, size %d", pszMask, static_cast<int>(nSize));
      *pInd = OCI_IND_NOTNULL;
      break;
    }

    case SQLT_INTERVAL_YM:
    case SQLT_INTERVAL_DS: {
      ADP_PROGRESS("Processing INTERVAL field...");
      if (nSize == 0) {
        ADP_PROGRESS("INTERVAL: NULL");
        *pInd = OCI_IND_NULL;
        break;
      }
      CKelArray<unsigned char> text(nSize, 1, 0);
      nSize = m_pStream->Read(text.GetPtr(), nSize);
      // Logged under the datetime call's name, as this adapter always has.
      _OraCheck(OCIIntervalFromText(m_pEnv, m_pErr, text.GetPtr(), nSize,
                                    *static_cast<OCIInterval**>(data.m_pField)),
                "OCIDateTimeFromText", kFunc);
      ADP_PROGRESS("INTERVAL: size %d", static_cast<int>(nSize));
      *pInd = OCI_IND_NOTNULL;
      break;
    }

    case SQLT_BIN:
    case SQLT_LBI: {
      ADP_PROGRESS("Processing RAW field...");
      if (nSize == 0) {
        // Unlike a null BLOB, a null RAW's bar is not stepped over.
        ADP_PROGRESS("RAW: NULL");
        *pInd = OCI_IND_NULL;
        break;
      }
      const long nCount = ReadCount(*m_pStream, nSize);
      m_pStream->Seek(m_nDelimiterLen, 1);
      OCIRaw** ppRaw = static_cast<OCIRaw**>(data.m_pField);
      // Oracle frees a RAW resized to nothing and leaves NULL behind, so an
      // empty RAW keeps a byte of room and gets the length 0 below.
      // A count beyond what the stream still holds takes no more room than
      // the bytes there are.
      const unsigned long nLeft = m_pStream->GetSize() - static_cast<unsigned long>(m_pStream->Tell());
      const unsigned long nWant =
          nCount > 0 ? (static_cast<unsigned long>(nCount) < nLeft ? static_cast<unsigned long>(nCount) : nLeft)
                     : 0;
      const ub4 nRoom = nWant > 0 ? static_cast<ub4>(nWant) : 1;
      _OraCheck(OCIRawResize(m_pEnv, m_pErr, nRoom, ppRaw), "OCIRawResize", kFunc);
      const unsigned long nRead = nWant > 0 ? m_pStream->Read(OCIRawPtr(m_pEnv, *ppRaw), nWant) : 0;
      const ub4 nWord = static_cast<ub4>(nRead);
      std::memcpy(*ppRaw, &nWord, sizeof nWord);
      ADP_PROGRESS("RAW: size %d", static_cast<int>(nRead));
      *pInd = OCI_IND_NOTNULL;
      break;
    }

    case SQLT_CLOB:
    case SQLT_BLOB: {
      ADP_PROGRESS("Processing LOB field - first pass...");
      if (nSize == 0) {
        if (def.DataType == SQLT_BLOB) m_pStream->Seek(m_nDelimiterLen, 1);
        ADP_PROGRESS("LOB: NULL");
        data.m_nLobPos = 0;
        data.m_nLobSize = 0;
        *pInd = OCI_IND_NULL;
        break;
      }
      if (def.DataType == SQLT_BLOB) {
        nSize = static_cast<unsigned long>(ReadCount(*m_pStream, nSize));
        m_pStream->Seek(m_nDelimiterLen, 1);
      }
      data.m_nLobPos = m_pStream->Tell();
      data.m_nLobSize = nSize;
      m_bLobsPending = 1;
      m_pStream->Seek(static_cast<long>(nSize), 1);
      ADP_PROGRESS("LOB: writing empty blob");
      *pInd = OCI_IND_NOTNULL;
      break;
    }

    case SQLT_BFILEE:
      ADP_PROGRESS("Processing BFILE field...");
      ADP_PROGRESS("*ERROR: BFILE type not supported");
      throw AdapterError(ADP_ERR_UNSUPPORTED_TYPE);

    case SQLT_REF:
      ADP_PROGRESS("Processing REF field...");
      ADP_PROGRESS("*ERROR: REF type not supported");
      throw AdapterError(ADP_ERR_UNSUPPORTED_TYPE);

    default: {
      const int nType = static_cast<short>(def.DataType);
      ADP_PROGRESS("Processing '%d' field...", nType);
      ADP_PROGRESS("*ERROR: '%d' type not supported", nType);
      throw AdapterError(ADP_ERR_UNSUPPORTED_TYPE);
    }
  }
  trace.SetRC(0);
}
