// Release-character escaping on memory buffers: matching a special string,
// writing with releases, removing them in place, and cutting a buffer into
// release-free blocks.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "adapter/adp.h"
#include "stream/release.h"

namespace {

DB_SPECIAL_STRINGS Special(const char* pszDelimiterLen, const char* pszDelimiter,
                           const char* pszTerminatorLen, const char* pszTerminator,
                           const char* pszRelease) {
  DB_SPECIAL_STRINGS s;
  std::memset(&s, 0, sizeof s);
  std::memcpy(s.szDelimiterLen, pszDelimiterLen, std::strlen(pszDelimiterLen));
  std::memcpy(s.szTerminatorLen, pszTerminatorLen, std::strlen(pszTerminatorLen));
  std::memcpy(s.szDelimiter, pszDelimiter, std::strlen(pszDelimiter));
  std::memcpy(s.szTerminator, pszTerminator, std::strlen(pszTerminator));
  std::memcpy(s.szRelease, pszRelease, std::strlen(pszRelease));
  return s;
}

// An adapter writing into a stream of its own; the stream is handed over
// the way a driver does, through the per-call set-up.
class ReleaseTest : public ::testing::Test {
 protected:
  void Use(DB_SPECIAL_STRINGS* pSpecial) {
    adp_.reset(new CAdp(pSpecial));
    Column_Def def;
    std::memset(&def, 0, sizeof def);
    def.Flags = COLDEF_DEFINED;
    // Any non-NULL handles pass the set-up; nothing here calls OCI.
    adp_->_Init(stream_, &trace_, reinterpret_cast<OCIEnv*>(1), reinterpret_cast<OCIError*>(1),
                reinterpret_cast<OCISvcCtx*>(1), &def);
  }
  void SetUp() override {
    trace_.CaptureToBuffer();
    Use(nullptr);
  }
  std::string Written() {
    adp_->_FlushOut();
    std::string out(stream_.GetSize(), '\0');
    stream_.Seek(0, 0);
    if (!out.empty()) stream_.Read(&out[0], out.size());
    stream_.SetSize(0);
    return out;
  }
  long Escape(std::string value) { return adp_->_WriteStringAddRelease(&value[0], value.size(), 1); }
  long Binary(std::string value) { return adp_->_WriteStringAddRelease(&value[0], value.size(), 0); }
  std::string Remove(std::string value, unsigned long* pLength = nullptr) {
    const unsigned long n = adp_->_RemoveReleaseChars(&value[0], value.size());
    if (pLength != nullptr) *pLength = n;
    return value.substr(0, n);
  }
  // Every block of a buffer and the result that came with it.
  std::vector<std::pair<std::string, int>> Blocks(const std::string& buffer, int bHonour = 1) {
    CAdpReleseParser parser(*adp_, buffer.data(), buffer.size(), bHonour);
    std::vector<std::pair<std::string, int>> blocks;
    for (;;) {
      CAdpReleaseDataBlock block;
      const int more = parser.GetNextBlock(trace_, block);
      blocks.emplace_back(std::string(block.GetData(), block.GetSize()), more);
      if (!more) break;
    }
    return blocks;
  }

