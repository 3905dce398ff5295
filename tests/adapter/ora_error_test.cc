// Oracle diagnostics to the trace and the code a failed call stands for;
// the connection check behind -13 and -24.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class OraErrorTest : public AdapterTest {
 protected:
  // Leaves the given records in the error handle, as a failed call does.
  void LoadRecords(std::vector<sb4> codes, std::vector<const char*> messages) {
    ocimemFaultArm("OCIStmtPrepare", 1, OCI_ERROR, codes.data(), messages.data(),
                   static_cast<unsigned>(codes.size()));
    OCIStmt* pStmt = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt),
                                          OCI_HTYPE_STMT, 0, nullptr));
    ASSERT_EQ(OCI_ERROR, OCIStmtPrepare(pStmt, err_, Text("select 1 from dual"), 18,
                                        OCI_NTV_SYNTAX, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(pStmt, OCI_HTYPE_STMT));
  }
  // Whether the connection check ran since the fault was armed: it would
  // have taken the armed fault of its OCIStmtExecute.
  void ArmCheckProbe() { ocimemFaultArm("OCIStmtExecute", 1, OCI_ERROR, nullptr, nullptr, 0); }
  bool CheckProbeFired() {
    OCIStmt* pStmt = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    EXPECT_EQ(OCI_SUCCESS, OCIStmtPrepare(pStmt, err_, Text("select 1 from dual"), 18,
                                          OCI_NTV_SYNTAX, OCI_DEFAULT));
    const sword nStatus = OCIStmtExecute(svc_, pStmt, err_, 0, 0, nullptr, nullptr, OCI_DEFAULT);
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(pStmt, OCI_HTYPE_STMT));
    return nStatus == OCI_SUCCESS;
  }
};

TEST_F(OraErrorTest, SuccessReturnsZeroAndPrintsNothing) {
  EXPECT_EQ(0, adpOraLogError(&trace_, env_, err_, svc_, "OCIStmtExecute", OCI_SUCCESS));
  EXPECT_EQ("", Trace());
}

TEST_F(OraErrorTest, OracleErrorOnALiveConnectionIs24) {
  LoadRecords({942}, {"table or view does not exist"});
  EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, "OCIStmtExecute", OCI_ERROR));
  EXPECT_EQ("Error (-1) returned by OCIStmtExecute, errcode=942\n"
            "ORA-00942: table or view does not exist\n",
            Trace());
}

TEST_F(OraErrorTest, Error12154IsAConnectionFailureWithoutTheCheckQuery) {
  LoadRecords({12154}, {"TNS:could not resolve the connect identifier specified"});
  ArmCheckProbe();
  EXPECT_EQ(-13, adpOraLogError(&trace_, env_, err_, svc_, "OCIServerAttach", OCI_ERROR));
  EXPECT_TRUE(CheckProbeFired() == false);
}

TEST_F(OraErrorTest, Error25228IsHandedOnUnchangedWithoutTheCheckQuery) {
  LoadRecords({25228}, {"timeout or end-of-fetch during message dequeue"});
  ArmCheckProbe();
  EXPECT_EQ(25228, adpOraLogError(&trace_, env_, err_, svc_, "OCIAQDeq", OCI_ERROR));
  EXPECT_FALSE(CheckProbeFired());
}

TEST_F(OraErrorTest, Error25237IsHandedOnUnchanged) {
  LoadRecords({25237}, {"navigation option used out of sequence"});
  EXPECT_EQ(25237, adpOraLogError(&trace_, env_, err_, svc_, "OCIAQDeq", OCI_SUCCESS_WITH_INFO));
}

TEST_F(OraErrorTest, InvalidHandleWithoutTextPrintsTheFallbackAndChecks) {
  EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, "OCIObjectNew", OCI_INVALID_HANDLE));
  EXPECT_EQ("Error (-2) returned by OCIObjectNew\nORA--2: Invalid handle\n", Trace());
  ClearTrace();
  OCISvcCtx* pDead = nullptr;
  EXPECT_EQ(-13, adpOraLogError(&trace_, env_, err_, pDead, "OCIObjectNew", OCI_INVALID_HANDLE));
  EXPECT_EQ("Error (-2) returned by OCIObjectNew\nORA--2: Invalid handle\n", Trace());
}

TEST_F(OraErrorTest, SuccessWithInfoWithoutDiagnostics) {
  EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, "OCIStmtFetch", OCI_SUCCESS_WITH_INFO));
  EXPECT_EQ("Success with info (1) returned by OCIStmtFetch\n"
            "ORA-1: No extended error information available\n",
            Trace());
}

