// OCIDescribeAny and OCIParamGet for object and collection types.
#include "describe.h"

#include <cstring>
#include <mutex>

#include "database.h"
#include "internal.h"

namespace ocimem {
namespace {

sword Illegal(OCIError* err) { return Fail(err, 24315, "illegal attribute type"); }

std::unique_ptr<OCIParam> ValueParam(ub1 ptype, const ValueType& v, const std::string& name) {
  auto p = std::make_unique<OCIParam>();
  p->ptype = ptype;
  p->value = &v;
  p->name = name;
  if (v.named) {
    p->schema = v.named->schema;
    p->type_name = v.named->name;
  } else if (v.kind == ValueKind::kRef) {
    p->schema = v.ref_schema;
    p->type_name = v.ref_name;
  }
  return p;
}

std::unique_ptr<OCIParam> TypeParam(std::shared_ptr<OCIType> type) {
  auto top = std::make_unique<OCIParam>();
  top->ptype = OCI_PTYPE_TYPE;
  top->name = type->name;
  top->schema = type->schema;
  auto list = std::make_unique<OCIParam>();
  list->ptype = OCI_PTYPE_LIST;
  for (const Attribute& a : type->attributes) {
    list->items.push_back(ValueParam(OCI_PTYPE_TYPE_ATTR, a.type, a.name));
  }
  top->list = list.get();
  top->owned.push_back(std::move(list));
  if (type->IsCollection()) {
    auto element = ValueParam(OCI_PTYPE_TYPE_COLL, type->element, std::string());
    if (type->collection_typecode == OCI_TYPECODE_VARRAY) {
      element->num_elems = static_cast<ub4>(type->max_elements);
    }
    top->element = element.get();
    top->owned.push_back(std::move(element));
  }
  top->type = std::move(type);
  return top;
}

// The SQLT_ code describe reports as OCI_ATTR_DATA_TYPE.
ub2 DataType(const ValueType& v) {
  switch (v.kind) {
    case ValueKind::kNumber:
      return SQLT_NUM;
    case ValueKind::kDate:
      return SQLT_DAT;
    case ValueKind::kString:
      return v.typecode == OCI_TYPECODE_CHAR ? SQLT_AFC : SQLT_CHR;
    case ValueKind::kRaw:
      return SQLT_BIN;
    case ValueKind::kRef:
      return SQLT_REF;
    case ValueKind::kObject:
    case ValueKind::kCollection:
      return SQLT_NTY;
    default:
      return v.typecode;  // LOB, TIMESTAMP and INTERVAL codes equal their SQLT_ codes
  }
}

ub2 DataSize(const ValueType& v) {
  switch (v.kind) {
    case ValueKind::kNumber:
      return 22;
    case ValueKind::kDate:
      return 7;
    case ValueKind::kString: {
      // VARCHAR2(n CHAR) reports the bytes n characters may take in AL32UTF8.
      ub4 bytes = v.char_semantics && v.charset_form != SQLCS_NCHAR ? v.length * 4 : v.length;
      return static_cast<ub2>(bytes > 0xffff ? 0xffff : bytes);
    }
    case ValueKind::kRaw:
      return static_cast<ub2>(v.length);
    case ValueKind::kDateTime:
      return v.typecode == OCI_TYPECODE_TIMESTAMP_TZ ? 13 : 11;
    case ValueKind::kInterval:
      return v.typecode == OCI_TYPECODE_INTERVAL_YM ? 5 : 11;
    default:
      return 0;  // LOB locators, REFs, objects and collections: no fixed size reported
  }
}

void Precision(const ValueType& v, ub1* precision, sb1* scale) {
  *precision = 0;
  *scale = 0;
  switch (v.kind) {
    case ValueKind::kNumber:
      switch (v.typecode) {
        case OCI_TYPECODE_INTEGER:
        case OCI_TYPECODE_SMALLINT:
          *precision = 38;
          return;
        case OCI_TYPECODE_FLOAT:
          *precision = static_cast<ub1>(v.precision != 0 ? v.precision : 126);
          *scale = -127;
          return;
        case OCI_TYPECODE_REAL:
          *precision = 63;
          *scale = -127;
          return;
        case OCI_TYPECODE_DOUBLE:
          *precision = 126;
          *scale = -127;
          return;
        default:
          *precision = static_cast<ub1>(v.precision);
          *scale = v.scale;
          return;
      }
    case ValueKind::kDateTime:
      *scale = static_cast<sb1>(v.fraction_precision);
      return;
    case ValueKind::kInterval:
      *precision = v.leading_precision;
      if (v.typecode == OCI_TYPECODE_INTERVAL_DS) *scale = static_cast<sb1>(v.fraction_precision);
      return;
    default:
      return;
  }
}

template <typename T>
sword Put(void* attributep, ub4* sizep, T value) {
  std::memcpy(attributep, &value, sizeof value);
  if (sizep != nullptr) *sizep = sizeof value;
  return OCI_SUCCESS;
}

sword PutText(void* attributep, ub4* sizep, const std::string& text) {
  *static_cast<const oratext**>(attributep) = reinterpret_cast<const oratext*>(text.c_str());
  if (sizep != nullptr) *sizep = static_cast<ub4>(text.size());
  return OCI_SUCCESS;
}

sword TypeAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err) {
  const OCIType& t = *p.type;
  switch (attrtype) {
    case OCI_ATTR_NAME:
      return PutText(attributep, sizep, p.name);
    case OCI_ATTR_SCHEMA_NAME:
      return PutText(attributep, sizep, p.schema);
    case OCI_ATTR_TYPECODE:
      return Put<OCITypeCode>(attributep, sizep, t.typecode);
    case OCI_ATTR_COLLECTION_TYPECODE:
      if (!t.IsCollection()) return Illegal(err);
      return Put<OCITypeCode>(attributep, sizep, t.collection_typecode);
    case OCI_ATTR_COLLECTION_ELEMENT:
      if (!t.IsCollection()) return Illegal(err);
      return Put<OCIParam*>(attributep, sizep, p.element);
    case OCI_ATTR_NUM_TYPE_ATTRS:
      return Put<ub2>(attributep, sizep, static_cast<ub2>(t.attributes.size()));
    case OCI_ATTR_LIST_TYPE_ATTRS:
      return Put<OCIParam*>(attributep, sizep, p.list);
    default:
      return Illegal(err);
  }
}

sword ValueAttr(const OCIParam& p, void* attributep, ub4* sizep, ub4 attrtype, OCIError* err) {
  const ValueType& v = *p.value;
  ub1 precision = 0;
  sb1 scale = 0;
  Precision(v, &precision, &scale);
  bool character = v.kind == ValueKind::kString ||
                   (v.kind == ValueKind::kLob && v.typecode == OCI_TYPECODE_CLOB);
  switch (attrtype) {
    case OCI_ATTR_NAME:
      return PutText(attributep, sizep, p.name);
    case OCI_ATTR_TYPECODE:
      return Put<OCITypeCode>(attributep, sizep, v.typecode);
    case OCI_ATTR_DATA_TYPE:
      return Put<ub2>(attributep, sizep, DataType(v));
    case OCI_ATTR_DATA_SIZE:
      return Put<ub2>(attributep, sizep, DataSize(v));
    case OCI_ATTR_PRECISION:
      return Put<ub1>(attributep, sizep, precision);
    case OCI_ATTR_SCALE:
      return Put<sb1>(attributep, sizep, scale);
    case OCI_ATTR_TYPE_NAME:
      return PutText(attributep, sizep, p.type_name);
    case OCI_ATTR_SCHEMA_NAME:
      return PutText(attributep, sizep, p.schema);
    case OCI_ATTR_CHARSET_FORM:
      return Put<ub1>(attributep, sizep, character ? v.charset_form : ub1{0});
    case OCI_ATTR_FSPRECISION:
      return Put<ub1>(attributep, sizep, v.fraction_precision);
    case OCI_ATTR_LFPRECISION:
      return Put<ub1>(attributep, sizep, v.leading_precision);
    case OCI_ATTR_CHAR_USED:
      return Put<ub1>(attributep, sizep, v.char_semantics ? ub1{1} : ub1{0});
    case OCI_ATTR_CHAR_SIZE:
      return Put<ub2>(attributep, sizep, static_cast<ub2>(v.kind == ValueKind::kString ? v.length : 0));
    case OCI_ATTR_NUM_ELEMS:
      if (p.ptype != OCI_PTYPE_TYPE_COLL) return Illegal(err);
      return Put<ub4>(attributep, sizep, p.num_elems);  // 0 for a nested table
    default:
      return Illegal(err);
  }
}

}  // namespace

