// Fault injection through ocimem.h.
#include <gtest/gtest.h>

#include "oci_fixture.h"

namespace ocimem_test {
namespace {

using FaultTest = OciTest;

const sb4 kTns[] = {12154};
const char* const kTnsText[] = {"TNS:could not resolve the connect identifier specified"};

TEST_F(FaultTest, NthCallFailsOnceWithTheGivenRecord) {
  ocimemFaultArm("OCIStmtExecute", 2, OCI_ERROR, kTns, kTnsText, 1);
  EXPECT_EQ(OCI_SUCCESS, Exec("create type f1 as object (a number)"));
  EXPECT_EQ(OCI_ERROR, Exec("create type f2 as object (a number)"));
  EXPECT_EQ("ORA-12154: TNS:could not resolve the connect identifier specified",
            FirstError(err_));
  // The faulted call did nothing.
  OCIType* tdo = nullptr;
  EXPECT_EQ(OCI_ERROR, OCITypeByName(env_, err_, svc_, nullptr, 0, Text("F2"), 2, nullptr, 0,
                                     OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &tdo));
  // A one-shot fault disarms itself.
  EXPECT_EQ(OCI_SUCCESS, Exec("create type f2 as object (a number)"));
}

TEST_F(FaultTest, EveryCallFailsUntilReset) {
  ocimemFaultArm("OCICollSize", 0, OCI_ERROR, kTns, kTnsText, 1);
  sb4 size = 0;
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(OCI_ERROR, OCICollSize(env_, err_, nullptr, &size));
    EXPECT_EQ(12154, FirstCode(err_));
  }
  ocimemFaultReset();
  EXPECT_EQ(OCI_ERROR, OCICollSize(env_, err_, nullptr, &size));
  EXPECT_EQ(21560, FirstCode(err_));  // the real answer again
}

TEST_F(FaultTest, StatusWithoutRecords) {
  ocimemFaultArm("OCIStmtExecute", 1, OCI_NO_DATA, nullptr, nullptr, 0);
  EXPECT_EQ(OCI_NO_DATA, Exec("create type f3 as object (a number)"));
  EXPECT_EQ("none", FirstError(err_));
}

TEST_F(FaultTest, WarningStatusWithRecord) {
  const sb4 codes[] = {28002};
  const char* const texts[] = {"the password will expire within 7 days"};
  ocimemFaultArm("OCILogon", 1, OCI_SUCCESS_WITH_INFO, codes, texts, 1);
  OCISvcCtx* svc = nullptr;
  EXPECT_EQ(OCI_SUCCESS_WITH_INFO, OCILogon(env_, err_, &svc, Text("scott"), 5, Text("tiger"), 5,
                                            Text("x"), 1));
  EXPECT_EQ("ORA-28002: the password will expire within 7 days", FirstError(err_));
}

TEST_F(FaultTest, CallsWithoutErrorHandle) {
  ocimemFaultArm("OCIHandleAlloc", 1, OCI_INVALID_HANDLE, nullptr, nullptr, 0);
  void* h = nullptr;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCIHandleAlloc(env_, &h, OCI_HTYPE_STMT, 0, nullptr));
  EXPECT_EQ(nullptr, h);
  EXPECT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, &h, OCI_HTYPE_STMT, 0, nullptr));
  EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(h, OCI_HTYPE_STMT));
}

TEST_F(FaultTest, ArmingAgainReplacesAndRestartsTheCount) {
  ocimemFaultArm("OCIStmtExecute", 1, OCI_ERROR, kTns, kTnsText, 1);
  ocimemFaultArm("OCIStmtExecute", 2, OCI_ERROR, kTns, kTnsText, 1);
  EXPECT_EQ(OCI_SUCCESS, Exec("create type f4 as object (a number)"));
  EXPECT_EQ(OCI_ERROR, Exec("create type f5 as object (a number)"));
}

TEST_F(FaultTest, OtherFunctionsAreUnaffected) {
  ocimemFaultArm("OCITypeByName", 0, OCI_ERROR, kTns, kTnsText, 1);
  EXPECT_EQ(OCI_SUCCESS, Exec("create type f6 as object (a number)"));
}

TEST_F(FaultTest, InvalidErrorHandleWinsOverTheFault) {
  ocimemFaultArm("OCICollSize", 0, OCI_ERROR, kTns, kTnsText, 1);
  sb4 size = 0;
  EXPECT_EQ(OCI_INVALID_HANDLE, OCICollSize(env_, nullptr, nullptr, &size));
}

}  // namespace
}  // namespace ocimem_test
