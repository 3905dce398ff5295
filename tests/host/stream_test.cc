#include "stream_test_util.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <string>
#include <vector>

namespace {

TEST(KelStream, NewStreamIsEmptyAndAtEnd) {
  CKelStream stream(0, nullptr, nullptr, 0);
  EXPECT_EQ(0u, stream.GetSize());
  EXPECT_EQ(0, stream.Tell());
  EXPECT_NE(0, stream.IsEnd());
  char c = 'x';
  EXPECT_EQ(0u, stream.Read(&c, 1));
  EXPECT_EQ('x', c);
}

TEST(KelStream, WriteAdvancesAndReadsBackAcrossPages) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "hello, paged world");
  EXPECT_EQ(18, stream.Tell());
  EXPECT_EQ(18u, stream.GetSize());
  EXPECT_NE(0, stream.IsEnd());
  stream.Seek(0, 0);
  EXPECT_EQ(0, stream.IsEnd());
  char buf[32] = {};
  EXPECT_EQ(18u, stream.Read(buf, sizeof(buf)));
  EXPECT_STREQ("hello, paged world", buf);
  EXPECT_EQ(18, stream.Tell());
}

TEST(KelStream, ReadPastEndReturnsShortCountThenZero) {
  CKelStream stream(3, nullptr, nullptr, 0);
  Put(stream, "abcdefg");
  stream.Seek(5, 0);
  char buf[8] = {};
  EXPECT_EQ(2u, stream.Read(buf, 8));
  EXPECT_EQ("fg", std::string(buf, 2));
  EXPECT_EQ(7, stream.Tell());
  EXPECT_EQ(0u, stream.Read(buf, 8));
  EXPECT_EQ(7, stream.Tell());
}

TEST(KelStream, ReadInPiecesFollowsPosition) {
  CKelStream stream(5, nullptr, nullptr, 0);
  Put(stream, "0123456789abcdef");
  stream.Seek(0, 0);
  std::string joined;
  char buf[3];
  unsigned long n;
  while ((n = stream.Read(buf, 3)) > 0) joined.append(buf, n);
  EXPECT_EQ("0123456789abcdef", joined);
}

TEST(KelStream, ZeroByteReadAndWriteDoNothing) {
  CKelStream stream(0, nullptr, nullptr, 0);
  stream.Write(nullptr, 0);
  EXPECT_EQ(0u, stream.Read(nullptr, 0));
  EXPECT_EQ(0u, stream.GetSize());
}

TEST(KelStream, NullBuffersAreRejected) {
  CKelStream stream(0, nullptr, nullptr, 0);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.Write(nullptr, 3); });
  Put(stream, "abc");
  stream.Seek(0, 0);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.Read(nullptr, 3); });
  EXPECT_EQ(0, stream.Tell());
}

TEST(KelStream, WriteOverwritesInPlaceAndExtendsPastEnd) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdefghij");
  stream.Seek(2, 0);
  Put(stream, "XYZ");
  EXPECT_EQ(5, stream.Tell());
  EXPECT_EQ("abXYZfghij", Contents(stream));
  stream.Seek(8, 0);
  Put(stream, "1234");
  EXPECT_EQ(12, stream.Tell());
  EXPECT_EQ("abXYZfgh1234", Contents(stream));
  EXPECT_EQ(12u, stream.GetSize());
}

TEST(KelStream, ManySmallWritesKeepEveryByte) {
  CKelStream stream(0, nullptr, nullptr, 0);
  std::string expected;
  for (int i = 0; i < 30000; ++i) {
    char piece[4] = {static_cast<char>('a' + i % 26), '|',
                     static_cast<char>('0' + i % 10), 0};
    stream.Write(piece, 3);
    expected.append(piece, 3);
  }
  EXPECT_EQ(static_cast<long>(expected.size()), stream.Tell());
  EXPECT_EQ(expected, Contents(stream));
}

