// Every OCI call coldefDescribe makes is failed in turn: each failure ends the call with
// COLDEF_E_ORACLE, Oracle's error in the error handle and no list, and nothing leaks.
#include <string>

#include "coldef_fixture.h"

namespace coldef_test {
namespace {

using ocimem_test::FirstCode;

class FailureTest : public ColdefTest {
 protected:
  void SetUp() override {
    ColdefTest::SetUp();
    MustExec("CREATE TYPE ADDR_T AS OBJECT (STREET VARCHAR2(30), ZIP NUMBER(5))");
    MustExec("CREATE TYPE TAGS_T AS VARRAY(5) OF VARCHAR2(20)");
    MustExec("CREATE TYPE LINE_T AS OBJECT (SKU VARCHAR2(10), TAGS TAGS_T, AT ADDR_T)");
    MustExec("CREATE TYPE LINE_LIST_T AS TABLE OF LINE_T");
    MustExec(
        "CREATE TYPE ORDER_T AS OBJECT (NO NUMBER(8), LINES LINE_LIST_T, SHIP ADDR_T,"
        " BILL ADDR_T, SENT TIMESTAMP, TERM INTERVAL DAY TO SECOND)");
  }

  // Fails the nth call of `function` for n = 1, 2, ... until a describe succeeds, and
  // returns how many describes failed. The injected record is in the error handle, except
  // after OCIHandleAlloc, which takes none.
  unsigned FailEachCall(const char* function, sword status) {
    const bool recorded = std::string(function) != "OCIHandleAlloc";
    const sb4 codes[] = {3113};
    const char* const messages[] = {"end-of-file on communication channel"};
    unsigned failures = 0;
    for (unsigned nth = 1; nth < 1000; ++nth) {
      ocimemFaultArm(function, nth, status, codes, messages, 1);
      const int rc = Describe("ORDER_T");
      ocimemFaultReset();
      if (rc == COLDEF_OK) return failures;
      ++failures;
      EXPECT_EQ(COLDEF_E_ORACLE, rc) << function << " call " << nth;
      EXPECT_EQ(recorded ? 3113 : 0, FirstCode(err_)) << function << " call " << nth;
      EXPECT_EQ(nullptr, list_) << function << " call " << nth;
    }
    ADD_FAILURE() << function << " kept failing";
    return failures;
  }
};

TEST_F(FailureTest, OneDescribeHandleForTheWholeCall) {
  EXPECT_EQ(1u, FailEachCall("OCIHandleAlloc", OCI_ERROR));
}

TEST_F(FailureTest, EveryTypeIsDescribedOnce) {
  // ORDER_T, LINE_LIST_T, LINE_T, TAGS_T, ADDR_T: ADDR_T's second and third use are not
  // described again.
  EXPECT_EQ(5u, FailEachCall("OCIDescribeAny", OCI_ERROR));
}

TEST_F(FailureTest, EveryAttributeParameterIsFetchedOnce) {
  EXPECT_EQ(6u + 3u + 2u, FailEachCall("OCIParamGet", OCI_ERROR));
}

TEST_F(FailureTest, EveryAttributeRead) {
  EXPECT_GT(FailEachCall("OCIAttrGet", OCI_ERROR), 30u);
}

TEST_F(FailureTest, AnInvalidHandleStatusIsAnOracleFailureToo) {
  EXPECT_EQ(5u, FailEachCall("OCIDescribeAny", OCI_INVALID_HANDLE));
}

TEST_F(FailureTest, TheListIsCompleteAfterTheFailures) {
  FailEachCall("OCIAttrGet", OCI_ERROR);
  MustDescribe("ORDER_T");
  // NO; LINES with LINE_T (SKU, TAGS with its item, AT with two attributes); SHIP and BILL
  // with two attributes each; SENT; TERM.
  EXPECT_EQ(1u + (2 + 1 + 3 + 4 + 2) + 4 + 4 + 1 + 1, Count());
}

TEST_F(FailureTest, AFailedHandleFreeLeavesTheListIntact) {
  const sb4 codes[] = {3113};
  const char* const messages[] = {"end-of-file on communication channel"};
  ocimemFaultArm("OCIHandleFree", 1, OCI_ERROR, codes, messages, 1);
  EXPECT_EQ(COLDEF_OK, Describe("ADDR_T"));
  ocimemFaultReset();
  ExpectList(list_, {
                        Scalar("STREET", SQLT_CHR, SQLT_CHR, 30),
                        Scalar("ZIP", SQLT_NUM, SQLT_STR, 22, 0, 5, 0),
                    });
}

}  // namespace
}  // namespace coldef_test
