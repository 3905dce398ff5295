// Splits SQL text into tokens by Oracle's lexical rules: unquoted identifiers are
// upper-cased, "quoted" ones kept as written, string literals, numbers, binds and symbols.
#ifndef OCIMEM_SRC_SQL_SQL_LEXER_H
#define OCIMEM_SRC_SQL_SQL_LEXER_H

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ocimem {

// An ORA error raised while reading or running SQL.
struct SqlError {
  int code = 0;
  std::string message;
};

// Records ORA-`code` with its message in *error and returns false, so that a failing step
// reads `return SetError(error, ...)`.
inline bool SetError(SqlError* error, int code, std::string message) {
  error->code = code;
  error->message = std::move(message);
  return false;
}

enum class TokenKind {
  kIdentifier,        // unquoted, text upper-cased
  kQuotedIdentifier,  // text without the quotes
  kNumber,            // text as written
  kString,            // text without quotes, '' collapsed
  kBind,              // text without the colon
  kSymbol,            // ( ) , . ; = < > <= >= <> != ^= * + - / || @ %
  kEnd,
};

struct Token {
  TokenKind kind = TokenKind::kEnd;
  std::string text;
  size_t offset = 0;  // in the statement text

  bool IsIdentifier() const {
    return kind == TokenKind::kIdentifier || kind == TokenKind::kQuotedIdentifier;
  }
  // An unquoted word equal to `upper` (keywords are never quoted).
  bool IsWord(std::string_view upper) const {
    return kind == TokenKind::kIdentifier && text == upper;
  }
  bool IsSymbol(std::string_view s) const { return kind == TokenKind::kSymbol && text == s; }
};

// Longest identifier Oracle accepts, in bytes.
constexpr size_t kMaxIdentifier = 128;

// Fills `tokens` (ending with a kEnd token) or returns false with `error` set.
bool Tokenize(std::string_view sql, std::vector<Token>* tokens, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_LEXER_H
