/* Oracle's type descriptors (OCIType) and the calls that look types up. */
#ifndef ORT_ORACLE
#define ORT_ORACLE

#include "oratypes.h"

typedef struct OCIType OCIType;

#include "oro.h"
#include "oci.h"

#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

sword OCITypeByName(OCIEnv *env, OCIError *err, const OCISvcCtx *svc, const oratext *schema_name, ub4 s_length, const oratext *type_name, ub4 t_length, const oratext *version_name, ub4 v_length, OCIDuration pin_duration, OCITypeGetOpt get_option, OCIType **tdo);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif /* ORT_ORACLE */
