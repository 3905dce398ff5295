#include "catalog.h"

namespace ocimem {

const CatalogEntry* Catalog::Find(const std::string& schema, const std::string& name) const {
  auto it = objects_.find({schema, name});
  return it == objects_.end() ? nullptr : &it->second;
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
    objects_.erase(it);
  }
  CatalogEntry entry;
  entry.type = std::move(type);
  objects_.emplace(std::move(key), std::move(entry));
}

std::shared_ptr<Table> Catalog::FindTable(const std::string& schema,
                                          const std::string& name) const {
  const CatalogEntry* e = Find(schema, name);
  if (e == nullptr || e->kind != ObjectKind::kTable) return nullptr;
  return e->table;
}

void Catalog::PutTable(std::shared_ptr<Table> table) {
  CatalogEntry entry;
  entry.kind = ObjectKind::kTable;
  auto key = std::make_pair(table->schema, table->name);
  entry.table = std::move(table);
  objects_[std::move(key)] = std::move(entry);
}

void Catalog::Remove(const std::string& schema, const std::string& name) {
  auto it = objects_.find({schema, name});
  if (it == objects_.end()) return;
  if (it->second.type) retired_.push_back(std::move(it->second.type));
  if (it->second.table) retired_tables_.push_back(std::move(it->second.table));
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
