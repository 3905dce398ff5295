/* The public headers compile as C: the macros, enums and prototypes are used from C here. */
#include "oci.h"
#include "ocimem.h"
#include "orid.h"

int ocimem_c_header_check(void);

int ocimem_c_header_check(void) {
  OCIDate d;
  sb2 year = 0;
  ub1 month = 0;
  ub1 day = 0;
  OCITypeGetOpt option = OCI_TYPEGET_ALL;
  OCIInd ind = OCI_IND_NULL;
  sword (*get_attr)(OCIEnv *, OCIError *, void *, void *, struct OCIType *, const oratext **,
                    const ub4 *, const ub4, const ub4 *, const ub4, OCIInd *, void **, void **,
                    struct OCIType **) = OCIObjectGetAttr;
  void (*reset)(void) = ocimemFaultReset;
  OCIDateSetDate(&d, 2000, 1, 2);
  OCIDateGetDate(&d, &year, &month, &day);
  return year == 2000 && month == 1 && day == 2 && option == 1 && ind == -1 &&
         get_attr != 0 && reset != 0;
}
