// The parser's table and view DDL, DML and query forms (the statement dispatch and the type
// DDL are in sql_parser.cc).
#include "sql/sql_parser.h"

#include <string>

namespace ocimem {

bool IsClauseWord(const Token& t) {
  static const char* const kWords[] = {"FROM", "WHERE", "FOR", "SET", "VALUES", "AND", "OR",
                                       "ORDER", "GROUP", "UNION", "HAVING", "CONNECT",
                                       "START", "NESTED", "INTERSECT", "MINUS", "RETURNING",
                                       "RETURN", "WITH", "IS", "NOT", "IN", "LIKE",
                                       "BETWEEN", "ESCAPE", "WHEN", "THEN", "ELSE", "END"};
  for (const char* w : kWords) {
    if (t.IsWord(w)) return true;
  }
  return false;
}


bool Parser::ParseCreateView(Statement* out, bool or_replace) {
  CreateViewStatement s;
  s.or_replace = or_replace;
  if (!ParseQualifiedName(&s.name)) return false;
  if (AcceptSymbol("(")) {
    do {
      std::string column;
      if (!ParseIdentifier(&column)) return false;
      s.columns.push_back(std::move(column));
    } while (AcceptSymbol(","));
    if (!ExpectSymbol(")")) return false;
  }
  if (!ExpectWord("AS")) return false;
  if (!AcceptWord("SELECT")) return Fail(928, "missing SELECT keyword");
  if (!ParseQuery(&s.query)) return false;
  for (const SelectItem& item : s.query.items) {
    if (item.expr.kind == Expr::Kind::kSequence) return SequenceNotAllowed();
  }
  // decision EX6: a view reads its table row by row; queries that shape their rows
  // (DISTINCT, grouping, aggregates, ORDER BY, ROWNUM) are refused as views.
  if (!ViewQueryMergeable(s.query)) return Fail(900, "invalid SQL statement");
  // A view is stored, so its query cannot take values from the program.
  if (binds_ > 0) return Fail(1027, "bind variables not allowed for data definition operations");
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseDropView(Statement* out) {
  DropViewStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  if (AcceptWord("CASCADE") && !ExpectWord("CONSTRAINTS")) return false;
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseTableRef(TableRef* out, bool allow_alias) {
  if (Peek().kind == TokenKind::kEnd) return Fail(903, "invalid table name");
  // decision TC3: INSERT, UPDATE and DELETE do not take TABLE(collection).
  if (Peek().IsWord("TABLE") && Peek(1).IsSymbol("(")) return Fail(903, "invalid table name");
  if (!Peek().IsIdentifier()) return Fail(903, "invalid table name");
  if (!ParseQualifiedName(&out->name)) return false;
  if (allow_alias && Peek().IsIdentifier() && !IsClauseWord(Peek())) out->alias = Next().text;
  return true;
}

bool Parser::ParseColumnRef(Expr* out) {
  out->offset = Peek().offset;
  std::string first;
  if (!ParseIdentifier(&first)) return false;
  out->kind = Expr::Kind::kColumn;
  if (AcceptSymbol(".")) {
    out->qualifier = std::move(first);
    if (!ParseIdentifier(&out->text)) return false;
    // alias.column.attribute...: attributes of an object column.
    while (AcceptSymbol(".")) {
      std::string attr;
      if (!ParseIdentifier(&attr)) return false;
      out->path.push_back(std::move(attr));
    }
    return true;
  }
  out->text = std::move(first);
  return true;
}

bool Parser::ParseValue(Expr* out) {
  const Token& t = Peek();
  out->offset = t.offset;
  if (t.kind == TokenKind::kNumber) {
    out->kind = Expr::Kind::kNumber;
    out->text = Next().text;
    return true;
  }
  if ((t.IsSymbol("-") || t.IsSymbol("+")) && Peek(1).kind == TokenKind::kNumber) {
    bool negative = t.IsSymbol("-");
    Next();
    out->kind = Expr::Kind::kNumber;
    out->text = (negative ? "-" : "") + Next().text;
    return true;
  }
  if (t.kind == TokenKind::kString) {
    out->kind = Expr::Kind::kString;
    out->text = Next().text;
    return true;
  }
  if (t.kind == TokenKind::kBind) {
    out->kind = Expr::Kind::kBind;
    out->text = UpperBindName(Next().text);
    out->bind = binds_++;
    return true;
  }
  if (t.IsWord("NULL")) {
    Next();
    out->kind = Expr::Kind::kNull;
    return true;
  }
  if ((t.IsWord("EMPTY_CLOB") || t.IsWord("EMPTY_BLOB")) && Peek(1).IsSymbol("(")) {
    out->kind = t.IsWord("EMPTY_CLOB") ? Expr::Kind::kEmptyClob : Expr::Kind::kEmptyBlob;
    Next();
    Next();
    return ExpectSymbol(")");
  }
  if (t.IsWord("SESSIONTIMEZONE") || t.IsWord("DBTIMEZONE")) {
    out->kind = t.IsWord("DBTIMEZONE") ? Expr::Kind::kDbTimeZone : Expr::Kind::kSessionTimeZone;
    Next();
    return true;
  }
  if (t.IsWord("VALUE") && Peek(1).IsSymbol("(")) {
    Next();
    Next();
    out->kind = Expr::Kind::kValue;
    if (!ParseIdentifier(&out->qualifier) || !ExpectSymbol(")")) return false;
    // VALUE(alias).attribute...
    while (AcceptSymbol(".")) {
      std::string attr;
      if (!ParseIdentifier(&attr)) return false;
      out->path.push_back(std::move(attr));
    }
    return true;
  }
  if (AtSequenceRef()) return ParseSequenceRef(out);
  if (t.IsIdentifier() && !IsClauseWord(t)) {
    bool constructor = Peek(1).IsSymbol("(") ||
                       (Peek(1).IsSymbol(".") && Peek(2).IsIdentifier() && Peek(3).IsSymbol("("));
    if (!constructor) return ParseColumnRef(out);
    out->kind = Expr::Kind::kConstructor;
    if (!ParseQualifiedName(&out->type)) return false;
    Next();  // (
    if (AcceptSymbol(")")) return true;
    if (nesting_ == kMaxConstructorNesting) {
      return Fail(36, "maximum number of recursive SQL levels (" +
                          std::to_string(kMaxConstructorNesting) + ") exceeded");
    }
    ++nesting_;
    bool ok = true;
    do {
      Expr arg;
      ok = ParseExpr(&arg);
      if (ok && (arg.kind == Expr::Kind::kValue || arg.kind == Expr::Kind::kColumn)) {
        ok = Fail(984, "column not allowed here");
      }
      if (!ok) break;
      out->args.push_back(std::move(arg));
    } while (AcceptSymbol(","));
    --nesting_;
    return ok && ExpectSymbol(")");
  }
  return Fail(936, "missing expression");
}

bool Parser::ParseInsert(Statement* out) {
  InsertStatement s;
  if (!AcceptWord("INTO")) return Fail(925, "missing INTO keyword");
  if (!ParseTableRef(&s.table, true)) return false;
  if (AcceptSymbol("(")) {
    s.has_columns = true;
    do {
      Expr c;
      if (!ParseColumnRef(&c)) return false;
      if (!c.path.empty()) return BadColumnSpec();  // decision TC2
      s.columns.push_back(std::move(c));
    } while (AcceptSymbol(","));
    if (!ExpectSymbol(")")) return false;
  }
  if (!AcceptWord("VALUES")) {
    if (Peek().IsWord("SELECT")) return Fail(900, "invalid SQL statement");
    return Fail(926, "missing VALUES keyword");
  }
  if (!ExpectSymbol("(")) return false;
  do {
    Expr v;
    if (!ParseValueOrDefault(&v)) return false;
    if (v.kind == Expr::Kind::kValue) return Fail(904, "\"VALUE\": invalid identifier");
    s.values.push_back(std::move(v));
  } while (AcceptSymbol(","));
  if (!ExpectSymbol(")")) return false;
  if (!ParseReturning(&s.returning)) return false;
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseUpdate(Statement* out) {
  UpdateStatement s;
  if (!ParseTableRef(&s.table, true)) return false;
  if (!AcceptWord("SET")) return Fail(971, "missing SET keyword");
  do {
    Expr column;
    Expr value;
    if (!ParseColumnRef(&column)) return false;
    if (!AcceptSymbol("=")) return Fail(927, "missing equal sign");
    if (!ParseValueOrDefault(&value)) return false;
    s.sets.emplace_back(std::move(column), std::move(value));
  } while (AcceptSymbol(","));
  if (!ParseWhere(&s.where)) return false;
  if (!ParseReturning(&s.returning)) return false;
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseDelete(Statement* out) {
  DeleteStatement s;
  AcceptWord("FROM");
  if (!ParseTableRef(&s.table, true)) return false;
  if (!ParseWhere(&s.where)) return false;
  if (!ParseReturning(&s.returning)) return false;
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

// {RETURN | RETURNING} expr, ... INTO :bind, ...
bool Parser::ParseReturning(std::vector<ReturningClause>* out) {
  if (!AcceptWord("RETURNING") && !AcceptWord("RETURN")) return true;
  ReturningClause r;
  do {
    Expr e;
    if (Peek().IsWord("INTO")) return Fail(936, "missing expression");
    if (!ParseExpr(&e)) return false;
    // decision EX8: aggregates and ROWNUM are not taken here.
    if (e.kind == Expr::Kind::kConstructor ||
        (e.kind == Expr::Kind::kValue && e.path.empty()) || e.kind == Expr::Kind::kAggregate || e.kind == Expr::Kind::kRownum) {
      return Fail(936, "missing expression");
    }
    // decision SQ2: RETURNING takes no sequence values.
    if (e.kind == Expr::Kind::kSequence) return SequenceNotAllowed();
    r.items.push_back(std::move(e));
  } while (AcceptSymbol(","));
  if (!AcceptWord("INTO")) return Fail(925, "missing INTO keyword");
  do {
    if (Peek().kind != TokenKind::kBind) return Fail(1745, "invalid host/bind variable name");
    Expr e;
    if (!ParseValue(&e)) return false;
    r.into.push_back(std::move(e));
  } while (AcceptSymbol(","));
  if (r.into.size() < r.items.size()) return Fail(947, "not enough values");
  if (r.into.size() > r.items.size()) return Fail(913, "too many values");
  out->push_back(std::move(r));
  return true;
}

}  // namespace ocimem
