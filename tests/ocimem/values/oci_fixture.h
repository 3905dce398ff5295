// An environment and an error handle for tests of the OCI value calls, and
// access to the diagnostics a failing call leaves.
#ifndef TESTS_OCIMEM_VALUES_OCI_FIXTURE_H
#define TESTS_OCIMEM_VALUES_OCI_FIXTURE_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "oci.h"
#include "ocimem.h"

class OciValueTest : public ::testing::Test {
 protected:
  void SetUp() override {
    setenv("ORA_SDTZ", "+00:00", 1);
    ASSERT_EQ(OCIEnvCreate(&env_, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr),
              OCI_SUCCESS);
    ASSERT_EQ(OCIHandleAlloc(env_, reinterpret_cast<void**>(&err_), OCI_HTYPE_ERROR, 0, nullptr),
              OCI_SUCCESS);
  }

  void TearDown() override {
    ocimemFaultReset();
    FreeDescriptors();
    OCIHandleFree(err_, OCI_HTYPE_ERROR);
    OCIHandleFree(env_, OCI_HTYPE_ENV);
    unsetenv("ORA_SDTZ");
  }

  // Oracle error number of the first record, 0 when there is none.
  int LastError() {
    sb4 code = 0;
    OraText buf[512];
    if (OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR) != OCI_SUCCESS) {
      return 0;
    }
    return code;
  }

  std::string LastMessage() {
    sb4 code = 0;
    OraText buf[512] = {};
    if (OCIErrorGet(err_, 1, nullptr, &code, buf, sizeof buf, OCI_HTYPE_ERROR) != OCI_SUCCESS) {
      return {};
    }
    return reinterpret_cast<const char*>(buf);
  }

  void* Descriptor(ub4 type) {
    void* d = nullptr;
    EXPECT_EQ(OCIDescriptorAlloc(env_, &d, type, 0, nullptr), OCI_SUCCESS);
    descriptors_.emplace_back(d, type);
    return d;
  }

  void FreeDescriptors() {
    for (auto& [d, type] : descriptors_) OCIDescriptorFree(d, type);
    descriptors_.clear();
  }

  OCIEnv* env_ = nullptr;
  OCIError* err_ = nullptr;
  std::vector<std::pair<void*, ub4>> descriptors_;
};

#endif  // TESTS_OCIMEM_VALUES_OCI_FIXTURE_H