OCIParam* AsParam(const void* p) {
  if (p == nullptr) return nullptr;
  auto* param = static_cast<OCIParam*>(const_cast<void*>(p));
  return param->live == kLiveParam ? param : nullptr;
}

sword DescribeAttrGet(const void* target, ub4 target_type, void* attributep, ub4* sizep,
                      ub4 attrtype, OCIError* err) {
  if (target_type == OCI_HTYPE_DESCRIBE) {
    DescribeHandle* d = AsDescribe(target);
    if (d == nullptr) return OCI_INVALID_HANDLE;
    if (attributep == nullptr) return FailArgument(err, 3);
    if (attrtype != OCI_ATTR_PARAM) return Illegal(err);
    // UNCONFIRMED: Oracle's answer before anything was described.
    if (!d->top) return Fail(err, 24334, "no descriptor for this position");
    return Put<OCIParam*>(attributep, sizep, d->top.get());
  }
  const OCIParam* p = AsParam(target);
  if (p == nullptr) return OCI_INVALID_HANDLE;
  if (attributep == nullptr) return FailArgument(err, 3);
  if (attrtype == OCI_ATTR_PTYPE) return Put<ub1>(attributep, sizep, p->ptype);
  switch (p->ptype) {
    case OCI_PTYPE_TYPE:
      return TypeAttr(*p, attributep, sizep, attrtype, err);
    case OCI_PTYPE_TYPE_ATTR:
      return ValueAttr(*p, attributep, sizep, attrtype, err);
    case OCI_PTYPE_TYPE_COLL:
      return ValueAttr(*p, attributep, sizep, attrtype, err);
    default:
      return Illegal(err);
  }
}

}  // namespace ocimem

