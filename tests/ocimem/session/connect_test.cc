// Logging on to in-memory databases, explicitly and with OCILogon.
#include <gtest/gtest.h>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

class ConnectTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ocimemFaultReset();
    ASSERT_EQ(OCI_SUCCESS,
              OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS,
              OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr));
  }
  void TearDown() override { EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env_, OCI_HTYPE_ENV)); }

  sword Logon(const char* user, const char* password, const char* db, OCISvcCtx** svc) {
    return OCILogon(env_, err_, svc, Text(user), Len(user), Text(password), Len(password),
                    Text(db), Len(db));
  }

  sword Run(OCISvcCtx* svc, const char* sql) {
    OCIStmt* stmt = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    EXPECT_EQ(OCI_SUCCESS,
              OCIStmtPrepare(stmt, err_, Text(sql), Len(sql), OCI_NTV_SYNTAX, OCI_DEFAULT));
    sword rc = OCIStmtExecute(svc, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT);
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
    return rc;
  }

  sword Lookup(OCISvcCtx* svc, const char* name, OCIType** tdo) {
    return OCITypeByName(env_, err_, svc, nullptr, 0, Text(name), Len(name), nullptr, 0,
                         OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, tdo);
  }

  // Allocates the handles of an explicit logon.
  void AllocExplicit() {
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&srv_),
                                          OCI_HTYPE_SERVER, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&svc_),
                                          OCI_HTYPE_SVCCTX, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&ses_),
                                          OCI_HTYPE_SESSION, 0, nullptr));
  }
  void SetCredentials(const char* user, const char* password) {
    ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(ses_, OCI_HTYPE_SESSION, const_cast<char*>(user),
                                      Len(user), OCI_ATTR_USERNAME, err_));
    ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(ses_, OCI_HTYPE_SESSION, const_cast<char*>(password),
                                      Len(password), OCI_ATTR_PASSWORD, err_));
  }

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCIServer* srv_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  OCISession* ses_ = nullptr;
};

TEST_F(ConnectTest, LogonMakesServerAndSessionHandles) {
  OCISvcCtx* svc = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "logon_db", &svc)) << FirstError(err_);
  OCIServer* srv = nullptr;
  OCISession* ses = nullptr;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(svc, OCI_HTYPE_SVCCTX, &srv, nullptr, OCI_ATTR_SERVER, err_));
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(svc, OCI_HTYPE_SVCCTX, &ses, nullptr, OCI_ATTR_SESSION, err_));
  EXPECT_NE(nullptr, srv);
  EXPECT_NE(nullptr, ses);
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(svc, err_));
}

TEST_F(ConnectTest, UserNameIsTheDefaultSchema) {
  OCISvcCtx* svc = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "schema_db", &svc));
  ASSERT_EQ(OCI_SUCCESS, Run(svc, "create type t1 as object (a number)")) << FirstError(err_);
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_SUCCESS, OCITypeByName(env_, err_, svc, Text("SCOTT"), 5, Text("T1"), 2, nullptr,
                                       0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
  EXPECT_NE(nullptr, tdo);
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(svc, err_));
}

TEST_F(ConnectTest, SessionsNamingOneDatabaseShareIt) {
  OCISvcCtx* first = nullptr;
  OCISvcCtx* second = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "shared_db", &first));
  // Connect identifiers are not case-sensitive.
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "SHARED_DB", &second));
  ASSERT_EQ(OCI_SUCCESS, Run(first, "create type shared_t as object (a number)"));
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_SUCCESS, Lookup(second, "SHARED_T", &tdo)) << FirstError(err_);
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(first, err_));
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(second, err_));
}

TEST_F(ConnectTest, OtherDatabasesAreSeparate) {
  OCISvcCtx* first = nullptr;
  OCISvcCtx* second = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "sep_a", &first));
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "sep_b", &second));
  ASSERT_EQ(OCI_SUCCESS, Run(first, "create type sep_t as object (a number)"));
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, Lookup(second, "SEP_T", &tdo));
  EXPECT_EQ("ORA-04043: object SEP_T does not exist", FirstError(err_));
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(first, err_));
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(second, err_));
}

TEST_F(ConnectTest, DatabaseLivesWhileAttached) {
  OCISvcCtx* svc = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "transient_db", &svc));
  ASSERT_EQ(OCI_SUCCESS, Run(svc, "create type gone_t as object (a number)"));
  ASSERT_EQ(OCI_SUCCESS, OCILogoff(svc, err_));
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "transient_db", &svc));
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, Lookup(svc, "GONE_T", &tdo));
  EXPECT_EQ(4043, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(svc, err_));
}

