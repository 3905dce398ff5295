// Every pointer a host may leave NULL, one at a time, at every entry point:
// each is refused with -8, taken as documented, or answered cleanly.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class NullArgumentTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE n_t AS OBJECT (id NUMBER(4), c CLOB)");
    MustExec("CREATE TABLE n_tab OF n_t");
    defs_.Number("ID", 4, 0);
    defs_.Scalar("C", SQLT_CLOB, 112, 4000);
  }
  DefList defs_;
};

TEST_F(NullArgumentTest, WriteLobsWithoutAQueryIsRefused) {
  EXPECT_EQ(-8, adpWriteLobs(ctx_, &trace_, nullptr));
  EXPECT_EQ(Exception(-8, "adpWriteLobs"), LastException());
  EXPECT_EQ(Scopes({"adpWriteLobs"}), Trace());
  EXPECT_THROW(AdpWriteLobs(ctx_, nullptr, nullptr), CKelException);
}

TEST_F(NullArgumentTest, WriteLobsBeforeAnyReadHasNoHandlesAndFailsCleanly) {
  EXPECT_EQ(-24, adpWriteLobs(ctx_, &trace_, "SELECT VALUE(t) FROM n_tab t"));
  EXPECT_EQ(Exception(-24, "_OraSelectObject"), LastException());
  EXPECT_EQ("Error (-2) returned by OCIHandleAlloc(OCI_HTYPE_STMT)\nORA--2: Invalid handle\n" +
                Scopes({"_OraSelectObject", "adpWriteLobs"}),
            Trace());
}

TEST_F(NullArgumentTest, ABufferHolderPointingAtNoBytesIsRefusedWhenASizeIsGiven) {
  OCIType* pTdo = Type("N_T");
  ReadResult r;
  Column_Def* pList = defs_.Head();
  const void* pBuffer = nullptr;
  EXPECT_EQ(-8, adpProcessBuffer(ctx_, &trace_, &pBuffer, 5, &pList, env_, err_, svc_,
                                 &r.pInstance, &r.pInd, &r.nInd, pTdo, &r.nLobsPending));
  EXPECT_EQ(Exception(-8, "adpProcessStream"), LastException());
  EXPECT_EQ(Scopes({"adpProcessStream"}), Trace());
  EXPECT_EQ(nullptr, pBuffer);
  EXPECT_EQ(nullptr, r.pInstance);
  EXPECT_THROW(AdpProcessBuffer(ctx_, nullptr, nullptr, 5, pList, env_, err_, svc_, r.pInstance,
                                r.pInd, r.nInd, pTdo),
               CKelException);
}

TEST_F(NullArgumentTest, ANullBufferOfNoBytesReadsAsAnEmptyRecord) {
  OCIType* pTdo = Type("N_T");
  ReadResult r;
  Column_Def* pList = defs_.Head();
  const void* pBuffer = nullptr;
  ASSERT_EQ(0, adpProcessBuffer(ctx_, &trace_, &pBuffer, 0, &pList, env_, err_, svc_,
                                &r.pInstance, &r.pInd, &r.nInd, pTdo, &r.nLobsPending))
      << LastException();
  EXPECT_EQ(nullptr, pBuffer);
  EXPECT_EQ(0, r.nLobsPending);
  EXPECT_EQ("", Trace());
  // The same as an empty buffer that is there.
  const ReadResult empty = ReadBuffer(defs_.Head(), "", pTdo);
  ASSERT_EQ(0, empty.nRC);
  EXPECT_EQ(WriteBack(defs_.Head(), empty, pTdo), WriteBack(defs_.Head(), r, pTdo));
}

TEST_F(NullArgumentTest, AnObjectWithoutANullStructureGoesByTheIndicatorGiven) {
  Instance inst = NewObject("N_T");
  SetNumber(inst, {"ID"}, "5");
  ASSERT_EQ(0, Write(defs_.Head(), inst.pObject, nullptr, inst.pTdo, OCI_IND_NOTNULL))
      << LastException();
  EXPECT_EQ("5|", Stream());
  ClearStream();
  ASSERT_EQ(0, Write(defs_.Head(), inst.pObject, nullptr, inst.pTdo, OCI_IND_NULL))
      << LastException();
  EXPECT_EQ("", Stream());
  EXPECT_EQ("", Trace());
}

TEST_F(NullArgumentTest, LogErrorWithoutAnyHandleFallsBackAndFindsNoConnection) {
  EXPECT_EQ(-13, adpOraLogError(&trace_, nullptr, nullptr, nullptr, "OCIStmtExecute", OCI_ERROR));
  EXPECT_EQ("Error (-1) returned by OCIStmtExecute\nORA--1: Error\n", Trace());
  EXPECT_EQ(-13, adpOraCheckConnection(nullptr, nullptr, nullptr));
  EXPECT_EQ(-13, adpOraCheckConnection(env_, err_, nullptr));
  EXPECT_EQ(0, adpOraCheckConnection(env_, err_, svc_));
}

TEST_F(NullArgumentTest, LogErrorWithoutAFunctionNameNamesItNull) {
  EXPECT_EQ(-24, adpOraLogError(&trace_, env_, err_, svc_, nullptr, OCI_ERROR));
  EXPECT_EQ("Error (-1) returned by (null)\nORA--1: Error\n", Trace());
  EXPECT_EQ(0, adpOraLogError(&trace_, env_, err_, svc_, nullptr, OCI_SUCCESS));
}

}  // namespace
}  // namespace adapter_test
