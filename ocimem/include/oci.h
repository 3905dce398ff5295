/* Oracle Call Interface: the subset provided by the in-memory implementation.
 * Names, types, values and prototypes are Oracle's, so that code written against this
 * header compiles unchanged against Oracle's own client headers.  As in Oracle's client,
 * this header holds the handles and the constants of the relational calls and includes
 * the headers that hold the rest (base types in oratypes.h, data type codes in ocidfn.h,
 * object definitions in oro.h, ori.h, orl.h and ort.h, the relational calls in ociap.h).
 * Attribute access by name is in orid.h, which this header does not include. */
#ifndef OCI_ORACLE
#define OCI_ORACLE

#include "oratypes.h"
#include "ocidfn.h"

/* ---- handles and descriptors (opaque) ---- */
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

/* Modes and syntax */
#define OCI_V7_SYNTAX                      2
#define OCI_V8_SYNTAX                      3
#define OCI_NTV_SYNTAX                     1
#define OCI_DATA_AT_EXEC                   2
#define OCI_DEFAULT                        0
#define OCI_THREADED                       1
#define OCI_OBJECT                         2
#define OCI_DESCRIBE_ONLY                  16
#define OCI_COMMIT_ON_SUCCESS              32
#define OCI_DYNAMIC_FETCH                  0x02

/* Piecewise operations: direction of the data */
#define OCI_PARAM_IN                       0x01
#define OCI_PARAM_OUT                      0x02

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

/* Environment handle attribute */
#define OCI_ATTR_OBJECT                    2

/* The other attribute constants of Oracle's client. */
#include "ocimem_attr1.h"
#include "ocimem_attr2.h"

/* ---- the headers that Oracle's oci.h includes, in its order ---- */
#include "ociver.h"
#include "oci1.h"
#include "oro.h"
#include "ori.h"
#include "orl.h"
#include "ort.h"
#include "ociextp.h"
#include "ociapr.h"
#include "ociap.h"
#include "ocixmldb.h"
#include "oci8dp.h"
#include "ocixstream.h"

#endif /* OCI_ORACLE */
