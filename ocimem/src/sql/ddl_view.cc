// CREATE VIEW and DROP VIEW.
#include <mutex>

#include "sql/sql_exec.h"
#include "database/view.h"

namespace ocimem {
namespace {

std::string SchemaOf(const std::string& own, const QualifiedName& name) {
  return name.schema.empty() ? own : name.schema;
}

// True when the view (schema, name) would read itself: the object its query reads is that
// view, or a view that reads it, and so on down.
bool ReadsItself(const Catalog& catalog, const std::string& schema, const std::string& name,
                 const TableRef& from) {
  std::string s = SchemaOf(schema, from.name);
  std::string n = from.name.name;
  const size_t views = catalog.Views().size();
  for (size_t depth = 0; depth <= views; ++depth) {
    if (s == schema && n == name) return true;
    const CatalogEntry* entry = catalog.Find(s, n);
    if (entry == nullptr || entry->kind != ObjectKind::kView) return false;
    s = entry->view->from_schema;
    n = entry->view->from_name;
  }
  return true;
}

}  // namespace

bool CreateView(const ExecContext& ctx, const CreateViewStatement& s, SqlError* error) {
  const std::string schema = SchemaOf(ctx.schema, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  const CatalogEntry* existing = catalog.Find(schema, s.name.name);
  // OR REPLACE replaces a view, never another kind of object.
  if (existing != nullptr && (!s.or_replace || existing->kind != ObjectKind::kView)) {
    return SetError(error, 955, "name is already used by an existing object");
  }
  if (ReadsItself(catalog, schema, s.name.name, s.query.table)) {
    return SetError(error, 1731, "circular view definition encountered");
  }
  auto view = std::make_shared<View>();
  view->schema = schema;
  view->name = s.name.name;
  view->query = s.query;
  if (!CompileView(ctx, view.get(), s.columns, error)) return false;
  // decision VW1: a replaced view keeps its object number.
  view->object_id = existing != nullptr ? existing->view->object_id : ctx.db->next_object_id++;
  catalog.PutView(view);
  if (existing != nullptr) InvalidateDependents(&catalog, schema, view->name);
  return true;
}

bool DropView(const ExecContext& ctx, const DropViewStatement& s, SqlError* error) {
  const std::string schema = SchemaOf(ctx.schema, s.name);
  std::lock_guard<std::mutex> lock(ctx.db->mutex);
  Catalog& catalog = ctx.db->catalog;
  const CatalogEntry* entry = catalog.Find(schema, s.name.name);
  if (entry == nullptr || entry->kind != ObjectKind::kView) {
    return SetError(error, 942, "table or view does not exist");
  }
  catalog.Remove(schema, s.name.name);
  InvalidateDependents(&catalog, schema, s.name.name);
  return true;
}

}  // namespace ocimem
