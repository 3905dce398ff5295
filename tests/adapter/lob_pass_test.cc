// The two-pass flow for large objects as a host runs it: read the stream,
// store the object, run the LOB pass over a query that selects it, commit,
// and find the contents from another session.
#include <coldef.h>

#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class LobPassTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE l_doc_t AS OBJECT (id NUMBER(6), body CLOB, img BLOB, title VARCHAR2(20))");
    MustExec("CREATE TABLE l_docs OF l_doc_t");
    ASSERT_EQ(0, coldefDescribe(env_, err_, svc_, "SCOTT.L_DOC_T", &defs_));
    tdo_ = Type("L_DOC_T");
  }
  // A context reads its list until it is destroyed: the list goes after it.
  void TearDown() override {
    AdapterTest::TearDown();
    coldefFree(defs_);
  }

  // Reads one object from the text (through a host stream of the given page
  // size when it is not 0, otherwise from a buffer) and returns the code.
  // A buffer is the host's to keep until the LOB pass has read it.
  int Read(const std::string& input, unsigned long nPageSize = 0, int* pLobs = nullptr) {
    buffers_.push_back(input);
    const std::string& text = buffers_.back();
    Column_Def* pList = defs_;
    short nInd = 0;
    int nLobs = -1;
    int rc;
    if (nPageSize == 0) {
      const void* pBuffer = text.data();
      rc = adpProcessBuffer(ctx_, &trace_, &pBuffer, text.size(), &pList, env_, err_, svc_,
                            &instance_, &ind_, &nInd, tdo_, &nLobs);
    } else {
      paged_.reset(new CKelStream(nPageSize, nullptr, nullptr, 0));
      paged_->Write(text.data(), text.size());
      paged_->Seek(0, 0);
      rc = adpProcessStream(ctx_, &trace_, paged_.get(), &pList, env_, err_, svc_, &instance_,
                            &ind_, &nInd, tdo_, &nLobs);
    }
    if (pLobs != nullptr) *pLobs = nLobs;
    return rc;
  }

  // Stores the object read last, as a host does: present at its root,
  // inserted through a bound object.
  void Store() {
    ind_[0] = OCI_IND_NOTNULL;
    OCIStmt* pStmt = nullptr;
    const char* pszSql = "INSERT INTO l_docs VALUES (:1)";
    ASSERT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtPrepare(pStmt, err_, Text(pszSql), Len(pszSql), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    OCIBind* pBind = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIBindByPos(pStmt, &pBind, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                        nullptr, nullptr, 0, nullptr, OCI_DEFAULT));
    void* pInstance = instance_;
    void* pInd = ind_;
    ASSERT_EQ(OCI_SUCCESS, OCIBindObject(pBind, err_, tdo_, &pInstance, nullptr, &pInd, nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, pStmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT))
        << FirstError();
    ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(pStmt, OCI_HTYPE_STMT));
  }

  int WriteLobs(int nId) {
    const std::string sql =
        "SELECT VALUE(d) FROM l_docs d WHERE id = " + std::to_string(nId) + " FOR UPDATE";
    return adpWriteLobs(ctx_, &trace_, sql.c_str());
  }

  // The stored contents of one LOB, read from a second session after commit.
  std::string Stored(int nId, const char* pszColumn, bool* pNull = nullptr) {
    OCIEnv* pEnv = nullptr;
    OCIError* pErr = nullptr;
    OCISvcCtx* pSvc = nullptr;
    const std::string db = DatabaseName();
    EXPECT_EQ(OCI_SUCCESS, OCIEnvCreate(&pEnv, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr));
    OCIHandleAlloc(pEnv, reinterpret_cast<void**>(&pErr), OCI_HTYPE_ERROR, 0, nullptr);
    EXPECT_EQ(OCI_SUCCESS, OCILogon(pEnv, pErr, &pSvc, Text("scott"), 5, Text("tiger"), 5,
                                    Text(db.c_str()), Len(db.c_str())));
    const std::string sql = std::string("SELECT ") + pszColumn + " FROM l_docs WHERE id = " +
                            std::to_string(nId);
    OCIStmt* pStmt = nullptr;
    OCIHandleAlloc(pEnv, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT, 0, nullptr);
    OCIStmtPrepare(pStmt, pErr, Text(sql.c_str()), static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX,
                   OCI_DEFAULT);
    OCILobLocator* pLob = nullptr;
    OCIDescriptorAlloc(pEnv, reinterpret_cast<void**>(&pLob), OCI_DTYPE_LOB, 0, nullptr);
    OCIDefine* pDefine = nullptr;
    OCIInd nInd = 0;
    const ub2 nType = std::strcmp(pszColumn, "body") == 0 ? SQLT_CLOB : SQLT_BLOB;
    OCIDefineByPos(pStmt, &pDefine, pErr, 1, &pLob, sizeof pLob, nType, &nInd, nullptr, nullptr,
                   OCI_DEFAULT);
    EXPECT_EQ(OCI_SUCCESS, OCIStmtExecute(pSvc, pStmt, pErr, 1, 0, nullptr, nullptr, OCI_DEFAULT));
    std::string out;
    if (pNull != nullptr) *pNull = nInd == OCI_IND_NULL;
    if (nInd != OCI_IND_NULL) {
      ub4 nLength = 0;
      OCILobGetLength(pSvc, pErr, pLob, &nLength);
      out.resize(nLength * 4 + 1);
      ub4 nAmount = 0;
      EXPECT_EQ(OCI_SUCCESS, OCILobRead(pSvc, pErr, pLob, &nAmount, 1, &out[0],
                                        static_cast<ub4>(out.size()), nullptr, nullptr, 0,
                                        SQLCS_IMPLICIT));
      out.resize(nAmount);
    }
    OCIDescriptorFree(pLob, OCI_DTYPE_LOB);
    OCIHandleFree(pStmt, OCI_HTYPE_STMT);
    OCIHandleFree(pEnv, OCI_HTYPE_ENV);
    return out;
  }

  Column_Def* defs_ = nullptr;
  OCIType* tdo_ = nullptr;
  void* instance_ = nullptr;
  OCIInd* ind_ = nullptr;
  std::unique_ptr<CKelStream> paged_;
  std::deque<std::string> buffers_;
};

