// Memory that cannot be had, at every allocation of a whole call in turn, of
// any kind (operator new, nothrow new, malloc, calloc, realloc) and wherever
// it happens: in the adapter, the host library or the in-memory OCI. Each
// time the call answers -10 (the adapter's own) or -24 (an OCI call that
// reported ORA-04030), the trace ends with the entry point's scope, nothing
// stays allocated that a call without the failure would not leave, and the
// same context then does the same call whole.
#include <coldef.h>
#include <ocimem.h>

#include <functional>
#include <map>

#include "../adapter_fixture.h"
#include "every_allocation.h"

namespace adapter_test {
namespace {

namespace ea = every_allocation;

const char kText[] = "7|clob text|10|blob bytes|[3|home]|[[n0|[0|p0]|[0]]|[n1|[1|p1]|[0|1]]]|[a|b]";

class EveryAllocationTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE m_nums_t AS VARRAY(9) OF NUMBER(4)");
    MustExec("CREATE TYPE m_pt_t AS OBJECT (x NUMBER(4), label VARCHAR2(10))");
    MustExec("CREATE TYPE m_in_t AS OBJECT (name VARCHAR2(10), pt m_pt_t, nums m_nums_t)");
    MustExec("CREATE TYPE m_ins_t AS VARRAY(9) OF m_in_t");
    MustExec("CREATE TYPE m_tags_t AS TABLE OF VARCHAR2(10)");
    MustExec("CREATE TYPE m_t AS OBJECT (id NUMBER(4), c CLOB, b BLOB, home m_pt_t, "
             "ins m_ins_t, tags m_tags_t)");
    MustExec("CREATE TABLE m_docs OF m_t NESTED TABLE tags STORE AS m_docs_tags");
    ASSERT_EQ(0, coldefDescribe(env_, err_, svc_, "SCOTT.M_T", &defs_));
    ASSERT_EQ(0, coldefDescribe(env_, err_, svc_, "SCOTT.M_T", &again_));
    tdo_ = Type("M_T");
    // The trace's buffer grows once here, so that no line of a failed call is
    // lost to the failure it reports.
    trace_.Printf("%s", std::string(1 << 16, 't').c_str());
    ClearTrace();
  }
  void TearDown() override {
    AdapterTest::TearDown();
    coldefFree(defs_);
    coldefFree(again_);
  }

  // Reads kText into a new object on ctx, through a host stream or a buffer.
  int Read(VARNADP* ctx, bool bBuffer, Column_Def* pDefs) {
    Column_Def* pList = pDefs;
    short nInd = 0;
    lobs_ = -1;
    if (bBuffer) {
      const void* pBuffer = kText;
      const int rc = adpProcessBuffer(ctx, &trace_, &pBuffer, sizeof kText - 1, &pList, env_,
                                      err_, svc_, &instance_, &ind_, &nInd, tdo_, &lobs_);
      consumed_ = static_cast<const char*>(pBuffer) - kText;
      return rc;
    }
    stream_.Seek(0, 0);
    const int rc = adpProcessStream(ctx, &trace_, &stream_, &pList, env_, err_, svc_,
                                    &instance_, &ind_, &nInd, tdo_, &lobs_);
    consumed_ = stream_.Tell();
    return rc;
  }

  // What a read left behind, written back through a context of its own.
  std::string ReadBack() {
    VARNADP* pBack = nullptr;
    if (adpCreateContext(&pBack, nullptr, nullptr) != 0) return "no context";
    ind_[0] = OCI_IND_NOTNULL;
    CKelStream out(0, nullptr, nullptr, 0);
    Column_Def* pList = defs_;
    const int rc = adpProcessObject(pBack, nullptr, &out, &pList, env_, err_, svc_, instance_,
                                    ind_, OCI_IND_NOTNULL, tdo_);
    adpDestroyContext(pBack, nullptr);
    if (rc != 0) return "rc=" + std::to_string(rc);
    out.Seek(0, 0);
    std::string text(out.GetSize(), '\0');
    if (!text.empty()) text.resize(out.Read(&text[0], text.size()));
    return text;
  }

