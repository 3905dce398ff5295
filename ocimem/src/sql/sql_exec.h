// Runs a parsed statement against a database on behalf of a session.
#ifndef OCIMEM_SRC_SQL_SQL_EXEC_H
#define OCIMEM_SRC_SQL_SQL_EXEC_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "database/database.h"
#include "sql/sql_ast.h"
#include "sql/sql_lexer.h"
#include "statements/statement.h"

namespace ocimem {

struct ExecContext {
  Database* db;
  std::string schema;  // the session's default schema
  std::shared_ptr<Database> db_ref;
  Session* session = nullptr;
  StmtHandle* stmt = nullptr;  // its binds are the statement's bind variables
  size_t iteration = 0;        // element of array binds used
  // NEXTVAL of each sequence (by Sequence::id) in the row being made.
  mutable std::map<std::uint64_t, std::string> row_nextvals;
  // Datetime descriptors that expressions made (SYSTIMESTAMP, TO_TIMESTAMP), kept until the
  // statement ends.
  mutable std::vector<std::shared_ptr<void>> temporaries;
};

struct ExecResult {
  ub4 row_count = 0;
  std::unique_ptr<Cursor> cursor;  // queries
  // DML with RETURNING: the items, and the rows changed (as stored; deleted rows as they were).
  std::vector<Projection> returning;
  std::vector<std::shared_ptr<RowData>> returned;
};

// Executes `statement`; false with `error` set when Oracle would raise an error.  A
// failing statement leaves no change behind.
bool ExecuteStatement(const ExecContext& ctx, const Statement& statement, ExecResult* result,
                      SqlError* error);

// Type DDL (ddl_type.cc) and table DDL (ddl_table.cc); each locks the database.
bool CreateType(const ExecContext& ctx, const CreateTypeStatement& s, SqlError* error);
bool DropType(const ExecContext& ctx, const DropTypeStatement& s, SqlError* error);
bool CreateTable(const ExecContext& ctx, const CreateTableStatement& s, SqlError* error);
bool DropTable(const ExecContext& ctx, const DropTableStatement& s, SqlError* error);
// View DDL (ddl_view.cc); each locks the database.
bool CreateView(const ExecContext& ctx, const CreateViewStatement& s, SqlError* error);
bool DropView(const ExecContext& ctx, const DropViewStatement& s, SqlError* error);
// Sequence DDL and TRUNCATE TABLE (ddl_sequence.cc); each locks the database.
bool CreateSequence(const ExecContext& ctx, const CreateSequenceStatement& s, SqlError* error);
bool DropSequence(const ExecContext& ctx, const DropSequenceStatement& s, SqlError* error);
bool TruncateTable(const ExecContext& ctx, const TruncateTableStatement& s, SqlError* error);
// ALTER SESSION SET (alter_session.cc).
bool AlterSession(const ExecContext& ctx, const AlterSessionStatement& s, SqlError* error);
// ALTER TABLE (ddl_alter.cc), CREATE INDEX, DROP INDEX and COMMENT ON (ddl_index.cc); each
// locks the database.
bool AlterTable(const ExecContext& ctx, const AlterTableStatement& s, SqlError* error);
bool CreateIndex(const ExecContext& ctx, const CreateIndexStatement& s, SqlError* error);
bool DropIndex(const ExecContext& ctx, const DropIndexStatement& s, SqlError* error);
bool CommentOn(const ExecContext& ctx, const CommentStatement& s, SqlError* error);
// Turns a written data type into a slot type, looking named types up in the catalog
// (the caller holds the database mutex).
bool ResolveType(const ExecContext& ctx, const DataTypeSpec& decl, const std::string& own_schema,
                 const std::string& own_name, ValueType* out, SqlError* error);

// DML (dml.cc) and queries (query.cc) on tables; the caller holds the database mutex.
bool ExecuteInsert(const ExecContext& ctx, const InsertStatement& s, ExecResult* result,
                   SqlError* error);
bool ExecuteSelect(const ExecContext& ctx, const SelectStatement& s, ExecResult* result,
                   SqlError* error);
bool ExecuteUpdate(const ExecContext& ctx, const UpdateStatement& s, ExecResult* result,
                   SqlError* error);
bool ExecuteDelete(const ExecContext& ctx, const DeleteStatement& s, ExecResult* result,
                   SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_EXEC_H