TEST_F(ConnectTest, DefaultDatabaseForEmptyConnectString) {
  OCISvcCtx* svc = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCILogon(env_, err_, &svc, Text("scott"), 5, Text("tiger"), 5, nullptr,
                                  0));
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(svc, err_));
}

TEST_F(ConnectTest, PasswordOfTheFirstLogonIsKept) {
  OCISvcCtx* first = nullptr;
  OCISvcCtx* second = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "pw_db", &first));
  EXPECT_EQ(OCI_ERROR, Logon("SCOTT", "lion", "pw_db", &second));
  EXPECT_EQ("ORA-01017: invalid username/password; logon denied", FirstError(err_));
  EXPECT_EQ(nullptr, second);
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(first, err_));
}

// UNCONFIRMED: empty user names and passwords.
TEST_F(ConnectTest, MissingCredentials) {
  OCISvcCtx* svc = nullptr;
  EXPECT_EQ(OCI_ERROR, Logon("", "tiger", "cred_db", &svc));
  EXPECT_EQ(1017, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, Logon("scott", "", "cred_db", &svc));
  EXPECT_EQ("ORA-01005: null password given; logon denied", FirstError(err_));
  EXPECT_EQ(nullptr, svc);
}

TEST_F(ConnectTest, LogonArgumentErrors) {
  OCISvcCtx* svc = nullptr;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCILogon(nullptr, err_, &svc, Text("a"), 1, Text("b"), 1,
                                         nullptr, 0));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCILogon(env_, nullptr, &svc, Text("a"), 1, Text("b"), 1,
                                         nullptr, 0));
  EXPECT_EQ(OCI_ERROR, OCILogon(env_, err_, nullptr, Text("a"), 1, Text("b"), 1, nullptr, 0));
  EXPECT_EQ(21560, FirstCode(err_));
}

TEST_F(ConnectTest, Logon2DefaultModeIsLogon) {
  OCISvcCtx* svc = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCILogon2(env_, err_, &svc, Text("scott"), 5, Text("tiger"), 5,
                                   Text("l2"), 2, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(svc, err_));
}

TEST_F(ConnectTest, Logon2PoolingModesAreRefused) {
  OCISvcCtx* svc = nullptr;
  EXPECT_EQ(OCI_ERROR, OCILogon2(env_, err_, &svc, Text("scott"), 5, Text("tiger"), 5,
                                 Text("l2"), 2, OCI_LOGON2_SPOOL));
  EXPECT_EQ("ORA-24300: bad value for mode", FirstError(err_));
}

TEST_F(ConnectTest, ExplicitAttachAndSession) {
  AllocExplicit();
  ASSERT_EQ(OCI_SUCCESS, OCIServerAttach(srv_, err_, Text("explicit_db"), 11, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_));
  SetCredentials("scott", "tiger");
  ASSERT_EQ(OCI_SUCCESS, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT))
      << FirstError(err_);
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, ses_, 0, OCI_ATTR_SESSION, err_));
  EXPECT_EQ(OCI_SUCCESS, Run(svc_, "create type e_t as object (a number)")) << FirstError(err_);
  EXPECT_EQ(OCI_SUCCESS, OCISessionEnd(svc_, err_, ses_, OCI_DEFAULT));
  // The credentials stay set and the session can begin again.
  EXPECT_EQ(OCI_SUCCESS, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCISessionEnd(svc_, err_, nullptr, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIServerDetach(srv_, err_, OCI_DEFAULT));
  // Detached, the server handle can attach again.
  EXPECT_EQ(OCI_SUCCESS, OCIServerAttach(srv_, err_, nullptr, 0, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIServerDetach(srv_, err_, OCI_DEFAULT));
}

TEST_F(ConnectTest, SessionBeginNeedsAnAttachedServer) {
  AllocExplicit();
  SetCredentials("scott", "tiger");
  EXPECT_EQ(OCI_ERROR, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT));
  EXPECT_EQ("ORA-24327: need explicit attach before authenticating a user", FirstError(err_));
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_));
  EXPECT_EQ(OCI_ERROR, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT));
  EXPECT_EQ(24327, FirstCode(err_));
}

