/* A program written the way Oracle's classic demos are: headers behind their guards, a
 * server attach and a session begun by hand, K&R-era casts throughout.  It creates an
 * object type and a table on the in-memory database, inserts a row through a bound
 * object, selects it back into an object define and checks every value.  Built as C90
 * and, through classic_demo_cxx.cc, as C++; both are run by ctest. */
#ifndef ORATYPES
#include <oratypes.h>
#endif
#ifndef OCIDFN
#include <ocidfn.h>
#endif
#ifndef OCIAP_ORACLE
#include <ociap.h>
#endif
#ifndef OCI_ORACLE
#include <oci.h>
#endif
#ifndef ORID_ORACLE
#include <orid.h>
#endif

#include <stdio.h>
#include <string.h>

struct address { OCIString *street; OCINumber zip; };
struct address_ind { OCIInd _atomic; OCIInd street; OCIInd zip; };

static OCIEnv *envhp;
static OCIError *errhp;
static OCIServer *srvhp;
static OCISvcCtx *svchp;
static OCISession *authp;
static OCIStmt *stmthp;

static int checkerr(sword status, CONST char *what) {
  text errbuf[512];
  sb4 errcode = 0;
  if (status == OCI_SUCCESS) return 0;
  errbuf[0] = '\0';
  (void) OCIErrorGet((dvoid *) errhp, (ub4) 1, (text *) NULL, &errcode, errbuf,
                     (ub4) sizeof(errbuf), (ub4) OCI_HTYPE_ERROR);
  printf("%s: status %d: %s\n", what, (int) status, (char *) errbuf);
  return 1;
}

static int run_sql(CONST char *sql) {
  return checkerr(OCIStmtPrepare(stmthp, errhp, (text *) sql, (ub4) strlen(sql),
                                 (ub4) OCI_NTV_SYNTAX, (ub4) OCI_DEFAULT), sql) ||
         checkerr(OCIStmtExecute(svchp, stmthp, errhp, (ub4) 1, (ub4) 0,
                                 (CONST OCISnapshot *) NULL, (OCISnapshot *) NULL,
                                 (ub4) OCI_DEFAULT), sql);
}

static int logon(void) {
  text *username = (text *) "scott";
  text *password = (text *) "tiger";
  text *dbname = (text *) "classic_demo";

  if (checkerr(OCIInitialize((ub4) OCI_OBJECT, (dvoid *) 0,
                             (dvoid * (*)(dvoid *, size_t)) 0,
                             (dvoid * (*)(dvoid *, dvoid *, size_t)) 0,
                             (void (*)(dvoid *, dvoid *)) 0), "OCIInitialize") ||
      checkerr(OCIEnvInit((OCIEnv **) &envhp, (ub4) OCI_DEFAULT, (size_t) 0, (dvoid **) 0),
               "OCIEnvInit"))
    return 1;
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &errhp, (ub4) OCI_HTYPE_ERROR,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &srvhp, (ub4) OCI_HTYPE_SERVER,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &svchp, (ub4) OCI_HTYPE_SVCCTX,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &authp, (ub4) OCI_HTYPE_SESSION,
                        (size_t) 0, (dvoid **) 0);
  (void) OCIHandleAlloc((dvoid *) envhp, (dvoid **) &stmthp, (ub4) OCI_HTYPE_STMT,
                        (size_t) 0, (dvoid **) 0);
  return checkerr(OCIServerAttach(srvhp, errhp, (text *) dbname,
                                  (sb4) strlen((char *) dbname), (ub4) OCI_DEFAULT),
                  "OCIServerAttach") ||
         checkerr(OCIAttrSet((dvoid *) svchp, (ub4) OCI_HTYPE_SVCCTX, (dvoid *) srvhp,
                             (ub4) 0, (ub4) OCI_ATTR_SERVER, errhp), "server") ||
         checkerr(OCIAttrSet((dvoid *) authp, (ub4) OCI_HTYPE_SESSION, (dvoid *) username,
                             (ub4) strlen((char *) username), (ub4) OCI_ATTR_USERNAME,
                             errhp), "username") ||
         checkerr(OCIAttrSet((dvoid *) authp, (ub4) OCI_HTYPE_SESSION, (dvoid *) password,
                             (ub4) strlen((char *) password), (ub4) OCI_ATTR_PASSWORD,
                             errhp), "password") ||
         checkerr(OCISessionBegin(svchp, errhp, authp, (ub4) OCI_CRED_RDBMS,
                                  (ub4) OCI_DEFAULT), "OCISessionBegin") ||
         checkerr(OCIAttrSet((dvoid *) svchp, (ub4) OCI_HTYPE_SVCCTX, (dvoid *) authp,
                             (ub4) 0, (ub4) OCI_ATTR_SESSION, errhp), "session");
}

