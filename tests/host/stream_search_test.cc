#include "stream_test_util.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

// A NULL-terminated string list as the adapter passes it.
struct NeedleList {
  std::vector<std::string> texts;
  std::vector<const char*> pointers;
  std::vector<int> lengths;

  explicit NeedleList(std::vector<std::string> list) : texts(std::move(list)) {
    for (const std::string& text : texts) {
      pointers.push_back(text.data());
      lengths.push_back(static_cast<int>(text.size()));
    }
    pointers.push_back(nullptr);
    lengths.push_back(0);
  }
};

// The plain definition: first offset where any listed string lies wholly in
// the data, earlier list entries winning at equal offsets.
long ReferenceLength(const std::string& data, size_t nFrom,
                     const NeedleList& list, int& nIndex) {
  for (size_t pos = nFrom; pos < data.size(); ++pos) {
    for (size_t i = 0; i < list.texts.size(); ++i) {
      const std::string& text = list.texts[i];
      if (text.empty() || pos + text.size() > data.size()) continue;
      if (memcmp(data.data() + pos, text.data(), text.size()) == 0) {
        nIndex = static_cast<int>(i);
        return static_cast<long>(pos - nFrom);
      }
    }
  }
  nIndex = -1;
  return static_cast<long>(data.size() - nFrom);
}

// Measures with the list as given and with the list prepared once; both
// must give the same answer, and neither may move the position.
long Measure(CKelStream& stream, const NeedleList& list, int& nIndex) {
  const char** ppsz = const_cast<const char**>(list.pointers.data());
  const long nPosition = stream.Tell();
  const long nLength = stream.GetDelimitedLength(ppsz, list.lengths.data(), nIndex);
  EXPECT_EQ(nPosition, stream.Tell());
  CKelDelimiters prepared;
  prepared.Prepare(ppsz, list.lengths.data());
  int nPreparedIndex = 42;
  EXPECT_EQ(nLength, stream.GetDelimitedLength(prepared, nPreparedIndex));
  EXPECT_EQ(nIndex, nPreparedIndex);
  EXPECT_EQ(nPosition, stream.Tell());
  return nLength;
}

struct SearchCase {
  const char* pszName;
  unsigned long nPageSize;
  std::string data;
  long nStart;
  std::vector<std::string> needles;
  long nLength;
  int nIndex;
};

