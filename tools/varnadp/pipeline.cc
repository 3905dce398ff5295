#include "pipeline.h"

#include <cstdio>

namespace varnadp {

Pipeline::Pipeline(std::vector<std::unique_ptr<Converter>>& converters, BatchWork work,
                   OutputFile* out, OutputFile* bad)
    : converters_(converters), work_(std::move(work)), out_(out), bad_(bad) {
  if (converters_.size() > 1) {
    for (auto& converter : converters_) threads_.emplace_back(&Pipeline::WorkerLoop, this, converter.get());
  }
}

Pipeline::~Pipeline() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    closing_ = true;
    waiting_.clear();
  }
  queued_.notify_all();
  for (std::thread& thread : threads_) thread.join();
}

void Pipeline::WorkerLoop(Converter* converter) {
  for (;;) {
    Batch* batch = nullptr;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      queued_.wait(lock, [this] { return closing_ || !waiting_.empty(); });
      if (waiting_.empty()) return;
      batch = waiting_.front();
      waiting_.pop_front();
    }
    work_(*converter, *batch);
    {
      std::lock_guard<std::mutex> lock(mutex_);
      batch->done = true;
    }
    ready_.notify_all();
  }
}

bool Pipeline::Submit(std::unique_ptr<Batch> batch) {
  if (stopped_) return false;
  if (threads_.empty()) {
    work_(*converters_[0], *batch);
    batch->done = true;
    const bool ok = WriteBatch(*batch);
    Recycle(std::move(batch));
    return ok;
  }
  {
    std::lock_guard<std::mutex> lock(mutex_);
    waiting_.push_back(batch.get());
    in_flight_.push_back(std::move(batch));
  }
  queued_.notify_one();
  return WriteReady(false);
}

bool Pipeline::Finish() {
  if (threads_.empty() || stopped_) return !stopped_;
  return WriteReady(true);
}

// Writes the done batches at the head of the line; waits while more than
// two per worker are in flight (or, at the end, until none is).
bool Pipeline::WriteReady(bool wait_for_all) {
  const size_t limit = wait_for_all ? 0 : 2 * threads_.size();
  for (;;) {
    std::unique_ptr<Batch> head;
    {
      std::unique_lock<std::mutex> lock(mutex_);
      if (in_flight_.empty()) return true;
      if (in_flight_.size() > limit) {
        ready_.wait(lock, [this] { return in_flight_.front()->done; });
      } else if (!in_flight_.front()->done) {
        return true;
      }
      head = std::move(in_flight_.front());
      in_flight_.pop_front();
    }
    if (!WriteBatch(*head)) {
      // What is still queued is not needed any more.
      std::lock_guard<std::mutex> lock(mutex_);
      waiting_.clear();
      return false;
    }
    Recycle(std::move(head));
  }
}

std::unique_ptr<Batch> Pipeline::NewBatch() {
  if (spare_.empty()) return std::make_unique<Batch>();
  std::unique_ptr<Batch> batch = std::move(spare_.back());
  spare_.pop_back();
  return batch;
}

void Pipeline::Recycle(std::unique_ptr<Batch> batch) {
  // As many as can be in flight at once, and one being filled.
  if (spare_.size() > 2 * threads_.size() + 1) return;
  batch->Clear();
  spare_.push_back(std::move(batch));
}

bool Pipeline::WriteBatch(Batch& batch) {
  if (!batch.messages.empty()) {
    std::fwrite(batch.messages.data(), 1, batch.messages.size(), stderr);
    std::fflush(stderr);
  }
  failed_ += batch.failed;
  written_ += batch.converted;
  if (out_ != nullptr && !out_->Write(batch.out, &error_)) {
    stopped_ = true;
    return false;
  }
  if (bad_ != nullptr && bad_->is_open() && !bad_->Write(batch.bad, &error_)) {
    stopped_ = true;
    return false;
  }
  if (batch.stop) stopped_ = true;
  return !stopped_;
}

}  // namespace varnadp