/* Binds the id, the name and a new address object, and inserts them. */
static int insert_row(OCIType *addr_tdo) {
  struct address *addr = (struct address *) 0;
  struct address_ind *addr_ind = (struct address_ind *) 0;
  OCIBind *bnd1p = (OCIBind *) 0, *bnd2p = (OCIBind *) 0, *bnd3p = (OCIBind *) 0;
  sb4 id = 7;
  sword zip = 12345;
  text name[] = "Smith";
  CONST char *sql = "INSERT INTO people VALUES (:1, :2, :3)";

  if (checkerr(OCIObjectNew(envhp, errhp, svchp, OCI_TYPECODE_OBJECT, addr_tdo, (dvoid *) 0,
                            OCI_DURATION_DEFAULT, TRUE, (dvoid **) &addr), "OCIObjectNew") ||
      checkerr(OCIObjectGetInd(envhp, errhp, (dvoid *) addr, (dvoid **) &addr_ind),
               "OCIObjectGetInd") ||
      checkerr(OCIStringAssignText(envhp, errhp, (CONST text *) "Main Street",
                                   (ub4) strlen("Main Street"), &addr->street), "street") ||
      checkerr(OCINumberFromInt(errhp, (CONST dvoid *) &zip, (uword) sizeof(zip),
                                OCI_NUMBER_SIGNED, &addr->zip), "zip"))
    return 1;
  addr_ind->_atomic = addr_ind->street = addr_ind->zip = OCI_IND_NOTNULL;
  if (checkerr(OCIStmtPrepare(stmthp, errhp, (text *) sql, (ub4) strlen(sql),
                              (ub4) OCI_NTV_SYNTAX, (ub4) OCI_DEFAULT), sql) ||
      checkerr(OCIBindByPos(stmthp, &bnd1p, errhp, (ub4) 1, (dvoid *) &id, (sb4) sizeof(id),
                            SQLT_INT, (dvoid *) 0, (ub2 *) 0, (ub2 *) 0, (ub4) 0, (ub4 *) 0,
                            (ub4) OCI_DEFAULT), "bind 1") ||
      checkerr(OCIBindByPos(stmthp, &bnd2p, errhp, (ub4) 2, (dvoid *) name, (sb4) sizeof(name),
                            SQLT_STR, (dvoid *) 0, (ub2 *) 0, (ub2 *) 0, (ub4) 0, (ub4 *) 0,
                            (ub4) OCI_DEFAULT), "bind 2") ||
      checkerr(OCIBindByPos(stmthp, &bnd3p, errhp, (ub4) 3, (dvoid *) 0, (sb4) 0, SQLT_NTY,
                            (dvoid *) 0, (ub2 *) 0, (ub2 *) 0, (ub4) 0, (ub4 *) 0,
                            (ub4) OCI_DEFAULT), "bind 3") ||
      checkerr(OCIBindObject(bnd3p, errhp, addr_tdo, (dvoid **) &addr, (ub4 *) 0,
                             (dvoid **) &addr_ind, (ub4 *) 0), "OCIBindObject") ||
      checkerr(OCIStmtExecute(svchp, stmthp, errhp, (ub4) 1, (ub4) 0,
                              (CONST OCISnapshot *) NULL, (OCISnapshot *) NULL,
                              (ub4) OCI_DEFAULT), sql) ||
      checkerr(OCITransCommit(svchp, errhp, (ub4) 0), "OCITransCommit") ||
      checkerr(OCIObjectFree(envhp, errhp, (dvoid *) addr, (ub2) OCI_OBJECTFREE_FORCE),
               "OCIObjectFree"))
    return 1;
  return 0;
}