  // Stores the object read last, as a host does: inserted through a bound
  // object, with empty LOBs for the LOB pass to fill.
  void Store() {
    ind_[0] = OCI_IND_NOTNULL;
    OCIStmt* pStmt = Prepare("INSERT INTO m_docs VALUES (:1)");
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

  // The stored object, fetched into an instance of this session's.
  void Fetch(void** ppObject, OCIInd** ppInd) {
    OCIStmt* pStmt = Prepare("SELECT VALUE(d) FROM m_docs d");
    OCIDefine* pDefine = nullptr;
    ASSERT_EQ(OCI_SUCCESS, OCIDefineByPos(pStmt, &pDefine, err_, 1, nullptr, 0, SQLT_NTY, nullptr,
                                          nullptr, nullptr, OCI_DEFAULT));
    ASSERT_EQ(OCI_SUCCESS, OCIDefineObject(pDefine, err_, tdo_, ppObject, nullptr,
                                           reinterpret_cast<void**>(ppInd), nullptr));
    ASSERT_EQ(OCI_SUCCESS, OCIStmtExecute(svc_, pStmt, err_, 1, 0, nullptr, nullptr, OCI_DEFAULT))
        << FirstError();
    ASSERT_EQ(OCI_SUCCESS, OCIHandleFree(pStmt, OCI_HTYPE_STMT));
  }

  OCIStmt* Prepare(const char* pszSql) {
    OCIStmt* pStmt = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIHandleAlloc(env_, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT,
                                          0, nullptr));
    EXPECT_EQ(OCI_SUCCESS, OCIStmtPrepare(pStmt, err_, Text(pszSql), Len(pszSql),
                                          OCI_NTV_SYNTAX, OCI_DEFAULT));
    return pStmt;
  }

  // The stored object written out whole, its LOBs included.
  std::string Stored() {
    void* pObject = nullptr;
    OCIInd* pInd = nullptr;
    Fetch(&pObject, &pInd);
    VARNADP* pOut = nullptr;
    if (adpCreateContext(&pOut, nullptr, nullptr) != 0) return "no context";
    CKelStream out(0, nullptr, nullptr, 0);
    Column_Def* pList = defs_;
    const int rc = adpProcessObject(pOut, nullptr, &out, &pList, env_, err_, svc_, pObject, pInd,
                                    OCI_IND_NOTNULL, tdo_);
    adpDestroyContext(pOut, nullptr);
    OCIObjectFree(env_, err_, pObject, OCI_OBJECTFREE_FORCE);
    if (rc != 0) return "rc=" + std::to_string(rc);
    out.Seek(0, 0);
    std::string text(out.GetSize(), '\0');
    if (!text.empty()) text.resize(out.Read(&text[0], text.size()));
    return text;
  }

  struct Round {
    int rc = 0;
    bool injected = false;
    ea::Kind kind = ea::kNew;
    long live = 0;  // blocks got in the round and not released at its end
    long kept = 0;  // of those, the ones the in-memory OCI keeps for reuse
  };

  // Of the blocks a round left live, those the in-memory OCI keeps for reuse.
  static long Kept() {
    long kept = 0;
    ocimemForEachKeptBlock(
        [](void* block, void* count) {
          if (ea::Live(block)) ++*static_cast<long*>(count);
        },
        &kept);
    return kept;
  }

