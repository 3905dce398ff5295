/* The public header compiles as C: this translation unit is built by a C
 * compiler and reports the layout it sees, which the C++ side compares. */
#include <stddef.h>

#include <varnadp.h>

size_t varnadp_c_column_def_size(void) { return sizeof(Column_Def); }
size_t varnadp_c_column_def_next_offset(void) { return offsetof(Column_Def, Next); }
size_t varnadp_c_column_def_flags_offset(void) { return offsetof(Column_Def, Flags); }
size_t varnadp_c_special_release_offset(void) { return offsetof(DB_SPECIAL_STRINGS, szRelease); }
int varnadp_c_flags(void) { return COLDEF_COMPLEX | COLDEF_END | COLDEF_DEFINED; }

/* Re-declaring the C entry points with the exact argument lists fails to
 * compile if the header ever drifts from them. */
int adpCreateContext(VARNADP** ppCtx, CKelTrace* pTrace, DB_SPECIAL_STRINGS* pSpecialStrings);
int adpDestroyContext(VARNADP* pCtx, CKelTrace* pTrace);
int adpProcessObject(VARNADP* pCtx, CKelTrace* pTrace, CKelStream* pStream,
                     Column_Def** ppColumnDef, OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                     void* pInstance, short* pIndicator, short nIndicator, OCIType* pType);
int adpProcessStream(VARNADP* pCtx, CKelTrace* pTrace, CKelStream* pStream,
                     Column_Def** ppColumnDef, OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                     void** ppInstance, short** ppIndicator, short* pnIndicator, OCIType* pType,
                     int* pnLobsPending);
int adpProcessBuffer(VARNADP* pCtx, CKelTrace* pTrace, const void** ppBuffer, unsigned long nSize,
                     Column_Def** ppColumnDef, OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                     void** ppInstance, short** ppIndicator, short* pnIndicator, OCIType* pType,
                     int* pnLobsPending);
int adpWriteLobs(VARNADP* pCtx, CKelTrace* pTrace, const char* pszSelect);
int adpOraLogError(CKelTrace* pTrace, OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc,
                   const char* pszOciFunc, int nStatus);
int adpOraCheckConnection(OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc);

const char* varnadp_c_version(void) { return szVersion; }