const std::string kImage("\0|!][\xff!!", 8);

TEST_F(LobPassTest, StoredObjectGetsItsLargeObjects) {
  int nLobs = 0;
  ASSERT_EQ(0, Read("1|text !| with !!, ![x!] and !\r\n|8|" + kImage + "|t", 0, &nLobs))
      << LastException() << Trace();
  EXPECT_EQ(1, nLobs);
  Store();
  ASSERT_EQ(0, WriteLobs(1)) << LastException() << Trace();
  MustExec("COMMIT");
  EXPECT_EQ("text | with !, [x] and \r\n", Stored(1, "body"));
  EXPECT_EQ(kImage, Stored(1, "img"));
  EXPECT_EQ("", Trace());
}

TEST_F(LobPassTest, TraceOfBothPasses) {
  trace_.SetLevel(2);
  ASSERT_EQ(0, Read("2|a!|b|3|xyz|"));
  Store();
  ClearTrace();
  ASSERT_EQ(0, WriteLobs(2)) << LastException();
  EXPECT_EQ("Processing LOB field - second pass...\nLOB: size 3\n"
            "Processing LOB field - second pass...\nLOB: size 3\n",
            Trace());
}

TEST_F(LobPassTest, NullLargeObjectsWriteNothingAndStayNull) {
  int nLobs = -1;
  ASSERT_EQ(0, Read("3|||t", 0, &nLobs)) << LastException() << Trace();
  EXPECT_EQ(0, nLobs);
  Store();
  ASSERT_EQ(0, WriteLobs(3)) << LastException() << Trace();
  MustExec("COMMIT");
  bool bNull = false;
  Stored(3, "body", &bNull);
  EXPECT_TRUE(bNull);
  Stored(3, "img", &bNull);
  EXPECT_TRUE(bNull);
  CAdpTree& body = *static_cast<CAdp*>(ctx_)->_GetTree().GetFirstChild()->GetNextSibling();
  EXPECT_EQ(OCI_IND_NULL, body.m_Data.m_nInd);
}

TEST_F(LobPassTest, LargeObjectInABufferIsWrittenWhole) {
  std::string text;
  for (int i = 0; i < 200000; ++i) text += static_cast<char>('a' + i % 26);
  ASSERT_EQ(0, Read("4|" + text + "|0||"));
  Store();
  ASSERT_EQ(0, WriteLobs(4)) << LastException() << Trace();
  MustExec("COMMIT");
  EXPECT_TRUE(Stored(4, "body") == text);
  EXPECT_EQ("", Stored(4, "img"));
}

