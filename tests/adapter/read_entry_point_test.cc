// The stream-to-object entry points: adpProcessStream, adpProcessBuffer and
// their C++ forms; argument checks, what is stored for the host, how far a
// buffer is taken, and the trace and last exception of each outcome.
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class ReadEntryPointTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE e_pair_t AS OBJECT (s VARCHAR2(10), n NUMBER(4))");
    MustExec("CREATE TYPE e_doc_t AS OBJECT (s VARCHAR2(10), c CLOB)");
    defs_.Text("S", 10);
    defs_.Number("N", 4, 0);
    tdo_ = Type("E_PAIR_T");
  }
  DefList defs_;
  OCIType* tdo_ = nullptr;
};

std::string ArgumentText(const char* pszFunc) {
  return std::string("-8|") + pszFunc + "|" + KelGetErrorText(-8);
}

TEST_F(ReadEntryPointTest, ProcessStreamWithoutALobsPendingHolderDoesNothing) {
  stream_.Write("x|12", 4);
  stream_.Seek(0, 0);
  Column_Def* pList = defs_.Head();
  int nMarker = 0;
  void* pInstance = &nMarker;
  short nInd = 7;
  short* pInd = &nInd;
  EXPECT_EQ(0, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &pInstance,
                                &pInd, &nInd, tdo_, nullptr));
  EXPECT_EQ(&nMarker, pInstance);
  EXPECT_EQ(&nInd, pInd);
  EXPECT_EQ(7, nInd);
  EXPECT_EQ(0, stream_.Tell());
  EXPECT_EQ(defs_.Head(), pList);
  EXPECT_EQ("", Trace());
  EXPECT_EQ("none", LastException());

  // With a holder the same stream is read.
  ReadResult r = ReadAgain(defs_.Head(), tdo_);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ(0, r.nLobsPending);
  EXPECT_EQ("x|12", WriteBack(defs_.Head(), r, tdo_));
}

TEST_F(ReadEntryPointTest, ProcessBufferOverTwoObjectsAdvancesExactlyToTheSecond) {
  const std::string text = "ab|12|cde|3456";
  Column_Def* pList = defs_.Head();
  const void* pBuffer = text.data();
  ReadResult first;
  ASSERT_EQ(0, adpProcessBuffer(ctx_, &trace_, &pBuffer, static_cast<unsigned long>(text.size()),
                                &pList, env_, err_, svc_, &first.pInstance, &first.pInd,
                                &first.nInd, tdo_, &first.nLobsPending))
      << LastException() << Trace();
  EXPECT_EQ(static_cast<const void*>(text.data() + 6), pBuffer);
  EXPECT_EQ("ab|12", WriteBack(defs_.Head(), first, tdo_));

  const unsigned long nLeft =
      static_cast<unsigned long>(text.data() + text.size() - static_cast<const char*>(pBuffer));
  pList = defs_.Head();
  ReadResult second;
  ASSERT_EQ(0, adpProcessBuffer(ctx_, &trace_, &pBuffer, nLeft, &pList, env_, err_, svc_,
                                &second.pInstance, &second.pInd, &second.nInd, tdo_,
                                &second.nLobsPending))
      << LastException() << Trace();
  EXPECT_EQ(static_cast<const void*>(text.data() + text.size()), pBuffer);
  EXPECT_EQ("cde|3456", WriteBack(defs_.Head(), second, tdo_));
  EXPECT_NE(first.pInstance, second.pInstance);
  EXPECT_EQ("", Trace());
}

TEST_F(ReadEntryPointTest, ProcessBufferOverTwoObjectsEndingInGroupsAdvancesExactly) {
  MustExec("CREATE TYPE e_in_t AS OBJECT (a NUMBER(3))");
  MustExec("CREATE TYPE e_outer_t AS OBJECT (s VARCHAR2(10), inner e_in_t)");
  DefList& defs = NewList();
  defs.Text("S", 10);
  defs.Open("INNER", "SCOTT.E_IN_T");
  defs.Number("A", 3, 0);
  defs.Close();
  OCIType* pTdo = Type("E_OUTER_T");
  const std::string text = "a|[1]b|[2]";
  ReadResult first = ReadBuffer(defs.Head(), text, pTdo);
  ASSERT_EQ(0, first.nRC) << LastException() << Trace();
  EXPECT_EQ(5, first.nConsumed);
  ReadResult second = ReadBuffer(defs.Head(), text.substr(5), pTdo);
  ASSERT_EQ(0, second.nRC) << LastException() << Trace();
  EXPECT_EQ(5, second.nConsumed);
  EXPECT_EQ("b|[2]", WriteBack(defs.Head(), second, pTdo));
}

