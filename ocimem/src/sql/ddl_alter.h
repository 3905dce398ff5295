// ALTER TABLE: its constraints (ddl_alter.cc) and columns (ddl_alter_column.cc); CREATE and
// DROP INDEX and COMMENT ON (ddl_index.cc).  The caller holds the database mutex.
#ifndef OCIMEM_SRC_SQL_DDL_ALTER_H
#define OCIMEM_SRC_SQL_DDL_ALTER_H

#include <string>
#include <utility>
#include <vector>

#include "sql/sql_exec.h"

namespace ocimem {

// What a successful ALTER TABLE adds outside the table, done only once it has succeeded.
struct AlterEffects {
  std::vector<std::string> names;  // constraint names now used in the table's schema
  std::vector<std::pair<Table*, Referrer>> referrers;  // parent, its new referrer
  std::vector<std::string> dropped;  // constraint names no longer used
};

// The rows of a table that hold a committed version (DDL runs when no other transaction
// holds one, and the session's own transaction has ended).
std::vector<RowRecord*> CommittedRows(const Table& table);
// ORA-00054 when another transaction holds a row of `table`.
bool CheckNoLocks(const ExecContext& ctx, const Table& table, SqlError* error);
// A system name SYS_Cnnnnnn for a constraint.
std::string SystemConstraintName(Database* db);
// "(SCHEMA.NAME)" of a constraint of `table`.
std::string QualifiedConstraint(const Table& table, const std::string& name);

// Adds the constraints `clauses` to `table`, checked against its rows; on an error the
// table may be half changed and the caller puts it back.
bool AddConstraints(const ExecContext& ctx, const std::vector<ConstraintClause>& clauses,
                    Table* table, AlterEffects* effects, SqlError* error);
// DROP CONSTRAINT, DROP PRIMARY KEY and DROP UNIQUE; changes nothing on an error.
bool DropConstraint(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                    SqlError* error);
// ADD of columns (with their defaults; their constraints are among s.constraints).
bool AddColumns(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                SqlError* error);
// MODIFY; on an error the table may be half changed and the caller puts it back.
bool ModifyColumns(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                   AlterEffects* effects, SqlError* error);
// RENAME COLUMN and RENAME TO; change nothing on an error.
bool RenameColumn(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                  SqlError* error);
bool RenameTable(const ExecContext& ctx, const AlterTableStatement& s, Table* table,
                 SqlError* error);

// Forgets the indexes of a table being dropped.
void DropTableIndexes(Catalog* catalog, const Table& table);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_DDL_ALTER_H
