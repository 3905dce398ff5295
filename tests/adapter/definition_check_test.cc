// Column_Def lists a host gets wrong: lists that end inside a group, groups
// nested past the limit, definitions that name another kind of value than
// the type holds. Each is refused with -8 before any value is touched, on
// every call, and the context goes on working with a right list. And the
// list's lifetime: once a call is over, the context reads nothing of it.
#include <memory>
#include <string>
#include <vector>

#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class DefinitionCheckTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE k_in_t AS OBJECT (a NUMBER(3), s VARCHAR2(10))");
    MustExec("CREATE TYPE k_other_t AS OBJECT (a NUMBER(3), s VARCHAR2(10))");
    MustExec("CREATE TYPE k_nums_t AS TABLE OF NUMBER(4)");
    MustExec("CREATE TYPE k_ins_t AS VARRAY(5) OF k_in_t");
    MustExec("CREATE TYPE k_t AS OBJECT (id NUMBER(4), name VARCHAR2(10), inner k_in_t, "
             "nums k_nums_t, ins k_ins_t, c CLOB, b BLOB)");
    MustExec("CREATE TYPE k_time_t AS OBJECT (ts TIMESTAMP(6), tz TIMESTAMP(3) WITH TIME ZONE)");
  }

  // The right list for K_IN_T's two attributes.
  static void Inner(DefList& defs) {
    defs.Number("A", 3, 0);
    defs.Text("S", 10);
  }
  // The right list for K_T.
  static void Whole(DefList& defs) {
    defs.Number("ID", 4, 0);
    defs.Text("NAME", 10);
    defs.Open("INNER", "SCOTT.K_IN_T");
    Inner(defs);
    defs.Close();
    defs.Open("NUMS", "SCOTT.K_NUMS_T", true);
    defs.Number(nullptr, 4, 0);
    defs.Close();
    defs.Open("INS", "SCOTT.K_INS_T", true);
    defs.Open(nullptr, "SCOTT.K_IN_T");
    Inner(defs);
    defs.Close();
    defs.Close();
    defs.Scalar("C", SQLT_CLOB, 112, 4000);
    defs.Scalar("B", SQLT_BLOB, 113, 4000);
  }

  Instance Filled() {
    Instance inst = NewObject("K_T");
    SetNumber(inst, {"ID"}, "7");
    SetText(inst, {"NAME"}, "seven");
    Mark(inst, {"INNER"});
    SetNumber(inst, {"INNER", "A"}, "1");
    SetText(inst, {"INNER", "S"}, "one");
    OCIColl* pNums = Coll(inst, {"NUMS"});
    AppendNumber(pNums, "10");
    AppendNumber(pNums, "20");
    OCIColl* pIns = Coll(inst, {"INS"});
    Instance in = NewObject("K_IN_T");
    SetNumber(in, {"A"}, "2");
    SetText(in, {"S"}, "two");
    AppendObject(pIns, in);
    return inst;
  }

  static constexpr const char* kWhole = "7|seven|[1|one]|[10|20]|[[2|two]]|||";

  // -8 from the check, with its one line before the scopes it crossed.
  void ExpectMisfitOnWrite(DefList& defs, const Instance& inst, const std::string& line) {
    ClearTrace();
    ClearStream();
    KelClearLastException();
    EXPECT_EQ(-8, Write(defs.Head(), inst));
    EXPECT_EQ(Exception(-8, "CAdp::_CheckElementTree"), LastException());
    EXPECT_EQ(line + Scopes({"CAdp::_CheckElementTree", "adpProcessObject"}), Trace());
    EXPECT_EQ("", Stream());
  }
  void ExpectMisfitOnRead(DefList& defs, const std::string& text, OCIType* pTdo,
                          const std::string& line) {
    ClearTrace();
    KelClearLastException();
    const ReadResult r = ReadStream(defs.Head(), text, pTdo);
    EXPECT_EQ(-8, r.nRC);
    EXPECT_EQ(Exception(-8, "CAdp::_CheckElementTree"), LastException());
    EXPECT_EQ(line + Scopes({"CAdp::_CheckElementTree", "CAdp::ProcessStream", "adpProcessStream"}),
              Trace());
  }
  // After a refusal the context writes with a right list.
  void ExpectWholeWrite(const Instance& inst) {
    DefList& good = NewList();
    Whole(good);
    ClearStream();
    ASSERT_EQ(0, Write(good.Head(), inst)) << LastException() << Trace();
    EXPECT_EQ(kWhole, Stream());
  }
};