TEST(KelStream, SeekFromStartCurrentAndEnd) {
  CKelStream stream(3, nullptr, nullptr, 0);
  Put(stream, "0123456789");
  stream.Seek(4, 0);
  EXPECT_EQ(4, stream.Tell());
  stream.Seek(3, 1);
  EXPECT_EQ(7, stream.Tell());
  stream.Seek(-5, 1);
  EXPECT_EQ(2, stream.Tell());
  stream.Seek(-1, 2);
  EXPECT_EQ(9, stream.Tell());
  char c = 0;
  EXPECT_EQ(1u, stream.Read(&c, 1));
  EXPECT_EQ('9', c);
  stream.Seek(0, 2);
  EXPECT_NE(0, stream.IsEnd());
}

TEST(KelStream, SeekBeyondEndClampsToEnd) {
  CKelStream stream(3, nullptr, nullptr, 0);
  Put(stream, "abcde");
  stream.Seek(100, 0);
  EXPECT_EQ(5, stream.Tell());
  EXPECT_NE(0, stream.IsEnd());
  stream.Seek(2, 0);
  stream.Seek(50, 1);
  EXPECT_EQ(5, stream.Tell());
  stream.Seek(7, 2);
  EXPECT_EQ(5, stream.Tell());
  Put(stream, "f");
  EXPECT_EQ("abcdef", Contents(stream));
}

TEST(KelStream, SeekBeforeStartThrowsAndKeepsPosition) {
  CKelStream stream(3, nullptr, nullptr, 0);
  Put(stream, "abcde");
  stream.Seek(2, 0);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.Seek(-1, 0); });
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.Seek(-3, 1); });
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.Seek(-6, 2); });
  EXPECT_EQ(2, stream.Tell());
}

TEST(KelStream, SeekWithUnknownOriginThrows) {
  CKelStream stream(0, nullptr, nullptr, 0);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.Seek(0, 3); });
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.Seek(0, -1); });
}

TEST(KelStream, SetSizeZeroEmptiesTheStream) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdefghij");
  stream.SetSize(0);
  EXPECT_EQ(0u, stream.GetSize());
  EXPECT_EQ(0, stream.Tell());
  EXPECT_NE(0, stream.IsEnd());
  Put(stream, "xy");
  EXPECT_EQ("xy", Contents(stream));
}

TEST(KelStream, SetSizeZeroKeepsItsPagesForTheNextData) {
  CKelStream stream(8, nullptr, nullptr, 0);
  Put(stream, "abcdefghijklmnopqrst");  // three pages of 8 bytes
  stream.Seek(0, 0);
  const void* pFirst = stream.ReadPage().GetData();
  stream.SetSize(0);
  // The pages come back for the next data, the last given up first; a
  // page of another size is made afresh.
  Put(stream, "0123456789abcdefghij");
  EXPECT_EQ("0123456789abcdefghij", Contents(stream));
  stream.Seek(16, 0);
  EXPECT_EQ(pFirst, stream.ReadPage().GetData());
  stream.SetSize(0);
  CKelStreamPage& big = stream.NewPage(32);
  EXPECT_NE(pFirst, big.GetData());
  std::memset(big.GetData(), 'z', 32);
  stream.WritePage(big, 32);
  EXPECT_EQ(std::string(32, 'z'), Contents(stream));
}

TEST(KelStream, SetSizeTruncatesAtEveryOffsetAroundPages) {
  for (unsigned long nKeep = 1; nKeep <= 12; ++nKeep) {
    SCOPED_TRACE(nKeep);
    CKelStream stream(4, nullptr, nullptr, 0);
    Put(stream, "abcdefghijkl");
    stream.SetSize(nKeep);
    EXPECT_EQ(nKeep, stream.GetSize());
    EXPECT_EQ(static_cast<long>(nKeep), stream.Tell());
    EXPECT_EQ(std::string("abcdefghijkl").substr(0, nKeep), Contents(stream));
    Put(stream, "XY");
    EXPECT_EQ(std::string("abcdefghijkl").substr(0, nKeep) + "XY",
              Contents(stream));
  }
}