using namespace ocimem;

sword OCIDescribeAny(OCISvcCtx* svchp, OCIError* errhp, void* objptr, ub4 objnm_len,
                     ub1 objptr_typ, ub1 info_level, ub1 objtyp, OCIDescribe* dschp) {
  (void)info_level;  // reserved
  sword rc;
  if (Enter("OCIDescribeAny", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  DescribeHandle* d = AsDescribe(dschp);
  if (svc == nullptr || d == nullptr) return OCI_INVALID_HANDLE;
  if (objptr == nullptr) return FailArgument(errhp, 3);
  if (objtyp != OCI_PTYPE_UNK && objtyp != OCI_PTYPE_TYPE) {
    return Fail(errhp, 24300, "bad value for mode");  // only types are described
  }
  std::shared_ptr<OCIType> type;
  if (objptr_typ == OCI_OTYPE_PTR) {
    OCIType* t = AsType(objptr);
    if (t == nullptr) return FailArgument(errhp, 3);
    type = t->shared_from_this();
  } else if (objptr_typ == OCI_OTYPE_NAME) {
    if (objnm_len == 0) return FailArgument(errhp, 4);
    Session* session = svc->LiveSession();
    if (session == nullptr || !session->db) return Fail(errhp, 1012, "not logged on");
    // Names as stored; SCHEMA.NAME names another schema's type.
    std::string given(static_cast<const char*>(objptr), objnm_len);
    size_t dot = given.find('.');
    std::string schema = dot == std::string::npos ? session->schema : given.substr(0, dot);
    std::string name = dot == std::string::npos ? given : given.substr(dot + 1);
    {
      std::lock_guard<std::mutex> lock(session->db->mutex);
      type = session->db->catalog.FindType(schema, name);
    }
    if (!type) return Fail(errhp, 4043, "object " + given + " does not exist");
  } else {
    return FailArgument(errhp, 5);  // describing through a REF is not provided
  }
  d->top = TypeParam(std::move(type));
  return OCI_SUCCESS;
}

sword OCIParamGet(const void* hndlp, ub4 htype, OCIError* errhp, void** parmdpp, ub4 pos) {
  sword rc;
  if (Enter("OCIParamGet", errhp, &rc)) return rc;
  if (htype == OCI_HTYPE_STMT) {
    if (AsHandle<Handle>(hndlp, OCI_HTYPE_STMT) == nullptr) return OCI_INVALID_HANDLE;
    // Select lists are not described.
    return Fail(errhp, 24334, "no descriptor for this position");
  }
  if (htype != OCI_DTYPE_PARAM) return OCI_INVALID_HANDLE;
  const OCIParam* p = AsParam(hndlp);
  if (p == nullptr) return OCI_INVALID_HANDLE;
  if (parmdpp == nullptr) return FailArgument(errhp, 4);
  if (p->ptype != OCI_PTYPE_LIST) return Fail(errhp, 24334, "no descriptor for this position");
  if (pos == 0 || pos > p->items.size()) return OCI_NO_DATA;
  *parmdpp = p->items[pos - 1].get();
  return OCI_SUCCESS;
}
