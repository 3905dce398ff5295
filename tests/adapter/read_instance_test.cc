// The instance a stream is read into: the new object atomically null at its
// root, collections at the top reused and emptied, items made with Oracle's
// own type codes, null items appended as values marked null, object items
// keeping nothing of the item before, and the null indicators written into
// the parent.
#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class ReadInstanceTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE i_in_t AS OBJECT (a NUMBER(3))");
    MustExec("CREATE TYPE i_ins_t AS TABLE OF i_in_t");
    MustExec("CREATE TYPE i_nums_t AS VARRAY(10) OF NUMBER(3)");
    MustExec("CREATE TYPE i_texts_t AS VARRAY(10) OF VARCHAR2(10)");
    MustExec("CREATE TYPE i_raws_t AS VARRAY(10) OF RAW(4)");
    MustExec("CREATE TYPE i_line_t AS OBJECT (sku VARCHAR2(10), tags i_nums_t)");
    MustExec("CREATE TYPE i_lines_t AS TABLE OF i_line_t");
    MustExec("CREATE TYPE i_addr_t AS OBJECT (street VARCHAR2(10), city VARCHAR2(10))");
    MustExec("CREATE TYPE i_home_t AS OBJECT (addr i_addr_t, b VARCHAR2(10))");
    MustExec("CREATE TYPE i_order_t AS OBJECT (id NUMBER(3), ins i_ins_t, lines i_lines_t, "
             "raws i_raws_t)");

    nums_.Number(nullptr, 3, 0);
    ins_.Open(nullptr, "SCOTT.I_IN_T");
    ins_.Number("A", 3, 0);
    ins_.Close();
    home_.Open("ADDR", "SCOTT.I_ADDR_T");
    home_.Text("STREET", 10);
    home_.Text("CITY", 10);
    home_.Close();
    home_.Text("B", 10);
    DescribeOrder(order_);
  }

  // I_ORDER_T's list; nLineFlags are added to the LINES item's flags.
  static void DescribeOrder(DefList& defs, unsigned short nLineFlags = 0) {
    defs.Number("ID", 3, 0);
    defs.Open("INS", "SCOTT.I_INS_T", true);
    defs.Open(nullptr, "SCOTT.I_IN_T");
    defs.Number("A", 3, 0);
    defs.Close();
    defs.Close();
    defs.Open("LINES", "SCOTT.I_LINES_T", true);
    defs.Open(nullptr, "SCOTT.I_LINE_T").Flags |= nLineFlags;
    defs.Text("SKU", 10);
    defs.Open("TAGS", "SCOTT.I_NUMS_T", true);
    defs.Number(nullptr, 3, 0);
    defs.Close();
    defs.Close();
    defs.Close();
    defs.Open("RAWS", "SCOTT.I_RAWS_T", true);
    defs.Raw(nullptr, 4);
    defs.Close();
  }

  static int Children(CAdpTree& node) {
    int n = 0;
    for (CAdpTree* p = node.GetFirstChild(); p != nullptr; p = p->GetNextSibling()) ++n;
    return n;
  }
  sb4 Size(OCIColl* pColl) {
    sb4 nSize = -1;
    EXPECT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, pColl, &nSize));
    return nSize;
  }
  std::vector<std::string> Numbers(OCIColl* pColl) {
    std::vector<std::string> out;
    for (const auto& item : Items(pColl)) {
      out.push_back(item.first == OCI_IND_NULL ? "<null>"
                                               : NumberOf(static_cast<OCINumber*>(item.second)));
    }
    return out;
  }
  std::vector<std::string> Raws(OCIColl* pColl) {
    std::vector<std::string> out;
    for (const auto& item : Items(pColl)) {
      out.push_back(item.first == OCI_IND_NULL ? "<null>"
                                               : RawOf(*static_cast<OCIRaw**>(item.second)));
    }
    return out;
  }
  std::vector<std::string> Texts(OCIColl* pColl) {
    std::vector<std::string> out;
    for (const auto& item : Items(pColl)) {
      out.push_back(item.first == OCI_IND_NULL ? "<null>"
                                               : StringOf(*static_cast<OCIString**>(item.second)));
    }
    return out;
  }

  DefList nums_;
  DefList ins_;
  DefList home_;
  DefList order_;
};

