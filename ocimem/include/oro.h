/* Oracle's object runtime definitions: indicators, durations, type codes, object
 * references and the options of the object calls. */
#ifndef ORO_ORACLE
#define ORO_ORACLE

#include "oratypes.h"

typedef struct OCIRef OCIRef;

typedef sb2 OCIInd;
typedef ub2 OCIDuration;
typedef ub2 OCITypeCode;

typedef enum OCITypeGetOpt {
  OCI_TYPEGET_HEADER,
  OCI_TYPEGET_ALL
} OCITypeGetOpt;

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

/* Object free and copy flags */
#define OCI_OBJECTFREE_FORCE               1
#define OCI_OBJECTFREE_NONULL              2
#define OCI_OBJECTFREE_HEADER              4
#define OCI_OBJECTCOPY_NOREF               1

/* Environment handle attribute of new objects */
#define OCI_ATTR_OBJECT_NEWNOTNULL         16

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

#endif /* ORO_ORACLE */
