/* Oracle's headers included one by one, each behind the guard Oracle's demo programs
 * test, before oci.h; then the older names (CONST, dvoid, text, eb1, b4, ...), the
 * limits and a sample of the attribute constants, checked while compiling.  Built as C90
 * and, through classic_headers_cxx.cc, as C++. */
#ifndef ORATYPES
#include <oratypes.h>
#endif
#ifdef OCI_ORACLE
#error "oratypes.h must not pull in oci.h"
#endif
#if !defined(CONST) || !defined(dvoid) || !defined(UB1BITS) || !defined(SIZE_TMAXVAL)
#error "oratypes.h lacks its macros"
#endif

#ifndef OCIDFN
#include <ocidfn.h>
#endif
#ifdef OCI_ORACLE
#error "ocidfn.h must not pull in oci.h"
#endif
#if SQLT_NTY != 108 || SQLT_STR != 5 || SQLCS_IMPLICIT != 1 || OCI_LAST_PIECE != 3
#error "ocidfn.h"
#endif

#ifndef ORO_ORACLE
#include <oro.h>
#endif
#ifndef ORT_ORACLE
#include <ort.h>
#endif
#ifndef ORL_ORACLE
#include <orl.h>
#endif
#ifndef ORI_ORACLE
#include <ori.h>
#endif
#ifndef OCIAP_ORACLE
#include <ociap.h>
#endif
#ifndef OCI_ORACLE
#include <oci.h>
#endif
#ifdef ORID_ORACLE
#error "oci.h must not include orid.h"
#endif
#ifndef ORID_ORACLE
#include <orid.h>
#endif

#include <string.h>

#if !defined(ORATYPES) || !defined(OCIDFN) || !defined(ORO_ORACLE) || !defined(ORI_ORACLE)
#error "guards"
#endif
#if !defined(ORL_ORACLE) || !defined(ORT_ORACLE) || !defined(OCIAP_ORACLE)
#error "guards"
#endif

#define CLASSIC_CHECK(name, cond) typedef char classic_check_##name[(cond) ? 1 : -1]

CLASSIC_CHECK(eb_sizes, sizeof(eb1) == 1 && sizeof(eb2) == 2 && sizeof(eb4) == 4);
CLASSIC_CHECK(b_sizes, sizeof(b1) == 1 && sizeof(b2) == 2 && sizeof(b4) == 4);
CLASSIC_CHECK(big_sizes, sizeof(sbig_ora) == 8 && sizeof(ubig_ora) == 8 && sizeof(ub8) == 8);
CLASSIC_CHECK(text_sizes, sizeof(utext) == 2 && sizeof(text) == 1 &&
                              sizeof(string) == sizeof(text *));
CLASSIC_CHECK(ub1, UB1MAXVAL == 255 && UB1MINVAL == 0 && MINUB1MAXVAL == 255 && UB1BITS == 8);
CLASSIC_CHECK(ub1mask, UB1MASK == 255);
CLASSIC_CHECK(sb1, SB1MAXVAL == 127 && SB1MINVAL == -128 && MAXSB1MINVAL == -127);
CLASSIC_CHECK(b2, UB2MAXVAL == 65535 && SB2MINVAL == -32768 && B2MINVAL == SB2MINVAL);
CLASSIC_CHECK(ub4, UB4MAXVAL == 4294967295U && SB4MAXVAL == 2147483647 && B4MAXVAL == SB4MAXVAL);
CLASSIC_CHECK(sb4min, SB4MINVAL == -2147483647 - 1 && MINSB4MAXVAL == 2147483647);
CLASSIC_CHECK(eb, EB1MAXVAL == 127 && EB1MINVAL == 0 && EB2MAXVAL == 32767 && EB4MINVAL == 0);
CLASSIC_CHECK(ora8, ORAUB8MAXVAL == 18446744073709551615UL &&
                        ORASB8MAXVAL == 9223372036854775807L && UBIG_ORAMAXVAL == ORAUB8MAXVAL);
CLASSIC_CHECK(words, UWORDMAXVAL == UB4MAXVAL && SWORDMAXVAL == SB4MAXVAL &&
                         SWORDMINVAL == SB4MINVAL && EWORDMAXVAL == 2147483647);
CLASSIC_CHECK(size_t_max, SIZE_TMAXVAL == (size_t)-1);
CLASSIC_CHECK(attrs, OCI_ATTR_PREFETCH_ROWS == 11 && OCI_ATTR_PREFETCH_MEMORY == 13 &&
                         OCI_ATTR_NUM_DML_ERRORS == 73 && OCI_ATTR_STMTCACHESIZE == 176);
CLASSIC_CHECK(attrs2, OCI_ATTR_CLIENT_IDENTIFIER == 278 && OCI_ATTR_MODULE == 366 &&
                          OCI_ATTR_ACTION == 367 && OCI_ATTR_CALL_TIMEOUT == 531);
CLASSIC_CHECK(attrs3, OCI_ATTR_PURITY_DEFAULT == 0 && OCI_ATTR_COL_PROPERTY_IS_CONID == 16 &&
                          OCI_ATTR_CACHE_ARRAYFLUSH == 64 && OCI_ATTR_DIRPATH_RESERVED_35 == 2036);
CLASSIC_CHECK(attrs4, OCI_ATTR_OBJECT_NEWNOTNULL == 16 && OCI_ATTR_OBJECT == 2);

/* The casts of Oracle's classic demos must compile as they are written. */
static sword classic_calls(OCIEnv *envhp, OCIError *errhp, OCISvcCtx *svchp, OCIStmt *stmthp) {
  CONST text *sql = (CONST text *) "SELECT 1 FROM DUAL";
  dvoid *nothing = (dvoid *) 0;
  sword status;

  status = OCIStmtPrepare(stmthp, errhp, (text *) sql, (ub4) strlen((char *) sql),
                          (ub4) OCI_NTV_SYNTAX, (ub4) OCI_DEFAULT);
  if (status == OCI_SUCCESS)
    status = OCIStmtExecute(svchp, stmthp, errhp, (ub4) 1, (ub4) 0, (CONST OCISnapshot *) 0,
                            (OCISnapshot *) 0, (ub4) OCI_DEFAULT);
  if (status == OCI_SUCCESS)
    status = OCIAttrGet((CONST dvoid *) stmthp, (ub4) OCI_HTYPE_STMT, (dvoid *) nothing,
                        (ub4 *) 0, (ub4) OCI_ATTR_ROW_COUNT, errhp);
  (void) envhp;
  return status;
}

int main(void) {
  OCIEnv *envhp = (OCIEnv *) 0;
  eb1 small = EB1MAXVAL;
  b4 count = B4MINVAL;
  string name = (string) "x";
  sword (*call)(OCIEnv *, OCIError *, OCISvcCtx *, OCIStmt *) = classic_calls;

  if (OCIEnvCreate((OCIEnv **) &envhp, (ub4) OCI_DEFAULT, (dvoid *) 0,
                   (dvoid * (*)(dvoid *, size_t)) 0,
                   (dvoid * (*)(dvoid *, dvoid *, size_t)) 0,
                   (void (*)(dvoid *, dvoid *)) 0, (size_t) 0, (dvoid **) 0) != OCI_SUCCESS)
    return 1;
  if (OCIHandleFree((dvoid *) envhp, (ub4) OCI_HTYPE_ENV) != OCI_SUCCESS) return 2;
  if (small != 127 || count != SB4MINVAL || name[0] != 'x' || call == 0) return 3;
  return 0;
}
