// The schema objects of one in-memory database, by (schema, name).  Types and tables share
// one namespace per schema, as in Oracle.  A TDO that is dropped or replaced stays alive
// (retired) for as long as the database, so hosts and instances holding it stay valid;
// so does a dropped table.
#ifndef OCIMEM_SRC_CATALOG_H
#define OCIMEM_SRC_CATALOG_H

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "table.h"
#include "type.h"

namespace ocimem {

enum class ObjectKind { kType, kTable };

struct CatalogEntry {
  ObjectKind kind = ObjectKind::kType;
  std::shared_ptr<OCIType> type;
  std::shared_ptr<Table> table;
};

class Catalog {
 public:
  const CatalogEntry* Find(const std::string& schema, const std::string& name) const;
  std::shared_ptr<OCIType> FindType(const std::string& schema, const std::string& name) const;
  // Adds or replaces the entry of the type's (schema, name).
  void PutType(std::shared_ptr<OCIType> type);
  std::shared_ptr<Table> FindTable(const std::string& schema, const std::string& name) const;
  void PutTable(std::shared_ptr<Table> table);
  void Remove(const std::string& schema, const std::string& name);
  // True when another type or a table uses `type`.
  bool HasDependents(const OCIType& type) const;

 private:
  std::map<std::pair<std::string, std::string>, CatalogEntry> objects_;
  std::vector<std::shared_ptr<OCIType>> retired_;
  // Dropped tables stay until the database goes: open transactions may still list rows.
  std::vector<std::shared_ptr<Table>> retired_tables_;
};

}  // namespace ocimem

#endif  // OCIMEM_SRC_CATALOG_H
