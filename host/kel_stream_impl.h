// Internal state of CKelStream, shared by its source files; not installed.
#ifndef HOST_KEL_STREAM_IMPL_H_
#define HOST_KEL_STREAM_IMPL_H_

#include <host/kel_stream.h>

#include <climits>
#include <cstdio>
#include <vector>

// What ShortScan needs of a list of strings (CKelDelimiters' prepared
// part): the strings that can match, at most six, in list order.
struct KEL_LOCAL KelLeadBytes {
  const char** ppszStrings;
  const int* pnLengths;
  int nCount;
  bool bAllSingle;
  const int* anIndex;                    // list index of each
  const unsigned char* abFirst;          // first byte of each
  const unsigned char (*aabSplat)[16];   // first byte of each, 16 times
};

// One run of contiguous stream bytes. Owned segments are the stream's
// malloc'ed pages (nCapacity >= nSize); the others reference a caller's
// buffer (nCapacity == nSize) and are copied before anything writes to them.
struct KEL_LOCAL KelSegment {
  char* pData;
  unsigned long nSize;
  unsigned long nCapacity;
  unsigned long nStart;
  bool bOwned;
};

// Invariant: the cursor (nSegment, nOffset) names the byte at nPosition:
// segments[nSegment].nStart + nOffset == nPosition and nOffset <= that
// segment's nSize. Only trailing segments may be empty.
struct KEL_LOCAL CKelStream::Impl {
  unsigned long nPageSize = 0;
  std::vector<KelSegment> segments;
  unsigned long nTotal = 0;
  unsigned long nPosition = 0;
  size_t nSegment = 0;
  unsigned long nOffset = 0;
  // Bumped by every change of the data so that stale pages are refused.
  unsigned long nGeneration = 1;
  char* pScratch = nullptr;
  unsigned long nScratchCapacity = 0;
  // Owned pages of nPageSize bytes that emptying or truncating the stream
  // gave up, kept for the next pages it needs so that a stream emptied and
  // filled again reuses memory that is already mapped. At most
  // kKeptPageBytes of them (at least one page); freed with the stream.
  enum : unsigned long { kKeptPageBytes = 4UL * 1024 * 1024 };
  std::vector<char*> sparePages;

  FILE* pFile = nullptr;
  bool bReadOnly = false;
  bool bAppend = false;
  unsigned long nFileSize = 0;
  unsigned long nDirtyFrom = ULONG_MAX;

  ~Impl();

  void Locate(unsigned long nPosition);
  // Appends n bytes at the end (zeros when pSrc is NULL); the position
  // must be at the end and stays there.
  void Append(const char* pSrc, unsigned long n);
  // Makes an empty owned segment of nCapacity bytes the last one.
  void AddOwnedSegment(unsigned long nCapacity);
  void AppendReference(const void* pData, unsigned long n);
  void MakeOwned(size_t nIndex);
  char* Scratch(unsigned long nSize);
  void MarkDirty(unsigned long nFrom) {
    if (nFrom < nDirtyFrom) nDirtyFrom = nFrom;
  }
  void Truncate(unsigned long nSize);
  void ReleaseAll() noexcept;
  // Gives up an owned page: kept as a spare page when it has nPageSize bytes
  // and there is room, else freed.
  void DropOwned(char* pData, unsigned long nCapacity) noexcept;
  void OpenFile(const char* pszFile, const char* pszMode);
  void LoadFile();
  void FlushFile();
  bool MatchAt(size_t nSegmentIndex, unsigned long nOffsetIn,
               const char* pszString, unsigned long nLength) const;
  // GetDelimitedLength's quick look at the next bytes of the current page:
  // the length (nIndex set to the string found, or -1 at the end of the
  // data), or -1 when those bytes do not decide it.
  long ShortScan(const KelLeadBytes& lead, int& nIndex) const;
};

#endif  // HOST_KEL_STREAM_IMPL_H_

