/* Object attribute access by name.  Kept apart from oci.h, as in Oracle's headers: code
 * that reads or writes attributes by name must include this header itself. */
#ifndef ORID_ORACLE
#define ORID_ORACLE

#include "oci.h"

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

sword OCIObjectGetAttr(OCIEnv *env, OCIError *err, void *instance, void *null_struct, struct OCIType *tdo, const oratext **names, const ub4 *lengths, const ub4 name_count, const ub4 *indexes, const ub4 index_count, OCIInd *attr_null_status, void **attr_null_struct, void **attr_value, struct OCIType **attr_tdo);
sword OCIObjectSetAttr(OCIEnv *env, OCIError *err, void *instance, void *null_struct, struct OCIType *tdo, const oratext **names, const ub4 *lengths, const ub4 name_count, const ub4 *indexes, const ub4 index_count, const OCIInd null_status, const void *attr_null_struct, const void *attr_value);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif /* ORID_ORACLE */
