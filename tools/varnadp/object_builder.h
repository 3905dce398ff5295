// Builds an Oracle instance of a type from one JSON value through OCI calls:
// an object from a JSON object keyed by attribute name, a collection from an
// array. The caller frees what Build made with Free.
//
// An object of a type without large objects is made once and made over for
// every record: every indicator null again and every collection emptied, so
// that it holds exactly what a new object filled from the record would.
#ifndef TOOLS_VARNADP_OBJECT_BUILDER_H
#define TOOLS_VARNADP_OBJECT_BUILDER_H

#include <string>
#include <vector>

#include <oci.h>
#include <simdjson.h>

#include "scalar_values.h"
#include "shape.h"

namespace varnadp {

class OciSession;

class ObjectBuilder {
 public:
  ObjectBuilder(OciSession& session, const Shape& root);
  ~ObjectBuilder();
  ObjectBuilder(const ObjectBuilder&) = delete;
  ObjectBuilder& operator=(const ObjectBuilder&) = delete;

  // A new instance (and its null structure; NULL for a collection) holding
  // the value. False with error() set: a JSON syntax error, an attribute that
  // does not exist or holds the wrong JSON kind, a value that does not
  // convert; what was made is freed then.
  bool Build(simdjson::ondemand::value json, void** instance, OCIInd** ind);
  void Free(void* instance);

  const std::string& error() const { return error_; }

 private:
  bool FillObject(simdjson::ondemand::value json, const Shape& shape, void* instance,
                  void* null_struct);
  bool FillCollection(simdjson::ondemand::value json, const Shape& shape, OCIColl* coll);
  bool GetAttribute(const Shape& member, void* instance, void* null_struct, OCIType* tdo,
                    void** attr_null_struct, void** slot);
  bool SetAttribute(simdjson::ondemand::value json, const Shape& member, void* instance,
                    void* null_struct, OCIType* tdo);
  bool AppendItem(simdjson::ondemand::value json, const Shape& item, OCIColl* coll);
  bool AppendScalarItem(simdjson::ondemand::value json, const Shape& item, OCIColl* coll);
  bool NewInstance(const Shape& shape, void** instance, OCIInd** ind);
  bool BlankItem(const Shape& item, void** instance, OCIInd** ind);
  bool MakeOver(void* instance, OCIInd* ind);
  bool EmptyCollections(const Shape& shape, void* instance, void* null_struct);

  bool Read(simdjson::ondemand::value& json, JsonKind* kind, std::string_view* text);
  bool JsonError(simdjson::error_code code);
  bool Fail(const std::string& what);
  bool Oracle(sword status, const char* call);
  std::string Path() const;

  OciSession& session_;
  const Shape& root_;
  std::string error_;
  // Where the conversion is, for messages: an attribute, or an item's index.
  struct Step {
    const Shape* shape;
    long index;
  };
  std::vector<Step> path_;
  // A null object of each object item type met, made once: items are
  // appended as a copy of it and filled where they stand in the collection.
  struct Blank {
    const Shape* shape;
    void* instance;
    OCIInd* ind;
  };
  std::vector<Blank> blanks_;
  // The text or RAW each scalar item type is assigned to before it is
  // appended (a copy goes in), kept from item to item.
  struct ItemValue {
    const Shape* shape;
    void* value;
  };
  std::vector<ItemValue> item_values_;
  void** ItemValueOf(const Shape& item);
  // The object made over for every record, when the type allows it.
  bool reusable_ = false;
  void* kept_ = nullptr;
  OCIInd* kept_ind_ = nullptr;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_OBJECT_BUILDER_H