// Every page of a host stream is written on its own from the large
// object's first byte, so a value that spans pages ends as its pages laid
// over each other, the longest extent kept.
TEST_F(LobPassTest, LargeObjectSpanningStreamPagesIsWrittenPageByPage) {
  const std::string head = "5|";
  std::string body;
  for (int i = 0; i < 40; ++i) body += static_cast<char>('A' + i % 26);
  ASSERT_EQ(0, Read(head + body + "|0||", 16)) << LastException() << Trace();
  Store();
  ASSERT_EQ(0, WriteLobs(5)) << LastException() << Trace();
  MustExec("COMMIT");
  std::string expected;
  for (size_t nPos = 0; nPos < body.size();) {
    const size_t nInPage = 16 - (head.size() + nPos) % 16;
    const std::string page = body.substr(nPos, nInPage);
    if (expected.size() < page.size()) expected.resize(page.size());
    expected.replace(0, page.size(), page);
    nPos += page.size();
  }
  EXPECT_EQ(expected, Stored(5, "body"));
  EXPECT_NE(body, expected);
}

TEST_F(LobPassTest, BlobKeepsItsReleaseCharacters) {
  ASSERT_EQ(0, Read("6||4|!!!||"));
  Store();
  ASSERT_EQ(0, WriteLobs(6)) << LastException() << Trace();
  MustExec("COMMIT");
  EXPECT_EQ("!!!|", Stored(6, "img"));
}

TEST_F(LobPassTest, TruncatedStreamFailsWith21) {
  const std::string text = "7|some clob text|0||";
  ASSERT_EQ(0, Read(text, 64)) << LastException();
  Store();
  paged_->SetSize(4);
  EXPECT_EQ(-21, WriteLobs(7));
  EXPECT_EQ("-21|CAdp::_OraStreamToLobField|" + std::string(KelGetErrorText(-21)), LastException());
  EXPECT_EQ("*ERR: in CAdp::_OraStreamToLobField (-2)\n*ERR: in CAdp::_ReadStream (-2)\n"
            "*ERR: in adpWriteLobs (-2)\n",
            Trace());
}

TEST_F(LobPassTest, ReleaseLastInAStreamPageFailsWith1102) {
  // "8|" then the CLOB: its release falls on the last byte of the first
  // 8-byte page, and pages are taken apart one by one.
  ASSERT_EQ(0, Read("8|abcde!|fg|0||", 8)) << LastException() << Trace();
  Store();
  EXPECT_EQ(-1102, WriteLobs(8));
  EXPECT_EQ("-1102|CAdpReleseParser::GetNextBlock|Invalid relese character position",
            LastException());
  EXPECT_EQ("*ERR: at offset 6\n*ERR: in CAdpReleseParser::GetNextBlock (-2)\n"
            "*ERR: in CAdp::_OraWriteLobElementFromPage (-2)\n"
            "*ERR: in CAdp::_OraStreamToLobField (-2)\n*ERR: in CAdp::_ReadStream (-2)\n"
            "*ERR: in adpWriteLobs (-2)\n",
            Trace());
  // The context goes on: another object reads and stores whole.
  ClearTrace();
  ASSERT_EQ(0, Read("9|ok!||0||"));
  Store();
  ASSERT_EQ(0, WriteLobs(9)) << LastException() << Trace();
  MustExec("COMMIT");
  EXPECT_EQ("ok|", Stored(9, "body"));
}

TEST_F(LobPassTest, QueryThatSelectsNoRow) {
  ASSERT_EQ(0, Read("10|x|0||"));
  Store();
  EXPECT_EQ(-24, WriteLobs(999));
  EXPECT_EQ("-24|_OraSelectObject|" + std::string(KelGetErrorText(-24)), LastException());
  EXPECT_EQ("No data condition (100) returned by OCIStmtExecute, errcode=1403\n"
            "ORA-01403: no data found\n*ERR: in _OraSelectObject (-2)\n*ERR: in adpWriteLobs (-2)\n",
            Trace());
}

// decision D3: the pass then walks the fetched object with a NULL root null
// structure, which Oracle takes as the instance's own.
TEST_F(LobPassTest, SelectionOfAnObjectRootKeepsTheFetchedInstanceAndNoIndicator) {
  ASSERT_EQ(0, Read("11|x|0||"));
  Store();
  ASSERT_EQ(0, WriteLobs(11));
  const CAdpElementData& root = static_cast<CAdp*>(ctx_)->_GetTree().m_Data;
  EXPECT_NE(nullptr, root.m_pField);
  EXPECT_NE(instance_, root.m_pField);
  EXPECT_EQ(nullptr, root.m_pInd);
}

struct SelectFailure {
  const char* pszCall;
  const char* pszLabel;
};

