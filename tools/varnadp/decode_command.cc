// varnadp decode and varnadp check: streams to JSON Lines, or only read and
// reported record by record.
#include <cstdio>

#include "commands.h"
#include "pipeline.h"
#include "run_support.h"

namespace varnadp {
namespace {

void DecodeBatch(Converter& converter, Batch& batch, bool write, bool keep_going) {
  for (const Batch::Record& record : batch.records) {
    const std::string_view bytes(batch.data.data() + record.begin, record.size);
    RecordError error;
    const bool ok = converter.Decode(bytes, write ? &batch.out : nullptr, &error, record.as_read);
    AppendTrace(converter, &batch.messages);
    if (ok) {
      ++batch.converted;
      continue;
    }
    ReportRecord(record, error, &batch.messages);
    batch.bad.append(batch.data.data() + record.begin, record.stored);
    ++batch.failed;
    if (!keep_going) {
      batch.stop = true;
      return;
    }
  }
}

int RunStream(const CommandOptions& options, bool check) {
  RunFiles files;
  std::vector<std::unique_ptr<Converter>> converters;
  if (int status = Prepare(options, &files, &converters, !check); status != kExitOk) return status;
  const bool keep_going = check || !options.bad.empty();
  Pipeline pipeline(converters,
                    [check, keep_going](Converter& c, Batch& b) { DecodeBatch(c, b, !check, keep_going); },
                    check ? nullptr : &files.out, &files.bad);
  StreamSplitter records(converters[0]->shape(), options.setup.special);
  std::string data;
  std::string error;
  FeedPipeline(records, files.input, &data, pipeline, &error);
  const int status = FinishRun(pipeline, files, error);
  if (check && status != kExitSetup) {
    std::fprintf(stderr, "varnadp: %lld records, %lld good, %lld bad\n", records.records(),
                 pipeline.written(), pipeline.failed());
  }
  return status;
}

}  // namespace

int RunDecode(const CommandOptions& options) { return RunStream(options, false); }

int RunCheck(const CommandOptions& options) { return RunStream(options, true); }

}  // namespace varnadp
