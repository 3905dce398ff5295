#include "type_describer.h"

namespace coldef {
namespace {

bool Succeeded(sword status) { return status == OCI_SUCCESS || status == OCI_SUCCESS_WITH_INFO; }

}  // namespace

std::string QualifiedName(const std::string& schema, const std::string& name) {
  return schema.empty() ? name : schema + "." + name;
}

TypeDescriber::~TypeDescriber() {
  if (describe_ != nullptr) OCIHandleFree(describe_, OCI_HTYPE_DESCRIBE);
}

int TypeDescriber::Describe(const std::string& name, const TypeDescription** type) {
  auto found = described_.find(name);
  if (found != described_.end()) {
    *type = found->second.get();
    return COLDEF_OK;
  }
  if (describe_ == nullptr &&
      !Succeeded(OCIHandleAlloc(env_, reinterpret_cast<void**>(&describe_), OCI_HTYPE_DESCRIBE,
                                0, nullptr))) {
    describe_ = nullptr;
    return COLDEF_E_ORACLE;
  }
  // OCIDescribeAny takes a writable pointer but does not write through it.
  if (!Succeeded(OCIDescribeAny(svc_, err_, const_cast<char*>(name.data()),
                                static_cast<ub4>(name.size()), OCI_OTYPE_NAME, OCI_DEFAULT,
                                OCI_PTYPE_TYPE, describe_))) {
    return COLDEF_E_ORACLE;
  }
  void* top = nullptr;
  if (!Succeeded(OCIAttrGet(describe_, OCI_HTYPE_DESCRIBE, &top, nullptr, OCI_ATTR_PARAM, err_))) {
    return COLDEF_E_ORACLE;
  }
  auto description = std::make_unique<TypeDescription>();
  if (int rc = Read(top, description.get()); rc != COLDEF_OK) return rc;
  *type = description.get();
  described_.emplace(name, std::move(description));
  return COLDEF_OK;
}

int TypeDescriber::Read(void* top, TypeDescription* type) {
  OCITypeCode typecode = 0;
  int rc = ReadText(top, OCI_ATTR_SCHEMA_NAME, &type->schema);
  if (rc == COLDEF_OK) rc = ReadText(top, OCI_ATTR_NAME, &type->name);
  if (rc == COLDEF_OK) rc = ReadValue(top, OCI_ATTR_TYPECODE, &typecode);
  if (rc != COLDEF_OK) return rc;

  if (IsCollectionCode(typecode)) {
    type->collection = true;
    void* element = nullptr;
    rc = ReadValue(top, OCI_ATTR_COLLECTION_ELEMENT, &element);
    return rc == COLDEF_OK ? ReadMember(element, true, &type->element) : rc;
  }
  if (!IsObjectCode(typecode)) return COLDEF_E_NOT_OBJECT;

  ub2 count = 0;
  void* list = nullptr;
  rc = ReadValue(top, OCI_ATTR_NUM_TYPE_ATTRS, &count);
  if (rc == COLDEF_OK) rc = ReadValue(top, OCI_ATTR_LIST_TYPE_ATTRS, &list);
  type->attributes.resize(count);
  for (ub4 pos = 1; rc == COLDEF_OK && pos <= count; ++pos) {  // positions start at 1
    void* attribute = nullptr;
    if (!Succeeded(OCIParamGet(list, OCI_DTYPE_PARAM, err_, &attribute, pos))) {
      return COLDEF_E_ORACLE;
    }
    rc = ReadMember(attribute, false, &type->attributes[pos - 1]);
  }
  return rc;
}

// Reads only the attributes that Oracle documents for the member's kind of type.
int TypeDescriber::ReadMember(void* param, bool element, MemberDescription* m) {
  int rc = element ? COLDEF_OK : ReadText(param, OCI_ATTR_NAME, &m->name);
  if (rc == COLDEF_OK) rc = ReadValue(param, OCI_ATTR_TYPECODE, &m->typecode);
  if (rc != COLDEF_OK) return rc;
  const OCITypeCode tc = m->typecode;
  if (IsObjectCode(tc) || IsCollectionCode(tc)) {
    rc = ReadText(param, OCI_ATTR_SCHEMA_NAME, &m->type_schema);
    return rc == COLDEF_OK ? ReadText(param, OCI_ATTR_TYPE_NAME, &m->type_name) : rc;
  }
  rc = ReadValue(param, OCI_ATTR_DATA_SIZE, &m->data_size);
  if (rc == COLDEF_OK && IsNumericCode(tc)) {
    rc = ReadValue(param, OCI_ATTR_PRECISION, &m->precision);
    if (rc == COLDEF_OK) rc = ReadValue(param, OCI_ATTR_SCALE, &m->scale);
  }
  if (rc == COLDEF_OK && HasCharsetForm(tc)) {
    rc = ReadValue(param, OCI_ATTR_CHARSET_FORM, &m->charset_form);
  }
  if (rc == COLDEF_OK && HasLfPrecision(tc)) {
    rc = ReadValue(param, OCI_ATTR_LFPRECISION, &m->lf_precision);
  }
  if (rc == COLDEF_OK && HasFsPrecision(tc)) {
    rc = ReadValue(param, OCI_ATTR_FSPRECISION, &m->fs_precision);
  }
  return rc;
}

// Name attributes come as a pointer and a length, not NUL-terminated.
int TypeDescriber::ReadText(void* param, ub4 attribute, std::string* text) {
  oratext* chars = nullptr;
  ub4 size = 0;
  if (!Succeeded(OCIAttrGet(param, OCI_DTYPE_PARAM, &chars, &size, attribute, err_))) {
    return COLDEF_E_ORACLE;
  }
  if (chars == nullptr) {
    text->clear();
  } else {
    text->assign(reinterpret_cast<const char*>(chars), size);
  }
  return COLDEF_OK;
}

template <typename T>
int TypeDescriber::ReadValue(void* param, ub4 attribute, T* value) {
  return Succeeded(OCIAttrGet(param, OCI_DTYPE_PARAM, value, nullptr, attribute, err_))
             ? COLDEF_OK
             : COLDEF_E_ORACLE;
}

}  // namespace coldef
