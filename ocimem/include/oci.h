/* Oracle Call Interface: the subset provided by the in-memory implementation.
 * Names, types, values and prototypes are Oracle's, so that code written against this
 * header compiles unchanged against Oracle's own client headers. */
#ifndef OCI_ORACLE
#define OCI_ORACLE

#include <stddef.h>

/* ---- base types ---- */
typedef unsigned char ub1;
typedef signed char sb1;
typedef unsigned short ub2;
typedef signed short sb2;
typedef unsigned int ub4;
typedef signed int sb4;
typedef unsigned long oraub8;
typedef signed long orasb8;
typedef oraub8 ub8;
typedef orasb8 sb8;
typedef unsigned int uword;
typedef signed int sword;
typedef signed int eword;
typedef int boolean;
typedef unsigned char oratext;
typedef oratext OraText;
typedef unsigned char text;
typedef void dvoid;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

typedef sb2 OCIInd;
typedef ub2 OCIDuration;
typedef ub2 OCITypeCode;

typedef enum OCITypeGetOpt {
  OCI_TYPEGET_HEADER,
  OCI_TYPEGET_ALL
} OCITypeGetOpt;

/* ---- handles, descriptors and values (opaque) ---- */
typedef struct OCIEnv OCIEnv;
typedef struct OCIError OCIError;
typedef struct OCISvcCtx OCISvcCtx;
typedef struct OCIStmt OCIStmt;
typedef struct OCIBind OCIBind;
typedef struct OCIDefine OCIDefine;
typedef struct OCIDescribe OCIDescribe;
typedef struct OCIServer OCIServer;
typedef struct OCISession OCISession;
typedef struct OCISnapshot OCISnapshot;
typedef struct OCIParam OCIParam;
typedef struct OCILobLocator OCILobLocator;
typedef struct OCILobLocator OCIClobLocator;
typedef struct OCILobLocator OCIBlobLocator;
typedef struct OCILobLocator OCIBFileLocator;
typedef struct OCIDateTime OCIDateTime;
typedef struct OCIInterval OCIInterval;
typedef struct OCIString OCIString;
typedef struct OCIRaw OCIRaw;
typedef struct OCIRef OCIRef;
typedef struct OCIType OCIType;
typedef struct OCIColl OCIColl;
typedef OCIColl OCIArray;
typedef OCIColl OCITable;
typedef struct OCIIter OCIIter;

/* ---- value structs that user code reads and writes directly ---- */
#define OCI_NUMBER_SIZE 22
struct OCINumber {
  ub1 OCINumberPart[OCI_NUMBER_SIZE];
};
typedef struct OCINumber OCINumber;

struct OCITime {
  ub1 OCITimeHH;
  ub1 OCITimeMI;
  ub1 OCITimeSS;
};
typedef struct OCITime OCITime;

struct OCIDate {
  sb2 OCIDateYYYY;
  ub1 OCIDateMM;
  ub1 OCIDateDD;
  OCITime OCIDateTime;
};
typedef struct OCIDate OCIDate;

#define OCIDateGetTime(date, hour, min, sec) \
  { \
    *(hour) = (date)->OCIDateTime.OCITimeHH; \
    *(min) = (date)->OCIDateTime.OCITimeMI; \
    *(sec) = (date)->OCIDateTime.OCITimeSS; \
  }

#define OCIDateGetDate(date, year, month, day) \
  { \
    *(year) = (date)->OCIDateYYYY; \
    *(month) = (date)->OCIDateMM; \
    *(day) = (date)->OCIDateDD; \
  }

#define OCIDateSetTime(date, hour, min, sec) \
  { \
    (date)->OCIDateTime.OCITimeHH = (hour); \
    (date)->OCIDateTime.OCITimeMI = (min); \
    (date)->OCIDateTime.OCITimeSS = (sec); \
  }

#define OCIDateSetDate(date, year, month, day) \
  { \
    (date)->OCIDateYYYY = (year); \
    (date)->OCIDateMM = (month); \
    (date)->OCIDateDD = (day); \
  }

/* ---- callbacks ---- */
typedef sb4 (*OCICallbackLobRead)(void *ctxp, const void *bufp, ub4 len, ub1 piece);
typedef sb4 (*OCICallbackLobWrite)(void *ctxp, void *bufp, ub4 *lenp, ub1 *piece);

/* ---- constants ---- */

/* Statuses */
#define OCI_INVALID_HANDLE                 (-2)
#define OCI_STILL_EXECUTING                (-3123)
#define OCI_CONTINUE                       (-24200)
#define OCI_SUCCESS                        0
#define OCI_SUCCESS_WITH_INFO              1
#define OCI_NO_DATA                        100
#define OCI_ERROR                          (-1)
#define OCI_NEED_DATA                      99