TEST(KelStream, SetSizeKeepsPositionBelowNewEnd) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdefghij");
  stream.Seek(3, 0);
  stream.SetSize(6);
  EXPECT_EQ(3, stream.Tell());
  char buf[8] = {};
  EXPECT_EQ(3u, stream.Read(buf, 8));
  EXPECT_EQ("def", std::string(buf, 3));
}

TEST(KelStream, SetSizeExtendsWithZerosAndKeepsPosition) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abc");
  stream.Seek(1, 0);
  stream.SetSize(9);
  EXPECT_EQ(9u, stream.GetSize());
  EXPECT_EQ(1, stream.Tell());
  EXPECT_EQ(std::string("abc") + std::string(6, '\0'), Contents(stream));
}

TEST(KelStream, ReadPageReturnsPagesInOrderAndAdvances) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdefghij");
  stream.Seek(0, 0);
  std::vector<std::string> pages;
  for (;;) {
    CKelStreamPage& page = stream.ReadPage();
    if (page.GetSize() == 0) break;
    pages.emplace_back(static_cast<char*>(page.GetData()), page.GetSize());
    EXPECT_EQ(static_cast<long>(std::min<size_t>(10, 4 * pages.size())),
              stream.Tell());
  }
  ASSERT_EQ(3u, pages.size());
  EXPECT_EQ("abcd", pages[0]);
  EXPECT_EQ("efgh", pages[1]);
  EXPECT_EQ("ij", pages[2]);
  EXPECT_NE(0, stream.IsEnd());
}

TEST(KelStream, ReadPageFromMidPageReturnsTheRestOfThatPage) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdefghij");
  stream.Seek(5, 0);
  CKelStreamPage& page = stream.ReadPage();
  EXPECT_EQ("fgh", std::string(static_cast<char*>(page.GetData()),
                               page.GetSize()));
  EXPECT_EQ(8, stream.Tell());
}

TEST(KelStream, ReadPageAtEndIsEmpty) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "ab");
  CKelStreamPage& page = stream.ReadPage();
  EXPECT_EQ(0u, page.GetSize());
  EXPECT_EQ(nullptr, page.GetData());
  EXPECT_EQ(2, stream.Tell());
}

TEST(KelStream, DefaultPageSizeIs64KiB) {
  CKelStream stream(0, nullptr, nullptr, 0);
  std::string data(70000, 'd');
  Put(stream, data);
  stream.Seek(0, 0);
  EXPECT_EQ(65536u, stream.ReadPage().GetSize());
  EXPECT_EQ(70000u - 65536u, stream.ReadPage().GetSize());
}

TEST(KelStream, NewPageAtEndHandsOutTheFreeTail) {
  CKelStream stream(64, nullptr, nullptr, 0);
  Put(stream, "ab");
  CKelStreamPage& first = stream.NewPage(10);
  ASSERT_GE(first.GetSize(), 10u);
  char* pFirst = static_cast<char*>(first.GetData());
  memcpy(pFirst, "123", 3);
  stream.WritePage(first, 3);
  EXPECT_EQ(5, stream.Tell());
  CKelStreamPage& second = stream.NewPage(10);
  // Same storage, right behind the committed bytes: nothing was allocated.
  EXPECT_EQ(pFirst + 3, static_cast<char*>(second.GetData()));
  memcpy(second.GetData(), "4567", 4);
  stream.WritePage(second, 4);
  EXPECT_EQ("ab1234567", Contents(stream));
  EXPECT_EQ(9, stream.Tell());
}

