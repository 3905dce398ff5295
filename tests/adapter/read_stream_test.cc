// Reading the structure of a stream: groups, delimiters, how many items a
// collection has, what is null; the extent of a scalar field and its
// release characters; malformed structure with its code, last exception and
// trace, after which the context reads on.
#include <cstring>

#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class ReadStreamTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE r_addr_t AS OBJECT (street VARCHAR2(30), city VARCHAR2(30))");
    MustExec("CREATE TYPE r_colours_t AS TABLE OF VARCHAR2(10)");
    MustExec("CREATE TYPE r_note_t AS OBJECT (txt VARCHAR2(10))");
    MustExec("CREATE TYPE r_person_t AS OBJECT (name VARCHAR2(20), age NUMBER(3), "
             "addr r_addr_t, colours r_colours_t, note r_note_t, tag RAW(10))");
    MustExec("CREATE TYPE r_pair_t AS OBJECT (a VARCHAR2(20), b VARCHAR2(20))");
    MustExec("CREATE TYPE r_rawtext_t AS OBJECT (r RAW(10), t VARCHAR2(10))");
    MustExec("CREATE TYPE r_blobtext_t AS OBJECT (b BLOB, t VARCHAR2(10))");
    MustExec("CREATE TYPE r_tail_t AS OBJECT (a VARCHAR2(20), colours r_colours_t)");
    MustExec("CREATE TYPE r_home_t AS OBJECT (addr r_addr_t, b VARCHAR2(20))");

    person_.Text("NAME", 20);
    person_.Number("AGE", 3, 0);
    person_.Open("ADDR", "SCOTT.R_ADDR_T");
    person_.Text("STREET", 30);
    person_.Text("CITY", 30);
    person_.Close();
    person_.Open("COLOURS", "SCOTT.R_COLOURS_T", true);
    person_.Text(nullptr, 10);
    person_.Close();
    person_.Open("NOTE", "SCOTT.R_NOTE_T");
    person_.Text("TXT", 10);
    person_.Close();
    person_.Raw("TAG", 10);

    pair_.Text("A", 20);
    pair_.Text("B", 20);
  }

  OCIColl* CollOf(const ReadResult& r, OCIType* pTdo, const char* pszName) {
    return *static_cast<OCIColl**>(AttrSlot(r, pTdo, {pszName}));
  }
  std::vector<std::string> Texts(OCIColl* pColl) {
    std::vector<std::string> out;
    for (const auto& item : Items(pColl)) {
      out.push_back(item.first == OCI_IND_NULL ? "<null>"
                                               : StringOf(*static_cast<OCIString**>(item.second)));
    }
    return out;
  }

  DefList person_;
  DefList pair_;
};

const char kWorked[] = "Smith!|Jones|42|[1 Main St|]|[red|blue]||3|ABC";

TEST_F(ReadStreamTest, TheWorkedExampleReadsBackFieldByField) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), kWorked, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(0, r.nLobsPending);
  EXPECT_EQ("Smith|Jones", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"NAME"}))));
  EXPECT_EQ("42", NumberOf(static_cast<OCINumber*>(AttrSlot(r, pTdo, {"AGE"}))));
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"ADDR"}));
  EXPECT_EQ("1 Main St",
            StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"ADDR", "STREET"}))));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"ADDR", "CITY"}));
  EXPECT_EQ((std::vector<std::string>{"red", "blue"}), Texts(CollOf(r, pTdo, "COLOURS")));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"NOTE"}));
  EXPECT_EQ("ABC", RawOf(*static_cast<OCIRaw**>(AttrSlot(r, pTdo, {"TAG"}))));
  EXPECT_EQ(kWorked, WriteBack(person_.Head(), r, pTdo));
  EXPECT_EQ("", Trace());
  EXPECT_EQ("none", LastException());
}

TEST_F(ReadStreamTest, TheWorkedExampleFromABufferIsConsumedWhole) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadBuffer(person_.Head(), kWorked, pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(static_cast<long>(std::strlen(kWorked)), r.nConsumed);
  EXPECT_EQ(kWorked, WriteBack(person_.Head(), r, pTdo));
}

TEST_F(ReadStreamTest, ScalarFieldBeforeAGroupEndOrADelimiterIsNull) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "|42|[|]|[]||", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"NAME"}));
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"ADDR"}));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"ADDR", "STREET"}));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"ADDR", "CITY"}));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"TAG"}));
  // The field before "]" is null; the empty collection receives it as one
  // null item.
  EXPECT_EQ((std::vector<std::string>{"<null>"}), Texts(CollOf(r, pTdo, "COLOURS")));
}