TEST_F(ReadEntryPointTest, ProcessBufferWithoutALobsPendingHolderStillBuildsTheObject) {
  const std::string text = "x|12";
  Column_Def* pList = defs_.Head();
  const void* pBuffer = text.data();
  ReadResult r;
  ASSERT_EQ(0, adpProcessBuffer(ctx_, &trace_, &pBuffer, static_cast<unsigned long>(text.size()),
                                &pList, env_, err_, svc_, &r.pInstance, &r.pInd, &r.nInd, tdo_,
                                nullptr))
      << LastException() << Trace();
  ASSERT_NE(nullptr, r.pInstance);
  ASSERT_NE(nullptr, r.pInd);
  EXPECT_EQ(static_cast<const void*>(text.data() + 4), pBuffer);
  EXPECT_EQ("x", StringOf(*static_cast<OCIString**>(AttrSlot(r, tdo_, {"S"}))));
  EXPECT_EQ("x|12", WriteBack(defs_.Head(), r, tdo_));
  EXPECT_EQ("", Trace());
}

TEST_F(ReadEntryPointTest, CxxProcessStreamWithANullTypeThrowsWithoutSettingTheLastException) {
  stream_.Write("x|12", 4);
  stream_.Seek(0, 0);
  Column_Def* pList = defs_.Head();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  try {
    AdpProcessStream(ctx_, &trace_, stream_, pList, env_, err_, svc_, pInstance, pInd, nInd,
                     nullptr);
    FAIL() << "no exception";
  } catch (CKelException& e) {
    EXPECT_EQ(-8, e.GetRC());
    EXPECT_STREQ("AdpProcessStream", e.GetFunc());
    EXPECT_STREQ(KelGetErrorText(-8), e.GetText());
  }
  EXPECT_EQ("none", LastException());
  EXPECT_EQ("*ERR: in AdpProcessStream (-2)\n", Trace());
  EXPECT_EQ(nullptr, pInstance);
  EXPECT_EQ(0, stream_.Tell());
}

TEST_F(ReadEntryPointTest, CxxProcessStreamReturnsTheLobsPendingFlag) {
  DefList& defs = NewList();
  defs.Text("S", 10);
  defs.Scalar("C", SQLT_CLOB, 112, 4000);
  OCIType* pTdo = Type("E_DOC_T");
  stream_.Write("x|text|y|", 9);
  stream_.Seek(0, 0);
  Column_Def* pList = defs.Head();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  EXPECT_EQ(1, AdpProcessStream(ctx_, &trace_, stream_, pList, env_, err_, svc_, pInstance, pInd,
                                nInd, pTdo));
  EXPECT_NE(nullptr, pInstance);
  EXPECT_NE(nullptr, pInd);
  EXPECT_EQ(7, stream_.Tell());
  pList = defs.Head();
  EXPECT_EQ(0, AdpProcessStream(ctx_, &trace_, stream_, pList, env_, err_, svc_, pInstance, pInd,
                                nInd, pTdo));
  EXPECT_EQ(OCI_IND_NOTNULL, pInd[1]);
  EXPECT_EQ(OCI_IND_NULL, pInd[2]);
  EXPECT_EQ("", Trace());
}

TEST_F(ReadEntryPointTest, CxxProcessStreamLetsAReaderErrorTravel) {
  stream_.Write("x!y|12", 6);
  stream_.Seek(0, 0);
  Column_Def* pList = defs_.Head();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  try {
    AdpProcessStream(ctx_, &trace_, stream_, pList, env_, err_, svc_, pInstance, pInd, nInd,
                     tdo_);
    FAIL() << "no exception";
  } catch (CKelException& e) {
    EXPECT_EQ(-1102, e.GetRC());
    EXPECT_STREQ("CAdp::_ReadElementSize", e.GetFunc());
  }
  EXPECT_EQ("none", LastException());
  EXPECT_EQ("*ERR: at offset 2\n" +
                Scopes({"CAdp::_ReadElementSize", "CAdp::_ReadStream", "CAdp::ProcessStream",
                        "AdpProcessStream"}),
            Trace());
  EXPECT_EQ(nullptr, pInstance);
}