  CKelTrace trace_;
  CKelStream stream_{0, nullptr, nullptr, 0};
  std::unique_ptr<CAdp> adp_;
};

typedef std::vector<std::pair<std::string, int>> BlockList;

TEST_F(ReleaseTest, StringAtPositionComparesOverItsLength) {
  const char buf[] = "ab|cd";
  EXPECT_EQ(1, adp_->_CheckIfStringAtPos(buf + 2, buf + 5, "|", 1));
  EXPECT_EQ(0, adp_->_CheckIfStringAtPos(buf + 1, buf + 5, "|", 1));
  EXPECT_EQ(1, adp_->_CheckIfStringAtPos(buf, buf + 5, "abX", 2));
}

TEST_F(ReleaseTest, StringNeverMatchesPastTheEnd) {
  const char buf[] = "a\r";
  EXPECT_EQ(0, adp_->_CheckIfStringAtPos(buf + 1, buf + 2, "\r\n", 2));
  EXPECT_EQ(0, adp_->_CheckIfStringAtPos(buf + 2, buf + 2, "|", 1));
}

TEST_F(ReleaseTest, StringComparisonStopsAtACommonZeroByte) {
  const char buf[] = {'x', '\0', 'y'};
  EXPECT_EQ(1, adp_->_CheckIfStringAtPos(buf, buf + 3, "x\0z", 3));
  EXPECT_EQ(1, adp_->_CheckIfStringAtPos(buf, buf + 3, "", 0));
}

TEST_F(ReleaseTest, EverySpecialStringIsFound) {
  for (const char* psz : {"[", "]", "|", "!", "\r\n"}) {
    const std::string s = std::string("x") + psz;
    EXPECT_EQ(1, adp_->_IsSpecialString(s.data() + 1, s.data() + s.size())) << psz;
  }
  const std::string cr = "\r";
  EXPECT_EQ(0, adp_->_IsSpecialString(cr.data(), cr.data() + 1));
  const std::string plain = "a";
  EXPECT_EQ(0, adp_->_IsSpecialString(plain.data(), plain.data() + 1));
}

TEST_F(ReleaseTest, EscapingWritesAReleaseBeforeEachSpecialString) {
  EXPECT_EQ(4, Escape("a|b"));
  EXPECT_EQ("a!|b", Written());
  EXPECT_EQ(2, Escape("|"));
  EXPECT_EQ("!|", Written());
  EXPECT_EQ(2, Escape("!"));
  EXPECT_EQ("!!", Written());
  EXPECT_EQ(6, Escape("a[b]"));
  EXPECT_EQ("a![b!]", Written());
  EXPECT_EQ(5, Escape("x\r\ny"));
  EXPECT_EQ("x!\r\ny", Written());
  EXPECT_EQ(3, Escape("x\ry"));
  EXPECT_EQ("x\ry", Written());
}

TEST_F(ReleaseTest, EscapingAnEmptyValueWritesNothing) {
  EXPECT_EQ(0, adp_->_WriteStringAddRelease(nullptr, 0, 1));
  EXPECT_EQ("", Written());
}

TEST_F(ReleaseTest, BinaryWritesLengthBarAndBytesUnchanged) {
  EXPECT_EQ(3, Binary("a|b"));
  EXPECT_EQ("3|a|b", Written());
  EXPECT_EQ(0, Binary(""));
  EXPECT_EQ("0|", Written());
  EXPECT_EQ(4, Binary(std::string("!\0[]", 4)));
  EXPECT_EQ(std::string("4|!\0[]", 6), Written());
}

TEST_F(ReleaseTest, BinaryLengthOfSeveralDigits) {
  const std::string bytes(1234567, '|');
  EXPECT_EQ(1234567, Binary(bytes));
  const std::string out = Written();
  EXPECT_EQ("1234567|", out.substr(0, 8));
  EXPECT_TRUE(out.substr(8) == bytes);
  EXPECT_EQ(10, Binary("0123456789"));
  EXPECT_EQ("10|0123456789", Written());
}

TEST_F(ReleaseTest, TwoByteDelimiterIsEscapedAsAWhole) {
  DB_SPECIAL_STRINGS s = Special("2", "||", "2", "\r\n", "!");
  Use(&s);
  EXPECT_EQ(5, Escape("a||b"));
  EXPECT_EQ("a!||b", Written());
  EXPECT_EQ(3, Escape("a|b"));
  EXPECT_EQ("a|b", Written());
  // Matched bytes are tested again: "|||" holds the delimiter at 0 and 1.
  EXPECT_EQ(5, Escape("|||"));
  EXPECT_EQ("!|!||", Written());
}

TEST_F(ReleaseTest, BinaryLengthEndsWithABarWhateverTheDelimiter) {
  DB_SPECIAL_STRINGS s = Special("1", ";", "1", "\n", "\\");
  Use(&s);
  EXPECT_EQ(2, Binary("ab"));
  EXPECT_EQ("2|ab", Written());
}

TEST_F(ReleaseTest, RemovingReleasesKeepsTheEscapedByte) {
  unsigned long n = 0;
  EXPECT_EQ("a!b", Remove("a!!b", &n));
  EXPECT_EQ(3u, n);
  EXPECT_EQ("a", Remove("!a", &n));
  EXPECT_EQ(1u, n);
  EXPECT_EQ("a|b[c]", Remove("a!|b![c!]", &n));
  EXPECT_EQ("", Remove("", &n));
  EXPECT_EQ(0u, n);
  EXPECT_EQ("abc", Remove("abc"));
  EXPECT_EQ("!!", Remove("!!!!"));
}

TEST_F(ReleaseTest, BufferWithoutReleasesIsOneBlock) {
  EXPECT_EQ((BlockList{{"abc|def", 0}}), Blocks("abc|def"));
  EXPECT_EQ((BlockList{{"", 0}}), Blocks(""));
}

TEST_F(ReleaseTest, DoubledReleaseGivesAnEmptyBlockThenTheRelease) {
  EXPECT_EQ((BlockList{{"", 1}, {"!", 0}}), Blocks("!!"));
}

TEST_F(ReleaseTest, EscapedDelimiterBeginsTheNextBlock) {
  EXPECT_EQ((BlockList{{"a", 1}, {"|b", 0}}), Blocks("a!|b"));
  EXPECT_EQ((BlockList{{"x", 1}, {"[", 1}, {"]", 1}, {"\r\ny", 0}}), Blocks("x![!]!\r\ny"));
}

TEST_F(ReleaseTest, ReleaseAtTheEndIsRefusedWithItsOffset) {
  CAdpReleseParser parser(*adp_, "ab!", 3, 1);
  CAdpReleaseDataBlock block;
  try {
    parser.GetNextBlock(trace_, block);
    FAIL() << "no exception";
  } catch (const CKelException& e) {
    EXPECT_EQ(-1102, e.GetRC());
    EXPECT_STREQ("CAdpReleseParser::GetNextBlock", e.GetFunc());
    EXPECT_STREQ("Invalid relese character position", e.GetText());
  }
  EXPECT_STREQ("*ERR: at offset 3\n*ERR: in CAdpReleseParser::GetNextBlock (-2)\n",
               trace_.GetBuffer());
}

TEST_F(ReleaseTest, ReleaseBeforeAnOrdinaryByteIsRefused) {
  CAdpReleseParser parser(*adp_, "ok!x", 4, 1);
  CAdpReleaseDataBlock block;
  EXPECT_THROW(parser.GetNextBlock(trace_, block), CKelException);
  EXPECT_STREQ("*ERR: at offset 3\n*ERR: in CAdpReleseParser::GetNextBlock (-2)\n",
               trace_.GetBuffer());
}

TEST_F(ReleaseTest, WithoutHonouringReleasesTheBufferIsOneBlock) {
  EXPECT_EQ((BlockList{{"!!!!!", 0}}), Blocks("!!!!!", 0));
  EXPECT_EQ((BlockList{{"a!x", 0}}), Blocks("a!x", 0));
}

TEST_F(ReleaseTest, ConfiguredReleaseAndTerminator) {
  DB_SPECIAL_STRINGS s = Special("2", "##", "1", "\n", "\\");
  Use(&s);
  EXPECT_EQ((BlockList{{"a", 1}, {"##b", 1}, {"\nc", 1}, {"\\", 0}}), Blocks("a\\##b\\\nc\\\\"));
  EXPECT_EQ("a##b\nc", Remove("a\\##b\\\nc"));
}

TEST_F(ReleaseTest, NoSpecialStringsMeansDefaults) {
  EXPECT_EQ(std::string("!"), std::string(adp_->_GetRelease(), 1));
  EXPECT_EQ(1, adp_->_GetReleaseLen());
  EXPECT_EQ("|", std::string(adp_->_GetDelimiter(), adp_->_GetDelimiterLen()));
  EXPECT_EQ("\r\n", std::string(adp_->_GetTerminator(), adp_->_GetTerminatorLen()));
}

TEST_F(ReleaseTest, TwoByteDelimiterRecord) {
  DB_SPECIAL_STRINGS s = Special("2", "||", "2", "\r\n", "!");
  Use(&s);
  EXPECT_EQ("||", std::string(adp_->_GetDelimiter(), adp_->_GetDelimiterLen()));
}

TEST_F(ReleaseTest, ReleaseOfTwoCharactersKeepsTheFirst) {
  DB_SPECIAL_STRINGS s = Special("1", "|", "2", "\r\n", "~#");
  Use(&s);
  EXPECT_EQ(1, adp_->_GetReleaseLen());
  EXPECT_EQ('~', adp_->_GetRelease()[0]);
  EXPECT_EQ(2, Escape("a#"));
  EXPECT_EQ("a#", Written());
  EXPECT_EQ(3, Escape("a~"));
  EXPECT_EQ("a~~", Written());
}

TEST_F(ReleaseTest, ZeroLengthDelimiterIsTakenAsItIs) {
  DB_SPECIAL_STRINGS s = Special("0", "|", "2", "\r\n", "!");
  Use(&s);
  EXPECT_EQ(0, adp_->_GetDelimiterLen());
  // An empty string stands at every position, so every byte is escaped.
  EXPECT_EQ(4, Escape("ab"));
  EXPECT_EQ("!a!b", Written());
}

TEST_F(ReleaseTest, LengthsBeyondTheRecordsRoomAreCut) {
  DB_SPECIAL_STRINGS s = Special("99", "|", "-3", "\r\n", "!");
  Use(&s);
  EXPECT_EQ(32, adp_->_GetDelimiterLen());
  EXPECT_EQ(0, adp_->_GetTerminatorLen());
}

TEST_F(ReleaseTest, SetsListTheirStringsInOrder) {
  DB_SPECIAL_STRINGS s = Special("2", "##", "1", "\n", "\\");
  Use(&s);
  const char* const* ppEnd = adp_->_GetValueEndStrings();
  const int* pnEnd = adp_->_GetValueEndLengths();
  EXPECT_EQ(adp_->_GetRelease(), ppEnd[0]);
  EXPECT_STREQ("]", ppEnd[1]);
  EXPECT_EQ(adp_->_GetDelimiter(), ppEnd[2]);
  EXPECT_EQ(nullptr, ppEnd[3]);
  EXPECT_EQ((std::vector<int>{1, 1, 2, 0}), std::vector<int>(pnEnd, pnEnd + 4));
  const char* const* ppSpecial = adp_->_GetSpecialStrings();
  const int* pnSpecial = adp_->_GetSpecialLengths();
  EXPECT_EQ(adp_->_GetRelease(), ppSpecial[0]);
  EXPECT_STREQ("]", ppSpecial[1]);
  EXPECT_EQ(adp_->_GetDelimiter(), ppSpecial[2]);
  EXPECT_STREQ("[", ppSpecial[3]);
  EXPECT_EQ(adp_->_GetTerminator(), ppSpecial[4]);
  EXPECT_EQ(nullptr, ppSpecial[5]);
  EXPECT_EQ((std::vector<int>{1, 1, 2, 1, 1, 0}), std::vector<int>(pnSpecial, pnSpecial + 6));
}

// Escaping as the format defines it, one byte position after another: the
// strings tested in the order group start, group end, delimiter, release,
// terminator, each over its own length.
std::string ReferenceEscape(const std::string& value, const std::vector<std::string>& specials,
                            char cRelease) {
  std::string out;
  for (size_t i = 0; i < value.size(); ++i) {
    for (const std::string& special : specials) {
      if (!special.empty() && value.compare(i, special.size(), special) == 0) {
        out += cRelease;
        break;
      }
    }
    out += value[i];
  }
  return out;
}

// The strings a value is escaped against, in ReferenceEscape's order, and an
// alphabet rich in their bytes: the default strings, and a two-byte
// delimiter, a three-byte terminator and another release (the special
// strings at pConfigured).
struct EscapeSet {
  DB_SPECIAL_STRINGS* pSpecial;
  std::vector<std::string> specials;
  char cRelease;
  const char* pszAlphabet;
};

std::vector<EscapeSet> EscapeSets(DB_SPECIAL_STRINGS* pConfigured) {
  *pConfigured = Special("2", "<>", "3", "END", "~");
  return {{nullptr, {"[", "]", "|", "!", "\r\n"}, '!', "ab|!][\r\nxyz"},
          {pConfigured, {"[", "]", "<>", "~", "END"}, '~', "a<>~[]ENDx|!"}};
}

// Values of every length up to 100 over an alphabet rich in special bytes,
// so that specials stand at every offset of a sixteen-byte block and in the
// last bytes of a value.
TEST_F(ReleaseTest, EscapingAgreesWithAByteByByteReferenceOnRandomValues) {
  DB_SPECIAL_STRINGS configured;
  unsigned nSeed = 12345;
  auto next = [&nSeed]() {
    nSeed = nSeed * 1103515245u + 12345u;
    return (nSeed >> 16) & 0x7fff;
  };
  for (const EscapeSet& set : EscapeSets(&configured)) {
    Use(set.pSpecial);
    const std::string alphabet = set.pszAlphabet;
    for (int nRound = 0; nRound < 2000; ++nRound) {
      std::string value(next() % 101, '\0');
      for (char& c : value) c = alphabet[next() % alphabet.size()];
      const std::string expected = ReferenceEscape(value, set.specials, set.cRelease);
      EXPECT_EQ(static_cast<long>(expected.size()), Escape(value)) << value;
      ASSERT_EQ(expected, Written()) << value;
    }
  }
}

// Long values of plain bytes with one special string (or its first byte
// alone) at each place: found wherever it stands, in or across the blocks a
// long value is scanned in, and in the last bytes.
TEST_F(ReleaseTest, ASpecialAnywhereInALongPlainValueIsEscaped) {
  DB_SPECIAL_STRINGS configured;
  for (const EscapeSet& set : EscapeSets(&configured)) {
    Use(set.pSpecial);
    for (const size_t nLength : {63u, 64u, 65u, 95u, 96u, 97u, 130u, 257u}) {
      for (const std::string& special : set.specials) {
        for (const std::string& inserted : {special, special.substr(0, 1)}) {
          for (size_t nAt = 0; nAt < nLength; ++nAt) {
            std::string value(nLength, 'a');
            value.replace(nAt, inserted.size(), inserted);
            value.resize(nLength);
            const std::string expected = ReferenceEscape(value, set.specials, set.cRelease);
            EXPECT_EQ(static_cast<long>(expected.size()), Escape(value)) << nAt << " " << value;
            ASSERT_EQ(expected, Written()) << nAt << " " << value;
          }
        }
      }
    }
  }
}

}  // namespace