class LobSelectFailureTest : public LobPassTest,
                             public ::testing::WithParamInterface<SelectFailure> {};

TEST_P(LobSelectFailureTest, FailsWithTheCallsLabelAndFreesTheStatement) {
  ASSERT_EQ(0, Read("12|x|0||"));
  Store();
  const sb4 nCode = 20002;
  const char* pszText = "injected";
  ocimemFaultArm(GetParam().pszCall, 1, OCI_ERROR, &nCode, &pszText, 1);
  EXPECT_EQ(-24, WriteLobs(12));
  EXPECT_EQ("-24|_OraSelectObject|" + std::string(KelGetErrorText(-24)), LastException());
  EXPECT_EQ(std::string("Error (-1) returned by ") + GetParam().pszLabel +
                ", errcode=20002\nORA-20002: injected\n*ERR: in _OraSelectObject (-2)\n"
                "*ERR: in adpWriteLobs (-2)\n",
            Trace());
  ocimemFaultReset();
  ClearTrace();
  ASSERT_EQ(0, WriteLobs(12)) << LastException() << Trace();
  MustExec("COMMIT");
  EXPECT_EQ("x", Stored(12, "body"));
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, LobSelectFailureTest,
    ::testing::Values(SelectFailure{"OCIStmtPrepare", "OCIStmtPrepare"},
                      SelectFailure{"OCIDefineByPos", "OCIDefineByPos"},
                      SelectFailure{"OCIDefineObject", "OCIDefineObject"},
                      SelectFailure{"OCIStmtExecute", "OCIStmtExecute"}),
    [](const ::testing::TestParamInfo<SelectFailure>& info) { return info.param.pszCall; });

TEST_F(LobPassTest, StatementThatCannotBeAllocated) {
  ASSERT_EQ(0, Read("13|x|0||"));
  Store();
  ocimemFaultArm("OCIHandleAlloc", 1, OCI_ERROR, nullptr, nullptr, 0);
  EXPECT_EQ(-24, WriteLobs(13));
  EXPECT_EQ(0u, Trace().find("Error (-1) returned by OCIHandleAlloc(OCI_HTYPE_STMT)\n"));
}

TEST_F(LobPassTest, LobWriteFailure) {
  ASSERT_EQ(0, Read("14|abc|0||"));
  Store();
  const sb4 nCode = 22920;
  const char* pszText = "row containing the LOB value is not locked";
  ocimemFaultArm("OCILobWrite", 1, OCI_ERROR, &nCode, &pszText, 1);
  EXPECT_EQ(-24, WriteLobs(14));
  EXPECT_EQ("-24|CAdp::_OraWriteLobElementFromPage|" + std::string(KelGetErrorText(-24)),
            LastException());
  EXPECT_EQ("Error (-1) returned by OCILobWrite, errcode=22920\n"
            "ORA-22920: row containing the LOB value is not locked\n"
            "*ERR: in CAdp::_OraWriteLobElementFromPage (-2)\n"
            "*ERR: in CAdp::_OraStreamToLobField (-2)\n*ERR: in CAdp::_ReadStream (-2)\n"
            "*ERR: in adpWriteLobs (-2)\n",
            Trace());
}

TEST_F(LobPassTest, WriteLobsWithoutContextIsRefused) {
  EXPECT_EQ(-8, adpWriteLobs(nullptr, &trace_, "select 1 from dual"));
  EXPECT_EQ("*ERR: in adpWriteLobs (-2)\n", Trace());
  ClearTrace();
  EXPECT_THROW(AdpWriteLobs(nullptr, &trace_, "x"), CKelException);
  EXPECT_EQ("*ERR: in AdpProcessStreamWriteLobs (-2)\n", Trace());
}

TEST_F(LobPassTest, CppFlowThroughTheBuffer) {
  const std::string text = "15|c++ !| text|2|hi|";
  Column_Def* pList = defs_;
  short nInd = 0;
  const int nLobs = AdpProcessBuffer(ctx_, &trace_, text.data(), text.size(), pList, env_, err_,
                                     svc_, instance_, ind_, nInd, tdo_);
  EXPECT_EQ(1, nLobs);
  Store();
  AdpWriteLobs(ctx_, &trace_, "SELECT VALUE(d) FROM l_docs d WHERE id = 15 FOR UPDATE");
  MustExec("COMMIT");
  EXPECT_EQ("c++ | text", Stored(15, "body"));
  EXPECT_EQ("hi", Stored(15, "img"));
  EXPECT_EQ("", Trace());
}

}  // namespace
}  // namespace adapter_test
