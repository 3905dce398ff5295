// Handles used after they were freed: refused with OCI_INVALID_HANDLE as a handle of the
// wrong kind would be, never read as if they were still alive.
#include "oci_fixture.h"

namespace ocimem_test {
namespace {

class FreedHandleTest : public OciTest {};

// UNCONFIRMED: Oracle documents no detection of freed handles; ocimem treats them as a
// handle of the wrong kind.
TEST_F(FreedHandleTest, FreedErrorHandleIsRefused) {
  OCIError* err = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR,
                                        0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(err, OCI_HTYPE_ERROR));
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT,
                                        0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIStmtPrepare(stmt, err, Text("SELECT 1 FROM DUAL"), 18, OCI_NTV_SYNTAX,
                           OCI_DEFAULT));
  sb4 code = 0;
  OraText buf[64];
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIErrorGet(err, 1, nullptr, &code, buf, sizeof buf,
                                            OCI_HTYPE_ERROR));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

TEST_F(FreedHandleTest, FreeingTwiceIsRefused) {
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT,
                                        0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(stmt, OCI_HTYPE_STMT));
}

TEST_F(FreedHandleTest, FreedStatementIsRefused) {
  OCIStmt* stmt = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT,
                                        0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIStmtPrepare(stmt, err_, Text("SELECT 1 FROM DUAL"), 18, OCI_NTV_SYNTAX,
                           OCI_DEFAULT));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIStmtExecute(svc_, stmt, err_, 0, 0, nullptr, nullptr, OCI_DEFAULT));
}

TEST_F(FreedHandleTest, HandlesOfAFreedEnvironmentAreRefused) {
  OCIEnv* env = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  OCIError* err = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR,
                                        0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(err, OCI_HTYPE_ERROR));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(env, OCI_HTYPE_ENV));
  void* h = nullptr;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleAlloc(env, &h, OCI_HTYPE_ERROR, 0, nullptr));
  EXPECT_EQ(nullptr, h);
}

class FreedValueTest : public OciTest {
 protected:
  OCIColl* NewNumberTable() {
    EXPECT_EQ(OCI_SUCCESS, Exec("CREATE TYPE NUM_TAB AS TABLE OF NUMBER"));
    OCIType* tdo = TypeByName("NUM_TAB");
    void* coll = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_TABLE, tdo, nullptr,
                                        OCI_DURATION_DEFAULT, TRUE, &coll));
    return static_cast<OCIColl*>(coll);
  }
};

TEST_F(FreedValueTest, FreedCollectionIsRefused) {
  OCIColl* coll = NewNumberTable();
  ASSERT_NE(nullptr, coll);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, coll, OCI_OBJECTFREE_FORCE));
  sb4 size = -1;
  EXPECT_EQ(OCI_ERROR, OCICollSize(env_, err_, coll, &size));
  EXPECT_EQ(21560, FirstCode(err_));
  EXPECT_EQ(-1, size);
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, coll, OCI_OBJECTFREE_FORCE));
}

TEST_F(FreedValueTest, DeletedIteratorIsRefused) {
  OCIColl* coll = NewNumberTable();
  OCIIter* iter = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, coll, &iter));
  OCIIter* stale = iter;
  ASSERT_EQ(OCI_SUCCESS, OCIIterDelete(env_, err_, &iter));
  EXPECT_EQ(nullptr, iter);
  void* elem = nullptr;
  void* ind = nullptr;
  boolean eoc = FALSE;
  EXPECT_EQ(OCI_ERROR, OCIIterNext(env_, err_, stale, &elem, &ind, &eoc));
  EXPECT_EQ(21560, FirstCode(err_));
}

TEST_F(FreedValueTest, IteratorOfAFreedCollectionIsRefused) {
  OCIColl* coll = NewNumberTable();
  OCIIter* iter = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, coll, &iter));
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, coll, OCI_OBJECTFREE_FORCE));
  void* elem = nullptr;
  void* ind = nullptr;
  boolean eoc = FALSE;
  EXPECT_EQ(OCI_ERROR, OCIIterNext(env_, err_, iter, &elem, &ind, &eoc));
  EXPECT_EQ(21560, FirstCode(err_));
}

TEST_F(FreedValueTest, FreedLobLocatorIsRefused) {
  OCILobLocator* lob = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, reinterpret_cast<void**>(&lob), OCI_DTYPE_LOB,
                                            0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorFree(lob, OCI_DTYPE_LOB));
  ub4 length = 99;
  EXPECT_EQ(OCI_ERROR, OCILobGetLength(svc_, err_, lob, &length));
  EXPECT_EQ(22275, FirstCode(err_));
  EXPECT_EQ(99u, length);
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorFree(lob, OCI_DTYPE_LOB));
}

}  // namespace
}  // namespace ocimem_test

