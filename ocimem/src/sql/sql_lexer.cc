#include "sql/sql_lexer.h"

#include <cctype>

namespace ocimem {
namespace {

bool IsIdentStart(unsigned char c) { return std::isalpha(c) != 0 || c >= 0x80; }
bool IsIdentPart(unsigned char c) {
  return std::isalnum(c) != 0 || c == '_' || c == '$' || c == '#' || c >= 0x80;
}

}  // namespace

bool Tokenize(std::string_view sql, std::vector<Token>* tokens, SqlError* error) {
  tokens->clear();
  size_t i = 0;
  const size_t n = sql.size();
  while (i < n) {
    unsigned char c = static_cast<unsigned char>(sql[i]);
    if (std::isspace(c) != 0) {
      ++i;
      continue;
    }
    if (c == '-' && i + 1 < n && sql[i + 1] == '-') {
      while (i < n && sql[i] != '\n') ++i;
      continue;
    }
    if (c == '/' && i + 1 < n && sql[i + 1] == '*') {
      size_t end = sql.find("*/", i + 2);
      i = end == std::string_view::npos ? n : end + 2;
      continue;
    }
    Token t;
    t.offset = i;
    if (IsIdentStart(c)) {
      size_t start = i;
      while (i < n && IsIdentPart(static_cast<unsigned char>(sql[i]))) ++i;
      t.kind = TokenKind::kIdentifier;
      for (size_t k = start; k < i; ++k) {
        t.text.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(sql[k]))));
      }
      if (t.text.size() > kMaxIdentifier) {
        return SetError(error, 972, "identifier is too long");
      }
    } else if (c == '"') {
      size_t end = sql.find('"', i + 1);
      if (end == std::string_view::npos) {
        return SetError(error, 1740, "missing double quote in identifier");
      }
      if (end == i + 1) return SetError(error, 1741, "illegal zero-length identifier");
      t.kind = TokenKind::kQuotedIdentifier;
      t.text = std::string(sql.substr(i + 1, end - i - 1));
      if (t.text.size() > kMaxIdentifier) {
        return SetError(error, 972, "identifier is too long");
      }
      i = end + 1;
    } else if (c == '\'') {
      t.kind = TokenKind::kString;
      ++i;
      bool closed = false;
      while (i < n) {
        if (sql[i] == '\'') {
          if (i + 1 < n && sql[i + 1] == '\'') {
            t.text.push_back('\'');
            i += 2;
            continue;
          }
          ++i;
          closed = true;
          break;
        }
        t.text.push_back(sql[i++]);
      }
      if (!closed) return SetError(error, 1756, "quoted string not properly terminated");
    } else if (std::isdigit(c) != 0 ||
               (c == '.' && i + 1 < n && std::isdigit(static_cast<unsigned char>(sql[i + 1])))) {
      size_t start = i;
      while (i < n && std::isdigit(static_cast<unsigned char>(sql[i])) != 0) ++i;
      if (i < n && sql[i] == '.') {
        ++i;
        while (i < n && std::isdigit(static_cast<unsigned char>(sql[i])) != 0) ++i;
      }
      if (i < n && (sql[i] == 'e' || sql[i] == 'E')) {
        size_t save = i++;
        if (i < n && (sql[i] == '+' || sql[i] == '-')) ++i;
        if (i < n && std::isdigit(static_cast<unsigned char>(sql[i])) != 0) {
          while (i < n && std::isdigit(static_cast<unsigned char>(sql[i])) != 0) ++i;
        } else {
          i = save;
        }
      }
      t.kind = TokenKind::kNumber;
      t.text = std::string(sql.substr(start, i - start));
    } else if (c == ':') {
      size_t start = ++i;
      while (i < n && IsIdentPart(static_cast<unsigned char>(sql[i]))) ++i;
      if (i == start) return SetError(error, 911, "invalid character");
      if (i - start > kMaxIdentifier) return SetError(error, 972, "identifier is too long");
      t.kind = TokenKind::kBind;
      t.text = std::string(sql.substr(start, i - start));
    } else {
      static const char* const kTwo[] = {"<=", ">=", "<>", "!=", "^=", "||"};
      t.kind = TokenKind::kSymbol;
      for (const char* two : kTwo) {
        if (sql.substr(i, 2) == two) t.text = two;
      }
      if (t.text.empty()) {
        if (std::string_view("(),.;=<>*+-/@%").find(static_cast<char>(c)) ==
            std::string_view::npos) {
          return SetError(error, 911, "invalid character");
        }
        t.text = std::string(1, static_cast<char>(c));
      }
      i += t.text.size();
    }
    tokens->push_back(std::move(t));
  }
  Token end;
  end.offset = n;
  tokens->push_back(end);
  return true;
}

}  // namespace ocimem