TEST(KelStream, NewPageLargerThanPageSizeWorks) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "xy");
  CKelStreamPage& page = stream.NewPage(20);
  ASSERT_EQ(20u, page.GetSize());
  memset(page.GetData(), 'z', 20);
  stream.WritePage(page, static_cast<unsigned long>(-1));
  EXPECT_EQ("xy" + std::string(20, 'z'), Contents(stream));
  EXPECT_EQ(22, stream.Tell());
}

TEST(KelStream, NewPageInTheMiddleOverwrites) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdefghij");
  stream.Seek(3, 0);
  CKelStreamPage& page = stream.NewPage(5);
  memcpy(page.GetData(), "VWXYZ", 5);
  stream.WritePage(page, 4);
  EXPECT_EQ("abcVWXYhij", Contents(stream));
  EXPECT_EQ(7, stream.Tell());
}

TEST(KelStream, NewPageNearEndOverwritesAndExtends) {
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdef");
  stream.Seek(4, 0);
  CKelStreamPage& page = stream.NewPage(5);
  memcpy(page.GetData(), "12345", 5);
  stream.WritePage(page, static_cast<unsigned long>(-1));
  EXPECT_EQ("abcd12345", Contents(stream));
}

TEST(KelStream, WritePageZeroBytesCommitsNothing) {
  CKelStream stream(8, nullptr, nullptr, 0);
  Put(stream, "abc");
  CKelStreamPage& page = stream.NewPage(4);
  memcpy(page.GetData(), "zzzz", 4);
  stream.WritePage(page, 0);
  EXPECT_EQ("abc", Contents(stream));
  EXPECT_EQ(3, stream.Tell());
}

TEST(KelStream, WritePageBeyondPageSizeThrows) {
  CKelStream stream(8, nullptr, nullptr, 0);
  CKelStreamPage& page = stream.NewPage(4);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.WritePage(page, 5); });
  EXPECT_EQ(0u, stream.GetSize());
}

TEST(KelStream, StalePageIsRefused) {
  CKelStream stream(8, nullptr, nullptr, 0);
  CKelStreamPage& page = stream.NewPage(4);
  memcpy(page.GetData(), "abcd", 4);
  Put(stream, "x");
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.WritePage(page, 4); });
  EXPECT_EQ("x", Contents(stream));
}

TEST(KelStream, TailPageIsWrittenOnlyOnce) {
  CKelStream stream(8, nullptr, nullptr, 0);
  CKelStreamPage& page = stream.NewPage(2);
  memcpy(page.GetData(), "ab", 2);
  stream.WritePage(page, 2);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.WritePage(page, 2); });
  EXPECT_EQ("ab", Contents(stream));
}

TEST(KelStream, PageOfAnotherStreamIsRefused) {
  CKelStream a(8, nullptr, nullptr, 0);
  CKelStream b(8, nullptr, nullptr, 0);
  CKelStreamPage& page = a.NewPage(2);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { b.WritePage(page, 2); });
  EXPECT_EQ(0u, b.GetSize());
}

TEST(KelStream, TailPageAfterSeekAwayIsCopiedToThePosition) {
  CKelStream stream(16, nullptr, nullptr, 0);
  Put(stream, "abcdef");
  CKelStreamPage& page = stream.NewPage(3);
  memcpy(page.GetData(), "XYZ", 3);
  stream.Seek(1, 0);
  stream.WritePage(page, 3);
  EXPECT_EQ("aXYZef", Contents(stream));
  EXPECT_EQ(4, stream.Tell());
}

TEST(KelStream, CallerPageIsReferencedWithoutCopy) {
  char buffer[] = "one|two|three";
  CKelStream stream(4, nullptr, nullptr, 0);
  CKelStreamPage& page = stream.NewPage(buffer, 13, 0);
  EXPECT_EQ(buffer, page.GetData());
  EXPECT_EQ(13u, page.GetSize());
  stream.WritePage(page, static_cast<unsigned long>(-1));
  EXPECT_EQ(13, stream.Tell());
  stream.Seek(0, 0);
  CKelStreamPage& read = stream.ReadPage();
  EXPECT_EQ(buffer, read.GetData());
  EXPECT_EQ(13u, read.GetSize());
  // The stream sees later changes of the referenced bytes.
  buffer[0] = 'O';
  EXPECT_EQ("One|two|three", Contents(stream));
}