/* Modes, syntax, pieces, character set forms */
#define OCI_ONE_PIECE                      0
#define OCI_V7_SYNTAX                      2
#define OCI_V8_SYNTAX                      3
#define OCI_NTV_SYNTAX                     1
#define OCI_DATA_AT_EXEC                   2
#define OCI_DEFAULT                        0
#define OCI_THREADED                       1
#define OCI_OBJECT                         2
#define OCI_DESCRIBE_ONLY                  16
#define OCI_COMMIT_ON_SUCCESS              32
#define OCI_FIRST_PIECE                    1
#define OCI_NEXT_PIECE                     2
#define OCI_LAST_PIECE                     3
#define SQLCS_IMPLICIT                     1
#define SQLCS_NCHAR                        2
#define SQLCS_EXPLICIT                     3
#define SQLCS_FLEXIBLE                     4
#define OCI_OBJECTCOPY_NOREF               1
#define OCI_NUMBER_UNSIGNED                0
#define OCI_NUMBER_SIGNED                  2

/* Handle types */
#define OCI_HTYPE_FIRST                    1
#define OCI_HTYPE_ENV                      1
#define OCI_HTYPE_ERROR                    2
#define OCI_HTYPE_SVCCTX                   3
#define OCI_HTYPE_STMT                     4
#define OCI_HTYPE_BIND                     5
#define OCI_HTYPE_DEFINE                   6
#define OCI_HTYPE_DESCRIBE                 7
#define OCI_HTYPE_SERVER                   8
#define OCI_HTYPE_SESSION                  9
#define OCI_HTYPE_AUTHINFO                 9
#define OCI_HTYPE_TRANS                    10
#define OCI_HTYPE_COMPLEXOBJECT            11
#define OCI_HTYPE_SECURITY                 12
#define OCI_HTYPE_SUBSCRIPTION             13
#define OCI_HTYPE_DIRPATH_CTX              14
#define OCI_HTYPE_DIRPATH_COLUMN_ARRAY     15
#define OCI_HTYPE_DIRPATH_STREAM           16
#define OCI_HTYPE_PROC                     17
#define OCI_HTYPE_DIRPATH_FN_CTX           18
#define OCI_HTYPE_DIRPATH_FN_COL_ARRAY     19
#define OCI_HTYPE_XADSESSION               20
#define OCI_HTYPE_XADTABLE                 21
#define OCI_HTYPE_XADFIELD                 22
#define OCI_HTYPE_XADGRANULE               23
#define OCI_HTYPE_XADRECORD                24
#define OCI_HTYPE_XADIO                    25
#define OCI_HTYPE_CPOOL                    26
#define OCI_HTYPE_SPOOL                    27
#define OCI_HTYPE_ADMIN                    28
#define OCI_HTYPE_EVENT                    29
#define OCI_HTYPE_SODA_COLLECTION          30
#define OCI_HTYPE_SODA_DOCUMENT            31
#define OCI_HTYPE_SODA_COLL_CURSOR         32
#define OCI_HTYPE_SODA_OPER_OPTIONS        33
#define OCI_HTYPE_SODA_OUTPUT_OPTIONS      34
#define OCI_HTYPE_SODA_METADATA            35
#define OCI_HTYPE_SODA_DOC_CURSOR          36
#define OCI_HTYPE_ASYNC                    37
#define OCI_HTYPE_LAST                     37

/* Descriptor types */
#define OCI_DTYPE_LOB                      50
#define OCI_DTYPE_PARAM                    53
#define OCI_DTYPE_FILE                     56
#define OCI_DTYPE_INTERVAL_YM              62
#define OCI_DTYPE_INTERVAL_DS              63
#define OCI_DTYPE_DATE                     65
#define OCI_DTYPE_TIMESTAMP                68
#define OCI_DTYPE_TIMESTAMP_TZ             69
#define OCI_DTYPE_TIMESTAMP_LTZ            70

/* Indicators */
#define OCI_IND_NOTNULL                    ((OCIInd)0)
#define OCI_IND_NULL                       ((OCIInd)(-1))
#define OCI_IND_BADNULL                    ((OCIInd)(-2))
#define OCI_IND_NOTNULLABLE                ((OCIInd)(-3))

