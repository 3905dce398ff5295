#include <host/kel.h>

#include <gtest/gtest.h>

#include <string>

namespace {

struct MemnstrCase {
  const char* pszName;
  std::string data;
  std::string needle;
  long nExpected;  // offset of the match, -1 for none
};

std::string Bytes(const char* p, size_t n) { return std::string(p, n); }

const MemnstrCase kCases[] = {
    {"single_byte_middle", "abcdef", "d", 3},
    {"single_byte_absent", "abcdef", "z", -1},
    {"at_start", "abcdef", "abc", 0},
    {"at_end", "abcdef", "def", 3},
    {"whole_data", "abcdef", "abcdef", 0},
    {"longer_than_data", "abc", "abcd", -1},
    {"first_of_several", "xabxabx", "ab", 1},
    {"partial_then_full", "aaab", "aab", 1},
    {"overlapping_prefix", "abababc", "ababc", 2},
    {"first_byte_only_matches", "a_a_a_", "ab", -1},
    {"nul_in_data", Bytes("ab\0cd", 5), "cd", 3},
    {"nul_in_needle", Bytes("ab\0cd\0ef", 8), Bytes("d\0e", 3), 4},
    {"nul_needle_alone", Bytes("abc\0", 4), Bytes("\0", 1), 3},
    {"nul_not_a_terminator", Bytes("a\0b", 3), Bytes("a\0c", 3), -1},
    {"high_bytes", "\xff\xfe\xff\xfd", "\xff\xfd", 2},
    {"empty_data", "", "a", -1},
    {"needle_at_last_byte", "abcx", "x", 3},
    {"cut_at_end", "abcde", "def", -1},
};

TEST(KelMemnstr, TableOfCases) {
  for (const MemnstrCase& c : kCases) {
    SCOPED_TRACE(c.pszName);
    void* p = kel_memnstr(c.data.data(), c.needle.data(), c.data.size(),
                          c.needle.size());
    if (c.nExpected < 0) {
      EXPECT_EQ(nullptr, p);
    } else {
      ASSERT_NE(nullptr, p);
      EXPECT_EQ(c.nExpected, static_cast<const char*>(p) - c.data.data());
    }
  }
}

TEST(KelMemnstr, EmptyNeedleIsFoundAtStart) {
  const char data[] = "abc";
  EXPECT_EQ(data, kel_memnstr(data, "x", 3, 0));
  EXPECT_EQ(data, kel_memnstr(data, nullptr, 3, 0));
}

TEST(KelMemnstr, EmptyNeedleInEmptyDataIsFound) {
  const char data[] = "";
  EXPECT_EQ(data, kel_memnstr(data, "x", 0, 0));
}

TEST(KelMemnstr, NullArgumentsFindNothing) {
  EXPECT_EQ(nullptr, kel_memnstr(nullptr, "a", 5, 1));
  EXPECT_EQ(nullptr, kel_memnstr("abc", nullptr, 3, 1));
}

TEST(KelMemnstr, LengthLimitsTheSearch) {
  const char data[] = "abcabc";
  EXPECT_EQ(nullptr, kel_memnstr(data, "ca", 3, 2));
  EXPECT_EQ(data + 2, kel_memnstr(data, "ca", 4, 2));
}

TEST(KelMemnstr, AgreesWithNaiveSearchOnRandomData) {
  unsigned int nSeed = 12345;
  auto next = [&nSeed] {
    nSeed = nSeed * 1103515245u + 12345u;
    return (nSeed >> 16) & 0x7fff;
  };
  for (int round = 0; round < 3000; ++round) {
    std::string data(next() % 40, '\0');
    for (char& ch : data) ch = static_cast<char>(next() % 3);
    std::string needle(1 + next() % 4, '\0');
    for (char& ch : needle) ch = static_cast<char>(next() % 3);
    size_t nExpected = data.find(needle);
    void* p = kel_memnstr(data.data(), needle.data(), data.size(),
                          needle.size());
    if (nExpected == std::string::npos) {
      ASSERT_EQ(nullptr, p) << round;
    } else {
      ASSERT_EQ(data.data() + nExpected, p) << round;
    }
  }
}

}  // namespace
