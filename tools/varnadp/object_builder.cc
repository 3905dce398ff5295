#include "object_builder.h"

#include <orid.h>

#include <utility>

#include "oci_session.h"
#include "scalar_values.h"

namespace varnadp {
namespace {

using simdjson::ondemand::json_type;

const OraText* Name(const Shape& member) {
  return reinterpret_cast<const OraText*>(member.name.c_str());
}

ub4 DescriptorType(const Column_Def& def) {
  switch (def.DataType) {
    case SQLT_TIMESTAMP: return OCI_DTYPE_TIMESTAMP;
    case SQLT_TIMESTAMP_TZ: return OCI_DTYPE_TIMESTAMP_TZ;
    case SQLT_TIMESTAMP_LTZ: return OCI_DTYPE_TIMESTAMP_LTZ;
    case SQLT_INTERVAL_YM: return OCI_DTYPE_INTERVAL_YM;
    case SQLT_INTERVAL_DS: return OCI_DTYPE_INTERVAL_DS;
    case SQLT_CLOB: case SQLT_BLOB: return OCI_DTYPE_LOB;
    default: return 0;
  }
}

}  // namespace

bool ObjectBuilder::Fail(const std::string& what) {
  error_ = Path() + what;
  return false;
}

bool ObjectBuilder::JsonError(simdjson::error_code code) {
  error_ = std::string("bad JSON: ") + simdjson::error_message(code);
  return false;
}

bool ObjectBuilder::Oracle(sword status, const char* call) {
  if (status == OCI_SUCCESS) return true;
  return Fail(std::string(call) + " failed: " + session_.OracleError());
}

std::string ObjectBuilder::Path() const {
  std::string path;
  for (const Step& step : path_) {
    if (step.index >= 0) {
      path += "[" + std::to_string(step.index) + "]";
    } else {
      if (!path.empty()) path.push_back('.');
      path += step.shape->name;
    }
  }
  if (path.empty()) return "the record ";
  return "attribute " + path + " ";
}

bool ObjectBuilder::Read(simdjson::ondemand::value& json, JsonKind* kind, std::string_view* text) {
  json_type type;
  if (auto code = json.type().get(type)) return JsonError(code);
  switch (type) {
    case json_type::null:
      *kind = JsonKind::kNull;
      return true;
    case json_type::number:
      *kind = JsonKind::kNumber;
      *text = json.raw_json_token();
      while (!text->empty() && (text->back() == ' ' || text->back() == '\t' ||
                                text->back() == '\n' || text->back() == '\r')) {
        text->remove_suffix(1);
      }
      return true;
    case json_type::string:
      *kind = JsonKind::kString;
      if (auto code = json.get_string().get(*text)) return JsonError(code);
      return true;
    case json_type::boolean:
      *kind = JsonKind::kBool;
      return true;
    case json_type::object:
      *kind = JsonKind::kObject;
      return true;
    case json_type::array:
      *kind = JsonKind::kArray;
      return true;
  }
  return JsonError(simdjson::INCORRECT_TYPE);
}

namespace {

// Whether an object of this shape can be made over for the next record:
// anything but large objects, whose temporary contents belong to a record.
bool Reusable(const Shape& shape) {
  if (shape.kind == Shape::Kind::kScalar) {
    return shape.def == nullptr ||
           (shape.def->DataType != SQLT_CLOB && shape.def->DataType != SQLT_BLOB);
  }
  for (const Shape& member : shape.members) {
    if (!Reusable(member)) return false;
  }
  return true;
}

}  // namespace

ObjectBuilder::ObjectBuilder(OciSession& session, const Shape& root)
    : session_(session), root_(root), reusable_(root.kind == Shape::Kind::kObject && Reusable(root)) {}

bool ObjectBuilder::NewInstance(const Shape& shape, void** instance, OCIInd** ind) {
  const OCITypeCode code =
      shape.kind == Shape::Kind::kCollection ? OCI_TYPECODE_NAMEDCOLLECTION : OCI_TYPECODE_OBJECT;
  *instance = nullptr;
  if (!Oracle(OCIObjectNew(session_.env(), session_.err(), session_.svc(), code, shape.tdo, nullptr,
                           OCI_DURATION_DEFAULT, TRUE, instance),
              "OCIObjectNew")) {
    return false;
  }
  if (!Oracle(OCIObjectGetInd(session_.env(), session_.err(), *instance,
                              reinterpret_cast<void**>(ind)),
              "OCIObjectGetInd")) {
    Free(*instance);
    *instance = nullptr;
    return false;
  }
  return true;
}

void ObjectBuilder::Free(void* instance) {
  if (instance != nullptr && instance != kept_) {
    OCIObjectFree(session_.env(), session_.err(), instance, OCI_OBJECTFREE_FORCE);
  }
}

// The kept object as OCIObjectNew makes one: atomically null, every
// attribute null at every depth (the null structure is all OCIInds), every
// collection empty. The values behind null indicators are never read.
bool ObjectBuilder::MakeOver(void* instance, OCIInd* ind) {
  for (size_t i = 0; i < root_.ind_count; ++i) ind[i] = OCI_IND_NULL;
  return EmptyCollections(root_, instance, ind);
}

bool ObjectBuilder::EmptyCollections(const Shape& shape, void* instance, void* null_struct) {
  for (const Shape& member : shape.members) {
    if (member.kind == Shape::Kind::kScalar) continue;
    void* attr_null_struct = nullptr;
    void* slot = nullptr;
    if (!GetAttribute(member, instance, null_struct, shape.tdo, &attr_null_struct, &slot)) return false;
    if (member.kind == Shape::Kind::kObject) {
      if (!EmptyCollections(member, slot, attr_null_struct)) return false;
      continue;
    }
    OCIColl* coll = *static_cast<OCIColl**>(slot);
    sb4 size = 0;
    if (!Oracle(OCICollSize(session_.env(), session_.err(), coll, &size), "OCICollSize")) return false;
    if (size > 0 && !Oracle(OCICollTrim(session_.env(), session_.err(), size, coll), "OCICollTrim")) {
      return false;
    }
  }
  return true;
}

bool ObjectBuilder::Build(simdjson::ondemand::value json, void** instance, OCIInd** ind) {
  path_.clear();
  *instance = nullptr;
  *ind = nullptr;
  void* made = nullptr;
  OCIInd* made_ind = nullptr;
  if (kept_ != nullptr) {
    made = kept_;
    made_ind = kept_ind_;
    if (!MakeOver(made, made_ind)) {
      // Made anew next time.
      kept_ = nullptr;
      Free(made);
      return false;
    }
  } else {
    if (!NewInstance(root_, &made, &made_ind)) return false;
    if (reusable_) {
      kept_ = made;
      kept_ind_ = made_ind;
    }
  }
  bool ok;
  if (root_.kind == Shape::Kind::kCollection) {
    ok = FillCollection(json, root_, static_cast<OCIColl*>(made));
  } else {
    // A new object is atomically null: the record makes it present.
    *made_ind = OCI_IND_NOTNULL;
    ok = FillObject(json, root_, made, made_ind);
  }
  if (!ok) {
    Free(made);  // the kept object stays, made over for the next record
    return false;
  }
  *instance = made;
  *ind = root_.kind == Shape::Kind::kCollection ? nullptr : made_ind;
  return true;
}

bool ObjectBuilder::FillObject(simdjson::ondemand::value json, const Shape& shape, void* instance,
                               void* null_struct) {
  JsonKind kind;
  std::string_view text;
  if (!Read(json, &kind, &text)) return false;
  if (kind != JsonKind::kObject) {
    return Fail(std::string("is an object of ") + shape.type_name + ": a JSON object is expected, not " +
                JsonKindName(kind));
  }
  simdjson::ondemand::object object;
  if (auto code = json.get_object().get(object)) return JsonError(code);
  size_t next = 0;
  for (auto field_result : object) {
    simdjson::ondemand::field field;
    if (auto code = std::move(field_result).get(field)) return JsonError(code);
    std::string_view key;
    if (auto code = field.unescaped_key().get(key)) return JsonError(code);
    const Shape* member = shape.FindMember(key, &next);
    if (member == nullptr) {
      return Fail(std::string("has no attribute \"") + std::string(key) + "\" (" + shape.type_name + ")");
    }
    path_.push_back({member, -1});
    if (!SetAttribute(field.value(), *member, instance, null_struct, shape.tdo)) return false;
    path_.pop_back();
  }
  return true;
}

// Where attribute `member` of the object stands: its slot and, for an
// embedded object, its null structure. Found from the layouts when they were
// checked on this type, else asked of Oracle by name.
bool ObjectBuilder::GetAttribute(const Shape& member, void* instance, void* null_struct, OCIType* tdo,
                                 void** attr_null_struct, void** slot) {
  if (member.direct && null_struct != nullptr) {
    *slot = static_cast<char*>(instance) + member.value_offset;
    *attr_null_struct =
        member.kind == Shape::Kind::kObject ? static_cast<OCIInd*>(null_struct) + member.ind_index : nullptr;
    return true;
  }
  const OraText* names[1] = {Name(member)};
  const ub4 lengths[1] = {static_cast<ub4>(member.name.size())};
  OCIInd status = OCI_IND_NULL;
  OCIType* attr_tdo = nullptr;
  return Oracle(OCIObjectGetAttr(session_.env(), session_.err(), instance, null_struct, tdo, names, lengths,
                                 1, nullptr, 0, &status, attr_null_struct, slot, &attr_tdo),
                "OCIObjectGetAttr");
}

bool ObjectBuilder::SetAttribute(simdjson::ondemand::value json, const Shape& member, void* instance,
                                 void* null_struct, OCIType* tdo) {
  void* attr_null_struct = nullptr;
  void* slot = nullptr;
  if (!GetAttribute(member, instance, null_struct, tdo, &attr_null_struct, &slot)) return false;
  JsonKind kind;
  std::string_view text;
  if (!Read(json, &kind, &text)) return false;
  const bool object = member.kind == Shape::Kind::kObject;
  OCIInd result = OCI_IND_NOTNULL;
  if (kind == JsonKind::kNull) {
    result = OCI_IND_NULL;
  } else if (object) {
    if (!FillObject(json, member, slot, attr_null_struct)) return false;
  } else if (member.kind == Shape::Kind::kCollection) {
    if (!FillCollection(json, member, *static_cast<OCIColl**>(slot))) return false;
  } else {
    std::string error;
    if (!StoreScalar(session_, *member.def, kind, text, slot, &error)) return Fail(error);
  }
  // The value is in its slot; the indicator is written where Oracle's null
  // structure keeps it, as a program built on the generated null structs
  // does: an embedded object's _atomic (GetAttr handed out its null
  // structure), any other attribute's own OCIInd. That is what
  // OCIObjectSetAttr with no value would do, without looking the name up
  // again.
  if (object) {
    *static_cast<OCIInd*>(attr_null_struct) = result;
  } else {
    static_cast<OCIInd*>(null_struct)[member.ind_index] = result;
  }
  return true;
}

bool ObjectBuilder::FillCollection(simdjson::ondemand::value json, const Shape& shape, OCIColl* coll) {
  JsonKind kind;
  std::string_view text;
  if (!Read(json, &kind, &text)) return false;
  if (kind != JsonKind::kArray) {
    return Fail(std::string("is a collection of ") + shape.type_name + ": a JSON array is expected, not " +
                JsonKindName(kind));
  }
  if (shape.members.empty()) return Fail("has no item definition");
  simdjson::ondemand::array array;
  if (auto code = json.get_array().get(array)) return JsonError(code);
  long index = 0;
  for (auto item_result : array) {
    simdjson::ondemand::value item;
    if (auto code = std::move(item_result).get(item)) return JsonError(code);
    path_.push_back({&shape.members[0], index++});
    if (!AppendItem(item, shape.members[0], coll)) return false;
    path_.pop_back();
  }
  return true;
}

bool ObjectBuilder::BlankItem(const Shape& item, void** instance, OCIInd** ind) {
  for (const Blank& blank : blanks_) {
    if (blank.shape == &item) {
      *instance = blank.instance;
      *ind = blank.ind;
      return true;
    }
  }
  if (!NewInstance(item, instance, ind)) return false;
  blanks_.push_back({&item, *instance, *ind});
  return true;
}

ObjectBuilder::~ObjectBuilder() {
  for (ItemValue& kept : item_values_) {
    if (kept.value == nullptr) continue;
    const ub2 type = kept.shape->def->DataType;
    if (type == SQLT_BIN || type == SQLT_LBI) {
      OCIRawResize(session_.env(), session_.err(), 0, reinterpret_cast<OCIRaw**>(&kept.value));
    } else {
      OCIStringResize(session_.env(), session_.err(), 0, reinterpret_cast<OCIString**>(&kept.value));
    }
  }
  for (const Blank& blank : blanks_) Free(blank.instance);
  void* kept = kept_;
  kept_ = nullptr;
  Free(kept);
}

bool ObjectBuilder::AppendItem(simdjson::ondemand::value json, const Shape& item, OCIColl* coll) {
  if (!item.IsComplex()) return AppendScalarItem(json, item, coll);
  JsonKind kind;
  std::string_view text;
  if (!Read(json, &kind, &text)) return false;
  if (item.kind == Shape::Kind::kObject) {
    // The null object goes in (a null item stays so), and a present item is
    // filled where it now stands: the element OCICollGetElem hands out may be
    // written through, so no object of its own is made, copied and freed.
    void* blank = nullptr;
    OCIInd* blank_ind = nullptr;
    if (!BlankItem(item, &blank, &blank_ind)) return false;
    if (!Oracle(OCICollAppend(session_.env(), session_.err(), blank, blank_ind, coll), "OCICollAppend")) {
      return false;
    }
    if (kind == JsonKind::kNull) return true;
    sb4 size = 0;
    if (!Oracle(OCICollSize(session_.env(), session_.err(), coll, &size), "OCICollSize")) return false;
    boolean exists = FALSE;
    void* elem = nullptr;
    void* elem_ind = nullptr;
    if (!Oracle(OCICollGetElem(session_.env(), session_.err(), coll, size - 1, &exists, &elem, &elem_ind),
                "OCICollGetElem")) {
      return false;
    }
    if (!exists || elem == nullptr || elem_ind == nullptr) {
      return Fail("was appended but cannot be found in its collection");
    }
    *static_cast<OCIInd*>(elem_ind) = OCI_IND_NOTNULL;
    return FillObject(json, item, elem, elem_ind);
  }
  void* value = nullptr;
  OCIInd* ind = nullptr;
  if (!NewInstance(item, &value, &ind)) return false;
  bool ok = true;
  // A null item goes in as a value with the null indicator.
  OCIInd null_collection = OCI_IND_NULL;
  void* item_ind = ind;
  if (kind == JsonKind::kNull) {
    item_ind = &null_collection;
  } else {
    ok = FillCollection(json, item, static_cast<OCIColl*>(value));
  }
  if (ok) ok = Oracle(OCICollAppend(session_.env(), session_.err(), value, item_ind, coll), "OCICollAppend");
  Free(value);
  return ok;
}

void** ObjectBuilder::ItemValueOf(const Shape& item) {
  for (ItemValue& kept : item_values_) {
    if (kept.shape == &item) return &kept.value;
  }
  item_values_.push_back({&item, nullptr});
  return &item_values_.back().value;
}

bool ObjectBuilder::AppendScalarItem(simdjson::ondemand::value json, const Shape& item, OCIColl* coll) {
  JsonKind kind;
  std::string_view text;
  if (!Read(json, &kind, &text)) return false;
  const Column_Def& def = *item.def;
  OCIEnv* env = session_.env();
  OCIError* err = session_.err();
  // The item's value, held as an instance's slot holds it.
  OCINumber number;
  OCIDate date;
  void* pointer = nullptr;
  const ub4 descriptor = DescriptorType(def);
  if (descriptor != 0 &&
      !Oracle(OCIDescriptorAlloc(env, &pointer, descriptor, 0, nullptr), "OCIDescriptorAlloc")) {
    return false;
  }
  void* slot = &pointer;
  if (def.DataType == SQLT_NUM) slot = &number;
  if (def.DataType == SQLT_DAT) slot = &date;
  const bool inline_value = def.DataType == SQLT_NUM || def.DataType == SQLT_DAT;
  // Text and RAW are assigned to the value kept for this item type, which
  // keeps its room from item to item.
  void** kept = descriptor == 0 && !inline_value ? ItemValueOf(item) : nullptr;
  if (kept != nullptr) pointer = *kept;
  OCIInd ind = OCI_IND_NOTNULL;
  bool ok = true;
  if (kind == JsonKind::kNull) {
    // A null item still needs a value to append: an empty one of its type.
    ind = OCI_IND_NULL;
    number.OCINumberPart[0] = 1;
    number.OCINumberPart[1] = 0x80;
    OCIDateSetDate(&date, 2000, 1, 1);
    OCIDateSetTime(&date, 0, 0, 0);
    if (def.DataType == SQLT_CLOB || def.DataType == SQLT_BLOB) {
      ok = StoreScalar(session_, def, JsonKind::kString, "", slot, &error_);
    } else if (descriptor == 0 && def.DataType != SQLT_NUM && def.DataType != SQLT_DAT) {
      const bool raw = def.DataType == SQLT_BIN || def.DataType == SQLT_LBI;
      ok = StoreScalar(session_, def, JsonKind::kString, raw ? "00" : " ", slot, &error_);
    }
    if (!ok) ok = Fail(error_);
  } else {
    std::string error;
    ok = StoreScalar(session_, def, kind, text, slot, &error);
    if (!ok) Fail(error);
  }
  if (ok) {
    ok = Oracle(OCICollAppend(env, err, inline_value ? slot : pointer, &ind, coll), "OCICollAppend");
  }
  if (kept != nullptr) {
    *kept = pointer;
    return ok;
  }
  if (descriptor == OCI_DTYPE_LOB) {
    boolean temporary = FALSE;
    if (OCILobIsTemporary(env, err, static_cast<OCILobLocator*>(pointer), &temporary) == OCI_SUCCESS &&
        temporary) {
      OCILobFreeTemporary(session_.svc(), err, static_cast<OCILobLocator*>(pointer));
    }
  }
  if (descriptor != 0) {
    OCIDescriptorFree(pointer, descriptor);
  } else if (def.DataType == SQLT_BIN || def.DataType == SQLT_LBI) {
    if (pointer != nullptr) OCIRawResize(env, err, 0, reinterpret_cast<OCIRaw**>(&pointer));
  } else if (!inline_value && pointer != nullptr) {
    OCIStringResize(env, err, 0, reinterpret_cast<OCIString**>(&pointer));
  }
  return ok;
}

}  // namespace varnadp
