#include "interface/trace_func.h"

#include "interface/err_lookup.h"

#include <gtest/gtest.h>
#include <host/kel.h>

#include <stdexcept>
#include <string>

namespace {

std::string Captured(CKelTrace& trace) { return std::string(trace.GetBuffer(), trace.GetBufferSize()); }

TEST(TraceFunc, NullTracePrintsNothingEvenWhenCodeStaysNegative) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  { CKelTraceFunc scope(nullptr, "CAdp::_Init", -2); }
  EXPECT_EQ(Captured(trace), "");
}

TEST(TraceFunc, ScopeSetToZeroPrintsNothing) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  {
    CKelTraceFunc scope(&trace, "CAdp::_Init", -2);
    scope.SetRC(0);
  }
  EXPECT_EQ(Captured(trace), "");
}

TEST(TraceFunc, ScopeLeftAtMinusTwoPrintsExactErrLine) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  { CKelTraceFunc scope(&trace, "CAdp::ProcessStream", -2); }
  EXPECT_EQ(Captured(trace), "*ERR: in CAdp::ProcessStream (-2)\n");
}

TEST(TraceFunc, NothingIsPrintedOnEntry) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  CKelTraceFunc scope(&trace, "adpCreateContext", -2);
  EXPECT_EQ(Captured(trace), "");
  scope.SetRC(0);
}

TEST(TraceFunc, PositiveCodeIsNotAnError) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  {
    CKelTraceFunc scope(&trace, "f", -2);
    scope.SetRC(1);
  }
  EXPECT_EQ(Captured(trace), "");
}

TEST(TraceFunc, OtherNegativeCodeIsPrintedAsSet) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  {
    CKelTraceFunc scope(&trace, "f", -2);
    scope.SetRC(-24);
  }
  EXPECT_EQ(Captured(trace), "*ERR: in f (-24)\n");
}

void Inner(CKelTrace* trace) {
  CKelTraceFunc scope(trace, "CAdp::_ReadElementSize", -2);
  throw CKelException(-24, "CAdp::_ReadElementSize");
}

void Outer(CKelTrace* trace) {
  CKelTraceFunc scope(trace, "CAdp::_ReadStream", -2);
  Inner(trace);
  scope.SetRC(0);
}

TEST(TraceFunc, ExceptionLeavesOneLinePerScopeInnermostFirst) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  try {
    CKelTraceFunc scope(&trace, "adpProcessStream", -2);
    Outer(&trace);
    scope.SetRC(0);
  } catch (const CKelException& e) {
    EXPECT_EQ(e.GetRC(), -24);
  }
  EXPECT_EQ(Captured(trace),
            "*ERR: in CAdp::_ReadElementSize (-2)\n"
            "*ERR: in CAdp::_ReadStream (-2)\n"
            "*ERR: in adpProcessStream (-2)\n");
}

TEST(TraceFunc, ErrLineIsUnconditionalWhateverTheLevel) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.SetLevel(0);
  { CKelTraceFunc scope(&trace, "g", -2); }
  EXPECT_EQ(Captured(trace), "*ERR: in g (-2)\n");
}

TEST(TraceFunc, AdapterErrorReachesHostAsLastExceptionAfterScopesPrinted) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  KelClearLastException();
  try {
    CKelTraceFunc scope(&trace, "CAdp::_ReadStream", -2);
    throw CKelException(-1102, "CAdpReleaseParser::GetNextBlock", gAdpErrLookup,
                        ADP_ERR_LOOKUP_COUNT);
  } catch (const CKelException& e) {
    KelSetLastException(e);
  }
  EXPECT_EQ(Captured(trace), "*ERR: in CAdp::_ReadStream (-2)\n");
  CKelException last(0, "");
  ASSERT_EQ(KelGetLastException(&last), 1);
  EXPECT_EQ(last.GetRC(), -1102);
  EXPECT_STREQ(last.GetText(), "Invalid relese character position");
  EXPECT_STREQ(last.GetFunc(), "CAdpReleaseParser::GetNextBlock");
  KelClearLastException();
}

}  // namespace