TEST_F(DefinitionCheckTest, AListEndingInsideAGroupIsRefusedOnEveryCall) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Number("ID", 4, 0);
  defs.Open("INNER", "SCOTT.K_IN_T");
  defs.Number("A", 3, 0);
  for (int nCall = 0; nCall < 2; ++nCall) {
    ClearTrace();
    ClearStream();
    EXPECT_EQ(-8, Write(defs.Head(), inst)) << nCall;
    EXPECT_EQ(Exception(-8, "CAdp::_BuildElementTree"), LastException());
    EXPECT_EQ("*ERR: definition list ends inside the group of 'INNER'\n" +
                  Scopes({"CAdp::_BuildElementTree", "adpProcessObject"}),
              Trace());
    EXPECT_EQ("", Stream());
  }
  ExpectWholeWrite(inst);
}

TEST_F(DefinitionCheckTest, AListEndingInsideAnInnerGroupIsRefusedWithEveryScope) {
  DefList& defs = NewList();
  defs.Open("INS", "SCOTT.K_INS_T", true);
  defs.Open(nullptr, "SCOTT.K_IN_T");
  defs.Number("A", 3, 0);
  const ReadResult r = ReadStream(defs.Head(), "[[1]]", Type("K_T"));
  EXPECT_EQ(-8, r.nRC);
  EXPECT_EQ(Exception(-8, "CAdp::_BuildElementTree"), LastException());
  // The innermost open group is the one the list ends in.
  EXPECT_EQ("*ERR: definition list ends inside the group of 'SCOTT.K_IN_T'\n" +
                Scopes({"CAdp::_BuildElementTree", "CAdp::_BuildElementTree", "CAdp::ProcessStream",
                        "adpProcessStream"}),
            Trace());
  EXPECT_EQ(nullptr, r.pInstance);
}

TEST_F(DefinitionCheckTest, AGroupEndingAtARecordWithoutADefinitionIsRefused) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Number("ID", 4, 0);
  defs.Open("INNER", "SCOTT.K_IN_T");
  defs.Number("A", 3, 0);
  defs.Add(0, "S", SQLT_CHR);  // the end of the list as a host marks it
  defs.Close();
  EXPECT_EQ(-8, Write(defs.Head(), inst));
  EXPECT_EQ("*ERR: definition list ends inside the group of 'INNER'\n" +
                Scopes({"CAdp::_BuildElementTree", "adpProcessObject"}),
            Trace());
  ExpectWholeWrite(inst);
}

TEST_F(DefinitionCheckTest, AClosingRecordAtTheTopLevelStillEndsTheList) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Number("ID", 4, 0);
  defs.Close();
  defs.Text("NAME", 10);
  ASSERT_EQ(0, Write(defs.Head(), inst)) << LastException();
  EXPECT_EQ("7", Stream());
}

