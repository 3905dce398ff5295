// In-memory databases, named by the connect string.  Sessions of one process that name the
// same database share it; it lives while at least one server handle is attached to it.
#ifndef OCIMEM_SRC_DATABASE_DATABASE_H
#define OCIMEM_SRC_DATABASE_DATABASE_H

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <utility>

#include "database/catalog.h"
#include "session/handles.h"

namespace ocimem {

struct Database {
  explicit Database(std::string db_name) : name(std::move(db_name)) {}
  const std::string name;
  // Guards everything below; sessions of several threads may share the database.
  std::mutex mutex;
  std::map<std::string, std::string> passwords;  // user -> password of its first logon
  Catalog catalog;
  std::uint64_t next_txn = 1;
  std::uint64_t next_constraint = 7131;  // numbers of system-named constraints
  // (schema, name) of every constraint: the names are unique in a schema.
  std::set<std::pair<std::string, std::string>> constraint_names;
  ub4 next_object_id = 1;                // OCI_ATTR_OBJID of tables and views, in creation order
  std::uint64_t next_sequence = 1;       // Sequence::id, in creation order
};

// Ends the session's open transaction (rolls it back); locks the database itself.
void EndSessionTransaction(Session* session, bool commit);

// The database named `name`, made empty when no attached server holds it.
std::shared_ptr<Database> OpenDatabase(const std::string& name);

}  // namespace ocimem

#endif  // OCIMEM_SRC_DATABASE_DATABASE_H
