// The small text helpers of the command: JSON strings and hex, escapes of
// the special strings, and where a record ends.
#include <string>

#include <gtest/gtest.h>

#include "json_text.h"
#include "special_strings.h"

namespace varnadp {
namespace {

std::string Json(std::string_view text) {
  std::string out;
  AppendJsonString(text, &out);
  return out;
}

TEST(JsonTextTest, EscapesWhatJsonAsksAndKeepsUtf8) {
  EXPECT_EQ("\"a\\\"b\\\\c\"", Json("a\"b\\c"));
  EXPECT_EQ("\"\\r\\n\\t\\b\\f\\u0001\\u001F\"", Json("\r\n\t\b\f\x01\x1f"));
  EXPECT_EQ("\"caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x9a\x80\"", Json("caf\xc3\xa9 \xe2\x82\xac \xf0\x9f\x9a\x80"));
  EXPECT_EQ("\"\"", Json(""));
  EXPECT_EQ("\"\\u0000\"", Json(std::string_view("\0", 1)));
}

TEST(JsonTextTest, BytesThatAreNotUtf8BecomeTheirOwnCharacters) {
  EXPECT_EQ("\"\\u00E9\"", Json("\xe9"));                 // Latin-1 byte
  EXPECT_EQ("\"\\u00C3x\"", Json("\xc3x"));               // cut sequence
  EXPECT_EQ("\"\\u00ED\\u00A0\\u0080\"", Json("\xed\xa0\x80"));  // a surrogate
  EXPECT_EQ("\"\\u00C0\\u0080\"", Json("\xc0\x80"));      // overlong
  EXPECT_EQ("\"\\u00F4\\u0090\\u0080\\u0080\"", Json("\xf4\x90\x80\x80"));  // beyond U+10FFFF
}

TEST(JsonTextTest, EscapesAtEveryOffsetOfALongString) {
  // Long strings are looked at sixteen bytes at a time: a byte to escape, or
  // a character of several bytes, at any place among and across those blocks.
  const struct {
    std::string_view bytes;
    const char* json;
  } cases[] = {{"\"", "\\\""}, {"\\", "\\\\"}, {"\n", "\\n"}, {"\x01", "\\u0001"}, {"\x1f", "\\u001F"},
               {"\x7f", "\x7f"}, {"\xc3\xa9", "\xc3\xa9"}, {"\xe2\x82\xac", "\xe2\x82\xac"}, {"\xe9", "\\u00E9"},
               {"\xf0\x9f\x9a\x80", "\xf0\x9f\x9a\x80"}};
  for (const auto& c : cases) {
    for (size_t at = 0; at <= 40; ++at) {
      const std::string text = std::string(at, 'a') + std::string(c.bytes) + std::string(40 - at, 'b');
      const std::string expected = "\"" + std::string(at, 'a') + c.json + std::string(40 - at, 'b') + "\"";
      EXPECT_EQ(expected, Json(text)) << "at " << at;
    }
  }
  EXPECT_EQ("\"" + std::string(100, 'x') + "\"", Json(std::string(100, 'x')));
}

TEST(JsonTextTest, HexBothWays) {
  std::string out;
  const unsigned char bytes[] = {0x00, 0x7f, 0xff, 0x0a};
  AppendHex(bytes, sizeof bytes, &out);
  EXPECT_EQ("007FFF0A", out);
  std::string back;
  ASSERT_TRUE(ParseHex("007fFF0a", &back));
  EXPECT_EQ(std::string("\x00\x7f\xff\x0a", 4), back);
  EXPECT_TRUE(ParseHex("", &back));
  EXPECT_EQ("", back);
  EXPECT_FALSE(ParseHex("0", &back));
  EXPECT_FALSE(ParseHex("0g", &back));
}

TEST(SpecialStringsTest, UnescapeReadsCEscapes) {
  std::string bytes;
  std::string error;
  ASSERT_TRUE(Unescape("\\r\\n", &bytes, &error));
  EXPECT_EQ("\r\n", bytes);
  ASSERT_TRUE(Unescape("a\\tb\\\\c\\x7E\\0", &bytes, &error));
  EXPECT_EQ(std::string("a\tb\\c~\0", 7), bytes);
  EXPECT_FALSE(Unescape("\\q", &bytes, &error));
  EXPECT_EQ("unknown escape \\q", error);
  EXPECT_FALSE(Unescape("x\\", &bytes, &error));
  EXPECT_FALSE(Unescape("\\x4", &bytes, &error));
  EXPECT_EQ("\\x needs two hex digits", error);
}

TEST(SpecialStringsTest, ValidateKeepsTheAdaptersLimits) {
  SpecialStrings special;
  std::string error;
  EXPECT_TRUE(special.Validate(&error));
  special.delimiter = std::string(33, ';');
  EXPECT_FALSE(special.Validate(&error));
  special.delimiter = "";
  EXPECT_FALSE(special.Validate(&error));
  special.delimiter = "|";
  special.terminator = "";
  EXPECT_FALSE(special.Validate(&error));
  special.terminator = "\n";
  special.release = "!!";
  EXPECT_FALSE(special.Validate(&error));
  EXPECT_EQ("the release character must be one byte", error);
}

TEST(SpecialStringsTest, FillWritesLengthsAsDecimalText) {
  SpecialStrings special;
  special.delimiter = "~~";
  special.terminator = "\n";
  special.release = "\\";
  DB_SPECIAL_STRINGS record;
  special.Fill(&record);
  EXPECT_STREQ("2", record.szDelimiterLen);
  EXPECT_STREQ("1", record.szTerminatorLen);
  EXPECT_STREQ("~~", record.szDelimiter);
  EXPECT_STREQ("\n", record.szTerminator);
  EXPECT_STREQ("\\", record.szRelease);
}

TEST(SpecialStringsTest, RecordEndSkipsReleasedTerminators) {
  SpecialStrings special;
  const std::string text = "a|b!\r\nc\r\nnext\r\n";
  EXPECT_EQ(7u, special.FindRecordEnd(text, 0));
  EXPECT_EQ(13u, special.FindRecordEnd(text, 9));
  EXPECT_EQ(4u, special.FindRecordEnd("ab!!\r\n", 0));  // a released release
  EXPECT_EQ(std::string("no end").size(), special.FindRecordEnd("no end", 0));
}

}  // namespace
}  // namespace varnadp
