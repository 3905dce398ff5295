// Describing tables (OCI_PTYPE_TABLE), views (OCI_PTYPE_VIEW) and their columns
// (OCI_PTYPE_COL).  An object table shows the attributes of its type as its columns, as
// Oracle's describe does; a view's columns answer as a table's.
#include "describe/describe_attr.h"

namespace ocimem {
namespace {

// OCI_ATTR_DATA_TYPE of a column: Oracle's internal data type code, which for datetime,
// interval and REF columns differs from the SQLT_ code a type attribute reports.
ub2 InternalType(const ValueType& v) {
  switch (v.kind) {
    case ValueKind::kDateTime:
      return v.typecode == OCI_TYPECODE_TIMESTAMP      ? ub2{180}
             : v.typecode == OCI_TYPECODE_TIMESTAMP_TZ ? ub2{181}
                                                       : ub2{231};
    case ValueKind::kInterval:
      return v.typecode == OCI_TYPECODE_INTERVAL_YM ? ub2{182} : ub2{183};
    case ValueKind::kRef:
      return 111;
    default:
      return DataType(v);
  }
}

}  // namespace

std::unique_ptr<OCIParam> TableParam(std::shared_ptr<Table> table) {
  auto top = std::make_unique<OCIParam>();
  top->ptype = OCI_PTYPE_TABLE;
  top->name = table->name;
  top->schema = table->schema;
  auto list = std::make_unique<OCIParam>();
  list->ptype = OCI_PTYPE_LIST;
  const std::vector<Attribute>& columns = table->columns();
  for (size_t i = 0; i < columns.size(); ++i) {
    auto column = ValueParam(OCI_PTYPE_COL, columns[i].type, columns[i].name);
    column->nullable = i >= table->not_null.size() || !table->not_null[i];
    list->items.push_back(std::move(column));
  }
  top->list = list.get();
  top->owned.push_back(std::move(list));
  top->object_id = table->object_id;
  top->table = std::move(table);
  return top;
}

std::unique_ptr<OCIParam> ViewParam(const View& view) {
  auto top = std::make_unique<OCIParam>();
  top->ptype = OCI_PTYPE_VIEW;
  top->name = view.name;
  top->schema = view.schema;
  top->object_id = view.object_id;
  top->view_columns = view.columns;
  auto list = std::make_unique<OCIParam>();
  list->ptype = OCI_PTYPE_LIST;
  for (const ViewColumn& c : *top->view_columns) {
    auto column = ValueParam(OCI_PTYPE_COL, c.type, c.name);
    column->nullable = c.nullable;
    list->items.push_back(std::move(column));
  }
  top->list = list.get();
  top->owned.push_back(std::move(list));
  return top;
}

sword TableAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err) {
  // ocimem's views are never object views, and have neither storage nor a type.
  const Table* t = p.ptype == OCI_PTYPE_TABLE ? p.table.get() : nullptr;
  const bool typed = t != nullptr && t->object_table;
  switch (attrtype) {
    case OCI_ATTR_OBJID:
      return PutAttr<ub4>(attributep, sizep, p.object_id);
    case OCI_ATTR_NUM_COLS:
      return PutAttr<ub2>(attributep, sizep, static_cast<ub2>(p.list->items.size()));
    case OCI_ATTR_LIST_COLUMNS:
      return PutAttr<OCIParam*>(attributep, sizep, p.list);
    case OCI_ATTR_IS_TYPED:
      return PutAttr<ub1>(attributep, sizep, typed ? ub1{1} : ub1{0});
    case OCI_ATTR_IS_TEMPORARY:
      return PutAttr<ub1>(attributep, sizep, 0);
    case OCI_ATTR_DURATION:
      // Only a temporary table has a duration.
      return PutAttr<OCIDuration>(attributep, sizep, OCI_DURATION_NULL);
    case OCI_ATTR_REF_TDO:
      // The type of an object table; a relational table or a view has none.
      if (!typed) return IllegalAttribute(err);
      return PutRefTdo(p, t->row_type, attributep, sizep, err);
    case OCI_ATTR_CLUSTERED:
    case OCI_ATTR_PARTITIONED:
    case OCI_ATTR_INDEX_ONLY:
      // Tables only, and ordinary heap tables: CREATE TABLE takes none of these options.
      if (t == nullptr) return IllegalAttribute(err);
      return PutAttr<ub1>(attributep, sizep, 0);
    default:
      return IllegalAttribute(err);
  }
}

sword ColumnAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err) {
  switch (attrtype) {
    case OCI_ATTR_DATA_TYPE:
      return PutAttr<ub2>(attributep, sizep, InternalType(*p.value));
    case OCI_ATTR_IS_NULL:
      return PutAttr<ub1>(attributep, sizep, p.nullable ? ub1{1} : ub1{0});
    case OCI_ATTR_INVISIBLE_COL:
      return PutAttr<ub1>(attributep, sizep, 0);
    case OCI_ATTR_TYPECODE:
      return IllegalAttribute(err);  // type attributes and elements only
    default:
      return ValueAttr(p, attributep, sizep, attrtype, err);
  }
}

}  // namespace ocimem
