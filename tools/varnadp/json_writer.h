// Writes an Oracle instance of a type as one JSON value: objects keyed by
// attribute name in declaration order, collections as arrays, SQL NULL as
// null, scalars in the forms scalar_values.h gives them.
#ifndef TOOLS_VARNADP_JSON_WRITER_H
#define TOOLS_VARNADP_JSON_WRITER_H

#include <string>

#include <oci.h>

#include "shape.h"

namespace varnadp {

class OciSession;

class JsonWriter {
 public:
  JsonWriter(OciSession& session, const Shape& root) : session_(session), root_(root) {}

  // A value and its null structure (NULL for a collection).
  struct Value {
    void* instance = nullptr;
    void* null_struct = nullptr;
  };

  // Appends the value to *out. With `lobs`, the same object as stored and
  // fetched again after the second pass, the contents of CLOBs and BLOBs come
  // from there and everything else from `value`, so that a record reads the
  // same whether it had large objects or not (a stored CHAR, say, would come
  // back blank-padded). False with error() set when an OCI call fails.
  bool Write(Value value, std::string* out, const Value* lobs = nullptr);

  const std::string& error() const { return error_; }

 private:
  bool WriteObject(const Shape& shape, Value value, const Value* lobs, std::string* out);
  bool WriteCollection(const Shape& shape, OCIColl* coll, OCIColl* lob_coll, std::string* out);
  bool WriteItem(const Shape& item, Value value, const Value* lobs, std::string* out);
  bool GetAttribute(const Shape& object, const Shape& member, Value value, OCIInd* status,
                    Value* attribute, void** slot);
  bool GetItem(OCIColl* coll, sb4 index, bool* exists, Value* item);
  bool IsNullItem(OCIColl* coll);
  bool Oracle(sword status, const char* call);

  OciSession& session_;
  const Shape& root_;
  std::string error_;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_JSON_WRITER_H
