#include "database/table.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <set>

#include "collections/coll.h"
#include "objects/value_slot.h"
#include "objects/walk.h"

namespace ocimem {
namespace {

ValueType RowValueType(const std::shared_ptr<OCIType>& type) {
  ValueType t;
  t.kind = ValueKind::kObject;
  t.typecode = OCI_TYPECODE_OBJECT;
  t.named = type;
  return t;
}

std::shared_ptr<RowData> AllocRow(const std::shared_ptr<OCIType>& type, bool not_null) {
  // Owned here until the row owns them: making the row may throw for want of memory.
  std::unique_ptr<void, void (*)(void*)> value(std::calloc(1, type->size == 0 ? 1 : type->size),
                                               std::free);
  std::unique_ptr<void, void (*)(void*)> ind(std::calloc(1, type->ind_size), std::free);
  if (value == nullptr || ind == nullptr) return nullptr;
  auto row = std::make_shared<RowData>(type, value.get(), static_cast<OCIInd*>(ind.get()));
  value.release();
  ind.release();
  InitSlot(nullptr, RowValueType(type), row->value, row->ind, not_null);
  row->ind[0] = OCI_IND_NOTNULL;  // a row exists; only its columns can be NULL
  return row;
}

void AppendNumberKey(const void* slot, std::string* out) {
  const auto* n = static_cast<const OCINumber*>(slot);
  size_t len = n->OCINumberPart[0];
  if (len > OCI_NUMBER_SIZE - 1) len = OCI_NUMBER_SIZE - 1;
  out->append(reinterpret_cast<const char*>(n->OCINumberPart), len + 1);
}

}  // namespace

RowData::~RowData() {
  if (value != nullptr) FreeSlot(RowValueType(type), value);
  std::free(value);
  std::free(ind);
}

std::shared_ptr<RowData> NewRow(const std::shared_ptr<OCIType>& type) {
  return AllocRow(type, false);
}

std::shared_ptr<RowData> CopyRow(const RowData& src) {
  std::shared_ptr<RowData> row = AllocRow(src.type, true);
  if (!row) return nullptr;
  if (AssignSlot(nullptr, RowValueType(src.type), row->value, src.value) != AssignResult::kOk) {
    return nullptr;
  }
  std::memcpy(row->ind, src.ind, src.type->ind_size);
  return row;
}

std::string KeyText(const ValueType& t, const void* slot) {
  std::string out;
  switch (t.kind) {
    case ValueKind::kNumber:
      AppendNumberKey(slot, &out);
      break;
    case ValueKind::kDate: {
      const auto* d = static_cast<const OCIDate*>(slot);
      char buf[32];
      int n = std::snprintf(buf, sizeof buf, "%d-%u-%u %u:%u:%u", d->OCIDateYYYY, d->OCIDateMM,
                            d->OCIDateDD, d->OCIDateTime.OCITimeHH, d->OCIDateTime.OCITimeMI,
                            d->OCIDateTime.OCITimeSS);
      out.assign(buf, static_cast<size_t>(n));
      break;
    }
    case ValueKind::kString:
    case ValueKind::kRaw: {
      const void* v = *static_cast<void* const*>(slot);
      if (v != nullptr) {
        ub4 len = 0;
        std::memcpy(&len, v, sizeof len);
        out.assign(static_cast<const char*>(v) + sizeof len, len);
      }
      break;
    }
    default:
      break;
  }
  return out;
}

int Table::FindColumn(const std::string& column) const {
  const auto& cols = columns();
  for (size_t i = 0; i < cols.size(); ++i) {
    if (cols[i].name == column) return static_cast<int>(i);
  }
  return -1;
}

std::string Table::KeyOf(const RowData& row) const {
  std::string key;
  for (size_t c : primary_key) {
    const Attribute& a = columns()[c];
    std::string part = KeyText(a.type, static_cast<const unsigned char*>(row.value) + a.offset);
    key += std::to_string(part.size());
    key += ':';
    key += part;
  }
  return key;
}

void Table::IndexRecord(RowRecord* record) {
  for (UniqueKey& k : unique_keys) k.index.Add(*this, record);
  for (ForeignKey& f : foreign_keys) f.index.Add(*this, record);
  if (primary_key.empty()) return;
  if (record->committed) key_index.emplace(record->committed_key, record);
  if (record->has_pending && record->pending &&
      (!record->committed || record->pending_key != record->committed_key)) {
    key_index.emplace(record->pending_key, record);
  }
}

void Table::UnindexRecord(RowRecord* record) {
  for (UniqueKey& k : unique_keys) k.index.Remove(*this, record);
  for (ForeignKey& f : foreign_keys) f.index.Remove(*this, record);
  if (primary_key.empty()) return;
  for (const std::string* key : {&record->committed_key, &record->pending_key}) {
    auto range = key_index.equal_range(*key);
    for (auto it = range.first; it != range.second;) {
      it = it->second == record ? key_index.erase(it) : std::next(it);
    }
  }
}

// Dead records are skipped by every reader, so they are swept out only once they are half
// of the table: a commit after each single-row DELETE would otherwise cost a pass over the
// whole table every time.
void Table::Compact() {
  if (dead_rows == 0 || dead_rows * 2 < rows.size()) return;
  rows.erase(std::remove_if(rows.begin(), rows.end(),
                            [](const std::shared_ptr<RowRecord>& r) { return r->dead; }),
             rows.end());
  dead_rows = 0;
}

const std::shared_ptr<RowData>& VisibleVersion(const RowRecord& record, std::uint64_t txn) {
  if (txn != 0 && record.lock_txn == txn && record.has_pending) return record.pending;
  return record.committed;
}

namespace {

void EndTransaction(Transaction* txn, bool commit) {
  std::set<Table*> touched;
  for (const std::shared_ptr<RowRecord>& record : txn->rows) {
    if (record->lock_txn != txn->id) continue;  // already ended (listed twice)
    Table* table = record->table;
    table->UnindexRecord(record.get());
    if (record->has_pending) {
      if (commit) {
        record->committed = std::move(record->pending);
        record->committed_key = std::move(record->pending_key);
      }
      record->pending.reset();
      record->pending_key.clear();
      record->has_pending = false;
    }
    record->lock_txn = 0;
    if (!record->committed && !record->dead) {
      record->dead = true;
      ++table->dead_rows;
    }
    if (!record->dead) table->IndexRecord(record.get());
    touched.insert(table);
  }
  for (const std::shared_ptr<LobCell>& cell : txn->cells) {
    if (!cell->has_pending || cell->pending_txn != txn->id) continue;
    if (commit) cell->data = std::move(cell->pending);
    cell->pending.clear();
    cell->has_pending = false;
    cell->pending_txn = 0;
  }
  // The openness of LOBs opened in the transaction ends with it.
  for (const std::shared_ptr<LobCell>& cell : txn->opened) {
    auto& o = cell->openings;
    for (size_t i = o.size(); i-- > 0;) {
      if (o[i].txn == txn->id) o.erase(o.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  for (Table* table : touched) table->Compact();
  txn->rows.clear();
  txn->cells.clear();
  txn->opened.clear();
  txn->id = 0;
}

}  // namespace

namespace {

// A collection whose elements are still to walk, and whether it is null itself or
// through a null object or collection around it.
struct PendingCollection {
  OCIColl* coll;
  bool null_around;
};

// Calls `f` for the LOB at `slot` or for each LOB of the object there; collections are
// queued in `colls`.
void WalkLobs(const ValueType& t, void* slot, OCIInd* ind, bool null_around,
              std::vector<PendingCollection>* colls,
              const std::function<void(OCILobLocator*, bool)>& f) {
  auto leaf = [&](const ValueType& v, void* s, const OCIInd* i, bool around) {
    const bool null_here = around || (i != nullptr && *i == OCI_IND_NULL);
    if (v.kind == ValueKind::kLob) {
      f(*static_cast<OCILobLocator**>(s), null_here);
    } else if (v.kind == ValueKind::kCollection && *static_cast<OCIColl**>(s) != nullptr) {
      colls->push_back(PendingCollection{*static_cast<OCIColl**>(s), null_here});
    }
    return true;
  };
  if (t.kind != ValueKind::kObject) {
    leaf(t, slot, ind, null_around);
    return;
  }
  if (!t.named->has_lob && !t.named->has_file) return;
  WalkPlace at;
  at.slot = static_cast<unsigned char*>(slot);
  at.ind = ind;
  at.null_around = null_around || (ind != nullptr && ind[0] == OCI_IND_NULL);
  WalkObject(
      *t.named, at,
      [](const Attribute&, WalkPlace& p) {
        if (p.ind != nullptr && p.ind[0] == OCI_IND_NULL) p.null_around = true;
        return WalkStep::kInto;
      },
      [&](const Attribute& a, const WalkPlace& p) {
        return leaf(a.type, p.slot, p.ind, p.null_around);
      });
}

}  // namespace

void ForEachLob(const ValueType& t, void* slot, OCIInd* ind,
                const std::function<void(OCILobLocator*, bool)>& f) {
  std::vector<PendingCollection> colls;
  WalkLobs(t, slot, ind, false, &colls, f);
  while (!colls.empty()) {
    const PendingCollection next = colls.back();
    colls.pop_back();
    const ValueType& element = next.coll->element_type();
    for (size_t i = 0; i < next.coll->size(); ++i) {
      WalkLobs(element, next.coll->ValueAt(i), next.coll->IndAt(i), next.null_around, &colls, f);
    }
  }
}

void CommitTransaction(Transaction* txn) { EndTransaction(txn, true); }
void RollbackTransaction(Transaction* txn) { EndTransaction(txn, false); }

}  // namespace ocimem
