// Describing types: OCIDescribeAny fills a describe handle with a tree of parameter
// descriptors (the type, the list of its attributes, or its collection element), read with
// OCIAttrGet(..., OCI_DTYPE_PARAM, ...) and OCIParamGet.  The parameters belong to the
// describe handle and go with it or with its next describe.
#ifndef OCIMEM_SRC_DESCRIBE_H
#define OCIMEM_SRC_DESCRIBE_H

#include <memory>
#include <string>
#include <vector>

#include "handles.h"
#include "recycle.h"
#include "type.h"

namespace ocimem {
constexpr ub4 kLiveParam = 0x5041524dU;
}  // namespace ocimem

struct OCIParam {
  OCIMEM_RECYCLED(OCIParam)
  ub4 live = ocimem::kLiveParam;
  ub1 ptype = OCI_PTYPE_UNK;  // OCI_PTYPE_TYPE, _LIST, _TYPE_ATTR or _TYPE_COLL
  // OCI_PTYPE_TYPE: the type described.
  std::shared_ptr<OCIType> type;
  // OCI_PTYPE_TYPE_ATTR and _TYPE_COLL: the attribute's or element's value type, kept alive
  // by the type parameter above them.
  const ocimem::ValueType* value = nullptr;
  std::string name;  // std::string keeps a writable NUL after the text, as callers expect
  std::string schema;     // owner of the type, or of an attribute's named or REF type
  std::string type_name;  // an attribute's named or REF type
  ub4 num_elems = 0;      // a VARRAY element: the limit
  std::vector<std::unique_ptr<OCIParam>> items;  // OCI_PTYPE_LIST: one per attribute
  OCIParam* list = nullptr;                      // OCI_PTYPE_TYPE: its attributes
  OCIParam* element = nullptr;                   // OCI_PTYPE_TYPE of a collection
  std::vector<std::unique_ptr<OCIParam>> owned;  // list and element of a type parameter
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

// OCIAttrGet on a describe handle or a parameter descriptor.
sword DescribeAttrGet(const void* target, ub4 target_type, void* attributep, ub4* sizep,
                      ub4 attrtype, OCIError* err);

}  // namespace ocimem

#endif  // OCIMEM_SRC_DESCRIBE_H
