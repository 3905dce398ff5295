// Everything one worker converts records with: its OCI session on an
// in-memory database of its own (the schema run on it), the type's Column_Def
// list and shape, an adapter context with the run's special strings, and a
// trace that keeps each record's lines.
#ifndef TOOLS_VARNADP_CONVERTER_H
#define TOOLS_VARNADP_CONVERTER_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <simdjson.h>
#include <varnadp.h>

#include <host/kel.h>

#include "lob_table.h"
#include "object_builder.h"
#include "json_writer.h"
#include "oci_session.h"
#include "record_scanner.h"
#include "shape.h"
#include "special_strings.h"

namespace varnadp {

struct RunSetup {
  std::string schema_text;
  std::string schema_name;  // for messages
  std::string type_name;    // as given: upper-cased unless quoted
  SpecialStrings special;
  int trace_level = -1;     // < 0: no trace
};

// Why a record failed: a message, and for stream errors the adapter's code
// and the offset in the record where reading stopped (-1 when unknown).
struct RecordError {
  std::string text;
  int code = 0;
  long offset = -1;
};

class Converter {
 public:
  Converter() = default;
  ~Converter();
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // Opens the session on database `database`, runs the schema and prepares
  // the type. False with setup_error() set.
  bool Open(const RunSetup& setup, const std::string& database);
  const std::string& setup_error() const { return setup_error_; }

  // Builds the instance of one JSON value and appends its stream and the
  // terminator to *out.
  bool Encode(simdjson::ondemand::value json, std::string* out, RecordError* error);
  // Reads one record (without its terminator) and appends its JSON and a
  // line feed to *out; with out NULL it only reads and checks.
  // `as_read`: the record is known to read as received (see ReaderForm).
  bool Decode(std::string_view received, std::string* out, RecordError* error, bool as_read = false);

  const Column_Def* list() const { return list_; }
  const Shape& shape() const { return *shape_; }
  simdjson::ondemand::parser& json_parser() { return json_parser_; }
  // The trace lines of the last record (empty unless a trace level was set).
  const char* TraceText() const { return traced_ ? trace_.GetBuffer() : ""; }

 private:
  bool AdapterFailed(int rc, RecordError* error);
  std::string_view ReaderForm(std::string_view record);
  long OffsetInRecord(long offset) const;
  std::string NormalizedTypeName(const std::string& given) const;

  OciSession session_;
  Column_Def* list_ = nullptr;
  std::unique_ptr<Shape> shape_;
  VARNADP* ctx_ = nullptr;
  CKelTrace trace_;
  CKelStream stream_{0, nullptr, nullptr, 0};
  std::unique_ptr<ObjectBuilder> builder_;
  std::unique_ptr<JsonWriter> writer_;
  std::unique_ptr<LobTable> lob_table_;
  bool lobs_ = false;
  bool traced_ = false;
  SpecialStrings special_;
  // The reader takes binary values apart otherwise than the writer lays them
  // out: it does not step over a null RAW's "|", and after a count (or for a
  // null BLOB) it steps over the delimiter, whatever was written there. A
  // record with binary values is put in the form the reader takes first.
  std::unique_ptr<RecordScanner> scanner_;
  RecordScanner::BinaryMarks marks_;
  struct Edit {
    size_t at;   // in the record as read
    long delta;  // bytes the edit added there
  };
  std::vector<Edit> edits_;
  std::string reader_form_;
  simdjson::ondemand::parser json_parser_;
  std::string setup_error_;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_CONVERTER_H
