// Common setup of the ocimem tests: an object-mode environment, an error handle, a
// logged-on service context on a database of the test's own, and helpers to run SQL and
// read the first diagnostic record.
#ifndef TESTS_OCIMEM_OCI_FIXTURE_H
#define TESTS_OCIMEM_OCI_FIXTURE_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "oci.h"
#include "ocimem.h"

namespace ocimem_test {

inline const OraText* Text(const char* s) { return reinterpret_cast<const OraText*>(s); }
inline ub4 Len(const char* s) { return static_cast<ub4>(std::strlen(s)); }

// The first record of an error handle as "code|text" (text without the final line feed).
inline std::string FirstError(OCIError* err) {
  sb4 code = 0;
  OraText buf[512] = {0};
  if (OCIErrorGet(err, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR) != OCI_SUCCESS) {
    return "none";
  }
  std::string text(reinterpret_cast<char*>(buf));
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

inline sb4 FirstCode(OCIError* err) {
  sb4 code = 0;
  OraText buf[512];
  if (OCIErrorGet(err, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR) != OCI_SUCCESS) {
    return 0;
  }
  return code;
}

class OciTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ocimemFaultReset();
    ASSERT_EQ(OCI_SUCCESS, OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr,
                                        0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_),
                                          OCI_HTYPE_ERROR, 0, nullptr));
    std::string db = DatabaseName();
    ASSERT_EQ(OCI_SUCCESS, OCILogon(env_, err_, &svc_, Text("scott"), 5, Text("tiger"), 5,
                                    Text(db.c_str()), Len(db.c_str())))
        << FirstError(err_);
  }

  void TearDown() override {
    ocimemFaultReset();
    if (env_ != nullptr) {
      EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(env_, OCI_HTYPE_ENV));
    }
  }

  // A database per test, so that tests never see each other's types.
  static std::string DatabaseName() {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return std::string(info->test_suite_name()) + "_" + info->name();
  }

  // Runs one statement; returns the status of OCIStmtExecute.
  sword Exec(const std::string& sql) {
    OCIStmt* stmt = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&stmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    EXPECT_EQ(OCI_SUCCESS, OCIStmtPrepare(stmt, err_, Text(sql.c_str()),
                                          static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    sword rc = OCIStmtExecute(svc_, stmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT);
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(stmt, OCI_HTYPE_STMT));
    return rc;
  }

  void MustExec(const std::string& sql) { ASSERT_EQ(OCI_SUCCESS, Exec(sql)) << FirstError(err_); }

  OCIType* TypeByName(const char* name) {
    OCIType* tdo = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCITypeByName(env_, err_, svc_, nullptr, 0, Text(name), Len(name),
                                         nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER,
                                         &tdo))
        << FirstError(err_);
    return tdo;
  }

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  OCISvcCtx* svc_ = nullptr;
};

}  // namespace ocimem_test

#endif  // TESTS_OCIMEM_OCI_FIXTURE_H
