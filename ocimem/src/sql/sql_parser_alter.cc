// The parser's ALTER TABLE, CREATE INDEX, DROP INDEX and COMMENT ON.
#include "sql/sql_parser.h"

#include <string>

namespace ocimem {

namespace {

bool InvalidAlterOption(SqlError* error) {
  error->code = 1735;
  error->message = "invalid ALTER TABLE option";
  return false;
}

}  // namespace

bool Parser::ParseAlterTable(Statement* out) {
  AlterTableStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  if (AcceptWord("ADD")) {
    if (!ParseAlterAdd(&s)) return false;
  } else if (AcceptWord("DROP")) {
    if (!ParseAlterDrop(&s)) return false;
  } else if (AcceptWord("MODIFY")) {
    if (!ParseAlterModify(&s)) return false;
  } else if (AcceptWord("RENAME")) {
    if (AcceptWord("COLUMN")) {
      s.action = AlterTableStatement::Action::kRenameColumn;
      if (!ParseIdentifier(&s.from) || !ExpectWord("TO") || !ParseIdentifier(&s.to)) {
        return false;
      }
    } else if (AcceptWord("TO")) {
      s.action = AlterTableStatement::Action::kRenameTable;
      if (!ParseIdentifier(&s.to)) return false;
    } else {
      return Fail(905, "missing keyword");
    }
  } else {
    return InvalidAlterOption(error_);
  }
  if (!ExpectEnd(1735)) {
    if (error_->code == 1735) error_->message = "invalid ALTER TABLE option";
    return false;
  }
  // A default is stored with the table: it cannot take a value from the program.
  if (binds_ > 0) return Fail(1027, "bind variables not allowed for data definition operations");
  *out = std::move(s);
  return true;
}

// ADD column ..., ADD constraint, or ADD (column or constraint, ...), after ADD.
bool Parser::ParseAlterAdd(AlterTableStatement* s) {
  s->action = AlterTableStatement::Action::kAdd;
  CreateTableStatement added;
  if (AcceptSymbol("(")) {
    do {
      if (!ParseTableElement(&added, false)) return false;
    } while (AcceptSymbol(","));
    if (!ExpectSymbol(")")) return false;
  } else if (!ParseTableElement(&added, false)) {
    return false;
  }
  s->columns = std::move(added.columns);
  s->constraints = std::move(added.constraints);
  return true;
}

// DROP CONSTRAINT name, DROP PRIMARY KEY, DROP UNIQUE (columns), each with an optional
// CASCADE, after DROP.
bool Parser::ParseAlterDrop(AlterTableStatement* s) {
  if (AcceptWord("CONSTRAINT")) {
    s->action = AlterTableStatement::Action::kDropConstraint;
    if (!ParseIdentifier(&s->constraint)) return false;
  } else if (AcceptWord("PRIMARY")) {
    s->action = AlterTableStatement::Action::kDropPrimaryKey;
    if (!ExpectWord("KEY")) return false;
  } else if (AcceptWord("UNIQUE")) {
    s->action = AlterTableStatement::Action::kDropUnique;
    if (!ParseKeyColumns(&s->key_columns)) return false;
  } else {
    // decision AT9: dropping columns is not taken.
    return InvalidAlterOption(error_);
  }
  s->cascade = AcceptWord("CASCADE");
  return true;
}

bool Parser::ParseAlterModify(AlterTableStatement* s) {
  s->action = AlterTableStatement::Action::kModify;
  if (AcceptSymbol("(")) {
    do {
      ColumnChange c;
      if (!ParseColumnChange(&c)) return false;
      s->changes.push_back(std::move(c));
    } while (AcceptSymbol(","));
    return ExpectSymbol(")");
  }
  ColumnChange c;
  if (!ParseColumnChange(&c)) return false;
  s->changes.push_back(std::move(c));
  return true;
}

// column [type] [DEFAULT value] [[CONSTRAINT name] NOT NULL | NULL]
bool Parser::ParseColumnChange(ColumnChange* c) {
  if (!ParseIdentifier(&c->name)) return false;
  const Token& t = Peek();
  if (t.IsIdentifier() && !t.IsWord("DEFAULT") && !t.IsWord("NOT") && !t.IsWord("NULL") &&
      !t.IsWord("CONSTRAINT")) {
    c->has_type = true;
    if (!ParseDataType(&c->type)) return false;
  }
  if (AcceptWord("DEFAULT")) {
    ColumnSpec parsed;
    if (!ParseDefault(&parsed)) return false;
    c->has_default = true;
    c->default_value = std::move(parsed.default_value);
  }
  bool named = AcceptWord("CONSTRAINT");
  if (named && !ParseIdentifier(&c->constraint)) return false;
  if (AcceptWord("NOT")) {
    if (!ExpectWord("NULL")) return false;
    c->nullity = ColumnChange::Nullity::kNotNull;
  } else if (AcceptWord("NULL")) {
    c->nullity = ColumnChange::Nullity::kNull;
  } else if (named) {
    return Fail(905, "missing keyword");
  }
  AcceptEnforcedState();
  if (!c->has_type && !c->has_default && c->nullity == ColumnChange::Nullity::kKeep) {
    return Fail(905, "missing keyword");
  }
  return true;
}

// After CREATE [UNIQUE] INDEX.
bool Parser::ParseCreateIndex(Statement* out, bool unique) {
  CreateIndexStatement s;
  s.unique = unique;
  if (!ParseQualifiedName(&s.name)) return false;
  if (!AcceptWord("ON")) return Fail(969, "missing ON keyword");
  if (!ParseQualifiedName(&s.table) || !ExpectSymbol("(")) return false;
  do {
    std::string column;
    if (!ParseIdentifier(&column)) return false;
    if (!AcceptWord("ASC")) AcceptWord("DESC");
    s.columns.push_back(std::move(column));
  } while (AcceptSymbol(","));
  if (!ExpectSymbol(")")) return false;
  // Physical attributes say nothing about results (decision AT7).
  for (;;) {
    if (AcceptWord("TABLESPACE")) {
      std::string ignored;
      if (!ParseIdentifier(&ignored)) return false;
    } else if (AcceptWord("PCTFREE") || AcceptWord("INITRANS") || AcceptWord("MAXTRANS")) {
      long long ignored = 0;
      if (!ParseUnsigned(0, 255, 2211, "invalid value for PCTFREE or PCTUSED", &ignored)) {
        return false;
      }
    } else if (AcceptWord("COMPUTE")) {
      if (!ExpectWord("STATISTICS")) return false;
    } else if (!AcceptWord("LOGGING") && !AcceptWord("NOLOGGING") && !AcceptWord("ONLINE") &&
               !AcceptWord("NOPARALLEL") && !AcceptWord("NOCOMPRESS")) {
      break;
    }
  }
  if (!ExpectEnd(922)) return false;
  *out = std::move(s);
  return true;
}

bool Parser::ParseDropIndex(Statement* out) {
  DropIndexStatement s;
  if (!ParseQualifiedName(&s.name)) return false;
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

// After COMMENT.
bool Parser::ParseComment(Statement* out) {
  CommentStatement s;
  if (!ExpectWord("ON")) return false;
  if (AcceptWord("TABLE")) {
    if (!ParseQualifiedName(&s.table)) return false;
  } else if (AcceptWord("COLUMN")) {
    std::string parts[3];
    size_t n = 0;
    // ORA-01747, for four names and for one.
    auto bad_name = [this] { return BadColumnSpec(); };
    do {
      if (n == 3) return bad_name();
      if (!ParseIdentifier(&parts[n++])) return false;
    } while (AcceptSymbol("."));
    if (n == 1) return bad_name();
    if (n == 3) s.table.schema = parts[0];
    s.table.name = parts[n - 2];
    s.column = parts[n - 1];
  } else {
    return Fail(905, "missing keyword");
  }
  if (!ExpectWord("IS")) return false;
  if (Peek().kind != TokenKind::kString) return Fail(1780, "string literal required");
  s.text = Next().text;
  if (!ExpectEnd(933)) return false;
  *out = std::move(s);
  return true;
}

}  // namespace ocimem