// A chain of object types, each holding a number and the one before it.
class NestingTest : public DefinitionCheckTest {
 protected:
  void CreateChain(int nTypes) {
    MustExec("CREATE TYPE d0_t AS OBJECT (n NUMBER(5))");
    for (int i = 1; i < nTypes; ++i) {
      MustExec("CREATE TYPE d" + std::to_string(i) + "_t AS OBJECT (n NUMBER(5), inner d" +
               std::to_string(i - 1) + "_t)");
    }
  }
  // The list for d<nTop>_t: nTop groups, one inside the other.
  static void Chain(DefList& defs, int nTop) {
    for (int i = nTop; i > 0; --i) {
      defs.Number("N", 5, 0);
      defs.Open("INNER", nullptr);
    }
    defs.Number("N", 5, 0);
    for (int i = 0; i < nTop; ++i) defs.Close();
  }
  static std::string ChainText(int nTop) {
    std::string text;
    for (int i = nTop; i > 0; --i) text += std::to_string(i) + "|[";
    text += "0";
    text.append(static_cast<size_t>(nTop), ']');
    return text;
  }
};

TEST_F(NestingTest, GroupsNestedToTheLimitGoBothWays) {
  constexpr int kLimit = 1000;
  CreateChain(kLimit + 1);
  const std::string type = "D" + std::to_string(kLimit) + "_T";
  OCIType* pTdo = Type(type.c_str());
  DefList& defs = NewList();
  Chain(defs, kLimit);
  const std::string text = ChainText(kLimit);
  const ReadResult r = ReadStream(defs.Head(), text, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace().substr(0, 400);
  EXPECT_EQ("1000", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"N"}))));
  EXPECT_EQ("999", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"INNER", "N"}))));
  EXPECT_EQ(text, WriteBack(defs.Head(), r, pTdo));
}

TEST_F(NestingTest, GroupsNestedDeeperThanTheLimitAreRefused) {
  constexpr int kLimit = 1000;
  DefList& defs = NewList();
  Chain(defs, kLimit + 1);
  for (int nCall = 0; nCall < 2; ++nCall) {
    ClearTrace();
    const ReadResult r = ReadStream(defs.Head(), ChainText(kLimit + 1), Type("K_T"));
    EXPECT_EQ(-8, r.nRC);
    EXPECT_EQ(Exception(-8, "CAdp::_BuildElementTree"), LastException());
    const std::string trace = Trace();
    const std::string first = "*ERR: groups nested deeper than 1000 levels\n";
    ASSERT_GE(trace.size(), first.size());
    EXPECT_EQ(first, trace.substr(0, first.size()));
    // One scope line for every level entered, then the driver's and the entry's.
    std::string scopes;
    for (int i = 0; i <= kLimit; ++i) scopes += Scopes({"CAdp::_BuildElementTree"});
    EXPECT_EQ(first + scopes + Scopes({"CAdp::ProcessStream", "adpProcessStream"}), trace);
  }
  // A list of ten thousand levels is refused the same way, after the same
  // thousand levels. (Records are 1,424 bytes each: the list takes 43 MB.)
  constexpr size_t kLevels = 10000;
  std::vector<Column_Def> deep(3 * kLevels + 1);
  std::memset(deep.data(), 0, deep.size() * sizeof(Column_Def));
  char szN[] = "N";
  char szInner[] = "INNER";
  for (size_t i = 0; i < deep.size(); ++i) {
    Column_Def& def = deep[i];
    if (i < 2 * kLevels || i == 2 * kLevels) {
      const bool bGroup = i % 2 == 1 && i < 2 * kLevels;
      def.Flags = bGroup ? COLDEF_COMPLEX | COLDEF_DEFINED : COLDEF_DEFINED;
      def.DataType = bGroup ? SQLT_NTY : SQLT_NUM;
      def.ColumnName = bGroup ? szInner : szN;
    } else {
      def.Flags = COLDEF_END | COLDEF_DEFINED;
    }
    if (i + 1 < deep.size()) def.Next = &deep[i + 1];
  }
  ClearTrace();
  EXPECT_EQ(-8, ReadStream(deep.data(), "", Type("K_T")).nRC);
  EXPECT_EQ(Exception(-8, "CAdp::_BuildElementTree"), LastException());
  EXPECT_EQ(0u, Trace().find("*ERR: groups nested deeper than 1000 levels\n"));
  DefList& good = NewList();
  Whole(good);
  const ReadResult r = ReadStream(good.Head(), kWhole, Type("K_T"));
  ASSERT_EQ(0, r.nRC) << LastException();
  EXPECT_EQ(kWhole, WriteBack(good.Head(), r, Type("K_T")));
}

