// The adapter's function scopes print through the host trace and the C entry
// points hand exceptions to the host. These tests check that the host
// services give exactly the output and texts that contract relies on, using
// a scope object built the way the adapter builds its own.
#include <host/kel.h>

#include <gtest/gtest.h>

namespace {

const KEL_ERR_MSG kAdapterTable[] = {
    {-1101, "Unsupported data type"},
    {-1102, "Invalid relese character position"},
    {-1103, "Bad format string"},
};

class Scope {
 public:
  Scope(CKelTrace* pTrace, const char* pszFunc, int nRC)
      : m_pszFunc(pszFunc), m_nRC(nRC), m_pTrace(pTrace) {}
  ~Scope() {
    if (m_pTrace != nullptr && m_nRC < 0) {
      m_pTrace->Printf("*ERR: in %s (%d)", m_pszFunc, m_nRC);
    }
  }
  void SetRC(int nRC) { m_nRC = nRC; }

 private:
  const char* m_pszFunc;
  int m_nRC;
  CKelTrace* m_pTrace;
};

void Inner(CKelTrace* pTrace) {
  Scope scope(pTrace, "CAdp::_ReadElementSize", -2);
  throw CKelException(-1102, "CAdpReleseParser::GetNextBlock", kAdapterTable,
                      3);
}

void Outer(CKelTrace* pTrace) {
  Scope scope(pTrace, "CAdp::_ReadStream", -2);
  Inner(pTrace);
  scope.SetRC(0);
}

TEST(HostTraceScope, NullTraceScopePrintsNothingEvenAtMinusTwo) {
  testing::internal::CaptureStderr();
  { Scope scope(nullptr, "CAdp::_Init", -2); }
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(HostTraceScope, SuccessfulScopePrintsNothing) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  {
    Scope scope(&trace, "CAdp::_Init", -2);
    scope.SetRC(0);
  }
  EXPECT_STREQ("", trace.GetBuffer());
}

TEST(HostTraceScope, FailedScopePrintsExactErrLine) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  { Scope scope(&trace, "CAdp::_Init", -2); }
  EXPECT_STREQ("*ERR: in CAdp::_Init (-2)\n", trace.GetBuffer());
}

TEST(HostTraceScope, ExceptionLeavesOneLinePerScopeInnermostFirst) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  try {
    Outer(&trace);
    FAIL() << "no exception";
  } catch (const CKelException& e) {
    KelSetLastException(e);
  }
  EXPECT_STREQ(
      "*ERR: in CAdp::_ReadElementSize (-2)\n"
      "*ERR: in CAdp::_ReadStream (-2)\n",
      trace.GetBuffer());
  CKelException last(0, "");
  ASSERT_EQ(1, KelGetLastException(&last));
  EXPECT_EQ(-1102, last.GetRC());
  EXPECT_STREQ("Invalid relese character position", last.GetText());
  EXPECT_STREQ("CAdpReleseParser::GetNextBlock", last.GetFunc());
  KelClearLastException();
}

TEST(HostTraceScope, AdapterTableTextForReleasePosition) {
  CKelException e(-1102, "CAdp::_ReadStream", kAdapterTable, 3);
  EXPECT_STREQ("Invalid relese character position", e.GetText());
}

}  // namespace