TEST_F(OraErrorTest, EveryFallbackTextAndLabel) {
  struct Row {
    int nStatus;
    const char* pszExpected;
  };
  const Row rows[] = {
      {OCI_ERROR, "Error (-1) returned by f\nORA--1: Error\n"},
      {OCI_NO_DATA, "No data condition (100) returned by f\nORA-100: No data\n"},
      {OCI_NEED_DATA, "Error (99) returned by f\nORA-99: Need data\n"},
      {OCI_STILL_EXECUTING, "Error (-3123) returned by f\nORA--3123: Still executing\n"},
      {OCI_CONTINUE, "Error (-24200) returned by f\nORA--24200: Continue\n"},
      {7, "Error (7) returned by f\nORA-7: Unexpected condition encountered\n"},
  };
  for (const Row& row : rows) {
    ClearTrace();
    EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, "f", row.nStatus));
    EXPECT_EQ(row.pszExpected, Trace());
  }
}

TEST_F(OraErrorTest, ThreeRecordsPrintInRecordOrder) {
  LoadRecords({1, 2, 3}, {"first", "second", "third"});
  EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, "OCIStmtExecute", OCI_ERROR));
  EXPECT_EQ("Error (-1) returned by OCIStmtExecute, errcode=1\nORA-00001: first\n"
            "\n  Next errcode=2\nORA-00002: second\n"
            "\n  Next errcode=3\nORA-00003: third\n",
            Trace());
}

TEST_F(OraErrorTest, ATextEndingInALineFeedLosesExactlyOne) {
  LoadRecords({20000}, {"two feeds\n"});
  EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, "X", OCI_ERROR));
  EXPECT_EQ("Error (-1) returned by X, errcode=20000\nORA-20000: two feeds\n\n", Trace());
}

TEST_F(OraErrorTest, OnlyAnOciErrorKeepsTheOracleNumber) {
  // With OCI_SUCCESS_WITH_INFO the record's 12154 is not looked at: the
  // check runs and the connection answers.
  LoadRecords({12154}, {"TNS:could not resolve the connect identifier specified"});
  EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, "X", OCI_SUCCESS_WITH_INFO));
}

TEST_F(OraErrorTest, NoTraceMeansNoLines) {
  LoadRecords({942}, {"table or view does not exist"});
  EXPECT_EQ(-24, adpOraLogError(nullptr, env_, err_, svc_, "X", OCI_ERROR));
  EXPECT_EQ("", Trace());
}

TEST_F(OraErrorTest, DiagnosticsFromTheEnvironmentWhenNoErrorHandle) {
  // The check query cannot run without an error handle either.
  EXPECT_EQ(-13, adpOraLogError(&trace_, env_, nullptr, svc_, "X", OCI_ERROR));
  EXPECT_EQ("Error (-1) returned by X\nORA--1: Error\n", Trace());
}

TEST_F(OraErrorTest, ConnectionCheckAnswersOnALiveConnection) {
  EXPECT_EQ(0, adpOraCheckConnection(env_, err_, svc_));
}

TEST_F(OraErrorTest, ConnectionCheckFailsWhenAnyStepFails) {
  for (const char* pszCall : {"OCIHandleAlloc", "OCIStmtPrepare", "OCIStmtExecute"}) {
    ocimemFaultArm(pszCall, 1, OCI_ERROR, nullptr, nullptr, 0);
    EXPECT_EQ(-13, adpOraCheckConnection(env_, err_, svc_)) << pszCall;
    ocimemFaultReset();
  }
  EXPECT_EQ(0, adpOraCheckConnection(env_, err_, svc_));
}

TEST_F(OraErrorTest, ConnectionCheckCountsSuccessWithInfoAsFailure) {
  ocimemFaultArm("OCIStmtExecute", 1, OCI_SUCCESS_WITH_INFO, nullptr, nullptr, 0);
  EXPECT_EQ(-13, adpOraCheckConnection(env_, err_, svc_));
}

TEST_F(OraErrorTest, ConnectionCheckAfterLogoff) {
  ASSERT_EQ(OCI_SUCCESS, OCILogoff(svc_, err_));
  EXPECT_EQ(-13, adpOraCheckConnection(env_, err_, svc_));
  svc_ = nullptr;
}

}  // namespace
}  // namespace adapter_test