TEST_F(ReadStreamTest, AnEscapedDelimiterDoesNotEndTheFieldAndTheSizeLeavesThePosition) {
  stream_.Write("a!|b|c", 6);
  stream_.Seek(0, 0);
  CAdp* pAdp = static_cast<CAdp*>(ctx_);
  ASSERT_EQ(1, pAdp->_Init(stream_, &trace_, env_, err_, svc_, pair_.Head()));
  EXPECT_EQ(4u, pAdp->_ReadElementSize());
  EXPECT_EQ(0, stream_.Tell());
  EXPECT_EQ("", Trace());
}

TEST_F(ReadStreamTest, AnEscapedDelimiterIsReadIntoTheText) {
  OCIType* pTdo = Type("R_PAIR_T");
  ReadResult r = ReadStream(pair_.Head(), "a!|b|c", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("a|b", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"A"}))));
  EXPECT_EQ("c", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"B"}))));
}

TEST_F(ReadStreamTest, EveryEscapedSpecialStringAndADoubledRelease) {
  OCIType* pTdo = Type("R_PAIR_T");
  ReadResult r = ReadStream(pair_.Head(), "!!!|![!]!\r\nx|!!!!", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("!|[]\r\nx", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"A"}))));
  EXPECT_EQ("!!", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"B"}))));
}

TEST_F(ReadStreamTest, AGroupStartOrTerminatorDoesNotEndAScalarField) {
  OCIType* pTdo = Type("R_PAIR_T");
  ReadResult r = ReadStream(pair_.Head(), "a[b\r\nc|d", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("a[b\r\nc", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"A"}))));
  EXPECT_EQ("d", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"B"}))));
}

TEST_F(ReadStreamTest, AReleaseBeforeAnOrdinaryCharacterIsRefused) {
  OCIType* pTdo = Type("R_PAIR_T");
  ReadResult r = ReadStream(pair_.Head(), "a!xb", pTdo);
  EXPECT_EQ(-1102, r.nRC);
  EXPECT_EQ(Exception(-1102, "CAdp::_ReadElementSize", "Invalid relese character position"),
            LastException());
  EXPECT_EQ("*ERR: at offset 2\n" +
                Scopes({"CAdp::_ReadElementSize", "CAdp::_ReadStream", "CAdp::ProcessStream",
                        "adpProcessStream"}),
            Trace());
  EXPECT_EQ(nullptr, r.pInstance);
  EXPECT_EQ(nullptr, r.pInd);

  ClearTrace();
  r = ReadStream(pair_.Head(), "a!!xb|c", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("a!!xb|c", WriteBack(pair_.Head(), r, pTdo));
  EXPECT_EQ("", Trace());
}

TEST_F(ReadStreamTest, AReleaseAtTheEndOfTheDataIsRefused) {
  OCIType* pTdo = Type("R_PAIR_T");
  ReadResult r = ReadStream(pair_.Head(), "x|ab!", pTdo);
  EXPECT_EQ(-1102, r.nRC);
  EXPECT_EQ(Exception(-1102, "CAdp::_ReadElementSize", "Invalid relese character position"),
            LastException());
  EXPECT_EQ("*ERR: at offset 5\n" +
                Scopes({"CAdp::_ReadElementSize", "CAdp::_ReadStream", "CAdp::ProcessStream",
                        "adpProcessStream"}),
            Trace());

  ClearTrace();
  r = ReadStream(pair_.Head(), "x|ab!!", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("x|ab!!", WriteBack(pair_.Head(), r, pTdo));
}

TEST_F(ReadStreamTest, AReleaseInANestedFieldCrossesEveryReaderScope) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadBuffer(person_.Head(), "n|1|[s|c]|[red|b!lue]||", pTdo);
  EXPECT_EQ(-1102, r.nRC);
  EXPECT_EQ(Exception(-1102, "CAdp::_ReadElementSize", "Invalid relese character position"),
            LastException());
  // The release stands at 16; the offset is the byte after it.
  EXPECT_EQ("*ERR: at offset 17\n" +
                Scopes({"CAdp::_ReadElementSize", "CAdp::_ReadStream", "CAdp::_ReadStream",
                        "CAdp::ProcessStream", "adpProcessStream"}),
            Trace());
  EXPECT_EQ(0, r.nConsumed);

  ClearTrace();
  r = ReadBuffer(person_.Head(), "n|1|[s|c]|[red|b!!lue]||", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("n|1|[s|c]|[red|b!!lue]|||", WriteBack(person_.Head(), r, pTdo));
}

TEST_F(ReadStreamTest, ThreeItemsInAGroupAreAppendedOneAfterAnother) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "|||[red|gr!|een|blue]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ((std::vector<std::string>{"red", "gr|een", "blue"}),
            Texts(CollOf(r, pTdo, "COLOURS")));
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"COLOURS"}));
}

