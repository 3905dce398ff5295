#include "containers/kel_allocator.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

#include "alloc_hooks.h"
#include "containers/kel_array.h"
#include "containers/kel_mem.h"
#include "containers/kel_string.h"
#include "kel_test_util.h"

namespace {

using kel_test::LiveTrackedBlocks;

// Leak accounting around each test body.
class AllocatorTest : public ::testing::Test {
 protected:
  void SetUp() override { blocks_ = LiveTrackedBlocks(); }
  void TearDown() override { EXPECT_EQ(LiveTrackedBlocks(), blocks_) << "container blocks leaked"; }

 private:
  long blocks_ = 0;
};

template <class T>
class TypedAllocatorTest : public AllocatorTest {};

using ElementTypes = ::testing::Types<char, unsigned char>;

// Names the two instantiations, whose memory sources differ: C heap and free
// store.
struct ElementName {
  template <class T>
  static std::string GetName(int) {
    return std::is_same<T, char>::value ? "CHeapChar" : "FreeStoreUnsignedChar";
  }
};
TYPED_TEST_SUITE(TypedAllocatorTest, ElementTypes, ElementName);

// ---- helper templates ----

TEST_F(AllocatorTest, KelBdelRemovesElementsAndLeavesTheLastPlacesUnchanged) {
  char buffer[] = "abcdef";
  EXPECT_EQ(_kelbdel<char>(buffer, 6, 1, 2), buffer);
  EXPECT_EQ(std::string(buffer, 6), "adefef");
}

TEST_F(AllocatorTest, KelBdelTable) {
  struct Case {
    unsigned long pos;
    unsigned long count;
    const char* expected;
  };
  const Case cases[] = {
      {0, 0, "abcdef"}, {0, 1, "bcdeff"}, {0, 6, "abcdef"}, {5, 1, "abcdef"},
      {4, 2, "abcdef"}, {2, 3, "abfdef"}, {3, 1, "abceff"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "pos " << c.pos << " count " << c.count);
    char buffer[] = "abcdef";
    _kelbdel<char>(buffer, 6, c.pos, c.count);
    EXPECT_EQ(std::string(buffer, 6), c.expected);
  }
}

TEST_F(AllocatorTest, KelBdelOnUnsignedCharMovesElementWise) {
  unsigned char buffer[] = {1, 2, 3, 4, 5};
  _kelbdel<unsigned char>(buffer, 5, 0, 2);
  EXPECT_EQ(std::vector<unsigned char>(buffer, buffer + 5), (std::vector<unsigned char>{3, 4, 5, 4, 5}));
}

TEST_F(AllocatorTest, KelTrmStoresTheTerminator) {
  char buffer[] = "abc";
  EXPECT_EQ(_keltrm(buffer + 1), buffer + 1);
  EXPECT_STREQ(buffer, "a");
}

TEST_F(AllocatorTest, KelMoveHandlesOverlapInBothDirections) {
  char up[] = "abcdef";
  EXPECT_EQ(_kelmove(up + 2, up, 4), up + 2);
  EXPECT_EQ(std::string(up, 6), "ababcd");
  char down[] = "abcdef";
  _kelmove(down, down + 2, 4);
  EXPECT_EQ(std::string(down, 6), "cdefef");
  unsigned char bytes_up[] = {1, 2, 3, 4, 5, 6};
  _kelmove(bytes_up + 2, bytes_up, 4);
  EXPECT_EQ(std::vector<unsigned char>(bytes_up, bytes_up + 6), (std::vector<unsigned char>{1, 2, 1, 2, 3, 4}));
  unsigned char bytes_down[] = {1, 2, 3, 4, 5, 6};
  _kelmove(bytes_down, bytes_down + 2, 4);
  EXPECT_EQ(std::vector<unsigned char>(bytes_down, bytes_down + 6),
            (std::vector<unsigned char>{3, 4, 5, 6, 5, 6}));
}

TEST_F(AllocatorTest, KelSetFillsExactlyNElements) {
  char text[] = "abcdef";
  EXPECT_EQ(_kelset(text + 1, 'x', 3), text + 1);
  EXPECT_STREQ(text, "axxxef");
  unsigned char bytes[] = {1, 2, 3, 4};
  _kelset<unsigned char>(bytes, 9, 3);
  EXPECT_EQ(std::vector<unsigned char>(bytes, bytes + 4), (std::vector<unsigned char>{9, 9, 9, 4}));
}

TEST_F(AllocatorTest, KelZeroIsTheZeroOfTheArgumentsType) {
  EXPECT_EQ(_kelzero('x'), '\0');
  EXPECT_EQ(_kelzero(static_cast<unsigned char>(7)), 0);
  EXPECT_EQ(_kelzero(42L), 0L);
}

TEST_F(AllocatorTest, KelBcpyCopiesFromTheStart) {
  const unsigned char src[] = {1, 2, 3, 4};
  unsigned char dst[] = {0, 0, 0, 0};
  EXPECT_EQ((_kelbcpy<unsigned char, unsigned char>(dst, src, 3)), dst);
  EXPECT_EQ(std::vector<unsigned char>(dst, dst + 4), (std::vector<unsigned char>{1, 2, 3, 0}));
}

TEST_F(AllocatorTest, KelReallocOfUnsignedCharCopiesTheCommonPrefixIntoANewBlock) {
  unsigned char* p = _kelrealloc<unsigned char>(nullptr, 0, 4);
  ASSERT_NE(p, nullptr);
  for (unsigned char i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(i + 1);
  unsigned char* bigger = _kelrealloc<unsigned char>(p, 4, 6);
  ASSERT_NE(bigger, nullptr);
  EXPECT_EQ(std::vector<unsigned char>(bigger, bigger + 4), (std::vector<unsigned char>{1, 2, 3, 4}));
  unsigned char* smaller = _kelrealloc<unsigned char>(bigger, 6, 2);
  ASSERT_NE(smaller, nullptr);
  EXPECT_EQ(std::vector<unsigned char>(smaller, smaller + 2), (std::vector<unsigned char>{1, 2}));
  _kelfree<unsigned char>(smaller);
}

TEST_F(AllocatorTest, KelReallocFailureReturnsNullAndKeepsTheOldBlock) {
  unsigned char* bytes = _kelrealloc<unsigned char>(nullptr, 0, 2);
  bytes[0] = 7;
  char* chars = _kelrealloc<char>(nullptr, 0, 2);
  chars[0] = 'q';
  {
    kel_test::FailureScope fail(1);
    EXPECT_EQ(_kelrealloc<unsigned char>(bytes, 2, 8), nullptr);
  }
  {
    kel_test::FailureScope fail(1);
    EXPECT_EQ(_kelrealloc<char>(chars, 2, 8), nullptr);
  }
  EXPECT_EQ(bytes[0], 7);
  EXPECT_EQ(chars[0], 'q');
  _kelfree<unsigned char>(bytes);
  _kelfree<char>(chars);
}

TEST_F(AllocatorTest, KelReallocOfCharKeepsTheContent) {
  char* p = _kelrealloc<char>(nullptr, 0, 4);
  ASSERT_NE(p, nullptr);
  std::memcpy(p, "abcd", 4);
  p = _kelrealloc<char>(p, 123, 4096);
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(std::string(p, 4), "abcd");
  _kelfree<char>(p);
}

TEST_F(AllocatorTest, KelFreeOfUnsignedCharAcceptsNull) { _kelfree<unsigned char>(nullptr); }

// ---- allocator ----

TYPED_TEST(TypedAllocatorTest, NewAllocatorWithSizeZeroHoldsNothing) {
  CKelAllocator<TypeParam> a(0, 4, 0);
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 0u);
  EXPECT_EQ(a.GetSize(), 0u);
  EXPECT_FALSE(a.IsAttached());
  EXPECT_FALSE(a.IsZeroFill());
}

TYPED_TEST(TypedAllocatorTest, ConstructorAllocatesTheInitialSizeInWholeSteps) {
  CKelAllocator<TypeParam> a(5, 4, 0);
  EXPECT_NE(a.GetData(), nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 8u);
  EXPECT_EQ(a.GetSize(), 5u);
}

TYPED_TEST(TypedAllocatorTest, ZeroFillFlagIsTheLowestBitOfTheArgument) {
  CKelAllocator<TypeParam> odd(0, 1, 3);
  CKelAllocator<TypeParam> even(0, 1, 2);
  EXPECT_TRUE(odd.IsZeroFill());
  EXPECT_FALSE(even.IsZeroFill());
  EXPECT_FALSE(odd.IsAttached());
  EXPECT_FALSE(even.IsAttached());
}

TYPED_TEST(TypedAllocatorTest, StepZeroResizedToSevenGetsCapacitySevenAndStepOne) {
  CKelAllocator<TypeParam> a(0, 0, 0);
  a.SetSize(7, nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 7u);
  EXPECT_EQ(a.GetGrowBy(), 1u);
  a.SetSize(9, nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 9u);
}

TYPED_TEST(TypedAllocatorTest, StepFourFromZeroToFiveGivesEightThenToTwoGivesFour) {
  CKelAllocator<TypeParam> a(0, 4, 0);
  a.SetSize(5, nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 8u);
  a.SetSize(2, nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 4u);
  EXPECT_EQ(a.GetSize(), 2u);
}

// The capacity after each resize of one allocator, from a table: growth
// rounds up to whole steps; shrinking wraps around and, with a power-of-two
// step, drops the whole steps that fit between the old capacity and n. A
// step that is not a power of two wraps unevenly, and that is kept.
TYPED_TEST(TypedAllocatorTest, CapacityFollowsTheStepArithmeticIncludingWrapAround) {
  struct Case {
    unsigned long step;
    std::vector<unsigned long> sizes;
    std::vector<unsigned long> capacities;
  };
  const std::vector<Case> cases = {
      {1, {5, 3, 3, 10, 1, 0, 2}, {5, 3, 3, 10, 1, 0, 2}},
      {4, {5, 2, 8, 9, 5, 4, 0}, {8, 4, 8, 12, 8, 4, 0}},
      {4, {16, 1}, {16, 4}},
      {4, {16, 4}, {16, 4}},
      {4, {16, 3}, {16, 4}},
      {4, {16, 13}, {16, 16}},
      {4, {16, 12}, {16, 12}},
      {8, {1, 9, 17, 2}, {8, 16, 24, 8}},
      {3, {5, 2}, {6, 2}},
      {3, {5, 7}, {6, 9}},
  };
  for (const Case& c : cases) {
    CKelAllocator<TypeParam> a(0, c.step, 0);
    for (std::size_t i = 0; i < c.sizes.size(); ++i) {
      SCOPED_TRACE(::testing::Message() << "step " << c.step << " resize #" << i << " to " << c.sizes[i]);
      a.SetSize(c.sizes[i], nullptr);
      EXPECT_EQ(a.GetSizeAllocated(), c.capacities[i]);
      EXPECT_EQ(a.GetSize(), c.sizes[i]);
      EXPECT_EQ(a.GetData() == nullptr, c.capacities[i] == 0);
    }
  }
}

TYPED_TEST(TypedAllocatorTest, ZeroFillGrowingFromThreeToSixZeroesOnlyTheNewElements) {
  CKelAllocator<TypeParam> a(3, 1, 1);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(a.GetData()[i], 0) << i;
  a.GetData()[0] = 'x';
  a.GetData()[1] = 'y';
  a.GetData()[2] = 'z';
  a.SetSize(6, nullptr);
  EXPECT_EQ(a.GetData()[0], 'x');
  EXPECT_EQ(a.GetData()[1], 'y');
  EXPECT_EQ(a.GetData()[2], 'z');
  for (int i = 3; i < 6; ++i) EXPECT_EQ(a.GetData()[i], 0) << i;
}

TYPED_TEST(TypedAllocatorTest, ZeroFillCoversTheWholeNewCapacityNotOnlyTheRequestedSize) {
  CKelAllocator<TypeParam> a(1, 8, 1);
  ASSERT_EQ(a.GetSizeAllocated(), 8u);
  for (int i = 0; i < 8; ++i) a.GetData()[i] = 'a';
  a.SetSize(9, nullptr);
  ASSERT_EQ(a.GetSizeAllocated(), 16u);
  for (int i = 0; i < 8; ++i) EXPECT_EQ(a.GetData()[i], 'a') << i;
  for (int i = 8; i < 16; ++i) EXPECT_EQ(a.GetData()[i], 0) << i;
}

TYPED_TEST(TypedAllocatorTest, ShrinkKeepsTheLeadingElements) {
  CKelAllocator<TypeParam> a(6, 1, 0);
  for (int i = 0; i < 6; ++i) a.GetData()[i] = static_cast<TypeParam>('a' + i);
  a.SetSize(3, nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 3u);
  EXPECT_EQ(a.GetData()[0], 'a');
  EXPECT_EQ(a.GetData()[2], 'c');
}

TYPED_TEST(TypedAllocatorTest, GrowthKeepsTheContent) {
  CKelAllocator<TypeParam> a(4, 1, 0);
  for (int i = 0; i < 4; ++i) a.GetData()[i] = static_cast<TypeParam>('a' + i);
  a.SetSize(1000, nullptr);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(a.GetData()[i], 'a' + i);
}

TYPED_TEST(TypedAllocatorTest, ResizingToZeroReleasesTheBuffer) {
  const long blocks = LiveTrackedBlocks();
  CKelAllocator<TypeParam> a(5, 1, 0);
  EXPECT_EQ(LiveTrackedBlocks(), blocks + 1);
  EXPECT_EQ(a.SetSize(0, nullptr), nullptr);
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 0u);
  EXPECT_EQ(a.GetSize(), 0u);
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
  a.SetSize(2, nullptr);
  EXPECT_NE(a.GetData(), nullptr);
}