// UNCONFIRMED: the codes for wrong-order calls.
TEST_F(ConnectTest, WrongOrderErrors) {
  AllocExplicit();
  EXPECT_EQ(OCI_ERROR, OCIServerDetach(srv_, err_, OCI_DEFAULT));
  EXPECT_EQ("ORA-03114: not connected to ORACLE", FirstError(err_));
  ASSERT_EQ(OCI_SUCCESS, OCIServerAttach(srv_, err_, Text("order_db"), 8, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, OCIServerAttach(srv_, err_, Text("order_db"), 8, OCI_DEFAULT));
  EXPECT_EQ("ORA-24309: already connected to a server", FirstError(err_));
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_));
  EXPECT_EQ(OCI_ERROR, OCISessionEnd(svc_, err_, ses_, OCI_DEFAULT));
  EXPECT_EQ("ORA-01012: not logged on", FirstError(err_));
  SetCredentials("scott", "tiger");
  ASSERT_EQ(OCI_SUCCESS, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT));
  EXPECT_EQ(OCI_ERROR, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT));
  EXPECT_EQ("ORA-24313: user already authenticated", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCILogoff(svc_, err_));  // not made by OCILogon
  EXPECT_EQ(1012, FirstCode(err_));
}

TEST_F(ConnectTest, ExternalCredentialsAreRefused) {
  AllocExplicit();
  ASSERT_EQ(OCI_SUCCESS, OCIServerAttach(srv_, err_, Text("ext_db"), 6, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_));
  EXPECT_EQ(OCI_ERROR, OCISessionBegin(svc_, err_, ses_, OCI_CRED_EXT, OCI_DEFAULT));
  EXPECT_EQ(1017, FirstCode(err_));
}

// UNCONFIRMED: SQL on a service context without server or session.
TEST_F(ConnectTest, StatementsNeedServerAndSession) {
  AllocExplicit();
  EXPECT_EQ(OCI_ERROR, Run(svc_, "create type x_t as object (a number)"));
  EXPECT_EQ("ORA-24324: service handle not initialized", FirstError(err_));
  ASSERT_EQ(OCI_SUCCESS, OCIServerAttach(srv_, err_, Text("nosession"), 9, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_));
  EXPECT_EQ(OCI_ERROR, Run(svc_, "create type x_t as object (a number)"));
  EXPECT_EQ("ORA-01012: not logged on", FirstError(err_));
}

TEST_F(ConnectTest, AttachArgumentErrors) {
  AllocExplicit();
  EXPECT_EQ(OCI_ERROR, OCIServerAttach(srv_, err_, Text("db"), -1, OCI_DEFAULT));
  EXPECT_EQ("ORA-21560: argument 4 is null, invalid, or out of range", FirstError(err_));
  EXPECT_EQ(OCI_ERROR, OCIServerAttach(srv_, err_, Text("db"), 2, 0x100));
  EXPECT_EQ("ORA-24300: bad value for mode", FirstError(err_));
  // Still unattached after both.
  EXPECT_EQ(OCI_ERROR, OCIServerDetach(srv_, err_, OCI_DEFAULT));
  EXPECT_EQ(3114, FirstCode(err_));
}

// UNCONFIRMED: freeing the handles does not end the session; the database stays while
// another server is attached to it.
TEST_F(ConnectTest, FreeingAttachedHandlesLeavesASharedDatabase) {
  OCISvcCtx* keeper = nullptr;
  ASSERT_EQ(OCI_SUCCESS, Logon("scott", "tiger", "freed_db", &keeper));
  AllocExplicit();
  ASSERT_EQ(OCI_SUCCESS, OCIServerAttach(srv_, err_, Text("freed_db"), 8, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_));
  SetCredentials("scott", "tiger");
  ASSERT_EQ(OCI_SUCCESS, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, Run(svc_, "create type kept_t as object (a number)"));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(svc_, OCI_HTYPE_SVCCTX));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(ses_, OCI_HTYPE_SESSION));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(srv_, OCI_HTYPE_SERVER));
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_SUCCESS, Lookup(keeper, "KEPT_T", &tdo));
  EXPECT_EQ(OCI_SUCCESS, OCILogoff(keeper, err_));
}

TEST_F(ConnectTest, ConnectionCallsCheckHandles) {
  AllocExplicit();
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIServerAttach(nullptr, err_, nullptr, 0, OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIServerAttach(reinterpret_cast<OCIServer*>(ses_), err_, nullptr, 0, OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIServerAttach(srv_, nullptr, nullptr, 0, OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIServerDetach(nullptr, err_, OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCISessionBegin(nullptr, err_, ses_, OCI_CRED_RDBMS, 0));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCISessionBegin(svc_, err_, nullptr, OCI_CRED_RDBMS, 0));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCISessionEnd(nullptr, err_, ses_, 0));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCILogoff(nullptr, err_));
}

}  // namespace
}  // namespace ocimem_test