TEST_F(ReadStreamTest, AGroupHoldingOneItemAppendsOne) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "|||[red]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ((std::vector<std::string>{"red"}), Texts(CollOf(r, pTdo, "COLOURS")));
}

TEST_F(ReadStreamTest, ANullCollectionGetsNoItemsAndStaysNull) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "a|||||", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"COLOURS"}));
  EXPECT_TRUE(Texts(CollOf(r, pTdo, "COLOURS")).empty());
}

TEST_F(ReadStreamTest, AnEmptyCollectionOfScalarsReadsBackWithOneNullItem) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "|||[]||", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ((std::vector<std::string>{"<null>"}), Texts(CollOf(r, pTdo, "COLOURS")));
  EXPECT_EQ("|||[]|||", WriteBack(person_.Head(), r, pTdo));
}

TEST_F(ReadStreamTest, ANestedObjectOpenedButNotClosedIsRefused) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "a|1|[s|c|d", pTdo);
  EXPECT_EQ(1, r.nRC);
  EXPECT_EQ(Exception(1, "CAdp::_ReadStream", KelGetErrorText(1)), LastException());
  EXPECT_EQ(Scopes({"CAdp::_ReadStream", "CAdp::ProcessStream", "adpProcessStream"}), Trace());
  EXPECT_EQ(nullptr, r.pInstance);

  ClearTrace();
  r = ReadStream(person_.Head(), "a|1|[s|c]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("a|1|[s|c]||||", WriteBack(person_.Head(), r, pTdo));
  EXPECT_EQ("", Trace());
}

TEST_F(ReadStreamTest, ACollectionOpenedButNotClosedIsRefused) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "a|1||[red|blue", pTdo);
  EXPECT_EQ(1, r.nRC);
  EXPECT_EQ(Exception(1, "CAdp::_ReadStream", KelGetErrorText(1)), LastException());
  EXPECT_EQ(Scopes({"CAdp::_ReadStream", "CAdp::ProcessStream", "adpProcessStream"}), Trace());

  ClearTrace();
  r = ReadStream(person_.Head(), "a|1||[red|blue]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("a|1||[red|blue]|||", WriteBack(person_.Head(), r, pTdo));
}

TEST_F(ReadStreamTest, AGroupInsideACollectionItemLeftOpenCrossesBothReaders) {
  MustExec("CREATE TYPE r_notes_t AS TABLE OF r_note_t");
  MustExec("CREATE TYPE r_book_t AS OBJECT (notes r_notes_t)");
  DefList& defs = NewList();
  defs.Open("NOTES", "SCOTT.R_NOTES_T", true);
  defs.Open(nullptr, "SCOTT.R_NOTE_T");
  defs.Text("TXT", 10);
  defs.Close();
  defs.Close();
  OCIType* pTdo = Type("R_BOOK_T");
  ReadResult r = ReadStream(defs.Head(), "[[a]|[b", pTdo);
  EXPECT_EQ(1, r.nRC);
  EXPECT_EQ(Exception(1, "CAdp::_ReadStream", KelGetErrorText(1)), LastException());
  EXPECT_EQ(Scopes({"CAdp::_ReadStream", "CAdp::_ReadStream", "CAdp::ProcessStream",
                    "adpProcessStream"}),
            Trace());

  ClearTrace();
  r = ReadStream(defs.Head(), "[[a]|[b]]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("[[a]|[b]]", WriteBack(defs.Head(), r, pTdo));
}

TEST_F(ReadStreamTest, ANestedObjectWithAnEmptyFieldStaysNull) {
  OCIType* pTdo = Type("R_PERSON_T");
  ReadResult r = ReadStream(person_.Head(), "a|1||[red]||", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"ADDR"}));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"ADDR", "STREET"}));
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"NOTE"}));
  EXPECT_EQ("a|1||[red]|||", WriteBack(person_.Head(), r, pTdo));
}

TEST_F(ReadStreamTest, ANullRawDoesNotStepOverItsBarAndShiftsTheNextField) {
  DefList& defs = NewList();
  defs.Raw("R", 10);
  defs.Text("T", 10);
  OCIType* pTdo = Type("R_RAWTEXT_T");
  // The writer's form of a null RAW followed by the text abc.
  ReadResult r = ReadBuffer(defs.Head(), "||abc", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"R"}));
  // The RAW's own bar is taken as the delimiter, so T meets the next one.
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"T"}));
  EXPECT_EQ(2, r.nConsumed);
}

