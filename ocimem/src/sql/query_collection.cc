// FROM TABLE(collection): the elements of a nested table or VARRAY as rows.  The collection
// comes from a column of the table before it in FROM (one collection for each of that
// table's rows, the row's columns joined to each element), from a bind variable, or from a
// query of one row and one column.  The rows are made into a table of their own before the
// query runs, so WHERE, grouping, DISTINCT and ORDER BY work on them as on any table.
#include "sql/query_collection.h"

#include <cstring>

#include "collections/coll.h"
#include "database/view.h"
#include "objects/value_slot.h"
#include "sql/sql_expr.h"

namespace ocimem {
namespace {

bool NotNested(SqlError* error) {
  return SetError(error, 22905, "cannot access rows from a non-nested table item");
}

// A name that no statement can write: the qualifier of the columns of a collection given no
// alias, so that `*` still tells them from the table's columns of the same name.
const char kNoAlias[] = "\x01";

// The first column an expression reads.
const Expr* FirstColumn(const Expr& e) {
  if (e.kind == Expr::Kind::kColumn) return &e;
  for (const Expr& a : e.args) {
    if (const Expr* c = FirstColumn(a)) return c;
  }
  return nullptr;
}

const OCIInd* IndNear(const OCIInd* base, size_t offset) {
  return reinterpret_cast<const OCIInd*>(reinterpret_cast<const unsigned char*>(base) + offset);
}

// Copies a value into a slot of a new row (NULL until then).
bool CopyValue(const ValueType& t, void* dst, OCIInd* dst_ind, const void* src,
               const OCIInd* src_ind, SqlError* error) {
  if (*src_ind == OCI_IND_NULL) return true;
  if (AssignSlot(nullptr, t, dst, ElementForm(t, src)) != AssignResult::kOk) {
    return SetError(error, 4030, "out of process memory");
  }
  std::memcpy(dst_ind, src_ind, t.IndSize());
  return true;
}

// One collection to read, with the parent row it belongs to (none for TABLE(:bind) and
// TABLE(query)).
struct CollectionOf {
  std::shared_ptr<RowData> parent;
  Value collection;
};

class RowMaker {
 public:
  RowMaker(const Table* parent, const ValueType& element, std::shared_ptr<OCIType> type)
      : parent_(parent), element_(element), type_(std::move(type)) {
    parent_columns_ = parent_ != nullptr ? parent_->columns().size() : 0;
  }

  // The rows of one collection; `outer`: one row of NULL element columns when it has none.
  bool Add(const CollectionOf& src, bool outer, std::vector<std::shared_ptr<RowData>>* rows,
           SqlError* error) {
    const OCIColl* coll = nullptr;
    if (src.collection.kind == Value::Kind::kCollection && src.collection.handle != nullptr &&
        (src.collection.ind == nullptr || *src.collection.ind != OCI_IND_NULL)) {
      coll = AsColl(src.collection.handle);
    }
    size_t made = 0;
    for (size_t i = 0; coll != nullptr && i < coll->size(); ++i) {
      if (!coll->Exists(i)) continue;  // a deleted element of a nested table
      std::shared_ptr<RowData> row;
      if (!Start(src, &row, error) || !Element(*coll, i, row.get(), error)) return false;
      rows->push_back(std::move(row));
      ++made;
    }
    if (made == 0 && outer) {
      std::shared_ptr<RowData> row;
      if (!Start(src, &row, error)) return false;
      rows->push_back(std::move(row));
    }
    return true;
  }

 private:
  // A new row holding the parent row's columns.
  bool Start(const CollectionOf& src, std::shared_ptr<RowData>* out, SqlError* error) {
    *out = NewRow(type_);
    if (!*out) return SetError(error, 4030, "out of process memory");
    for (size_t k = 0; k < parent_columns_; ++k) {
      const Attribute& a = parent_->columns()[k];
      const Attribute& d = type_->attributes[k];
      if (!CopyValue(a.type, SlotAt(**out, d), IndAt(**out, d.ind_offset), SlotAt(*src.parent, a),
                     IndAt(*src.parent, a.ind_offset), error)) {
        return false;
      }
    }
    return true;
  }

