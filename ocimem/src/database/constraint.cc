#include "database/constraint.h"

#include "database/table.h"

namespace ocimem {

bool RowKey(const Table& table, const std::vector<size_t>& columns, const RowData& row,
            std::string* key, bool* any_null) {
  key->clear();
  *any_null = false;
  bool all_null = true;
  for (size_t c : columns) {
    const Attribute& a = table.columns()[c];
    const auto* ind =
        reinterpret_cast<const OCIInd*>(reinterpret_cast<const unsigned char*>(row.ind) +
                                        a.ind_offset);
    if (*ind == OCI_IND_NULL) {
      *any_null = true;
      key->push_back('N');
      continue;
    }
    all_null = false;
    std::string part = KeyText(a.type, static_cast<const unsigned char*>(row.value) + a.offset);
    *key += std::to_string(part.size());
    *key += ':';
    *key += part;
  }
  return !all_null;
}

namespace {

template <typename F>
void ForEachVersionKey(const Table& table, const std::vector<size_t>& columns,
                       const RowRecord& record, F f) {
  std::string key;
  bool any_null = false;
  if (record.committed && RowKey(table, columns, *record.committed, &key, &any_null)) f(key);
  if (record.has_pending && record.pending &&
      RowKey(table, columns, *record.pending, &key, &any_null)) {
    f(key);
  }
}

}  // namespace

void KeyIndex::Add(const Table& table, RowRecord* record) {
  ForEachVersionKey(table, columns, *record,
                    [&](const std::string& key) { rows[key].insert(record); });
}

void KeyIndex::Remove(const Table& table, RowRecord* record) {
  ForEachVersionKey(table, columns, *record, [&](const std::string& key) {
    auto it = rows.find(key);
    if (it == rows.end()) return;
    it->second.erase(record);
    if (it->second.empty()) rows.erase(it);
  });
}

const std::unordered_set<RowRecord*>* KeyIndex::Find(const std::string& key) const {
  auto it = rows.find(key);
  return it == rows.end() ? nullptr : &it->second;
}

}  // namespace ocimem
