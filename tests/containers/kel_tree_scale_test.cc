// Trees far wider and deeper than any stack could recurse over: copying and
// destroying them runs on a thread with a deliberately small stack, so any
// per-sibling or per-level recursion would overflow it.
#include <gtest/gtest.h>
#include <pthread.h>

#include <exception>
#include <functional>
#include <memory>

#include "alloc_hooks.h"
#include "kel_test_util.h"

namespace {

using kel_test::LiveTrackedBlocks;
using kel_test::Payload;
using kel_test::Tree;

constexpr int kWide = 1000000;
constexpr int kDeep = 1000000;
// Room for the test body's own frames, also under the sanitizers, but far
// too little for a million nested calls.
constexpr std::size_t kSmallStack = 256 * 1024;

// Runs fn to completion on a fresh thread with a kSmallStack stack and
// rethrows whatever it threw.
void RunOnSmallStack(const std::function<void()>& fn) {
  struct Job {
    const std::function<void()>* fn;
    std::exception_ptr error;
  } job{&fn, nullptr};
  pthread_attr_t attr;
  ASSERT_EQ(pthread_attr_init(&attr), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attr, kSmallStack), 0);
  pthread_t thread;
  auto body = [](void* arg) -> void* {
    Job* j = static_cast<Job*>(arg);
    try {
      (*j->fn)();
    } catch (...) {
      j->error = std::current_exception();
    }
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attr, body, &job), 0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attr);
  if (job.error) std::rethrow_exception(job.error);
}

// Children of node counted and checked to carry ids 0..n-1 in order.
int CountOrderedChildren(const Tree& node) {
  int count = 0;
  for (const Tree* c = node.GetFirstChild(); c != nullptr; c = c->GetNextSibling()) {
    if (c->m_Data.id != count) return -1;
    ++count;
  }
  return count;
}

// Depth below node of a single-child chain whose ids count up by one from
// node's id + 1, or -1 when it is not one.
int ChainDepth(const Tree& node) {
  int depth = 0;
  for (const Tree* c = node.GetFirstChild(); c != nullptr; c = c->GetFirstChild()) {
    if (c->GetNextSibling() != nullptr || c->m_Data.id != node.m_Data.id + depth + 1) return -1;
    ++depth;
  }
  return depth;
}

class TreeScaleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    blocks_ = LiveTrackedBlocks();
    payloads_ = Payload::live;
  }
  void TearDown() override {
    EXPECT_EQ(LiveTrackedBlocks(), blocks_);
    EXPECT_EQ(Payload::live, payloads_);
  }

 private:
  long blocks_ = 0;
  long payloads_ = 0;
};

TEST_F(TreeScaleTest, NodeWithAMillionChildrenIsCopiedAndDestroyedWithoutRecursion) {
  auto root = std::make_unique<Tree>();
  for (int i = 0; i < kWide; ++i) kel_test::AddChild(*root, i);
  Tree* clone = nullptr;
  auto dest = std::make_unique<Tree>();
  RunOnSmallStack([&] {
    clone = root->Clone();
    dest->CopyAsFirstChild(*root->GetFirstChild());
  });
  EXPECT_EQ(CountOrderedChildren(*clone), kWide);
  EXPECT_EQ(CountOrderedChildren(*dest), kWide);
  EXPECT_EQ(clone->GetChildren().GetCount(), kWide);
  RunOnSmallStack([&] {
    delete clone;
    dest->DeleteChildren();
    root.reset();
  });
  EXPECT_EQ(dest->GetFirstChild(), nullptr);
}

TEST_F(TreeScaleTest, MillionDeepChainIsCopiedAndDestroyedWithoutRecursion) {
  auto root = std::make_unique<Tree>();
  root->m_Data.id = 0;
  Tree* tip = root.get();
  for (int i = 1; i <= kDeep; ++i) tip = &kel_test::AddChild(*tip, i);
  Tree* clone = nullptr;
  Tree sibling_host;
  Tree& anchor = kel_test::AddChild(sibling_host, -5);
  RunOnSmallStack([&] {
    clone = root->Clone();
    anchor.CopyAfter(*root->GetFirstChild());
  });
  EXPECT_EQ(ChainDepth(*clone), kDeep);
  Tree* copied = anchor.GetNextSibling();
  ASSERT_NE(copied, nullptr);
  EXPECT_EQ(copied->m_Data.id, 1);
  EXPECT_EQ(ChainDepth(*copied), kDeep - 1);
  RunOnSmallStack([&] {
    delete clone;
    sibling_host.DeleteChildren();
    root.reset();
  });
}

TEST_F(TreeScaleTest, AllocationFailureDeepInsideALongCopyLeaksNothing) {
  auto root = std::make_unique<Tree>();
  root->m_Data.id = 0;
  Tree* tip = root.get();
  for (int i = 1; i <= 100000; ++i) tip = &kel_test::AddChild(*tip, i);
  const long blocks = LiveTrackedBlocks();
  RunOnSmallStack([&] {
    kel_test::FailureScope fail(150000);
    try {
      delete root->Clone();
      ADD_FAILURE() << "the clone did not fail";
    } catch (const CKelException& e) {
      EXPECT_EQ(e.GetRC(), -10);
      EXPECT_STREQ(e.GetFunc(), "CKelTree::CopyAsFirstChild");
    }
  });
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
  EXPECT_EQ(ChainDepth(*root), 100000);
  RunOnSmallStack([&] { root.reset(); });
}

}  // namespace
