// The constraints and defaults of CREATE TABLE, and what they change for DROP TABLE and
// TRUNCATE TABLE (constraint_ddl.cc).  The caller holds the database mutex.
#ifndef OCIMEM_SRC_SQL_CONSTRAINT_DDL_H
#define OCIMEM_SRC_SQL_CONSTRAINT_DDL_H

#include "sql/sql_exec.h"

namespace ocimem {

// The type of a column written without one: the type of the column its foreign key
// refers to (ORA-00942, ORA-00904, ORA-02268, ORA-02256 as for the foreign key).
bool ReferencedType(const ExecContext& ctx, const CreateTableStatement& s,
                    const std::string& column, ValueType* out, SqlError* error);

// Gives the new table `table` (its row type laid out, not yet in the catalog) the NOT NULL,
// primary key, UNIQUE, CHECK and foreign-key constraints and the defaults of `s`, naming
// the unnamed ones; false with the error Oracle gives for a bad one.
bool ApplyConstraints(const ExecContext& ctx, const CreateTableStatement& s, Table* table,
                      SqlError* error);
// Enters the constraint names of a table now in the catalog, and its foreign keys in the
// tables they refer to.
void RegisterConstraints(Database* db, Table* table);

// ORA-02449 when another table's foreign key refers to `table` and CASCADE CONSTRAINTS
// was not given.
bool CheckDropTable(const Table& table, bool cascade_constraints, SqlError* error);
// Forgets the constraints of a table being dropped, and the foreign keys of other tables
// that refer to it.
void DropConstraints(Database* db, Table* table);
// ORA-02266 when another table's foreign key refers to `table`.
bool CheckTruncateTable(const Table& table, SqlError* error);

// The pieces of ApplyConstraints that ALTER TABLE uses too.
// Whether a column of type `t` can be part of a key; NotAKeyType gives ORA-02329 for it.
bool CanBeKey(const ValueType& t);
bool NotAKeyType(SqlError* error, const ValueType& t);
// Column positions of a constraint's columns: ORA-00904 for an unknown one, ORA-00957
// for one named twice.
bool ResolveColumns(const Table& table, const std::vector<std::string>& names,
                    std::vector<size_t>* out, SqlError* error);
bool SameColumnSet(std::vector<size_t> a, std::vector<size_t> b);
// The columns of a CHECK condition (ORA-00904, ORA-02438, ORA-02436, ORA-00920).
bool CheckCondition(const Table& table, const ConstraintClause& c, SqlError* error);
// The parent and key of a foreign key of `table` (ORA-00942, ORA-02268, ORA-02256,
// ORA-02270, ORA-02267).
bool ResolveForeignKey(const ExecContext& ctx, const ConstraintClause& c, Table* table,
                       ForeignKey* fk, SqlError* error);
// The DEFAULT of `column` for a column of type `t` (ORA-02289, ORA-02262).
bool ApplyDefault(const ExecContext& ctx, const ColumnSpec& column, const ValueType& t,
                  ColumnDefault* out, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_CONSTRAINT_DDL_H
