// varnadp encode: JSON objects (JSON Lines, or one array) to the stream.
#include <cstdio>
#include <utility>

#include "commands.h"
#include "pipeline.h"
#include "run_support.h"

namespace varnadp {
namespace {

// Converts every JSON line of the batch; a record that fails is reported,
// kept for the bad-record file, and ends the batch unless the run goes on.
void EncodeBatch(Converter& converter, Batch& batch, bool keep_going) {
  simdjson::ondemand::parser& parser = converter.json_parser();
  for (const Batch::Record& record : batch.records) {
    const char* line = batch.data.data() + record.begin;
    const simdjson::padded_string_view json(line, record.size, batch.data.capacity() - record.begin);
    RecordError error;
    bool ok = false;
    simdjson::ondemand::document document;
    simdjson::ondemand::value value;
    if (auto code = parser.iterate(json).get(document)) {
      error.text = std::string("bad JSON: ") + simdjson::error_message(code);
    } else if (auto code = document.get_value().get(value)) {
      error.text = std::string("bad JSON: ") + simdjson::error_message(code);
    } else {
      ok = converter.Encode(value, &batch.out, &error);
      const char* location = nullptr;
      if (ok && document.current_location().get(location) == simdjson::SUCCESS) {
        ok = false;
        error.text = "bad JSON: more than one value on the line";
        error.offset = location - line;
      }
    }
    if (!ok && error.offset < 0) {
      // Where the parser stopped, for syntax errors.
      const char* location = nullptr;
      if (document.current_location().get(location) == simdjson::SUCCESS && location >= line &&
          location < line + record.size) {
        error.offset = location - line;
      }
    }
    AppendTrace(converter, &batch.messages);
    if (ok) {
      ++batch.converted;
      continue;
    }
    ReportRecord(record, error, &batch.messages);
    batch.bad.append(line, record.size).push_back('\n');
    ++batch.failed;
    if (!keep_going) {
      batch.stop = true;
      return;
    }
  }
}

// One array of objects: read whole and converted on this thread.
int EncodeArray(Converter& converter, InputFile& input, std::string& data, OutputFile& out,
                OutputFile& bad, bool keep_going) {
  std::string error;
  while (!input.at_end()) {
    if (!input.ReadMore(&data, 1 << 20, simdjson::SIMDJSON_PADDING, &error)) return SetupFailure(error);
  }
  data.reserve(data.size() + simdjson::SIMDJSON_PADDING);
  const simdjson::padded_string_view json(data.data(), data.size(), data.capacity());
  simdjson::ondemand::document document;
  simdjson::ondemand::array array;
  if (auto code = converter.json_parser().iterate(json).get(document)) {
    return SetupFailure(input.name() + ": bad JSON: " + simdjson::error_message(code));
  }
  if (auto code = document.get_array().get(array)) {
    return SetupFailure(input.name() + ": bad JSON: " + simdjson::error_message(code));
  }
  long long number = 0;
  long long failed = 0;
  std::string text;
  for (auto item : array) {
    ++number;
    simdjson::ondemand::value value;
    RecordError record_error;
    text.clear();
    bool ok;
    if (auto code = std::move(item).get(value)) {
      // The rest of the array cannot be read after a syntax error.
      std::fprintf(stderr, "varnadp: record %lld: bad JSON: %s\n", number, simdjson::error_message(code));
      return kExitRecords;
    }
    ok = converter.Encode(value, &text, &record_error);
    std::string messages;
    AppendTrace(converter, &messages);
    std::fputs(messages.c_str(), stderr);
    if (ok) {
      if (!out.Write(text, &error)) return SetupFailure(error);
      continue;
    }
    ++failed;
    std::fprintf(stderr, "varnadp: record %lld: %s\n", number, record_error.text.c_str());
    if (!keep_going) return kExitRecords;
  }
  if (!out.Close(&error)) return SetupFailure(error);
  if (!bad.Close(&error)) return SetupFailure(error);
  return failed == 0 ? kExitOk : kExitRecords;
}

}  // namespace

int RunEncode(const CommandOptions& options) {
  RunFiles files;
  std::vector<std::unique_ptr<Converter>> converters;
  if (int status = Prepare(options, &files, &converters); status != kExitOk) return status;
  const bool keep_going = !options.bad.empty();
  std::string data;
  std::string error;
  // The first byte that is not blank tells JSON Lines from an array.
  size_t first = 0;
  for (;;) {
    while (first < data.size() && (data[first] == ' ' || data[first] == '\t' || data[first] == '\r' ||
                                   data[first] == '\n')) {
      ++first;
    }
    if (first < data.size() || files.input.at_end()) break;
    if (!files.input.ReadMore(&data, 1 << 20, simdjson::SIMDJSON_PADDING, &error)) return SetupFailure(error);
  }
  if (first < data.size() && data[first] == '[') {
    return EncodeArray(*converters[0], files.input, data, files.out, files.bad, keep_going);
  }
  Pipeline pipeline(converters,
                    [keep_going](Converter& c, Batch& b) { EncodeBatch(c, b, keep_going); },
                    &files.out, &files.bad);
  LineSplitter lines;
  FeedPipeline(lines, files.input, &data, pipeline, &error);
  return FinishRun(pipeline, files, error);
}

}  // namespace varnadp
