// Describing types, tables and views: OCIDescribeAny fills a describe handle with a tree of
// parameter descriptors (the type, the list of its attributes, its collection element; the
// table or view and the list of its columns), read with OCIAttrGet(..., OCI_DTYPE_PARAM, ...) and
// OCIParamGet.  The parameters belong to the describe handle and go with it or with its
// next describe.
#ifndef OCIMEM_SRC_DESCRIBE_DESCRIBE_H
#define OCIMEM_SRC_DESCRIBE_DESCRIBE_H

#include <memory>
#include <string>
#include <vector>

#include "session/handles.h"
#include "session/recycle.h"
#include "objects/ref.h"
#include "database/table.h"
#include "objects/type.h"
#include "database/view.h"

namespace ocimem {
constexpr ub4 kLiveParam = 0x5041524dU;
}  // namespace ocimem

struct OCIParam {
  OCIMEM_RECYCLED(OCIParam)
  ub4 live = ocimem::kLiveParam;
  // OCI_PTYPE_TYPE, _LIST, _TYPE_ATTR, _TYPE_COLL, _TABLE, _VIEW or _COL
  ub1 ptype = OCI_PTYPE_UNK;
  bool top = false;  // the describe handle's own parameter (OCI_ATTR_OBJ_NAME, _OBJ_SCHEMA)
  // OCI_PTYPE_TYPE: the type described.
  std::shared_ptr<OCIType> type;
  // OCI_PTYPE_TABLE: the table described.
  std::shared_ptr<ocimem::Table> table;
  // OCI_PTYPE_VIEW: the view's columns as described (a recompile makes new ones).
  std::shared_ptr<const ocimem::ViewColumns> view_columns;
  ub4 object_id = 0;  // OCI_PTYPE_TABLE and _VIEW: OCI_ATTR_OBJID
  // OCI_PTYPE_TYPE_ATTR, _TYPE_COLL and _COL: the attribute's, element's or column's value
  // type, kept alive by the type, table or view parameter above them.
  const ocimem::ValueType* value = nullptr;
  bool nullable = true;  // OCI_PTYPE_COL: OCI_ATTR_IS_NULL
  std::string name;  // std::string keeps a writable NUL after the text, as callers expect
  std::string schema;     // owner of the type, or of an attribute's named or REF type
  std::string type_name;  // an attribute's named or REF type
  ub4 num_elems = 0;      // a VARRAY element: the limit
  std::vector<std::unique_ptr<OCIParam>> items;  // OCI_PTYPE_LIST: attributes or columns
  OCIParam* list = nullptr;     // OCI_PTYPE_TYPE: its attributes; _TABLE, _VIEW: its columns
  OCIParam* methods = nullptr;  // OCI_PTYPE_TYPE: its methods (an empty list)
  OCIParam* element = nullptr;  // OCI_PTYPE_TYPE of a collection
  std::vector<std::unique_ptr<OCIParam>> owned;  // lists and element of a type, table or view
  mutable std::unique_ptr<OCIRef> ref_tdo;       // OCI_ATTR_REF_TDO, made when first asked
};

namespace ocimem {

struct DescribeHandle : Handle {
  explicit DescribeHandle(Env* owner) : Handle(OCI_HTYPE_DESCRIBE, owner) {}
  std::unique_ptr<OCIParam> top;
};

inline DescribeHandle* AsDescribe(const void* p) {
  return AsHandle<DescribeHandle>(p, OCI_HTYPE_DESCRIBE);
}
OCIParam* AsParam(const void* p);

// The parameter of an attribute, element or column of value type `v`.
std::unique_ptr<OCIParam> ValueParam(ub1 ptype, const ValueType& v, const std::string& name);
// The parameter tree of a type, and of a table or view (describe_table.cc; a view's is made
// under the database mutex).
std::unique_ptr<OCIParam> TypeParam(std::shared_ptr<OCIType> type);
std::unique_ptr<OCIParam> TableParam(std::shared_ptr<Table> table);
std::unique_ptr<OCIParam> ViewParam(const View& view);

// OCIAttrGet on a describe handle or a parameter descriptor.
sword DescribeAttrGet(const void* target, ub4 target_type, void* attributep, ub4* sizep,
                      ub4 attrtype, OCIError* err);

}  // namespace ocimem

#endif  // OCIMEM_SRC_DESCRIBE_DESCRIBE_H
