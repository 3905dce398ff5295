// Injected faults on the statement, bind, define, LOB and transaction calls, and statement
// handles freed on every path (the sanitizer build checks that nothing leaks).
#include <gtest/gtest.h>

#include <string>

#include "sql_fixture.h"

namespace ocimem_test {
namespace {

class StmtFaultTest : public SqlTest {
 protected:
  void Arm(const char* function, sword status = OCI_ERROR) {
    const sb4 codes[] = {3113};
    const char* const texts[] = {"end-of-file on communication channel"};
    ocimemFaultArm(function, 1, status, codes, texts, 1);
  }
};

struct FaultCase {
  const char* function;
};

class StmtFaultCallTest : public StmtFaultTest, public ::testing::WithParamInterface<FaultCase> {};

// Runs the whole object selection with the fault armed: the faulted call answers the
// injected error, nothing else breaks, and the statement is freed.
TEST_P(StmtFaultCallTest, FaultIsReportedAndNothingLeaks) {
  MustExec("create type f_t as object (id number, body clob)");
  MustExec("create table fs of f_t");
  MustExec("insert into fs values (1, empty_clob())");
  OCIType* tdo = TypeByName("F_T");
  Arm(GetParam().function);
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
  const char* sql = "select value(f) from fs f where id = :1 for update";
  sword rc = OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT);
  OCIBind* b = nullptr;
  int id = 1;
  if (rc == OCI_SUCCESS) {
    rc = OCIBindByPos(stmt, &b, err_, 1, &id, sizeof id, SQLT_INT, nullptr, nullptr, nullptr, 0,
                      nullptr, OCI_DEFAULT);
  }
  OCIDefine* def = nullptr;
  void* obj = nullptr;
  void* ind = nullptr;
  if (rc == OCI_SUCCESS) {
    rc = OCIDefineByPos(stmt, &def, err_, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr, nullptr,
                        OCI_DEFAULT);
  }
  if (rc == OCI_SUCCESS) rc = OCIDefineObject(def, err_, tdo, &obj, nullptr, &ind, nullptr);
  if (rc == OCI_SUCCESS) {
    rc = OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT);
  }
  if (rc == OCI_SUCCESS) {
    OCILobLocator* loc = nullptr;
    ASSERT_EQ(OCI_SUCCESS,
              OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&loc), OCI_DTYPE_LOB, 0, nullptr));
    OCIStmt* lob_stmt = Prepare("select body from fs where id = 1");
    OCIDefine* ld = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(lob_stmt, &ld, err_, 1, &loc, 0, SQLT_CLOB, nullptr,
                                          nullptr, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, Execute(lob_stmt, 1));
    ub4 amount = 2;
    char data[] = "hi";
    rc = OCILobWrite(svc_, err_, loc, &amount, 1, data, 2, OCI_ONE_PIECE, nullptr, nullptr, 0,
                     SQLCS_IMPLICIT);
    ub4 length = 0;
    if (rc == OCI_SUCCESS) rc = OCILobGetLength(svc_, err_, loc, &length);
    char buf[8];
    amount = 8;
    if (rc == OCI_SUCCESS) {
      rc = OCILobRead(svc_, err_, loc, &amount, 1, buf, sizeof buf, nullptr, nullptr, 0,
                      SQLCS_IMPLICIT);
    }
    if (rc == OCI_SUCCESS) rc = OCITransCommit(svc_, err_, OCI_DEFAULT);
  }
  EXPECT_EQ(OCI_ERROR, rc) << GetParam().function;
  EXPECT_EQ("ORA-03113: end-of-file on communication channel", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

INSTANTIATE_TEST_SUITE_P(Calls, StmtFaultCallTest,
                         ::testing::Values(FaultCase{"OCIStmtPrepare"}, FaultCase{"OCIBindByPos"},
                                           FaultCase{"OCIDefineByPos"},
                                           FaultCase{"OCIDefineObject"},
                                           FaultCase{"OCIStmtExecute"}, FaultCase{"OCILobWrite"},
                                           FaultCase{"OCILobGetLength"}, FaultCase{"OCILobRead"},
                                           FaultCase{"OCITransCommit"}));

TEST_F(StmtFaultTest, FaultedExecuteChangesNothing) {
  MustExec("create table t (a number)");
  Arm("OCIStmtExecute");
  EXPECT_EQ(OCI_ERROR, Exec("insert into t values (1)"));
  EXPECT_TRUE(Column("select a from t").empty());
}

TEST_F(StmtFaultTest, InjectedNoDataFromFetch) {
  MustExec("create table t (a number)");
  MustExec("insert into t values (1)");
  OCIStmt* stmt = Prepare("select a from t");
  int a = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &def, err_, 1, &a, sizeof a, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  const sb4 codes[] = {1403};
  const char* const texts[] = {"no data found"};
  ocimemFaultArm("OCIStmtFetch2", 1, OCI_NO_DATA, codes, texts, 1);
  EXPECT_EQ(OCI_NO_DATA, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(0, a);
  EXPECT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1, a);
}

TEST_F(StmtFaultTest, InjectedFaultsOnTemporaryLobCalls) {
  OCILobLocator* loc = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&loc), OCI_DTYPE_LOB, 0, nullptr));
  for (const char* f : {"OCILobCreateTemporary", "OCILobTrim", "OCILobFreeTemporary",
                        "OCILobIsTemporary", "OCILobLocatorAssign", "OCITransRollback",
                        "OCIBindByName", "OCIBindObject", "OCIStmtFetch"}) {
    Arm(f);
    sword rc = OCI_SUCCESS;
    if (std::string(f) == "OCILobCreateTemporary") {
      rc = OCILobCreateTemporary(svc_, err_, loc, 0, SQLCS_IMPLICIT, OCI_TEMP_CLOB, FALSE,
                                 OCI_DURATION_SESSION);
    } else if (std::string(f) == "OCILobTrim") {
      rc = OCILobTrim(svc_, err_, loc, 0);
    } else if (std::string(f) == "OCILobFreeTemporary") {
      rc = OCILobFreeTemporary(svc_, err_, loc);
    } else if (std::string(f) == "OCILobIsTemporary") {
      boolean t = FALSE;
      rc = OCILobIsTemporary(env_, err_, loc, &t);
    } else if (std::string(f) == "OCILobLocatorAssign") {
      rc = OCILobLocatorAssign(svc_, err_, loc, &loc);
    } else if (std::string(f) == "OCITransRollback") {
      rc = OCITransRollback(svc_, err_, OCI_DEFAULT);
    } else if (std::string(f) == "OCIBindByName") {
      OCIStmt* stmt = Prepare("select 1 from dual where 1 = :x");
      OCIBind* b = nullptr;
      int x = 1;
      rc = OCIBindByName(stmt, &b, err_, Text(":x"), 2, &x, sizeof x, SQLT_INT, nullptr, nullptr,
                         nullptr, 0, nullptr, OCI_DEFAULT);
    } else if (std::string(f) == "OCIBindObject") {
      rc = OCIBindObject(nullptr, err_, nullptr, nullptr, nullptr, nullptr, nullptr);
    } else {
      OCIStmt* stmt = Prepare("select 1 from dual");
      rc = OCIStmtFetch(stmt, err_, 1, OCI_FETCH_NEXT, OCI_DEFAULT);
    }
    EXPECT_EQ(OCI_ERROR, rc) << f;
    EXPECT_EQ(3113, FirstCode(err_)) << f;
  }
}

