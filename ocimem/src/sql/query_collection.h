// FROM TABLE(collection): the rows of a collection as a table of their own, alone or
// joined with the rows of the table before it (query_collection.cc).
#ifndef OCIMEM_SRC_SQL_QUERY_COLLECTION_H
#define OCIMEM_SRC_SQL_QUERY_COLLECTION_H

#include <memory>

#include "sql/sql_rows.h"

namespace ocimem {

// The rows a query of TABLE(...) reads, made before the query runs: a table of the
// collection's columns (the attributes of an object element, or COLUMN_VALUE) after the
// parent table's, and the reference that qualifies each column by its side.
struct CollectionRows {
  std::shared_ptr<Table> table;
  TableRef ref;
};

inline bool ReadsCollection(const SelectStatement& s) {
  return s.has_joined || s.table.collection || s.table.collection_query;
}

bool CollectionSource(const ExecContext& ctx, const SelectStatement& s, CollectionRows* out,
                      SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_QUERY_COLLECTION_H
