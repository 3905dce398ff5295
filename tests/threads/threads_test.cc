// One context per thread on 2, 4 and 8 threads, as a host runs them: each thread with an
// OCI environment of its own, or every thread on one shared OCI_THREADED environment with
// an error handle and a session of its own. Every thread's streams and fetched values
// must be, byte for byte, those of the same work run on a single thread.
#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "host_thread.h"

namespace threads_test {
namespace {

constexpr int kIterations = 24;

std::string Describe(const std::string& s) {
  std::string out;
  for (unsigned char c : s.substr(0, 200)) {
    if (c >= 0x20 && c < 0x7f) {
      out += static_cast<char>(c);
    } else {
      char hex[5];
      std::snprintf(hex, sizeof hex, "\\x%02x", c);
      out += hex;
    }
  }
  return out + (s.size() > 200 ? "... (" + std::to_string(s.size()) + " bytes)" : "");
}

// The work of threads 0 .. threads-1, one after the other on the calling thread, each on
// a connection of its own to a database of its own run.
std::vector<ThreadOutput> SingleThreaded(const std::string& db, int threads) {
  Connection owner;
  std::vector<ThreadOutput> out;
  if (!owner.Open(nullptr, db) || !CreateSchema(&owner)) {
    out.push_back({{}, "schema: " + owner.failure()});
    return out;
  }
  for (int t = 0; t < threads; ++t) {
    Connection conn;
    if (!conn.Open(nullptr, db)) {
      out.push_back({{}, conn.failure()});
      continue;
    }
    out.push_back(RunThread(&conn, t, kIterations));
    if (!conn.Close() && out.back().failure.empty()) out.back().failure = conn.failure();
  }
  return out;
}

// Lets the threads start their iterations together.
class StartLine {
 public:
  explicit StartLine(int count) : waiting_(count) {}
  void Arrive() {
    std::unique_lock<std::mutex> lock(mutex_);
    if (--waiting_ == 0) {
      all_.notify_all();
    } else {
      all_.wait(lock, [this] { return waiting_ == 0; });
    }
  }

 private:
  std::mutex mutex_;
  std::condition_variable all_;
  int waiting_;
};

// The same work on `threads` threads at once. With `shared`, every thread works on one
// OCI_THREADED environment made here.
std::vector<ThreadOutput> MultiThreaded(const std::string& db, int threads, bool shared) {
  std::vector<ThreadOutput> out(static_cast<size_t>(threads));
  Connection owner;
  if (!owner.Open(nullptr, db) || !CreateSchema(&owner)) {
    out[0].failure = "schema: " + owner.failure();
    return out;
  }
  OCIEnv* shared_env = nullptr;
  if (shared && OCIEnvCreate(&shared_env, OCI_OBJECT | OCI_THREADED, nullptr, nullptr, nullptr,
                             nullptr, 0, nullptr) != OCI_SUCCESS) {
    out[0].failure = "OCIEnvCreate(shared)";
    return out;
  }
  StartLine start(threads);
  std::vector<std::thread> workers;
  for (int t = 0; t < threads; ++t) {
    workers.emplace_back([&, t] {
      Connection conn;
      const bool open = conn.Open(shared_env, db);
      start.Arrive();
      ThreadOutput& mine = out[static_cast<size_t>(t)];
      if (!open) {
        mine.failure = conn.failure();
        return;
      }
      mine = RunThread(&conn, t, kIterations);
      if (!conn.Close() && mine.failure.empty()) mine.failure = conn.failure();
    });
  }
  for (std::thread& w : workers) w.join();
  if (shared_env != nullptr && OCIHandleFree(shared_env, OCI_HTYPE_ENV) != OCI_SUCCESS) {
    out[0].failure += " OCIHandleFree(shared)";
  }
  return out;
}

class ThreadsTest : public ::testing::TestWithParam<std::tuple<int, bool>> {};

TEST_P(ThreadsTest, EachThreadGivesWhatOneThreadGives) {
  const int threads = std::get<0>(GetParam());
  const bool shared = std::get<1>(GetParam());
  const std::string name =
      std::to_string(threads) + (shared ? "_threads_shared_env" : "_threads_own_env");

  const std::vector<ThreadOutput> expected = SingleThreaded("threads_ref_" + name, threads);
  ASSERT_EQ(static_cast<size_t>(threads), expected.size());
  for (const ThreadOutput& e : expected) {
    ASSERT_EQ("", e.failure);
    ASSERT_EQ(static_cast<size_t>(kIterations) * kItemsPerIteration, e.items.size());
  }
  // The round trip: the row read back writes the stream it was stored from.
  for (size_t t = 0; t < expected.size(); ++t) {
    for (size_t i = 0; i < expected[t].items.size(); i += kItemsPerIteration) {
      EXPECT_EQ(expected[t].items[i], expected[t].items[i + 1])
          << "thread " << t << ", iteration " << i / kItemsPerIteration;
      // The broken stream's read failed on Oracle's conversion of the order number, and
      // the trace has every field of both passes.
      EXPECT_EQ("-24|CAdp::_OraStreamToField|Database error", expected[t].items[i + 4]);
      EXPECT_NE(std::string::npos,
                expected[t].items[i + 5].find("Processing LOB field - second pass..."));

    }
  }

  const auto begin = std::chrono::steady_clock::now();
  const std::vector<ThreadOutput> got = MultiThreaded("threads_run_" + name, threads, shared);
  const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(
                      std::chrono::steady_clock::now() - begin)
                      .count();
  std::printf("%d threads x %d iterations, %s environment: %lld ms\n", threads, kIterations,
              shared ? "one shared" : "one per thread", static_cast<long long>(ms));
  ASSERT_EQ(expected.size(), got.size());
  for (size_t t = 0; t < got.size(); ++t) {
    EXPECT_EQ("", got[t].failure) << "thread " << t;
    ASSERT_EQ(expected[t].items.size(), got[t].items.size()) << "thread " << t;
    for (size_t i = 0; i < got[t].items.size(); ++i) {
      ASSERT_TRUE(expected[t].items[i] == got[t].items[i])
          << "thread " << t << ", iteration " << i / kItemsPerIteration << ", output "
          << i % kItemsPerIteration << ":\n"
          << Describe(got[t].items[i]) << "\ninstead of\n"
          << Describe(expected[t].items[i]);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Threads, ThreadsTest,
                         ::testing::Combine(::testing::Values(2, 4, 8), ::testing::Bool()),
                         [](const ::testing::TestParamInfo<std::tuple<int, bool>>& info) {
                           return std::to_string(std::get<0>(info.param)) +
                                  (std::get<1>(info.param) ? "ThreadsSharedEnv"
                                                           : "ThreadsOwnEnv");
                         });

}  // namespace
}  // namespace threads_test
