// Every OCI call on the way from the stream to a new instance, made to fail
// by the in-memory OCI in turn: the code returned, the last exception, the
// diagnostics and one "*ERR: in" line per scope the error crosses, innermost
// first, then the entry point's; the host's out-values stay as they were and
// the context reads the same stream whole afterwards.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

struct ReadFailureCase {
  const char* pszCall;    // the OCI function made to fail
  unsigned nNth;          // which of its calls
  const char* pszLogged;  // the name its diagnostics are logged under
  const char* pszThrower;
  std::vector<const char*> scopes;  // innermost first, the entry point excluded
};

const char kCreate[] = "CAdp::_OraCreateObject";
const char kDevelop[] = "CAdp::_DevelopOraObjects";
const char kGetChild[] = "CAdp::_OraGetChild";
const char kNextItem[] = "CAdp::_OraGetNextCollItem";
const char kEmpty[] = "CAdp::_OraEmptyColl";
const char kAppend[] = "CAdp::_OraAddCollItem";
const char kSetInd[] = "CAdp::_OraSetIndicator";
const char kField[] = "CAdp::_OraStreamToField";
const char kRead[] = "CAdp::_ReadStream";
const char kDriver[] = "CAdp::ProcessStream";

// An object of every kind of field the reader converts, with a nested
// object and a collection of two object items.
class ReadObjectFailureTest : public ReadTest,
                              public ::testing::WithParamInterface<ReadFailureCase> {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE x_in_t AS OBJECT (a NUMBER(3))");
    MustExec("CREATE TYPE x_items_t AS TABLE OF x_in_t");
    MustExec("CREATE TYPE x_t AS OBJECT (n NUMBER(5), r NUMBER(5), s VARCHAR2(10), d DATE, "
             "ts TIMESTAMP(3), i INTERVAL DAY(2) TO SECOND(3), w RAW(4), inner x_in_t, "
             "items x_items_t)");
    defs_.Number("N", 5, 0);
    defs_.Scalar("R", SQLT_NUM, 4, 8);
    defs_.Text("S", 10);
    defs_.Date("D");
    defs_.Scalar("TS", SQLT_TIMESTAMP, 187, 11, 23, 0, 3);
    defs_.Scalar("I", SQLT_INTERVAL_DS, 190, 11, 20, 2, 3);
    defs_.Raw("W", 4);
    defs_.Open("INNER", "SCOTT.X_IN_T");
    defs_.Number("A", 3, 0);
    defs_.Close();
    defs_.Open("ITEMS", "SCOTT.X_ITEMS_T", true);
    defs_.Open(nullptr, "SCOTT.X_IN_T");
    defs_.Number("A", 3, 0);
    defs_.Close();
    defs_.Close();
    tdo_ = Type("X_T");
  }
  DefList defs_;
  OCIType* tdo_ = nullptr;
};

const char kObject[] =
    "1|\0\0\0\0\0\0\0@|abc|2001-02-03 04:05:06|2001-02-03 04:05:06.789|+01 02:03:04.500|"
    "2|AB|[3]|[[4]|[5]]";
const std::string kObjectText(kObject, sizeof kObject - 1);

TEST_F(ReadObjectFailureTest, TheObjectReadsWhole) {
  ReadResult r = ReadStream(defs_.Head(), kObjectText, tdo_);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(kObjectText, WriteBack(defs_.Head(), r, tdo_));
  EXPECT_EQ("", Trace());
}

std::string Diagnostics(const char* pszLogged) {
  return std::string("Error (-1) returned by ") + pszLogged +
         ", errcode=20001\nORA-20001: injected failure\n";
}

void ArmFailure(const char* pszCall, unsigned nNth) {
  static const sb4 nCode = 20001;
  static const char* pszText = "injected failure";
  ocimemFaultArm(pszCall, nNth, OCI_ERROR, &nCode, &pszText, 1);
}

