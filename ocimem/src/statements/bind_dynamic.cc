// OCIBindArrayOfStruct, OCIDefineArrayOfStruct, OCIBindDynamic and OCIDefineDynamic: they
// complete a bind or define made before, and are used at the next execute or fetch.
#include "session/internal.h"
#include "statements/statement.h"

using namespace ocimem;

sword OCIBindArrayOfStruct(OCIBind* bindp, OCIError* errhp, ub4 pvskip, ub4 indskip, ub4 alskip,
                           ub4 rcskip) try {
  sword rc;
  if (Enter("OCIBindArrayOfStruct", errhp, &rc)) return rc;
  BindHandle* b = AsBind(bindp);
  if (b == nullptr) return OCI_INVALID_HANDLE;
  b->pvskip = pvskip;
  b->indskip = indskip;
  b->alskip = alskip;
  b->rcskip = rcskip;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIDefineArrayOfStruct(OCIDefine* defnp, OCIError* errhp, ub4 pvskip, ub4 indskip,
                             ub4 rlskip, ub4 rcskip) try {
  sword rc;
  if (Enter("OCIDefineArrayOfStruct", errhp, &rc)) return rc;
  DefineHandle* d = AsDefine(defnp);
  if (d == nullptr) return OCI_INVALID_HANDLE;
  d->pvskip = pvskip;
  d->indskip = indskip;
  d->rlskip = rlskip;
  d->rcskip = rcskip;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIBindDynamic(OCIBind* bindp, OCIError* errhp, void* ictxp, OCICallbackInBind icbfp,
                     void* octxp, OCICallbackOutBind ocbfp) try {
  sword rc;
  if (Enter("OCIBindDynamic", errhp, &rc)) return rc;
  BindHandle* b = AsBind(bindp);
  if (b == nullptr) return OCI_INVALID_HANDLE;
  b->ictxp = ictxp;
  b->icbfp = icbfp;
  b->octxp = octxp;
  b->ocbfp = ocbfp;
  // Callbacks supply the values at execute, whatever mode the bind was made with.
  b->dynamic = true;
  b->mode = OCI_DATA_AT_EXEC;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIDefineDynamic(OCIDefine* defnp, OCIError* errhp, void* octxp,
                       OCICallbackDefine ocbfp) try {
  sword rc;
  if (Enter("OCIDefineDynamic", errhp, &rc)) return rc;
  DefineHandle* d = AsDefine(defnp);
  if (d == nullptr) return OCI_INVALID_HANDLE;
  if (d->mode != OCI_DYNAMIC_FETCH) return Fail(errhp, 24300, "bad value for mode");
  d->octxp = octxp;
  d->ocbfp = ocbfp;
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
