/* Oracle's object runtime calls: creating, copying, freeing and unpinning instances and
 * reaching their null indicators. */
#ifndef ORI_ORACLE
#define ORI_ORACLE

#include "oratypes.h"

#include "oro.h"
#include "ort.h"
#include "oci.h"

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

sword OCIObjectNew(OCIEnv *env, OCIError *err, const OCISvcCtx *svc, OCITypeCode typecode, OCIType *tdo, void *table, OCIDuration duration, boolean value, void **instance);
sword OCIObjectFree(OCIEnv *env, OCIError *err, void *instance, ub2 flags);
sword OCIObjectUnpin(OCIEnv *env, OCIError *err, void *object);
sword OCIObjectGetInd(OCIEnv *env, OCIError *err, void *instance, void **null_struct);
sword OCIObjectCopy(OCIEnv *env, OCIError *err, const OCISvcCtx *svc, void *source, void *null_source, void *target, void *null_target, OCIType *tdo, OCIDuration duration, ub1 option);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif /* ORI_ORACLE */
