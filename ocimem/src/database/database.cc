#include "database/database.h"

#include <cctype>

#include "objects/value_slot.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

// DUAL: one column DUMMY VARCHAR2(1) and one committed row holding 'X'.
void AddDual(Database* db) {
  auto type = std::make_shared<OCIType>();
  type->schema = "SYS";
  type->name = "DUAL";
  Attribute dummy;
  dummy.name = "DUMMY";
  dummy.type.kind = ValueKind::kString;
  dummy.type.typecode = OCI_TYPECODE_VARCHAR2;
  dummy.type.length = 1;
  dummy.type.charset_form = SQLCS_IMPLICIT;
  type->attributes.push_back(dummy);
  type->Layout();
  auto table = std::make_shared<Table>();
  table->schema = "SYS";
  table->name = "DUAL";
  table->dual = true;
  table->object_id = db->next_object_id++;
  table->row_type = type;
  table->not_null.push_back(false);
  auto record = std::make_shared<RowRecord>();
  record->table = table.get();
  record->committed = NewRow(type);
  if (record->committed) {
    const Attribute& a = type->attributes[0];
    auto* slot = static_cast<unsigned char*>(record->committed->value) + a.offset;
    AssignVarBlock(nullptr, "X", 1, reinterpret_cast<void**>(slot));
    record->committed->ind[a.ind_offset / sizeof(OCIInd)] = OCI_IND_NOTNULL;
    table->rows.push_back(std::move(record));
  }
  db->catalog.PutTable(std::move(table));
}

}  // namespace

std::shared_ptr<Database> OpenDatabase(const std::string& name) {
  static std::mutex registry_mutex;
  static std::map<std::string, std::weak_ptr<Database>> registry;
  // Connect identifiers are not case-sensitive.
  std::string key;
  for (char c : name) key.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  std::lock_guard<std::mutex> lock(registry_mutex);
  for (auto it = registry.begin(); it != registry.end();) {
    it = it->second.expired() ? registry.erase(it) : std::next(it);
  }
  std::weak_ptr<Database>& slot = registry[key];
  std::shared_ptr<Database> db = slot.lock();
  if (!db) {
    db = std::make_shared<Database>(key);
    AddDual(db.get());
    slot = db;
  }
  return db;
}

Session::Session(Env* owner) : Handle(OCI_HTYPE_SESSION, owner), txn(new Transaction) {}

// A session handle freed (or its environment) without ending the session loses its
// uncommitted work, as when a client goes away.
Session::~Session() { EndSessionTransaction(this, false); }

void EndSessionTransaction(Session* session, bool commit) {
  if (!session->db || !session->txn || session->txn->id == 0) return;
  std::lock_guard<std::mutex> lock(session->db->mutex);
  if (commit) {
    CommitTransaction(session->txn.get());
  } else {
    RollbackTransaction(session->txn.get());
  }
}

}  // namespace ocimem
