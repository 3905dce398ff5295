// Enforcement of UNIQUE keys, CHECK conditions and foreign keys by INSERT, UPDATE and
// DELETE (constraint_enforce.cc; CHECK conditions in constraint_check.cc).  Checks are
// made on the state the whole statement leaves, before it changes anything, as Oracle
// checks them at the end of the statement.  The caller holds the database mutex.
#ifndef OCIMEM_SRC_SQL_CONSTRAINT_ENFORCE_H
#define OCIMEM_SRC_SQL_CONSTRAINT_ENFORCE_H

#include <memory>
#include <unordered_map>
#include <vector>

#include "sql/sql_rows.h"

namespace ocimem {

// The new version of each record a statement changes (nullptr: deleted).
struct StatementChanges {
  std::unordered_map<const RowRecord*, std::shared_ptr<RowData>> rows;
  // The records that ON DELETE CASCADE or SET NULL change, in the order found.
  std::vector<std::shared_ptr<RowRecord>> cascaded;
};

// INSERT of `row`: its CHECK conditions, UNIQUE keys and foreign keys.
bool CheckInsertedRow(const ExecContext& ctx, Table* table, const RowData& row,
                      SqlError* error);
// UPDATE of `found` to `rows` (one new version each): their CHECK conditions, UNIQUE keys
// and foreign keys, and ORA-02292 when a key that child rows refer to changes.
bool CheckUpdatedRows(const ExecContext& ctx, Table* table, const std::vector<Found>& found,
                      const std::vector<std::shared_ptr<RowData>>& rows, SqlError* error);
// DELETE of `found`: ORA-02292 for their child rows, or the children ON DELETE CASCADE
// deletes and ON DELETE SET NULL changes (recursively), left in `cascade`.
bool PlanDelete(const ExecContext& ctx, Table* table, const std::vector<Found>& found,
                StatementChanges* cascade, SqlError* error);
// Makes the changes of `cascade.cascaded` in the session's transaction.
void ApplyCascade(const ExecContext& ctx, const StatementChanges& cascade);

// Whether `row` satisfies a CHECK constraint: its condition is TRUE or UNKNOWN
// (constraint_check.cc).
bool CheckSatisfied(const ExecContext& ctx, const Table& table, const CheckConstraint& check,
                    const RowData& row, bool* satisfied, SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_CONSTRAINT_ENFORCE_H
