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

  // Appends the instance (an object with its null structure, or a
  // collection) to *out. False with error() set when an OCI call fails.
  bool Write(void* instance, void* null_struct, std::string* out);

  const std::string& error() const { return error_; }

 private:
  bool WriteObject(const Shape& shape, void* instance, void* null_struct, std::string* out);
  bool WriteCollection(const Shape& shape, OCIColl* coll, std::string* out);
  bool WriteItem(const Shape& item, void* element, void* element_ind, std::string* out);
  bool IsNullItem(OCIColl* coll);
  bool Oracle(sword status, const char* call);

  OciSession& session_;
  const Shape& root_;
  std::string error_;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_JSON_WRITER_H
