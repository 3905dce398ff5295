// Row access shared by DML and queries: tables and columns by name, values of expressions,
// the rows a WHERE clause selects, and row locks of the session's transaction.  Callers
// hold the database mutex.
#ifndef OCIMEM_SRC_SQL_SQL_ROWS_H
#define OCIMEM_SRC_SQL_SQL_ROWS_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "statements/convert.h"
#include "sql/sql_exec.h"

namespace ocimem {

inline unsigned char* SlotAt(const RowData& row, const Attribute& a) {
  return static_cast<unsigned char*>(row.value) + a.offset;
}
inline OCIInd* IndAt(const RowData& row, size_t ind_offset) {
  return reinterpret_cast<OCIInd*>(reinterpret_cast<unsigned char*>(row.ind) + ind_offset);
}

// The object type of a table's rows as a slot type.
ValueType RowValueType(const Table& table);

// ORA-00054.
bool Busy(SqlError* error);

// The session's open transaction (0: none), and one opened when there is none.
std::uint64_t CurrentTxn(const ExecContext& ctx);
std::uint64_t EnsureTxn(const ExecContext& ctx);
// Locks a row for the session's transaction (the caller checked that nobody else holds it).
void LockRecord(const ExecContext& ctx, const std::shared_ptr<RowRecord>& record);

bool ResolveTable(const ExecContext& ctx, const TableRef& ref, Table** out, SqlError* error);
// Column position of a column reference, checking its qualifier (the alias, or the table
// name when the statement gave no alias).
bool ResolveColumn(const Table& table, const TableRef& ref, const Expr& e, size_t* out,
                   SqlError* error);
// ORA-00904 "Q"."NAME"[."ATTR"...]: invalid identifier for a column reference.
bool UnknownColumn(SqlError* error, const Expr& e);

// Where an attribute path (alias.column.attr..., VALUE(alias).attr...) lies in a row: the
// column it starts from, the attribute with its offsets in the row, and the null
// information of each object along the way (a NULL one makes the attribute NULL).  The
// qualifier must be a table alias, as Oracle requires (ORA-00904 otherwise, with the
// whole path shown, as for an unknown attribute).  sql_attr_path.cc.
struct ColumnPlace {
  size_t column = 0;
  Attribute attr;
  std::vector<size_t> objects;  // ind offsets of the objects the path goes through
};
bool ResolvePlace(const Table& table, const TableRef& ref, const Expr& e, ColumnPlace* out,
                  SqlError* error);
void PlaceValue(const ColumnPlace& place, const RowData& row, Value* out);
// The value an attribute path reads in `row`.
bool PathValue(const Table& table, const TableRef& ref, const Expr& e, const RowData& row,
               Value* out, SqlError* error);

// The value of a literal or bind variable.
bool Evaluate(const ExecContext& ctx, const Expr& e, Value* out, SqlError* error);

// NEXTVAL and CURRVAL (sequence_ref.cc).  A statement clears ctx.row_nextvals before each
// row it makes, then advances the sequences of the row's values before evaluating any.
bool HasSequence(const Expr& e);
// ORA-02289 when a sequence `e` names does not exist.
bool SequencesExist(const ExecContext& ctx, const Expr& e, SqlError* error);
bool AdvanceSequences(const ExecContext& ctx, const Expr& e, SqlError* error);
bool SequenceValue(const ExecContext& ctx, const Expr& e, Value* out, SqlError* error);

// The bind of occurrence `occurrence` (0-based) of the statement's bind variables.
BindHandle* BindForOccurrence(const StmtHandle& stmt, size_t occurrence);

// A select-list or RETURNING item: a column, VALUE(alias) or a literal.
bool ProjectItem(const ExecContext& ctx, const Table& table, const TableRef& ref, const Expr& e,
                 Projection* out, SqlError* error);
// The RETURNING items of a DML statement (none when it has no RETURNING clause); then,
// before the statement changes anything, the values of its computed items (operators and
// functions) for the rows it will return.
bool ProjectReturning(const ExecContext& ctx, const Table& table, const TableRef& ref,
                      const std::vector<ReturningClause>& returning, ExecResult* result,
                      SqlError* error);
bool FillReturning(const ExecContext& ctx, const Table& table, const TableRef& ref,
                   const std::vector<ReturningClause>& returning,
                   const std::vector<const RowData*>& rows, ExecResult* result,
                   SqlError* error);

struct Found {
  std::shared_ptr<RowRecord> record;
  std::shared_ptr<RowData> row;  // the version the session sees
  ub4 rownum = 0;                // ROWNUM the row took
};

// Rows the session sees for which the AND of `where` is TRUE, in the table's order, each
// with the ROWNUM it took (a row that fails the conditions takes none).  The key index
// picks the candidates when equalities with constants fix the whole primary key.
bool FindRows(const ExecContext& ctx, Table* table, const TableRef& ref,
              const std::vector<Condition>& where, std::vector<Found>* out, SqlError* error);
// Checks the column references of `e` (ORA-00904) and that it holds no aggregate
// (ORA-00934).
bool CheckWhereExpr(const Table& table, const TableRef& ref, const Expr& e, SqlError* error);
// ORA-00932 when a comparison in `e` has a LOB, object or collection operand.
bool CheckComparable(const ExecContext& ctx, const Table& table, const TableRef& ref,
                     const Expr& e, SqlError* error);
// ORA-00054 when another transaction holds one of the rows.
bool CheckLocks(const ExecContext& ctx, const std::vector<Found>& rows, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_ROWS_H
