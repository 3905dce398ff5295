// Datetime and interval descriptors.  Their representation belongs to the value code in
// values/; handle and object code only allocates, frees, checks and copies them here.
#ifndef OCIMEM_SRC_OBJECTS_VALUE_DESCRIPTORS_H
#define OCIMEM_SRC_OBJECTS_VALUE_DESCRIPTORS_H

#include "oci.h"

namespace ocimem {

struct Env;

// type: OCI_DTYPE_TIMESTAMP, _TZ, _LTZ, OCI_DTYPE_INTERVAL_YM, _DS or OCI_DTYPE_DATE.
// Returns OCI_SUCCESS with *out set, or OCI_INVALID_HANDLE for an unknown type.
sword AllocValueDescriptor(Env* env, ub4 type, void** out);
// Accepts a descriptor of any of the types above.
void FreeValueDescriptor(void* desc);
// True when desc is a live descriptor of that type.
bool IsValueDescriptor(const void* desc, ub4 type);
// Deep assignment between two live descriptors of the same type.
void CopyValueDescriptor(const void* src, void* dst);

}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_VALUE_DESCRIPTORS_H
