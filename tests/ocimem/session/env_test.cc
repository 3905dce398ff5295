// Environments, handles, descriptors and handle attributes, as a host uses them.
#include <gtest/gtest.h>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

TEST(EnvCreate, ObjectModeEnvironment) {
  OCIEnv* env = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  ASSERT_NE(nullptr, env);
  OCIError* err = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr));
  boolean object = FALSE;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(env, OCI_HTYPE_ENV, &object, nullptr, OCI_ATTR_OBJECT, err));
  EXPECT_EQ(TRUE, object);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
}

TEST(EnvCreate, ThreadedDefaultModeHasNoObjectInterface) {
  OCIEnv* env = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&env, OCI_THREADED, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  OCIError* err = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr));
  boolean object = TRUE;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(env, OCI_HTYPE_ENV, &object, nullptr, OCI_ATTR_OBJECT, err));
  EXPECT_EQ(FALSE, object);
  OCIString* s = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIStringAssignText(env, err, Text("x"), 1, &s));
  EXPECT_EQ("ORA-21301: not initialized in object mode", FirstError(err));
  EXPECT_EQ(nullptr, s);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
}

TEST(EnvCreate, NullHandlePointerIsInvalidHandle) {
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIEnvCreate(nullptr, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
}

// UNCONFIRMED: unknown mode bits give ORA-24300 on the environment that was made.
TEST(EnvCreate, UnknownModeBitsGiveBadValueForMode) {
  OCIEnv* env = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIEnvCreate(&env, 0x40000000u, nullptr, nullptr, nullptr, nullptr, 0,
                                    nullptr));
  ASSERT_NE(nullptr, env);
  sb4 code = 0;
  OraText buf[128];
  ASSERT_EQ(OCI_SUCCESS, OCIErrorGet(env, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ENV));
  EXPECT_EQ(24300, code);
  EXPECT_STREQ("ORA-24300: bad value for mode\n", reinterpret_cast<char*>(buf));
  EXPECT_EQ(OCI_NO_DATA, OCIErrorGet(env, 2, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ENV));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
}

TEST(EnvCreate, UserMemoryLivesWithTheHandle) {
  OCIEnv* env = nullptr;
  void* user = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 64, &user));
  ASSERT_NE(nullptr, user);
  std::memset(user, 0xab, 64);
  OCIError* err = nullptr;
  void* err_user = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 16, &err_user));
  ASSERT_NE(nullptr, err_user);
  std::memset(err_user, 0xcd, 16);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
}

TEST(EnvCreate, LegacyInitializeThenEnvInit) {
  ASSERT_EQ(OCI_SUCCESS, OCIInitialize(OCI_OBJECT, nullptr, nullptr, nullptr, nullptr));
  OCIEnv* env = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIEnvInit(&env, OCI_DEFAULT, 0, nullptr));
  OCIError* err = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr));
  boolean object = FALSE;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(env, OCI_HTYPE_ENV, &object, nullptr, OCI_ATTR_OBJECT, err));
  EXPECT_EQ(TRUE, object);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
  ASSERT_EQ(OCI_SUCCESS, OCIInitialize(OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr));
}

class HandleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(OCI_SUCCESS,
              OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
    ASSERT_EQ(OCI_SUCCESS,
              OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr));
  }
  void TearDown() override { EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env_, OCI_HTYPE_ENV)); }
  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
};

TEST_F(HandleTest, AllocAndFreeEveryProvidedKind) {
  for (ub4 type : {OCI_HTYPE_ERROR, OCI_HTYPE_SVCCTX, OCI_HTYPE_STMT, OCI_HTYPE_SERVER,
                   OCI_HTYPE_SESSION}) {
    void* h = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, &h, type, 0, nullptr)) << type;
    ASSERT_NE(nullptr, h);
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(h, type)) << type;
  }
}

TEST_F(HandleTest, KindsNotMadeByHandleAllocAreRefused) {
  // Environments come from OCIEnvCreate, binds and defines from their calls.
  for (ub4 type : {ub4{OCI_HTYPE_ENV}, ub4{OCI_HTYPE_BIND}, ub4{OCI_HTYPE_DEFINE}, 0u, 99u}) {
    void* h = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleAlloc(env_, &h, type, 0, nullptr)) << type;
    EXPECT_EQ(reinterpret_cast<void*>(0x1), h);
  }
}

