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