TEST_F(ReadEntryPointTest, CxxProcessBufferChecksItsArgumentsAndReads) {
  const std::string text = "x|12";
  Column_Def* pList = defs_.Head();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  try {
    AdpProcessBuffer(ctx_, &trace_, text.data(), static_cast<unsigned long>(text.size()), pList,
                     env_, err_, svc_, pInstance, pInd, nInd, nullptr);
    FAIL() << "no exception";
  } catch (CKelException& e) {
    EXPECT_EQ(-8, e.GetRC());
    EXPECT_STREQ("AdpProcessBuffer", e.GetFunc());
  }
  try {
    AdpProcessBuffer(nullptr, &trace_, text.data(), static_cast<unsigned long>(text.size()),
                     pList, env_, err_, svc_, pInstance, pInd, nInd, tdo_);
    FAIL() << "no exception";
  } catch (CKelException& e) {
    EXPECT_EQ(-8, e.GetRC());
  }
  EXPECT_EQ("none", LastException());
  EXPECT_EQ("*ERR: in AdpProcessBuffer (-2)\n*ERR: in AdpProcessBuffer (-2)\n", Trace());

  ClearTrace();
  EXPECT_EQ(0, AdpProcessBuffer(ctx_, &trace_, text.data(),
                                static_cast<unsigned long>(text.size()), pList, env_, err_, svc_,
                                pInstance, pInd, nInd, tdo_));
  ReadResult r;
  r.pInstance = pInstance;
  r.pInd = pInd;
  EXPECT_EQ("x|12", WriteBack(defs_.Head(), r, tdo_));
  EXPECT_EQ("", Trace());
}