TEST_P(ReadObjectFailureTest, FailsWithTheCallsDiagnosticsAndEveryScope) {
  const ReadFailureCase& c = GetParam();
  ArmFailure(c.pszCall, c.nNth);
  ReadResult r = ReadStream(defs_.Head(), kObjectText, tdo_);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, c.pszThrower), LastException());
  std::string expected = Diagnostics(c.pszLogged);
  for (const char* pszScope : c.scopes) expected += std::string("*ERR: in ") + pszScope + " (-2)\n";
  expected += "*ERR: in adpProcessStream (-2)\n";
  EXPECT_EQ(expected, Trace());
  EXPECT_EQ(nullptr, r.pInstance);
  EXPECT_EQ(nullptr, r.pInd);
  EXPECT_EQ(-1, r.nLobsPending);

  ocimemFaultReset();
  ClearTrace();
  r = ReadStream(defs_.Head(), kObjectText, tdo_);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(kObjectText, WriteBack(defs_.Head(), r, tdo_));
  EXPECT_EQ("", Trace());
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, ReadObjectFailureTest,
    ::testing::Values(
        // The new instance.
        ReadFailureCase{"OCIObjectNew", 1, "OCIObjectNew", kCreate, {kCreate, kDriver}},
        ReadFailureCase{"OCIObjectGetInd", 1, "OCIObjectGetInd", kCreate, {kCreate, kDriver}},
        // Binding the tree to it: N, R, S, D, TS, I, W, INNER, INNER.A, ITEMS.
        ReadFailureCase{"OCIObjectGetAttr", 1, "OCIObjectGetAttr", kGetChild,
                        {kGetChild, kDevelop, kDriver}},
        ReadFailureCase{"OCIObjectGetAttr", 8, "OCIObjectGetAttr", kGetChild,
                        {kGetChild, kDevelop, kDriver}},
        ReadFailureCase{"OCIObjectGetAttr", 9, "OCIObjectGetAttr", kGetChild,
                        {kGetChild, kDevelop, kDevelop, kDriver}},
        ReadFailureCase{"OCIObjectGetAttr", 10, "OCIObjectGetAttr", kGetChild,
                        {kGetChild, kDevelop, kDriver}},
        // The new object's empty collection is walked once.
        ReadFailureCase{"OCITypeByName", 1, "OCITypeByName", kNextItem,
                        {kNextItem, kDevelop, kDevelop, kDriver}},
        ReadFailureCase{"OCIIterCreate", 1, "OCIIterCreate", kNextItem,
                        {kNextItem, kDevelop, kDevelop, kDriver}},
        ReadFailureCase{"OCIIterNext", 1, "OCIIterNext", kNextItem,
                        {kNextItem, kDevelop, kDevelop, kDriver}},
        // The fields in stream order.
        ReadFailureCase{"OCINumberFromText", 1, "OCINumberFromText", kField,
                        {kField, kRead, kDriver}},
        ReadFailureCase{"OCINumberFromReal", 1, "OCINumberFromReal", kField,
                        {kField, kRead, kDriver}},
        ReadFailureCase{"OCIStringResize", 1, "OCIStringResize", kField, {kField, kRead, kDriver}},
        ReadFailureCase{"OCIDateFromText", 1, "OCIDateFromText", kField, {kField, kRead, kDriver}},
        ReadFailureCase{"OCIDateTimeFromText", 1, "OCIDateTimeFromText", kField,
                        {kField, kRead, kDriver}},
        ReadFailureCase{"OCIIntervalFromText", 1, "OCIDateTimeFromText", kField,
                        {kField, kRead, kDriver}},
        ReadFailureCase{"OCIRawResize", 1, "OCIRawResize", kField, {kField, kRead, kDriver}},
        // N's indicator; INNER.A in the nested object.
        ReadFailureCase{"OCIObjectSetAttr", 1, "OCIObjectSetAttr", kSetInd,
                        {kSetInd, kRead, kDriver}},
        ReadFailureCase{"OCINumberFromText", 2, "OCINumberFromText", kField,
                        {kField, kRead, kRead, kDriver}},
        ReadFailureCase{"OCIObjectSetAttr", 8, "OCIObjectSetAttr", kSetInd,
                        {kSetInd, kRead, kRead, kDriver}},
        // INNER itself marked present.
        ReadFailureCase{"OCIObjectSetAttr", 9, "OCIObjectSetAttr", kSetInd,
                        {kSetInd, kRead, kDriver}},
        // The first item: its type, its instance, its attribute, its value.
        ReadFailureCase{"OCITypeByName", 2, "OCITypeByName", kCreate,
                        {kCreate, kRead, kRead, kDriver}},
        ReadFailureCase{"OCIObjectNew", 2, "OCIObjectNew", kCreate,
                        {kCreate, kRead, kRead, kDriver}},
        ReadFailureCase{"OCIObjectGetInd", 2, "OCIObjectGetInd", kCreate,
                        {kCreate, kRead, kRead, kDriver}},
        ReadFailureCase{"OCIObjectGetAttr", 11, "OCIObjectGetAttr", kGetChild,
                        {kGetChild, kDevelop, kRead, kRead, kDriver}},
        ReadFailureCase{"OCINumberFromText", 3, "OCINumberFromText", kField,
                        {kField, kRead, kRead, kRead, kDriver}},
        ReadFailureCase{"OCIObjectSetAttr", 10, "OCIObjectSetAttr", kSetInd,
                        {kSetInd, kRead, kRead, kRead, kDriver}},
        ReadFailureCase{"OCICollAppend", 1, "OCICollAppend", kAppend,
                        {kAppend, kRead, kRead, kDriver}},
        // The second item, read into the same object: its value, its append.
        ReadFailureCase{"OCINumberFromText", 4, "OCINumberFromText", kField,
                        {kField, kRead, kRead, kRead, kDriver}},
        ReadFailureCase{"OCICollAppend", 2, "OCICollAppend", kAppend,
                        {kAppend, kRead, kRead, kDriver}},
        // ITEMS marked present.
        ReadFailureCase{"OCIObjectSetAttr", 12, "OCIObjectSetAttr", kSetInd,
                        {kSetInd, kRead, kDriver}}),
    [](const ::testing::TestParamInfo<ReadFailureCase>& info) {
      return std::string(info.param.pszCall) + "_" + std::to_string(info.param.nNth);
    });

