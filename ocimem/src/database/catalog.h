// The schema objects of one in-memory database, by (schema, name).  Types, tables, views and
// sequences share one namespace per schema, as in Oracle.  A TDO that is dropped or replaced stays alive
// (retired) for as long as the database, so hosts and instances holding it stay valid;
// so does a dropped table.
#ifndef OCIMEM_SRC_DATABASE_CATALOG_H
#define OCIMEM_SRC_DATABASE_CATALOG_H

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "database/sequence.h"
#include "database/table.h"
#include "objects/type.h"
#include "database/view.h"
#include "session/same_bytes.h"

namespace ocimem {

enum class ObjectKind { kType, kTable, kView, kSequence, kIndex };

struct CatalogEntry {
  ObjectKind kind = ObjectKind::kType;
  std::shared_ptr<OCIType> type;
  std::shared_ptr<Table> table;
  std::shared_ptr<View> view;
  std::shared_ptr<Sequence> sequence;
  Table* indexed = nullptr;  // kIndex: the table of the index
};

// Orders the (schema, name) keys as std::pair does, and also compares them with a pair of
// views, so that a lookup needs no string of its own.
struct CatalogKeyLess {
  using is_transparent = void;
  using Key = std::pair<std::string, std::string>;
  using View = std::pair<std::string_view, std::string_view>;
  static View AsView(const Key& k) { return View(k.first, k.second); }
  bool operator()(const Key& a, const Key& b) const { return a < b; }
  bool operator()(const Key& a, const View& b) const { return AsView(a) < b; }
  bool operator()(const View& a, const Key& b) const { return a < AsView(b); }
};

class Catalog {
 public:
  Catalog() = default;
  // index_ points into objects_: a copy would point into the original.
  Catalog(const Catalog&) = delete;
  Catalog& operator=(const Catalog&) = delete;

  const CatalogEntry* Find(std::string_view schema, std::string_view name) const;
  std::shared_ptr<OCIType> FindType(const std::string& schema, const std::string& name) const;
  // The type's descriptor without taking a reference: it lives as long as the database
  // (a dropped or replaced type is retired, not freed).  Remembers the entry it found for
  // the next call, so the caller must hold the database's mutex, as for any change.
  // In line when it is the entry found last: names are compared by length first.
  OCIType* FindTypeRaw(std::string_view schema, std::string_view name) const {
    if (last_type_ != nullptr) {
      const std::string& last_name = last_type_->first.second;
      const std::string& last_schema = last_type_->first.first;
      if (last_name.size() == name.size() && last_schema.size() == schema.size() &&
          SameBytes(last_name.data(), name.data(), name.size()) &&
          SameBytes(last_schema.data(), schema.data(), schema.size())) {
        return last_type_->second.type.get();
      }
    }
    return FindTypeIndexed(schema, name);
  }
  // A number that every change of the entries replaces by a new one, never used before by
  // any catalog: while it stays the same, a name finds what it found before. Read without
  // the database's mutex by callers that remember a lookup.
  std::uint64_t Generation() const { return generation_.load(std::memory_order_acquire); }
  // Adds or replaces the entry of the type's (schema, name).
  void PutType(std::shared_ptr<OCIType> type);
  std::shared_ptr<Table> FindTable(const std::string& schema, const std::string& name) const;
  void PutTable(std::shared_ptr<Table> table);
  // Adds or replaces the entry of the view's (schema, name).
  void PutView(std::shared_ptr<View> view);
  // Adds a sequence under a (schema, name) no object uses.
  void PutSequence(std::shared_ptr<Sequence> sequence);
  Sequence* FindSequence(std::string_view schema, std::string_view name) const;
  // Every view, for finding those that read a table or view.
  std::vector<View*> Views() const;
  // Adds an index of `table` under a (schema, name) no object uses.
  void PutIndex(const std::string& schema, const std::string& name, Table* table);
  // Every table of a schema.
  std::vector<Table*> Tables(std::string_view schema) const;
  void Remove(const std::string& schema, const std::string& name);
  // True when another type or a table uses `type`.
  bool HasDependents(const OCIType& type) const;

 private:
  using Objects = std::map<std::pair<std::string, std::string>, CatalogEntry, CatalogKeyLess>;
  static std::size_t Hash(std::string_view schema, std::string_view name);
  void Index(Objects::iterator it);
  // Adds an entry, or replaces the one of the same name (tables and views made again).
  void Put(std::pair<std::string, std::string> key, CatalogEntry entry);
  void Unindex(Objects::iterator it);
  // Forgets the entry FindTypeRaw remembers and takes a new generation.
  void Changed();
  static std::uint64_t NewGeneration();

  Objects objects_;
  // The entries of objects_ by the hash of their (schema, name), so that a lookup costs
  // one hash and, as a rule, one comparison (map nodes stay put until erased).
  std::unordered_multimap<std::size_t, Objects::iterator> index_;
  // FindTypeRaw through the index; remembers the entry.
  OCIType* FindTypeIndexed(std::string_view schema, std::string_view name) const;
  // The entry FindTypeRaw found last (hosts look one element type up for every element);
  // forgotten by every change of objects_.
  mutable const Objects::value_type* last_type_ = nullptr;
  std::atomic<std::uint64_t> generation_{NewGeneration()};
  std::vector<std::shared_ptr<OCIType>> retired_;
  // Dropped tables stay until the database goes: open transactions may still list rows.
  std::vector<std::shared_ptr<Table>> retired_tables_;
};

}  // namespace ocimem

#endif  // OCIMEM_SRC_DATABASE_CATALOG_H