TEST(KelStream, WritingOverReferencedBytesLeavesCallerBufferAlone) {
  char buffer[] = "abcdefgh";
  CKelStream stream(4, nullptr, nullptr, 0);
  stream.WritePage(stream.NewPage(buffer, 8, 0), 8);
  stream.Seek(2, 0);
  Put(stream, "XY");
  EXPECT_EQ("abXYefgh", Contents(stream));
  EXPECT_STREQ("abcdefgh", buffer);
}

TEST(KelStream, CopyFlagCopiesCallerBytes) {
  char buffer[] = "abcdef";
  CKelStream stream(4, nullptr, nullptr, 0);
  CKelStreamPage& page = stream.NewPage(buffer, 6, KEL_PAGE_COPY);
  stream.WritePage(page, 6);
  buffer[0] = 'Z';
  EXPECT_EQ("abcdef", Contents(stream));
}

TEST(KelStream, CallerPageMayBeWrittenTwice) {
  const char buffer[] = "ab";
  CKelStream stream(4, nullptr, nullptr, 0);
  CKelStreamPage& page = stream.NewPage(buffer, 2, 0);
  stream.WritePage(page, 2);
  stream.WritePage(page, 1);
  EXPECT_EQ("aba", Contents(stream));
}

TEST(KelStream, CallerPageInTheMiddleOverwrites) {
  const char buffer[] = "XYZ";
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "abcdefg");
  stream.Seek(2, 0);
  stream.WritePage(stream.NewPage(buffer, 3, 0), 3);
  EXPECT_EQ("abXYZfg", Contents(stream));
  EXPECT_EQ(5, stream.Tell());
}

TEST(KelStream, WritesAfterReferencedPageAppend) {
  const char buffer[] = "REF";
  CKelStream stream(4, nullptr, nullptr, 0);
  Put(stream, "ab");
  stream.WritePage(stream.NewPage(buffer, 3, 0), 3);
  Put(stream, "cd");
  EXPECT_EQ("abREFcd", Contents(stream));
  stream.Seek(0, 0);
  EXPECT_EQ(2u, stream.ReadPage().GetSize());
  EXPECT_EQ(3u, stream.ReadPage().GetSize());
  EXPECT_EQ(2u, stream.ReadPage().GetSize());
}

TEST(KelStream, NullCallerPageIsRejected) {
  CKelStream stream(4, nullptr, nullptr, 0);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.NewPage(nullptr, 3, 0); });
  CKelStreamPage& empty = stream.NewPage(nullptr, 0, 0);
  stream.WritePage(empty, static_cast<unsigned long>(-1));
  EXPECT_EQ(0u, stream.GetSize());
}

TEST(KelStream, BufferWrappingTwiceReplacesTheFirst) {
  CKelStream stream(0, nullptr, nullptr, 0);
  const char first[] = "first buffer";
  const char second[] = "2nd";
  for (const char* pBuffer : {first, second}) {
    stream.SetSize(0);
    CKelStreamPage& page = stream.NewPage(pBuffer, strlen(pBuffer), 0);
    stream.WritePage(page, static_cast<unsigned long>(-1));
    stream.Seek(0, 0);
  }
  EXPECT_EQ(0, stream.Tell());
  EXPECT_EQ(3u, stream.GetSize());
  char buf[16] = {};
  EXPECT_EQ(3u, stream.Read(buf, sizeof(buf)));
  EXPECT_STREQ("2nd", buf);
}