/* Selects the row back into scalar and object defines and checks each value. */
static int select_row(OCIType *addr_tdo) {
  struct address *addr = (struct address *) 0;
  struct address_ind *addr_ind = (struct address_ind *) 0;
  OCIDefine *def1p = (OCIDefine *) 0, *def2p = (OCIDefine *) 0, *def3p = (OCIDefine *) 0;
  sb4 id = 0;
  sword zip = 0;
  text name[21];
  text *street;
  CONST char *sql = "SELECT id, name, home FROM people WHERE id = 7";
  CONST oratext *attr_names[1];
  ub4 attr_lengths[1];
  OCIInd attr_ind = OCI_IND_NULL;
  dvoid *attr_null = (dvoid *) 0, *attr_value = (dvoid *) 0;
  OCIType *attr_tdo = (OCIType *) 0;

  if (checkerr(OCIStmtPrepare(stmthp, errhp, (text *) sql, (ub4) strlen(sql),
                              (ub4) OCI_NTV_SYNTAX, (ub4) OCI_DEFAULT), sql) ||
      checkerr(OCIDefineByPos(stmthp, &def1p, errhp, (ub4) 1, (dvoid *) &id, (sb4) sizeof(id),
                              SQLT_INT, (dvoid *) 0, (ub2 *) 0, (ub2 *) 0, (ub4) OCI_DEFAULT),
               "define 1") ||
      checkerr(OCIDefineByPos(stmthp, &def2p, errhp, (ub4) 2, (dvoid *) name, (sb4) sizeof(name),
                              SQLT_STR, (dvoid *) 0, (ub2 *) 0, (ub2 *) 0, (ub4) OCI_DEFAULT),
               "define 2") ||
      checkerr(OCIDefineByPos(stmthp, &def3p, errhp, (ub4) 3, (dvoid *) 0, (sb4) 0, SQLT_NTY,
                              (dvoid *) 0, (ub2 *) 0, (ub2 *) 0, (ub4) OCI_DEFAULT),
               "define 3") ||
      checkerr(OCIDefineObject(def3p, errhp, addr_tdo, (dvoid **) &addr, (ub4 *) 0,
                               (dvoid **) &addr_ind, (ub4 *) 0), "OCIDefineObject") ||
      checkerr(OCIStmtExecute(svchp, stmthp, errhp, (ub4) 0, (ub4) 0,
                              (CONST OCISnapshot *) NULL, (OCISnapshot *) NULL,
                              (ub4) OCI_DEFAULT), sql) ||
      checkerr(OCIStmtFetch2(stmthp, errhp, (ub4) 1, (ub2) OCI_FETCH_NEXT, (sb4) 0,
                             (ub4) OCI_DEFAULT), "OCIStmtFetch2") ||
      checkerr(OCINumberToInt(errhp, &addr->zip, (uword) sizeof(zip), OCI_NUMBER_SIGNED,
                              (dvoid *) &zip), "OCINumberToInt"))
    return 1;
  street = OCIStringPtr(envhp, addr->street);
  if (id != 7 || strcmp((char *) name, "Smith") != 0 || zip != 12345 ||
      addr_ind->_atomic != OCI_IND_NOTNULL || addr_ind->street != OCI_IND_NOTNULL ||
      OCIStringSize(envhp, addr->street) != (ub4) strlen("Main Street") ||
      memcmp((char *) street, "Main Street", strlen("Main Street")) != 0) {
    printf("selected %d %s %d\n", (int) id, (char *) name, (int) zip);
    return 1;
  }
  attr_names[0] = (CONST oratext *) "STREET";
  attr_lengths[0] = (ub4) strlen("STREET");
  if (checkerr(OCIObjectGetAttr(envhp, errhp, (dvoid *) addr, (dvoid *) addr_ind, addr_tdo,
                                attr_names, attr_lengths, (ub4) 1, (ub4 *) 0, (ub4) 0,
                                &attr_ind, &attr_null, &attr_value, &attr_tdo),
               "OCIObjectGetAttr"))
    return 1;
  if (attr_ind != OCI_IND_NOTNULL || *(OCIString **) attr_value != addr->street) return 1;
  if (OCIStmtFetch2(stmthp, errhp, (ub4) 1, (ub2) OCI_FETCH_NEXT, (sb4) 0,
                    (ub4) OCI_DEFAULT) != OCI_NO_DATA)
    return 1;
  return 0;
}

int main(void) {
  OCIType *addr_tdo = (OCIType *) 0;

  if (logon() ||
      run_sql("CREATE TYPE address_t AS OBJECT (street VARCHAR2(30), zip NUMBER(5))") ||
      run_sql("CREATE TABLE people (id NUMBER(6), name VARCHAR2(20), home address_t)") ||
      checkerr(OCITypeByName(envhp, errhp, svchp, (CONST text *) 0, (ub4) 0,
                             (CONST text *) "ADDRESS_T", (ub4) strlen("ADDRESS_T"),
                             (CONST text *) 0, (ub4) 0, OCI_DURATION_SESSION,
                             OCI_TYPEGET_HEADER, &addr_tdo), "OCITypeByName") ||
      insert_row(addr_tdo) || select_row(addr_tdo))
    return 1;
  if (checkerr(OCISessionEnd(svchp, errhp, authp, (ub4) OCI_DEFAULT), "OCISessionEnd") ||
      checkerr(OCIServerDetach(srvhp, errhp, (ub4) OCI_DEFAULT), "OCIServerDetach") ||
      checkerr(OCIHandleFree((dvoid *) envhp, (ub4) OCI_HTYPE_ENV), "OCIHandleFree"))
    return 1;
  printf("classic demo ok\n");
  return 0;
}