TYPED_TEST(TypedAllocatorTest, SetSizeReturnsTheStartOfTheBufferWithoutAHint) {
  CKelAllocator<TypeParam> a(0, 1, 0);
  TypeParam* p = a.SetSize(10, nullptr);
  EXPECT_EQ(p, a.GetData());
  EXPECT_EQ(a.SetSize(10, nullptr), p);
}

TYPED_TEST(TypedAllocatorTest, HintIsReturnedRebasedIntoTheMovedBuffer) {
  CKelAllocator<TypeParam> a(4, 1, 0);
  for (int i = 0; i < 4; ++i) a.GetData()[i] = static_cast<TypeParam>('a' + i);
  const TypeParam* hint = a.GetData() + 2;
  TypeParam* moved = a.SetSize(100000, hint);
  EXPECT_EQ(moved, a.GetData() + 2);
  EXPECT_EQ(*moved, 'c');
  TypeParam* same = a.SetSize(100000, moved);
  EXPECT_EQ(same, moved);
  TypeParam* shrunk = a.SetSize(3, a.GetData() + 1);
  EXPECT_EQ(shrunk, a.GetData() + 1);
  EXPECT_EQ(*shrunk, 'b');
}

TYPED_TEST(TypedAllocatorTest, HintIsDroppedWhenTheBufferIsReleased) {
  CKelAllocator<TypeParam> a(4, 1, 0);
  EXPECT_EQ(a.SetSize(0, a.GetData() + 1), nullptr);
}