const std::vector<SearchCase>& Cases() {
  static const std::vector<SearchCase> cases = {
      {"delimiter_found", 0, "abc|def", 0, {"!", "]", "|"}, 3, 2},
      {"nothing_found_gives_rest", 0, "abcdef", 0, {"!", "]", "|"}, 6, -1},
      {"from_current_position", 0, "ab|cd|ef", 3, {"|"}, 2, 0},
      {"at_current_position", 0, "ab|cd", 2, {"|"}, 0, 0},
      {"at_end_of_data", 0, "abc", 3, {"|"}, 0, -1},
      {"empty_stream", 0, "", 0, {"|"}, 0, -1},
      {"first_occurrence_wins", 0, "x]y|z", 0, {"|", "]"}, 1, 1},
      {"earlier_list_entry_wins_at_same_offset", 0, "ab||c", 0, {"|", "||"},
       2, 0},
      {"longer_first_in_list_wins", 0, "ab||c", 0, {"||", "|"}, 2, 0},
      {"multibyte_terminator", 0, "row\r\nnext", 0, {"|", "\r\n"}, 3, 1},
      {"partial_multibyte_not_a_match", 0, "a\rb\r\n", 0, {"\r\n"}, 3, 0},
      {"multibyte_cut_by_end", 0, "abc\r", 0, {"\r\n"}, 4, -1},
      {"straddles_tiny_pages", 2, "abc\r\nd", 0, {"\r\n"}, 3, 0},
      {"straddles_three_pages", 1, "xx<-->yy", 0, {"<-->"}, 2, 0},
      {"zero_length_entry_ignored", 0, "ab|c", 0, {"", "|"}, 2, 1},
      {"only_zero_length_entries", 0, "ab|c", 0, {"", ""}, 4, -1},
      {"nul_bytes_match", 0, std::string("a\0b\0c", 5), 0,
       {std::string("\0c", 2)}, 3, 0},
      {"overlapping_prefixes", 3, "aaaab", 0, {"aab", "ab"}, 2, 0},
      {"self_overlap", 1, "ababac", 0, {"abac"}, 2, 0},
      {"many_distinct_first_bytes", 2, "mnopqrstuvwxyz9", 0,
       {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"}, 14, 9},
      {"many_distinct_none_found", 3, "abcdefgh", 0,
       {"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"}, 8, -1},
  };
  return cases;
}

TEST(KelStreamSearch, TableOfCases) {
  for (const SearchCase& c : Cases()) {
    SCOPED_TRACE(c.pszName);
    CKelStream stream(c.nPageSize, nullptr, nullptr, 0);
    Put(stream, c.data);
    stream.Seek(c.nStart, 0);
    NeedleList list(c.needles);
    int nIndex = 99;
    EXPECT_EQ(c.nLength, Measure(stream, list, nIndex));
    EXPECT_EQ(c.nIndex, nIndex);
    EXPECT_EQ(c.nStart, stream.Tell());
  }
}

TEST(KelStreamSearch, PositionDoesNotMove) {
  CKelStream stream(3, nullptr, nullptr, 0);
  Put(stream, "abc|def|");
  stream.Seek(1, 0);
  NeedleList list({"|"});
  int nIndex = 0;
  EXPECT_EQ(2, Measure(stream, list, nIndex));
  EXPECT_EQ(1, stream.Tell());
  char c = 0;
  stream.Read(&c, 1);
  EXPECT_EQ('b', c);
}

TEST(KelStreamSearch, NegativeLengthIsIgnored) {
  CKelStream stream(0, nullptr, nullptr, 0);
  Put(stream, "ab|cd");
  stream.Seek(0, 0);
  const char* apsz[] = {"a", "|", nullptr};
  int anLengths[] = {-1, 1, 0};
  int nIndex = 0;
  EXPECT_EQ(2, stream.GetDelimitedLength(apsz, anLengths, nIndex));
  EXPECT_EQ(1, nIndex);
}

TEST(KelStreamSearch, NullListsAreRejected) {
  CKelStream stream(0, nullptr, nullptr, 0);
  int anLengths[] = {0};
  const char* apsz[] = {nullptr};
  int nIndex = 0;
  ExpectKelError(KEL_ERR_ARGUMENT, [&] {
    stream.GetDelimitedLength(nullptr, anLengths, nIndex);
  });
  ExpectKelError(KEL_ERR_ARGUMENT,
                 [&] { stream.GetDelimitedLength(apsz, nullptr, nIndex); });
}

TEST(KelStreamSearch, PreparingNullListsIsRejected) {
  CKelDelimiters delimiters;
  int anLengths[] = {0};
  const char* apsz[] = {nullptr};
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { delimiters.Prepare(nullptr, anLengths); });
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { delimiters.Prepare(apsz, nullptr); });
}

TEST(KelStreamSearch, AnUnpreparedSetIsRejected) {
  CKelStream stream(0, nullptr, nullptr, 0);
  Put(stream, "ab|cd");
  stream.Seek(0, 0);
  const CKelDelimiters delimiters;
  int nIndex = 0;
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.GetDelimitedLength(delimiters, nIndex); });
  EXPECT_EQ(0, stream.Tell());
}

// The set keeps the list's pointers: a list changed after Prepare is seen
// once it is prepared again, and an empty list finds nothing.
TEST(KelStreamSearch, APreparedSetFollowsItsListWhenPreparedAgain) {
  CKelStream stream(0, nullptr, nullptr, 0);
  Put(stream, "ab|cd!ef");
  stream.Seek(0, 0);
  char szFirst[] = "|";
  const char* apsz[] = {szFirst, nullptr};
  int anLengths[] = {1, 0};
  CKelDelimiters delimiters;
  delimiters.Prepare(apsz, anLengths);
  int nIndex = -1;
  EXPECT_EQ(2, stream.GetDelimitedLength(delimiters, nIndex));
  EXPECT_EQ(0, nIndex);
  szFirst[0] = '!';
  delimiters.Prepare(apsz, anLengths);
  EXPECT_EQ(5, stream.GetDelimitedLength(delimiters, nIndex));
  EXPECT_EQ(0, nIndex);
  anLengths[0] = 0;
  delimiters.Prepare(apsz, anLengths);
  EXPECT_EQ(8, stream.GetDelimitedLength(delimiters, nIndex));
  EXPECT_EQ(-1, nIndex);
}

