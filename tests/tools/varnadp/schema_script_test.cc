// Scripts written for SQL*Plus cut into the statements to run.
#include <gtest/gtest.h>

#include "schema_script.h"

namespace varnadp {
namespace {

std::vector<std::string> Texts(const ScriptSplit& split) {
  std::vector<std::string> texts;
  for (const ScriptStatement& s : split.statements) texts.push_back(s.text);
  return texts;
}

TEST(SchemaScriptTest, SemicolonsAndSlashLinesEndStatements) {
  const ScriptSplit split = SplitScript(
      "CREATE TYPE a_t AS OBJECT (x NUMBER);\n/\nCREATE TYPE b_t AS TABLE OF a_t\n/\n"
      "create table t (n number); insert into t values (1);\n");
  EXPECT_EQ((std::vector<std::string>{"CREATE TYPE a_t AS OBJECT (x NUMBER)", "CREATE TYPE b_t AS TABLE OF a_t",
                                      "create table t (n number)", "insert into t values (1)"}),
            Texts(split));
  EXPECT_EQ(1, split.statements[0].line);
  EXPECT_EQ(3, split.statements[1].line);
  EXPECT_EQ(5, split.statements[2].line);
  EXPECT_EQ(5, split.statements[3].line);
}

TEST(SchemaScriptTest, CommentsAndSqlPlusCommandsAreDropped) {
  const ScriptSplit split = SplitScript(
      "REM the types\nrem lower case too\nPROMPT making types\nSET ECHO ON\nCONNECT scott/tiger\n"
      "-- a comment; with a semicolon\n/* a block\n comment; */ CREATE TYPE a_t -- tail\n"
      "AS OBJECT (x NUMBER);\nWHENEVER SQLERROR EXIT 1\n@other.sql\nSPOOL off\nEXIT\nquit;\n");
  ASSERT_EQ(1u, split.statements.size());
  EXPECT_EQ("CREATE TYPE a_t \nAS OBJECT (x NUMBER)", split.statements[0].text);
  EXPECT_EQ(8, split.statements[0].line);
  EXPECT_TRUE(split.error.empty());
}

TEST(SchemaScriptTest, CommandWordsInsideAStatementAreKept) {
  const ScriptSplit split = SplitScript("CREATE TYPE a_t AS OBJECT (\n  set_no NUMBER,\n  exit VARCHAR2(5)\n);\n");
  ASSERT_EQ(1u, split.statements.size());
  EXPECT_NE(std::string::npos, split.statements[0].text.find("exit VARCHAR2(5)"));
}

TEST(SchemaScriptTest, QuotesHideSemicolonsAndCommentMarks) {
  const ScriptSplit split = SplitScript(
      "insert into t values ('a;b -- c /* d', 'it''s');\nCREATE TYPE \"Odd;Name\" AS OBJECT (x NUMBER);");
  EXPECT_EQ((std::vector<std::string>{"insert into t values ('a;b -- c /* d', 'it''s')",
                                      "CREATE TYPE \"Odd;Name\" AS OBJECT (x NUMBER)"}),
            Texts(split));
}

TEST(SchemaScriptTest, UnclosedQuoteOrCommentIsAnErrorWithItsLine) {
  ScriptSplit split = SplitScript("CREATE TYPE a_t AS OBJECT (x NUMBER);\ninsert into t values ('open);\n");
  EXPECT_EQ("a quoted string is not closed", split.error);
  EXPECT_EQ(2, split.error_line);
  split = SplitScript("\n\n/* never closed\n");
  EXPECT_EQ("a comment is not closed", split.error);
  EXPECT_EQ(3, split.error_line);
}

TEST(SchemaScriptTest, AStatementWithoutItsEndStillRunsAndEmptyOnesDoNot) {
  const ScriptSplit split = SplitScript(";;\n/\n  \nCREATE TYPE a_t AS OBJECT (x NUMBER)");
  EXPECT_EQ((std::vector<std::string>{"CREATE TYPE a_t AS OBJECT (x NUMBER)"}), Texts(split));
  EXPECT_EQ(4, split.statements[0].line);
  EXPECT_TRUE(SplitScript("").statements.empty());
}

TEST(SchemaScriptTest, CarriageReturnLineEndsAreRead) {
  const ScriptSplit split = SplitScript("REM x\r\nCREATE TYPE a_t AS OBJECT (x NUMBER);\r\n/\r\nEXIT\r\n");
  EXPECT_EQ((std::vector<std::string>{"CREATE TYPE a_t AS OBJECT (x NUMBER)"}), Texts(split));
}

}  // namespace
}  // namespace varnadp