/* Durations */
#define OCI_DURATION_INVALID               ((OCIDuration)65535)
#define OCI_DURATION_BEGIN                 ((OCIDuration)10)
#define OCI_DURATION_NULL                  ((OCIDuration)9)
#define OCI_DURATION_DEFAULT               ((OCIDuration)8)
#define OCI_DURATION_NEXT                  ((OCIDuration)6)
#define OCI_DURATION_SESSION               ((OCIDuration)10)
#define OCI_DURATION_TRANS                 ((OCIDuration)11)
#define OCI_DURATION_CALL                  ((OCIDuration)12)
#define OCI_DURATION_STATEMENT             ((OCIDuration)13)
#define OCI_DURATION_CALLOUT               ((OCIDuration)14)
#define OCI_DURATION_FETCH                 ((OCIDuration)15)
#define OCI_DURATION_LAST                  ((OCIDuration)15)
#define OCI_DURATION_PROCESS               ((OCIDuration)5)

/* Object free flags */
#define OCI_OBJECTFREE_FORCE               1
#define OCI_OBJECTFREE_NONULL              2
#define OCI_OBJECTFREE_HEADER              4

/* External (SQLT_) data type codes */
#define SQLT_CHR                           1
#define SQLT_NUM                           2
#define SQLT_INT                           3
#define SQLT_FLT                           4
#define SQLT_STR                           5
#define SQLT_VNU                           6
#define SQLT_PDN                           7
#define SQLT_LNG                           8
#define SQLT_VCS                           9
#define SQLT_NON                           10
#define SQLT_RID                           11
#define SQLT_DAT                           12
#define SQLT_VBI                           15
#define SQLT_BFLOAT                        21
#define SQLT_BDOUBLE                       22
#define SQLT_BIN                           23
#define SQLT_LBI                           24
#define SQLT_UIN                           68
#define SQLT_SLS                           91
#define SQLT_LVC                           94
#define SQLT_LVB                           95
#define SQLT_AFC                           96
#define SQLT_AVC                           97
#define SQLT_IBFLOAT                       100
#define SQLT_IBDOUBLE                      101
#define SQLT_CUR                           102
#define SQLT_RDD                           104
#define SQLT_LAB                           105
#define SQLT_OSL                           106
#define SQLT_NTY                           108
#define SQLT_REF                           110
#define SQLT_CLOB                          112
#define SQLT_BLOB                          113
#define SQLT_BFILEE                        114
#define SQLT_CFILEE                        115
#define SQLT_RSET                          116
#define SQLT_JSON                          119
#define SQLT_NCO                           122
#define SQLT_VST                           155
#define SQLT_ODT                           156
#define SQLT_DATE                          184
#define SQLT_TIME                          185
#define SQLT_TIME_TZ                       186
#define SQLT_TIMESTAMP                     187
#define SQLT_TIMESTAMP_TZ                  188
#define SQLT_INTERVAL_YM                   189
#define SQLT_INTERVAL_DS                   190
#define SQLT_TIMESTAMP_LTZ                 232
#define SQLT_PNTY                          241
#define SQLT_REC                           250
#define SQLT_TAB                           251
#define SQLT_BOL                           252
#define SQLT_FILE                          114
#define SQLT_CFILE                         115
#define SQLT_BFILE                         114

/* Type codes (OCI_TYPECODE_) */
#define OCI_TYPECODE_REF                   110
#define OCI_TYPECODE_DATE                  12
#define OCI_TYPECODE_SIGNED8               27
#define OCI_TYPECODE_SIGNED16              28
#define OCI_TYPECODE_SIGNED32              29
#define OCI_TYPECODE_REAL                  21
#define OCI_TYPECODE_DOUBLE                22
#define OCI_TYPECODE_BFLOAT                100
#define OCI_TYPECODE_BDOUBLE               101
#define OCI_TYPECODE_FLOAT                 4
#define OCI_TYPECODE_NUMBER                2
#define OCI_TYPECODE_DECIMAL               7
#define OCI_TYPECODE_UNSIGNED8             23
#define OCI_TYPECODE_UNSIGNED16            25
#define OCI_TYPECODE_UNSIGNED32            26
#define OCI_TYPECODE_OCTET                 245
#define OCI_TYPECODE_SMALLINT              246
#define OCI_TYPECODE_INTEGER               3
#define OCI_TYPECODE_RAW                   95
#define OCI_TYPECODE_PTR                   32
#define OCI_TYPECODE_VARCHAR2              9
#define OCI_TYPECODE_CHAR                  96
#define OCI_TYPECODE_VARCHAR               1
#define OCI_TYPECODE_MLSLABEL              105
#define OCI_TYPECODE_VARRAY                247
#define OCI_TYPECODE_TABLE                 248
#define OCI_TYPECODE_OBJECT                108
#define OCI_TYPECODE_OPAQUE                58
#define OCI_TYPECODE_NAMEDCOLLECTION       122
#define OCI_TYPECODE_BLOB                  113
#define OCI_TYPECODE_BFILE                 114
#define OCI_TYPECODE_CLOB                  112
#define OCI_TYPECODE_CFILE                 115
#define OCI_TYPECODE_TIME                  185
#define OCI_TYPECODE_TIME_TZ               186
#define OCI_TYPECODE_TIMESTAMP             187
#define OCI_TYPECODE_TIMESTAMP_TZ          188
#define OCI_TYPECODE_TIMESTAMP_LTZ         232
#define OCI_TYPECODE_INTERVAL_YM           189
#define OCI_TYPECODE_INTERVAL_DS           190
#define OCI_TYPECODE_UROWID                104
#define OCI_TYPECODE_OTMFIRST              228
#define OCI_TYPECODE_OTMLAST               320
#define OCI_TYPECODE_SYSFIRST              228
#define OCI_TYPECODE_SYSLAST               235
#define OCI_TYPECODE_PLS_INTEGER           266
#define OCI_TYPECODE_ITABLE                251
#define OCI_TYPECODE_RECORD                250
#define OCI_TYPECODE_BOOLEAN               252
#define OCI_TYPECODE_NCHAR                 286
#define OCI_TYPECODE_NVARCHAR2             287
#define OCI_TYPECODE_NCLOB                 288
#define OCI_TYPECODE_JSON                  119
#define OCI_TYPECODE_NONE                  0
#define OCI_TYPECODE_ERRHP                 283

