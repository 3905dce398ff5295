// Recursive-descent parser from tokens to a Statement.  Statement kinds are dispatched on
// the leading words in ParseStatement; each form has its own member function.
#ifndef OCIMEM_SRC_SQL_SQL_PARSER_H
#define OCIMEM_SRC_SQL_SQL_PARSER_H

#include <string>
#include <string_view>
#include <vector>

#include "sql/sql_ast.h"
#include "sql/sql_lexer.h"

namespace ocimem {

// The OCI_STMT_ code of a statement text, from its first word (known after prepare).
ub2 ClassifyStatement(std::string_view sql);

// Names of the bind variables of a statement text, one per occurrence, in order (upper
// case unless written in quotes).  Empty when the text cannot be read.
std::vector<std::string> Placeholders(std::string_view sql);

// A bind variable's name as matched: upper case.
std::string UpperBindName(const std::string& name);

// Constructors nest at most this deep in one statement: parsing, building and freeing a
// value recurse once per level, and the limit keeps that well inside a thread's stack.
constexpr size_t kMaxConstructorNesting = 1000;

// False for a query that a view cannot be: DISTINCT, GROUP BY, HAVING, ORDER BY,
// aggregates, ROWNUM.
bool ViewQueryMergeable(const SelectStatement& q);

// Words that end a table reference or a select item instead of being taken as an alias.
bool IsClauseWord(const Token& t);

class Parser {
 public:
  explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

  // Parses one whole statement; false with `error` set on a syntax error.
  bool ParseStatement(Statement* out, SqlError* error);

 private:
  const Token& Peek(size_t ahead = 0) const;
  const Token& Next();
  bool AcceptWord(std::string_view upper);
  bool AcceptSymbol(std::string_view symbol);
  bool Fail(int code, std::string message);
  bool ExpectWord(std::string_view upper);
  bool ExpectSymbol(std::string_view symbol);
  bool ExpectEnd(int code);
  bool ParseIdentifier(std::string* out);
  bool ParseQualifiedName(QualifiedName* out);
  bool ParseUnsigned(long long min, long long max, int code, std::string_view message,
                     long long* out);
  bool ParseSigned(long long min, long long max, int code, std::string_view message,
                   long long* out);

  bool ParseAlterSession(Statement* out);
  bool ParseCreateType(Statement* out, bool or_replace);
  bool ParseCreateTable(Statement* out);
  bool ParseTableElement(CreateTableStatement* s, bool object_table);
  bool ParseColumnConstraints(const std::string& column, std::vector<ConstraintClause>* out);
  bool ParseTableConstraint(CreateTableStatement* s);
  bool ParseKeyColumns(std::vector<std::string>* out);
  bool ParseReferences(ConstraintClause* c);
  bool ParseCheck(ConstraintClause* c);
  bool ParseDefault(ColumnSpec* column);
  void AcceptEnforcedState();
  bool ParseNestedStorage(CreateTableStatement* s);
  bool ParseDropTable(Statement* out);
  bool ParseCreateView(Statement* out, bool or_replace);
  bool ParseDropView(Statement* out);
  bool ParseInsert(Statement* out);
  bool ParseSelect(Statement* out);
  bool ParseQuery(SelectStatement* out);
  bool ParseUpdate(Statement* out);
  bool ParseDelete(Statement* out);
  bool ParseTableRef(TableRef* out, bool allow_alias);
  bool ParseWhere(std::vector<Condition>* out);
  bool ParseConditions(std::vector<Condition>* out);
  bool ParseOrderBy(SelectStatement* out);
  bool ParseGroupBy(SelectStatement* out);
  // Expressions and conditions (sql_parser_expr.cc).
  bool ParseExpr(Expr* out);
  bool ParseCondition(Expr* out);
  bool ParseOr(Expr* out);
  bool ParseAnd(Expr* out);
  bool ParseNot(Expr* out);
  bool ParsePredicate(Expr* out);
  bool ParsePredicateRest(Expr* out);
  bool ParseAdditive(Expr* out);
  bool ParseMultiplicative(Expr* out);
  bool ParseUnary(Expr* out);
  bool ParsePrimary(Expr* out);
  bool ParseCase(Expr* out);
  bool ParseExtract(Expr* out);
  bool ParseTimeLiteral(Expr* out);
  bool ParseCast(Expr* out);
  bool ParseFunctionCall(Expr* out);
  bool MakeNode(Expr::Kind kind, std::string text, std::vector<Expr> args, Expr* out);
  bool Combine(Expr::Kind kind, const char* text, Expr* out, Expr* second);
  bool CheckCondition(const Expr& e);
  bool CheckValue(const Expr& e);
  // ORA-00036 once an expression nests deeper than kMaxConstructorNesting.
  bool Deeper(size_t depth);
  bool ParseReturning(std::vector<ReturningClause>* out);
  bool ParseColumnRef(Expr* out);
  bool ParseValue(Expr* out);
  // A value, or the word DEFAULT (INSERT ... VALUES and UPDATE ... SET).
  bool ParseValueOrDefault(Expr* out);
  bool ParseDropType(Statement* out);
  bool ParseSequenceNumber(std::string* out);
  bool ParseCreateSequence(Statement* out);
  bool ParseDropSequence(Statement* out);
  bool ParseTruncate(Statement* out);
  bool AtSequenceRef() const;
  bool ParseSequenceRef(Expr* out);
  bool SequenceNotAllowed() { return Fail(2287, "sequence number not allowed here"); }
  bool BadColumnSpec() {
    return Fail(1747, "invalid user.table.column, table.column, or column specification");
  }
  // FROM t [alias] [, TABLE(...) [alias]] or FROM TABLE(...) [alias] (sql_parser_query.cc).
  bool ParseFrom(SelectStatement* out);
  bool ParseCollectionRef(TableRef* out);
  bool ParseDataType(DataTypeSpec* out);
  bool ParseCharLength(DataTypeSpec* out, bool required, ub4 max);
  bool ParseOptionalPrecision(ub1 default_value, ub1* out);
  // ALTER TABLE, CREATE and DROP INDEX, COMMENT ON (sql_parser_alter.cc).
  bool ParseAlterTable(Statement* out);
  bool ParseAlterAdd(AlterTableStatement* s);
  bool ParseAlterDrop(AlterTableStatement* s);
  bool ParseAlterModify(AlterTableStatement* s);
  bool ParseColumnChange(ColumnChange* c);
  bool ParseCreateIndex(Statement* out, bool unique);
  bool ParseDropIndex(Statement* out);
  bool ParseComment(Statement* out);

  std::vector<Token> tokens_;
  size_t pos_ = 0;
  size_t binds_ = 0;  // bind occurrences met so far
  size_t nesting_ = 0;  // constructors open around the value being parsed
  SqlError* error_ = nullptr;
};

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_PARSER_H
