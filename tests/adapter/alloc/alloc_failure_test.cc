// Memory that cannot be had, at every allocation of a call in turn: the
// call answers -10, nothing leaks, and the context goes on working.
#include "../adapter_fixture.h"
#include "alloc_hooks.h"

namespace adapter_test {
namespace {

class AllocFailureTest : public AdapterTest {
 protected:
  void SetUp() override {
    AdapterTest::SetUp();
    MustExec("CREATE TYPE a_nums_t AS TABLE OF NUMBER(4)");
    MustExec("CREATE TYPE a_in_t AS OBJECT (x VARCHAR2(10), nums a_nums_t)");
    MustExec("CREATE TYPE a_ins_t AS VARRAY(9) OF a_in_t");
    MustExec("CREATE TYPE a_t AS OBJECT (id NUMBER(4), c CLOB, ins a_ins_t)");
    inst_ = NewObject("A_T");
    SetNumber(inst_, {"ID"}, "9");
    Mark(inst_, {"C"});
    OCIColl* pIns = Coll(inst_, {"INS"});
    for (int i = 0; i < 3; ++i) {
      Instance in = NewObject("A_IN_T");
      SetText(in, {"X"}, "x" + std::to_string(i));
      OCIColl* pNums = Coll(in, {"NUMS"});
      for (int n = 0; n <= i; ++n) AppendNumber(pNums, std::to_string(n).c_str());
      AppendObject(pIns, in);
    }
  }

  static void Describe(DefList& defs) {
    defs.Number("ID", 4, 0);
    defs.Scalar("C", SQLT_CLOB, 112, 4000);
    defs.Open("INS", "SCOTT.A_INS_T", true);
    defs.Open(nullptr, "SCOTT.A_IN_T");
    defs.Text("X", 10);
    defs.Open("NUMS", "SCOTT.A_NUMS_T", true);
    defs.Number(nullptr, 4, 0);
    defs.Close();
    defs.Close();
    defs.Close();
  }

  Instance inst_;
};

const char kWhole[] = "9||[[x0|[0]]|[x1|[0|1]]|[x2|[0|1|2]]]";

TEST_F(AllocFailureTest, ContextThatCannotBeAllocated) {
  VARNADP* pCtx = reinterpret_cast<VARNADP*>(&inst_);
  {
    kel_test::FailureScope failure(1);
    EXPECT_EQ(-10, adpCreateContext(&pCtx, &trace_, nullptr));
  }
  EXPECT_EQ(reinterpret_cast<VARNADP*>(&inst_), pCtx);
  EXPECT_EQ("-10|adpCreateContext|" + std::string(KelGetErrorText(-10)), LastException());
  EXPECT_EQ("*ERR: in adpCreateContext (-2)\n", Trace());
}

TEST_F(AllocFailureTest, EveryAllocationOfAWholeCallInTurn) {
  // Every list stays alive to the end, so that no two get one address: a
  // list at the address of the last one is taken for the last one.
  std::deque<DefList> lists;
  unsigned long n = 1;
  for (;; ++n) {
    DefList& defs = lists.emplace_back();
    Describe(defs);
    ClearStream();
    ClearTrace();
    KelClearLastException();
    int rc;
    bool bInjected;
    {
      kel_test::ArmFailure(n);
      rc = Write(defs.Head(), inst_);
      bInjected = kel_test::DisarmFailure();
    }
    if (!bInjected) {
      ASSERT_EQ(0, rc) << n << LastException() << Trace();
      EXPECT_EQ(kWhole, Stream());
      break;
    }
    // The adapter's own allocations answer -10; one that the OCI cannot
    // make fails that OCI call, which the adapter reports as -24.
    ASSERT_TRUE(rc == -10 || rc == -24) << "allocation " << n << ": " << LastException();
    EXPECT_EQ(std::to_string(rc), LastException().substr(0, 3)) << n;
    const std::string trace = Trace();
    const std::string last = "*ERR: in adpProcessObject (-2)\n";
    ASSERT_GE(trace.size(), last.size());
    EXPECT_EQ(last, trace.substr(trace.size() - last.size())) << trace;
    // Freshly described, the same object writes whole on this context.
    DefList& again = lists.emplace_back();
    Describe(again);
    ClearStream();
    ASSERT_EQ(0, Write(again.Head(), inst_)) << n << ": " << LastException();
    EXPECT_EQ(kWhole, Stream()) << n;
  }
  EXPECT_GT(n, 5u);
}

TEST_F(AllocFailureTest, LargeObjectBufferThatCannotBeAllocated) {
  DefList defs;
  defs.Number("ID", 4, 0);
  defs.Scalar("C", SQLT_CLOB, 112, 4000);
  ASSERT_EQ(0, Write(defs.Head(), inst_));
  // With the tree built, the only allocation left is the LOB buffer.
  ClearStream();
  {
    kel_test::FailureScope failure(1);
    EXPECT_EQ(-10, Write(defs.Head(), inst_));
  }
  EXPECT_EQ("-10|CAdp::_OraFieldToStream|" + std::string(KelGetErrorText(-10)), LastException());
  EXPECT_EQ("9|", Stream());
}

TEST_F(AllocFailureTest, TreeLeftHalfBuiltIsReusedForTheSameList) {
  DefList defs;
  Describe(defs);
  {
    kel_test::FailureScope failure(3);
    EXPECT_EQ(-10, Write(defs.Head(), inst_));
  }
  // The list's address is already taken as built: the partial tree stays
  // until the host passes another list.
  ClearStream();
  EXPECT_EQ(0, Write(defs.Head(), inst_)) << LastException();
  EXPECT_NE(kWhole, Stream());
  DefList fresh;
  Describe(fresh);
  ClearStream();
  EXPECT_EQ(0, Write(fresh.Head(), inst_)) << LastException();
  EXPECT_EQ(kWhole, Stream());
}

}  // namespace
}  // namespace adapter_test
