/*
 * varnadp: moves values of Oracle object types between Oracle and a flat,
 * delimited text stream. This is the only public header of the adapter: the
 * context handle, the records shared with the host, the entry points and the
 * version symbols. It compiles as C and as C++.
 */
#ifndef VARNADP_H
#define VARNADP_H

#include <stddef.h>

#include <oci.h>

#if defined(VARNADP_BUILDING)
#define VARNADP_API __attribute__((visibility("default")))
#else
#define VARNADP_API
#endif

#ifdef __cplusplus
#define VARNADP_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
class CKelTrace;
class CKelStream;
extern "C" {
#else
#define VARNADP_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
typedef struct CKelTrace CKelTrace;
typedef struct CKelStream CKelStream;
#endif

/* The context handle. A VARNADP* is created by adpCreateContext and released
 * by adpDestroyContext; its contents are private to the library. */
typedef struct VARNADP VARNADP;

/* Overrides for the stream's special strings, given once at context creation.
 * The lengths are decimal texts; only the first 32 bytes of the delimiter and
 * terminator and the first byte of the release character are used. */
typedef struct DB_SPECIAL_STRINGS {
  char szDelimiterLen[4];
  char szTerminatorLen[4];
  char szDelimiter[64];
  char szTerminator[64];
  char szRelease[8];
} DB_SPECIAL_STRINGS;

VARNADP_STATIC_ASSERT(offsetof(DB_SPECIAL_STRINGS, szDelimiterLen) == 0, "szDelimiterLen offset");
VARNADP_STATIC_ASSERT(offsetof(DB_SPECIAL_STRINGS, szTerminatorLen) == 4, "szTerminatorLen offset");
VARNADP_STATIC_ASSERT(offsetof(DB_SPECIAL_STRINGS, szDelimiter) == 8, "szDelimiter offset");
VARNADP_STATIC_ASSERT(offsetof(DB_SPECIAL_STRINGS, szTerminator) == 72, "szTerminator offset");
VARNADP_STATIC_ASSERT(offsetof(DB_SPECIAL_STRINGS, szRelease) == 136, "szRelease offset");

/* Column_Def flags. */
#define COLDEF_COMPLEX 0x1000 /* the record opens an object or collection group */
#define COLDEF_END 0x2000     /* the record closes a group */
#define COLDEF_DEFINED 0x4000 /* the record holds a definition */

/* One element definition of the host's flat list that describes an object
 * type down to its leaves. The list is owned by the host; the adapter reads
 * it and never keeps a copy. The record is 1424 bytes; the bytes after Next
 * are reserved for the host. */
typedef struct Column_Def Column_Def;
struct Column_Def {
  char* ColumnName;          /* attribute name (not used for collection items) */
  unsigned long DataSize;    /* size in bytes of the external value */
  unsigned int DisplaySize;  /* text size of DATE, TIMESTAMP and INTERVAL values */
  unsigned long Precision;   /* precision */
  short Scale;               /* scale or fractional-seconds precision */
  unsigned short DataType;   /* Oracle data type code (SQLT_...) */
  short ExtType;             /* external type asked for by the host */
  unsigned short Flags;      /* COLDEF_... */
  char* TypeName;            /* "SCHEMA.TYPE" or "TYPE", or NULL */
  int InCollection;          /* nonzero for the item of a collection */
  Column_Def* Next;          /* next record; a group's first member */
  unsigned char Reserved[1424 - 64];
};

VARNADP_STATIC_ASSERT(sizeof(Column_Def) == 1424, "Column_Def size");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, ColumnName) == 0, "ColumnName offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, DataSize) == 8, "DataSize offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, DisplaySize) == 16, "DisplaySize offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, Precision) == 24, "Precision offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, Scale) == 32, "Scale offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, DataType) == 34, "DataType offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, ExtType) == 36, "ExtType offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, Flags) == 38, "Flags offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, TypeName) == 40, "TypeName offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, InCollection) == 48, "InCollection offset");
VARNADP_STATIC_ASSERT(offsetof(Column_Def, Next) == 56, "Next offset");

