// Runs a parsed statement against a database on behalf of a session.
#ifndef OCIMEM_SRC_SQL_EXEC_H
#define OCIMEM_SRC_SQL_EXEC_H

#include <string>

#include "database.h"
#include "sql_ast.h"
#include "sql_lexer.h"

namespace ocimem {

struct ExecContext {
  Database* db;
  std::string schema;  // the session's default schema
};

// Executes `statement`; false with `error` set when Oracle would raise an error.
bool ExecuteStatement(const ExecContext& ctx, const Statement& statement, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_EXEC_H
