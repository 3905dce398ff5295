// Developing the element tree over an instance: one node per attribute and
// per collection item present, reused across calls with the same list,
// rebuilt for a new list; fetching attributes and items one step at a time.
#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class DevelopTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE d_nums_t AS TABLE OF NUMBER(5)");
    MustExec("CREATE TYPE d_line_t AS OBJECT (sku VARCHAR2(10), tags d_nums_t)");
    MustExec("CREATE TYPE d_lines_t AS VARRAY(20) OF d_line_t");
    MustExec("CREATE TYPE d_order_t AS OBJECT (id NUMBER(5), nums d_nums_t, lines d_lines_t)");
    defs_.Number("ID", 5, 0);
    defs_.Open("NUMS", "SCOTT.D_NUMS_T", true);
    defs_.Number(nullptr, 5, 0);
    defs_.Close();
    defs_.Open("LINES", "SCOTT.D_LINES_T", true);
    defs_.Open(nullptr, "SCOTT.D_LINE_T");
    defs_.Text("SKU", 10);
    defs_.Open("TAGS", "SCOTT.D_NUMS_T", true);
    defs_.Number(nullptr, 5, 0);
    defs_.Close();
    defs_.Close();
    defs_.Close();
  }

  CAdpTree& Root() { return static_cast<CAdp*>(ctx_)->_GetTree(); }
  static int Children(CAdpTree& node) {
    int n = 0;
    for (CAdpTree* p = node.GetFirstChild(); p != nullptr; p = p->GetNextSibling()) ++n;
    return n;
  }
  static CAdpTree& Child(CAdpTree& node, int n) {
    CAdpTree* p = node.GetFirstChild();
    while (n-- > 0) p = p->GetNextSibling();
    return *p;
  }

  Instance Order(int nNums, int nLines, int nTags) {
    Instance order = NewObject("D_ORDER_T");
    SetNumber(order, {"ID"}, "1");
    OCIColl* pNums = Coll(order, {"NUMS"});
    for (int i = 0; i < nNums; ++i) AppendNumber(pNums, std::to_string(i + 1).c_str());
    OCIColl* pLines = Coll(order, {"LINES"});
    for (int i = 0; i < nLines; ++i) {
      Instance line = NewObject("D_LINE_T");
      SetText(line, {"SKU"}, "s" + std::to_string(i));
      OCIColl* pTags = Coll(line, {"TAGS"});
      for (int t = 0; t < nTags; ++t) AppendNumber(pTags, std::to_string(10 * i + t).c_str());
      AppendObject(pLines, line);
    }
    return order;
  }

  DefList defs_;
};

TEST_F(DevelopTest, ThreeItemsThenOneItemOnTheSameTree) {
  ASSERT_EQ(0, Write(defs_.Head(), Order(3, 0, 0))) << LastException() << Trace();
  EXPECT_EQ("1|[1|2|3]|[]", Stream());
  EXPECT_EQ(3, Children(Child(Root(), 1)));
  ClearStream();
  ASSERT_EQ(0, Write(defs_.Head(), Order(1, 0, 0))) << LastException();
  EXPECT_EQ("1|[1]|[]", Stream());
  EXPECT_EQ(1, Children(Child(Root(), 1)));
}

TEST_F(DevelopTest, EmptyCollectionLeavesItsNodeWithoutChildren) {
  ASSERT_EQ(0, Write(defs_.Head(), Order(0, 0, 0))) << LastException();
  EXPECT_EQ("1|[]|[]", Stream());
  EXPECT_EQ(0, Children(Child(Root(), 1)));
  EXPECT_EQ(0, Children(Child(Root(), 2)));
}

TEST_F(DevelopTest, CollectionsWidenedAndCutBetweenCalls) {
  const int sizes[] = {2, 5, 0, 1, 4};
  for (int n : sizes) {
    ClearStream();
    ASSERT_EQ(0, Write(defs_.Head(), Order(n, n, n))) << LastException();
    std::string nums = "[";
    std::string lines = "[";
    for (int i = 0; i < n; ++i) {
      nums += (i ? "|" : "") + std::to_string(i + 1);
      lines += (i ? "|[s" : "[s") + std::to_string(i) + "|[";
      for (int t = 0; t < n; ++t) lines += (t ? "|" : "") + std::to_string(10 * i + t);
      lines += "]]";
    }
    EXPECT_EQ("1|" + nums + "]|" + lines + "]", Stream()) << n;
    EXPECT_EQ(n, Children(Child(Root(), 1)));
    EXPECT_EQ(n, Children(Child(Root(), 2)));
  }
}