TEST(KelStreamSearch, FindsAcrossReferencedAndOwnedPages) {
  const char first[] = "abc\r";
  const char second[] = "\nxyz";
  CKelStream stream(0, nullptr, nullptr, 0);
  stream.WritePage(stream.NewPage(first, 4, 0), 4);
  stream.WritePage(stream.NewPage(second, 4, 0), 4);
  Put(stream, "|tail");
  stream.Seek(0, 0);
  NeedleList list({"|", "\r\n"});
  int nIndex = 0;
  EXPECT_EQ(3, Measure(stream, list, nIndex));
  EXPECT_EQ(1, nIndex);
  stream.Seek(5, 0);
  EXPECT_EQ(3, Measure(stream, list, nIndex));
  EXPECT_EQ(0, nIndex);
}

TEST(KelStreamSearch, AdapterSpecialSetOnLongStream) {
  CKelStream stream(0, nullptr, nullptr, 0);
  std::string filler(200000, 'v');
  Put(stream, filler + "]" + filler + "[");
  stream.Seek(0, 0);
  NeedleList list({"!", "]", "|", "[", "\r\n"});
  int nIndex = 0;
  EXPECT_EQ(200000, Measure(stream, list, nIndex));
  EXPECT_EQ(1, nIndex);
  stream.Seek(200001, 0);
  EXPECT_EQ(200000, Measure(stream, list, nIndex));
  EXPECT_EQ(3, nIndex);
}

// One match at every offset of a long single page, so that every boundary
// of the scan's internal windows is met, with both a one-byte and a
// two-byte string (the latter also straddling those boundaries).
TEST(KelStreamSearch, FindsAMatchAtEveryOffsetOfALongPage) {
  NeedleList list({"!", "\r\n"});
  for (size_t nAt = 0; nAt < 1100; ++nAt) {
    for (int nWhich = 0; nWhich < 2; ++nWhich) {
      std::string data(1100, 'v');
      data.replace(nAt, nWhich == 0 ? 1 : 2, nWhich == 0 ? "!" : "\r\n");
      data.resize(1100);
      CKelStream stream(0, nullptr, nullptr, 0);
      Put(stream, data);
      stream.Seek(0, 0);
      int nIndex = -5;
      long nLength = Measure(stream, list, nIndex);
      bool bWhole = nWhich == 0 || nAt + 2 <= data.size();
      ASSERT_EQ(bWhole ? static_cast<long>(nAt) : 1100L, nLength) << nAt;
      ASSERT_EQ(bWhole ? nWhich : -1, nIndex) << nAt;
    }
  }
}

// The last bytes of a page, fewer than sixteen, are looked at with one
// load of the sixteen bytes that end the page: strings in the bytes before
// the position must not count, and each byte after it must. Pages of a
// caller's buffer and of the stream's own, every start and every place.
TEST(KelStreamSearch, LastBytesOfAPageSeeOnlyWhatFollowsThePosition) {
  NeedleList list({"?", "]", "|"});
  for (size_t nSize = 16; nSize <= 40; ++nSize) {
    for (size_t nFrom = nSize > 15 ? nSize - 15 : 0; nFrom <= nSize; ++nFrom) {
      for (size_t nAt = nFrom; nAt <= nSize; ++nAt) {
        for (int bOwn = 0; bOwn < 2; ++bOwn) {
          // Strings everywhere before the position, one at nAt (or none).
          std::string data(nSize, 'v');
          for (size_t i = 0; i < nFrom; ++i) data[i] = "?]|"[i % 3];
          if (nAt < nSize) data[nAt] = ']';
          CKelStream stream(0, nullptr, nullptr, 0);
          if (bOwn) {
            Put(stream, data);
          } else {
            stream.WritePage(stream.NewPage(data.data(), data.size(), 0), data.size());
          }
          stream.Seek(static_cast<long>(nFrom), 0);
          int nIndex = -5;
          const long nLength = Measure(stream, list, nIndex);
          ASSERT_EQ(static_cast<long>(nAt - nFrom), nLength) << nSize << " " << nFrom << " " << nAt;
          ASSERT_EQ(nAt < nSize ? 1 : -1, nIndex) << nSize << " " << nFrom << " " << nAt;
        }
      }
    }
  }
}

