// The element tree built from a Column_Def list, its predicates, the two
// address conversions and the removal of surplus nodes.
#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class ElementTreeTest : public ::testing::Test {
 protected:
  CAdpTree& Build(Column_Def* pDef, Column_Def** ppEnd = nullptr) {
    CAdpTree& root = adp_._GetTree();
    adp_._BuildElementTree(root, pDef);
    if (ppEnd != nullptr) *ppEnd = pDef;
    return root;
  }
  static std::vector<std::string> Names(CAdpTree& node) {
    std::vector<std::string> names;
    for (CAdpTree* p = node.GetFirstChild(); p != nullptr; p = p->GetNextSibling()) {
      const char* psz = p->m_Data.m_pColumnDef->ColumnName;
      names.push_back(psz != nullptr ? psz : "(item)");
    }
    return names;
  }
  static CAdpTree& Child(CAdpTree& node, int n) {
    CAdpTree* p = node.GetFirstChild();
    while (n-- > 0) p = p->GetNextSibling();
    return *p;
  }
  CAdp adp_{nullptr};
};

TEST_F(ElementTreeTest, NullListYieldsARootWithoutChildren) {
  EXPECT_EQ(nullptr, Build(nullptr).GetFirstChild());
}

TEST_F(ElementTreeTest, ListStartingWithAnUndefinedRecordYieldsNoChildren) {
  DefList defs;
  defs.Add(0, "X", SQLT_CHR);
  defs.Text("Y");
  Column_Def* pEnd = nullptr;
  EXPECT_EQ(nullptr, Build(defs.Head(), &pEnd).GetFirstChild());
  EXPECT_EQ(&defs[0], pEnd);
}

TEST_F(ElementTreeTest, LeavesYieldOneChildEachUntilTheFirstUndefinedRecord) {
  DefList defs;
  defs.Text("A");
  defs.Number("B", 5, 0);
  defs.Date("C");
  defs.Add(0, "STOP", SQLT_CHR);
  defs.Text("AFTER");
  Column_Def* pEnd = nullptr;
  CAdpTree& root = Build(defs.Head(), &pEnd);
  EXPECT_EQ((std::vector<std::string>{"A", "B", "C"}), Names(root));
  EXPECT_EQ(&defs[3], pEnd);
}

TEST_F(ElementTreeTest, NestedObjectHasItsOwnChildrenAndLaterMembersAreSiblings) {
  DefList defs;
  defs.Text("A");
  defs.Open("INNER", "S.T");
  defs.Text("X");
  defs.Text("Y");
  defs.Close();
  defs.Text("B");
  Column_Def* pEnd = reinterpret_cast<Column_Def*>(1);
  CAdpTree& root = Build(defs.Head(), &pEnd);
  EXPECT_EQ((std::vector<std::string>{"A", "INNER", "B"}), Names(root));
  EXPECT_EQ((std::vector<std::string>{"X", "Y"}), Names(Child(root, 1)));
  EXPECT_EQ(nullptr, pEnd);
  EXPECT_TRUE(adp_._IsAdt(Child(root, 1)));
  EXPECT_FALSE(adp_._IsColl(Child(root, 1)));
  EXPECT_NE(0, adp_._IsComplex(Child(root, 1)));
  EXPECT_EQ(0, adp_._IsComplex(Child(root, 0)));
}

TEST_F(ElementTreeTest, BuildingStopsAtTheClosingRecordOfTheLevel) {
  DefList defs;
  defs.Text("A");
  defs.Close();
  defs.Text("B");
  Column_Def* pEnd = nullptr;
  CAdpTree& root = Build(defs.Head(), &pEnd);
  EXPECT_EQ((std::vector<std::string>{"A"}), Names(root));
  EXPECT_EQ(&defs[1], pEnd);
}

