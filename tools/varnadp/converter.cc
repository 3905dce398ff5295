#include "converter.h"

#include <cctype>
#include <cstdlib>
#include <cstring>

#include <coldef.h>

namespace varnadp {
namespace {

constexpr char kOffsetLine[] = "*ERR: at offset ";

// The offset of the adapter's "*ERR: at offset N" line, when the trace has one.
long OffsetFromTrace(const char* trace) {
  const char* line = std::strstr(trace, kOffsetLine);
  if (line == nullptr) return -1;
  return std::strtol(line + sizeof kOffsetLine - 1, nullptr, 10);
}

}  // namespace

Converter::~Converter() {
  writer_.reset();
  builder_.reset();
  lob_table_.reset();
  if (ctx_ != nullptr) adpDestroyContext(ctx_, &trace_);
  shape_.reset();
  coldefFree(list_);
}

std::string Converter::NormalizedTypeName(const std::string& given) const {
  // Unquoted names are upper case, as Oracle stores them; quoted ones keep
  // their case and lose their quotes.
  std::string name;
  bool quoted = false;
  for (char c : given) {
    if (c == '"') {
      quoted = !quoted;
      continue;
    }
    name.push_back(quoted ? c : static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  }
  return name;
}

bool Converter::Open(const RunSetup& setup, const std::string& database) {
  if (setup.trace_level >= 0) {
    traced_ = true;
    trace_.SetLevel(setup.trace_level);
  }
  // Kept per record, so that workers' lines come out in input order and an
  // offset line can be found.
  trace_.CaptureToBuffer();
  if (!session_.Open(database)) {
    setup_error_ = session_.error();
    return false;
  }
  if (!session_.RunScript(setup.schema_text, setup.schema_name)) {
    setup_error_ = session_.error();
    return false;
  }
  const std::string type_name = NormalizedTypeName(setup.type_name);
  const int rc = coldefDescribe(session_.env(), session_.err(), session_.svc(), type_name.c_str(), &list_);
  if (rc != COLDEF_OK) {
    if (rc == COLDEF_E_ORACLE) {
      setup_error_ = "type " + type_name + ": " + session_.OracleError();
    } else if (rc == COLDEF_E_NOT_OBJECT) {
      setup_error_ = "type " + type_name + " is neither an object type nor a collection type";
    } else if (rc == COLDEF_E_CYCLE) {
      setup_error_ = "type " + type_name + " contains itself";
    } else {
      setup_error_ = "type " + type_name + " cannot be described (code " + std::to_string(rc) + ")";
    }
    return false;
  }
  if (list_ == nullptr) {
    setup_error_ = "type " + type_name + " has no attributes";
    return false;
  }
  shape_ = BuildShape(list_, type_name, session_);
  if (!shape_) {
    setup_error_ = session_.error();
    return false;
  }
  special_ = setup.special;
  DB_SPECIAL_STRINGS special;
  special_.Fill(&special);
  if (const int created = adpCreateContext(&ctx_, &trace_, &special); created != 0) {
    setup_error_ = "the adapter context cannot be created (code " + std::to_string(created) + ")";
    return false;
  }
  builder_ = std::make_unique<ObjectBuilder>(session_, *shape_);
  writer_ = std::make_unique<JsonWriter>(session_, *shape_);
  lobs_ = HasLobs(*shape_);
  if (HasBinary(*shape_)) scanner_ = std::make_unique<RecordScanner>(*shape_, special_);
  if (lobs_ && shape_->kind == Shape::Kind::kObject) {
    lob_table_ = std::make_unique<LobTable>(session_, *shape_);
    if (!lob_table_->Create()) {
      setup_error_ = "the table for the second pass cannot be made: " + session_.error();
      return false;
    }
  }
  return true;
}

bool Converter::AdapterFailed(int rc, RecordError* error) {
  CKelException last(0, "");
  KelGetLastException(&last);
  error->code = rc;
  error->text = "code " + std::to_string(rc) + " in " + last.GetFunc() + ": " + last.GetText();
  error->offset = OffsetFromTrace(trace_.GetBuffer());
  // Oracle's own words, when an OCI call failed.
  const char* oracle = std::strstr(trace_.GetBuffer(), "ORA-");
  if (oracle != nullptr) {
    const char* end = std::strchr(oracle, '\n');
    error->text += " (" + std::string(oracle, end != nullptr ? static_cast<size_t>(end - oracle) : std::strlen(oracle)) + ")";
  }
  return false;
}

bool Converter::Encode(simdjson::ondemand::value json, std::string* out, RecordError* error) {
  trace_.ClearBuffer();
  void* instance = nullptr;
  OCIInd* ind = nullptr;
  if (!builder_->Build(json, &instance, &ind)) {
    error->text = builder_->error();
    return false;
  }
  Column_Def* defs = list_;
  const int rc = adpProcessObject(ctx_, &trace_, &stream_, &defs, session_.env(), session_.err(),
                                  session_.svc(), instance, ind, 0, shape_->tdo);
  builder_->Free(instance);
  if (rc != 0) {
    stream_.SetSize(0);
    return AdapterFailed(rc, error);
  }
  try {
    // Page by page, appended where they stand: no room zeroed first.
    out->reserve(out->size() + stream_.GetSize() + special_.terminator.size());
    stream_.Seek(0, 0);
    for (;;) {
      const CKelStreamPage& page = stream_.ReadPage();
      if (page.GetSize() == 0) break;
      out->append(static_cast<const char*>(page.GetData()), page.GetSize());
    }
    stream_.SetSize(0);
  } catch (const CKelException& e) {
    error->code = e.GetRC();
    error->text = std::string("the stream failed: ") + e.GetText();
    return false;
  }
  out->append(special_.terminator);
  return true;
}



// The record in the form the reader takes (see scanner_); the record itself
// when nothing needs to change, or when it is not laid out as the writer lays
// a record out.
std::string_view Converter::ReaderForm(std::string_view record) {
  edits_.clear();
  if (!scanner_) return record;
  marks_.clear();
  size_t end = 0;
  if (scanner_->Scan(record, 0, true, &end, &marks_) != RecordScanner::Result::kEnd) return record;
  const std::string& delimiter = special_.delimiter;
  const bool replace = delimiter != "|";
  if (marks_.null_raws.empty() && (!replace || marks_.length_ends.empty())) return record;
  reader_form_.clear();
  size_t from = 0;
  size_t raw = 0;
  size_t bar = 0;
  const std::vector<size_t>& raws = marks_.null_raws;
  const std::vector<size_t>& bars = marks_.length_ends;
  while (raw < raws.size() || (replace && bar < bars.size())) {
    const bool take_raw = raw < raws.size() && (!replace || bar == bars.size() || raws[raw] < bars[bar]);
    const size_t at = take_raw ? raws[raw++] : bars[bar++];
    reader_form_.append(record.data() + from, at - from);
    edits_.push_back({reader_form_.size(), take_raw ? -1L : static_cast<long>(delimiter.size()) - 1});
    if (!take_raw) reader_form_.append(delimiter);
    from = at + 1;
  }
  reader_form_.append(record.data() + from, record.size() - from);
  return reader_form_;
}

// An offset in the record as read back to one in the record as received.
long Converter::OffsetInRecord(long offset) const {
  if (offset < 0) return offset;
  long shift = 0;
  for (const Edit& edit : edits_) {
    if (static_cast<long>(edit.at) >= offset) break;
    shift += edit.delta;
  }
  return offset - shift;
}

bool Converter::Decode(std::string_view received, std::string* out, RecordError* error, bool as_read) {
  trace_.ClearBuffer();
  if (as_read) edits_.clear();
  const std::string_view record = as_read ? received : ReaderForm(received);
  const void* buffer = record.data();
  Column_Def* defs = list_;
  void* instance = nullptr;
  short* ind = nullptr;
  short ind_count = 0;
  int lobs_pending = 0;
  const int rc = adpProcessBuffer(ctx_, &trace_, &buffer, record.size(), &defs, session_.env(),
                                  session_.err(), session_.svc(), &instance, &ind, &ind_count,
                                  shape_->tdo, &lobs_pending);
  if (rc != 0) {
    AdapterFailed(rc, error);
    error->offset = OffsetInRecord(error->offset);
    return false;
  }
  const size_t consumed = static_cast<size_t>(static_cast<const char*>(buffer) - record.data());
  if (consumed != record.size()) {
    error->text = "the object ends before the record does; " +
                  std::to_string(record.size() - consumed) + " bytes are left";
    error->offset = OffsetInRecord(static_cast<long>(consumed));
    return false;
  }
  // A new object is atomically null: the record makes it present.
  if (shape_->kind == Shape::Kind::kObject && ind != nullptr) ind[0] = OCI_IND_NOTNULL;
  if (lobs_pending == 0) {
    if (out == nullptr) return true;
    const size_t at = out->size();
    if (!writer_->Write({instance, ind}, out)) {
      out->resize(at);
      error->text = writer_->error();
      return false;
    }
    out->push_back('\n');
    return true;
  }
  if (!lob_table_) {
    error->text = "the large objects of a top-level collection cannot be stored for the second pass";
    return false;
  }
  if (!lob_table_->Insert(instance, ind)) {
    error->text = "the object cannot be stored for the second pass: " + session_.error();
    lob_table_->Discard();
    return false;
  }
  const int written = adpWriteLobs(ctx_, &trace_, lob_table_->SelectForUpdate().c_str());
  if (written != 0) {
    lob_table_->Discard();
    AdapterFailed(written, error);
    error->offset = OffsetInRecord(error->offset);
    return false;
  }
  void* stored = nullptr;
  void* stored_ind = nullptr;
  bool ok = lob_table_->Fetch(&stored, &stored_ind);
  if (!ok) {
    error->text = "the stored object cannot be fetched: " + session_.error();
  } else if (out != nullptr) {
    const size_t at = out->size();
    const JsonWriter::Value lobs{stored, stored_ind};
    ok = writer_->Write({instance, ind}, out, &lobs);
    if (ok) {
      out->push_back('\n');
    } else {
      out->resize(at);
      error->text = writer_->error();
    }
  }
  lob_table_->Discard();
  return ok;
}

}  // namespace varnadp
