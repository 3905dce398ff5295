#include "stream_test_util.h"
#include "temp_file.h"

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace {

bool Exists(const std::string& path) {
  return std::ifstream(path).good();
}

TEST(KelStreamFile, WriteCloseReopenReadBack) {
  TempFile temp("roundtrip.bin");
  const std::string& path = temp.path;
  std::string data = "field1|field2\r\n" + std::string(100, 'x') +
                     std::string("\0\1\2", 3);
  {
    CKelStream stream(8, path.c_str(), "w", 0);
    Put(stream, data);
  }
  EXPECT_EQ(data, FileText(path));
  CKelStream stream(8, path.c_str(), "r", 0);
  EXPECT_EQ(data.size(), stream.GetSize());
  EXPECT_EQ(0, stream.Tell());
  std::string back(data.size(), '\0');
  EXPECT_EQ(data.size(), stream.Read(&back[0], back.size()));
  EXPECT_EQ(data, back);
  EXPECT_NE(0, stream.IsEnd());
}

TEST(KelStreamFile, LoadedFileIsPaged) {
  TempFile temp("paged.bin");
  const std::string& path = temp.path;
  SetFileText(path, std::string(40, 'p'));
  CKelStream stream(16, path.c_str(), "rb", 0);
  EXPECT_EQ(16u, stream.ReadPage().GetSize());
  EXPECT_EQ(16u, stream.ReadPage().GetSize());
  EXPECT_EQ(8u, stream.ReadPage().GetSize());
  EXPECT_EQ(0u, stream.ReadPage().GetSize());
}

TEST(KelStreamFile, EmptyFileLoadsEmpty) {
  TempFile temp("empty.bin");
  const std::string& path = temp.path;
  SetFileText(path, "");
  CKelStream stream(0, path.c_str(), "r", 0);
  EXPECT_EQ(0u, stream.GetSize());
  EXPECT_NE(0, stream.IsEnd());
}

TEST(KelStreamFile, AppendAddsToTheEnd) {
  TempFile temp("append.bin");
  const std::string& path = temp.path;
  SetFileText(path, "old|");
  {
    CKelStream stream(4, path.c_str(), "a", 0);
    EXPECT_EQ(4, stream.Tell());
    EXPECT_EQ(4u, stream.GetSize());
    Put(stream, "new");
  }
  EXPECT_EQ("old|new", FileText(path));
}

TEST(KelStreamFile, AppendWritesGoToTheEndWhateverThePosition) {
  TempFile temp("append_seek.bin");
  const std::string& path = temp.path;
  SetFileText(path, "abc");
  {
    CKelStream stream(4, path.c_str(), "a+", 0);
    stream.Seek(0, 0);
    char c = 0;
    EXPECT_EQ(1u, stream.Read(&c, 1));
    EXPECT_EQ('a', c);
    Put(stream, "X");
    EXPECT_EQ(4, stream.Tell());
    stream.Seek(1, 0);
    CKelStreamPage& page = stream.NewPage(2);
    memcpy(page.GetData(), "YZ", 2);
    stream.WritePage(page, 2);
  }
  EXPECT_EQ("abcXYZ", FileText(path));
}

TEST(KelStreamFile, AppendCreatesMissingFile) {
  TempFile temp("append_new.bin");
  const std::string& path = temp.path;
  {
    CKelStream stream(0, path.c_str(), "a", 0);
    EXPECT_EQ(0u, stream.GetSize());
    Put(stream, "first");
  }
  EXPECT_EQ("first", FileText(path));
}

TEST(KelStreamFile, ReadWriteOverwritesInPlace) {
  TempFile temp("rplus.bin");
  const std::string& path = temp.path;
  SetFileText(path, "0123456789");
  {
    CKelStream stream(3, path.c_str(), "r+", 0);
    EXPECT_EQ(0, stream.Tell());
    stream.Seek(4, 0);
    Put(stream, "ab");
  }
  EXPECT_EQ("0123ab6789", FileText(path));
}

TEST(KelStreamFile, ReadWriteMissingFileThrows) {
  TempFile temp("rplus_missing.bin");
  const std::string& path = temp.path;
  ExpectKelError(KEL_ERR_IO,
                 [&] { CKelStream stream(0, path.c_str(), "r+", 0); });
  EXPECT_FALSE(Exists(path));
}

TEST(KelStreamFile, ReadMissingFileThrows) {
  TempFile temp("missing.bin");
  const std::string& path = temp.path;
  ExpectKelError(KEL_ERR_IO, [&] { CKelStream stream(0, path.c_str(), "r", 0); });
  EXPECT_FALSE(Exists(path));
}

TEST(KelStreamFile, ReadOnlyStreamRefusesChanges) {
  TempFile temp("readonly.bin");
  const std::string& path = temp.path;
  SetFileText(path, "keep");
  {
    CKelStream stream(0, path.c_str(), "r", 0);
    ExpectKelError(KEL_ERR_IO, [&] { Put(stream, "x"); });
    ExpectKelError(KEL_ERR_IO, [&] { stream.NewPage(4); });
    ExpectKelError(KEL_ERR_IO, [&] { stream.SetSize(0); });
    const char buffer[] = "zz";
    CKelStreamPage& page = stream.NewPage(buffer, 2, 0);
    ExpectKelError(KEL_ERR_IO, [&] { stream.WritePage(page, 2); });
    EXPECT_EQ("keep", Contents(stream));
  }
  EXPECT_EQ("keep", FileText(path));
}

TEST(KelStreamFile, WriteModeTruncatesAtOnce) {
  TempFile temp("truncate.bin");
  const std::string& path = temp.path;
  SetFileText(path, "previous contents");
  CKelStream stream(0, path.c_str(), "w", 0);
  EXPECT_EQ(0u, stream.GetSize());
  EXPECT_EQ("", FileText(path));
}

TEST(KelStreamFile, FlushWritesWithoutClosing) {
  TempFile temp("flush.bin");
  const std::string& path = temp.path;
  CKelStream stream(4, path.c_str(), "w+", 0);
  Put(stream, "part one");
  stream.Flush();
  EXPECT_EQ("part one", FileText(path));
  stream.Seek(5, 0);
  Put(stream, "ONE, two");
  stream.Flush();
  EXPECT_EQ("part ONE, two", FileText(path));
}

TEST(KelStreamFile, ShortenedStreamShortensTheFile) {
  TempFile temp("shorten.bin");
  const std::string& path = temp.path;
  SetFileText(path, "0123456789");
  {
    CKelStream stream(4, path.c_str(), "r+", 0);
    stream.SetSize(3);
  }
  EXPECT_EQ("012", FileText(path));
}

TEST(KelStreamFile, ExtendedStreamWritesZeros) {
  TempFile temp("extend.bin");
  const std::string& path = temp.path;
  SetFileText(path, "ab");
  {
    CKelStream stream(4, path.c_str(), "r+", 0);
    stream.SetSize(5);
  }
  EXPECT_EQ(std::string("ab\0\0\0", 5), FileText(path));
}

TEST(KelStreamFile, ReferencedPagesReachTheFile) {
  TempFile temp("referenced.bin");
  const std::string& path = temp.path;
  const char buffer[] = "REFERENCED";
  {
    CKelStream stream(4, path.c_str(), "w", 0);
    Put(stream, "<");
    stream.WritePage(stream.NewPage(buffer, 10, 0),
                     static_cast<unsigned long>(-1));
    Put(stream, ">");
  }
  EXPECT_EQ("<REFERENCED>", FileText(path));
}

TEST(KelStreamFile, UnchangedFileIsLeftAlone) {
  TempFile temp("unchanged.bin");
  const std::string& path = temp.path;
  SetFileText(path, "same");
  {
    CKelStream stream(0, path.c_str(), "r+", 0);
    char buf[4];
    EXPECT_EQ(4u, stream.Read(buf, 4));
  }
  EXPECT_EQ("same", FileText(path));
}

TEST(KelStreamFile, InvalidModesAreRejected) {
  TempFile temp("modes.bin");
  const std::string& path = temp.path;
  SetFileText(path, "x");
  for (const char* pszMode : {"", "x", "rw", "r+t", "q+"}) {
    SCOPED_TRACE(pszMode);
    ExpectKelError(KEL_ERR_ARGUMENT,
                   [&] { CKelStream stream(0, path.c_str(), pszMode, 0); });
  }
  ExpectKelError(KEL_ERR_ARGUMENT,
                 [&] { CKelStream stream(0, path.c_str(), nullptr, 0); });
  EXPECT_EQ("x", FileText(path));
}

TEST(KelStreamFile, UncreatableFileThrows) {
  ExpectKelError(KEL_ERR_IO, [] {
    CKelStream stream(0, "/nonexistent-dir/stream.bin", "w", 0);
  });
  ExpectKelError(KEL_ERR_IO, [] {
    CKelStream stream(0, "/nonexistent-dir/stream.bin", "a", 0);
  });
}

}  // namespace