TEST_F(HandleTest, ParentMustBeAnEnvironment) {
  void* h = nullptr;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleAlloc(nullptr, &h, OCI_HTYPE_ERROR, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleAlloc(err_, &h, OCI_HTYPE_ERROR, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleAlloc(env_, nullptr, OCI_HTYPE_ERROR, 0, nullptr));
  EXPECT_EQ(nullptr, h);
}

TEST_F(HandleTest, FreeChecksHandleAndType) {
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(nullptr, OCI_HTYPE_ERROR));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(err_, OCI_HTYPE_STMT));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(err_, OCI_HTYPE_ENV));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleFree(env_, OCI_HTYPE_ERROR));
}

// Children that are never freed go with their environment (checked by LeakSanitizer).
TEST_F(HandleTest, FreeingTheEnvironmentFreesItsChildren) {
  OCIEnv* env = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
  void* h = nullptr;
  for (ub4 type : {OCI_HTYPE_ERROR, OCI_HTYPE_SVCCTX, OCI_HTYPE_STMT, OCI_HTYPE_SERVER,
                   OCI_HTYPE_SESSION}) {
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env, &h, type, 0, nullptr));
  }
  for (ub4 type : {OCI_DTYPE_LOB, OCI_DTYPE_TIMESTAMP, OCI_DTYPE_INTERVAL_DS}) {
    ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env, &h, type, 0, nullptr));
  }
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env, OCI_HTYPE_ENV));
}

TEST_F(HandleTest, DescriptorsOfEveryProvidedKind) {
  for (ub4 type : {OCI_DTYPE_LOB, OCI_DTYPE_FILE, OCI_DTYPE_TIMESTAMP, OCI_DTYPE_TIMESTAMP_TZ,
                   OCI_DTYPE_TIMESTAMP_LTZ, OCI_DTYPE_INTERVAL_YM, OCI_DTYPE_INTERVAL_DS,
                   OCI_DTYPE_DATE}) {
    void* d = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, &d, type, 0, nullptr)) << type;
    ASSERT_NE(nullptr, d);
    EXPECT_EQ(OCI_SUCCESS, OCIDescriptorFree(d, type)) << type;
  }
}

TEST_F(HandleTest, DescriptorErrors) {
  void* d = nullptr;
  // Parameter descriptors are made by OCI itself.
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorAlloc(env_, &d, OCI_DTYPE_PARAM, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorAlloc(env_, &d, 12345, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorAlloc(nullptr, &d, OCI_DTYPE_LOB, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorAlloc(err_, &d, OCI_DTYPE_LOB, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorAlloc(env_, nullptr, OCI_DTYPE_LOB, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorFree(nullptr, OCI_DTYPE_LOB));
  ASSERT_EQ(OCI_SUCCESS, OCIDescriptorAlloc(env_, &d, OCI_DTYPE_TIMESTAMP, 0, nullptr));
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIDescriptorFree(d, OCI_DTYPE_INTERVAL_DS));
  EXPECT_EQ(OCI_SUCCESS, OCIDescriptorFree(d, OCI_DTYPE_TIMESTAMP));
}

TEST_F(HandleTest, NewNotNullAttributeRoundTrip) {
  boolean value = TRUE;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(env_, OCI_HTYPE_ENV, &value, nullptr,
                                    OCI_ATTR_OBJECT_NEWNOTNULL, err_));
  EXPECT_EQ(FALSE, value);
  value = TRUE;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrSet(env_, OCI_HTYPE_ENV, &value, 0, OCI_ATTR_OBJECT_NEWNOTNULL,
                                    err_));
  boolean read = FALSE;
  ub4 size = 0;
  EXPECT_EQ(OCI_SUCCESS,
            OCIAttrGet(env_, OCI_HTYPE_ENV, &read, &size, OCI_ATTR_OBJECT_NEWNOTNULL, err_));
  EXPECT_EQ(TRUE, read);
  EXPECT_EQ(sizeof(boolean), size);
}

TEST_F(HandleTest, ServiceContextHoldsServerAndSession) {
  OCISvcCtx* svc = nullptr;
  OCIServer* srv = nullptr;
  OCISession* ses = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&svc), OCI_HTYPE_SVCCTX,
                                        0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&srv), OCI_HTYPE_SERVER,
                                        0, nullptr));
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&ses),
                                        OCI_HTYPE_SESSION, 0, nullptr));
  EXPECT_EQ(OCI_SUCCESS, OCIAttrSet(svc, OCI_HTYPE_SVCCTX, srv, 0, OCI_ATTR_SERVER, err_));
  EXPECT_EQ(OCI_SUCCESS, OCIAttrSet(svc, OCI_HTYPE_SVCCTX, ses, 0, OCI_ATTR_SESSION, err_));
  OCIServer* srv_read = nullptr;
  OCISession* ses_read = nullptr;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(svc, OCI_HTYPE_SVCCTX, &srv_read, nullptr, OCI_ATTR_SERVER,
                                    err_));
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(svc, OCI_HTYPE_SVCCTX, &ses_read, nullptr, OCI_ATTR_SESSION,
                                    err_));
  EXPECT_EQ(srv, srv_read);
  EXPECT_EQ(ses, ses_read);
  // A handle of another kind where a server is expected.
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIAttrSet(svc, OCI_HTYPE_SVCCTX, ses, 0, OCI_ATTR_SERVER, err_));
}