/* Attributes (OCI_ATTR_) */
#define OCI_ATTR_DATA_SIZE                 1
#define OCI_ATTR_DATA_TYPE                 2
#define OCI_ATTR_NAME                      4
#define OCI_ATTR_PRECISION                 5
#define OCI_ATTR_SCALE                     6
#define OCI_ATTR_IS_NULL                   7
#define OCI_ATTR_TYPE_NAME                 8
#define OCI_ATTR_SCHEMA_NAME               9
#define OCI_ATTR_SERVER                    6
#define OCI_ATTR_SESSION                   7
#define OCI_ATTR_ROW_COUNT                 9
#define OCI_ATTR_FSPRECISION               16
#define OCI_ATTR_LFPRECISION               17
#define OCI_ATTR_USERNAME                  22
#define OCI_ATTR_PASSWORD                  23
#define OCI_ATTR_STMT_TYPE                 24
#define OCI_ATTR_PARAM_COUNT               18
#define OCI_ATTR_ROWS_FETCHED              197
#define OCI_ATTR_ENV_CHARSET_ID            31
#define OCI_ATTR_CHARSET_FORM              32
#define OCI_ATTR_NUM_COLS                  102
#define OCI_ATTR_LIST_COLUMNS              103
#define OCI_ATTR_REF_TDO                   110
#define OCI_ATTR_PTYPE                     123
#define OCI_ATTR_PARAM                     124
#define OCI_ATTR_TYPECODE                  216
#define OCI_ATTR_COLLECTION_TYPECODE       217
#define OCI_ATTR_COLLECTION_ELEMENT        227
#define OCI_ATTR_NUM_TYPE_ATTRS            228
#define OCI_ATTR_LIST_TYPE_ATTRS           229
#define OCI_ATTR_NUM_ELEMS                 234
#define OCI_ATTR_CHAR_USED                 285
#define OCI_ATTR_CHAR_SIZE                 286