// decision D1
TEST_F(ReadInstanceTest, ANewObjectIsAtomicallyNullAtItsRootUntilTheHostSetsIt) {
  OCIType* pTdo = Type("I_HOME_T");
  ReadResult r = ReadStream(home_.Head(), "[s|c]|b", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  ASSERT_NE(nullptr, r.pInd);
  // _atomic, ADDR's _atomic, STREET, CITY, B.
  EXPECT_EQ(OCI_IND_NULL, r.pInd[0]);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[1]);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[2]);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[3]);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[4]);
  OCIInd* pInd = nullptr;
  ASSERT_EQ(OCI_SUCCESS,
            OCIObjectGetInd(env_, err_, r.pInstance, reinterpret_cast<void**>(&pInd)));
  EXPECT_EQ(pInd, r.pInd);

  // As long as the root is null the object writes nothing at all.
  CKelStream out(0, nullptr, nullptr, 0);
  VARNADP* pCtx = nullptr;
  ASSERT_EQ(0, adpCreateContext(&pCtx, nullptr, nullptr));
  Column_Def* pList = home_.Head();
  EXPECT_EQ(0, adpProcessObject(pCtx, nullptr, &out, &pList, env_, err_, svc_, r.pInstance,
                                r.pInd, OCI_IND_NOTNULL, pTdo));
  EXPECT_EQ(0ul, out.GetSize());
  EXPECT_EQ(0, adpDestroyContext(pCtx, nullptr));

  // The host sets it present before it binds the object.
  r.pInd[0] = OCI_IND_NOTNULL;
  EXPECT_EQ("[s|c]|b", WriteBack(home_.Head(), r, pTdo));
}

// decision D2
TEST_F(ReadInstanceTest, ACollectionReadAtTheTopIsPresent) {
  OCIType* pTdo = Type("I_NUMS_T");
  ReadResult r = ReadStream(nums_.Head(), "1|2", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  ASSERT_NE(nullptr, r.pInd);
  EXPECT_EQ(OCI_IND_NOTNULL, *r.pInd);
  EXPECT_EQ((std::vector<std::string>{"1", "2"}), Numbers(static_cast<OCIColl*>(r.pInstance)));
  EXPECT_EQ("1|2", WriteBack(nums_.Head(), r, pTdo, true));
}

TEST_F(ReadInstanceTest, ANestedObjectReadIsMarkedPresentInItsParent) {
  OCIType* pTdo = Type("I_HOME_T");
  ReadResult r = ReadStream(home_.Head(), "[s|]|b", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[1]);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[2]);
  EXPECT_EQ(OCI_IND_NULL, r.pInd[3]);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[4]);
}

TEST_F(ReadInstanceTest, AnAbsentNestedObjectAndNullFieldsAreWrittenNullIntoTheParent) {
  OCIType* pTdo = Type("I_HOME_T");
  ReadResult r = ReadStream(home_.Head(), "|b", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NULL, r.pInd[1]);
  EXPECT_EQ(OCI_IND_NULL, r.pInd[2]);
  EXPECT_EQ(OCI_IND_NULL, r.pInd[3]);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[4]);
  r = ReadStream(home_.Head(), "[s|c]|", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NULL, r.pInd[4]);
  EXPECT_EQ("[s|c]|", WriteBack(home_.Head(), r, pTdo));
}

