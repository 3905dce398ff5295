// The C entry points: argument checks, the describe-and-build sequence, and the one place
// where a failed allocation inside the library becomes a return code.
#include "coldef.h"

#include <cstdlib>
#include <new>

#include "list_builder.h"
#include "type_describer.h"

extern "C" int coldefDescribe(OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                              const char* pszTypeName, Column_Def** ppList) {
  if (ppList == nullptr) return COLDEF_E_ARGUMENT;
  *ppList = nullptr;
  if (pEnv == nullptr || pErr == nullptr || pSvc == nullptr || pszTypeName == nullptr ||
      *pszTypeName == '\0') {
    return COLDEF_E_ARGUMENT;
  }
  try {
    coldef::TypeDescriber describer(pEnv, pErr, pSvc);
    const coldef::TypeDescription* top = nullptr;
    int rc = describer.Describe(pszTypeName, &top);
    coldef::ListBuilder builder(&describer);
    if (rc == COLDEF_OK) rc = builder.Build(*top);
    if (rc == COLDEF_OK) rc = builder.Finish(ppList);
    return rc;
  } catch (const std::bad_alloc&) {
    return COLDEF_E_NO_MEMORY;
  }
}

extern "C" void coldefFree(Column_Def* pList) { std::free(pList); }
