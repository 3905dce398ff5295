// Tables and their rows.  A row is an instance of the table's row type: the object type of
// an object table, or a type made of the columns of a relational one, so that rows reuse
// the instance layout and its deep copies.  Every row keeps its committed version and the
// version written by the one transaction that holds its lock; sessions see committed
// versions, and their own transaction's.  All of it is guarded by the database mutex.
#ifndef OCIMEM_SRC_DATABASE_TABLE_H
#define OCIMEM_SRC_DATABASE_TABLE_H

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "database/constraint.h"
#include "lob/lob.h"
#include "objects/type.h"

namespace ocimem {

struct Table;

// One version of a row.  Versions are never changed once built: a change makes a new one,
// so an open query keeps the rows it found.
struct RowData {
  RowData(std::shared_ptr<OCIType> row_type, void* row_value, OCIInd* row_ind)
      : type(std::move(row_type)), value(row_value), ind(row_ind) {}
  ~RowData();
  RowData(const RowData&) = delete;
  RowData& operator=(const RowData&) = delete;

  std::shared_ptr<OCIType> type;
  void* value;
  OCIInd* ind;
};

// A fresh row whose columns are NULL (locators of LOB columns included).
std::shared_ptr<RowData> NewRow(const std::shared_ptr<OCIType>& type);
// A deep copy sharing the LOB cells of `src`.
std::shared_ptr<RowData> CopyRow(const RowData& src);

struct RowRecord : std::enable_shared_from_this<RowRecord> {
  Table* table = nullptr;
  std::shared_ptr<RowData> committed;  // nullptr: inserted and not yet committed
  std::shared_ptr<RowData> pending;    // meaningful when has_pending; nullptr = deleted
  bool has_pending = false;
  std::uint64_t lock_txn = 0;  // transaction holding the row lock, 0 = none
  bool dead = false;           // gone for everybody; removed from the table soon
  std::string committed_key;   // primary-key values of each version
  std::string pending_key;
};

struct Table {
  std::string schema;
  std::string name;
  bool object_table = false;
  bool dual = false;
  ub4 object_id = 0;  // OCI_ATTR_OBJID
  std::shared_ptr<OCIType> row_type;
  std::vector<bool> not_null;               // per column (attribute of the row type)
  std::vector<size_t> primary_key;          // column positions, empty = none
  std::string primary_key_name;             // constraint name shown by ORA-00001
  std::vector<UniqueKey> unique_keys;
  std::vector<ForeignKey> foreign_keys;
  std::vector<CheckConstraint> checks;
  std::vector<Referrer> referrers;          // foreign keys that refer to this table
  std::vector<ColumnDefault> defaults;      // per column
  std::vector<std::string> constraint_names;  // every constraint of the table, NOT NULL too
  std::vector<std::string> nested_storage;  // STORE AS names, kept for the catalog
  std::vector<std::shared_ptr<RowRecord>> rows;
  std::unordered_multimap<std::string, RowRecord*> key_index;
  size_t dead_rows = 0;
  // Names of the NOT NULL constraints, per column ("": none; the column may still be NOT
  // NULL through the primary key).
  std::vector<std::string> not_null_names;
  std::vector<TableIndex> indexes;  // CREATE INDEX on the table
  std::map<std::string, std::string> comments;  // COMMENT ON: "" for the table, or a column

  const std::vector<Attribute>& columns() const { return row_type->attributes; }
  // Column position by stored name, or -1.
  int FindColumn(const std::string& name) const;
  // The primary-key value of a row version as index text ("" when there is no key); the
  // same text as RowKey gives for those columns.
  std::string KeyOf(const RowData& row) const;
  // Adds a record's versions to the key indexes (primary, unique and foreign), or takes
  // them out; a record is taken out before its versions change and added after.
  void IndexRecord(RowRecord* record);
  void UnindexRecord(RowRecord* record);
  // Drops dead records.
  void Compact();
};

// The index text of one value held in a slot (numbers, strings, dates, raws; others "").
std::string KeyText(const ValueType& t, const void* slot);

// The open transaction of a session.
struct Transaction {
  std::uint64_t id = 0;
  std::vector<std::shared_ptr<RowRecord>> rows;  // locked or changed rows
  std::vector<std::shared_ptr<LobCell>> cells;   // LOBs written
  std::vector<std::shared_ptr<LobCell>> opened;  // LOBs opened (OCILobOpen) in it
  // Names the session in the LobOpenings it makes; lives as long as the session.
  std::shared_ptr<const int> token = std::make_shared<const int>(0);
};

// Version of `record` that transaction `txn` sees (nullptr: none).
const std::shared_ptr<RowData>& VisibleVersion(const RowRecord& record, std::uint64_t txn);

// Ends a transaction; the caller holds the database mutex.
void CommitTransaction(Transaction* txn);
void RollbackTransaction(Transaction* txn);

// Walks every LOB locator of a value (embedded objects and collection elements included),
// telling whether it is NULL (itself or through a NULL object or collection around it).
void ForEachLob(const ValueType& t, void* slot, OCIInd* ind,
                const std::function<void(OCILobLocator*, bool)>& f);

}  // namespace ocimem

#endif  // OCIMEM_SRC_DATABASE_TABLE_H