TEST(KelStream, ReadPageWrittenBackOverlappingItsSource) {
  CKelStream stream(8, nullptr, nullptr, 0);
  Put(stream, "abcdefgh");
  stream.Seek(0, 0);
  CKelStreamPage& page = stream.ReadPage();
  stream.Seek(2, 0);
  stream.WritePage(page, 6);
  EXPECT_EQ("ababcdef", Contents(stream));
}

TEST(KelStream, ReadPageIsStaleAfterAChange) {
  CKelStream stream(8, nullptr, nullptr, 0);
  Put(stream, "abcdefgh");
  stream.Seek(0, 0);
  CKelStreamPage& page = stream.ReadPage();
  stream.SetSize(4);
  ExpectKelError(KEL_ERR_ARGUMENT, [&] { stream.WritePage(page, 2); });
}

// Random operations against a plain string model, with tiny pages so that
// every boundary case of the page list is met.
TEST(KelStream, RandomOperationsMatchAStringModel) {
  Lcg rng(4242);
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    unsigned long nPageSize = 1 + rng.Below(7);
    CKelStream stream(nPageSize, nullptr, nullptr, 0);
    std::string model;
    size_t nPos = 0;
    std::vector<std::string> keepAlive;
    keepAlive.reserve(64);
    for (int step = 0; step < 60; ++step) {
      std::string text(rng.Below(9), '\0');
      for (char& ch : text) ch = static_cast<char>('a' + rng.Below(26));
      switch (rng.Below(8)) {
        case 0:
        case 1:
          stream.Write(text.data(), text.size());
          model.replace(nPos, std::min(text.size(), model.size() - nPos), text);
          nPos += text.size();
          break;
        case 2: {
          size_t nTo = rng.Below(static_cast<unsigned int>(model.size() + 3));
          stream.Seek(static_cast<long>(nTo), 0);
          nPos = std::min(nTo, model.size());
          break;
        }
        case 3: {
          char buf[16];
          unsigned long nWant = rng.Below(12);
          unsigned long nGot = stream.Read(buf, nWant);
          size_t nExpect = std::min<size_t>(nWant, model.size() - nPos);
          ASSERT_EQ(nExpect, nGot);
          ASSERT_EQ(model.substr(nPos, nExpect), std::string(buf, nGot));
          nPos += nGot;
          break;
        }
        case 4: {
          size_t nSize = rng.Below(static_cast<unsigned int>(model.size() + 4));
          stream.SetSize(nSize);
          model.resize(nSize, '\0');
          nPos = std::min(nPos, nSize);
          break;
        }
        case 5: {
          CKelStreamPage& page = stream.NewPage(text.size() + 2);
          memcpy(page.GetData(), text.data(), text.size());
          stream.WritePage(page, text.size());
          model.replace(nPos, std::min(text.size(), model.size() - nPos), text);
          nPos += text.size();
          break;
        }
        case 6: {
          keepAlive.push_back(text);
          const std::string& kept = keepAlive.back();
          stream.WritePage(stream.NewPage(kept.data(), kept.size(), 0),
                           static_cast<unsigned long>(-1));
          model.replace(nPos, std::min(kept.size(), model.size() - nPos), kept);
          nPos += kept.size();
          break;
        }
        case 7: {
          CKelStreamPage& page = stream.ReadPage();
          ASSERT_EQ(model.substr(nPos, page.GetSize()),
                    std::string(static_cast<char*>(page.GetData()),
                                page.GetSize()));
          if (nPos < model.size()) {
            ASSERT_GT(page.GetSize(), 0u);
            ASSERT_LE(page.GetSize(), std::max<size_t>(nPageSize, 10));
          }
          nPos += page.GetSize();
          break;
        }
      }
      ASSERT_EQ(static_cast<long>(nPos), stream.Tell());
      ASSERT_EQ(model.size(), stream.GetSize());
      ASSERT_EQ(nPos == model.size() ? 1 : 0, stream.IsEnd() ? 1 : 0);
    }
    ASSERT_EQ(model, Contents(stream));
  }
}

}  // namespace