TEST_F(StmtFaultTest, StatementFreedWithBindsDefinesAndOpenCursor) {
  MustExec("create table t (a number)");
  MustExec("insert into t values (1)");
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
  const char* sql = "select a from t where a = :1";
  ASSERT_EQ(OCI_SUCCESS,
            OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT));
  int a = 1;
  OCIBind* b = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(stmt, &b, err_, 1, &a, sizeof a, SQLT_INT, nullptr, nullptr,
                                      nullptr, 0, nullptr, OCI_DEFAULT));
  int out = 0;
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, &out, sizeof out, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, stmt, err_, 0, 0, nullptr, nullptr, OCI_DEFAULT));
  // Bind and define handles belong to the statement: they cannot be freed alone.
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(b, OCI_HTYPE_BIND));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(d, OCI_HTYPE_DEFINE));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

TEST_F(StmtFaultTest, EnvironmentFreeReleasesStatementsAndTransactions) {
  MustExec("create table t (a number)");
  MustExec("insert into t values (1)");
  OCIStmt* stmt = Prepare("select a from t for update");
  int out = 0;
  OCIDefine* d = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, &out, sizeof out, SQLT_INT, nullptr,
                                        nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Execute(stmt, 0));
  stmts_.clear();  // the environment frees the statement
}

TEST_F(StmtFaultTest, BindAndDefineCallsCheckTheirHandles) {
  OCIBind* b = nullptr;
  OCIDefine* d = nullptr;
  int v = 0;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIBindByPos(nullptr, &b, err_, 1, &v, sizeof v, SQLT_INT, nullptr,
                                             nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDefineByPos(nullptr, &d, err_, 1, &v, sizeof v, SQLT_INT,
                                               nullptr, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIDefineObject(nullptr, err_, nullptr, nullptr, nullptr, nullptr, nullptr));
  OCIStmt* stmt = Prepare("select 1 from dual");
  EXPECT_EQ(OCI_ERROR, OCIDefineByPos(stmt, &d, err_, 0, &v, sizeof v, SQLT_INT, nullptr, nullptr,
                                      nullptr, OCI_DEFAULT));
  EXPECT_EQ(21560, FirstCode(err_));
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt, &d, err_, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr,
                                        nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, OCIDefineObject(d, err_, nullptr, nullptr, nullptr, nullptr, nullptr));
  EXPECT_EQ(21560, FirstCode(err_));
}

TEST_F(StmtFaultTest, ObjectBindsNeedObjectMode) {
  OCIEnv* plain = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&plain, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  OCIError* perr = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(plain, reinterpret_cast<void**>(&perr), OCI_HTYPE_ERROR, 0, nullptr));
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(plain, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT, 0, nullptr));
  const char* sql = "insert into t values (:1)";
  ASSERT_EQ(OCI_SUCCESS,
            OCIStmtPrepare(stmt, perr, Text(sql), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT));
  OCIBind* b = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIBindByPos(stmt, &b, perr, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr,
                                    nullptr, 0, nullptr, OCI_DEFAULT));
  EXPECT_EQ(21301, FirstCode(perr));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(plain, OCI_HTYPE_ENV));
}

}  // namespace
}  // namespace ocimem_test
