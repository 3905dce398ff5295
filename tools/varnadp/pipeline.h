// Runs batches of records through the workers' converters and writes their
// results in input order: with one worker on the calling thread, with more
// on threads of their own, a bounded number of batches in flight so that
// memory does not grow with the input.
#ifndef TOOLS_VARNADP_PIPELINE_H
#define TOOLS_VARNADP_PIPELINE_H

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "converter.h"
#include "io.h"

namespace varnadp {

struct Batch {
  struct Record {
    size_t begin;        // in data
    size_t size;         // without terminator or line feed
    size_t stored;       // in data, with its ending
    long long number;    // 1-based, in the input
    long long offset;    // of its first byte in the input
    // The reader takes the record as received: the splitter scanned it and
    // found nothing that reads differently (decode only).
    bool as_read = false;
  };
  std::string data;      // the records' bytes as received, each followed by its ending
  std::vector<Record> records;

  // Results, filled by a worker.
  std::string out;       // the converted records, in order
  std::string bad;       // the failed records as received
  std::string messages;  // lines for standard error, in order
  long long failed = 0;
  long long converted = 0;
  bool stop = false;     // a record failed and the run ends before it
  bool done = false;

  // Empties it for the next records, keeping its storage.
  void Clear() {
    data.clear();
    records.clear();
    out.clear();
    bad.clear();
    messages.clear();
    failed = 0;
    converted = 0;
    stop = false;
    done = false;
  }
};

using BatchWork = std::function<void(Converter&, Batch&)>;

class Pipeline {
 public:
  Pipeline(std::vector<std::unique_ptr<Converter>>& converters, BatchWork work, OutputFile* out,
           OutputFile* bad);
  ~Pipeline();
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  // Hands a batch over and writes the finished ones at the head of the
  // line. False once the run has to end (a record failed without a file for
  // bad records, or the output failed); error() then says why, when it was
  // the output.
  bool Submit(std::unique_ptr<Batch> batch);
  // An empty batch to fill: one written before (its storage kept), or a new one.
  std::unique_ptr<Batch> NewBatch();
  // Waits for every batch and writes it; false as for Submit.
  bool Finish();

  long long failed() const { return failed_; }
  long long written() const { return written_; }
  bool stopped() const { return stopped_; }
  const std::string& error() const { return error_; }

 private:
  void WorkerLoop(Converter* converter);
  bool WriteReady(bool wait_for_all);
  bool WriteBatch(Batch& batch);
  void Recycle(std::unique_ptr<Batch> batch);

  std::vector<std::unique_ptr<Converter>>& converters_;
  BatchWork work_;
  OutputFile* out_;
  OutputFile* bad_;
  std::vector<std::thread> threads_;
  std::mutex mutex_;
  std::condition_variable ready_;   // a batch was done
  std::condition_variable queued_;  // a batch waits for a worker, or the end came
  std::deque<Batch*> waiting_;
  std::deque<std::unique_ptr<Batch>> in_flight_;  // in input order
  std::vector<std::unique_ptr<Batch>> spare_;     // written, to be filled again
  bool closing_ = false;
  bool stopped_ = false;
  long long failed_ = 0;
  long long written_ = 0;
  std::string error_;
};

}  // namespace varnadp

#endif  // TOOLS_VARNADP_PIPELINE_H