  // One round on a new context: prepare (not counted), the call with the
  // n-th allocation failing (n 0: none), the call again without, the check of
  // its output, the context destroyed. Every failed round is checked here.
  Round RunRound(unsigned long n, const char* pszEntry, const std::function<void(VARNADP*)>& prepare,
                 const std::function<int(VARNADP*, Column_Def*)>& call,
                 const std::function<void()>& check) {
    Round r;
    VARNADP* ctx = nullptr;
    EXPECT_EQ(0, adpCreateContext(&ctx, &trace_, nullptr));
    prepare(ctx);
    ClearTrace();
    KelClearLastException();
    ea::Watch();
    {
      ea::Injection injection(n);
      r.rc = call(ctx, defs_);
      r.injected = ea::Disarm();
      r.kind = ea::FailedKind();
    }
    // A failure the call could do without (a cache not filled) changes
    // nothing: the check below sees the output whole.
    if (r.injected && r.rc != 0) {
      const std::string trace = Trace();
      const std::string where = std::string("allocation ") + std::to_string(n) + " (" +
                                ea::KindName(r.kind) + "): " + LastException() + "\n" + trace;
      EXPECT_TRUE(r.rc == -10 || r.rc == -24) << r.rc << " at " << where;
      EXPECT_EQ(std::to_string(r.rc) + "|", LastException().substr(0, 4)) << where;
      // An OCI call failed for want of memory: ORA-04030, or for the calls
      // that report no diagnostics, the invalid-handle status Oracle gives.
      if (r.rc == -24) {
        EXPECT_TRUE(trace.find("ORA-04030: out of process memory") != std::string::npos ||
                    trace.find("(-2) returned by OCIHandleAlloc") != std::string::npos ||
                    trace.find("(-2) returned by OCIDescriptorAlloc") != std::string::npos)
            << where;
      }
      const std::string last = std::string("*ERR: in ") + pszEntry + " (-2)\n";
      EXPECT_TRUE(trace.size() >= last.size() &&
                  trace.compare(trace.size() - last.size(), last.size(), last) == 0)
          << where;
      // Told by a list at another address, as a host does on every call,
      // the context builds its tree anew.
      EXPECT_EQ(0, call(ctx, again_)) << "again after " << where << LastException();
    }
    check();
    EXPECT_EQ(0, adpDestroyContext(ctx, &trace_));
    r.live = ea::Unwatch();
    r.kept = Kept();
    return r;
  }

  // Rounds for n = 1, 2, ... until the call needs no more allocations than
  // n - 1; returns that n - 1.
  unsigned long EveryAllocation(const char* pszEntry, const std::function<void(VARNADP*)>& prepare,
                                const std::function<int(VARNADP*, Column_Def*)>& call,
                                const std::function<void()>& check,
                                const std::function<void()>& reset = [] {}) {
    // The in-memory OCI keeps freed blocks for reuse (session/recycle.h): a
    // block got in a round and kept there is no leak, and Kept() counts them.
    // Every other block a round leaves is one a clean round leaves too, once
    // the first round has filled what is made once (the last clean round's
    // count): no more, no fewer.
    long base = 0;
    for (int i = 0; i < 3; ++i) {
      const Round clean = RunRound(0, pszEntry, prepare, call, check);
      reset();
      EXPECT_EQ(0, clean.rc) << LastException() << Trace();
      base = clean.live - clean.kept;
    }
    std::map<std::string, unsigned long> kinds;
    unsigned long n = 1;
    for (;; ++n) {
      const Round r = RunRound(n, pszEntry, prepare, call, check);
      reset();
      if (::testing::Test::HasFailure()) {
        ADD_FAILURE() << pszEntry << ": stopped at allocation " << n;
        break;
      }
      if (!r.injected) {
        EXPECT_EQ(0, r.rc);
        break;
      }
      ++kinds[ea::KindName(r.kind)];
      EXPECT_EQ(base, r.live - r.kept)
          << "blocks left by a failure at allocation " << n << " (" << ea::KindName(r.kind)
          << "), " << r.kept << " of " << r.live << " kept for reuse";
    }
    std::string tally;
    for (const auto& k : kinds) tally += " " + k.first + ":" + std::to_string(k.second);
    std::printf("%s: %lu allocations failed in turn;%s\n", pszEntry, n - 1, tally.c_str());
    return n - 1;
  }