TEST_F(DefinitionCheckTest, ANumberDefinitionForATextAttributeIsRefusedBothWays) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Number("ID", 4, 0);
  defs.Number("NAME", 10, 0);
  ExpectMisfitOnWrite(defs, inst, "*ERR: the definition of 'NAME' does not fit its type\n");
  ExpectMisfitOnRead(defs, "1|2", Type("K_T"),
                     "*ERR: the definition of 'NAME' does not fit its type\n");
  ExpectWholeWrite(inst);
}

TEST_F(DefinitionCheckTest, AGroupForAScalarAttributeIsRefused) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Open("NAME", "SCOTT.K_IN_T");
  Inner(defs);
  defs.Close();
  ExpectMisfitOnWrite(defs, inst, "*ERR: the definition of 'NAME' does not fit its type\n");
}

TEST_F(DefinitionCheckTest, AScalarDefinitionForAnObjectOrACollectionIsRefused) {
  const Instance inst = Filled();
  DefList& object = NewList();
  object.Text("INNER", 10);
  ExpectMisfitOnWrite(object, inst, "*ERR: the definition of 'INNER' does not fit its type\n");
  DefList& coll = NewList();
  coll.Number("NUMS", 4, 0);
  ExpectMisfitOnRead(coll, "1", Type("K_T"),
                     "*ERR: the definition of 'NUMS' does not fit its type\n");
}

TEST_F(DefinitionCheckTest, ACollectionGroupForAnObjectAndAnObjectGroupForACollectionAreRefused) {
  const Instance inst = Filled();
  DefList& coll = NewList();
  coll.Open("INNER", "SCOTT.K_IN_T", true);
  coll.Number(nullptr, 3, 0);
  coll.Close();
  ExpectMisfitOnWrite(coll, inst, "*ERR: the definition of 'INNER' does not fit its type\n");
  DefList& object = NewList();
  object.Open("NUMS", "SCOTT.K_NUMS_T");
  object.Number("A", 4, 0);
  object.Close();
  ExpectMisfitOnRead(object, "[1]", Type("K_T"),
                     "*ERR: the definition of 'NUMS' does not fit its type\n");
}

TEST_F(DefinitionCheckTest, AnItemOfAnotherKindThanTheElementsIsRefused) {
  const Instance inst = Filled();
  DefList& text = NewList();
  text.Open("NUMS", "SCOTT.K_NUMS_T", true);
  text.Text(nullptr, 4);
  text.Close();
  ExpectMisfitOnWrite(text, inst, "*ERR: the definition of 'NUMS' does not fit its type\n");
  DefList& number = NewList();
  number.Open("INS", "SCOTT.K_INS_T", true);
  number.Number(nullptr, 3, 0);
  number.Close();
  ExpectMisfitOnRead(number, "[1]", Type("K_T"),
                     "*ERR: the definition of 'INS' does not fit its type\n");
}

TEST_F(DefinitionCheckTest, AnItemNamingAnotherExistingTypeIsRefused) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Open("INS", "SCOTT.K_INS_T", true);
  defs.Open(nullptr, "SCOTT.K_OTHER_T");
  Inner(defs);
  defs.Close();
  defs.Close();
  ExpectMisfitOnWrite(defs, inst, "*ERR: the definition of 'INS' does not fit its type\n");
  ExpectMisfitOnRead(defs, "[[1|x]]", Type("K_T"),
                     "*ERR: the definition of 'INS' does not fit its type\n");
  // The bare name of the right type fits.
  DefList& bare = NewList();
  bare.Open("INS", "SCOTT.K_INS_T", true);
  bare.Open(nullptr, "K_IN_T");
  Inner(bare);
  bare.Close();
  bare.Close();
  ClearStream();
  ASSERT_EQ(0, Write(bare.Head(), inst)) << LastException() << Trace();
  EXPECT_EQ("[[2|two]]", Stream());
}