// Past the first few dozen bytes of a page, the rest of it is looked at 32
// bytes at a time (where the processor can): a lone first byte of a longer
// string before the match is stepped over, the match found at every place,
// the last bytes of the page seen once, and a page without a match that is
// not the last hands over to the next page. Every answer against the plain
// definition.
TEST(KelStreamSearch, LongFieldsFoundAtEveryPlaceOfThePage) {
  NeedleList list({"|", "\r\n", "]"});
  for (size_t nSize : {49, 50, 63, 64, 65, 80, 95, 96, 97, 129, 200}) {
    for (size_t nFrom : {size_t{0}, size_t{1}, size_t{15}, size_t{17}}) {
      for (size_t nMatch = nFrom; nMatch <= nSize; ++nMatch) {
        for (size_t nLone : {size_t{0}, nFrom + 48, nMatch - 1, nMatch - 33, nMatch + 1}) {
          for (int bTwoPages = 0; bTwoPages < 2; ++bTwoPages) {
            std::string data(nSize, 'v');
            if (nLone < nSize && nLone >= nFrom && nLone != nMatch) data[nLone] = '\r';
            if (nMatch < nSize) data[nMatch] = nMatch % 2 ? '|' : ']';
            std::string tail = bTwoPages ? std::string(40, 'w') + "|" : std::string();
            CKelStream stream(0, nullptr, nullptr, 0);
            stream.WritePage(stream.NewPage(data.data(), data.size(), 0), data.size());
            if (bTwoPages) stream.WritePage(stream.NewPage(tail.data(), tail.size(), 0), tail.size());
            stream.Seek(static_cast<long>(nFrom), 0);
            int nExpectedIndex = 0;
            const long nExpected = ReferenceLength(data + tail, nFrom, list, nExpectedIndex);
            int nIndex = 42;
            const long nGot = Measure(stream, list, nIndex);
            ASSERT_EQ(nExpected, nGot) << nSize << " " << nFrom << " " << nMatch << " " << nLone
                                       << " " << bTwoPages;
            ASSERT_EQ(nExpectedIndex, nIndex) << nSize << " " << nFrom << " " << nMatch;
            ASSERT_EQ(static_cast<long>(nFrom), stream.Tell());
          }
        }
      }
    }
  }
}

// Random data over a small alphabet, random page sizes (tiny ones
// included), random needle sets with shared prefixes, random start offsets,
// and pages that are partly the caller's buffers: every answer must agree
// with the plain definition.
TEST(KelStreamSearch, AgreesWithReferenceOnRandomData) {
  Lcg rng(777);
  const char kAlphabet[] = "ab|\r\n";
  for (int round = 0; round < 3000; ++round) {
    unsigned long nPageSize = rng.Below(4) == 0 ? 0 : 1 + rng.Below(7);
    // Mostly short data; sometimes long enough to cross the scan windows.
    std::string data(rng.Below(8) == 0 ? rng.Below(1500) : rng.Below(60),
                     '\0');
    // Sparse special bytes in long data, dense in short data.
    unsigned int nSpread = data.size() > 60 ? 400 : 5;
    for (char& ch : data) {
      unsigned int n = rng.Below(nSpread);
      ch = n < 5 ? kAlphabet[n] : 'v';
    }

    std::vector<std::string> needles(1 + rng.Below(4));
    for (std::string& needle : needles) {
      needle.resize(1 + rng.Below(5));
      for (char& ch : needle) ch = kAlphabet[rng.Below(5)];
    }
    // Shared prefixes: sometimes derive one needle from another.
    if (needles.size() > 1 && rng.Below(2) == 0) {
      needles[1] = needles[0].substr(0, 1 + rng.Below(
                                                static_cast<unsigned int>(
                                                    needles[0].size())));
    }
    if (rng.Below(6) == 0) needles[rng.Below(static_cast<unsigned int>(
        needles.size()))].clear();
    NeedleList list(needles);

    CKelStream stream(nPageSize, nullptr, nullptr, 0);
    std::vector<std::string> pieces;
    pieces.reserve(data.size() + 1);
    for (size_t at = 0; at < data.size();) {
      size_t n = std::min<size_t>(
          data.size() - at, 1 + rng.Below(data.size() > 60 ? 400 : 9));
      if (rng.Below(3) == 0) {
        pieces.push_back(data.substr(at, n));
        stream.WritePage(stream.NewPage(pieces.back().data(), n, 0), n);
      } else {
        stream.Write(data.data() + at, n);
      }
      at += n;
    }
    size_t nFrom = rng.Below(static_cast<unsigned int>(data.size() + 1));
    stream.Seek(static_cast<long>(nFrom), 0);

    int nExpectedIndex = 0;
    long nExpected = ReferenceLength(data, nFrom, list, nExpectedIndex);
    int nIndex = 42;
    long nGot = Measure(stream, list, nIndex);
    ASSERT_EQ(nExpected, nGot) << "round " << round;
    ASSERT_EQ(nExpectedIndex, nIndex) << "round " << round;
    ASSERT_EQ(static_cast<long>(nFrom), stream.Tell());
  }
}

