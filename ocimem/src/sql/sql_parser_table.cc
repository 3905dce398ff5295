// The parser's CREATE TABLE and DROP TABLE: columns, their DEFAULT, and the column and
// table constraints.
#include "sql/sql_parser.h"

#include <string>

namespace ocimem {

namespace {

// Words that open a table constraint (besides CONSTRAINT name).
bool OpensTableConstraint(const Token& t) {
  return t.IsWord("PRIMARY") || t.IsWord("UNIQUE") || t.IsWord("CHECK") ||
         t.IsWord("FOREIGN");
}

// Words that open a column constraint.
bool OpensColumnConstraint(const Token& t) {
  return t.IsWord("CONSTRAINT") || t.IsWord("NOT") || t.IsWord("NULL") || t.IsWord("PRIMARY") ||
         t.IsWord("UNIQUE") || t.IsWord("CHECK") || t.IsWord("REFERENCES");
}

}  // namespace

bool Parser::ParseCreateTable(Statement* out) {
  CreateTableStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  if (AcceptWord("OF")) {
    s.object_table = true;
    if (!ParseQualifiedName(&s.of_type)) return false;
    if (AcceptSymbol("(")) {
      do {
        if (!ParseTableElement(&s, true)) return false;
      } while (AcceptSymbol(","));
      if (!ExpectSymbol(")")) return false;
    }
  } else {
    if (!ExpectSymbol("(")) return false;
    do {
      if (!ParseTableElement(&s, false)) return false;
    } while (AcceptSymbol(","));
    if (!ExpectSymbol(")")) return false;
  }
  while (Peek().IsWord("NESTED")) {
    if (!ParseNestedStorage(&s)) return false;
  }
  if (!ExpectEnd(922)) return false;
  // A table is stored, so its defaults cannot take values from the program.
  if (binds_ > 0) return Fail(1027, "bind variables not allowed for data definition operations");
  *out = std::move(s);
  return true;
}

// One column (of an object table: an attribute and its constraints) or one table constraint.
bool Parser::ParseTableElement(CreateTableStatement* s, bool object_table) {
  if (Peek().IsWord("CONSTRAINT") || OpensTableConstraint(Peek())) {
    return ParseTableConstraint(s);
  }
  ColumnSpec c;
  if (!ParseIdentifier(&c.name)) return false;
  if (!object_table) {
    // A column that refers to another takes that column's type when it names none.
    c.type_of_parent = OpensColumnConstraint(Peek());
    if (!c.type_of_parent && !ParseDataType(&c.type)) return false;
    if (!c.type_of_parent && AcceptWord("DEFAULT") && !ParseDefault(&c)) return false;
  }
  size_t first = s->constraints.size();
  if (!ParseColumnConstraints(c.name, &s->constraints)) return false;
  if (c.type_of_parent) {
    bool refers = false;
    for (size_t i = first; i < s->constraints.size(); ++i) {
      refers = refers || s->constraints[i].kind == ConstraintClause::Kind::kForeignKey;
    }
    if (!refers) return Fail(2263, "need to specify the datatype for this column");
  }
  if (!object_table) s->columns.push_back(std::move(c));
  return true;
}

bool Parser::ParseDefault(ColumnSpec* column) {
  column->has_default = true;
  bool time_literal = (Peek().IsWord("DATE") || Peek().IsWord("TIMESTAMP") ||
                       Peek().IsWord("INTERVAL")) &&
                      Peek(1).kind == TokenKind::kString;
  if (time_literal) return ParseTimeLiteral(&column->default_value);
  if (!ParseValue(&column->default_value)) return false;
  Expr::Kind kind = column->default_value.kind;
  if (kind == Expr::Kind::kColumn || kind == Expr::Kind::kValue) {
    return Fail(984, "column not allowed here");
  }
  return true;
}

bool Parser::ParseColumnConstraints(const std::string& column, std::vector<ConstraintClause>* out) {
  for (;;) {
    ConstraintClause c;
    c.on_column = true;
    c.columns.push_back(column);
    bool named = AcceptWord("CONSTRAINT");
    if (named && !ParseIdentifier(&c.name)) return false;
    if (AcceptWord("NOT")) {
      if (!ExpectWord("NULL")) return false;
      c.kind = ConstraintClause::Kind::kNotNull;
    } else if (AcceptWord("NULL")) {
      c.kind = ConstraintClause::Kind::kNull;
    } else if (AcceptWord("PRIMARY")) {
      if (!ExpectWord("KEY")) return false;
      c.kind = ConstraintClause::Kind::kPrimaryKey;
    } else if (AcceptWord("UNIQUE")) {
      c.kind = ConstraintClause::Kind::kUnique;
    } else if (AcceptWord("CHECK")) {
      if (!ParseCheck(&c)) return false;
    } else if (AcceptWord("REFERENCES")) {
      if (!ParseReferences(&c)) return false;
    } else {
      // decision CN7: a name must be followed by its constraint.
      return !named || Fail(905, "missing keyword");
    }
    AcceptEnforcedState();
    out->push_back(std::move(c));
  }
}

// The words of a constraint state that say what every constraint here is: enabled,
// validated, checked at once.  Other states (DISABLE, DEFERRABLE, ...) are not taken.
void Parser::AcceptEnforcedState() {
  for (;;) {
    if (AcceptWord("ENABLE") || AcceptWord("VALIDATE") || AcceptWord("NORELY")) continue;
    if (Peek().IsWord("NOT") && Peek(1).IsWord("DEFERRABLE")) {
      Next();
      Next();
      continue;
    }
    if (Peek().IsWord("INITIALLY") && Peek(1).IsWord("IMMEDIATE")) {
      Next();
      Next();
      continue;
    }
    return;
  }
}

bool Parser::ParseKeyColumns(std::vector<std::string>* out) {
  if (!ExpectSymbol("(")) return false;
  do {
    std::string column;
    if (!ParseIdentifier(&column)) return false;
    out->push_back(std::move(column));
  } while (AcceptSymbol(","));
  return ExpectSymbol(")");
}

// CHECK (condition), after CHECK.
bool Parser::ParseCheck(ConstraintClause* c) {
  c->kind = ConstraintClause::Kind::kCheck;
  if (!ExpectSymbol("(")) return false;
  if (!ParseConditions(&c->check)) return false;
  return ExpectSymbol(")");
}

// REFERENCES [schema.]table [(column, ...)] [ON DELETE {CASCADE | SET NULL}], after
// REFERENCES.
bool Parser::ParseReferences(ConstraintClause* c) {
  c->kind = ConstraintClause::Kind::kForeignKey;
  if (!ParseQualifiedName(&c->parent)) return false;
  if (Peek().IsSymbol("(") && !ParseKeyColumns(&c->parent_columns)) return false;
  if (AcceptWord("ON")) {
    if (!ExpectWord("DELETE")) return false;
    if (AcceptWord("CASCADE")) {
      c->on_delete = ConstraintClause::OnDelete::kCascade;
    } else if (AcceptWord("SET")) {
      if (!ExpectWord("NULL")) return false;
      c->on_delete = ConstraintClause::OnDelete::kSetNull;
    } else {
      return Fail(905, "missing keyword");
    }
  }
  return true;
}

bool Parser::ParseTableConstraint(CreateTableStatement* s) {
  ConstraintClause c;
  if (AcceptWord("CONSTRAINT") && !ParseIdentifier(&c.name)) return false;
  if (AcceptWord("PRIMARY")) {
    if (!ExpectWord("KEY")) return false;
    c.kind = ConstraintClause::Kind::kPrimaryKey;
    if (!ParseKeyColumns(&c.columns)) return false;
  } else if (AcceptWord("UNIQUE")) {
    c.kind = ConstraintClause::Kind::kUnique;
    if (!ParseKeyColumns(&c.columns)) return false;
  } else if (AcceptWord("CHECK")) {
    if (!ParseCheck(&c)) return false;
  } else if (AcceptWord("FOREIGN")) {
    if (!ExpectWord("KEY") || !ParseKeyColumns(&c.columns) || !ExpectWord("REFERENCES") ||
        !ParseReferences(&c)) {
      return false;
    }
  } else if (Peek().IsWord("NOT") || Peek().IsWord("NULL")) {
    // decision CN3: NOT NULL is a column constraint only.
    return Fail(2253, "constraint specification not allowed here");
  } else {
    return Fail(905, "missing keyword");
  }
  AcceptEnforcedState();
  s->constraints.push_back(std::move(c));
  return true;
}

bool Parser::ParseNestedStorage(CreateTableStatement* s) {
  Next();  // NESTED
  if (!ExpectWord("TABLE")) return false;
  NestedStorage n;
  if (!ParseIdentifier(&n.column) || !ExpectWord("STORE") || !ExpectWord("AS") ||
      !ParseIdentifier(&n.storage)) {
    return false;
  }
  s->nested.push_back(std::move(n));
  return true;
}

bool Parser::ParseDropTable(Statement* out) {
  DropTableStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  if (AcceptWord("CASCADE")) {
    if (!ExpectWord("CONSTRAINTS")) return false;
    s.cascade_constraints = true;
  }
  AcceptWord("PURGE");
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseValueOrDefault(Expr* out) {
  if (Peek().IsWord("DEFAULT")) {
    out->offset = Next().offset;
    out->kind = Expr::Kind::kDefault;
    return true;
  }
  return ParseExpr(out);
}

}  // namespace ocimem
