// Splits an SQL script written for SQL*Plus into the statements to run:
// each ends at a ';' or at a line holding only '/'; comments ("--", "/* */")
// and SQL*Plus commands (REM, PROMPT, SET, CONNECT, EXIT, ...) are dropped.
#ifndef TOOLS_VARNADP_SCHEMA_SCRIPT_H
#define TOOLS_VARNADP_SCHEMA_SCRIPT_H

#include <string>
#include <string_view>
#include <vector>

namespace varnadp {

struct ScriptStatement {
  std::string text;  // without its ';' or '/'
  int line = 0;      // 1-based line of its first byte
};

struct ScriptSplit {
  std::vector<ScriptStatement> statements;
  std::string error;  // set when the script ends inside a quote or comment
  int error_line = 0;
};

ScriptSplit SplitScript(std::string_view script);

}  // namespace varnadp

#endif  // TOOLS_VARNADP_SCHEMA_SCRIPT_H
