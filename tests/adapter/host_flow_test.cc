// The library used as a host uses it: objects fetched from a table with
// their large objects, the level-2 trace of a whole object, and one context
// per thread.
#include <thread>

#include "adapter_fixture.h"

namespace adapter_test {
namespace {

class HostFlowTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE h_tags_t AS VARRAY(4) OF VARCHAR2(10)");
    MustExec("CREATE TYPE h_doc_t AS OBJECT (id NUMBER(6), title VARCHAR2(40), body CLOB, "
             "img BLOB, tags h_tags_t)");
    MustExec("CREATE TABLE h_docs OF h_doc_t");
    defs_.Number("ID", 6, 0);
    defs_.Text("TITLE", 40);
    defs_.Scalar("BODY", SQLT_CLOB, 112, 4000);
    defs_.Scalar("IMG", SQLT_BLOB, 113, 4000);
    defs_.Open("TAGS", "SCOTT.H_TAGS_T", true);
    defs_.Text(nullptr, 10);
    defs_.Close();
  }

  // Fetches the stored object with the given id, locked for update.
  Instance Fetch(int nId) {
    Instance inst;
    inst.pTdo = Type("H_DOC_T");
    const std::string sql =
        "SELECT VALUE(d) FROM h_docs d WHERE id = " + std::to_string(nId) + " FOR UPDATE";
    OCIStmt* pStmt = nullptr;
    OCIDefine* pDefine = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    EXPECT_EQ(OCI_SUCCESS, OCIStmtPrepare(pStmt, err_, Text(sql.c_str()),
                                          static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX,
                                          OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIDefineByPos(pStmt, &pDefine, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                          nullptr, nullptr, OCI_DEFAULT));
    EXPECT_EQ(OCI_SUCCESS, OCIDefineObject(pDefine, err_, inst.pTdo, &inst.pObject, nullptr,
                                           reinterpret_cast<void**>(&inst.pInd), nullptr));
    EXPECT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, pStmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT))
        << FirstError();
    EXPECT_EQ(OCI_SUCCESS, OCIHandleFree(pStmt, OCI_HTYPE_STMT));
    objects_.push_back(inst.pObject);
    return inst;
  }

  void WriteLob(const Instance& inst, const char* pszAttr, const std::string& bytes) {
    OCILobLocator* pLob = *static_cast<OCILobLocator**>(Slot(inst, {pszAttr}));
    ub4 nAmount = static_cast<ub4>(bytes.size());
    ASSERT_EQ(OCI_SUCCESS, OCILobWrite(svc_, err_, pLob, &nAmount, 1,
                                       const_cast<char*>(bytes.data()),
                                       static_cast<ub4>(bytes.size()), OCI_ONE_PIECE, nullptr,
                                       nullptr, 0, SQLCS_IMPLICIT))
        << FirstError();
  }

  DefList defs_;
};

TEST_F(HostFlowTest, StoredObjectWithLargeObjects) {
  MustExec("INSERT INTO h_docs VALUES (h_doc_t(1, 'T|1', 'line1\r\nline2 | ! [x]', EMPTY_BLOB(), "
           "h_tags_t('a', 'b]')))");
  Instance doc = Fetch(1);
  const std::string image("\0|!]\xff", 5);
  WriteLob(doc, "IMG", image);
  ASSERT_EQ(0, Write(defs_.Head(), doc)) << LastException() << Trace();
  EXPECT_EQ("1|T!|1|line1!\r\nline2 !| !! ![x!]|5|" + image + "|[a|b!]]", Stream());
}

TEST_F(HostFlowTest, LargeObjectBiggerThanAStreamPage) {
  MustExec("INSERT INTO h_docs VALUES (h_doc_t(2, NULL, EMPTY_CLOB(), NULL, NULL))");
  Instance doc = Fetch(2);
  std::string text;
  for (int i = 0; i < 50000; ++i) text += (i % 97 == 0) ? '|' : static_cast<char>('a' + i % 26);
  WriteLob(doc, "BODY", text);
  ASSERT_EQ(0, Write(defs_.Head(), doc)) << LastException() << Trace();
  std::string escaped;
  for (char c : text) {
    if (c == '|') escaped += '!';
    escaped += c;
  }
  // A null BLOB writes its bar.
  const std::string out = Stream();
  EXPECT_TRUE(out == "2||" + escaped + "|||") << out.size();
}

TEST_F(HostFlowTest, ClobWithMultibyteCharactersKeepsItsBytes) {
  MustExec("INSERT INTO h_docs VALUES (h_doc_t(3, NULL, 'caf\xc3\xa9 \xe2\x82\xac|', NULL, NULL))");
  ASSERT_EQ(0, Write(defs_.Head(), Fetch(3))) << LastException() << Trace();
  EXPECT_EQ("3||caf\xc3\xa9 \xe2\x82\xac!||||", Stream());
}

