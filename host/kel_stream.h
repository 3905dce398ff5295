// Paged, seekable byte stream of the host services.
#ifndef HOST_KEL_STREAM_H_
#define HOST_KEL_STREAM_H_

#include <host/kel_api.h>

// Flag for CKelStream::NewPage(const void*, unsigned long, int): copy the
// caller's bytes when the page is written instead of referencing them.
enum { KEL_PAGE_COPY = 0x1 };

class CKelStream;

// CKelStreamPage: a window onto bytes handed out by a CKelStream (NewPage,
// ReadPage). The stream owns the page object and whatever storage it points
// into; the caller only borrows it until its next call on the same stream
// (see CKelStream for the exact lifetimes).
class KEL_API CKelStreamPage {
 public:
  void* GetData() const noexcept { return m_pData; }
  unsigned long GetSize() const noexcept { return m_nSize; }

 private:
  friend class CKelStream;
  enum Kind { PAGE_NONE, PAGE_TAIL, PAGE_SCRATCH, PAGE_EXTERNAL, PAGE_READ };

  CKelStreamPage() noexcept = default;
  CKelStreamPage(const CKelStreamPage&) = delete;
  CKelStreamPage& operator=(const CKelStreamPage&) = delete;

  void* m_pData = nullptr;
  unsigned long m_nSize = 0;
  Kind m_eKind = PAGE_NONE;
  int m_nFlags = 0;
  unsigned long m_nGeneration = 0;
};

// CKelStream: a byte stream kept in memory as a list of pages, optionally
// mirrored to a file. The creator owns the stream; pages handed out by
// NewPage/ReadPage belong to the stream. Errors are thrown as CKelException:
// KEL_ERR_ARGUMENT (-8) for bad arguments or misuse, KEL_ERR_MEMORY (-10)
// when storage cannot be obtained, KEL_ERR_IO (-11) for file failures.
//
// Storage. Data lives in pages of nPageSize bytes (64 KiB when 0). A page
// written with NewPage(const void*, ...) is referenced, not copied: the
// caller's bytes become part of the stream with zero copy and must stay
// valid and unchanged until the stream is emptied (SetSize(0)), truncated
// below them, or destroyed. Writing over such bytes copies that page into
// the stream's own storage first; the caller's buffer is never written.
//
// Files. With a file name the stream loads the file on construction and
// writes its contents back on Flush() and on destruction (errors on
// destruction are swallowed; call Flush() to see them). pszMode is as for
// fopen ("b" is accepted and ignored):
//   "r"        the file must exist; the stream is read-only (writes throw -11)
//   "r+"       the file must exist; read and overwrite, position 0
//   "w", "w+"  the file is created or truncated at once; position 0
//   "a", "a+"  the file is created if missing; position at the end, and
//              every write goes to the end whatever the position
// Only the bytes changed since the last Flush (from the lowest changed
// offset on) are written back; a stream shortened by SetSize shortens the
// file.
//
// Position. Seek takes nWhence 0 (from the start), 1 (from the current
// position) or 2 (from the end). A target before the start throws -8; a
// target beyond the end is clamped to the end. Read at the end returns 0.
// The strings of GetDelimitedLength prepared once, for a caller that looks
// for the same list again and again (a reader measuring every field). It
// keeps the list's pointers, not copies of the strings: after changing the
// strings or their lengths, Prepare again.
class KEL_API CKelDelimiters {
 public:
  CKelDelimiters() noexcept;
  // ppszStrings and pnLengths as GetDelimitedLength takes them; both must
  // stay valid while the set is used. Throws -8 for a NULL list.
  void Prepare(const char** ppszStrings, const int* pnLengths);

 private:
  friend class CKelStream;
  enum { KEL_FEW_STRINGS = 6 };
  const char** m_ppszStrings;
  const int* m_pnLengths;
  // The strings that can match (length > 0) when there are at most
  // KEL_FEW_STRINGS of them: their list indexes and first bytes, each first
  // byte repeated over 16 bytes. m_nCount is -1 when there are more.
  int m_nCount;
  bool m_bAllSingle;
  int m_anIndex[KEL_FEW_STRINGS];
  unsigned char m_abFirst[KEL_FEW_STRINGS];
  alignas(16) unsigned char m_aabSplat[KEL_FEW_STRINGS][16];
};

