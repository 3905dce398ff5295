// Every OCI call on the way from an instance to the stream, made to fail by
// the in-memory OCI in turn: the code returned, the last exception, the
// diagnostics and one "*ERR: in" line per scope the error crosses,
// innermost first; the context stays usable.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

struct FailureCase {
  const char* pszCall;
  unsigned nNth;
  const char* pszThrower;
  std::vector<const char*> scopes;  // innermost first, the entry point excluded
};

class OciFailureTest : public AdapterTest, public ::testing::WithParamInterface<FailureCase> {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE o_in_t AS OBJECT (a NUMBER(3))");
    MustExec("CREATE TYPE o_items_t AS TABLE OF o_in_t");
    MustExec("CREATE TYPE o_x_t AS OBJECT (n NUMBER(5), r NUMBER(5), d DATE, "
             "ts TIMESTAMP(3), i INTERVAL DAY(2) TO SECOND(3), c CLOB, inner o_in_t, "
             "items o_items_t)");
    defs_.Number("N", 5, 0);
    defs_.Scalar("R", SQLT_NUM, 4, 8);
    defs_.Date("D");
    defs_.Scalar("TS", SQLT_TIMESTAMP, 187, 11, 23, 0, 3);
    defs_.Scalar("I", SQLT_INTERVAL_DS, 190, 11, 20, 2, 3);
    defs_.Scalar("C", SQLT_CLOB, 112, 4000);
    defs_.Open("INNER", "SCOTT.O_IN_T");
    defs_.Number("A", 3, 0);
    defs_.Close();
    defs_.Open("ITEMS", "SCOTT.O_ITEMS_T", true);
    defs_.Open(nullptr, "SCOTT.O_IN_T");
    defs_.Number("A", 3, 0);
    defs_.Close();
    defs_.Close();

    inst_ = NewObject("O_X_T");
    SetNumber(inst_, {"N"}, "1");
    SetNumber(inst_, {"R"}, "2");
    SetDate(inst_, {"D"}, "2001-02-03 04:05:06");
    SetDateTime(inst_, {"TS"}, "2001-02-03 04:05:06.789", "YYYY-MM-DD HH24:MI:SS.FF");
    SetInterval(inst_, {"I"}, "1 02:03:04.5");
    Mark(inst_, {"C"});
    SetNumber(inst_, {"INNER", "A"}, "3");
    Instance item = NewObject("O_IN_T");
    SetNumber(item, {"A"}, "4");
    AppendObject(Coll(inst_, {"ITEMS"}), item);
  }
  DefList defs_;
  Instance inst_;
};

const char kWhole[] =
    "1|\0\0\0\0\0\0\0@|2001-02-03 04:05:06|2001-02-03 04:05:06.789|+01 02:03:04.500||[3]|[[4]]";

TEST_F(OciFailureTest, TheObjectWritesWhole) {
  ASSERT_EQ(0, Write(defs_.Head(), inst_)) << LastException() << Trace();
  EXPECT_EQ(std::string(kWhole, sizeof kWhole - 1), Stream());
}

TEST_P(OciFailureTest, FailsWithTheCallsDiagnosticsAndEveryScope) {
  const FailureCase& c = GetParam();
  const sb4 nCode = 20001;
  const char* pszText = "injected failure";
  ocimemFaultArm(c.pszCall, c.nNth, OCI_ERROR, &nCode, &pszText, 1);
  EXPECT_EQ(-24, Write(defs_.Head(), inst_));
  EXPECT_EQ(std::string("-24|") + c.pszThrower + "|" + KelGetErrorText(-24), LastException());
  std::string expected = std::string("Error (-1) returned by ") + c.pszCall +
                         ", errcode=20001\nORA-20001: injected failure\n";
  for (const char* pszScope : c.scopes) expected += std::string("*ERR: in ") + pszScope + " (-2)\n";
  expected += "*ERR: in adpProcessObject (-2)\n";
  EXPECT_EQ(expected, Trace());

  ocimemFaultReset();
  ClearStream();
  ClearTrace();
  ASSERT_EQ(0, Write(defs_.Head(), inst_)) << LastException() << Trace();
  EXPECT_EQ(std::string(kWhole, sizeof kWhole - 1), Stream());
}