TEST_F(ReadObjectFailureTest, NoFurtherCallsOfTheFailingKindAreMade) {
  // One more call of each kind than the read makes succeeds untouched.
  const struct {
    const char* pszCall;
    unsigned nNth;
  } past[] = {{"OCIObjectNew", 4},      {"OCIObjectGetInd", 4},   {"OCIObjectGetAttr", 13},
              {"OCITypeByName", 4},     {"OCIIterCreate", 2},     {"OCIIterNext", 2},
              {"OCINumberFromText", 5}, {"OCINumberFromReal", 2}, {"OCIStringResize", 2},
              {"OCIDateFromText", 2},   {"OCIDateTimeFromText", 2}, {"OCIIntervalFromText", 2},
              {"OCIRawResize", 2},      {"OCIObjectSetAttr", 13}, {"OCICollAppend", 3},
              {"OCICollSize", 1},       {"OCICollTrim", 1}};
  for (const auto& p : past) {
    ocimemFaultReset();
    ArmFailure(p.pszCall, p.nNth);
    ReadResult r = ReadStream(defs_.Head(), kObjectText, tdo_);
    EXPECT_EQ(0, r.nRC) << p.pszCall << " " << p.nNth << ": " << LastException() << Trace();
  }
}

TEST_F(ReadObjectFailureTest, WhatWasReadBeforeTheFailureStaysConsumed) {
  ArmFailure("OCIDateFromText", 1);
  ReadResult r = ReadStream(defs_.Head(), kObjectText, tdo_);
  EXPECT_EQ(-24, r.nRC);
  // N, R and S with their delimiters, then the date's own 19 bytes.
  EXPECT_EQ(2 + 9 + 4 + 19, stream_.Tell());
}

TEST_F(ReadObjectFailureTest, AnInvalidHandleStatusIsRaisedAs24) {
  ocimemFaultArm("OCIRawResize", 1, OCI_INVALID_HANDLE, nullptr, nullptr, 0);
  ReadResult r = ReadStream(defs_.Head(), kObjectText, tdo_);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, kField), LastException());
  EXPECT_EQ("Error (-2) returned by OCIRawResize\nORA--2: Invalid handle\n" +
                Scopes({kField, kRead, kDriver, "adpProcessStream"}),
            Trace());
}

// A collection at the top: the one it is read into is emptied first.
class ReadCollectionFailureTest : public ReadTest,
                                  public ::testing::WithParamInterface<ReadFailureCase> {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE x_nums_t AS VARRAY(10) OF NUMBER(3)");
    defs_.Number(nullptr, 3, 0);
    tdo_ = Type("X_NUMS_T");
  }
  DefList defs_;
  OCIType* tdo_ = nullptr;
};

TEST_P(ReadCollectionFailureTest, FailsWithTheCallsDiagnosticsAndEveryScope) {
  const ReadFailureCase& c = GetParam();
  ArmFailure(c.pszCall, c.nNth);
  ReadResult r = ReadStream(defs_.Head(), "1|2|3", tdo_);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, c.pszThrower), LastException());
  std::string expected = Diagnostics(c.pszLogged);
  for (const char* pszScope : c.scopes) expected += std::string("*ERR: in ") + pszScope + " (-2)\n";
  expected += "*ERR: in adpProcessStream (-2)\n";
  EXPECT_EQ(expected, Trace());
  EXPECT_EQ(nullptr, r.pInstance);

  ocimemFaultReset();
  ClearTrace();
  r = ReadStream(defs_.Head(), "1|2|3", tdo_);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("1|2|3", WriteBack(defs_.Head(), r, tdo_, true));
  EXPECT_EQ("", Trace());
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, ReadCollectionFailureTest,
    ::testing::Values(
        ReadFailureCase{"OCIObjectNew", 1, "OCIObjectNew", kCreate, {kCreate, kDriver}},
        ReadFailureCase{"OCIObjectGetInd", 1, "OCIObjectGetInd", kCreate, {kCreate, kDriver}},
        ReadFailureCase{"OCICollSize", 1, "OCICollSize", kEmpty, {kEmpty, kDevelop, kDriver}},
        ReadFailureCase{"OCICollTrim", 1, "OCICollTrim", kEmpty, {kEmpty, kDevelop, kDriver}},
        // Each item is a value made for it.
        ReadFailureCase{"OCIObjectNew", 2, "OCIObjectNew", kCreate, {kCreate, kRead, kDriver}},
        ReadFailureCase{"OCINumberFromText", 2, "OCINumberFromText", kField,
                        {kField, kRead, kDriver}},
        ReadFailureCase{"OCICollAppend", 3, "OCICollAppend", kAppend,
                        {kAppend, kRead, kDriver}}),
    [](const ::testing::TestParamInfo<ReadFailureCase>& info) {
      return std::string(info.param.pszCall) + "_" + std::to_string(info.param.nNth);
    });

}  // namespace
}  // namespace adapter_test