TEST_F(AllocatorTest, UnsignedCharResizeAlwaysMovesToANewBlock) {
  CKelAllocator<unsigned char> a(4, 1, 0);
  const unsigned char* before = a.GetData();
  const long blocks = LiveTrackedBlocks();
  a.SetSize(5, nullptr);
  EXPECT_NE(a.GetData(), before);
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
}

TYPED_TEST(TypedAllocatorTest, SameCapacityKeepsTheBufferInPlace) {
  CKelAllocator<TypeParam> a(5, 4, 0);
  TypeParam* before = a.GetData();
  a.SetSize(7, nullptr);
  EXPECT_EQ(a.GetData(), before);
  EXPECT_EQ(a.GetSize(), 7u);
  EXPECT_EQ(a.GetSizeAllocated(), 8u);
}

TYPED_TEST(TypedAllocatorTest, ExplicitFreeThenDestructionReleasesOnce) {
  CKelAllocator<TypeParam> a(5, 1, 0);
  a._Free();
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 0u);
  a._Free();
}

TYPED_TEST(TypedAllocatorTest, GrowthFailureThrowsMinus10AndLeavesTheAllocatorIntact) {
  CKelAllocator<TypeParam> a(4, 1, 1);
  for (int i = 0; i < 4; ++i) a.GetData()[i] = static_cast<TypeParam>('a' + i);
  TypeParam* data = a.GetData();
  {
    kel_test::FailureScope fail(1);
    EXPECT_KEL_THROW(a.SetSize(100, data + 1), -10, "CKelAllocator<>::Alloc");
  }
  EXPECT_EQ(a.GetData(), data);
  EXPECT_EQ(a.GetSizeAllocated(), 4u);
  EXPECT_EQ(a.GetSize(), 4u);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(a.GetData()[i], 'a' + i);
}

