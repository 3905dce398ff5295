// Cutting a buffer into release-free blocks without copying: each block ends
// before a release character, and the string that the release escapes
// begins the next block. Used to move character large objects from the
// stream into the database block by block.
#ifndef SRC_STREAM_RELEASE_H_
#define SRC_STREAM_RELEASE_H_

class CAdp;
class CKelTrace;

// One block handed out by CAdpReleseParser; it points into the parser's
// buffer and owns nothing.
class CAdpReleaseDataBlock {
 public:
  CAdpReleaseDataBlock() : m_pData(nullptr), m_nSize(0) {}
  const char* GetData() const { return m_pData; }
  unsigned long GetSize() const { return m_nSize; }

 private:
  friend class CAdpReleseParser;
  const char* m_pData;
  unsigned long m_nSize;
};

// A cursor over a caller-owned buffer, reading the special strings of the
// given adapter. With bHonourReleases 0 the whole buffer is one block.
class CAdpReleseParser {
 public:
  CAdpReleseParser(const CAdp& adp, const void* pData, unsigned long nSize, int bHonourReleases);
  ~CAdpReleseParser() {}
  CAdpReleseParser(const CAdpReleseParser&) = delete;
  CAdpReleseParser& operator=(const CAdpReleseParser&) = delete;

  // Fills block; returns 1 when a release was found and more data follows,
  // 0 for the last block. Throws -1102 for a release that escapes nothing.
  int GetNextBlock(CKelTrace& trace, CAdpReleaseDataBlock& block);

 private:
  const CAdp* m_pAdp;
  const char* m_pBase;
  const char* m_pScan;
  const char* m_pBlockStart;
  const char* m_pEnd;
  [[maybe_unused]] unsigned long m_nSize;
  int m_bHonourReleases;
};

#endif  // SRC_STREAM_RELEASE_H_