TEST_F(ReadEntryPointTest, ProcessStreamChecksEveryPointer) {
  stream_.Write("x|12", 4);
  stream_.Seek(0, 0);
  Column_Def* pList = defs_.Head();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  int nLobs = -1;
  EXPECT_EQ(-8, adpProcessStream(nullptr, &trace_, &stream_, &pList, env_, err_, svc_,
                                 &pInstance, &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ(ArgumentText("adpProcessStream"), LastException());
  EXPECT_EQ(-8, adpProcessStream(ctx_, &trace_, nullptr, &pList, env_, err_, svc_, &pInstance,
                                 &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ(-8, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, nullptr,
                                 &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ(-8, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &pInstance,
                                 nullptr, &nInd, tdo_, &nLobs));
  EXPECT_EQ(-8, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &pInstance,
                                 &pInd, nullptr, tdo_, &nLobs));
  EXPECT_EQ(-8, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &pInstance,
                                 &pInd, &nInd, nullptr, &nLobs));
  std::string expected;
  for (int i = 0; i < 6; ++i) expected += "*ERR: in adpProcessStream (-2)\n";
  EXPECT_EQ(expected, Trace());
  EXPECT_EQ(nullptr, pInstance);
  EXPECT_EQ(-1, nLobs);
  EXPECT_EQ(0, stream_.Tell());

  ClearTrace();
  EXPECT_EQ(0, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &pInstance,
                                &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ(0, nLobs);
  EXPECT_NE(nullptr, pInstance);
  EXPECT_EQ("", Trace());
}

TEST_F(ReadEntryPointTest, ProcessBufferChecksItsPointersUnderTheStreamCallsName) {
  const std::string text = "x|12";
  Column_Def* pList = defs_.Head();
  const void* pBuffer = text.data();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  int nLobs = -1;
  const unsigned long nSize = static_cast<unsigned long>(text.size());
  EXPECT_EQ(-8, adpProcessBuffer(nullptr, &trace_, &pBuffer, nSize, &pList, env_, err_, svc_,
                                 &pInstance, &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ(ArgumentText("adpProcessStream"), LastException());
  EXPECT_EQ(-8, adpProcessBuffer(ctx_, &trace_, &pBuffer, nSize, &pList, env_, err_, svc_,
                                 nullptr, &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ(-8, adpProcessBuffer(ctx_, &trace_, &pBuffer, nSize, &pList, env_, err_, svc_,
                                 &pInstance, nullptr, &nInd, tdo_, &nLobs));
  EXPECT_EQ(-8, adpProcessBuffer(ctx_, &trace_, &pBuffer, nSize, &pList, env_, err_, svc_,
                                 &pInstance, &pInd, nullptr, tdo_, &nLobs));
  EXPECT_EQ(-8, adpProcessBuffer(ctx_, &trace_, &pBuffer, nSize, &pList, env_, err_, svc_,
                                 &pInstance, &pInd, &nInd, nullptr, &nLobs));
  std::string expected;
  for (int i = 0; i < 5; ++i) expected += "*ERR: in adpProcessStream (-2)\n";
  EXPECT_EQ(expected, Trace());
  EXPECT_EQ(static_cast<const void*>(text.data()), pBuffer);
  EXPECT_EQ(-1, nLobs);
}

TEST_F(ReadEntryPointTest, AMissingOciHandleIsRefusedByTheDriver) {
  stream_.Write("x|12", 4);
  stream_.Seek(0, 0);
  Column_Def* pList = defs_.Head();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  int nLobs = -1;
  EXPECT_EQ(-8, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, nullptr, svc_,
                                 &pInstance, &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ(ArgumentText("CAdp::_Init"), LastException());
  EXPECT_EQ(Scopes({"CAdp::_Init", "CAdp::ProcessStream", "adpProcessStream"}), Trace());
  EXPECT_EQ(nullptr, pInstance);
  EXPECT_EQ(-1, nLobs);

  ClearTrace();
  ReadResult r = ReadAgain(defs_.Head(), tdo_);
  ASSERT_EQ(0, r.nRC) << LastException() << Trace();
  EXPECT_EQ("x|12", WriteBack(defs_.Head(), r, tdo_));
}

TEST_F(ReadEntryPointTest, TheListHolderIsMovedPastTheListWhenTheTreeIsBuilt) {
  stream_.Write("x|12|y|3", 8);
  stream_.Seek(0, 0);
  Column_Def* pList = defs_.Head();
  ReadResult r;
  ASSERT_EQ(0, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &r.pInstance,
                                &r.pInd, &r.nInd, tdo_, &r.nLobsPending));
  EXPECT_EQ(nullptr, pList);
  // The same list again: the tree is kept and the holder left alone.
  pList = defs_.Head();
  ASSERT_EQ(0, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_, &r.pInstance,
                                &r.pInd, &r.nInd, tdo_, &r.nLobsPending));
  EXPECT_EQ(defs_.Head(), pList);
  EXPECT_EQ("y|3", WriteBack(defs_.Head(), r, tdo_));
  // Passed on as it was left, the holder is refused.
  pList = nullptr;
  EXPECT_EQ(-8, adpProcessStream(ctx_, &trace_, &stream_, &pList, env_, err_, svc_,
                                 &r.pInstance, &r.pInd, &r.nInd, tdo_, &r.nLobsPending));
  EXPECT_EQ(ArgumentText("CAdp::_Init"), LastException());
}

TEST_F(ReadEntryPointTest, ASuccessfulReadPrintsNothingAndLeavesNoException) {
  ReadResult r = ReadStream(defs_.Head(), "x|12", tdo_);
  ASSERT_EQ(0, r.nRC);
  r = ReadBuffer(defs_.Head(), "y|3", tdo_);
  ASSERT_EQ(0, r.nRC);
  EXPECT_EQ("", Trace());
  EXPECT_EQ("none", LastException());
}

TEST_F(ReadEntryPointTest, ReadsWithoutATraceAreSilent) {
  stream_.Write("x!q|12", 6);
  stream_.Seek(0, 0);
  Column_Def* pList = defs_.Head();
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;
  int nLobs = -1;
  EXPECT_EQ(-1102, adpProcessStream(ctx_, nullptr, &stream_, &pList, env_, err_, svc_,
                                    &pInstance, &pInd, &nInd, tdo_, &nLobs));
  EXPECT_EQ("-1102|CAdp::_ReadElementSize|Invalid relese character position", LastException());
  EXPECT_EQ("", Trace());
}

}  // namespace
}  // namespace adapter_test