namespace ocimem_test {
namespace {

// A service context whose session or server handle the caller freed behind its back.
class FreedSessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(OCI_SUCCESS,
              OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_),
                                          OCI_HTYPE_ERROR, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&srv_),
                                          OCI_HTYPE_SERVER, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&svc_),
                                          OCI_HTYPE_SVCCTX, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&ses_),
                                          OCI_HTYPE_SESSION, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIServerAttach(srv_, err_, Text("freed_session"), 13, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, srv_, 0, OCI_ATTR_SERVER, err_));
    ASSERT_EQ(OCI_SUCCESS,
              OCIAttrSet(ses_, OCI_HTYPE_SESSION, const_cast<char*>("scott"), 5,
                         OCI_ATTR_USERNAME, err_));
    ASSERT_EQ(OCI_SUCCESS,
              OCIAttrSet(ses_, OCI_HTYPE_SESSION, const_cast<char*>("tiger"), 5,
                         OCI_ATTR_PASSWORD, err_));
    ASSERT_EQ(OCI_SUCCESS, OCISessionBegin(svc_, err_, ses_, OCI_CRED_RDBMS, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIAttrSet(svc_, OCI_HTYPE_SVCCTX, ses_, 0, OCI_ATTR_SESSION, err_));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt_),
                                          OCI_HTYPE_STMT, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt_, err_, Text("SELECT 1 FROM DUAL"), 18,
                                          OCI_NTV_SYNTAX, OCI_DEFAULT));
  }
  void TearDown() override { EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env_, OCI_HTYPE_ENV)); }

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCIServer* srv_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
  OCISession* ses_ = nullptr;
  OCIStmt* stmt_ = nullptr;
};

// UNCONFIRMED: what Oracle does with a service context whose session handle was freed;
// ocimem answers as for a service context without a session.
TEST_F(FreedSessionTest, ExecuteAfterTheSessionHandleWasFreedIsNotLoggedOn) {
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(ses_, OCI_HTYPE_SESSION));
  EXPECT_EQ(OCI_ERROR, OCIStmtExecute(svc_, stmt_, err_, 0, 0, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(1012, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCITransCommit(svc_, err_, OCI_DEFAULT));
  EXPECT_EQ(1012, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCISessionEnd(svc_, err_, nullptr, OCI_DEFAULT));
  EXPECT_EQ(1012, FirstCode(err_));
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, OCITypeByName(env_, err_, svc_, nullptr, 0, Text("T"), 1, nullptr, 0,
                                     OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
  EXPECT_EQ(1012, FirstCode(err_));
}

TEST_F(FreedSessionTest, ExecuteAfterTheServerHandleWasFreedIsNotInitialised) {
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(srv_, OCI_HTYPE_SERVER));
  EXPECT_EQ(OCI_ERROR, OCIStmtExecute(svc_, stmt_, err_, 0, 0, nullptr, nullptr, OCI_DEFAULT));
  EXPECT_EQ(24324, FirstCode(err_));
  OCISession* other = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&other),
                                        OCI_HTYPE_SESSION, 0, nullptr));
  EXPECT_EQ(OCI_ERROR, OCISessionBegin(svc_, err_, other, OCI_CRED_RDBMS, OCI_DEFAULT));
  EXPECT_EQ(24327, FirstCode(err_));
}

TEST_F(FreedSessionTest, FetchAfterTheSessionHandleWasFreedStillDeliversTheRows) {
  int one = 0;
  OCIDefine* def = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(stmt_, &def, err_, 1, &one, sizeof one, SQLT_INT,
                                        nullptr, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, stmt_, err_, 0, 0, nullptr, nullptr, OCI_DEFAULT));
  ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(ses_, OCI_HTYPE_SESSION));
  EXPECT_EQ(OCI_SUCCESS, OCIStmtFetch2(stmt_, err_, 1, OCI_FETCH_NEXT, 0, OCI_DEFAULT));
  EXPECT_EQ(1, one);
}

}  // namespace
}  // namespace ocimem_test

namespace ocimem_test {
namespace {

class HolderAddressTest : public OciTest {};

// decision D9: the address of a variable that holds a collection is no instance; unpinning
// or freeing it is refused without reading past the variable.
TEST_F(HolderAddressTest, UnpinAndFreeOfAHolderAddressAreRefused) {
  MustExec("CREATE TYPE NUMS AS TABLE OF NUMBER");
  OCIType* tdo = TypeByName("NUMS");
  void* coll = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_TABLE, tdo, nullptr,
                                      OCI_DURATION_DEFAULT, TRUE, &coll));
  void* holder = coll;
  EXPECT_EQ(OCI_ERROR, OCIObjectUnpin(env_, err_, &holder));
  EXPECT_EQ(21710, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, &holder, OCI_OBJECTFREE_FORCE));
  EXPECT_EQ(21710, FirstCode(err_));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, coll, OCI_OBJECTFREE_FORCE));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectUnpin(env_, err_, tdo));
}

}  // namespace
}  // namespace ocimem_test
