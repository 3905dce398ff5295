#include <host/kel.h>

#include <gtest/gtest.h>

#include "temp_file.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>
#include <utility>
#include <vector>

namespace {

TEST(KelTrace, DefaultLevelIsOne) {
  CKelTrace trace;
  EXPECT_EQ(1, trace.GetLevel());
  EXPECT_EQ(1, trace.IsShown(1));
  EXPECT_EQ(0, trace.IsShown(2));
}

TEST(KelTrace, DefaultSinkIsStderr) {
  CKelTrace trace;
  testing::internal::CaptureStderr();
  trace.Printf("*ERR: in %s (%d)", "CAdp::_Init", -2);
  trace.Printf(2, "hidden %d", 2);
  std::string text = testing::internal::GetCapturedStderr();
  EXPECT_EQ("*ERR: in CAdp::_Init (-2)\n", text);
}

TEST(KelTrace, LevelTwoLinesHiddenByDefault) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.Printf(2, "Processing NUMBER field...");
  trace.Printf(1, "level one");
  EXPECT_STREQ("level one\n", trace.GetBuffer());
}

TEST(KelTrace, RaisedLevelShowsProgressLines) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.SetLevel(2);
  trace.Printf(2, "TEXT: size = %d", 17);
  trace.Printf(3, "too detailed");
  trace.Printf(2, "NUMBER: NULL");
  EXPECT_STREQ("TEXT: size = 17\nNUMBER: NULL\n", trace.GetBuffer());
  EXPECT_EQ(strlen("TEXT: size = 17\nNUMBER: NULL\n"), trace.GetBufferSize());
}

TEST(KelTrace, UnconditionalLinesIgnoreLevel) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.SetLevel(-5);
  trace.Printf("*ERR: at offset %d", 3);
  trace.Printf(0, "level zero");
  EXPECT_STREQ("*ERR: at offset 3\n", trace.GetBuffer());
}

TEST(KelTrace, EmptyFormatGivesEmptyLine) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.Printf("%s", "");
  EXPECT_STREQ("\n", trace.GetBuffer());
}

TEST(KelTrace, LongLinesAreNotTruncated) {
  for (size_t nLength : {509u, 510u, 511u, 512u, 513u, 70000u}) {
    SCOPED_TRACE(nLength);
    std::string text(nLength, 'q');
    text.back() = 'Z';
    CKelTrace trace;
    trace.CaptureToBuffer();
    trace.Printf("<%s>", text.c_str());
    EXPECT_EQ("<" + text + ">\n", std::string(trace.GetBuffer(),
                                             trace.GetBufferSize()));
  }
}

TEST(KelTrace, LongLineReachesStdioWhole) {
  TempFile temp("long.txt");
  const std::string& path = temp.path;
  std::string text(4000, 'w');
  {
    CKelTrace trace;
    trace.ToFile(path.c_str());
    trace.Printf("%s", text.c_str());
  }
  EXPECT_EQ(text + "\n", FileText(path));
}

TEST(KelTrace, ClearBufferEmptiesCapture) {
  CKelTrace trace;
  EXPECT_STREQ("", trace.GetBuffer());
  trace.CaptureToBuffer();
  trace.Printf("one");
  trace.ClearBuffer();
  EXPECT_STREQ("", trace.GetBuffer());
  EXPECT_EQ(0u, trace.GetBufferSize());
  trace.Printf("two");
  EXPECT_STREQ("two\n", trace.GetBuffer());
}

TEST(KelTrace, CaptureSurvivesSinkChange) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.Printf("kept");
  trace.ToCallback(nullptr, nullptr);
  trace.Printf("dropped");
  EXPECT_STREQ("kept\n", trace.GetBuffer());
}

struct Received {
  std::vector<std::pair<int, std::string>> lines;
  std::vector<size_t> lengths;
};

void Collect(void* pContext, int nLevel, const char* pszLine, size_t nLength) {
  Received* pReceived = static_cast<Received*>(pContext);
  pReceived->lines.emplace_back(nLevel, std::string(pszLine));
  pReceived->lengths.push_back(nLength);
}

TEST(KelTrace, CallbackGetsLinesWithoutNewline) {
  Received received;
  CKelTrace trace;
  trace.SetLevel(2);
  trace.ToCallback(Collect, &received);
  trace.Printf("*ERR: in %s (%d)", "X::Y", -2);
  trace.Printf(2, "LOB: size %d", 40);
  trace.Printf(3, "not shown");
  ASSERT_EQ(2u, received.lines.size());
  EXPECT_EQ(0, received.lines[0].first);
  EXPECT_EQ("*ERR: in X::Y (-2)", received.lines[0].second);
  EXPECT_EQ(strlen("*ERR: in X::Y (-2)"), received.lengths[0]);
  EXPECT_EQ(2, received.lines[1].first);
  EXPECT_EQ("LOB: size 40", received.lines[1].second);
  EXPECT_EQ(strlen("LOB: size 40"), received.lengths[1]);
}