TEST_F(ElementTreeTest, CollectionHasOneItemChildAtBuildTime) {
  DefList defs;
  defs.Open("NUMS", "S.NUMS_T", true);
  defs.Number(nullptr, 5, 0);
  defs.Close();
  CAdpTree& root = Build(defs.Head());
  CAdpTree& coll = Child(root, 0);
  EXPECT_EQ((std::vector<std::string>{"(item)"}), Names(coll));
  EXPECT_TRUE(adp_._IsColl(coll));
  EXPECT_FALSE(adp_._IsAdt(coll));
  CAdpTree& item = Child(coll, 0);
  EXPECT_TRUE(adp_._InColl(item));
  EXPECT_FALSE(adp_._HasColumnName(item));
  EXPECT_TRUE(adp_._HasColumnName(coll));
}

TEST_F(ElementTreeTest, CollectionOfObjectsHoldingCollections) {
  DefList defs;
  defs.Open("LINES", "S.LINES_T", true);
  defs.Open(nullptr, "S.LINE_T");
  defs.Text("SKU");
  defs.Open("TAGS", "S.TAGS_T", true);
  defs.Text(nullptr);
  defs.Close();
  defs.Close();
  defs.Close();
  defs.Text("AFTER");
  CAdpTree& root = Build(defs.Head());
  EXPECT_EQ((std::vector<std::string>{"LINES", "AFTER"}), Names(root));
  CAdpTree& item = Child(Child(root, 0), 0);
  EXPECT_EQ((std::vector<std::string>{"SKU", "TAGS"}), Names(item));
  EXPECT_TRUE(adp_._IsNestedColl(item));
  EXPECT_FALSE(adp_._IsNestedColl(Child(root, 0)));
}

TEST_F(ElementTreeTest, NestedCollectionTestNeedsAComplexItemWithACollectionChild) {
  DefList defs;
  defs.Open("LINES", "S.LINES_T", true);
  defs.Open(nullptr, "S.LINE_T");
  defs.Text("SKU");
  defs.Close();
  defs.Close();
  CAdpTree& root = Build(defs.Head());
  CAdpTree& item = Child(Child(root, 0), 0);
  EXPECT_FALSE(adp_._IsNestedColl(item));
  EXPECT_FALSE(adp_._IsNestedColl(Child(item, 0)));
  // A complex item without children.
  item.DeleteChildren();
  EXPECT_FALSE(adp_._IsNestedColl(item));
}

TEST_F(ElementTreeTest, TopLevelCollectionIsDecidedByTheFirstDefinition) {
  DefList defs;
  defs.Number(nullptr, 5, 0);
  Column_Def root;
  std::memset(&root, 0, sizeof root);
  root.Flags = COLDEF_COMPLEX;
  root.Next = defs.Head();
  CAdpElementData data;
  data.m_pColumnDef = &root;
  EXPECT_TRUE(data.IsColl());
  defs[0].InCollection = 0;
  EXPECT_FALSE(data.IsColl());
  EXPECT_TRUE(data.IsAdt());
}

TEST_F(ElementTreeTest, RootIsTheTopLevelElement) {
  CAdpTree& root = Build(nullptr);
  EXPECT_EQ(-1, adp_._IsTopLevel(root));
  DefList defs;
  defs.Text("A");
  Build(defs.Head());
  EXPECT_EQ(0, adp_._IsTopLevel(Child(root, 0)));
}

TEST_F(ElementTreeTest, OnlyMinusOneIsNull) {
  DefList defs;
  defs.Text("A");
  CAdpElementData data;
  data.m_pColumnDef = defs.Head();
  EXPECT_TRUE(data.IsNull());  // m_nInd starts at -1
  OCIInd nInd = OCI_IND_BADNULL;
  data.m_pInd = &nInd;
  EXPECT_FALSE(data.IsNull());
  nInd = OCI_IND_NOTNULL;
  EXPECT_FALSE(data.IsNull());
  nInd = OCI_IND_NULL;
  EXPECT_TRUE(data.IsNull());
  data.m_pInd = nullptr;
  data.m_nInd = 5;
  EXPECT_FALSE(data.IsNull());
}

TEST_F(ElementTreeTest, FieldAndStructConversionsForInPlaceAndHandleTypes) {
  DefList defs;
  defs.Number("N", 5, 0);
  defs.Text("S");
  CAdpElementData number;
  number.m_pColumnDef = &defs[0];
  CAdpElementData text;
  text.m_pColumnDef = &defs[1];
  int value = 0;
  number.m_pStruct = &value;
  number.m_pField = &value;
  text.m_pStruct = &value;
  text.m_pField = &text.m_pStruct;
  EXPECT_EQ(&value, number.FieldToStruct());
  EXPECT_EQ(&text.m_pStruct, text.FieldToStruct());
  EXPECT_EQ(&number.m_pField, number.StructToField());
  EXPECT_EQ(&text.m_pStruct, text.StructToField());
}

