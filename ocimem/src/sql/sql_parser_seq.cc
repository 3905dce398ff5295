// The parser's sequence DDL (CREATE and DROP SEQUENCE) and TRUNCATE TABLE.
#include "sql/sql_parser.h"

namespace ocimem {

// An integer of a sequence option: an optional sign and a number, kept as written; the
// executor checks that it is an integer of at most 28 digits.
bool Parser::ParseSequenceNumber(std::string* out) {
  std::string sign;
  if (AcceptSymbol("-")) {
    sign = "-";
  } else {
    AcceptSymbol("+");
  }
  if (Peek().kind != TokenKind::kNumber) return Fail(922, "missing or invalid option");
  *out = sign + Next().text;
  return true;
}

bool Parser::ParseCreateSequence(Statement* out) {
  CreateSequenceStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  // Each option at most once, in any order; a second one, or one contradicting an
  // earlier one, is refused (decision SQ1).
  auto once = [&](bool given) { return !given || Fail(922, "missing or invalid option"); };
  bool min_given = false;
  bool max_given = false;
  bool cycle_given = false;
  bool cache_given = false;
  bool order_given = false;
  while (Peek().kind != TokenKind::kEnd && !Peek().IsSymbol(";")) {
    if (AcceptWord("START")) {
      if (!once(!s.start.empty()) || !ExpectWord("WITH") || !ParseSequenceNumber(&s.start)) {
        return false;
      }
    } else if (AcceptWord("INCREMENT")) {
      if (!once(!s.increment.empty()) || !ExpectWord("BY") ||
          !ParseSequenceNumber(&s.increment)) {
        return false;
      }
    } else if (AcceptWord("MINVALUE") || AcceptWord("NOMINVALUE")) {
      if (!once(min_given)) return false;
      min_given = true;
      s.no_min = tokens_[pos_ - 1].text == "NOMINVALUE";
      if (!s.no_min && !ParseSequenceNumber(&s.min_value)) return false;
    } else if (AcceptWord("MAXVALUE") || AcceptWord("NOMAXVALUE")) {
      if (!once(max_given)) return false;
      max_given = true;
      s.no_max = tokens_[pos_ - 1].text == "NOMAXVALUE";
      if (!s.no_max && !ParseSequenceNumber(&s.max_value)) return false;
    } else if (AcceptWord("CYCLE") || AcceptWord("NOCYCLE")) {
      if (!once(cycle_given)) return false;
      cycle_given = true;
      s.cycle = tokens_[pos_ - 1].text == "CYCLE";
    } else if (AcceptWord("CACHE") || AcceptWord("NOCACHE")) {
      if (!once(cache_given)) return false;
      cache_given = true;
      s.no_cache = tokens_[pos_ - 1].text == "NOCACHE";
      if (!s.no_cache && !ParseSequenceNumber(&s.cache)) return false;
    } else if (AcceptWord("ORDER") || AcceptWord("NOORDER")) {
      if (!once(order_given)) return false;
      order_given = true;
      s.order = tokens_[pos_ - 1].text == "ORDER";
    } else {
      return Fail(922, "missing or invalid option");
    }
  }
  if (!ExpectEnd(922)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseDropSequence(Statement* out) {
  DropSequenceStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseTruncate(Statement* out) {
  if (!AcceptWord("TABLE")) {
    return Fail(3290, "Invalid truncate command - missing CLUSTER or TABLE keyword");
  }
  TruncateTableStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  // Storage means nothing in memory: {DROP [ALL] | REUSE} STORAGE is taken and has no effect.
  if (AcceptWord("DROP")) {
    AcceptWord("ALL");
    if (!ExpectWord("STORAGE")) return false;
  } else if (AcceptWord("REUSE") && !ExpectWord("STORAGE")) {
    return false;
  }
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

// [schema.]name.{NEXTVAL | CURRVAL}, the caller having seen that the tokens read so.
bool Parser::ParseSequenceRef(Expr* out) {
  out->kind = Expr::Kind::kSequence;
  out->offset = Peek().offset;
  if (!Peek(2).IsWord("NEXTVAL") && !Peek(2).IsWord("CURRVAL")) {
    out->type.schema = Next().text;
    Next();  // .
  }
  out->type.name = Next().text;
  Next();  // .
  out->text = Next().text;
  return true;
}

bool Parser::AtSequenceRef() const {
  auto pseudo = [](const Token& t) { return t.IsWord("NEXTVAL") || t.IsWord("CURRVAL"); };
  if (!Peek().IsIdentifier() || !Peek(1).IsSymbol(".")) return false;
  if (pseudo(Peek(2))) return true;
  return Peek(2).IsIdentifier() && Peek(3).IsSymbol(".") && pseudo(Peek(4));
}

}  // namespace ocimem