TEST_F(HandleTest, SessionUserNameIsCopiedAndPasswordWriteOnly) {
  OCISession* ses = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&ses),
                                        OCI_HTYPE_SESSION, 0, nullptr));
  char user[] = "scott";
  EXPECT_EQ(OCI_SUCCESS, OCIAttrSet(ses, OCI_HTYPE_SESSION, user, 5, OCI_ATTR_USERNAME, err_));
  user[0] = 'X';
  EXPECT_EQ(OCI_SUCCESS,
            OCIAttrSet(ses, OCI_HTYPE_SESSION, const_cast<char*>("tiger"), 5, OCI_ATTR_PASSWORD,
                       err_));
  const OraText* name = nullptr;
  ub4 size = 0;
  EXPECT_EQ(OCI_SUCCESS, OCIAttrGet(ses, OCI_HTYPE_SESSION, &name, &size, OCI_ATTR_USERNAME,
                                    err_));
  EXPECT_EQ("scott", std::string(reinterpret_cast<const char*>(name), size));
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(ses, OCI_HTYPE_SESSION, &name, &size, OCI_ATTR_PASSWORD, err_));
  EXPECT_EQ("ORA-24315: illegal attribute type", FirstError(err_));
}

// UNCONFIRMED: ORA-24315 for an attribute the handle kind does not have.
TEST_F(HandleTest, IllegalAttributes) {
  boolean b = TRUE;
  EXPECT_EQ(OCI_ERROR, OCIAttrSet(env_, OCI_HTYPE_ENV, &b, 0, OCI_ATTR_OBJECT, err_));
  EXPECT_EQ(24315, FirstCode(err_));
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(err_, OCI_HTYPE_ERROR, &b, nullptr, OCI_ATTR_OBJECT, err_));
  EXPECT_EQ(24315, FirstCode(err_));
}

TEST_F(HandleTest, AttributeCallsCheckHandles) {
  boolean b = TRUE;
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIAttrSet(nullptr, OCI_HTYPE_ENV, &b, 0, OCI_ATTR_OBJECT_NEWNOTNULL, err_));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIAttrSet(env_, OCI_HTYPE_SVCCTX, &b, 0, OCI_ATTR_OBJECT_NEWNOTNULL, err_));
  EXPECT_EQ(OCI_INVALID_HANDLE,
            OCIAttrGet(env_, OCI_HTYPE_ENV, &b, nullptr, OCI_ATTR_OBJECT, nullptr));
  EXPECT_EQ(OCI_ERROR, OCIAttrGet(env_, OCI_HTYPE_ENV, nullptr, nullptr, OCI_ATTR_OBJECT, err_));
  EXPECT_EQ(21560, FirstCode(err_));
}

}  // namespace
}  // namespace ocimem_test