TEST_F(HostFlowTest, LevelTwoTraceOfAWholeObject) {
  MustExec("INSERT INTO h_docs VALUES (h_doc_t(4, 'x!', 'ab', EMPTY_BLOB(), h_tags_t('t', NULL)))");
  Instance doc = Fetch(4);
  trace_.SetLevel(2);
  ASSERT_EQ(0, Write(defs_.Head(), doc)) << LastException();
  EXPECT_EQ("4|x!!|ab|0||[t|]", Stream());
  EXPECT_EQ(
      "Processing NUMBER field...\n"
      "NUMBER->TEXT: precision 6, scale 0, format \"FM999999\", size = 1\n"
      "Processing TEXT field...\n"
      "TEXT: size = 3\n"
      "Processing LOB field...\n"
      "CLOB: size 2\n"
      "Processing LOB field...\n"
      "LOB: size 0\n"
      "Processing TEXT field...\n"
      "TEXT: size = 1\n"
      "Processing TEXT field...\n"
      "TEXT: NULL\n",
      Trace());
}

TEST_F(HostFlowTest, OneContextPerThreadWritesWhatOneThreadWrites) {
  MustExec("INSERT INTO h_docs VALUES (h_doc_t(5, 'thread|safe', 'body', EMPTY_BLOB(), "
           "h_tags_t('p', 'q', 'r')))");
  MustExec("COMMIT");
  ASSERT_EQ(0, Write(defs_.Head(), Fetch(5)));
  const std::string expected = Stream();
  const std::string db = DatabaseName();

  constexpr int kThreads = 4;
  constexpr int kRounds = 200;
  std::vector<std::string> outputs(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      OCIEnv* pEnv = nullptr;
      OCIError* pErr = nullptr;
      OCISvcCtx* pSvc = nullptr;
      if (OCIEnvCreate(&pEnv, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr) ||
          OCIHandleAlloc(pEnv, reinterpret_cast<void**>(&pErr), OCI_HTYPE_ERROR, 0, nullptr) ||
          OCILogon(pEnv, pErr, &pSvc, Text("scott"), 5, Text("tiger"), 5, Text(db.c_str()),
                   Len(db.c_str()))) {
        outputs[t] = "no session";
        return;
      }
      OCIType* pTdo = nullptr;
      OCITypeByName(pEnv, pErr, pSvc, nullptr, 0, Text("H_DOC_T"), 7, nullptr, 0,
                    OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER, &pTdo);
      OCIStmt* pStmt = nullptr;
      OCIDefine* pDefine = nullptr;
      void* pObject = nullptr;
      OCIInd* pInd = nullptr;
      const char* pszSql = "SELECT VALUE(d) FROM h_docs d WHERE id = 5";
      OCIHandleAlloc(pEnv, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT, 0, nullptr);
      OCIStmtPrepare(pStmt, pErr, Text(pszSql), Len(pszSql), OCI_NTV_SYNTAX, OCI_DEFAULT);
      OCIDefineByPos(pStmt, &pDefine, pErr, 1, nullptr, 0, SQLT_NTY, nullptr, nullptr, nullptr,
                     OCI_DEFAULT);
      OCIDefineObject(pDefine, pErr, pTdo, &pObject, nullptr, reinterpret_cast<void**>(&pInd),
                      nullptr);
      const sword nFetched = OCIStmtExecute(pSvc, pStmt, pErr, 1, 0, nullptr, nullptr, OCI_DEFAULT);
      OCIHandleFree(pStmt, OCI_HTYPE_STMT);
      VARNADP* pCtx = nullptr;
      CKelStream stream(0, nullptr, nullptr, 0);
      if (nFetched != OCI_SUCCESS || adpCreateContext(&pCtx, nullptr, nullptr) != 0) {
        outputs[t] = "no object";
      } else {
        std::string all;
        for (int i = 0; i < kRounds; ++i) {
          Column_Def* pList = defs_.Head();
          stream.SetSize(0);
          if (adpProcessObject(pCtx, nullptr, &stream, &pList, pEnv, pErr, pSvc, pObject, pInd, 0,
                               pTdo) != 0) {
            all = "failed";
            break;
          }
          std::string out(stream.GetSize(), '\0');
          stream.Seek(0, 0);
          stream.Read(&out[0], out.size());
          if (i == 0) all = out;
          if (out != all) {
            all = "differs";
            break;
          }
        }
        outputs[t] = all;
        adpDestroyContext(pCtx, nullptr);
      }
      OCIHandleFree(pEnv, OCI_HTYPE_ENV);
    });
  }
  for (std::thread& t : threads) t.join();
  for (const std::string& out : outputs) EXPECT_EQ(expected, out);
}

}  // namespace
}  // namespace adapter_test
