// The attributes of a described type (OCI_PTYPE_TYPE).
#include "describe/describe_attr.h"

namespace ocimem {
namespace {

// The user-assigned version Oracle keeps for every type made by CREATE TYPE.
const std::string kTypeVersion = "$8.0";

ub1 Flag(bool b) { return b ? ub1{1} : ub1{0}; }

}  // namespace

sword TypeAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err) {
  const OCIType& t = *p.type;
  switch (attrtype) {
    case OCI_ATTR_NAME:
      return PutTextAttr(attributep, sizep, p.name);
    case OCI_ATTR_SCHEMA_NAME:
      return PutTextAttr(attributep, sizep, p.schema);
    case OCI_ATTR_TYPECODE:
      return PutAttr<OCITypeCode>(attributep, sizep, t.typecode);
    case OCI_ATTR_COLLECTION_TYPECODE:
      if (!t.IsCollection()) return IllegalAttribute(err);
      return PutAttr<OCITypeCode>(attributep, sizep, t.collection_typecode);
    case OCI_ATTR_COLLECTION_ELEMENT:
      if (!t.IsCollection()) return IllegalAttribute(err);
      return PutAttr<OCIParam*>(attributep, sizep, p.element);
    case OCI_ATTR_NUM_TYPE_ATTRS:
      return PutAttr<ub2>(attributep, sizep, static_cast<ub2>(t.attributes.size()));
    case OCI_ATTR_LIST_TYPE_ATTRS:
      return PutAttr<OCIParam*>(attributep, sizep, p.list);
    case OCI_ATTR_NUM_TYPE_METHODS:
      return PutAttr<ub4>(attributep, sizep, 0);
    case OCI_ATTR_LIST_TYPE_METHODS:
      return PutAttr<OCIParam*>(attributep, sizep, p.methods);
    case OCI_ATTR_MAP_METHOD:
    case OCI_ATTR_ORDER_METHOD:
      return PutAttr<OCIParam*>(attributep, sizep, nullptr);  // no methods, so none of these
    case OCI_ATTR_REF_TDO:
      return PutRefTdo(p, p.type, attributep, sizep, err);
    case OCI_ATTR_VERSION:
      return PutTextAttr(attributep, sizep, kTypeVersion);
    case OCI_ATTR_IS_INCOMPLETE_TYPE:
    case OCI_ATTR_IS_SYSTEM_TYPE:
    case OCI_ATTR_IS_PREDEFINED_TYPE:
    case OCI_ATTR_IS_TRANSIENT_TYPE:
    case OCI_ATTR_IS_SYSTEM_GENERATED_TYPE:
    case OCI_ATTR_IS_SUBTYPE:
    case OCI_ATTR_IS_INVOKER_RIGHTS:
      // Every type is a complete user type made by CREATE TYPE, without a supertype.
      return PutAttr<ub1>(attributep, sizep, 0);
    case OCI_ATTR_IS_FINAL_TYPE:
      return PutAttr<ub1>(attributep, sizep, Flag(t.final));
    case OCI_ATTR_HAS_NESTED_TABLE:
    case OCI_ATTR_HAS_LOB:
    case OCI_ATTR_HAS_FILE: {
      // Worked out once, when the type was made: a describe walks no type.
      bool has = attrtype == OCI_ATTR_HAS_NESTED_TABLE ? t.has_nested_table
                 : attrtype == OCI_ATTR_HAS_LOB        ? t.has_lob
                                                       : t.has_file;
      return PutAttr<ub1>(attributep, sizep, Flag(has));
    }
    default:
      return IllegalAttribute(err);
  }
}

}  // namespace ocimem
