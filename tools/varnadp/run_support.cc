#include "run_support.h"

#include <cstdio>

namespace varnadp {
namespace {

constexpr size_t kChunk = 1 << 20;            // bytes read at a time
constexpr size_t kBatchBytes = 1 << 20;       // a batch holds about this much
constexpr size_t kBatchRecords = 2048;        // and at most this many records
constexpr size_t kPadding = simdjson::SIMDJSON_PADDING;

// Drops what the batches took from the front of data before reading more.
bool Refill(InputFile& input, std::string* data, size_t* pos, std::string* error) {
  if (*pos > 0) {
    data->erase(0, *pos);
    *pos = 0;
  }
  return input.ReadMore(data, kChunk, kPadding, error);
}

void AddRecord(Batch* batch, std::string_view bytes, size_t size, long long number, long long offset,
               bool as_read = false) {
  const size_t begin = batch->data.size();
  batch->data.append(bytes.data(), bytes.size());
  batch->records.push_back({begin, size, bytes.size(), number, offset, as_read});
}

}  // namespace

int SetupFailure(const std::string& message) {
  std::fprintf(stderr, "varnadp: %s\n", message.c_str());
  return kExitSetup;
}

int Prepare(const CommandOptions& options, RunFiles* files,
            std::vector<std::unique_ptr<Converter>>* converters, bool output) {
  std::string error;
  if (!options.setup.special.Validate(&error)) return SetupFailure(error);
  if (!files->input.Open(options.input, &error)) return SetupFailure(error);
  if (output && !files->out.Open(options.output, &error)) return SetupFailure(error);
  if (!options.bad.empty() && !files->bad.Open(options.bad, &error)) return SetupFailure(error);
  const int jobs = options.jobs > 0 ? options.jobs : 1;
  for (int i = 0; i < jobs; ++i) {
    auto converter = std::make_unique<Converter>();
    // Each worker has a database of its own.
    if (!converter->Open(options.setup, "VARNADP_WORKER_" + std::to_string(i))) {
      return SetupFailure(converter->setup_error());
    }
    converters->push_back(std::move(converter));
  }
  return kExitOk;
}

void AppendTrace(const Converter& converter, std::string* messages) {
  messages->append(converter.TraceText());
}

void ReportRecord(const Batch::Record& record, const RecordError& error, std::string* messages) {
  const long long offset = record.offset + (error.offset > 0 ? error.offset : 0);
  messages->append("varnadp: record " + std::to_string(record.number) + " (byte " +
                   std::to_string(offset) + "): " + error.text + "\n");
}

int FinishRun(Pipeline& pipeline, RunFiles& files, const std::string& input_error) {
  const bool finished = pipeline.Finish();
  std::string error = input_error;
  if (!pipeline.error().empty()) error = pipeline.error();
  std::string close_error;
  if (!files.out.Close(&close_error) && error.empty()) error = close_error;
  if (!files.bad.Close(&close_error) && error.empty()) error = close_error;
  if (!error.empty()) return SetupFailure(error);
  if (!finished || pipeline.failed() > 0) return kExitRecords;
  return kExitOk;
}

bool LineSplitter::Next(InputFile& input, std::string* data, Batch* made, std::string* error) {
  for (;;) {
    const size_t eol = data->find('\n', pos_);
    if (eol == std::string::npos && !input.at_end()) {
      if (!Refill(input, data, &pos_, error)) return false;
      continue;
    }
    const size_t end = eol == std::string::npos ? data->size() : eol;
    if (end == pos_ && eol == std::string::npos) break;  // the end of the input
    std::string_view line(data->data() + pos_, end - pos_);
    const long long offset = consumed_;
    const size_t taken = (eol == std::string::npos ? end : eol + 1) - pos_;
    pos_ += taken;
    consumed_ += static_cast<long long>(taken);
    size_t size = line.size();
    if (size > 0 && line[size - 1] == '\r') --size;
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) continue;
    AddRecord(made, line.substr(0, size), size, ++records_, offset);
    if (made->records.size() >= kBatchRecords || made->data.size() >= kBatchBytes) break;
  }
  if (made->records.empty()) return false;
  // simdjson reads up to this many bytes beyond a value.
  made->data.reserve(made->data.size() + kPadding);
  return true;
}

bool StreamSplitter::Next(InputFile& input, std::string* data, Batch* made, std::string* error) {
  const std::string& terminator = special_.terminator;
  for (;;) {
    const std::string_view text(*data);
    if (pos_ == text.size() && input.at_end()) break;
    size_t end = 0;
    marks_.clear();
    const RecordScanner::Result result = scanner_.Scan(text, pos_, input.at_end(), &end, &marks_);
    if (result == RecordScanner::Result::kNoMatch) {
      end = special_.FindRecordEnd(text, pos_);
      if (end == text.size() && !input.at_end()) {
        if (!Refill(input, data, &pos_, error)) return false;
        continue;
      }
    } else if (result == RecordScanner::Result::kNeedMore) {
      if (!Refill(input, data, &pos_, error)) return false;
      continue;
    }
    const size_t next = end == text.size() ? end : end + terminator.size();
    const long long offset = consumed_;
    // The converter scans again only a record that reads differently from
    // how it came: one that is not laid out as the writer lays records out,
    // or whose binary values hold bars that change.
    const bool as_read = result == RecordScanner::Result::kEnd && marks_.null_raws.empty() &&
                         (special_.delimiter == "|" || marks_.length_ends.empty());
    AddRecord(made, text.substr(pos_, next - pos_), end - pos_, ++records_, offset, as_read);
    consumed_ += static_cast<long long>(next - pos_);
    pos_ = next;
    if (made->records.size() >= kBatchRecords || made->data.size() >= kBatchBytes) break;
  }
  return !made->records.empty();
}

}  // namespace varnadp