/* Statement types, fetch, credentials, LOB and describe constants */
#define OCI_TEMP_BLOB                      1
#define OCI_TEMP_CLOB                      2
#define OCI_OTYPE_NAME                     1
#define OCI_OTYPE_REF                      2
#define OCI_OTYPE_PTR                      3
#define OCI_CRED_RDBMS                     1
#define OCI_CRED_EXT                       2
#define OCI_CRED_PROXY                     3
#define OCI_FETCH_NEXT                     2
#define OCI_FETCH_FIRST                    4
#define OCI_FETCH_LAST                     8
#define OCI_LOGON2_SPOOL                   1
#define OCI_LOGON2_STMTCACHE               4
#define OCI_LOGON2_PROXY                   8
#define OCI_LOGON2_CPOOL                   512
#define OCI_SESSGET_SPOOL                  1
#define OCI_SESSGET_STMTCACHE              4
#define OCI_SESSGET_CREDPROXY              8
#define OCI_SESSGET_CREDEXT                16
#define OCI_SESSGET_SYSDBA                 256
#define OCI_SESSGET_CPOOL                  512
#define OCI_STMT_CACHE                     64
#define OCI_STRLS_CACHE_DELETE             16
#define OCI_TRANS_NEW                      1
#define OCI_TRANS_JOIN                     2
#define OCI_TRANS_RESUME                   4
#define OCI_TRANS_PROMOTE                  8
#define OCI_TRANS_STARTMASK                255
#define OCI_TRANS_READONLY                 256
#define OCI_TRANS_READWRITE                512
#define OCI_TRANS_SERIALIZABLE             1024
#define OCI_TRANS_ISOLMASK                 65280
#define OCI_TRANS_LOOSE                    65536
#define OCI_TRANS_TIGHT                    131072
#define OCI_TRANS_TYPEMASK                 983040
#define OCI_TRANS_NOMIGRATE                1048576
#define OCI_TRANS_SEPARABLE                2097152
#define OCI_TRANS_OTSRESUME                4194304
#define OCI_TRANS_OTHRMASK                 0xfff00000U
#define OCI_TRANS_TWOPHASE                 16777216
#define OCI_TRANS_WRITEBATCH               1
#define OCI_TRANS_WRITEIMMED               2
#define OCI_TRANS_WRITEWAIT                4
#define OCI_TRANS_WRITENOWAIT              8
#define OCI_OTYPE_UNK                      0
#define OCI_OTYPE_TABLE                    1
#define OCI_OTYPE_VIEW                     2
#define OCI_OTYPE_SYN                      3
#define OCI_OTYPE_PROC                     4
#define OCI_OTYPE_FUNC                     5
#define OCI_OTYPE_PKG                      6
#define OCI_OTYPE_STMT                     7
#define OCI_LOB_READONLY                   1
#define OCI_LOB_READWRITE                  2
#define OCI_LOB_WRITEONLY                  3
#define OCI_LOB_APPENDONLY                 4
#define OCI_LOB_FULLOVERWRITE              5
#define OCI_LOB_FULLREAD                   6
#define OCI_STMT_UNKNOWN                   0
#define OCI_STMT_SELECT                    1
#define OCI_STMT_UPDATE                    2
#define OCI_STMT_DELETE                    3
#define OCI_STMT_INSERT                    4
#define OCI_STMT_CREATE                    5
#define OCI_STMT_DROP                      6
#define OCI_STMT_ALTER                     7
#define OCI_STMT_BEGIN                     8
#define OCI_STMT_DECLARE                   9
#define OCI_STMT_CALL                      10
#define OCI_STMT_MERGE                     16
#define OCI_STMT_ROLLBACK                  17
#define OCI_STMT_COMMIT                    21
#define OCI_PTYPE_UNK                      0
#define OCI_PTYPE_TABLE                    1
#define OCI_PTYPE_VIEW                     2
#define OCI_PTYPE_PROC                     3
#define OCI_PTYPE_FUNC                     4
#define OCI_PTYPE_PKG                      5
#define OCI_PTYPE_TYPE                     6
#define OCI_PTYPE_SYN                      7
#define OCI_PTYPE_SEQ                      8
#define OCI_PTYPE_COL                      9
#define OCI_PTYPE_ARG                      10
#define OCI_PTYPE_LIST                     11
#define OCI_PTYPE_TYPE_ATTR                12
#define OCI_PTYPE_TYPE_COLL                13
#define OCI_PTYPE_TYPE_METHOD              14
#define OCI_PTYPE_TYPE_ARG                 15
#define OCI_PTYPE_TYPE_RESULT              16
#define OCI_PTYPE_SCHEMA                   17
#define OCI_PTYPE_DATABASE                 18
#define OCI_PTYPE_RULE                     19
#define OCI_PTYPE_RULE_SET                 20
#define OCI_PTYPE_EVALUATION_CONTEXT       21
#define OCI_PTYPE_TABLE_ALIAS              22
#define OCI_PTYPE_VARIABLE_TYPE            23
#define OCI_PTYPE_NAME_VALUE               24
#define OCI_PTYPE_HIERARCHY                25
#define OCI_PTYPE_ANALYTIC_VIEW            26
#define OCI_NLS_YES                        39
#define OCI_NLS_NO                         40
#define OCI_NLS_AM                         41
#define OCI_NLS_PM                         42
#define OCI_NLS_AD                         43
#define OCI_NLS_BC                         44
#define OCI_NLS_DECIMAL                    45
#define OCI_NLS_GROUP                      46
#define OCI_NLS_DEBIT                      47
#define OCI_NLS_CREDIT                     48
#define OCI_NLS_DATEFORMAT                 49
#define OCI_NLS_LANGUAGE                   52
#define OCI_NLS_ABLANGUAGE                 53
#define OCI_NLS_TERRITORY                  54
#define OCI_NLS_CALENDAR                   57
#define OCI_NLS_WRITINGDIR                 79
#define OCI_NLS_ABTERRITORY                80
#define OCI_NLS_DDATEFORMAT                81
#define OCI_NLS_DTIMEFORMAT                82
#define OCI_NLS_SFDATEFORMAT               83
#define OCI_NLS_SFTIMEFORMAT               84
#define OCI_NLS_NUMGROUPING                85
#define OCI_NLS_LISTSEP                    86
#define OCI_NLS_MONDECIMAL                 87
#define OCI_NLS_MONGROUP                   88
#define OCI_NLS_MONGROUPING                89
#define OCI_NLS_MAXBUFSZ                   100
#define OCI_NLS_BINARY                     1
#define OCI_NLS_LINGUISTIC                 2
#define OCI_NLS_UPPERCASE                  32
#define OCI_NLS_LOWERCASE                  64