TEST_F(DefinitionCheckTest, ALargeObjectOfTheOtherKindIsRefused) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Scalar("B", SQLT_CLOB, 112, 4000);
  ExpectMisfitOnWrite(defs, inst, "*ERR: the definition of 'B' does not fit its type\n");
  DefList& blob = NewList();
  blob.Scalar("C", SQLT_BLOB, 113, 4000);
  ExpectMisfitOnRead(blob, "0|", Type("K_T"), "*ERR: the definition of 'C' does not fit its type\n");
}

TEST_F(DefinitionCheckTest, ATimestampOfAnotherKindIsRefused) {
  DefList& defs = NewList();
  defs.Scalar("TS", SQLT_TIMESTAMP, 187, 11, 26, 0, 6);
  defs.Scalar("TZ", SQLT_TIMESTAMP, 187, 11, 26, 0, 3);
  ExpectMisfitOnRead(defs, "2020-05-06 07:08:09.000000|2020-05-06 07:08:09.000",
                     Type("K_TIME_T"), "*ERR: the definition of 'TZ' does not fit its type\n");
}

TEST_F(DefinitionCheckTest, ARootOfTheOtherKindIsRefused) {
  DefList& defs = NewList();
  defs.Number(nullptr, 4, 0);
  ExpectMisfitOnRead(defs, "1", Type("K_IN_T"), "*ERR: the definitions do not fit the type\n");
  DefList& object = NewList();
  object.Number("A", 4, 0);
  ExpectMisfitOnRead(object, "1", Type("K_NUMS_T"), "*ERR: the definitions do not fit the type\n");
}

TEST_F(DefinitionCheckTest, AnAttributeTheTypeLacksIsLeftToTheNavigation) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Number("ID", 4, 0);
  defs.Number("NOSUCH", 4, 0);
  ClearStream();
  EXPECT_EQ(-24, Write(defs.Head(), inst));
  EXPECT_EQ(Exception(-24, "CAdp::_OraGetChild"), LastException());
}

TEST_F(DefinitionCheckTest, UnsupportedTypesAreLeftToTheConversions) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  defs.Scalar("ID", SQLT_REF, 0, 0);
  EXPECT_EQ(-1101, Write(defs.Head(), inst));
  EXPECT_EQ("-1101|CAdp::_OraFieldToStream|Unsupported data type", LastException());
}

TEST_F(DefinitionCheckTest, TheSameListWithAnotherTypeIsCheckedAgain) {
  MustExec("CREATE TYPE k_swap_t AS OBJECT (a VARCHAR2(3), s NUMBER(10))");
  DefList& defs = NewList();
  Inner(defs);
  const ReadResult r = ReadStream(defs.Head(), "1|x", Type("K_IN_T"));
  ASSERT_EQ(0, r.nRC) << LastException();
  ExpectMisfitOnRead(defs, "1|x", Type("K_SWAP_T"),
                     "*ERR: the definition of 'A' does not fit its type\n");
}

