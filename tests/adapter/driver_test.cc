// The adapter object's own stream over a caller's buffer, and what the
// per-call set-up keeps and replaces.
#include "adapter/adp.h"
#include "adapter_fixture.h"

namespace adapter_test {
namespace {

std::string ReadAll(CKelStream& stream) {
  std::string out(stream.GetSize(), '\0');
  if (!out.empty()) out.resize(stream.Read(&out[0], out.size()));
  return out;
}

TEST(DriverTest, StreamFromBufferTwiceReplacesTheFirstEntirely) {
  CAdp adp(nullptr);
  const std::string first = "first buffer, longer";
  const std::string second = "second";
  CKelStream& a = adp.StreamFromBuffer(first.data(), first.size());
  EXPECT_EQ(0, a.Tell());
  a.Seek(6, 0);
  CKelStream& b = adp.StreamFromBuffer(second.data(), second.size());
  EXPECT_EQ(&a, &b);
  EXPECT_EQ(0, b.Tell());
  EXPECT_EQ(second, ReadAll(b));
}

TEST(DriverTest, StreamFromAnEmptyBuffer) {
  CAdp adp(nullptr);
  CKelStream& s = adp.StreamFromBuffer("", 0);
  EXPECT_EQ(0u, s.GetSize());
  EXPECT_TRUE(s.IsEnd());
}

TEST(DriverTest, SetUpTakesTheTraceAndStreamBeforeCheckingHandles) {
  CAdp adp(nullptr);
  CKelTrace trace;
  trace.CaptureToBuffer();
  CKelStream stream(0, nullptr, nullptr, 0);
  EXPECT_THROW(adp._Init(stream, &trace, nullptr, nullptr, nullptr, nullptr), CKelException);
  EXPECT_EQ(&trace, adp._GetTrace());
  EXPECT_STREQ("*ERR: in CAdp::_Init (-2)\n", trace.GetBuffer());
  adp._Init(nullptr);
  EXPECT_NE(nullptr, adp._GetTrace());
  EXPECT_NE(&trace, adp._GetTrace());
}

TEST(DriverTest, SetUpSaysWhetherTheTreeMustBeRebuilt) {
  CAdp adp(nullptr);
  CKelStream stream(0, nullptr, nullptr, 0);
  DefList one;
  one.Text("A");
  DefList two;
  two.Text("B");
  auto* pEnv = reinterpret_cast<OCIEnv*>(1);
  auto* pErr = reinterpret_cast<OCIError*>(1);
  auto* pSvc = reinterpret_cast<OCISvcCtx*>(1);
  EXPECT_EQ(1, adp._Init(stream, nullptr, pEnv, pErr, pSvc, one.Head()));
  EXPECT_EQ(0, adp._Init(stream, nullptr, pEnv, pErr, pSvc, one.Head()));
  EXPECT_EQ(1, adp._Init(stream, nullptr, pEnv, pErr, pSvc, two.Head()));
  EXPECT_EQ(1, adp._Init(stream, nullptr, pEnv, pErr, pSvc, one.Head()));
}

TEST(DriverTest, RootDefinitionFollowsTheFirstRecord) {
  CAdp adp(nullptr);
  CKelStream stream(0, nullptr, nullptr, 0);
  DefList items;
  items.Number(nullptr, 5, 0);
  DefList attrs;
  attrs.Number("N", 5, 0);
  auto* pEnv = reinterpret_cast<OCIEnv*>(1);
  auto* pErr = reinterpret_cast<OCIError*>(1);
  auto* pSvc = reinterpret_cast<OCISvcCtx*>(1);
  adp._Init(stream, nullptr, pEnv, pErr, pSvc, items.Head());
  const Column_Def& root = *adp._GetTree().m_Data.m_pColumnDef;
  EXPECT_EQ(SQLT_NCO, root.DataType);
  EXPECT_EQ(COLDEF_COMPLEX, root.Flags);
  EXPECT_EQ(items.Head(), root.Next);
  adp._Init(stream, nullptr, pEnv, pErr, pSvc, attrs.Head());
  EXPECT_EQ(SQLT_NTY, root.DataType);
  EXPECT_EQ(attrs.Head(), root.Next);
}

TEST(DriverTest, ContextNeverUsedIsDestroyedWithoutOracle) {
  VARNADP* pCtx = nullptr;
  ASSERT_EQ(0, adpCreateContext(&pCtx, nullptr, nullptr));
  EXPECT_EQ(0, adpDestroyContext(pCtx, nullptr));
}

}  // namespace
}  // namespace adapter_test