/* Context handle and processing calls. Each returns 0 on success, otherwise
 * the negative code of the error; the error itself is handed to the host's
 * KelSetLastException. */
VARNADP_API int adpCreateContext(VARNADP** ppCtx, CKelTrace* pTrace,
                                 DB_SPECIAL_STRINGS* pSpecialStrings);
VARNADP_API int adpDestroyContext(VARNADP* pCtx, CKelTrace* pTrace);
VARNADP_API int adpProcessObject(VARNADP* pCtx, CKelTrace* pTrace, CKelStream* pStream,
                                 Column_Def** ppColumnDef, OCIEnv* pEnv, OCIError* pErr,
                                 OCISvcCtx* pSvc, void* pInstance, short* pIndicator,
                                 short nIndicator, OCIType* pType);
VARNADP_API int adpProcessStream(VARNADP* pCtx, CKelTrace* pTrace, CKelStream* pStream,
                                 Column_Def** ppColumnDef, OCIEnv* pEnv, OCIError* pErr,
                                 OCISvcCtx* pSvc, void** ppInstance, short** ppIndicator,
                                 short* pnIndicator, OCIType* pType, int* pnLobsPending);
VARNADP_API int adpProcessBuffer(VARNADP* pCtx, CKelTrace* pTrace, const void** ppBuffer,
                                 unsigned long nSize, Column_Def** ppColumnDef, OCIEnv* pEnv,
                                 OCIError* pErr, OCISvcCtx* pSvc, void** ppInstance,
                                 short** ppIndicator, short* pnIndicator, OCIType* pType,
                                 int* pnLobsPending);
VARNADP_API int adpWriteLobs(VARNADP* pCtx, CKelTrace* pTrace, const char* pszSelect);

/* Oracle error reporting, also usable by a host for its own OCI calls. */
VARNADP_API int adpOraLogError(CKelTrace* pTrace, OCIEnv* pEnv, OCIError* pErr,
                               OCISvcCtx* pSvc, const char* pszOciFunc, int nStatus);
VARNADP_API int adpOraCheckConnection(OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc);

/* Version identification, read by symbol name. */
VARNADP_API extern const char szVersion[];
VARNADP_API extern const char szFullZRWVersion[];
VARNADP_API extern const char szVarnVersionLabel[];
VARNADP_API extern const char szMainProductName[];
VARNADP_API extern const char szCopyright[];

#ifdef __cplusplus
} /* extern "C" */

/* The C++ flavour: references instead of pointers, results returned directly,
 * and a failure leaves as a thrown CKelException (nothing else is thrown). */
VARNADP_API void AdpProcessObject(VARNADP* pCtx, CKelTrace* pTrace, CKelStream& stream,
                                  Column_Def*& pColumnDef, OCIEnv* pEnv, OCIError* pErr,
                                  OCISvcCtx* pSvc, void* pInstance, short* pIndicator,
                                  short nIndicator, OCIType* pType);
VARNADP_API int AdpProcessStream(VARNADP* pCtx, CKelTrace* pTrace, CKelStream& stream,
                                 Column_Def*& pColumnDef, OCIEnv* pEnv, OCIError* pErr,
                                 OCISvcCtx* pSvc, void*& pInstance, short*& pIndicator,
                                 short& nIndicator, OCIType* pType);
VARNADP_API int AdpProcessBuffer(VARNADP* pCtx, CKelTrace* pTrace, const void* pBuffer,
                                 unsigned long nSize, Column_Def*& pColumnDef, OCIEnv* pEnv,
                                 OCIError* pErr, OCISvcCtx* pSvc, void*& pInstance,
                                 short*& pIndicator, short& nIndicator, OCIType* pType);
VARNADP_API void AdpWriteLobs(VARNADP* pCtx, CKelTrace* pTrace, const char* pszSelect);
#endif

#undef VARNADP_STATIC_ASSERT

#endif /* VARNADP_H */
