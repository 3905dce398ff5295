// The table the second pass of decoding goes through when a record holds
// large objects: the read object is inserted, adpWriteLobs fills its LOBs
// from the record, the stored object is fetched back for its JSON, and the
// transaction is rolled back, so the table stays empty between records.
#ifndef TOOLS_VARNADP_LOB_TABLE_H
#define TOOLS_VARNADP_LOB_TABLE_H

#include <string>

#include <oci.h>

#include "shape.h"

namespace varnadp {

class OciSession;

// Whether a CLOB or BLOB appears anywhere in the shape.
bool HasLobs(const Shape& shape);
// Whether a RAW or BLOB appears anywhere in the shape.
bool HasBinary(const Shape& shape);

class LobTable {
 public:
  LobTable(OciSession& session, const Shape& root) : session_(session), root_(root) {}
  ~LobTable();
  LobTable(const LobTable&) = delete;
  LobTable& operator=(const LobTable&) = delete;

  // Creates the table (an object table of the root type, its nested-table
  // attributes stored as Oracle asks). False with the session's error set.
  bool Create();
  // Inserts the object through a bound object.
  bool Insert(void* instance, OCIInd* ind);
  // The query adpWriteLobs selects the stored object with.
  const std::string& SelectForUpdate() const { return select_for_update_; }
  // Fetches the stored object; it stays valid until Discard.
  bool Fetch(void** instance, void** null_struct);
  // Frees the fetched object and rolls the transaction back.
  void Discard();

 private:
  bool IsNestedTable(const std::string& type_name, bool* nested);

  OciSession& session_;
  const Shape& root_;
  std::string select_for_update_;
  void* fetched_ = nullptr;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_LOB_TABLE_H