TYPED_TEST(TypedAllocatorTest, ShrinkFailureThrowsMinus10AndLeavesTheAllocatorIntact) {
  CKelAllocator<TypeParam> a(8, 1, 0);
  TypeParam* data = a.GetData();
  {
    kel_test::FailureScope fail(1);
    EXPECT_KEL_THROW(a.SetSize(2, nullptr), -10, "CKelAllocator<>::Alloc");
  }
  EXPECT_EQ(a.GetData(), data);
  EXPECT_EQ(a.GetSizeAllocated(), 8u);
  EXPECT_EQ(a.GetSize(), 8u);
}

TYPED_TEST(TypedAllocatorTest, ConstructorFailureThrowsMinus10AndLeaksNothing) {
  kel_test::FailureScope fail(1);
  EXPECT_KEL_THROW(CKelAllocator<TypeParam> a(3, 1, 0), -10, "CKelAllocator<>::Alloc");
}

// ---- attached buffers ----

TYPED_TEST(TypedAllocatorTest, AttachBufferSetsTheFlagDataCapacityAndSize) {
  TypeParam buffer[8] = {};
  CKelAllocator<TypeParam> a(0, 1, 0);
  a.AttachBuffer(buffer, 8, 3);
  EXPECT_TRUE(a.IsAttached());
  EXPECT_EQ(a.GetData(), buffer);
  EXPECT_EQ(a.GetSizeAllocated(), 8u);
  EXPECT_EQ(a.GetSize(), 3u);
}