TEST(KelTrace, CallbackGetsLongLineWhole) {
  Received received;
  CKelTrace trace;
  trace.ToCallback(Collect, &received);
  std::string text(3000, 'c');
  trace.Printf("%s", text.c_str());
  ASSERT_EQ(1u, received.lines.size());
  EXPECT_EQ(text, received.lines[0].second);
  EXPECT_EQ(text.size(), received.lengths[0]);
}

TEST(KelTrace, NullCallbackIsSilent) {
  CKelTrace trace;
  trace.ToCallback(nullptr, nullptr);
  testing::internal::CaptureStderr();
  trace.Printf("nothing");
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(KelTrace, FileSinkAppends) {
  TempFile temp("append.txt");
  const std::string& path = temp.path;
  {
    std::ofstream seed(path, std::ios::binary | std::ios::trunc);
    seed << "earlier\n";
  }
  {
    CKelTrace trace;
    trace.ToFile(path.c_str());
    trace.Printf("first %d", 1);
  }
  {
    CKelTrace trace;
    trace.ToFile(path.c_str());
    trace.SetLevel(2);
    trace.Printf(2, "second %s", "line");
  }
  EXPECT_EQ("earlier\nfirst 1\nsecond line\n", FileText(path));
}

TEST(KelTrace, FileSinkCreatesMissingFile) {
  TempFile temp("created.txt");
  const std::string& path = temp.path;
  {
    CKelTrace trace;
    trace.ToFile(path.c_str());
    trace.Printf("new");
  }
  EXPECT_EQ("new\n", FileText(path));
}

TEST(KelTrace, UnopenableFileThrowsAndKeepsSink) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  try {
    trace.ToFile("/nonexistent-dir/for/trace.txt");
    FAIL() << "no exception";
  } catch (const CKelException& e) {
    EXPECT_EQ(KEL_ERR_IO, e.GetRC());
    EXPECT_STREQ("CKelTrace::ToFile", e.GetFunc());
  }
  trace.Printf("still captured");
  EXPECT_STREQ("still captured\n", trace.GetBuffer());
}

TEST(KelTrace, NullFileNameThrowsInvalidArgument) {
  CKelTrace trace;
  try {
    trace.ToFile(nullptr);
    FAIL() << "no exception";
  } catch (const CKelException& e) {
    EXPECT_EQ(KEL_ERR_ARGUMENT, e.GetRC());
  }
}

TEST(KelTrace, StdioSinkWritesToCallersStream) {
  FILE* pFile = tmpfile();
  ASSERT_NE(nullptr, pFile);
  {
    CKelTrace trace;
    trace.ToStdio(pFile);
    trace.Printf("a=%d b=%s", 5, "x");
  }
  // The trace does not close a stream it did not open.
  rewind(pFile);
  char buf[64] = {};
  size_t n = fread(buf, 1, sizeof(buf) - 1, pFile);
  fclose(pFile);
  EXPECT_EQ("a=5 b=x\n", std::string(buf, n));
}

TEST(KelTrace, BackToStderrAfterFile) {
  TempFile temp("switch.txt");
  const std::string& path = temp.path;
  CKelTrace trace;
  trace.ToFile(path.c_str());
  trace.Printf("to file");
  trace.ToStderr();
  testing::internal::CaptureStderr();
  trace.Printf("to stderr");
  EXPECT_EQ("to stderr\n", testing::internal::GetCapturedStderr());
  EXPECT_EQ("to file\n", FileText(path));
}

TEST(KelTracePrintf, NullTracePrintsNothing) {
  testing::internal::CaptureStderr();
  kelTracePrintf(nullptr, "%s (%d) returned by %s", "Error", -2, "OCIStmtExecute");
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST(KelTracePrintf, WritesUnconditionalLine) {
  CKelTrace trace;
  trace.CaptureToBuffer();
  trace.SetLevel(0);
  kelTracePrintf(&trace, "%s (%d) returned by %s\nORA-%d: %s", "Error", -2,
                 "OCIStmtExecute", -2, "Invalid handle");
  EXPECT_STREQ(
      "Error (-2) returned by OCIStmtExecute\nORA--2: Invalid handle\n",
      trace.GetBuffer());
}

}  // namespace
