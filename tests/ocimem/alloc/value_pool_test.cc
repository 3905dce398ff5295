// The value pool behind object instances, strings and raws: freed memory is used again,
// and an allocation that fails still answers ORA-04030 and leaves nothing half made.  This
// program replaces malloc (counting calls, failing one on request), so it is built apart
// from the other in-memory OCI tests, and not with the address sanitizer.
#include <gtest/gtest.h>
#include <oci.h>
#include <orid.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "oci_fixture.h"

namespace {
unsigned long g_mallocs = 0;
unsigned long g_frees = 0;
// The malloc to fail, counted from 1 when armed; 0: none.
unsigned long g_fail_at = 0;

bool Failing() {
  ++g_mallocs;
  if (g_fail_at == 0) return false;
  if (--g_fail_at != 0) return false;
  return true;
}
}  // namespace

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* p, std::size_t size);
void __libc_free(void* p);

#define POOL_TEST_EXPORT __attribute__((visibility("default")))
POOL_TEST_EXPORT void* malloc(std::size_t size) noexcept { return Failing() ? nullptr : __libc_malloc(size); }
POOL_TEST_EXPORT void* calloc(std::size_t count, std::size_t size) noexcept {
  return Failing() ? nullptr : __libc_calloc(count, size);
}
POOL_TEST_EXPORT void* realloc(void* p, std::size_t size) noexcept {
  return Failing() ? nullptr : __libc_realloc(p, size);
}
POOL_TEST_EXPORT void free(void* p) noexcept {
  if (p != nullptr) ++g_frees;
  __libc_free(p);
}
}

namespace {

using ocimem_test::FirstCode;
using ocimem_test::Text;

class ValuePoolTest : public ocimem_test::OciTest {
 protected:
  void SetUp() override {
    OciTest::SetUp();
    MustExec("create type pool_line_t as object (sku varchar2(20), qty number(9), "
             "note varchar2(100))");
    MustExec("create type pool_line_tab as table of pool_line_t");
    line_tdo_ = TypeByName("POOL_LINE_T");
    tab_tdo_ = TypeByName("POOL_LINE_TAB");
  }
  void TearDown() override {
    g_fail_at = 0;
    OciTest::TearDown();
  }

  sword New(OCIType* tdo, OCITypeCode code, void** instance) {
    return OCIObjectNew(env_, err_, svc_, code, tdo, nullptr, OCI_DURATION_DEFAULT, TRUE,
                        instance);
  }
  void* NewLine() {
    void* line = nullptr;
    EXPECT_EQ(OCI_SUCCESS, New(line_tdo_, OCI_TYPECODE_OBJECT, &line));
    return line;
  }
  // Holds more instances than the pool keeps blocks of their sizes, so that the next
  // instance, its Instance record and its strings come from malloc.
  void DrainPool() {
    for (int i = 0; i < 5000; ++i) held_.push_back(NewLine());
  }
  void FreeHeld() {
    for (void* p : held_) EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, p, OCI_DEFAULT));
    held_.clear();
  }
  OCIString* NewText(const char* text) {
    OCIString* value = nullptr;
    EXPECT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text(text),
                                               static_cast<ub4>(std::strlen(text)), &value));
    return value;
  }
  void SetSku(void* line, const OCIString* value) {
    const OraText* names[] = {Text("SKU")};
    const ub4 lengths[] = {3};
    ASSERT_EQ(OCI_SUCCESS, OCIObjectSetAttr(env_, err_, line, nullptr, line_tdo_, names,
                                            lengths, 1, nullptr, 0, OCI_IND_NOTNULL, nullptr,
                                            value));
  }

  OCIType* line_tdo_ = nullptr;
  OCIType* tab_tdo_ = nullptr;
  std::vector<void*> held_;
};

TEST_F(ValuePoolTest, FreedInstanceMemoryIsUsedAgain) {
  void* first = NewLine();
  ASSERT_NE(nullptr, first);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, first, OCI_DEFAULT));
  // The instance made right after a free is at a new address; the freed block is used
  // again once the next instance is freed.
  void* second = NewLine();
  EXPECT_NE(first, second);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, second, OCI_DEFAULT));
  void* third = NewLine();
  EXPECT_EQ(first, third);
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, third, OCI_DEFAULT));
  // Made and freed again and again, an instance asks malloc only for its registry entry
  // (the environment's map): value, null struct and strings come back from the pool.
  OCIString* sku = NewText("SKU-0001");
  unsigned long before = 0;
  for (int i = 0; i < 110; ++i) {
    if (i == 10) before = g_mallocs;  // after the first rounds
    void* line = NewLine();
    SetSku(line, sku);
    ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, line, OCI_DEFAULT));
  }
  EXPECT_LE(g_mallocs - before, 100u);
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &sku));
}

TEST_F(ValuePoolTest, KeptBlocksAreBounded) {
  DrainPool();
  const unsigned long before = g_frees;
  FreeHeld();
  // 15,000 blocks of 64 bytes and 5,000 records freed: most go back to the system.
  EXPECT_GT(g_frees - before, 10000u);
}

TEST_F(ValuePoolTest, FailedAllocationInObjectNewAnswersOutOfMemory) {
  DrainPool();
  // The instance's block, its record and its first string, each failing in turn.
  for (unsigned long at = 1; at <= 3; ++at) {
    SCOPED_TRACE(at);
    void* instance = nullptr;
    g_fail_at = at;
    EXPECT_EQ(OCI_ERROR, New(line_tdo_, OCI_TYPECODE_OBJECT, &instance));
    g_fail_at = 0;
    EXPECT_EQ(4030, FirstCode(err_));
    EXPECT_EQ(nullptr, instance);
  }
  void* line = NewLine();  // and the next one is made
  ASSERT_NE(nullptr, line);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, line, OCI_DEFAULT));
  FreeHeld();
}