TYPED_TEST(TypedAllocatorTest, AttachBufferReleasesAnOwnedBufferFirst) {
  const long blocks = LiveTrackedBlocks();
  TypeParam buffer[4] = {};
  CKelAllocator<TypeParam> a(16, 1, 0);
  a.AttachBuffer(buffer, 4, 4);
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
}

TYPED_TEST(TypedAllocatorTest, AttachedBufferResizesWithinItsCapacityWithoutMoving) {
  TypeParam buffer[8] = {};
  CKelAllocator<TypeParam> a(0, 4, 1);
  a.AttachBuffer(buffer, 8, 0);
  EXPECT_EQ(a.SetSize(8, nullptr), buffer);
  EXPECT_EQ(a.GetSize(), 8u);
  EXPECT_EQ(a.SetSize(2, buffer + 5), buffer + 5);
  EXPECT_EQ(a.GetSize(), 2u);
  EXPECT_EQ(a.SetSize(0, nullptr), buffer);
  EXPECT_EQ(a.GetData(), buffer);
  EXPECT_EQ(a.GetSizeAllocated(), 8u);
}

TYPED_TEST(TypedAllocatorTest, AttachedBufferGrownPastItsCapacityThrowsMinus25AndChangesNothing) {
  TypeParam buffer[4] = {1, 2, 3, 4};
  CKelAllocator<TypeParam> a(0, 1, 0);
  a.AttachBuffer(buffer, 4, 2);
  const long blocks = LiveTrackedBlocks();
  EXPECT_KEL_THROW(a.SetSize(5, nullptr), -25, "CKelAllocator<>::Alloc");
  EXPECT_EQ(a.GetData(), buffer);
  EXPECT_EQ(a.GetSizeAllocated(), 4u);
  EXPECT_EQ(a.GetSize(), 2u);
  EXPECT_TRUE(a.IsAttached());
  EXPECT_EQ(LiveTrackedBlocks(), blocks);
  EXPECT_EQ(buffer[3], 4);
}