TEST_F(DevelopTest, ItemsOfObjectsHoldingCollectionsEachGetTheirOwn) {
  Instance order = NewObject("D_ORDER_T");
  OCIColl* pLines = Coll(order, {"LINES"});
  const int tags[] = {3, 0, 1};
  for (int i = 0; i < 3; ++i) {
    Instance line = NewObject("D_LINE_T");
    SetText(line, {"SKU"}, "s" + std::to_string(i));
    OCIColl* pTags = Coll(line, {"TAGS"});
    for (int t = 0; t < tags[i]; ++t) AppendNumber(pTags, std::to_string(t).c_str());
    if (i == 1) Mark(line, {"TAGS"}, OCI_IND_NULL);
    AppendObject(pLines, line);
  }
  ASSERT_EQ(0, Write(defs_.Head(), order)) << LastException();
  EXPECT_EQ("||[[s0|[0|1|2]]|[s1|]|[s2|[0]]]", Stream());
}

TEST_F(DevelopTest, NullItemsOfObjectsAreEmptyFields) {
  Instance order = NewObject("D_ORDER_T");
  OCIColl* pLines = Coll(order, {"LINES"});
  Instance line = NewObject("D_LINE_T");
  SetText(line, {"SKU"}, "a");
  AppendObject(pLines, line);
  line.pInd[0] = OCI_IND_NULL;
  AppendObject(pLines, line);
  line.pInd[0] = OCI_IND_NOTNULL;
  AppendObject(pLines, line);
  ASSERT_EQ(0, Write(defs_.Head(), order)) << LastException();
  EXPECT_EQ("||[[a|]||[a|]]", Stream());
}

TEST_F(DevelopTest, SameListAddressBuildsTheTreeOnce) {
  ASSERT_EQ(0, Write(defs_.Head(), Order(1, 1, 1)));
  CAdpTree* pFirst = Root().GetFirstChild();
  // Changing the list at the same address goes unseen: the tree is kept.
  defs_[0].Flags = 0;
  ClearStream();
  ASSERT_EQ(0, Write(defs_.Head(), Order(1, 1, 1)));
  EXPECT_EQ(pFirst, Root().GetFirstChild());
  EXPECT_EQ("1|[1]|[[s0|[0]]]", Stream());
}

TEST_F(DevelopTest, NewListAddressRebuildsTheTree) {
  ASSERT_EQ(0, Write(defs_.Head(), Order(2, 1, 1)));
  DefList other;
  other.Number("ID", 5, 0);
  ClearStream();
  ASSERT_EQ(0, Write(other.Head(), Order(2, 1, 1))) << LastException();
  EXPECT_EQ("1", Stream());
  EXPECT_EQ(1, Children(Root()));
  ClearStream();
  ASSERT_EQ(0, Write(defs_.Head(), Order(2, 1, 1))) << LastException();
  EXPECT_EQ("1|[1|2]|[[s0|[0]]]", Stream());
}

TEST_F(DevelopTest, ScalarItemsSkipTheTypeLookupAndIterateWithOneIterator) {
  DefList nums;
  nums.Open("NUMS", "SCOTT.D_NUMS_T", true);
  nums.Number(nullptr, 5, 0);
  nums.Close();
  Instance order = NewObject("D_ORDER_T");
  OCIColl* pNums = Coll(order, {"NUMS"});
  for (const char* p : {"4", "5", "6", "7"}) AppendNumber(pNums, p);
  // Any type lookup would fail, and a second iterator could not be made.
  ocimemFaultArm("OCITypeByName", 0, OCI_ERROR, nullptr, nullptr, 0);
  ocimemFaultArm("OCIIterCreate", 2, OCI_ERROR, nullptr, nullptr, 0);
  ASSERT_EQ(0, Write(nums.Head(), order)) << LastException() << Trace();
  EXPECT_EQ("[4|5|6|7]", Stream());
}

TEST_F(DevelopTest, ObjectItemsLookTheirTypeUpOncePerItem) {
  // Three items take four lookups: one before each fetch, the last one
  // finding the end of the collection.
  Instance order = Order(0, 3, 0);
  ocimemFaultArm("OCITypeByName", 4, OCI_ERROR, nullptr, nullptr, 0);
  EXPECT_EQ(-24, Write(defs_.Head(), order));
  ocimemFaultReset();
  ocimemFaultArm("OCITypeByName", 5, OCI_ERROR, nullptr, nullptr, 0);
  ClearStream();
  EXPECT_EQ(0, Write(defs_.Head(), order)) << LastException();
}

TEST_F(DevelopTest, TypeNameWithTwoPointsSplitsAtTheFirst) {
  MustExec("CREATE TYPE \"P.Q\" AS OBJECT (x NUMBER(3))");
  MustExec("CREATE TYPE d_pqs_t AS TABLE OF \"P.Q\"");
  MustExec("CREATE TYPE d_holder_t AS OBJECT (pqs d_pqs_t)");
  DefList defs;
  defs.Open("PQS", "SCOTT.D_PQS_T", true);
  defs.Open(nullptr, "SCOTT.P.Q");
  defs.Number("X", 3, 0);
  defs.Close();
  defs.Close();
  Instance holder = NewObject("D_HOLDER_T");
  Instance pq = NewObject("P.Q");
  SetNumber(pq, {"X"}, "7");
  AppendObject(Coll(holder, {"PQS"}), pq);
  ASSERT_EQ(0, Write(defs.Head(), holder)) << LastException() << Trace();
  EXPECT_EQ("[[7]]", Stream());
  // The host's text is as it was.
  EXPECT_STREQ("SCOTT.P.Q", defs[1].TypeName);
}

