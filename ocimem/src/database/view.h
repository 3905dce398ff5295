// Views: a stored query over one table or view.  A view keeps its query as written (with
// `*` spelled out) and the column names it was given at creation; what each column reads
// in the base table is worked out when the view is made and again on its first use after
// the table or view below it was dropped or replaced, as Oracle recompiles an invalid view.
// Statements on a view run as the same statements on its base table (view_rewrite.cc).
// Everything here is guarded by the database mutex.
#ifndef OCIMEM_SRC_DATABASE_VIEW_H
#define OCIMEM_SRC_DATABASE_VIEW_H

#include <memory>
#include <string>
#include <vector>

#include "sql/sql_ast.h"
#include "objects/type.h"

namespace ocimem {

struct ExecContext;
struct SqlError;
struct Table;
class Catalog;

struct ViewColumn {
  std::string name;
  ValueType type;
  bool nullable = true;
  // What the column reads in the base table: a column (unqualified), VALUE(alias) or a
  // literal.  Only a base column can be inserted or updated through the view.
  Expr source;
  bool base_column = false;
};
using ViewColumns = std::vector<ViewColumn>;

struct View {
  std::string schema;
  std::string name;
  ub4 object_id = 0;
  SelectStatement query;                  // as written, `*` spelled out
  std::vector<std::string> column_names;  // fixed at creation
  std::string from_schema;                // the table or view the query reads
  std::string from_name;
  bool valid = true;  // false once what it reads was dropped or replaced
  // As last compiled.  Describe parameters share the columns, so a recompile replaces them.
  std::shared_ptr<const ViewColumns> columns;
  TableRef base;                 // the base table, schema-qualified, with its alias
  std::vector<Condition> where;  // the conditions of the view and of views below, on `base`
};

// A table or view a statement names, opened for mapping its column names onto the base
// table.
struct Source {
  Table* table = nullptr;        // the base table
  TableRef base;                 // how rewritten statements name it
  const View* view = nullptr;    // when the name is a view
  std::vector<Condition> where;  // a view's conditions on the base table
  std::string schema;            // the object named, as resolved
  std::string name;
};

// Opens the table or view `ref` names (in `default_schema` when unqualified), recompiling an
// invalid view (ORA-04063 when that fails); ORA-00942 when there is none.
bool OpenSource(const ExecContext& ctx, const TableRef& ref, const std::string& default_schema,
                Source* out, SqlError* error);

// What a column reference of a statement reading `src` (named by `ref`) stands for.
bool MapColumn(const Source& src, const TableRef& ref, const Expr& e, ViewColumn* out,
               SqlError* error);
// A select-list or RETURNING item, and WHERE conditions, read through `src`: columns become
// what they read in the base table, and a view's own conditions are added.
bool MapItem(const Source& src, const TableRef& ref, const Expr& e, Expr* out, SqlError* error);
bool MapWhere(const Source& src, const TableRef& ref, const std::vector<Condition>& where,
              std::vector<Condition>* out, SqlError* error);

// Works out the columns of `view` from its query and the catalog as they are now, and marks
// it valid.  `column_list` is the column list of CREATE VIEW (empty: none); it is used only
// while the view has no column names yet.  On failure the view is left as it was.
bool CompileView(const ExecContext& ctx, View* view, const std::vector<std::string>& column_list,
                 SqlError* error);

// Marks invalid every view that reads (schema, name), directly or through other views.
void InvalidateDependents(Catalog* catalog, const std::string& schema, const std::string& name);

// The same statement on the base table when `s` (INSERT, UPDATE, DELETE or a query) names
// a view; `*on_view` false otherwise.
bool RewriteOnView(const ExecContext& ctx, const Statement& s, Statement* out, bool* on_view,
                   SqlError* error);

}  // namespace ocimem

#endif  // OCIMEM_SRC_DATABASE_VIEW_H