/* Environment handle attributes */
#define OCI_ATTR_OBJECT                    2
#define OCI_ATTR_OBJECT_NEWNOTNULL         16

/* ---- calls ---- */
#ifdef __cplusplus
extern "C" {
#endif
#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* ociap.h */
sword OCIEnvCreate(OCIEnv **envp, ub4 mode, void *ctxp, void *(*malocfp)(void *ctxp, size_t size), void *(*ralocfp)(void *ctxp, void *memptr, size_t newsize), void (*mfreefp)(void *ctxp, void *memptr), size_t xtramem_sz, void **usrmempp);
sword OCIEnvInit(OCIEnv **envp, ub4 mode, size_t xtramem_sz, void **usrmempp);
sword OCIInitialize(ub4 mode, void *ctxp, void *(*malocfp)(void *ctxp, size_t size), void *(*ralocfp)(void *ctxp, void *memptr, size_t newsize), void (*mfreefp)(void *ctxp, void *memptr));
sword OCIHandleAlloc(const void *parenth, void **hndlpp, const ub4 type, const size_t xtramem_sz, void **usrmempp);
sword OCIHandleFree(void *hndlp, const ub4 type);
sword OCIDescriptorAlloc(const void *parenth, void **descpp, const ub4 type, const size_t xtramem_sz, void **usrmempp);
sword OCIDescriptorFree(void *descp, const ub4 type);
sword OCIAttrSet(void *trgthndlp, ub4 trghndltyp, void *attributep, ub4 size, ub4 attrtype, OCIError *errhp);
sword OCIAttrGet(const void *trgthndlp, ub4 trghndltyp, void *attributep, ub4 *sizep, ub4 attrtype, OCIError *errhp);
sword OCILogon(OCIEnv *envhp, OCIError *errhp, OCISvcCtx **svchp, const OraText *username, ub4 uname_len, const OraText *password, ub4 passwd_len, const OraText *dbname, ub4 dbname_len);
sword OCILogon2(OCIEnv *envhp, OCIError *errhp, OCISvcCtx **svchp, const OraText *username, ub4 uname_len, const OraText *password, ub4 passwd_len, const OraText *dbname, ub4 dbname_len, ub4 mode);
sword OCILogoff(OCISvcCtx *svchp, OCIError *errhp);
sword OCIServerAttach(OCIServer *srvhp, OCIError *errhp, const OraText *dblink, sb4 dblink_len, ub4 mode);
sword OCIServerDetach(OCIServer *srvhp, OCIError *errhp, ub4 mode);
sword OCISessionBegin(OCISvcCtx *svchp, OCIError *errhp, OCISession *usrhp, ub4 credt, ub4 mode);
sword OCISessionEnd(OCISvcCtx *svchp, OCIError *errhp, OCISession *usrhp, ub4 mode);
sword OCIErrorGet(void *hndlp, ub4 recordno, OraText *sqlstate, sb4 *errcodep, OraText *bufp, ub4 bufsiz, ub4 type);
sword OCIStmtPrepare(OCIStmt *stmtp, OCIError *errhp, const OraText *stmt, ub4 stmt_len, ub4 language, ub4 mode);
sword OCIStmtExecute(OCISvcCtx *svchp, OCIStmt *stmtp, OCIError *errhp, ub4 iters, ub4 rowoff, const OCISnapshot *snap_in, OCISnapshot *snap_out, ub4 mode);
sword OCIStmtFetch(OCIStmt *stmtp, OCIError *errhp, ub4 nrows, ub2 orientation, ub4 mode);
sword OCIStmtFetch2(OCIStmt *stmtp, OCIError *errhp, ub4 nrows, ub2 orientation, sb4 scrollOffset, ub4 mode);
sword OCIDefineByPos(OCIStmt *stmtp, OCIDefine **defnp, OCIError *errhp, ub4 position, void *valuep, sb4 value_sz, ub2 dty, void *indp, ub2 *rlenp, ub2 *rcodep, ub4 mode);
sword OCIDefineObject(OCIDefine *defnp, OCIError *errhp, const OCIType *type, void **pgvpp, ub4 *pvszsp, void **indpp, ub4 *indszp);
sword OCIBindByPos(OCIStmt *stmtp, OCIBind **bindp, OCIError *errhp, ub4 position, void *valuep, sb4 value_sz, ub2 dty, void *indp, ub2 *alenp, ub2 *rcodep, ub4 maxarr_len, ub4 *curelep, ub4 mode);
sword OCIBindByName(OCIStmt *stmtp, OCIBind **bindp, OCIError *errhp, const OraText *placeholder, sb4 placeh_len, void *valuep, sb4 value_sz, ub2 dty, void *indp, ub2 *alenp, ub2 *rcodep, ub4 maxarr_len, ub4 *curelep, ub4 mode);
sword OCIBindObject(OCIBind *bindp, OCIError *errhp, const OCIType *type, void **pgvpp, ub4 *pvszsp, void **indpp, ub4 *indszp);
sword OCITransCommit(OCISvcCtx *svchp, OCIError *errhp, ub4 flags);
sword OCITransRollback(OCISvcCtx *svchp, OCIError *errhp, ub4 flags);

/* ort.h */
sword OCITypeByName(OCIEnv *env, OCIError *err, const OCISvcCtx *svc, const oratext *schema_name, ub4 s_length, const oratext *type_name, ub4 t_length, const oratext *version_name, ub4 v_length, OCIDuration pin_duration, OCITypeGetOpt get_option, OCIType **tdo);

/* ori.h */
sword OCIObjectNew(OCIEnv *env, OCIError *err, const OCISvcCtx *svc, OCITypeCode typecode, OCIType *tdo, void *table, OCIDuration duration, boolean value, void **instance);
sword OCIObjectFree(OCIEnv *env, OCIError *err, void *instance, ub2 flags);
sword OCIObjectUnpin(OCIEnv *env, OCIError *err, void *object);
sword OCIObjectGetInd(OCIEnv *env, OCIError *err, void *instance, void **null_struct);
sword OCIObjectCopy(OCIEnv *env, OCIError *err, const OCISvcCtx *svc, void *source, void *null_source, void *target, void *null_target, OCIType *tdo, OCIDuration duration, ub1 option);

/* orl.h */
sword OCICollSize(OCIEnv *env, OCIError *err, const OCIColl *coll, sb4 *size);
sb4 OCICollMax(OCIEnv *env, const OCIColl *coll);
sword OCICollTrim(OCIEnv *env, OCIError *err, sb4 trim_num, OCIColl *coll);
sword OCICollAppend(OCIEnv *env, OCIError *err, const void *elem, const void *elemind, OCIColl *coll);
sword OCICollGetElem(OCIEnv *env, OCIError *err, const OCIColl *coll, sb4 index, boolean *exists, void **elem, void **elemind);
sword OCICollAssignElem(OCIEnv *env, OCIError *err, sb4 index, const void *elem, const void *elemind, OCIColl *coll);
sword OCITableSize(OCIEnv *env, OCIError *err, const OCITable *tbl, sb4 *size);
sword OCIIterCreate(OCIEnv *env, OCIError *err, const OCIColl *coll, OCIIter **itr);
sword OCIIterDelete(OCIEnv *env, OCIError *err, OCIIter **itr);
sword OCIIterNext(OCIEnv *env, OCIError *err, OCIIter *itr, void **elem, void **elemind, boolean *eoc);
sword OCIIterInit(OCIEnv *env, OCIError *err, const OCIColl *coll, OCIIter *itr);
ub4 OCIStringSize(OCIEnv *env, const OCIString *vs);
oratext * OCIStringPtr(OCIEnv *env, const OCIString *vs);
sword OCIStringResize(OCIEnv *env, OCIError *err, ub4 new_size, OCIString **str);
sword OCIStringAssignText(OCIEnv *env, OCIError *err, const oratext *rhs, ub4 rhs_len, OCIString **lhs);
sword OCIStringAssign(OCIEnv *env, OCIError *err, const OCIString *rhs, OCIString **lhs);
ub4 OCIRawSize(OCIEnv * env, const OCIRaw *raw);
ub1 * OCIRawPtr(OCIEnv * env, const OCIRaw *raw);
sword OCIRawResize(OCIEnv *env, OCIError *err, ub4 new_size, OCIRaw **raw);
sword OCIRawAssignBytes(OCIEnv *env, OCIError *err, const ub1 *rhs, ub4 rhs_len, OCIRaw **lhs);
sword OCINumberToText(OCIError *err, const OCINumber *number, const oratext *fmt, ub4 fmt_length, const oratext *nls_params, ub4 nls_p_length, ub4 *buf_size, oratext *buf);
sword OCINumberFromText(OCIError *err, const oratext *str, ub4 str_length, const oratext *fmt, ub4 fmt_length, const oratext *nls_params, ub4 nls_p_length, OCINumber *number);
sword OCINumberToReal(OCIError *err, const OCINumber *number, uword rsl_length, void *rsl);
sword OCINumberFromReal(OCIError *err, const void *rnum, uword rnum_length, OCINumber *number);
sword OCINumberToInt(OCIError *err, const OCINumber *number, uword rsl_length, uword rsl_flag, void *rsl);
sword OCINumberFromInt(OCIError *err, const void *inum, uword inum_length, uword inum_s_flag, OCINumber *number);
sword OCINumberCmp(OCIError *err, const OCINumber *number1, const OCINumber *number2, sword *result);
sword OCIDateToText(OCIError *err, const OCIDate *date, const oratext *fmt, ub1 fmt_length, const oratext *lang_name, ub4 lang_length, ub4 *buf_size, oratext *buf);
sword OCIDateFromText(OCIError *err, const oratext *date_str, ub4 d_str_length, const oratext *fmt, ub1 fmt_length, const oratext *lang_name, ub4 lang_length, OCIDate *date);

/* ociap.h */
sword OCIDateTimeToText(void *hndl, OCIError *err, const OCIDateTime *date, const OraText *fmt, ub1 fmt_length, ub1 fsprec, const OraText *lang_name, size_t lang_length, ub4 *buf_size, OraText *buf);
sword OCIDateTimeFromText(void *hndl, OCIError *err, const OraText *date_str, size_t dstr_length, const OraText *fmt, ub1 fmt_length, const OraText *lang_name, size_t lang_length, OCIDateTime *date);
sword OCIDateTimeConstruct(void *hndl,OCIError *err,OCIDateTime *datetime, sb2 yr,ub1 mnth,ub1 dy,ub1 hr,ub1 mm,ub1 ss,ub4 fsec, OraText *timezone,size_t timezone_length);
sword OCIDateTimeGetDate(void *hndl, OCIError *err, const OCIDateTime *date, sb2 *yr, ub1 *mnth, ub1 *dy);
sword OCIDateTimeGetTime(void *hndl, OCIError *err, OCIDateTime *datetime, ub1 *hr, ub1 *mm, ub1 *ss, ub4 *fsec);
sword OCIDateTimeGetTimeZoneOffset(void *hndl,OCIError *err, const OCIDateTime *datetime, sb1 *hr,sb1 *mm);
sword OCIIntervalToText(void *hndl, OCIError *err, const OCIInterval *inter, ub1 lfprec, ub1 fsprec, OraText *buffer, size_t buflen, size_t *resultlen);
sword OCIIntervalFromText(void *hndl, OCIError *err, const OraText *inpstr, size_t str_len, OCIInterval *result);
sword OCIIntervalSetYearMonth(void *hndl, OCIError *err, sb4 yr, sb4 mnth, OCIInterval *result);
sword OCIIntervalSetDaySecond(void *hndl, OCIError *err, sb4 dy, sb4 hr, sb4 mm, sb4 ss, sb4 fsec, OCIInterval *result);
sword OCIIntervalGetYearMonth(void *hndl, OCIError *err, sb4 *yr, sb4 *mnth, const OCIInterval *result);
sword OCIIntervalGetDaySecond(void *hndl, OCIError *err, sb4 *dy, sb4 *hr, sb4 *mm, sb4 *ss, sb4 *fsec, const OCIInterval *result);
sword OCILobGetLength(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *lenp);
sword OCILobRead(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *amtp, ub4 offset, void *bufp, ub4 bufl, void *ctxp, OCICallbackLobRead cbfp, ub2 csid, ub1 csfrm);
sword OCILobWrite(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 *amtp, ub4 offset, void *bufp, ub4 buflen, ub1 piece, void *ctxp, OCICallbackLobWrite cbfp, ub2 csid, ub1 csfrm);
sword OCILobTrim(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub4 newlen);
sword OCILobCreateTemporary(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp, ub2 csid, ub1 csfrm, ub1 lobtype, boolean cache, OCIDuration duration);
sword OCILobFreeTemporary(OCISvcCtx *svchp, OCIError *errhp, OCILobLocator *locp);
sword OCILobIsTemporary(OCIEnv *envp, OCIError *errhp, OCILobLocator *locp, boolean *is_temporary);
sword OCILobLocatorAssign(OCISvcCtx *svchp, OCIError *errhp, const OCILobLocator *src_locp, OCILobLocator **dst_locpp);
sword OCIDescribeAny(OCISvcCtx *svchp, OCIError *errhp, void *objptr, ub4 objnm_len, ub1 objptr_typ, ub1 info_level, ub1 objtyp, OCIDescribe *dschp);
sword OCIParamGet(const void *hndlp, ub4 htype, OCIError *errhp, void **parmdpp, ub4 pos);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif /* OCI_ORACLE */
