// The structure of the stream on output: group marks, delimiters and what a
// null contributes, at every depth.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class WriterTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE w_inner_t AS OBJECT (a VARCHAR2(10), b NUMBER(5), c VARCHAR2(10))");
    MustExec("CREATE TYPE w_nums_t AS VARRAY(10) OF NUMBER(5)");
    MustExec("CREATE TYPE w_outer_t AS OBJECT (s VARCHAR2(10), inner w_inner_t, nums w_nums_t, "
             "t VARCHAR2(10))");
    MustExec("CREATE TYPE w_one_t AS OBJECT (s VARCHAR2(10))");
    defs_.Text("S", 10);
    defs_.Open("INNER", "SCOTT.W_INNER_T");
    defs_.Text("A", 10);
    defs_.Number("B", 5, 0);
    defs_.Text("C", 10);
    defs_.Close();
    defs_.Open("NUMS", "SCOTT.W_NUMS_T", true);
    defs_.Number(nullptr, 5, 0);
    defs_.Close();
    defs_.Text("T", 10);
  }
  DefList defs_;
};

TEST_F(WriterTest, NullRootWritesNothing) {
  Instance outer = NewObject("W_OUTER_T");
  SetText(outer, {"S"}, "x");
  outer.pInd[0] = OCI_IND_NULL;
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  EXPECT_EQ("", Stream());
}

TEST_F(WriterTest, NullRootByOwnIndicatorWithoutNullStructureWritesNothing) {
  Instance outer = NewObject("W_OUTER_T");
  ASSERT_EQ(0, Write(defs_.Head(), outer.pObject, nullptr, outer.pTdo, OCI_IND_NULL))
      << LastException();
  EXPECT_EQ("", Stream());
}

TEST_F(WriterTest, AllAttributesNullWriteOnlyDelimiters) {
  Instance outer = NewObject("W_OUTER_T");
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  // Four attributes, three delimiters; the null nested object and the null
  // collection are empty fields.
  EXPECT_EQ("|||", Stream());
}

TEST_F(WriterTest, RootWithOneScalarWritesTheFieldAlone) {
  DefList one;
  one.Text("S", 10);
  Instance inst = NewObject("W_ONE_T");
  SetText(inst, {"S"}, "alone");
  ASSERT_EQ(0, Write(one.Head(), inst)) << LastException();
  EXPECT_EQ("alone", Stream());
}

TEST_F(WriterTest, PresentNestedObjectWithNullAttributesWritesMarksAndDelimiters) {
  Instance outer = NewObject("W_OUTER_T");
  Mark(outer, {"INNER"});
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  EXPECT_EQ("|[||]||", Stream());
}

TEST_F(WriterTest, EmptyCollectionIsAGroupWithNothingInside) {
  Instance outer = NewObject("W_OUTER_T");
  Coll(outer, {"NUMS"});
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  EXPECT_EQ("||[]|", Stream());
}

TEST_F(WriterTest, NullItemsInCollectionAreEmptyFields) {
  Instance outer = NewObject("W_OUTER_T");
  OCIColl* pNums = Coll(outer, {"NUMS"});
  AppendNumber(pNums, "1");
  AppendNumber(pNums, "0", OCI_IND_NULL);
  AppendNumber(pNums, "3");
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  EXPECT_EQ("||[1||3]|", Stream());
}

TEST_F(WriterTest, NothingAtAllUnderANullNestedObject) {
  Instance outer = NewObject("W_OUTER_T");
  SetText(outer, {"INNER", "A"}, "hidden");
  SetNumber(outer, {"INNER", "B"}, "7");
  Mark(outer, {"INNER"}, OCI_IND_NULL);
  SetText(outer, {"T"}, "end");
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  EXPECT_EQ("|||end", Stream());
}

TEST_F(WriterTest, BadNullIndicatorCountsAsPresent) {
  Instance outer = NewObject("W_OUTER_T");
  SetText(outer, {"S"}, "v");
  Mark(outer, {"S"}, OCI_IND_BADNULL);
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  EXPECT_EQ("v|||", Stream());
}

TEST_F(WriterTest, CollectionAsRootWritesItemsWithoutMarks) {
  DefList items;
  items.Number(nullptr, 5, 0);
  OCIColl* pNums = NewCollection("W_NUMS_T");
  AppendNumber(pNums, "10");
  AppendNumber(pNums, "20");
  AppendNumber(pNums, "30");
  ASSERT_EQ(0, Write(items.Head(), pNums, nullptr, Type("W_NUMS_T"))) << LastException();
  EXPECT_EQ("10|20|30", Stream());
}

TEST_F(WriterTest, EmptyCollectionAsRootWritesNothing) {
  DefList items;
  items.Number(nullptr, 5, 0);
  OCIColl* pNums = NewCollection("W_NUMS_T");
  ASSERT_EQ(0, Write(items.Head(), pNums, nullptr, Type("W_NUMS_T"))) << LastException();
  EXPECT_EQ("", Stream());
}

TEST_F(WriterTest, WritesAtTheStreamsPositionAndNothingAfter) {
  stream_.Write("head:", 5);
  Instance outer = NewObject("W_OUTER_T");
  SetText(outer, {"S"}, "a");
  ASSERT_EQ(0, Write(defs_.Head(), outer)) << LastException();
  EXPECT_EQ("head:a|||", Stream());
  EXPECT_EQ(9, stream_.Tell());
}

TEST_F(WriterTest, HostsListPointerIsAdvancedPastTheDefinitions) {
  Instance outer = NewObject("W_OUTER_T");
  Column_Def* pList = defs_.Head();
  ASSERT_EQ(0, adpProcessObject(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, outer.pObject,
                                outer.pInd, 0, outer.pTdo));
  EXPECT_EQ(nullptr, pList);
  // Passed again as it now stands, the list is refused by the set-up.
  EXPECT_EQ(-8, adpProcessObject(ctx_, &trace_, &stream_, &pList, env_, err_, svc_,
                                 outer.pObject, outer.pInd, 0, outer.pTdo));
  EXPECT_EQ("-8|CAdp::_Init|" + std::string(KelGetErrorText(-8)), LastException());
}

}  // namespace
}  // namespace adapter_test