TEST_F(ValuePoolTest, FailedAllocationInCollAppendLeavesTheCollection) {
  void* tab = nullptr;
  ASSERT_EQ(OCI_SUCCESS, New(tab_tdo_, OCI_TYPECODE_NAMEDCOLLECTION, &tab));
  auto* coll = static_cast<OCIColl*>(tab);
  void* line = NewLine();
  OCIString* text = NewText("SKU-0002");
  SetSku(line, text);
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &text));
  DrainPool();
  // The copy's block (a chunk of the collection) and its strings, each failing in turn: the
  // collection keeps its size; once no allocation fails the element is appended.
  sb4 expected = 0;
  for (unsigned long at = 1; at <= 8; ++at) {
    SCOPED_TRACE(at);
    g_fail_at = at;
    sword rc = OCICollAppend(env_, err_, line, nullptr, coll);
    const bool failed = g_fail_at == 0;  // the armed allocation was reached
    g_fail_at = 0;
    if (failed) {
      EXPECT_EQ(OCI_ERROR, rc);
      EXPECT_EQ(4030, FirstCode(err_));
    } else {
      EXPECT_EQ(OCI_SUCCESS, rc);
      ++expected;
    }
    sb4 size = -1;
    ASSERT_EQ(OCI_SUCCESS, OCICollSize(env_, err_, coll, &size));
    EXPECT_EQ(expected, size);
  }
  EXPECT_GT(expected, 0);
  // What was appended is a copy of the line.
  boolean exists = FALSE;
  void* elem = nullptr;
  void* elemind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCICollGetElem(env_, err_, coll, expected - 1, &exists, &elem, &elemind));
  ASSERT_TRUE(exists);
  EXPECT_NE(line, elem);
  OCIString* sku = *static_cast<OCIString**>(elem);
  EXPECT_EQ(std::string("SKU-0002"),
            std::string(reinterpret_cast<const char*>(OCIStringPtr(env_, sku)),
                        OCIStringSize(env_, sku)));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, line, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, tab, OCI_DEFAULT));
  FreeHeld();
}

TEST_F(ValuePoolTest, FailedStringResizeKeepsTheValue) {
  OCIString* str = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIStringAssignText(env_, err_, Text("kept"), 4, &str));
  // Beyond the pool's sizes: straight from malloc.
  g_fail_at = 1;
  EXPECT_EQ(OCI_ERROR, OCIStringResize(env_, err_, 4000, &str));
  g_fail_at = 0;
  EXPECT_EQ(4030, FirstCode(err_));
  EXPECT_EQ(4u, OCIStringSize(env_, str));
  EXPECT_EQ(0, std::memcmp("kept", OCIStringPtr(env_, str), 4));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 4000, &str));
  EXPECT_EQ(4000u, OCIStringSize(env_, str));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &str));
}

// A null struct left to the caller stays readable after the instance is freed, although
// it shares its block with the value (the environment frees it as it goes).
TEST_F(ValuePoolTest, NullStructLeftToTheCallerStays) {
  void* line = NewLine();
  void* ind = nullptr;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectGetInd(env_, err_, line, &ind));
  static_cast<OCIInd*>(ind)[0] = OCI_IND_NOTNULL;
  static_cast<OCIInd*>(ind)[1] = OCI_IND_NOTNULL;
  ASSERT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, line, OCI_OBJECTFREE_NONULL));
  void* next = NewLine();  // must not take the kept block
  EXPECT_NE(line, next);
  EXPECT_EQ(OCI_IND_NOTNULL, static_cast<OCIInd*>(ind)[0]);
  EXPECT_EQ(OCI_IND_NOTNULL, static_cast<OCIInd*>(ind)[1]);
  EXPECT_EQ(OCI_IND_NULL, static_cast<OCIInd*>(ind)[2]);
  EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, next, OCI_DEFAULT));
}

// A thread keeps the blocks it frees for itself; when it ends they go to the shared lists,
// where the next thread to need blocks of their classes finds them.
TEST_F(ValuePoolTest, BlocksOfAThreadThatEndedAreUsedAgain) {
  DrainPool();  // nothing kept here or in the shared lists
  OCIString* sku = NewText("SKU-0001");
  std::thread worker([&] {
    std::vector<void*> lines;
    for (int i = 0; i < 20; ++i) {
      lines.push_back(NewLine());
      SetSku(lines.back(), sku);
    }
    for (void* line : lines) EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, line, OCI_DEFAULT));
  });
  worker.join();
  const unsigned long before = g_mallocs;
  std::vector<void*> lines;
  for (int i = 0; i < 20; ++i) {
    lines.push_back(NewLine());
    SetSku(lines.back(), sku);
  }
  // One registry entry an instance from malloc; value, null struct and string from the
  // worker's blocks.
  EXPECT_LE(g_mallocs - before, 30u);
  for (void* line : lines) EXPECT_EQ(OCI_SUCCESS, OCIObjectFree(env_, err_, line, OCI_DEFAULT));
  EXPECT_EQ(OCI_SUCCESS, OCIStringResize(env_, err_, 0, &sku));
  FreeHeld();
}

}  // namespace
