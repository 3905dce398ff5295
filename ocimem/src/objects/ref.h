// REF values.  Objects are kept by value only, so every REF that ocimem makes is a null
// REF; the slot and its copies exist so that REF attributes have Oracle's layout.  The one
// exception is the REF to a type descriptor that describe hands out (OCI_ATTR_REF_TDO),
// which OCIDescribeAny takes back with OCI_OTYPE_REF.
#ifndef OCIMEM_SRC_OBJECTS_REF_H
#define OCIMEM_SRC_OBJECTS_REF_H

#include "oci.h"
#include "session/recycle.h"

namespace ocimem {
constexpr ub4 kLiveRef = 0x52454646U;
}  // namespace ocimem

struct OCIRef {
  OCIMEM_RECYCLED(OCIRef)
  ub4 live = ocimem::kLiveRef;
  OCIType* tdo = nullptr;  // OCI_ATTR_REF_TDO: the type, kept alive by its parameter
};

namespace ocimem {
OCIRef* AsRef(const void* p);
}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_REF_H