  // Every allocation of a read failed in turn. With bAfterARecord the
  // context has read a record before, so its tree is built and the item
  // nodes that binding the new object cuts are put aside and taken back.
  void ReadRounds(bool bBuffer, bool bAfterARecord = false) {
    // adpProcessBuffer reports as adpProcessStream, whose work it does.
    const unsigned long n = EveryAllocation(
        "adpProcessStream",
        [&](VARNADP* ctx) {
          ClearStream();
          stream_.Write(kText, sizeof kText - 1);
          if (bAfterARecord) {
            ASSERT_EQ(0, Read(ctx, bBuffer, defs_)) << LastException();
          }
        },
        [&](VARNADP* ctx, Column_Def* pDefs) { return Read(ctx, bBuffer, pDefs); },
        [&] {
          EXPECT_EQ(1, lobs_);
          EXPECT_EQ(static_cast<long>(sizeof kText - 1), consumed_);
          // The LOBs are still to be written: the object reads back without them.
          EXPECT_EQ("7||0||[3|home]|[[n0|[0|p0]|[0]]|[n1|[1|p1]|[0|1]]]|[a|b]", ReadBack());
        });
    EXPECT_GT(n, bAfterARecord ? 10u : 20u);
  }

  Column_Def* defs_ = nullptr;
  Column_Def* again_ = nullptr;  // the same, at another address
  OCIType* tdo_ = nullptr;
  void* instance_ = nullptr;
  OCIInd* ind_ = nullptr;
  int lobs_ = -1;
  long consumed_ = -1;
};

TEST_F(EveryAllocationTest, ProcessStream) { ReadRounds(false); }

TEST_F(EveryAllocationTest, ProcessBuffer) { ReadRounds(true); }

TEST_F(EveryAllocationTest, ProcessBufferAfterARecord) { ReadRounds(true, true); }

TEST_F(EveryAllocationTest, WriteLobs) {
  const char* pszSelect = "SELECT VALUE(d) FROM m_docs d FOR UPDATE";
  const unsigned long n = EveryAllocation(
      "adpWriteLobs",
      [&](VARNADP* ctx) {
        ASSERT_EQ(0, Read(ctx, true, defs_)) << LastException();
        Store();
      },
      [&](VARNADP* ctx, Column_Def*) { return adpWriteLobs(ctx, &trace_, pszSelect); },
      [&] { EXPECT_EQ(kText, Stored()); },
      // Each round in a transaction of its own: one left open would keep what every
      // round's LOB writes add to it, and grow its lists now and then.
      [&] { MustExec("ROLLBACK"); });
  EXPECT_GT(n, 5u);
}

TEST_F(EveryAllocationTest, ProcessObject) {
  {
    VARNADP* ctx = nullptr;
    ASSERT_EQ(0, adpCreateContext(&ctx, nullptr, nullptr));
    ASSERT_EQ(0, Read(ctx, true, defs_)) << LastException();
    Store();
    ASSERT_EQ(0, adpWriteLobs(ctx, nullptr, "SELECT VALUE(d) FROM m_docs d FOR UPDATE"));
    ASSERT_EQ(0, adpDestroyContext(ctx, nullptr));
  }
  void* pObject = nullptr;
  OCIInd* pInd = nullptr;
  Fetch(&pObject, &pInd);
  const unsigned long n = EveryAllocation(
      "adpProcessObject", [&](VARNADP*) { ClearStream(); },
      [&](VARNADP* ctx, Column_Def* pDefs) {
        ClearStream();
        Column_Def* pList = pDefs;
        return adpProcessObject(ctx, &trace_, &stream_, &pList, env_, err_, svc_, pObject, pInd,
                                OCI_IND_NOTNULL, tdo_);
      },
      [&] { EXPECT_EQ(kText, Stream()); });
  EXPECT_GT(n, 20u);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, pObject, OCI_OBJECTFREE_FORCE));
}

}  // namespace
}  // namespace adapter_test