TEST_F(ElementTreeTest, EveryHandleTypeIsKeptBehindAPointer) {
  const unsigned short handles[] = {1, 8, 23, 24, 94, 96, 112, 113, 187, 188, 189, 190, 232};
  const unsigned short inPlace[] = {2, 12, 108, 110, 114, 122, 100};
  DefList defs;
  Column_Def& def = defs.Text("X");
  CAdpElementData data;
  data.m_pColumnDef = &def;
  for (unsigned short n : handles) {
    def.DataType = n;
    EXPECT_TRUE(data.IsHandleType()) << n;
  }
  for (unsigned short n : inPlace) {
    def.DataType = n;
    EXPECT_FALSE(data.IsHandleType()) << n;
  }
}

TEST_F(ElementTreeTest, LobPredicates) {
  DefList defs;
  Column_Def& def = defs.Text("X");
  CAdpElementData data;
  data.m_pColumnDef = &def;
  def.DataType = SQLT_CLOB;
  EXPECT_TRUE(data.IsLob());
  EXPECT_TRUE(data.IsClob());
  def.DataType = SQLT_BLOB;
  EXPECT_TRUE(data.IsLob());
  EXPECT_FALSE(data.IsClob());
  def.DataType = SQLT_BFILEE;
  EXPECT_FALSE(data.IsLob());
}

TEST_F(ElementTreeTest, ClearOraObjectsKeepsDefinitionTopLevelAndLobPosition) {
  DefList defs;
  defs.Text("A");
  CAdpElementData data;
  int dummy = 0;
  data.m_pColumnDef = defs.Head();
  data.m_pField = &dummy;
  data.m_pInd = reinterpret_cast<OCIInd*>(&dummy);
  data.m_pStruct = &dummy;
  data.m_nInd = 0;
  data.m_pTdo = reinterpret_cast<OCIType*>(&dummy);
  data.m_bTopLevel = -1;
  data.m_bCreated = 1;
  data.m_bTdoPinned = 1;
  data.m_pIter = reinterpret_cast<OCIIter*>(&dummy);
  data.m_nReserved = 9;
  data.m_nLobPos = 17;
  data.m_nLobSize = 23;
  data.ClearOraObjects();
  EXPECT_EQ(defs.Head(), data.m_pColumnDef);
  EXPECT_EQ(nullptr, data.m_pField);
  EXPECT_EQ(nullptr, data.m_pInd);
  EXPECT_EQ(nullptr, data.m_pStruct);
  EXPECT_EQ(OCI_IND_NULL, data.m_nInd);
  EXPECT_EQ(nullptr, data.m_pTdo);
  EXPECT_EQ(-1, data.m_bTopLevel);
  EXPECT_EQ(0u, data.m_bCreated);
  EXPECT_EQ(0u, data.m_bTdoPinned);
  EXPECT_EQ(nullptr, data.m_pIter);
  EXPECT_EQ(0, data.m_nReserved);
  EXPECT_EQ(17, data.m_nLobPos);
  EXPECT_EQ(23u, data.m_nLobSize);
}

TEST_F(ElementTreeTest, DeleteElementAndAfterCutsTheNodeAndEveryLaterSibling) {
  DefList defs;
  defs.Text("A");
  defs.Text("B");
  defs.Open("C", "S.T");
  defs.Text("X");
  defs.Close();
  defs.Text("D");
  CAdpTree& root = Build(defs.Head());
  adp_._DeleteElementAndAfter(&Child(root, 1));
  EXPECT_EQ((std::vector<std::string>{"A"}), Names(root));
  adp_._DeleteElementAndAfter(root.GetFirstChild());
  EXPECT_EQ(nullptr, root.GetFirstChild());
  adp_._DeleteElementAndAfter(nullptr);
}

}  // namespace
}  // namespace adapter_test