TEST_F(DefinitionCheckTest, AListIsDescribedOncePerTypeAndAFailedDescribeIsADatabaseError) {
  const Instance inst = Filled();
  DefList& defs = NewList();
  Whole(defs);
  ASSERT_EQ(0, Write(defs.Head(), inst)) << LastException();
  // Every describe fails from here on: the same list and type need none.
  const sb4 code = 4043;
  const char* message = "object does not exist";
  ocimemFaultArm("OCIDescribeAny", 0, OCI_ERROR, &code, &message, 1);
  ClearStream();
  ASSERT_EQ(0, Write(defs.Head(), inst)) << LastException();
  EXPECT_EQ(kWhole, Stream());
  DefList& again = NewList();
  Whole(again);
  ClearTrace();
  EXPECT_EQ(-24, Write(again.Head(), inst));
  EXPECT_EQ(Exception(-24, "CAdp::_CheckElementTree"), LastException());
  EXPECT_EQ(0u, Trace().find("Error (-1) returned by OCIDescribeAny, errcode=4043\n"
                             "ORA-04043: object does not exist\n"))
      << Trace();
  ocimemFaultReset();
  ClearStream();
  ASSERT_EQ(0, Write(again.Head(), inst)) << LastException();
  EXPECT_EQ(kWhole, Stream());
}

// Overwrites a list's records as a host's freed memory may be, keeping the
// memory itself, so that any later read of it goes astray.
void Scribble(DefList& defs) {
  for (size_t i = 0; i < defs.size(); ++i) std::memset(&defs[i], 0xA5, sizeof(Column_Def));
}

TEST_F(DefinitionCheckTest, ANewListAfterTheOldOneWasFreedReadsNothingOfTheOld) {
  const Instance inst = Filled();
  OCIType* pTdo = Type("K_T");
  auto old = std::make_unique<DefList>();
  Whole(*old);
  ReadResult r = ReadStream(old->Head(), kWhole, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException();
  Scribble(*old);
  DefList& fresh = NewList();
  Whole(fresh);
  r = ReadStream(fresh.Head(), "8|eight|[3|three]|[30]|[[4|four]|[5|five]]|||", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("8|eight|[3|three]|[30]|[[4|four]|[5|five]]|||", WriteBack(fresh.Head(), r, pTdo));
  Scribble(fresh);
  old.reset();
  DefList& third = NewList();
  Whole(third);
  ClearStream();
  ASSERT_EQ(0, Write(third.Head(), inst)) << LastException();
  EXPECT_EQ(kWhole, Stream());
}

TEST_F(DefinitionCheckTest, DestroyingTheContextReadsNothingOfTheList) {
  OCIType* pTdo = Type("K_T");
  auto defs = std::make_unique<DefList>();
  Whole(*defs);
  const ReadResult r = ReadStream(defs->Head(), kWhole, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException();
  Scribble(*defs);
  defs.reset();
  EXPECT_EQ(0, adpDestroyContext(ctx_, &trace_));
  ctx_ = nullptr;
  EXPECT_EQ("", Trace());
}

TEST_F(DefinitionCheckTest, RootsOfAnotherKindAfterAListChangeAreMadeAfresh) {
  OCIType* pNums = Type("K_NUMS_T");
  OCIType* pIns = Type("K_INS_T");
  OCIType* pIn = Type("K_IN_T");
  DefList& nums = NewList();
  nums.Number(nullptr, 4, 0);
  DefList& ins = NewList();
  ins.Open(nullptr, "SCOTT.K_IN_T");
  Inner(ins);
  ins.Close();
  DefList& in = NewList();
  Inner(in);
  ReadResult r = ReadStream(nums.Head(), "1|2|3", pNums);
  ASSERT_EQ(0, r.nRC) << LastException();
  EXPECT_EQ("1|2|3", WriteBack(nums.Head(), r, pNums, true));
  // Another collection type: not the numbers' collection refilled.
  r = ReadStream(ins.Head(), "[4|four]|[5|five]", pIns);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("[4|four]|[5|five]", WriteBack(ins.Head(), r, pIns, true));
  r = ReadStream(in.Head(), "6|six", pIn);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("6|six", WriteBack(in.Head(), r, pIn));
  r = ReadStream(nums.Head(), "7", pNums);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("7", WriteBack(nums.Head(), r, pNums, true));
}

}  // namespace
}  // namespace adapter_test
