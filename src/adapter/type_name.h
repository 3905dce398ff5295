// "SCHEMA.TYPE" as OCITypeByName takes it: split at the first point, a name
// without one having no schema. The lengths delimit both parts, so the
// host's text is only read, never cut.
#ifndef SRC_ADAPTER_TYPE_NAME_H_
#define SRC_ADAPTER_TYPE_NAME_H_

#include <cstring>

#include <oci.h>

struct CAdpTypeName {
  explicit CAdpTypeName(const char* pszName) {
    const char* pDot = std::strchr(pszName, '.');
    if (pDot != nullptr) {
      pSchema = reinterpret_cast<const oratext*>(pszName);
      nSchemaLen = static_cast<ub4>(pDot - pszName);
      pszName = pDot + 1;
    }
    pType = reinterpret_cast<const oratext*>(pszName);
    nTypeLen = static_cast<ub4>(std::strlen(pszName));
  }
  const oratext* pSchema = nullptr;
  ub4 nSchemaLen = 0;
  const oratext* pType = nullptr;
  ub4 nTypeLen = 0;
};

#endif  // SRC_ADAPTER_TYPE_NAME_H_
