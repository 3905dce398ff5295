// Size: a collection of many items costs per item what a small one does,
// both ways, and collections of objects too. A walk that went back over the
// items it had passed would cost a hundred times more per item here.
#include <algorithm>
#include <chrono>
#include <string>

#include "adapter_fixture.h"

namespace adapter_test {
namespace {

using Clock = std::chrono::steady_clock;

class ScaleTest : public ReadTest {
 protected:
  void SetUp() override {
    ReadTest::SetUp();
    MustExec("CREATE TYPE s_nums_t AS TABLE OF NUMBER(10)");
    MustExec("CREATE TYPE s_pt_t AS OBJECT (x NUMBER(6), y NUMBER(6))");
    MustExec("CREATE TYPE s_pts_t AS TABLE OF s_pt_t");
    MustExec("CREATE TYPE s_t AS OBJECT (id NUMBER(4), nums s_nums_t, pts s_pts_t)");
    defs_.Number("ID", 4, 0);
    defs_.Open("NUMS", "SCOTT.S_NUMS_T", true);
    defs_.Number(nullptr, 10, 0);
    defs_.Close();
    defs_.Open("PTS", "SCOTT.S_PTS_T", true);
    defs_.Open(nullptr, "SCOTT.S_PT_T");
    defs_.Number("X", 6, 0);
    defs_.Number("Y", 6, 0);
    defs_.Close();
    defs_.Close();
  }

  // An object with n numbers and n / 4 points, and the text it is written as.
  Instance Make(int n, std::string* pText) {
    Instance inst = NewObject("S_T");
    SetNumber(inst, {"ID"}, "1");
    OCIColl* pNums = Coll(inst, {"NUMS"});
    OCIColl* pPts = Coll(inst, {"PTS"});
    std::string nums;
    std::string pts;
    OCINumber number;
    OCIInd nInd = OCI_IND_NOTNULL;
    for (int i = 0; i < n; ++i) {
      const std::string digits = std::to_string(1000000 + i);
      EXPECT_EQ(OCI_SUCCESS, NumberFromText(digits.c_str(), &number, nullptr));
      EXPECT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &number, &nInd, pNums));
      nums += (i == 0 ? "" : "|") + digits;
    }
    Instance pt = NewObject("S_PT_T");
    for (int i = 0; i < n / 4; ++i) {
      const std::string x = std::to_string(i % 100000);
      SetNumber(pt, {"X"}, x.c_str());
      SetNumber(pt, {"Y"}, "7");
      EXPECT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, pt.pObject, pt.pInd, pPts));
      pts += (i == 0 ? "[" : "|[") + x + "|7]";
    }
    *pText = "1|[" + nums + "]|[" + pts + "]";
    return inst;
  }

  // The least time of a few writes and of a few reads of an object of n
  // numbers, each checked; seconds per item.
  void Measure(int n, double* pWrite, double* pRead) {
    std::string text;
    const Instance inst = Make(n, &text);
    double write = 1e9;
    double read = 1e9;
    for (int rep = 0; rep < 3; ++rep) {
      ClearStream();
      const Clock::time_point t0 = Clock::now();
      const int rc = Write(defs_.Head(), inst);
      const Clock::time_point t1 = Clock::now();
      ASSERT_EQ(0, rc) << LastException();
      ASSERT_EQ(text, Stream());
      const ReadResult r = ReadBuffer(defs_.Head(), text, inst.pTdo);
      const Clock::time_point t2 = Clock::now();
      ASSERT_EQ(0, r.nRC) << LastException();
      ASSERT_EQ(static_cast<long>(text.size()), r.nConsumed);
      if (rep == 0) {
        ASSERT_EQ(text, WriteBack(defs_.Head(), r, inst.pTdo));
      }
      write = std::min(write, std::chrono::duration<double>(t1 - t0).count());
      read = std::min(read, std::chrono::duration<double>(t2 - t1).count());
    }
    *pWrite = write / n;
    *pRead = read / n;
  }

  DefList defs_;
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kTimed = false;  // the sanitizers' allocators set the pace
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr bool kTimed = false;
#else
constexpr bool kTimed = true;
#endif
#else
constexpr bool kTimed = true;
#endif

TEST_F(ScaleTest, ALargeCollectionCostsPerItemWhatASmallOneDoes) {
  // Both sizes beyond the caches, so that only the walk's own cost differs.
  constexpr int kSmall = 20000;
  constexpr int kLarge = 200000;
  double small_write = 0;
  double small_read = 0;
  double large_write = 0;
  double large_read = 0;
  ASSERT_NO_FATAL_FAILURE(Measure(kTimed ? kSmall : kSmall / 10, &small_write, &small_read));
  ASSERT_NO_FATAL_FAILURE(Measure(kTimed ? kLarge : kLarge / 10, &large_write, &large_read));
  std::printf("per item: write %.0f ns vs %.0f ns, read %.0f ns vs %.0f ns (ten times the items)\n",
              small_write * 1e9, large_write * 1e9, small_read * 1e9, large_read * 1e9);
  if (!kTimed) return;
  // Ten times the items; linear cost keeps the time per item, a walk back
  // over the items passed would multiply it by ten. A loaded machine's
  // noise is allowed for.
  EXPECT_LT(large_write, 4 * small_write);
  EXPECT_LT(large_read, 4 * small_read);
}

}  // namespace
}  // namespace adapter_test