TEST_F(DevelopTest, TypeNameWithoutSchemaIsLookedUpInTheSession) {
  DefList defs;
  defs.Open("LINES", "SCOTT.D_LINES_T", true);
  defs.Open(nullptr, "D_LINE_T");
  defs.Text("SKU", 10);
  defs.Close();
  defs.Close();
  ASSERT_EQ(0, Write(defs.Head(), Order(0, 2, 0))) << LastException() << Trace();
  EXPECT_EQ("[[s0]|[s1]]", Stream());
}

TEST_F(DevelopTest, EmptyCollectionFirstFetchFindsNoItem) {
  CAdp& adp = *static_cast<CAdp*>(ctx_);
  Instance order = Order(0, 0, 0);
  ASSERT_EQ(0, Write(defs_.Head(), order));
  CAdpTree& nums = Child(Root(), 1);
  CAdpTree& item = nums.NewAsLastChild();
  item.m_Data.m_pColumnDef = &defs_[2];
  nums.m_Data.m_pIter = nullptr;
  EXPECT_EQ(0, adp._OraGetNextCollItem(item, nums));
  // Emptying an empty collection trims nothing and succeeds.
  adp._OraEmptyColl(nums);
  sb4 nSize = -1;
  ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, *static_cast<OCIColl**>(nums.m_Data.m_pField),
                                     &nSize));
  EXPECT_EQ(0, nSize);
}

TEST_F(DevelopTest, DestroyingAnElementWithBothFlagsClearCallsNothing) {
  CAdp& adp = *static_cast<CAdp*>(ctx_);
  ASSERT_EQ(0, Write(defs_.Head(), Order(1, 0, 0)));
  ocimemFaultArm("OCIObjectFree", 1, OCI_ERROR, nullptr, nullptr, 0);
  ocimemFaultArm("OCIObjectUnpin", 1, OCI_ERROR, nullptr, nullptr, 0);
  CAdpTree& id = Child(Root(), 0);
  ASSERT_NE(nullptr, id.m_Data.m_pField);
  adp._OraDestroyObject(id);
  EXPECT_EQ(nullptr, id.m_Data.m_pField);
  EXPECT_EQ(nullptr, id.m_Data.m_pInd);
  EXPECT_EQ(OCI_IND_NULL, id.m_Data.m_nInd);
  // Both faults are still armed: neither call was made.
  void* pObject = nullptr;
  EXPECT_EQ(OCI_ERROR, OCIObjectFree(env_, err_, &pObject, OCI_OBJECTFREE_FORCE));
  EXPECT_EQ(OCI_ERROR, OCIObjectUnpin(env_, err_, Type("D_LINE_T")));
}

TEST_F(DevelopTest, IteratorsGoWhenTheCallEnds) {
  Instance order = Order(2, 2, 1);
  OCIColl* pNums = Coll(order, {"NUMS"});
  // Armed for the fifth OCIIterDelete: the call deletes the four iterators
  // it made (NUMS, LINES and the TAGS of two lines), so the fifth delete is
  // the test's own.
  ocimemFaultArm("OCIIterDelete", 5, OCI_ERROR, nullptr, nullptr, 0);
  ASSERT_EQ(0, Write(defs_.Head(), order)) << LastException();
  OCIIter* pIter = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIIterCreate(env_, err_, pNums, &pIter));
  EXPECT_EQ(OCI_ERROR, OCIIterDelete(env_, err_, &pIter));
  ocimemFaultReset();
  EXPECT_EQ(OCI_SUCCESS, OCIIterDelete(env_, err_, &pIter));
  // Written again, the same object gets its iterators anew.
  ClearStream();
  ASSERT_EQ(0, Write(defs_.Head(), order)) << LastException();
  EXPECT_EQ("1|[1|2]|[[s0|[0]]|[s1|[10]]]", Stream());
}

TEST_F(DevelopTest, AttributesAreReadThroughTheirOwnIndicator) {
  ASSERT_EQ(0, Write(defs_.Head(), Order(1, 0, 0)));
  CAdpTree& id = Child(Root(), 0);
  EXPECT_EQ(&id.m_Data.m_nInd, id.m_Data.m_pInd);
  CAdpTree& nums = Child(Root(), 1);
  EXPECT_EQ(&nums.m_Data.m_nInd, nums.m_Data.m_pInd);
  EXPECT_NE(nullptr, nums.m_Data.m_pTdo);
}

}  // namespace
}  // namespace adapter_test