TEST_F(ReadInstanceTest, CollectionItemsSetNoIndicatorInAParent) {
  OCIType* pTdo = Type("I_INS_T");
  // Only the two attributes A write an indicator; the items themselves do
  // not: a third OCIObjectSetAttr is never reached.
  ocimemFaultArm("OCIObjectSetAttr", 3, OCI_ERROR, nullptr, nullptr, 0);
  ReadResult r = ReadStream(ins_.Head(), "[1]|[2]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("[1]|[2]", WriteBack(ins_.Head(), r, pTdo, true));

  ocimemFaultReset();
  ocimemFaultArm("OCIObjectSetAttr", 2, OCI_ERROR, nullptr, nullptr, 0);
  r = ReadStream(ins_.Head(), "[1]|[2]", pTdo);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, "CAdp::_OraSetIndicator"), LastException());
}

TEST_F(ReadInstanceTest, SettingACollectionItemPresentOnlyMarksTheItem) {
  OCIType* pTdo = Type("I_INS_T");
  ReadResult r = ReadStream(ins_.Head(), "[1]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  CAdp* pAdp = static_cast<CAdp*>(ctx_);
  CAdpTree& root = pAdp->_GetTree();
  CAdpTree* pItem = root.GetFirstChild();
  ASSERT_NE(nullptr, pItem);
  pItem->m_Data.m_nInd = OCI_IND_NULL;
  ocimemFaultArm("OCIObjectSetAttr", 0, OCI_ERROR, nullptr, nullptr, 0);
  pAdp->_OraSetIndicator(*pItem, root, 1);
  EXPECT_EQ(OCI_IND_NOTNULL, pItem->m_Data.m_nInd);
  EXPECT_EQ("", Trace());
}

TEST_F(ReadInstanceTest, AnIndicatorWrittenWithoutPresenceIsTheOneTheFieldHas) {
  OCIType* pTdo = Type("I_HOME_T");
  ReadResult r = ReadStream(home_.Head(), "[s|c]|b", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  CAdp* pAdp = static_cast<CAdp*>(ctx_);
  CAdpTree& root = pAdp->_GetTree();
  CAdpTree* pB = root.GetFirstChild()->GetNextSibling();
  ASSERT_NE(nullptr, pB);
  ASSERT_EQ(&pB->m_Data.m_nInd, pB->m_Data.m_pInd);
  pB->m_Data.m_nInd = OCI_IND_NULL;
  pAdp->_OraSetIndicator(*pB, root, 0);
  EXPECT_EQ(OCI_IND_NULL, pB->m_Data.m_nInd);
  EXPECT_EQ(OCI_IND_NULL, r.pInd[4]);
  pAdp->_OraSetIndicator(*pB, root, 1);
  EXPECT_EQ(OCI_IND_NOTNULL, pB->m_Data.m_nInd);
  EXPECT_EQ(OCI_IND_NOTNULL, r.pInd[4]);
  EXPECT_EQ("", Trace());
}

TEST_F(ReadInstanceTest, ReadingAgainReusesTheTopCollectionEmptiedFirst) {
  OCIType* pTdo = Type("I_NUMS_T");
  ReadResult first = ReadStream(nums_.Head(), "1|2|3", pTdo);
  ASSERT_EQ(0, first.nRC) << LastException() << Trace();
  EXPECT_EQ(3, Size(static_cast<OCIColl*>(first.pInstance)));
  ReadResult second = ReadStream(nums_.Head(), "4", pTdo);
  ASSERT_EQ(0, second.nRC) << LastException() << Trace();
  EXPECT_EQ(first.pInstance, second.pInstance);
  EXPECT_EQ(first.pInd, second.pInd);
  EXPECT_EQ((std::vector<std::string>{"4"}), Numbers(static_cast<OCIColl*>(second.pInstance)));
}

TEST_F(ReadInstanceTest, DevelopingAFreshTopCollectionLeavesNoItemsAndNoItemNodes) {
  OCIType* pTdo = Type("I_NUMS_T");
  ReadResult r = ReadStream(nums_.Head(), "1|2|3", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  CAdp* pAdp = static_cast<CAdp*>(ctx_);
  CAdpTree& root = pAdp->_GetTree();
  EXPECT_EQ(1, Children(root));
  pAdp->_DevelopOraObjects(root, 1);
  EXPECT_EQ(0, Children(root));
  EXPECT_EQ(0, Size(static_cast<OCIColl*>(r.pInstance)));
  // Emptying an empty collection trims nothing and fails nothing.
  pAdp->_OraEmptyColl(root);
  EXPECT_EQ(0, Size(static_cast<OCIColl*>(r.pInstance)));
  EXPECT_EQ("", Trace());
}

TEST_F(ReadInstanceTest, AnEmptyStreamGivesATopCollectionOfScalarsOneNullItem) {
  OCIType* pTdo = Type("I_NUMS_T");
  ReadResult r = ReadBuffer(nums_.Head(), "", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ((std::vector<std::string>{"<null>"}), Numbers(static_cast<OCIColl*>(r.pInstance)));
  EXPECT_EQ(0, r.nConsumed);
}

// decision D8
TEST_F(ReadInstanceTest, NullScalarItemsAreAppendedAsValuesMarkedNull) {
  OCIType* pTdo = Type("I_NUMS_T");
  ReadResult r = ReadStream(nums_.Head(), "|1||2|", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  const auto items = Items(static_cast<OCIColl*>(r.pInstance));
  ASSERT_EQ(5u, items.size());
  for (const auto& item : items) EXPECT_NE(nullptr, item.second);
  EXPECT_EQ((std::vector<std::string>{"<null>", "1", "<null>", "2", "<null>"}),
            Numbers(static_cast<OCIColl*>(r.pInstance)));
  EXPECT_EQ("|1||2|", WriteBack(nums_.Head(), r, pTdo, true));
}

// decision D8
TEST_F(ReadInstanceTest, NullObjectItemsAreAppendedAsValuesMarkedNull) {
  OCIType* pTdo = Type("I_INS_T");
  ReadResult r = ReadStream(ins_.Head(), "|[1]||[2]|", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  const auto items = Items(static_cast<OCIColl*>(r.pInstance));
  ASSERT_EQ(5u, items.size());
  const OCIInd expected[] = {OCI_IND_NULL, OCI_IND_NOTNULL, OCI_IND_NULL, OCI_IND_NOTNULL,
                             OCI_IND_NULL};
  for (size_t i = 0; i < items.size(); ++i) {
    EXPECT_NE(nullptr, items[i].second) << i;
    EXPECT_EQ(expected[i], items[i].first) << i;
  }
  EXPECT_EQ("|[1]||[2]|", WriteBack(ins_.Head(), r, pTdo, true));
}

// decision D8
TEST_F(ReadInstanceTest, NullItemsOfACollectionAttributeAreAppendedMarkedNull) {
  OCIType* pTdo = Type("I_ORDER_T");
  ReadResult r = ReadStream(order_.Head(), "1|[|[2]]|[[a|[|3]]|]|[|1|x]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  OCIColl* pIns = *static_cast<OCIColl**>(AttrSlot(r, pTdo, {"INS"}));
  const auto ins = Items(pIns);
  ASSERT_EQ(2u, ins.size());
  EXPECT_EQ(OCI_IND_NULL, ins[0].first);
  EXPECT_EQ(OCI_IND_NOTNULL, ins[1].first);
  EXPECT_EQ((std::vector<std::string>{"<null>", "x"}),
            Raws(*static_cast<OCIColl**>(AttrSlot(r, pTdo, {"RAWS"}))));
  // A null RAW item is written as its own bar and a delimiter.
  EXPECT_EQ("1|[|[2]]|[[a|[|3]]|]|[||1|x]", WriteBack(order_.Head(), r, pTdo));
}

// A null object item is destroyed after its nested collection was walked:
// the iterator over that collection goes with it, and the end of the read
// does not delete it a second time (which, once its address is another
// iterator's, deletes that one: ORA-21560 for the next call that uses it).
TEST_F(ReadInstanceTest, AnIteratorInsideADestroyedItemIsDeletedOnce) {
  OCIType* pTdo = Type("I_ORDER_T");
  ReadResult r = ReadStream(order_.Head(), "1||[[a|[1]]||[b|[2]]]|", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  OraText message[512] = {0};
  sb4 nCode = 0;
  if (OCIErrorGet(err_, 1, nullptr, &nCode, message, sizeof message, OCI_HTYPE_ERROR) == OCI_SUCCESS) {
    EXPECT_NE(21560, nCode) << message;
  }
  EXPECT_EQ("1||[[a|[1]]||[b|[2]]]|", WriteBack(order_.Head(), r, pTdo));
}

TEST_F(ReadInstanceTest, EachObjectItemKeepsNothingOfTheItemBefore) {
  OCIType* pTdo = Type("I_ORDER_T");
  ReadResult r = ReadStream(order_.Head(), "1||[[a|[1|2]]|[b]|[|[3]]]|", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  // The second line has no tags and the third no SKU, whatever the line
  // before held.
  EXPECT_EQ("1||[[a|[1|2]]|[b|]|[|[3]]]|", WriteBack(order_.Head(), r, pTdo));
}

// decision D5
TEST_F(ReadInstanceTest, AVarrayOfRawIsReadWithOraclesRawTypeCode) {
  OCIType* pTdo = Type("I_RAWS_T");
  DefList& raw = NewList();
  raw.Raw(nullptr, 4);
  ReadResult r = ReadStream(raw.Head(), "2|AB|0||3|C|E|", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  const auto items = Items(static_cast<OCIColl*>(r.pInstance));
  ASSERT_EQ(4u, items.size());
  // An empty RAW item is present (decision D6); the last is null.
  EXPECT_EQ((std::vector<std::string>{"AB", "", "C|E", "<null>"}),
            Raws(static_cast<OCIColl*>(r.pInstance)));
  EXPECT_EQ(OCI_IND_NOTNULL, items[1].first);
  EXPECT_EQ("2|AB|0||3|C|E||", WriteBack(raw.Head(), r, pTdo, true));
}

// decision D5
TEST_F(ReadInstanceTest, LongRawItemsAreReadAsRaw) {
  OCIType* pTdo = Type("I_RAWS_T");
  DefList& raw = NewList();
  raw.Scalar(nullptr, SQLT_LBI, SQLT_LBI, 4);
  ReadResult r = ReadStream(raw.Head(), "2|AB|1|]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ((std::vector<std::string>{"AB", "]"}), Raws(static_cast<OCIColl*>(r.pInstance)));
}

// decision D5
TEST_F(ReadInstanceTest, LongAndLongVarcharItemsAreReadAsText) {
  OCIType* pTdo = Type("I_TEXTS_T");
  for (unsigned short nType : {SQLT_LNG, SQLT_LVC}) {
    DefList& text = NewList();
    text.Scalar(nullptr, nType, static_cast<short>(nType), 10);
    ReadResult r = ReadStream(text.Head(), "ab|c!|d||e", pTdo);
    ASSERT_EQ(0, r.nRC) << nType << ": " << LastException() << Trace();
    EXPECT_EQ((std::vector<std::string>{"ab", "c|d", "<null>", "e"}),
              Texts(static_cast<OCIColl*>(r.pInstance)))
        << nType;
  }
}

TEST_F(ReadInstanceTest, AnItemTypeNameWithoutSchemaIsFound) {
  OCIType* pTdo = Type("I_INS_T");
  DefList& defs = NewList();
  defs.Open(nullptr, "I_IN_T");
  defs.Number("A", 3, 0);
  defs.Close();
  ReadResult r = ReadStream(defs.Head(), "[1]|[2]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("[1]|[2]", WriteBack(defs.Head(), r, pTdo, true));
}

TEST_F(ReadInstanceTest, AnItemTypeNameIsCutAtItsFirstPointAndLeftWhole) {
  OCIType* pTdo = Type("I_INS_T");
  DefList& defs = NewList();
  defs.Open(nullptr, "SCOTT.I_IN_T.X");
  defs.Number("A", 3, 0);
  defs.Close();
  ReadResult r = ReadStream(defs.Head(), "[1]", pTdo);
  EXPECT_EQ(-24, r.nRC);
  EXPECT_EQ(Exception(-24, "CAdp::_OraCreateObject"), LastException());
  // The type looked up is "I_IN_T.X" in SCOTT.
  EXPECT_EQ("Error (-1) returned by OCITypeByName, errcode=4043\n"
            "ORA-04043: object SCOTT.I_IN_T.X does not exist\n" +
                Scopes({"CAdp::_OraCreateObject", "CAdp::_ReadStream", "CAdp::ProcessStream",
                        "adpProcessStream"}),
            Trace());
  EXPECT_STREQ("SCOTT.I_IN_T.X", defs[0].TypeName);

  ClearTrace();
  r = ReadStream(ins_.Head(), "[1]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("[1]", WriteBack(ins_.Head(), r, pTdo, true));
}

TEST_F(ReadInstanceTest, AMarkedItemHoldingACollectionIsReadWithoutGroupMarks) {
  DefList& defs = NewList();
  DescribeOrder(defs, 0x0002);
  OCIType* pTdo = Type("I_ORDER_T");
  ReadResult r = ReadBuffer(defs.Head(), "1||[x|[5|6]]|[1|y]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(18, r.nConsumed);
  OCIColl* pLines = *static_cast<OCIColl**>(AttrSlot(r, pTdo, {"LINES"}));
  const auto lines = Items(pLines);
  ASSERT_EQ(1u, lines.size());
  // Read without its marks, the item is present all the same.
  EXPECT_EQ(OCI_IND_NOTNULL, lines[0].first);
  EXPECT_EQ((std::vector<std::string>{"y"}),
            Raws(*static_cast<OCIColl**>(AttrSlot(r, pTdo, {"RAWS"}))));
  // The writer always writes the marks.
  EXPECT_EQ("1||[[x|[5|6]]]|[1|y]", WriteBack(defs.Head(), r, pTdo));
  // With its group marks the item is read as any object item.
  r = ReadBuffer(defs.Head(), "1||[[x|[5|6]]]|[1|y]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("1||[[x|[5|6]]]|[1|y]", WriteBack(defs.Head(), r, pTdo));
}

// Every record of a stream is read into a new object, whose collections hold
// no item when the tree is bound to it: the tree's item nodes are cut, and
// the same nodes come back for the items of the record (nothing of the
// record before with them).
TEST_F(ReadInstanceTest, RecordAfterRecordTheItemNodesComeBackEmpty) {
  OCIType* pTdo = Type("I_ORDER_T");
  const std::vector<std::string> records = {
      "1|[[1]|[2]]|[[a|[1|2]]|[b|[3]]]|",
      "2||[[|[4]]|[c|]]|",
      "3|[[5]]|[[d|]]|",
      "4|||",
      "5|[[6]]|[[e|[7|8|9]]|[f|[|]]|[g|[1]]]|",
      "6||[[h|[2]]]|",
  };
  CAdp* pAdp = static_cast<CAdp*>(ctx_);
  CAdpTree* pLinesItem = nullptr;
  for (int pass = 0; pass < 3; ++pass) {
    for (const std::string& record : records) {
      ReadResult r = ReadStream(order_.Head(), record, pTdo);
      ASSERT_EQ(0, r.nRC) << record << ": " << LastException() << Trace();
      EXPECT_EQ(record, WriteBack(order_.Head(), r, pTdo)) << "pass " << pass;
      CAdpTree* pLines = pAdp->_GetTree().GetFirstChild()->GetNextSibling()->GetNextSibling();
      ASSERT_NE(nullptr, pLines);
      CAdpTree* pItem = pLines->GetFirstChild();
      if (pItem == nullptr) continue;  // the record had no line
      // One node reads every item; the same node from record to record.
      EXPECT_EQ(1, Children(*pLines)) << record;
      if (pLinesItem != nullptr) {
        EXPECT_EQ(pLinesItem, pItem) << record;
      }
      pLinesItem = pItem;
    }
  }
  EXPECT_EQ("", Trace());
}

// The item nodes put aside are used again only for the list they were built
// from: another list, even one of the same shape, builds its own.
TEST_F(ReadInstanceTest, ItemNodesPutAsideServeOnlyTheirOwnList) {
  OCIType* pTdo = Type("I_ORDER_T");
  const std::string record = "1||[[a|[1|2]]|[b]]|";
  ReadResult r = ReadStream(order_.Head(), record, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  r = ReadStream(order_.Head(), record, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  DefList& same = NewList();
  DescribeOrder(same);
  for (int i = 0; i < 2; ++i) {
    r = ReadStream(same.Head(), record, pTdo);
    ASSERT_EQ(0, r.nRC) << LastException() << Trace();
    EXPECT_EQ("1||[[a|[1|2]]|[b|]]|", WriteBack(same.Head(), r, pTdo));
    CAdpTree& root = static_cast<CAdp*>(ctx_)->_GetTree();
    for (CAdpTree* p = root.GetFirstChild(); p != nullptr; p = p->GetNextSibling()) {
      const Column_Def* pDef = p->m_Data.m_pColumnDef;
      bool bInList = false;
      for (const Column_Def* q = same.Head(); q != nullptr; q = q->Next) bInList |= q == pDef;
      EXPECT_TRUE(bInList);
    }
  }
}

TEST_F(ReadInstanceTest, EachReadMakesANewObject) {
  OCIType* pTdo = Type("I_HOME_T");
  ReadResult first = ReadStream(home_.Head(), "[a|b]|c", pTdo);
  ASSERT_EQ(0, first.nRC) << LastException() << Trace();
  ReadResult second = ReadStream(home_.Head(), "|d", pTdo);
  ASSERT_EQ(0, second.nRC) << LastException() << Trace();
  EXPECT_NE(nullptr, second.pInstance);
  EXPECT_EQ(OCI_IND_NULL, second.pInd[1]);
  EXPECT_EQ("|d", WriteBack(home_.Head(), second, pTdo));
}

// A host may keep its definition list and change a name in place between
// calls: each call reads the names as they are then, lengths included.
TEST_F(ReadInstanceTest, ANameChangedInPlaceBetweenCallsIsReadAnew) {
  MustExec("CREATE TYPE i_ab_t AS OBJECT (a VARCHAR2(10), ab VARCHAR2(10))");
  OCIType* pTdo = Type("I_AB_T");
  char szFirst[4] = "A";
  char szSecond[4] = "AB";
  DefList defs;
  defs.Text("A", 10).ColumnName = szFirst;
  defs.Text("AB", 10).ColumnName = szSecond;
  for (int nRound = 0; nRound < 3; ++nRound) {
    ReadResult r = ReadBuffer(defs.Head(), "x|y|", pTdo);
    ASSERT_EQ(0, r.nRC) << nRound << " " << LastException() << Trace();
    const Instance inst{r.pInstance, r.pInd, pTdo};
    const bool bSwapped = nRound % 2 == 1;
    EXPECT_EQ(bSwapped ? "y" : "x", StringOf(*static_cast<OCIString**>(Slot(inst, {"A"}))))
        << nRound;
    EXPECT_EQ(bSwapped ? "x" : "y", StringOf(*static_cast<OCIString**>(Slot(inst, {"AB"}))))
        << nRound;
    // The first record's name grows to two bytes, the second's shrinks to one.
    std::swap(szFirst, szSecond);
  }
}

}  // namespace
}  // namespace adapter_test