// The quick look at the next bytes of a page handles one to six strings,
// each count on its own path: every count, on one large page, with fields
// long enough to fill several sixteen-byte blocks.
TEST(KelStreamSearch, AgreesWithReferenceForEachStringCount) {
  Lcg rng(4242);
  const char kAlphabet[] = "ab|?'\r\n+:";
  for (int nStrings = 1; nStrings <= 7; ++nStrings) {
    for (int round = 0; round < 600; ++round) {
      std::string data(rng.Below(120), '\0');
      for (char& ch : data) {
        unsigned int n = rng.Below(60);
        ch = n < 9 ? kAlphabet[n] : 'v';
      }
      std::vector<std::string> needles(static_cast<size_t>(nStrings));
      for (std::string& needle : needles) {
        needle.resize(1 + rng.Below(3));
        for (char& ch : needle) ch = kAlphabet[rng.Below(9)];
      }
      NeedleList list(needles);
      CKelStream stream(0, nullptr, nullptr, 0);
      Put(stream, data);
      size_t nFrom = rng.Below(static_cast<unsigned int>(data.size() + 1));
      stream.Seek(static_cast<long>(nFrom), 0);
      int nExpectedIndex = 0;
      long nExpected = ReferenceLength(data, nFrom, list, nExpectedIndex);
      int nIndex = 42;
      ASSERT_EQ(nExpected, Measure(stream, list, nIndex))
          << nStrings << " strings, round " << round;
      ASSERT_EQ(nExpectedIndex, nIndex) << nStrings << " strings, round " << round;
    }
  }
}

// Same comparison with more distinct first bytes than the memchr path takes.
TEST(KelStreamSearch, AgreesWithReferenceWithManyFirstBytes) {
  Lcg rng(99);
  for (int round = 0; round < 1000; ++round) {
    unsigned long nPageSize = 1 + rng.Below(7);
    std::string data(rng.Below(50), '\0');
    for (char& ch : data) ch = static_cast<char>('a' + rng.Below(12));
    std::vector<std::string> needles(9 + rng.Below(4));
    // Distinct first bytes, so the search cannot take the memchr path.
    for (size_t i = 0; i < needles.size(); ++i) {
      needles[i].resize(1 + rng.Below(3));
      for (char& ch : needles[i]) ch = static_cast<char>('a' + rng.Below(12));
      needles[i][0] = static_cast<char>('a' + i);
    }
    NeedleList list(needles);
    CKelStream stream(nPageSize, nullptr, nullptr, 0);
    Put(stream, data);
    size_t nFrom = rng.Below(static_cast<unsigned int>(data.size() + 1));
    stream.Seek(static_cast<long>(nFrom), 0);
    int nExpectedIndex = 0;
    long nExpected = ReferenceLength(data, nFrom, list, nExpectedIndex);
    int nIndex = 42;
    ASSERT_EQ(nExpected, Measure(stream, list, nIndex)) << "round " << round;
    ASSERT_EQ(nExpectedIndex, nIndex) << "round " << round;
  }
}

}  // namespace