const char kGetChild[] = "CAdp::_OraGetChild";
const char kNextItem[] = "CAdp::_OraGetNextCollItem";
const char kDevelop[] = "CAdp::_DevelopOraObjects";
const char kField[] = "CAdp::_OraFieldToStream";
const char kWrite[] = "CAdp::_WriteStream";

INSTANTIATE_TEST_SUITE_P(
    EveryCall, OciFailureTest,
    ::testing::Values(
        FailureCase{"OCIObjectGetAttr", 1, kGetChild, {kGetChild, kDevelop}},
        FailureCase{"OCIObjectGetAttr", 8, kGetChild, {kGetChild, kDevelop, kDevelop}},
        FailureCase{"OCIObjectGetAttr", 10, kGetChild, {kGetChild, kDevelop, kDevelop, kDevelop}},
        FailureCase{"OCITypeByName", 1, kNextItem, {kNextItem, kDevelop, kDevelop}},
        FailureCase{"OCITypeByName", 2, kNextItem, {kNextItem, kDevelop, kDevelop}},
        FailureCase{"OCIIterCreate", 1, kNextItem, {kNextItem, kDevelop, kDevelop}},
        FailureCase{"OCIIterNext", 1, kNextItem, {kNextItem, kDevelop, kDevelop}},
        FailureCase{"OCIIterNext", 2, kNextItem, {kNextItem, kDevelop, kDevelop}},
        FailureCase{"OCINumberToText", 1, kField, {kField, kWrite}},
        FailureCase{"OCINumberToText", 2, kField, {kField, kWrite, kWrite}},
        FailureCase{"OCINumberToText", 3, kField, {kField, kWrite, kWrite, kWrite}},
        FailureCase{"OCINumberToReal", 1, kField, {kField, kWrite}},
        FailureCase{"OCIDateToText", 1, kField, {kField, kWrite}},
        FailureCase{"OCIDateTimeToText", 1, kField, {kField, kWrite}},
        FailureCase{"OCIIntervalToText", 1, kField, {kField, kWrite}},
        FailureCase{"OCILobGetLength", 1, kField, {kField, kWrite}},
        FailureCase{"OCILobRead", 1, kField, {kField, kWrite}}),
    [](const ::testing::TestParamInfo<FailureCase>& info) {
      return std::string(info.param.pszCall) + "_" + std::to_string(info.param.nNth);
    });

TEST_F(OciFailureTest, WhatWasWrittenBeforeTheFailureStays) {
  ocimemFaultArm("OCIDateToText", 1, OCI_ERROR, nullptr, nullptr, 0);
  EXPECT_EQ(-24, Write(defs_.Head(), inst_));
  EXPECT_EQ(std::string("1|\0\0\0\0\0\0\0@|", 11), Stream());
}

TEST_F(OciFailureTest, LostConnectionIsStillRaisedAs24) {
  const sb4 nCode = 3113;
  const char* pszText = "end-of-file on communication channel";
  ocimemFaultArm("OCIObjectGetAttr", 1, OCI_ERROR, &nCode, &pszText, 1);
  ocimemFaultArm("OCIStmtExecute", 1, OCI_ERROR, nullptr, nullptr, 0);
  EXPECT_EQ(-24, Write(defs_.Head(), inst_));
  EXPECT_EQ(0u, Trace().find("Error (-1) returned by OCIObjectGetAttr, errcode=3113\n"
                             "ORA-03113: end-of-file on communication channel\n"));
}

TEST_F(OciFailureTest, InvalidHandleStatusWithoutDiagnostics) {
  ocimemFaultArm("OCIDateTimeToText", 1, OCI_INVALID_HANDLE, nullptr, nullptr, 0);
  EXPECT_EQ(-24, Write(defs_.Head(), inst_));
  EXPECT_EQ(0u, Trace().find("Error (-2) returned by OCIDateTimeToText\nORA--2: Invalid handle\n"
                             "*ERR: in CAdp::_OraFieldToStream (-2)\n"))
      << Trace();
}

}  // namespace
}  // namespace adapter_test
