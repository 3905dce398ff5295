// Parsed SQL statements.  Each statement form is one struct; Statement holds whichever
// was parsed.  Names are kept as stored (unquoted ones already upper-cased).
#ifndef OCIMEM_SRC_SQL_SQL_AST_H
#define OCIMEM_SRC_SQL_SQL_AST_H

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "oci.h"

namespace ocimem {

struct QualifiedName {
  std::string schema;  // empty: the session's schema
  std::string name;
};

// A data type as written in DDL, before named types are looked up.
struct DataTypeSpec {
  enum class Base {
    kVarchar2,
    kChar,
    kNVarchar2,
    kNChar,
    kNumber,
    kInteger,
    kSmallint,
    kFloat,
    kDecimal,
    kReal,
    kDoublePrecision,
    kDate,
    kTimestamp,
    kTimestampTz,
    kTimestampLtz,
    kIntervalYm,
    kIntervalDs,
    kRaw,
    kClob,
    kNClob,
    kBlob,
    kBfile,
    kRef,
    kNamed,  // an object or collection type
  };
  Base base = Base::kNumber;
  ub4 length = 0;
  bool char_semantics = false;
  sb2 precision = 0;
  sb1 scale = 0;
  bool has_precision = false;
  ub1 leading_precision = 2;
  ub1 fraction_precision = 6;
  QualifiedName named;  // kNamed and kRef
};

struct AttributeSpec {
  std::string name;
  DataTypeSpec type;
};

struct CreateTypeStatement {
  enum class Form { kObject, kTable, kVarray };
  bool or_replace = false;
  bool force = false;
  QualifiedName name;
  Form form = Form::kObject;
  std::vector<AttributeSpec> attributes;  // kObject
  bool final = true;
  DataTypeSpec element;  // kTable, kVarray
  sb4 limit = 0;         // kVarray
};

struct DropTypeStatement {
  QualifiedName name;
  bool force = false;
};


struct NestedStorage {
  std::string column;  // or COLUMN_VALUE
  std::string storage;
};


struct DropTableStatement {
  QualifiedName name;
  bool cascade_constraints = false;
};

// An expression or a condition.  Operands are literals, bind variables, columns,
// VALUE(alias), EMPTY_CLOB()/EMPTY_BLOB(), type constructors type(value, ...), NEXTVAL and
// CURRVAL, ROWNUM; operators and conditions keep their operands in `args`.
struct Expr {
  enum class Kind {
    kNull, kNumber, kString, kBind, kEmptyClob, kEmptyBlob, kColumn, kValue, kConstructor,
    kSessionTimeZone, kDbTimeZone, kSequence,
    kDefault,  // the word DEFAULT as a value of INSERT ... VALUES or UPDATE ... SET
    kRownum,
    kUnary,      // text "-" or "+"; args[0]
    kBinary,     // text "+", "-", "*", "/" or "||"; args[0], args[1]
    kFunction,   // text the name; args; option: LEADING/TRAILING/BOTH of TRIM
    kAggregate,  // text COUNT, MIN, MAX, SUM, AVG; star: COUNT(*); distinct; args[0]
    kCase,       // has_operand: args[0] is the operand of a simple CASE; then WHEN, THEN
                 // pairs; has_else: the last is the ELSE value
    // Conditions: TRUE, FALSE or unknown.
    kCompare,    // text "=", "<>", "<", "<=", ">", ">="; args[0], args[1]
    kIsNull,     // negated: IS NOT NULL; args[0]
    kIn,         // negated: NOT IN; args[0] IN (args[1], ...)
    kBetween,    // negated; args[0] BETWEEN args[1] AND args[2]
    kLike,       // negated; args[0] LIKE args[1] [ESCAPE args[2]]
    kAnd, kOr,   // args[0], args[1]
    kNot,        // args[0]
    // DATE 'text', TIMESTAMP 'text' or INTERVAL 'text' fields: option DATE, TIMESTAMP or
    // the interval's fields (YEAR TO MONTH, DAY TO SECOND, HOUR, ...), text the quoted text;
    // cast holds an interval's type and precisions.
    kTimeLiteral,
  };
  Kind kind = Kind::kNull;
  std::string text;       // number or string literal, bind name (upper case), column name,
                          // NEXTVAL or CURRVAL of a sequence, operator, function name
  std::string qualifier;  // alias or table of a column; the alias of VALUE()
  size_t bind = 0;        // occurrence number of a bind variable in the statement
  size_t offset = 0;      // in the statement text
  QualifiedName type;     // of a constructor; the sequence of NEXTVAL and CURRVAL
  std::vector<Expr> args;  // of a constructor, operator, function or condition
  std::string option;
  bool negated = false;
  bool distinct = false;
  bool star = false;
  bool has_operand = false;
  bool has_else = false;
  bool parenthesized = false;  // written in parentheses
  size_t depth = 1;            // levels of the tree below and including this one
  std::shared_ptr<const DataTypeSpec> cast;  // the type of CAST(expr AS type)
  // Attributes named after a column or VALUE(alias): alias.column.attr... reads attributes of
  // an object column, VALUE(alias).attr... attributes of an object table's rows.
  std::vector<std::string> path;
};

// One condition of a WHERE clause; a clause is the AND of its conditions.
struct Condition {
  Expr expr;
};

// A constraint of CREATE TABLE, written on a column (`columns` is that column) or on its
// own.  Kept in the order written, which is the order system names are given in.
struct ConstraintClause {
  enum class Kind { kNotNull, kNull, kPrimaryKey, kUnique, kCheck, kForeignKey };
  enum class OnDelete { kNoAction, kCascade, kSetNull };
  Kind kind = Kind::kNotNull;
  std::string name;  // empty: named by the system
  bool on_column = false;
  std::vector<std::string> columns;
  std::vector<Condition> check;          // kCheck: conditions joined by AND
  QualifiedName parent;                  // kForeignKey
  std::vector<std::string> parent_columns;  // empty: the parent's primary key
  OnDelete on_delete = OnDelete::kNoAction;
};

struct ColumnSpec {
  std::string name;
  DataTypeSpec type;
  bool type_of_parent = false;  // no type written: the referenced column's
  bool has_default = false;
  Expr default_value;
};

// CREATE TABLE name OF type [(constraints)] or CREATE TABLE name (columns, constraints).
struct CreateTableStatement {
  QualifiedName name;
  bool object_table = false;
  QualifiedName of_type;
  std::vector<ColumnSpec> columns;  // relational; for an object table: none
  std::vector<ConstraintClause> constraints;
  std::vector<NestedStorage> nested;
};

struct SelectStatement;

struct TableRef {
  QualifiedName name;
  std::string alias;
  // FROM TABLE(collection) [alias]: the rows of a collection, given by an expression (a
  // column of the table before it in FROM, a bind variable) or by a query of one row and
  // one column.  `outer`: TABLE(...) (+), a parent row with no element still gives one row.
  std::shared_ptr<const Expr> collection;
  std::shared_ptr<const SelectStatement> collection_query;
  bool outer = false;
  // The columns of a row made of a table's row and a collection's element: the name that
  // qualifies each (the alias, or the table's name), and whether that name is an alias.
  // Empty for a table's own rows.
  std::vector<std::string> owners;
  std::vector<bool> owner_is_alias;
};

// RETURNING expr, ... INTO :bind, ... of INSERT, UPDATE and DELETE.
struct ReturningClause {
  std::vector<Expr> items;
  std::vector<Expr> into;  // kBind
};

struct InsertStatement {
  TableRef table;
  bool has_columns = false;
  std::vector<Expr> columns;  // kColumn
  std::vector<Expr> values;
  std::vector<ReturningClause> returning;  // at most one
};

struct SelectItem {
  bool star = false;
  Expr expr;
  std::string alias;  // the column alias written after the item, or empty
};

struct OrderItem {
  Expr expr;  // a number literal names a select-list position
  bool descending = false;
  int nulls = 0;  // 1: NULLS FIRST, -1: NULLS LAST, 0: Oracle's default
};

struct SelectStatement {
  bool distinct = false;
  std::vector<SelectItem> items;
  TableRef table;
  // FROM table [alias], TABLE(alias.column) [alias]: the collection joined with each row.
  bool has_joined = false;
  TableRef joined;
  std::vector<Condition> where;
  std::vector<Expr> group_by;
  std::vector<Condition> having;
  std::vector<OrderItem> order_by;
  bool for_update = false;
};

struct UpdateStatement {
  TableRef table;
  std::vector<std::pair<Expr, Expr>> sets;  // column, value
  std::vector<Condition> where;
  std::vector<ReturningClause> returning;
};

struct DeleteStatement {
  TableRef table;
  std::vector<Condition> where;
  std::vector<ReturningClause> returning;
};

// CREATE [OR REPLACE] VIEW name [(column, ...)] AS query
struct CreateViewStatement {
  bool or_replace = false;
  QualifiedName name;
  std::vector<std::string> columns;  // the column list, or empty
  SelectStatement query;
};

struct DropViewStatement {
  QualifiedName name;
};

// ALTER SESSION SET name = value ...
struct AlterSessionStatement {
  struct Setting {
    std::string name;   // upper case
    std::string value;  // a string literal's text, or a word upper-cased
    bool quoted = false;
  };
  std::vector<Setting> settings;
};

// CREATE SEQUENCE name [option ...]; numbers are kept as written (sign and digits).
struct CreateSequenceStatement {
  QualifiedName name;
  std::string start, increment, min_value, max_value, cache;  // empty: not given
  bool no_min = false;
  bool no_max = false;
  bool cycle = false;
  bool no_cache = false;
  bool order = false;
};

struct DropSequenceStatement {
  QualifiedName name;
};

struct TruncateTableStatement {
  QualifiedName name;
};

struct CommitStatement {};
struct RollbackStatement {};

// A column of ALTER TABLE ... MODIFY: what the clause writes, each part optional.
struct ColumnChange {
  enum class Nullity { kKeep, kNull, kNotNull };
  std::string name;
  bool has_type = false;
  DataTypeSpec type;
  bool has_default = false;
  Expr default_value;
  Nullity nullity = Nullity::kKeep;
  std::string constraint;  // the name given to NOT NULL, or empty
};

// ALTER TABLE name followed by one action.
struct AlterTableStatement {
  enum class Action {
    kAdd,             // columns and constraints
    kDropConstraint,  // DROP CONSTRAINT name
    kDropPrimaryKey,
    kDropUnique,      // DROP UNIQUE (columns)
    kModify,
    kRenameColumn,
    kRenameTable,
  };
  QualifiedName name;
  Action action = Action::kAdd;
  std::vector<ColumnSpec> columns;            // kAdd
  std::vector<ConstraintClause> constraints;  // kAdd, in the order written
  std::vector<ColumnChange> changes;          // kModify
  std::string constraint;                     // kDropConstraint
  std::vector<std::string> key_columns;       // kDropUnique
  bool cascade = false;                       // DROP ... CASCADE
  std::string from, to;                       // kRenameColumn, kRenameTable
};

// CREATE [UNIQUE] INDEX name ON table (column [ASC | DESC], ...)
struct CreateIndexStatement {
  QualifiedName name;
  bool unique = false;
  QualifiedName table;
  std::vector<std::string> columns;
};

struct DropIndexStatement {
  QualifiedName name;
};

// COMMENT ON TABLE t IS 'text' / COMMENT ON COLUMN t.c IS 'text'
struct CommentStatement {
  QualifiedName table;
  std::string column;  // empty: on the table
  std::string text;
};

using Statement = std::variant<CreateTypeStatement, DropTypeStatement, CreateTableStatement,
                               DropTableStatement, CreateViewStatement, DropViewStatement,
                               InsertStatement, SelectStatement, UpdateStatement,
                               DeleteStatement, CommitStatement, RollbackStatement,
                               AlterSessionStatement, CreateSequenceStatement,
                               DropSequenceStatement, TruncateTableStatement,
                               AlterTableStatement, CreateIndexStatement, DropIndexStatement,
                               CommentStatement>;

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_AST_H