TEST_F(ReadStreamTest, ANullBlobStepsOverItsBar) {
  DefList& defs = NewList();
  defs.Scalar("B", SQLT_BLOB, 113, 4000);
  defs.Text("T", 10);
  OCIType* pTdo = Type("R_BLOBTEXT_T");
  ReadResult r = ReadBuffer(defs.Head(), "||abc", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(0, r.nLobsPending);
  EXPECT_EQ(OCI_IND_NULL, AttrInd(r, pTdo, {"B"}));
  EXPECT_EQ("abc", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"T"}))));
  EXPECT_EQ(5, r.nConsumed);
}

TEST_F(ReadStreamTest, AMissingDelimiterAfterAGroupIsTolerated) {
  DefList& defs = NewList();
  defs.Open("ADDR", "SCOTT.R_ADDR_T");
  defs.Text("STREET", 30);
  defs.Text("CITY", 30);
  defs.Close();
  defs.Text("B", 20);
  OCIType* pTdo = Type("R_HOME_T");
  ReadResult r = ReadBuffer(defs.Head(), "[s|c]b", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("[s|c]|b", WriteBack(defs.Head(), r, pTdo));
  EXPECT_EQ(6, r.nConsumed);
}

TEST_F(ReadStreamTest, TrailingDataAfterTheLastFieldIsLeftInTheStream) {
  OCIType* pTdo = Type("R_PAIR_T");
  ReadResult r = ReadStream(pair_.Head(), "a|b|more|data", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("a|b", WriteBack(pair_.Head(), r, pTdo));
  // The delimiter after the last field is taken, nothing after it.
  EXPECT_EQ(4, stream_.Tell());
}

TEST_F(ReadStreamTest, ACollectionMarkedToGoWithoutGroupMarksReadsItsItemsDirectly) {
  DefList& defs = NewList();
  defs.Text("A", 20);
  defs.Open("COLOURS", "SCOTT.R_COLOURS_T", true).Flags |= 0x0002;
  defs.Text(nullptr, 10);
  defs.Close();
  OCIType* pTdo = Type("R_TAIL_T");
  ReadResult r = ReadBuffer(defs.Head(), "a|red|blue", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ((std::vector<std::string>{"red", "blue"}), Texts(CollOf(r, pTdo, "COLOURS")));
  EXPECT_EQ(10, r.nConsumed);
  // Read without its group marks, the collection is present all the same.
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"COLOURS"}));
  EXPECT_EQ("a|[red|blue]", WriteBack(defs.Head(), r, pTdo));

  // With its group marks it is read as any collection.
  r = ReadBuffer(defs.Head(), "a|[red|blue]", pTdo);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ((std::vector<std::string>{"red", "blue"}), Texts(CollOf(r, pTdo, "COLOURS")));
  EXPECT_EQ(OCI_IND_NOTNULL, AttrInd(r, pTdo, {"COLOURS"}));
}

TEST_F(ReadStreamTest, ATwoByteDelimiterSeparatesFieldsAndIsEscapedWhole) {
  DB_SPECIAL_STRINGS special;
  std::memset(&special, 0, sizeof special);
  std::memcpy(special.szDelimiterLen, "2", 1);
  std::memcpy(special.szTerminatorLen, "2", 1);
  std::memcpy(special.szDelimiter, "||", 2);
  std::memcpy(special.szTerminator, "\r\n", 2);
  special.szRelease[0] = '!';
  VARNADP* pCtx = nullptr;
  ASSERT_EQ(0, adpCreateContext(&pCtx, &trace_, &special));
  std::string text = "a!||b|c||d";
  Column_Def* pList = pair_.Head();
  const void* pBuffer = text.data();
  void* pInstance = nullptr;
  OCIInd* pInd = nullptr;
  short nInd = 0;
  int nLobs = -1;
  OCIType* pTdo = Type("R_PAIR_T");
  ASSERT_EQ(0, adpProcessBuffer(pCtx, &trace_, &pBuffer, static_cast<unsigned long>(text.size()),
                                &pList, env_, err_, svc_, &pInstance, &pInd, &nInd, pTdo, &nLobs))
      << LastException() << Trace();
  ReadResult r;
  r.pInstance = pInstance;
  r.pInd = pInd;
  EXPECT_EQ("a||b|c", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"A"}))));
  EXPECT_EQ("d", StringOf(*static_cast<OCIString**>(AttrSlot(r, pTdo, {"B"}))));
  EXPECT_EQ(static_cast<const void*>(text.data() + text.size()), pBuffer);
  EXPECT_EQ(0, adpDestroyContext(pCtx, &trace_));
  EXPECT_EQ("", Trace());
}

}  // namespace
}  // namespace adapter_test
