#include "schema_script.h"

#include <cctype>

namespace varnadp {
namespace {

// SQL*Plus commands, as the first word of a line outside a statement; the
// abbreviations SQL*Plus accepts for the common ones included.
constexpr std::string_view kPlusCommands[] = {
    "REM",     "REMARK", "PROMPT", "PRO",      "SET",    "CONNECT", "CONN",   "EXIT",
    "QUIT",    "SPOOL",  "SHOW",   "WHENEVER", "DEFINE", "DEF",     "UNDEFINE", "COLUMN",
    "COL",     "TTITLE", "BTITLE", "BREAK",    "CLEAR",  "PAUSE",   "DISCONNECT", "DISC"};

bool IsPlusCommand(std::string_view line) {
  size_t i = 0;
  while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
  if (i < line.size() && line[i] == '@') return true;  // @script and @@script
  size_t end = i;
  while (end < line.size() && std::isalpha(static_cast<unsigned char>(line[end]))) ++end;
  if (end == i) return false;
  if (end < line.size() && !std::isspace(static_cast<unsigned char>(line[end])) && line[end] != ';') {
    return false;
  }
  std::string word;
  for (size_t k = i; k < end; ++k) {
    word.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(line[k]))));
  }
  for (std::string_view command : kPlusCommands) {
    if (word == command) return true;
  }
  return false;
}

// A line holding only '/' (and blanks) runs the statement before it.
bool IsSlashLine(std::string_view line) {
  bool slash = false;
  for (char c : line) {
    if (c == '/' && !slash) {
      slash = true;
    } else if (c != ' ' && c != '\t' && c != '\r') {
      return false;
    }
  }
  return slash;
}

bool IsBlank(std::string_view text) {
  for (char c : text) {
    if (!std::isspace(static_cast<unsigned char>(c))) return false;
  }
  return true;
}

}  // namespace

ScriptSplit SplitScript(std::string_view script) {
  ScriptSplit split;
  std::string current;
  int current_line = 0;
  int line = 1;
  char quote = 0;         // '\'' or '"' while inside one
  bool block = false;     // inside /* */
  int open_line = 0;      // where the open quote or comment began
  auto finish = [&]() {
    if (!IsBlank(current)) {
      size_t begin = 0;
      while (std::isspace(static_cast<unsigned char>(current[begin]))) ++begin;
      size_t end = current.size();
      while (end > begin && std::isspace(static_cast<unsigned char>(current[end - 1]))) --end;
      split.statements.push_back({current.substr(begin, end - begin), current_line});
    }
    current.clear();
    current_line = 0;
  };
  size_t pos = 0;
  while (pos < script.size()) {
    size_t eol = script.find('\n', pos);
    const size_t next = eol == std::string_view::npos ? script.size() : eol + 1;
    std::string_view text = script.substr(pos, next - pos);
    if (quote == 0 && !block && IsBlank(current)) {
      if (IsSlashLine(text.substr(0, text.size() - (eol == std::string_view::npos ? 0 : 1))) ||
          IsPlusCommand(text)) {
        current.clear();
        pos = next;
        ++line;
        continue;
      }
    } else if (quote == 0 && !block &&
               IsSlashLine(text.substr(0, text.size() - (eol == std::string_view::npos ? 0 : 1)))) {
      finish();
      pos = next;
      ++line;
      continue;
    }
    for (size_t i = 0; i < text.size(); ++i) {
      const char c = text[i];
      if (block) {
        if (c == '*' && i + 1 < text.size() && text[i + 1] == '/') {
          block = false;
          ++i;
          current.push_back(' ');
        }
        continue;
      }
      if (quote != 0) {
        current.push_back(c);
        if (c == quote) quote = 0;  // a doubled quote reopens at once
        continue;
      }
      if (c == '-' && i + 1 < text.size() && text[i + 1] == '-') {
        current.push_back('\n');
        break;
      }
      if (c == '/' && i + 1 < text.size() && text[i + 1] == '*') {
        block = true;
        open_line = line;
        ++i;
        continue;
      }
      if (c == ';') {
        finish();
        continue;
      }
      if (c == '\'' || c == '"') {
        quote = c;
        open_line = line;
      }
      if (current_line == 0 && !std::isspace(static_cast<unsigned char>(c))) current_line = line;
      current.push_back(c);
    }
    pos = next;
    ++line;
  }
  if (quote != 0) {
    split.error = quote == '\'' ? "a quoted string is not closed" : "a quoted name is not closed";
    split.error_line = open_line;
  } else if (block) {
    split.error = "a comment is not closed";
    split.error_line = open_line;
  } else {
    finish();
  }
  return split;
}

}  // namespace varnadp
