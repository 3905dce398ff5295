// The in-memory OCI's text-to-value parsers with random masks: NUMBER, DATE,
// TIMESTAMP (plain, with time zone, with local time zone) and both INTERVAL
// kinds. The first byte chooses the parser and the NLS parameters, the next
// the mask's length; then come the mask and the text. A value that parses
// is written back with the same mask and with a mask of the kind's own,
// into buffers whose bounds are checked.
#include <oci.h>

#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_session.h"

namespace {

struct Handles {
  OCIEnv* pEnv = nullptr;
  OCIError* pErr = nullptr;
};

Handles& TheHandles() {
  static Handles* pHandles = [] {
    Handles* p = new Handles;
    if (OCIEnvCreate(&p->pEnv, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) !=
            OCI_SUCCESS ||
        OCIHandleAlloc(p->pEnv, reinterpret_cast<void**>(&p->pErr), OCI_HTYPE_ERROR, 0, nullptr) !=
            OCI_SUCCESS) {
      fuzz::Die("environment");
    }
    return p;
  }();
  return *pHandles;
}

const OraText* Text(const std::string& s) { return reinterpret_cast<const OraText*>(s.data()); }

// What a ToText call wrote must fit what it was given.
void CheckWritten(sword rc, ub4 nSize, ub4 nRoom) {
  if (rc == OCI_SUCCESS && nSize > nRoom) fuzz::Die("a text was written beyond its buffer");
}

void Number(Handles& h, const std::string& mask, const std::string& text, const std::string& nls) {
  OCINumber number;
  const OraText* pNls = nls.empty() ? nullptr : Text(nls);
  if (OCINumberFromText(h.pErr, Text(text), static_cast<ub4>(text.size()), Text(mask),
                        static_cast<ub4>(mask.size()), pNls, static_cast<ub4>(nls.size()),
                        &number) != OCI_SUCCESS) {
    return;
  }
  OraText szOut[256];
  ub4 nSize = sizeof szOut;
  sword rc = OCINumberToText(h.pErr, &number, Text(mask), static_cast<ub4>(mask.size()), pNls,
                             static_cast<ub4>(nls.size()), &nSize, szOut);
  CheckWritten(rc, nSize, sizeof szOut);
  // And with a wide mask of its own (which may overflow: that is an answer too).
  static const char kWide[] = "FMS99999999999999999999999999999999999999.9999999999999999999999999999999999999999";
  nSize = sizeof szOut;
  rc = OCINumberToText(h.pErr, &number, reinterpret_cast<const OraText*>(kWide),
                       static_cast<ub4>(sizeof kWide - 1), nullptr, 0, &nSize, szOut);
  CheckWritten(rc, nSize, sizeof szOut);
  double dValue = 0;
  OCINumberToReal(h.pErr, &number, sizeof dValue, &dValue);
}

void Date(Handles& h, const std::string& mask, const std::string& text, const std::string& lang) {
  OCIDate date;
  const OraText* pLang = lang.empty() ? nullptr : Text(lang);
  if (OCIDateFromText(h.pErr, Text(text), static_cast<ub4>(text.size()), Text(mask),
                      static_cast<ub1>(mask.size()), pLang, static_cast<ub4>(lang.size()),
                      &date) != OCI_SUCCESS) {
    return;
  }
  OraText szOut[256];
  ub4 nSize = sizeof szOut;
  CheckWritten(OCIDateToText(h.pErr, &date, Text(mask), static_cast<ub1>(mask.size()), pLang,
                             static_cast<ub4>(lang.size()), &nSize, szOut),
               nSize, sizeof szOut);
  nSize = sizeof szOut;
  CheckWritten(OCIDateToText(h.pErr, &date, nullptr, 0, nullptr, 0, &nSize, szOut), nSize,
               sizeof szOut);
}

void Timestamp(Handles& h, ub4 nType, const std::string& mask, const std::string& text,
               const std::string& lang, ub1 nFsPrec) {
  OCIDateTime* pValue = nullptr;
  if (OCIDescriptorAlloc(h.pEnv, reinterpret_cast<void**>(&pValue), nType, 0, nullptr) !=
      OCI_SUCCESS) {
    fuzz::Die("descriptor");
  }
  const OraText* pLang = lang.empty() ? nullptr : Text(lang);
  if (OCIDateTimeFromText(h.pEnv, h.pErr, Text(text), text.size(), Text(mask),
                          static_cast<ub1>(mask.size()), pLang, lang.size(),
                          pValue) == OCI_SUCCESS) {
    OraText szOut[256];
    ub4 nSize = sizeof szOut;
    CheckWritten(OCIDateTimeToText(h.pEnv, h.pErr, pValue, Text(mask), static_cast<ub1>(mask.size()),
                                   nFsPrec, pLang, lang.size(), &nSize, szOut),
                 nSize, sizeof szOut);
    nSize = sizeof szOut;
    CheckWritten(OCIDateTimeToText(h.pEnv, h.pErr, pValue, nullptr, 0, nFsPrec, nullptr, 0, &nSize,
                                   szOut),
                 nSize, sizeof szOut);
  }
  OCIDescriptorFree(pValue, nType);
}

void Interval(Handles& h, ub4 nType, const std::string& text, ub1 nLeading, ub1 nFraction) {
  OCIInterval* pValue = nullptr;
  if (OCIDescriptorAlloc(h.pEnv, reinterpret_cast<void**>(&pValue), nType, 0, nullptr) !=
      OCI_SUCCESS) {
    fuzz::Die("descriptor");
  }
  if (OCIIntervalFromText(h.pEnv, h.pErr, Text(text), text.size(), pValue) == OCI_SUCCESS) {
    OraText szOut[256];
    size_t nLength = 0;
    const sword rc = OCIIntervalToText(h.pEnv, h.pErr, pValue, nLeading, nFraction, szOut,
                                       sizeof szOut, &nLength);
    if (rc == OCI_SUCCESS && nLength > sizeof szOut) fuzz::Die("an INTERVAL text overran");
  }
  OCIDescriptorFree(pValue, nType);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
  Handles& h = TheHandles();
  fuzz::Input in(pData, nSize);
  const uint8_t nWhich = in.Byte();
  const uint8_t nPrecisions = in.Byte();
  const std::string nls = (nWhich & 0x80) ? in.Bytes(in.Byte() % 48u) : std::string();
  const std::string mask = in.Bytes(in.Byte() % 80u);
  const std::string text = in.Bytes(in.Size() < 300 ? in.Size() : 300);
  const ub1 nLeading = static_cast<ub1>(nPrecisions & 0x0f);
  const ub1 nFraction = static_cast<ub1>(nPrecisions >> 4);
  switch ((nWhich & 0x7f) % 7) {
    case 0: Number(h, mask, text, nls); break;
    case 1: Date(h, mask, text, nls); break;
    case 2: Timestamp(h, OCI_DTYPE_TIMESTAMP, mask, text, nls, nFraction); break;
    case 3: Timestamp(h, OCI_DTYPE_TIMESTAMP_TZ, mask, text, nls, nFraction); break;
    case 4: Timestamp(h, OCI_DTYPE_TIMESTAMP_LTZ, mask, text, nls, nFraction); break;
    case 5: Interval(h, OCI_DTYPE_INTERVAL_YM, text, nLeading, nFraction); break;
    default: Interval(h, OCI_DTYPE_INTERVAL_DS, text, nLeading, nFraction); break;
  }
  return 0;
}
