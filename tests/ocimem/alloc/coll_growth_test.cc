// How often a growing collection asks for memory. This program replaces the global
// operator new, so it is built apart from the other in-memory OCI tests.
#include <gtest/gtest.h>
#include <oci.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "oci_fixture.h"

namespace {
std::atomic<unsigned long> g_news{0};
// Out of line: an optimizing compiler that sees free() inside operator
// delete takes it for a release that does not match operator new.
[[gnu::noinline]] void Release(void* p) noexcept { std::free(p); }
}  // namespace

void* operator new(std::size_t size) {
  g_news.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  g_news.fetch_add(1, std::memory_order_relaxed);
  return std::malloc(size == 0 ? 1 : size);
}
void operator delete(void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }

namespace {

class CollGrowthTest : public ocimem_test::OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type num_nt as table of number");
    tdo_ = TypeByName("NUM_NT");
  }

  OCIType* tdo_ = nullptr;
};

// NUMBER elements need no memory of their own: a collection asks for memory once per
// chunk of elements, plus a few times (doubling) for its lists of blocks and chunks. A
// list that grew by one chunk at a time asked twice per chunk.
TEST_F(CollGrowthTest, AppendingAsksForMemoryOncePerChunk) {
  void* instance = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectNew(env_, err_, svc_, OCI_TYPECODE_NAMEDCOLLECTION, tdo_,
                                      nullptr, OCI_DURATION_DEFAULT, TRUE, &instance));
  auto* coll = static_cast<OCIColl*>(instance);
  int one = 1;
  OCINumber number;
  ASSERT_EQ(OCI_SUCCESS, OCINumberFromInt(err_, &one, sizeof one, OCI_NUMBER_SIGNED, &number));
  OCIInd ind = OCI_IND_NOTNULL;
  // Chunks: 960 bytes of 32-byte blocks (22-byte NUMBER, its indicator, aligned to 16).
  constexpr unsigned long kElements = 300000;
  constexpr unsigned long kChunks = kElements / 30;
  const unsigned long before = g_news.load();
  for (unsigned long i = 0; i < kElements; ++i) {
    ASSERT_EQ(OCI_SUCCESS, OCICollAppend(env_, err_, &number, &ind, coll));
  }
  const unsigned long asked = g_news.load() - before;
  sb4 size = 0;
  ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, coll, &size));
  EXPECT_EQ(static_cast<sb4>(kElements), size);
  EXPECT_GE(asked, kChunks);
  EXPECT_LE(asked, kChunks + 64);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, instance, OCI_OBJECTFREE_FORCE));
}

}  // namespace