TYPED_TEST(TypedAllocatorTest, DetachBufferForgetsAnAttachedBufferWithoutReleasingIt) {
  TypeParam buffer[4] = {1, 2, 3, 4};
  CKelAllocator<TypeParam> a(0, 1, 0);
  a.AttachBuffer(buffer, 4, 4);
  a.DetachBuffer();
  EXPECT_FALSE(a.IsAttached());
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(a.GetSizeAllocated(), 0u);
  EXPECT_EQ(a.GetSize(), 0u);
  a.SetSize(6, nullptr);
  EXPECT_NE(a.GetData(), buffer);
  EXPECT_EQ(buffer[0], 1);
}

TYPED_TEST(TypedAllocatorTest, DetachBufferOfAnOwnedBufferDoesNothing) {
  CKelAllocator<TypeParam> a(5, 1, 0);
  TypeParam* data = a.GetData();
  a.DetachBuffer();
  EXPECT_EQ(a.GetData(), data);
  EXPECT_EQ(a.GetSizeAllocated(), 5u);
  EXPECT_EQ(a.GetSize(), 5u);
}

// ASan would report freeing a stack buffer here if the destructor released
// an attached one.
TYPED_TEST(TypedAllocatorTest, DestructorOnlyForgetsAnAttachedBuffer) {
  TypeParam buffer[4] = {1, 2, 3, 4};
  {
    CKelAllocator<TypeParam> a(0, 1, 0);
    a.AttachBuffer(buffer, 4, 4);
    a._Free();
    EXPECT_EQ(a.GetData(), buffer);
  }
  EXPECT_EQ(buffer[2], 3);
}

// ---- string ----

TEST_F(AllocatorTest, StringOfSizeFiveHoldsCapacityFiveAndTheEmptyString) {
  CKelString<char> s(5, 1);
  EXPECT_EQ(s.GetSizeAllocated(), 5u);
  EXPECT_STREQ(s.GetPtr(), "");
}

TEST_F(AllocatorTest, GetPtrOfAStringWithoutBufferAllocatesOneEmptyCharacter) {
  CKelString<char> s(0, 1);
  EXPECT_EQ(s.GetData(), nullptr);
  const long blocks = LiveTrackedBlocks();
  char* p = s.GetPtr();
  ASSERT_NE(p, nullptr);
  EXPECT_STREQ(p, "");
  EXPECT_EQ(s.GetSizeAllocated(), 1u);
  EXPECT_EQ(LiveTrackedBlocks(), blocks + 1);
  EXPECT_EQ(s.GetPtr(), p);
}

TEST_F(AllocatorTest, StringSetSizeFourOnSevenCharactersKeepsThree) {
  CKelString<char> s(8, 1);
  std::strcpy(s.GetPtr(), "abcdefg");
  EXPECT_EQ(s.GetSizeAllocated(), 8u);
  char* p = s.SetSize(4);
  EXPECT_EQ(p, s.GetData());
  EXPECT_STREQ(s.GetPtr(), "abc");
  EXPECT_EQ(s.GetSizeAllocated(), 4u);
}

TEST_F(AllocatorTest, StringSetSizeZeroBehavesAsSetSizeOne) {
  CKelString<char> s(8, 1);
  std::strcpy(s.GetPtr(), "abcdefg");
  s.SetSize(0);
  EXPECT_EQ(s.GetSizeAllocated(), 1u);
  EXPECT_EQ(s.GetSize(), 1u);
  EXPECT_STREQ(s.GetPtr(), "");
  CKelString<char> fresh(0, 1);
  fresh.SetSize(0);
  EXPECT_EQ(fresh.GetSizeAllocated(), 1u);
  EXPECT_STREQ(fresh.GetPtr(), "");
}

