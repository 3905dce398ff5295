// What the subcommands share: opening the run's files and workers, cutting
// the input into batches of records, reporting records and ending the run.
#ifndef TOOLS_VARNADP_RUN_SUPPORT_H
#define TOOLS_VARNADP_RUN_SUPPORT_H

#include <memory>
#include <string>
#include <vector>

#include "commands.h"
#include "io.h"
#include "pipeline.h"
#include "record_scanner.h"

namespace varnadp {

struct RunFiles {
  InputFile input;
  OutputFile out;
  OutputFile bad;
};

// Opens the files the options name (no output file when `output` is false)
// and one converter per job. kExitOk, or kExitSetup after a message.
int Prepare(const CommandOptions& options, RunFiles* files,
            std::vector<std::unique_ptr<Converter>>* converters, bool output = true);

// Prints "varnadp: <message>" and returns kExitSetup.
int SetupFailure(const std::string& message);

// The converter's trace lines of its last record, when a trace level is set.
void AppendTrace(const Converter& converter, std::string* messages);

// "varnadp: record N (byte B): text" for a record that failed.
void ReportRecord(const Batch::Record& record, const RecordError& error, std::string* messages);

// Waits for the pipeline, closes the files and gives the exit status.
int FinishRun(Pipeline& pipeline, RunFiles& files, const std::string& input_error);

// Cuts JSON Lines into batches; blank lines are skipped.
class LineSplitter {
 public:
  // Fills the empty *batch with the next records; false at the end of the input or on a read
  // error (*error set).
  bool Next(InputFile& input, std::string* data, Batch* batch, std::string* error);
  long long consumed() const { return consumed_; }
  long long records() const { return records_; }

 private:
  size_t pos_ = 0;            // in data
  long long consumed_ = 0;    // input offset of data[pos_]
  long long records_ = 0;
};

// Cuts a stream into batches of records: where the type's fields end (see
// RecordScanner), or else at the first terminator no release stands before.
class StreamSplitter {
 public:
  StreamSplitter(const Shape& shape, const SpecialStrings& special)
      : scanner_(shape, special), special_(special) {}
  bool Next(InputFile& input, std::string* data, Batch* batch, std::string* error);
  long long consumed() const { return consumed_; }
  long long records() const { return records_; }

 private:
  RecordScanner scanner_;
  RecordScanner::BinaryMarks marks_;
  const SpecialStrings& special_;
  size_t pos_ = 0;
  long long consumed_ = 0;
  long long records_ = 0;
};

// Hands the splitter's batches to the pipeline, with the progress line,
// until the input ends or the run has to; *error is set when the input
// could not be read.
template <typename Splitter>
void FeedPipeline(Splitter& splitter, InputFile& input, std::string* data, Pipeline& pipeline,
                  std::string* error) {
  Progress progress(input.size());
  std::unique_ptr<Batch> batch = pipeline.NewBatch();
  while (splitter.Next(input, data, batch.get(), error)) {
    progress.Update(splitter.consumed(), splitter.records());
    if (!pipeline.Submit(std::move(batch))) break;
    batch = pipeline.NewBatch();
  }
  progress.Finish();
}

}  // namespace varnadp

#endif  // TOOLS_VARNADP_RUN_SUPPORT_H
