// The attribute getters of describe parameters, one per parameter kind, and the pieces
// they share: how a value is written to the caller, and what describe reports for a value
// type (data type, size, precision and scale).
#ifndef OCIMEM_SRC_DESCRIBE_DESCRIBE_ATTR_H
#define OCIMEM_SRC_DESCRIBE_DESCRIBE_ATTR_H

#include <cstring>
#include <string>

#include "describe/describe.h"
#include "session/internal.h"

namespace ocimem {

inline sword IllegalAttribute(OCIError* err) { return Fail(err, 24315, "illegal attribute type"); }

template <typename T>
sword PutAttr(void* attributep, ub4* sizep, T value) {
  std::memcpy(attributep, &value, sizeof value);
  if (sizep != nullptr) *sizep = sizeof value;
  return OCI_SUCCESS;
}

inline sword PutTextAttr(void* attributep, ub4* sizep, const std::string& text) {
  *static_cast<const oratext**>(attributep) = reinterpret_cast<const oratext*>(text.c_str());
  if (sizep != nullptr) *sizep = static_cast<ub4>(text.size());
  return OCI_SUCCESS;
}

// OCI_ATTR_REF_TDO: a REF to `type`, kept by the parameter and made on first use.
sword PutRefTdo(const OCIParam& p, const std::shared_ptr<OCIType>& type, void* attributep,
                ub4* sizep, OCIError* err);

// What describe reports for a value type: the SQLT_ code of a type attribute or element
// (OCI_ATTR_DATA_TYPE), its size in bytes, and its precision and scale.
ub2 DataType(const ValueType& v);
ub2 DataSize(const ValueType& v);
void Precision(const ValueType& v, ub1* precision, sb1* scale);

// The getters of each parameter kind.
sword TypeAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err);
sword ValueAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err);
// Tables and views share one getter: Oracle lists their attributes together.
sword TableAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err);
sword ColumnAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err);

}  // namespace ocimem

#endif  // OCIMEM_SRC_DESCRIBE_DESCRIBE_ATTR_H