TEST_F(AllocatorTest, StringFirstSizingLeavesItEmpty) {
  CKelString<char> s(0, 1);
  s.SetSize(10);
  EXPECT_STREQ(s.GetPtr(), "");
  EXPECT_EQ(s.GetSizeAllocated(), 10u);
}

TEST_F(AllocatorTest, StringGrowthKeepsTheTextAndTerminatesTheLastPlace) {
  CKelString<char> s(4, 1);
  std::strcpy(s.GetPtr(), "abc");
  s.SetSize(8);
  EXPECT_STREQ(s.GetPtr(), "abc");
  EXPECT_EQ(s[7], '\0');
}

TEST_F(AllocatorTest, StringCapacityFollowsItsStep) {
  CKelString<char> s(5, 4);
  EXPECT_EQ(s.GetSizeAllocated(), 8u);
  EXPECT_STREQ(s.GetPtr(), "");
}

TEST_F(AllocatorTest, StringAccessorsReachTheSameCharacters) {
  CKelString<char> s(4, 1);
  s[0] = 'h';
  s.GetAt(1) = 'i';
  s[2UL] = '\0';
  char* raw = s;
  EXPECT_EQ(raw, s.GetPtr());
  EXPECT_STREQ(raw, "hi");
  EXPECT_EQ(s.GetAt(0), 'h');
}

TEST_F(AllocatorTest, StringConstructorFailureThrowsMinus10AndLeaksNothing) {
  kel_test::FailureScope fail(1);
  EXPECT_KEL_THROW(CKelString<char> s(5, 1), -10, "CKelAllocator<>::Alloc");
}

TEST_F(AllocatorTest, StringGetPtrFailureThrowsMinus10) {
  CKelString<char> s(0, 1);
  {
    kel_test::FailureScope fail(1);
    EXPECT_KEL_THROW(s.GetPtr(), -10, "CKelAllocator<>::Alloc");
  }
  EXPECT_EQ(s.GetData(), nullptr);
  EXPECT_EQ(s.GetSizeAllocated(), 0u);
}

TEST_F(AllocatorTest, StringSetSizeFailureKeepsTheText) {
  CKelString<char> s(4, 1);
  std::strcpy(s.GetPtr(), "abc");
  {
    kel_test::FailureScope fail(1);
    EXPECT_KEL_THROW(s.SetSize(64), -10, "CKelAllocator<>::Alloc");
  }
  EXPECT_STREQ(s.GetPtr(), "abc");
  EXPECT_EQ(s.GetSizeAllocated(), 4u);
}

// ---- byte array ----

TEST_F(AllocatorTest, ArrayIsTheAllocatorWithItsArguments) {
  CKelArray<unsigned char> a(4, 2, 1);
  EXPECT_EQ(a.GetSizeAllocated(), 4u);
  EXPECT_EQ(a.GetSize(), 4u);
  EXPECT_TRUE(a.IsZeroFill());
  ASSERT_NE(a.GetPtr(), nullptr);
  EXPECT_EQ(a.GetPtr(), a.GetData());
  for (int i = 0; i < 4; ++i) EXPECT_EQ(a.GetPtr()[i], 0);
}

TEST_F(AllocatorTest, EmptyArrayHasANullPointer) {
  CKelArray<unsigned char> a(0, 1, 0);
  EXPECT_EQ(a.GetPtr(), nullptr);
}

TEST_F(AllocatorTest, ArrayResizedToZeroHasANullPointer) {
  CKelArray<unsigned char> a(6, 1, 0);
  a.SetSize(0, nullptr);
  EXPECT_EQ(a.GetData(), nullptr);
  EXPECT_EQ(a.GetPtr(), nullptr);
}

TEST_F(AllocatorTest, ArrayConstructorFailureThrowsMinus10AndLeaksNothing) {
  kel_test::FailureScope fail(1);
  EXPECT_KEL_THROW(CKelArray<unsigned char> a(6, 1, 1), -10, "CKelAllocator<>::Alloc");
}

}  // namespace
