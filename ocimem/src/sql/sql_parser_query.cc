// The parser's queries: the select list, FROM, WHERE, GROUP BY, HAVING, ORDER BY and
// FOR UPDATE.
#include "sql/sql_parser.h"

#include <memory>

namespace ocimem {
namespace {

bool NamesSequence(const Expr& e) {
  if (e.kind == Expr::Kind::kSequence) return true;
  for (const Expr& a : e.args) {
    if (NamesSequence(a)) return true;
  }
  return false;
}

// Aggregates in WHERE are refused when the view is compiled (ORA-00934).
bool ShapesRows(const Expr& e, bool aggregates) {
  if ((aggregates && e.kind == Expr::Kind::kAggregate) || e.kind == Expr::Kind::kRownum) {
    return true;
  }
  for (const Expr& a : e.args) {
    if (ShapesRows(a, aggregates)) return true;
  }
  return false;
}

}  // namespace

bool ViewQueryMergeable(const SelectStatement& q) {
  // decision TC4: a view reads the rows of one table.
  if (q.has_joined || q.table.collection || q.table.collection_query) return false;
  if (q.distinct || !q.group_by.empty() || !q.having.empty() || !q.order_by.empty()) {
    return false;
  }
  for (const SelectItem& item : q.items) {
    if (ShapesRows(item.expr, true)) return false;
  }
  for (const Condition& c : q.where) {
    if (ShapesRows(c.expr, false)) return false;
  }
  return true;
}

bool Parser::ParseWhere(std::vector<Condition>* out) {
  if (!AcceptWord("WHERE")) return true;
  return ParseConditions(out);
}

// The condition of a WHERE clause or a CHECK constraint.
bool Parser::ParseConditions(std::vector<Condition>* out) {
  Condition c;
  if (!ParseCondition(&c.expr)) return false;
  if (NamesSequence(c.expr)) return SequenceNotAllowed();
  out->push_back(std::move(c));
  return true;
}

bool Parser::ParseGroupBy(SelectStatement* out) {
  if (Peek().IsWord("GROUP")) {
    Next();
    if (!AcceptWord("BY")) return Fail(924, "missing BY keyword");
    do {
      Expr e;
      if (!ParseExpr(&e)) return false;
      if (NamesSequence(e)) return SequenceNotAllowed();
      out->group_by.push_back(std::move(e));
    } while (AcceptSymbol(","));
  }
  if (AcceptWord("HAVING")) {
    Condition c;
    if (!ParseCondition(&c.expr)) return false;
    if (NamesSequence(c.expr)) return SequenceNotAllowed();
    out->having.push_back(std::move(c));
  }
  return true;
}

bool Parser::ParseOrderBy(SelectStatement* out) {
  if (!Peek().IsWord("ORDER")) return true;
  Next();
  if (!AcceptWord("BY")) return Fail(924, "missing BY keyword");
  do {
    OrderItem item;
    if (!ParseExpr(&item.expr)) return false;
    if (NamesSequence(item.expr)) return SequenceNotAllowed();
    if (AcceptWord("DESC")) {
      item.descending = true;
    } else {
      AcceptWord("ASC");
    }
    if (AcceptWord("NULLS")) {
      if (AcceptWord("FIRST")) {
        item.nulls = 1;
      } else if (AcceptWord("LAST")) {
        item.nulls = -1;
      } else {
        return Fail(933, "SQL command not properly ended");
      }
    }
    out->order_by.push_back(std::move(item));
  } while (AcceptSymbol(","));
  return true;
}

// The select list, FROM, WHERE, GROUP BY, HAVING and ORDER BY of a query (after SELECT).
bool Parser::ParseQuery(SelectStatement* out) {
  if (AcceptWord("DISTINCT") || AcceptWord("UNIQUE")) {
    out->distinct = true;
  } else {
    AcceptWord("ALL");
  }
  do {
    SelectItem item;
    if (AcceptSymbol("*")) {
      item.star = true;
    } else if (Peek().IsIdentifier() && Peek(1).IsSymbol(".") && Peek(2).IsSymbol("*")) {
      item.star = true;
      item.expr.qualifier = Next().text;
      item.expr.offset = Peek().offset;
      Next();
      Next();
    } else {
      if (Peek().IsWord("FROM")) return Fail(936, "missing expression");
      if (!ParseExpr(&item.expr)) return false;
      if (AcceptWord("AS")) {
        if (!ParseIdentifier(&item.alias)) return false;
      } else if (Peek().IsIdentifier() && !IsClauseWord(Peek())) {
        item.alias = Next().text;
      }
    }
    out->items.push_back(std::move(item));
  } while (AcceptSymbol(","));
  if (!AcceptWord("FROM")) return Fail(923, "FROM keyword not found where expected");
  if (!ParseFrom(out)) return false;
  if (!ParseWhere(&out->where) || !ParseGroupBy(out)) return false;
  return ParseOrderBy(out);
}

namespace {

bool AtCollectionRef(const Token& a, const Token& b) {
  return a.IsWord("TABLE") && b.IsSymbol("(");
}

}  // namespace

// FROM t [alias], FROM TABLE(...) [alias], or FROM t [alias], TABLE(...) [alias]: a
// collection after a table reads the collection of each of its rows.  Two tables are no
// join here: the comma is left for the end of the statement (ORA-00933).
bool Parser::ParseFrom(SelectStatement* out) {
  if (AtCollectionRef(Peek(), Peek(1))) return ParseCollectionRef(&out->table);
  if (!ParseTableRef(&out->table, true)) return false;
  if (Peek().IsSymbol(",") && AtCollectionRef(Peek(1), Peek(2))) {
    Next();
    out->has_joined = true;
    return ParseCollectionRef(&out->joined);
  }
  return true;
}

// TABLE(expr) or TABLE(query), then (+) and an alias.
bool Parser::ParseCollectionRef(TableRef* out) {
  Next();  // TABLE
  Next();  // (
  if (!Deeper(++nesting_)) return false;
  bool ok = true;
  // TABLE(SELECT ...) or TABLE((SELECT ...)).
  bool inner = Peek().IsSymbol("(") && Peek(1).IsWord("SELECT");
  if (inner) Next();
  if (AcceptWord("SELECT")) {
    auto query = std::make_shared<SelectStatement>();
    ok = ParseQuery(query.get()) && (!inner || ExpectSymbol(")"));
    out->collection_query = std::move(query);
  } else {
    auto e = std::make_shared<Expr>();
    ok = ParseExpr(e.get());
    out->collection = std::move(e);
  }
  --nesting_;
  if (!ok || !ExpectSymbol(")")) return false;
  if (Peek().IsSymbol("(") && Peek(1).IsSymbol("+") && Peek(2).IsSymbol(")")) {
    Next();
    Next();
    Next();
    out->outer = true;
  }
  if (Peek().IsIdentifier() && !IsClauseWord(Peek())) out->alias = Next().text;
  return true;
}

bool Parser::ParseSelect(Statement* out) {
  SelectStatement s;
  if (!ParseQuery(&s)) return false;
  if (AcceptWord("FOR")) {
    if (!ExpectWord("UPDATE")) return false;
    s.for_update = true;
    if (AcceptWord("OF")) {
      do {
        Expr c;
        if (!ParseColumnRef(&c)) return false;
      } while (AcceptSymbol(","));
    }
    AcceptWord("NOWAIT");
  }
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

}  // namespace ocimem
