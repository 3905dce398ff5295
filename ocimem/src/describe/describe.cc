// OCIDescribeAny and OCIParamGet for object and collection types, tables and views.
#include "describe/describe.h"

#include <cstring>
#include <mutex>

#include "database/database.h"
#include "describe/describe_attr.h"

namespace ocimem {

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
  auto methods = std::make_unique<OCIParam>();
  methods->ptype = OCI_PTYPE_LIST;  // types are made without methods
  top->methods = methods.get();
  top->owned.push_back(std::move(methods));
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

sword PutRefTdo(const OCIParam& p, const std::shared_ptr<OCIType>& type, void* attributep,
                ub4* sizep, OCIError* err) {
  if (!type) return IllegalAttribute(err);
  if (!p.ref_tdo) {
    p.ref_tdo.reset(new (std::nothrow) OCIRef);
    if (!p.ref_tdo) return OutOfMemory(err);
    p.ref_tdo->tdo = type.get();
  }
  return PutAttr<OCIRef*>(attributep, sizep, p.ref_tdo.get());
}

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
    if (attrtype != OCI_ATTR_PARAM) return IllegalAttribute(err);
    // UNCONFIRMED: Oracle's answer before anything was described.
    if (!d->top) return Fail(err, 24334, "no descriptor for this position");
    return PutAttr<OCIParam*>(attributep, sizep, d->top.get());
  }
  const OCIParam* p = AsParam(target);
  if (p == nullptr) return OCI_INVALID_HANDLE;
  if (attributep == nullptr) return FailArgument(err, 3);
  if (attrtype == OCI_ATTR_PTYPE) return PutAttr<ub1>(attributep, sizep, p->ptype);
  // The attributes every described object has; its schema and name.
  if (p->top && (attrtype == OCI_ATTR_OBJ_NAME || attrtype == OCI_ATTR_OBJ_SCHEMA)) {
    return PutTextAttr(attributep, sizep, attrtype == OCI_ATTR_OBJ_NAME ? p->name : p->schema);
  }
  switch (p->ptype) {
    case OCI_PTYPE_TYPE:
      return TypeAttr(*p, attributep, sizep, attrtype, err);
    case OCI_PTYPE_TYPE_ATTR:
    case OCI_PTYPE_TYPE_COLL:
      return ValueAttr(*p, attributep, sizep, attrtype, err);
    case OCI_PTYPE_TABLE:
    case OCI_PTYPE_VIEW:
      return TableAttr(*p, attributep, sizep, attrtype, err);
    case OCI_PTYPE_COL:
      return ColumnAttr(*p, attributep, sizep, attrtype, err);
    default:
      return IllegalAttribute(err);
  }
}

}  // namespace ocimem

using namespace ocimem;

sword OCIDescribeAny(OCISvcCtx* svchp, OCIError* errhp, void* objptr, ub4 objnm_len,
                     ub1 objptr_typ, ub1 info_level, ub1 objtyp, OCIDescribe* dschp) try {
  (void)info_level;  // reserved
  sword rc;
  if (Enter("OCIDescribeAny", errhp, &rc)) return rc;
  SvcCtx* svc = AsSvcCtx(svchp);
  DescribeHandle* d = AsDescribe(dschp);
  if (svc == nullptr || d == nullptr) return OCI_INVALID_HANDLE;
  if (objptr == nullptr) return FailArgument(errhp, 3);
  if (objtyp != OCI_PTYPE_UNK && objtyp != OCI_PTYPE_TYPE && objtyp != OCI_PTYPE_TABLE &&
      objtyp != OCI_PTYPE_VIEW) {
    return Fail(errhp, 24300, "bad value for mode");  // types, tables and views are described
  }
  std::shared_ptr<OCIType> type;
  std::shared_ptr<Table> table;
  std::unique_ptr<OCIParam> view;  // made while the database is locked
  bool invalid_view = false;
  std::string given;
  if (objptr_typ == OCI_OTYPE_PTR || objptr_typ == OCI_OTYPE_REF) {
    // A TDO, or a REF to one (OCI_ATTR_REF_TDO).
    OCIType* t = nullptr;
    if (objptr_typ == OCI_OTYPE_PTR) {
      t = AsType(objptr);
    } else if (const OCIRef* ref = AsRef(objptr)) {
      t = AsType(ref->tdo);
    }
    if (t == nullptr) return FailArgument(errhp, 3);
    type = t->shared_from_this();
    given = t->name;
  } else if (objptr_typ == OCI_OTYPE_NAME) {
    if (objnm_len == 0) return FailArgument(errhp, 4);
    Session* session = svc->LiveSession();
    if (session == nullptr || !session->db) return Fail(errhp, 1012, "not logged on");
    // Names as stored; SCHEMA.NAME names another schema's object.
    given.assign(static_cast<const char*>(objptr), objnm_len);
    size_t dot = given.find('.');
    std::string schema = dot == std::string::npos ? session->schema : given.substr(0, dot);
    std::string name = dot == std::string::npos ? given : given.substr(dot + 1);
    std::lock_guard<std::mutex> lock(session->db->mutex);
    if (const CatalogEntry* entry = session->db->catalog.Find(schema, name)) {
      if (entry->kind == ObjectKind::kType) {
        type = entry->type;
      } else if (entry->kind == ObjectKind::kTable) {
        table = entry->table;
      } else {
        invalid_view = !entry->view->valid;
        view = ViewParam(*entry->view);
      }
    }
  } else {
    return FailArgument(errhp, 5);
  }
  // An object of another kind than the one asked for is not found.
  bool found = type    ? objtyp == OCI_PTYPE_UNK || objtyp == OCI_PTYPE_TYPE
               : table ? objtyp == OCI_PTYPE_UNK || objtyp == OCI_PTYPE_TABLE
                       : view && (objtyp == OCI_PTYPE_UNK || objtyp == OCI_PTYPE_VIEW);
  if (!found) return Fail(errhp, 4043, "object " + given + " does not exist");
  // A view whose table or view was dropped or replaced is described again only after a
  // statement has used it (and so recompiled it).
  if (invalid_view) return Fail(errhp, 24372, "invalid object for describe");
  std::unique_ptr<OCIParam> top = type    ? TypeParam(std::move(type))
                                  : table ? TableParam(std::move(table))
                                          : std::move(view);
  top->top = true;
  d->top = std::move(top);
  return OCI_SUCCESS;
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}

sword OCIParamGet(const void* hndlp, ub4 htype, OCIError* errhp, void** parmdpp, ub4 pos) try {
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
} catch (...) {
  return ocimem::OutOfMemory(errhp);
}
