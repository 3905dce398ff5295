// Where records end when values hold the terminator's bytes.
#include <string>

#include <gtest/gtest.h>

#include "record_scanner.h"

namespace varnadp {
namespace {

// ID NUMBER, NAME VARCHAR2, TOKEN RAW, DOC BLOB, TAGS (collection of text).
class RecordScannerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    number_.DataType = SQLT_NUM;
    text_.DataType = SQLT_CHR;
    raw_.DataType = SQLT_BIN;
    blob_.DataType = SQLT_BLOB;
    item_.DataType = SQLT_CHR;
    item_.InCollection = 1;
    tags_.DataType = SQLT_NCO;
    root_.kind = Shape::Kind::kObject;
    root_.members.push_back(Scalar("ID", &number_));
    root_.members.push_back(Scalar("NAME", &text_));
    root_.members.push_back(Scalar("TOKEN", &raw_));
    root_.members.push_back(Scalar("DOC", &blob_));
    Shape tags;
    tags.kind = Shape::Kind::kCollection;
    tags.def = &tags_;
    tags.name = "TAGS";
    tags.members.push_back(Scalar("", &item_));
    root_.members.push_back(tags);
  }

  static Shape Scalar(const char* name, const Column_Def* def) {
    Shape shape;
    shape.def = def;
    shape.name = name;
    return shape;
  }

  RecordScanner::Result Scan(const std::string& text, bool last, size_t* end,
                             RecordScanner::BinaryMarks* marks = nullptr) {
    return RecordScanner(root_, special_).Scan(text, 0, last, end, marks);
  }

  Column_Def number_{}, text_{}, raw_{}, blob_{}, item_{}, tags_{};
  Shape root_;
  SpecialStrings special_;
};

TEST_F(RecordScannerTest, ATerminatorInsideBinaryBytesIsNotTheEnd) {
  const std::string text = "1|a!|b|4|\r\n\r\n|3|x\r\n|[t|u]\r\nnext";
  size_t end = 0;
  ASSERT_EQ(RecordScanner::Result::kEnd, Scan(text, false, &end));
  EXPECT_EQ(text.find("]\r\nnext") + 1, end);
}

TEST_F(RecordScannerTest, BinaryBarsAreReported) {
  const std::string text = "1|a|||||[]\r\n";
  size_t end = 0;
  RecordScanner::BinaryMarks marks;
  ASSERT_EQ(RecordScanner::Result::kEnd, Scan(text, false, &end, &marks));
  // The null RAW's bar, and the null BLOB's, which the reader steps over as a delimiter.
  EXPECT_EQ(std::vector<size_t>{4}, marks.null_raws);
  EXPECT_EQ(std::vector<size_t>{6}, marks.length_ends);
  EXPECT_EQ(text.size() - 2, end);
  marks.clear();
  ASSERT_EQ(RecordScanner::Result::kEnd, Scan("1|a|2|xy|3|a|b|[]", true, &end, &marks));
  EXPECT_EQ(std::vector<size_t>{}, marks.null_raws);
  EXPECT_EQ((std::vector<size_t>{5, 10}), marks.length_ends);
}

TEST_F(RecordScannerTest, ARecordCutInsideAValueNeedsMore) {
  size_t end = 0;
  EXPECT_EQ(RecordScanner::Result::kNeedMore, Scan("1|abc", false, &end));
  EXPECT_EQ(RecordScanner::Result::kNeedMore, Scan("1|a|8|abc", false, &end));
  EXPECT_EQ(RecordScanner::Result::kNeedMore, Scan("1|a|||||[x]\r", false, &end));
  EXPECT_EQ(RecordScanner::Result::kNoMatch, Scan("1|a|8|abc", true, &end));
}

TEST_F(RecordScannerTest, TheLastRecordMayEndWithTheInput) {
  size_t end = 0;
  const std::string text = "1|a|||||[x]";
  ASSERT_EQ(RecordScanner::Result::kEnd, Scan(text, true, &end));
  EXPECT_EQ(text.size(), end);
}

TEST_F(RecordScannerTest, RecordsTheWriterWouldNotWriteAreLeftToTheTerminatorSearch) {
  size_t end = 0;
  EXPECT_EQ(RecordScanner::Result::kNoMatch, Scan("1|a\r\n", false, &end));      // fields missing
  EXPECT_EQ(RecordScanner::Result::kNoMatch, Scan("1|a|x|||[]\r\n", false, &end));  // a RAW without count
  EXPECT_EQ(RecordScanner::Result::kNoMatch, Scan("1|a|||[x\r\n", false, &end));   // an open group
}

TEST_F(RecordScannerTest, ReleasedSpecialsStayInsideText) {
  const std::string text = "1|a!]!|!!!\r\n!|b|||||[x!]|y]\r\n";
  size_t end = 0;
  ASSERT_EQ(RecordScanner::Result::kEnd, Scan(text, false, &end));
  EXPECT_EQ(text.size() - 2, end);
}

// Long text values are looked at sixteen bytes at a time: a released
// special string, or the end of the value, at every offset of a long value.
TEST_F(RecordScannerTest, EveryOffsetOfALongTextValue) {
  for (const char* special : {"!|", "!]", "!!", "!\r\n", "!["}) {
    for (size_t at = 0; at <= 40; ++at) {
      const std::string name = std::string(at, 'n') + special + std::string(40 - at, 'm');
      const std::string text = "1|" + name + "|||||[" + std::string(at, 't') + "]\r\nnext";
      size_t end = 0;
      ASSERT_EQ(RecordScanner::Result::kEnd, Scan(text, false, &end)) << special << " at " << at;
      EXPECT_EQ(text.size() - 6, end) << special << " at " << at;
    }
  }
  // A value that ends at every offset, followed by the other fields.
  for (size_t length = 0; length <= 40; ++length) {
    const std::string text = "1|" + std::string(length, 'v') + "|||||[a]\r\n";
    size_t end = 0;
    ASSERT_EQ(RecordScanner::Result::kEnd, Scan(text, false, &end)) << length;
    EXPECT_EQ(text.size() - 2, end) << length;
  }
}

// Special strings of several bytes, whose first bytes also appear alone in
// the values.
TEST_F(RecordScannerTest, SpecialStringsOfSeveralBytes) {
  special_.delimiter = "<>";
  special_.terminator = "~~";
  special_.release = "\\";
  const std::string name = "a<b~c" + std::string(30, 'x') + "\\<>\\~~d\\]e";
  // The null RAW and the null BLOB are their bars, whatever the delimiter.
  const std::string text = "1<>" + name + "<>|<>|<>[t<>u" + std::string(20, 'w') + "]~~next";
  size_t end = 0;
  ASSERT_EQ(RecordScanner::Result::kEnd, Scan(text, false, &end));
  EXPECT_EQ(text.size() - 6, end);
}

}  // namespace
}  // namespace varnadp