class KEL_API CKelStream {
 public:
  enum { KEL_DEFAULT_PAGE_SIZE = 64 * 1024 };

  // nFlags is reserved and ignored. Throws -8 for a file name without a
  // valid mode, -11 when the file cannot be opened or read, -10 on memory.
  CKelStream(unsigned long nPageSize, const char* pszFile, const char* pszMode,
             int nFlags);
  ~CKelStream();
  CKelStream(const CKelStream&) = delete;
  CKelStream& operator=(const CKelStream&) = delete;

  // Copies up to nBytes from the position and advances past them; returns
  // the count copied, fewer than asked only at the end of the data.
  unsigned long Read(void* pDest, unsigned long nBytes);
  // Overwrites and, past the end, extends the data at the position; the
  // position advances by nBytes.
  void Write(const void* pSrc, unsigned long nBytes);
  void Seek(long nOffset, int nWhence);
  long Tell() const noexcept;
  // Nonzero when the position is at the end of the data.
  int IsEnd() const noexcept;
  // Total number of bytes in the stream.
  unsigned long GetSize() const noexcept;

  // A writable area of nSize bytes to fill and then commit with WritePage.
  // At the end of the stream this is the free tail of the last page when it
  // has room (no allocation, and WritePage only commits the bytes);
  // otherwise a fresh page or, when the position is not at the end, a
  // scratch area that WritePage copies. The page is valid until the next
  // NewPage or change of the stream's data, and is written at most once.
  CKelStreamPage& NewPage(unsigned long nSize);
  // A page over the caller's nSize bytes at pData; nFlags 0 references them
  // (see Storage), KEL_PAGE_COPY copies them when written.
  CKelStreamPage& NewPage(const void* pData, unsigned long nSize, int nFlags);
  // The contiguous bytes from the position to the end of the page that holds
  // it, advancing the position past them; a page of size 0 (and data NULL)
  // at the end. The page points into the stream's storage and is valid until
  // the next ReadPage or change of the stream's data.
  CKelStreamPage& ReadPage();
  // Writes the first nSize bytes of a page from NewPage or ReadPage at the
  // position and advances past them; (unsigned long)-1 means the whole page.
  // A page over caller bytes may be written any number of times. Throws -8
  // for a size beyond the page, a page of another stream, or a page made
  // stale by a later change.
  void WritePage(CKelStreamPage& page, unsigned long nSize);
  // Truncates or, with zero bytes, extends the data to nSize bytes; a
  // position beyond the new end moves to the end. SetSize(0) empties the
  // stream and lets go of every referenced buffer. The stream's own pages
  // of nPageSize bytes that a truncation gives up are kept for the data
  // written next, up to 4 MiB of them (at least one page), and freed with
  // the stream; the rest are freed at once.
  void SetSize(unsigned long nSize);

  // Measures from the position to the first occurrence of any string of the
  // NULL-terminated list ppszStrings (lengths in pnLengths): returns the byte
  // count to it and sets nIndex to its list index; when none occurs, returns
  // the count to the end and sets nIndex to -1. Of strings starting at the
  // same offset the earlier in the list wins. Strings whose length is 0 or
  // negative are ignored. A string must lie wholly inside the data to be
  // found; strings may straddle pages. The position does not move.
  long GetDelimitedLength(const char** ppszStrings, const int* pnLengths,
                          int& nIndex);
  // The same for a list prepared once.
  long GetDelimitedLength(const CKelDelimiters& delimiters, int& nIndex);

  // Writes changed bytes back to the file; does nothing for a memory stream.
  void Flush();

 private:
  struct Impl;
  Impl* m_pImpl;
  CKelStreamPage m_NewPage;
  CKelStreamPage m_ReadPage;
};

#endif  // HOST_KEL_STREAM_H_
