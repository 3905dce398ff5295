/*
 * coldef: derives the flat Column_Def list that a host hands to the adapter
 * (see varnadp.h) for a named Oracle object type or collection type, from
 * Oracle's describe calls only, so that it works on any OCI client. The list
 * and every text in it belong to this library until coldefFree. Compiles as C
 * and as C++.
 */
#ifndef VARNADP_COLDEF_H
#define VARNADP_COLDEF_H

#include <oci.h>

#include <varnadp.h>

#if defined(COLDEF_BUILDING)
#define COLDEF_API __attribute__((visibility("default")))
#else
#define COLDEF_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Result codes of coldefDescribe. The first three use the numbers the host
 * library gives the same conditions. */
#define COLDEF_OK 0
#define COLDEF_E_ARGUMENT (-8)     /* a handle, the name or the result pointer is NULL, or the name is empty */
#define COLDEF_E_NO_MEMORY (-10)   /* memory could not be obtained */
#define COLDEF_E_ORACLE (-24)      /* an OCI call failed; Oracle's error is in the error handle */
#define COLDEF_E_NOT_OBJECT (-1201) /* the name describes neither an object type nor a collection type */
#define COLDEF_E_CYCLE (-1202)      /* the type contains itself through object or collection attributes */

/* Describes the type named pszTypeName ("SCHEMA.TYPE", or "TYPE" in the
 * session's schema; names as Oracle stores them, upper case for unquoted DDL)
 * through the logged-on service context pSvc and stores the head of a new
 * Column_Def list in *ppList. Returns COLDEF_OK, or one of the negative codes
 * above with *ppList set to NULL (when ppList is not NULL). */
COLDEF_API int coldefDescribe(OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                              const char* pszTypeName, Column_Def** ppList);

/* Releases a list that coldefDescribe returned, with all its texts, in one
 * call. pList must be the head that coldefDescribe stored; NULL does nothing. */
COLDEF_API void coldefFree(Column_Def* pList);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VARNADP_COLDEF_H */
