#include "database/catalog.h"

#include <functional>

namespace ocimem {

std::size_t Catalog::Hash(std::string_view schema, std::string_view name) {
  const std::size_t h = std::hash<std::string_view>()(schema);
  return h ^ (std::hash<std::string_view>()(name) + 0x9e3779b97f4a7c15ULL + (h << 6) + (h >> 2));
}

std::uint64_t Catalog::NewGeneration() {
  static std::atomic<std::uint64_t> next{1};
  return next.fetch_add(1, std::memory_order_relaxed);
}

void Catalog::Changed() {
  last_type_ = nullptr;
  generation_.store(NewGeneration(), std::memory_order_release);
}

void Catalog::Index(Objects::iterator it) {
  Changed();
  index_.emplace(Hash(it->first.first, it->first.second), it);
}

void Catalog::Unindex(Objects::iterator it) {
  Changed();
  auto range = index_.equal_range(Hash(it->first.first, it->first.second));
  for (auto i = range.first; i != range.second; ++i) {
    if (i->second == it) {
      index_.erase(i);
      return;
    }
  }
}

const CatalogEntry* Catalog::Find(std::string_view schema, std::string_view name) const {
  auto range = index_.equal_range(Hash(schema, name));
  for (auto i = range.first; i != range.second; ++i) {
    const auto& key = i->second->first;
    if (key.first == schema && key.second == name) return &i->second->second;
  }
  return nullptr;
}

OCIType* Catalog::FindTypeIndexed(std::string_view schema, std::string_view name) const {
  auto range = index_.equal_range(Hash(schema, name));
  for (auto i = range.first; i != range.second; ++i) {
    const Objects::value_type& entry = *i->second;
    if (entry.first.first == schema && entry.first.second == name) {
      if (entry.second.kind != ObjectKind::kType) return nullptr;
      last_type_ = &entry;
      return entry.second.type.get();
    }
  }
  return nullptr;
}

std::shared_ptr<OCIType> Catalog::FindType(const std::string& schema,
                                           const std::string& name) const {
  const CatalogEntry* e = Find(schema, name);
  if (e == nullptr || e->kind != ObjectKind::kType) return nullptr;
  return e->type;
}

void Catalog::PutType(std::shared_ptr<OCIType> type) {
  auto key = std::make_pair(type->schema, type->name);
  auto it = objects_.find(key);
  if (it != objects_.end()) {
    if (it->second.type) retired_.push_back(std::move(it->second.type));
    Unindex(it);
    objects_.erase(it);
  }
  CatalogEntry entry;
  entry.type = std::move(type);
  auto added = objects_.emplace(std::move(key), std::move(entry)).first;
  try {
    Index(added);
  } catch (...) {
    objects_.erase(added);
    throw;
  }
}

std::shared_ptr<Table> Catalog::FindTable(const std::string& schema,
                                          const std::string& name) const {
  const CatalogEntry* e = Find(schema, name);
  if (e == nullptr || e->kind != ObjectKind::kTable) return nullptr;
  return e->table;
}

void Catalog::Put(std::pair<std::string, std::string> key, CatalogEntry entry) {
  Changed();  // an entry replaced in place may be the one remembered
  auto [it, inserted] = objects_.insert_or_assign(std::move(key), std::move(entry));
  if (!inserted) return;
  try {
    Index(it);
  } catch (...) {
    objects_.erase(it);
    throw;
  }
}

void Catalog::PutTable(std::shared_ptr<Table> table) {
  CatalogEntry entry;
  entry.kind = ObjectKind::kTable;
  auto key = std::make_pair(table->schema, table->name);
  entry.table = std::move(table);
  Put(std::move(key), std::move(entry));
}

void Catalog::PutView(std::shared_ptr<View> view) {
  CatalogEntry entry;
  entry.kind = ObjectKind::kView;
  auto key = std::make_pair(view->schema, view->name);
  entry.view = std::move(view);
  Put(std::move(key), std::move(entry));
}

void Catalog::PutSequence(std::shared_ptr<Sequence> sequence) {
  CatalogEntry entry;
  entry.kind = ObjectKind::kSequence;
  auto key = std::make_pair(sequence->schema, sequence->name);
  entry.sequence = std::move(sequence);
  Put(std::move(key), std::move(entry));
}

Sequence* Catalog::FindSequence(std::string_view schema, std::string_view name) const {
  const CatalogEntry* e = Find(schema, name);
  if (e == nullptr || e->kind != ObjectKind::kSequence) return nullptr;
  return e->sequence.get();
}

std::vector<View*> Catalog::Views() const {
  std::vector<View*> views;
  for (const auto& [key, entry] : objects_) {
    if (entry.kind == ObjectKind::kView) views.push_back(entry.view.get());
  }
  return views;
}

void Catalog::PutIndex(const std::string& schema, const std::string& name, Table* table) {
  CatalogEntry entry;
  entry.kind = ObjectKind::kIndex;
  entry.indexed = table;
  Put({schema, name}, std::move(entry));
}

std::vector<Table*> Catalog::Tables(std::string_view schema) const {
  std::vector<Table*> tables;
  for (const auto& [key, entry] : objects_) {
    if (entry.kind == ObjectKind::kTable && key.first == schema) tables.push_back(entry.table.get());
  }
  return tables;
}

void Catalog::Remove(const std::string& schema, const std::string& name) {
  auto it = objects_.find(CatalogKeyLess::View(schema, name));
  if (it == objects_.end()) return;
  if (it->second.type) retired_.push_back(std::move(it->second.type));
  if (it->second.table) retired_tables_.push_back(std::move(it->second.table));
  Unindex(it);
  objects_.erase(it);
}

bool Catalog::HasDependents(const OCIType& type) const {
  for (const auto& [key, entry] : objects_) {
    if (entry.kind == ObjectKind::kType && entry.type->DependsOn(type)) return true;
    if (entry.kind == ObjectKind::kTable &&
        (entry.table->row_type.get() == &type || entry.table->row_type->DependsOn(type))) {
      return true;
    }
  }
  return false;
}

}  // namespace ocimem