  bool Element(const OCIColl& coll, size_t i, RowData* row, SqlError* error) {
    const auto* value = static_cast<const unsigned char*>(coll.ValueAt(i));
    const OCIInd* ind = coll.IndAt(i);
    if (element_.kind != ValueKind::kObject) {
      const Attribute& d = type_->attributes[parent_columns_];
      return CopyValue(element_, SlotAt(*row, d), IndAt(*row, d.ind_offset), value, ind, error);
    }
    if (ind[0] == OCI_IND_NULL) {
      // A NULL object: every attribute NULL, and VALUE() of a row of its type NULL.
      if (parent_columns_ == 0 && type_ == element_.named) row->ind[0] = OCI_IND_NULL;
      return true;
    }
    const std::vector<Attribute>& attrs = element_.named->attributes;
    for (size_t k = 0; k < attrs.size(); ++k) {
      const Attribute& d = type_->attributes[parent_columns_ + k];
      if (!CopyValue(attrs[k].type, SlotAt(*row, d), IndAt(*row, d.ind_offset),
                     value + attrs[k].offset, IndNear(ind, attrs[k].ind_offset), error)) {
        return false;
      }
    }
    return true;
  }

  const Table* parent_;
  const ValueType& element_;
  std::shared_ptr<OCIType> type_;
  size_t parent_columns_ = 0;
};

// The collection of TABLE(query): the one value of its one row, or none.
bool QueryCollection(const ExecContext& ctx, const SelectStatement& q, ExecResult* sub,
                     ValueType* type, std::vector<CollectionOf>* out, SqlError* error) {
  // The query may read a view.
  Statement on_base;
  bool on_view = false;
  if (!RewriteOnView(ctx, Statement(q), &on_base, &on_view, error)) return false;
  const SelectStatement& run = on_view ? std::get<SelectStatement>(on_base) : q;
  if (!ExecuteSelect(ctx, run, sub, error)) return false;
  const Cursor& c = *sub->cursor;
  if (c.items.size() != 1) return SetError(error, 913, "too many values");
  const Projection& p = c.items[0];
  if (p.type.kind != ValueKind::kCollection) return NotNested(error);
  *type = p.type;
  if (c.rows.size() > 1) {
    return SetError(error, 1427, "single-row subquery returns more than one row");
  }
  if (c.rows.empty()) return true;
  const RowData* row = !p.per_row.empty() ? p.per_row[0].get()
                       : p.literal         ? p.literal_row.get()
                                           : c.rows[0].get();
  Attribute a;
  a.type = p.type;
  a.offset = p.offset;
  a.ind_offset = p.ind_offset;
  CollectionOf src;
  ColumnValue(a, *row, &src.collection);
  out->push_back(std::move(src));
  return true;
}

}  // namespace

bool CollectionSource(const ExecContext& ctx, const SelectStatement& s, CollectionRows* out,
                      SqlError* error) {
  const TableRef& cref = s.has_joined ? s.joined : s.table;
  Table* parent = nullptr;
  if (s.has_joined && !ResolveTable(ctx, s.table, &parent, error)) return false;
  ValueType ctype;
  std::vector<CollectionOf> sources;
  ExecResult sub;  // holds the collection TABLE(query) reads
  const Expr* e = cref.collection.get();
  const BindHandle* bind = nullptr;
  // TABLE(CAST(x AS type)): x must be a collection of that type (decision TC1).
  ValueType cast_type;
  if (e != nullptr && e->kind == Expr::Kind::kFunction && e->text == "CAST" && e->cast &&
      e->cast->base == DataTypeSpec::Base::kNamed) {
    if (!ResolveType(ctx, *e->cast, ctx.schema, "", &cast_type, error)) return false;
    if (cast_type.kind != ValueKind::kCollection) return NotNested(error);
    e = &e->args[0];
  }
  if (cref.collection_query) {
    if (!QueryCollection(ctx, *cref.collection_query, &sub, &ctype, &sources, error)) {
      return false;
    }
  } else if (e->kind == Expr::Kind::kBind) {
    bind = BindForOccurrence(*ctx.stmt, e->bind);
    if (bind == nullptr) return SetError(error, 1008, "not all variables bound");
    if (bind->dty != SQLT_NTY || bind->tdo == nullptr || !bind->tdo->IsCollection()) {
      return NotNested(error);
    }
    ctype.kind = ValueKind::kCollection;
    ctype.typecode = OCI_TYPECODE_NAMEDCOLLECTION;
    ctype.named = std::const_pointer_cast<OCIType>(bind->tdo->shared_from_this());
  } else if (parent == nullptr) {
    // Without a table before it, a column names nothing.
    if (const Expr* c = FirstColumn(*e)) return UnknownColumn(error, *c);
    return NotNested(error);
  } else {
    if (!CheckWhereExpr(*parent, s.table, *e, error)) return false;
    if (!ExprType(ctx, *parent, s.table, *e, &ctype, error)) return false;
    if (ctype.kind != ValueKind::kCollection) return NotNested(error);
  }
  if (!ctype.named) return NotNested(error);
  if (cast_type.named && cast_type.named != ctype.named) {
    return SetError(error, 932,
                    "inconsistent datatypes: expected " + TypeName(cast_type) + " got " +
                        TypeName(ctype));
  }
  if (!cref.collection_query) {
    std::vector<Found> found;
    if (parent != nullptr && !FindRows(ctx, parent, s.table, {}, &found, error)) return false;
    if (parent == nullptr) found.emplace_back();
    for (Found& f : found) {
      CollectionOf src;
      src.parent = f.row;
      if (bind != nullptr) {
        if (!ValueFromBind(*bind, ctx.iteration, &src.collection, error)) return false;
      } else {
        RowScope scope;
        scope.table = parent;
        scope.ref = &s.table;
        scope.row = f.row.get();
        if (!EvalExpr(ctx, scope, *e, &src.collection, error)) return false;
      }
      sources.push_back(std::move(src));
    }
  }
  // The columns: the parent's, then the element's attributes or COLUMN_VALUE.
  const ValueType& element = ctype.named->element;
  // Alone, a collection of objects gives rows of the element's own type, so that
  // VALUE(alias) is the element, as for an object table.
  const bool element_rows = parent == nullptr && element.kind == ValueKind::kObject;
  auto type = element_rows ? element.named : std::make_shared<OCIType>();
  const std::string parent_owner = s.table.alias.empty() ? s.table.name.name : s.table.alias;
  const std::string element_owner = cref.alias.empty() ? std::string(kNoAlias) : cref.alias;
  auto add = [&](const std::string& name, const ValueType& t, const std::string& owner,
                 bool is_alias) {
    if (!element_rows) {
      Attribute a;
      a.name = name;
      a.type = t;
      type->attributes.push_back(std::move(a));
    }
    out->ref.owners.push_back(owner);
    out->ref.owner_is_alias.push_back(is_alias);
  };
  if (parent != nullptr) {
    for (const Attribute& a : parent->columns()) {
      add(a.name, a.type, parent_owner, !s.table.alias.empty());
    }
  }
  if (element.kind == ValueKind::kObject) {
    for (const Attribute& a : element.named->attributes) {
      add(a.name, a.type, element_owner, !cref.alias.empty());
    }
  } else {
    add("COLUMN_VALUE", element, element_owner, !cref.alias.empty());
  }
  if (!element_rows) type->Layout();
  auto table = std::make_shared<Table>();
  table->object_table = element_rows;
  table->schema = ctx.schema;
  table->name = cref.alias;
  table->row_type = type;
  table->not_null.assign(type->attributes.size(), false);
  RowMaker maker(parent, element, type);
  std::vector<std::shared_ptr<RowData>> rows;
  for (const CollectionOf& src : sources) {
    // (+) joins the collection to the table before it; alone it changes nothing.
    if (!maker.Add(src, cref.outer && parent != nullptr, &rows, error)) return false;
  }
  for (std::shared_ptr<RowData>& row : rows) {
    auto record = std::make_shared<RowRecord>();
    record->table = table.get();
    record->committed = std::move(row);
    table->rows.push_back(std::move(record));
  }
  out->table = std::move(table);
  out->ref.alias = cref.alias;
  return true;
}

}  // namespace ocimem
