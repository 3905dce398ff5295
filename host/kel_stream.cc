#include <host/kel_exception.h>
#include <host/kel_stream.h>
#include <host/kel_stream_impl.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

[[noreturn]] void Fail(int nRC, const char* pszFunc) {
  throw CKelException(nRC, pszFunc);
}

}  // namespace

CKelStream::Impl::~Impl() {
  ReleaseAll();
  for (char* pPage : sparePages) free(pPage);
  free(pScratch);
  if (pFile != nullptr) fclose(pFile);
}

void CKelStream::Impl::DropOwned(char* pData, unsigned long nCapacity) noexcept {
  const unsigned long nKeep = std::max<unsigned long>(kKeptPageBytes, nPageSize);
  if (nCapacity == nPageSize && (sparePages.size() + 1) * nPageSize <= nKeep) {
    try {
      sparePages.push_back(pData);
      return;
    } catch (const std::bad_alloc&) {
      // No room to remember it: it is freed instead.
    }
  }
  free(pData);
}

void CKelStream::Impl::ReleaseAll() noexcept {
  for (KelSegment& segment : segments) {
    if (segment.bOwned) DropOwned(segment.pData, segment.nCapacity);
  }
  segments.clear();
  nTotal = 0;
  nPosition = 0;
  nSegment = 0;
  nOffset = 0;
}

void CKelStream::Impl::Locate(unsigned long nTarget) {
  nPosition = nTarget;
  if (segments.empty()) {
    nSegment = 0;
    nOffset = 0;
    return;
  }
  const KelSegment& current = segments[nSegment];
  if (nTarget >= current.nStart && nTarget - current.nStart <= current.nSize) {
    nOffset = nTarget - current.nStart;
    return;
  }
  auto it = std::upper_bound(
      segments.begin(), segments.end(), nTarget,
      [](unsigned long n, const KelSegment& s) { return n < s.nStart; });
  nSegment = static_cast<size_t>(it - segments.begin()) - 1;
  nOffset = nTarget - segments[nSegment].nStart;
}

void CKelStream::Impl::AddOwnedSegment(unsigned long nCapacity) {
  if (nCapacity == 0) nCapacity = 1;
  char* pData;
  if (nCapacity == nPageSize && !sparePages.empty()) {
    pData = sparePages.back();
    sparePages.pop_back();
  } else {
    pData = static_cast<char*>(malloc(nCapacity));
    if (pData == nullptr) Fail(KEL_ERR_MEMORY, "CKelStream::NewPage");
  }
  KelSegment segment{pData, 0, nCapacity, nTotal, true};
  if (!segments.empty() && segments.back().nSize == 0) {
    // An unused trailing page is replaced rather than kept as a hole.
    if (segments.back().bOwned) DropOwned(segments.back().pData, segments.back().nCapacity);
    segments.back() = segment;
  } else {
    try {
      segments.push_back(segment);
    } catch (const std::bad_alloc&) {
      DropOwned(pData, nCapacity);
      Fail(KEL_ERR_MEMORY, "CKelStream::NewPage");
    }
  }
  nSegment = segments.size() - 1;
  nOffset = 0;
}

void CKelStream::Impl::Append(const char* pSrc, unsigned long n) {
  while (n > 0) {
    if (segments.empty() || !segments.back().bOwned ||
        segments.back().nCapacity == segments.back().nSize) {
      AddOwnedSegment(nPageSize);
    }
    KelSegment& last = segments.back();
    unsigned long nTake = std::min(last.nCapacity - last.nSize, n);
    if (pSrc != nullptr) {
      memcpy(last.pData + last.nSize, pSrc, nTake);
      pSrc += nTake;
    } else {
      memset(last.pData + last.nSize, 0, nTake);
    }
    last.nSize += nTake;
    nTotal += nTake;
    n -= nTake;
    nSegment = segments.size() - 1;
    nOffset = last.nSize;
  }
  nPosition = nTotal;
}

void CKelStream::Impl::AppendReference(const void* pData, unsigned long n) {
  if (n == 0) return;
  KelSegment segment{static_cast<char*>(const_cast<void*>(pData)), n, n,
                     nTotal, false};
  if (!segments.empty() && segments.back().nSize == 0) {
    if (segments.back().bOwned) DropOwned(segments.back().pData, segments.back().nCapacity);
    segments.back() = segment;
  } else {
    try {
      segments.push_back(segment);
    } catch (const std::bad_alloc&) {
      Fail(KEL_ERR_MEMORY, "CKelStream::WritePage");
    }
  }
  nTotal += n;
  nPosition = nTotal;
  nSegment = segments.size() - 1;
  nOffset = n;
}

void CKelStream::Impl::MakeOwned(size_t nIndex) {
  KelSegment& segment = segments[nIndex];
  char* pCopy = static_cast<char*>(malloc(segment.nSize));
  if (pCopy == nullptr) Fail(KEL_ERR_MEMORY, "CKelStream::Write");
  memcpy(pCopy, segment.pData, segment.nSize);
  segment.pData = pCopy;
  segment.nCapacity = segment.nSize;
  segment.bOwned = true;
}

char* CKelStream::Impl::Scratch(unsigned long nSize) {
  if (nSize > nScratchCapacity || pScratch == nullptr) {
    char* pGrown = static_cast<char*>(realloc(pScratch, nSize ? nSize : 1));
    if (pGrown == nullptr) Fail(KEL_ERR_MEMORY, "CKelStream::NewPage");
    pScratch = pGrown;
    nScratchCapacity = nSize ? nSize : 1;
  }
  return pScratch;
}

void CKelStream::Impl::Truncate(unsigned long nSize) {
  if (nSize == 0) {
    ReleaseAll();
    return;
  }
  unsigned long nKeepPosition = std::min(nPosition, nSize);
  // The segment holding the last kept byte: the one with the greatest start
  // not beyond it (empty segments are only trailing, starting at nTotal).
  auto it = std::upper_bound(
      segments.begin(), segments.end(), nSize - 1,
      [](unsigned long n, const KelSegment& s) { return n < s.nStart; });
  nSegment = static_cast<size_t>(it - segments.begin()) - 1;
  nOffset = 0;
  nPosition = segments[nSegment].nStart;
  KelSegment& keep = segments[nSegment];
  keep.nSize = nSize - keep.nStart;
  if (!keep.bOwned) keep.nCapacity = keep.nSize;
  for (size_t i = nSegment + 1; i < segments.size(); ++i) {
    if (segments[i].bOwned) DropOwned(segments[i].pData, segments[i].nCapacity);
  }
  segments.erase(segments.begin() + static_cast<std::ptrdiff_t>(nSegment) + 1,
                 segments.end());
  nTotal = nSize;
  Locate(nKeepPosition);
}

CKelStream::CKelStream(unsigned long nPageSize, const char* pszFile,
                       const char* pszMode, int /*nFlags*/)
    : m_pImpl(new (std::nothrow) Impl) {
  if (m_pImpl == nullptr) Fail(KEL_ERR_MEMORY, "CKelStream::CKelStream");
  m_pImpl->nPageSize = nPageSize != 0
                          ? nPageSize
                          : static_cast<unsigned long>(KEL_DEFAULT_PAGE_SIZE);
  if (pszFile != nullptr) {
    try {
      m_pImpl->OpenFile(pszFile, pszMode);
    } catch (...) {
      delete m_pImpl;
      throw;
    }
  }
}

CKelStream::~CKelStream() {
  try {
    m_pImpl->FlushFile();
  } catch (const CKelException&) {
    // Nothing can be reported from here; Flush() is the checked path.
  }
  delete m_pImpl;
}

unsigned long CKelStream::Read(void* pDest, unsigned long nBytes) {
  Impl& s = *m_pImpl;
  if (nBytes == 0) return 0;
  if (pDest == nullptr) Fail(KEL_ERR_ARGUMENT, "CKelStream::Read");
  char* pOut = static_cast<char*>(pDest);
  // The usual read: a few bytes that the current segment holds.
  if (s.nSegment < s.segments.size()) {
    const KelSegment& segment = s.segments[s.nSegment];
    if (segment.nSize - s.nOffset >= nBytes) {
      const char* pIn = segment.pData + s.nOffset;
      if (nBytes == 1) {
        *pOut = *pIn;
      } else {
        memcpy(pOut, pIn, nBytes);
      }
      s.nOffset += nBytes;
      s.nPosition += nBytes;
      return nBytes;
    }
  }
  unsigned long nDone = 0;
  while (nDone < nBytes && s.nPosition < s.nTotal) {
    const KelSegment& segment = s.segments[s.nSegment];
    if (s.nOffset == segment.nSize) {
      ++s.nSegment;
      s.nOffset = 0;
      continue;
    }
    unsigned long nTake = std::min(segment.nSize - s.nOffset, nBytes - nDone);
    memcpy(pOut + nDone, segment.pData + s.nOffset, nTake);
    s.nOffset += nTake;
    s.nPosition += nTake;
    nDone += nTake;
  }
  return nDone;
}

void CKelStream::Write(const void* pSrc, unsigned long nBytes) {
  Impl& s = *m_pImpl;
  if (nBytes == 0) return;
  if (pSrc == nullptr) Fail(KEL_ERR_ARGUMENT, "CKelStream::Write");
  if (s.bReadOnly) Fail(KEL_ERR_IO, "CKelStream::Write");
  if (s.bAppend && s.nPosition != s.nTotal) s.Locate(s.nTotal);
  if (nBytes > static_cast<unsigned long>(LONG_MAX) - s.nPosition) {
    Fail(KEL_ERR_ARGUMENT, "CKelStream::Write");
  }
  ++s.nGeneration;
  s.MarkDirty(s.nPosition);
  const char* pIn = static_cast<const char*>(pSrc);
  while (nBytes > 0 && s.nPosition < s.nTotal) {
    KelSegment& segment = s.segments[s.nSegment];
    if (s.nOffset == segment.nSize) {
      ++s.nSegment;
      s.nOffset = 0;
      continue;
    }
    if (!segment.bOwned) s.MakeOwned(s.nSegment);
    unsigned long nTake = std::min(segment.nSize - s.nOffset, nBytes);
    // The source may be bytes of this very stream.
    memmove(segment.pData + s.nOffset, pIn, nTake);
    s.nOffset += nTake;
    s.nPosition += nTake;
    pIn += nTake;
    nBytes -= nTake;
  }
  if (nBytes > 0) s.Append(pIn, nBytes);
}

void CKelStream::Seek(long nOffset, int nWhence) {
  Impl& s = *m_pImpl;
  long long nBase;
  switch (nWhence) {
    case 0: nBase = 0; break;
    case 1: nBase = static_cast<long long>(s.nPosition); break;
    case 2: nBase = static_cast<long long>(s.nTotal); break;
    default: Fail(KEL_ERR_ARGUMENT, "CKelStream::Seek");
  }
  long long nTarget = nBase + nOffset;
  if (nTarget < 0) Fail(KEL_ERR_ARGUMENT, "CKelStream::Seek");
  if (nTarget > static_cast<long long>(s.nTotal)) {
    nTarget = static_cast<long long>(s.nTotal);
  }
  s.Locate(static_cast<unsigned long>(nTarget));
}

long CKelStream::Tell() const noexcept {
  return static_cast<long>(m_pImpl->nPosition);
}

int CKelStream::IsEnd() const noexcept {
  return m_pImpl->nPosition >= m_pImpl->nTotal ? 1 : 0;
}

unsigned long CKelStream::GetSize() const noexcept { return m_pImpl->nTotal; }

CKelStreamPage& CKelStream::NewPage(unsigned long nSize) {
  Impl& s = *m_pImpl;
  if (s.bReadOnly) Fail(KEL_ERR_IO, "CKelStream::NewPage");
  if (s.bAppend && s.nPosition != s.nTotal) s.Locate(s.nTotal);
  ++s.nGeneration;
  CKelStreamPage& page = m_NewPage;
  page.m_eKind = CKelStreamPage::PAGE_NONE;
  if (s.nPosition == s.nTotal) {
    if (s.segments.empty() || !s.segments.back().bOwned ||
        s.segments.back().nCapacity - s.segments.back().nSize < nSize) {
      s.AddOwnedSegment(std::max(s.nPageSize, nSize));
    }
    KelSegment& last = s.segments.back();
    page.m_pData = last.pData + last.nSize;
    page.m_eKind = CKelStreamPage::PAGE_TAIL;
  } else {
    page.m_pData = s.Scratch(nSize);
    page.m_eKind = CKelStreamPage::PAGE_SCRATCH;
  }
  page.m_nSize = nSize;
  page.m_nFlags = 0;
  page.m_nGeneration = s.nGeneration;
  return page;
}

CKelStreamPage& CKelStream::NewPage(const void* pData, unsigned long nSize,
                                    int nFlags) {
  if (pData == nullptr && nSize != 0) {
    Fail(KEL_ERR_ARGUMENT, "CKelStream::NewPage");
  }
  CKelStreamPage& page = m_NewPage;
  page.m_pData = const_cast<void*>(pData);
  page.m_nSize = nSize;
  page.m_eKind = CKelStreamPage::PAGE_EXTERNAL;
  page.m_nFlags = nFlags;
  page.m_nGeneration = m_pImpl->nGeneration;
  return page;
}

CKelStreamPage& CKelStream::ReadPage() {
  Impl& s = *m_pImpl;
  CKelStreamPage& page = m_ReadPage;
  while (s.nPosition < s.nTotal && s.nOffset == s.segments[s.nSegment].nSize) {
    ++s.nSegment;
    s.nOffset = 0;
  }
  if (s.nPosition >= s.nTotal) {
    page.m_pData = nullptr;
    page.m_nSize = 0;
  } else {
    const KelSegment& segment = s.segments[s.nSegment];
    page.m_pData = segment.pData + s.nOffset;
    page.m_nSize = segment.nSize - s.nOffset;
    s.nOffset = segment.nSize;
    s.nPosition += page.m_nSize;
  }
  page.m_eKind = CKelStreamPage::PAGE_READ;
  page.m_nFlags = 0;
  page.m_nGeneration = s.nGeneration;
  return page;
}

void CKelStream::WritePage(CKelStreamPage& page, unsigned long nSize) {
  Impl& s = *m_pImpl;
  if ((&page != &m_NewPage && &page != &m_ReadPage) ||
      page.m_eKind == CKelStreamPage::PAGE_NONE) {
    Fail(KEL_ERR_ARGUMENT, "CKelStream::WritePage");
  }
  if (page.m_eKind != CKelStreamPage::PAGE_EXTERNAL &&
      page.m_nGeneration != s.nGeneration) {
    Fail(KEL_ERR_ARGUMENT, "CKelStream::WritePage");
  }
  unsigned long n = nSize == static_cast<unsigned long>(-1) ? page.m_nSize
                                                           : nSize;
  if (n > page.m_nSize) Fail(KEL_ERR_ARGUMENT, "CKelStream::WritePage");
  if (s.bReadOnly) Fail(KEL_ERR_IO, "CKelStream::WritePage");
  if (s.bAppend && s.nPosition != s.nTotal) s.Locate(s.nTotal);

  switch (page.m_eKind) {
    case CKelStreamPage::PAGE_TAIL:
      if (s.nPosition == s.nTotal) {
        // The bytes are already in place behind the data: just commit them.
        KelSegment& last = s.segments.back();
        s.MarkDirty(s.nTotal);
        last.nSize += n;
        s.nTotal += n;
        s.nPosition = s.nTotal;
        s.nSegment = s.segments.size() - 1;
        s.nOffset = last.nSize;
        ++s.nGeneration;
      } else {
        // Writing through the data would overlap the tail being copied.
        char* pCopy = s.Scratch(n);
        memcpy(pCopy, page.m_pData, n);
        Write(pCopy, n);
      }
      break;
    case CKelStreamPage::PAGE_SCRATCH:
      Write(page.m_pData, n);
      break;
    case CKelStreamPage::PAGE_READ: {
      char* pCopy = s.Scratch(n);
      if (n != 0) memcpy(pCopy, page.m_pData, n);
      Write(pCopy, n);
      break;
    }
    case CKelStreamPage::PAGE_EXTERNAL:
      if ((page.m_nFlags & KEL_PAGE_COPY) == 0 && s.nPosition == s.nTotal) {
        if (n > static_cast<unsigned long>(LONG_MAX) - s.nTotal) {
          Fail(KEL_ERR_ARGUMENT, "CKelStream::WritePage");
        }
        s.MarkDirty(s.nTotal);
        ++s.nGeneration;
        s.AppendReference(page.m_pData, n);
      } else {
        Write(page.m_pData, n);
      }
      break;
    case CKelStreamPage::PAGE_NONE:
      break;
  }
}

void CKelStream::SetSize(unsigned long nSize) {
  Impl& s = *m_pImpl;
  if (s.bReadOnly) Fail(KEL_ERR_IO, "CKelStream::SetSize");
  if (nSize > static_cast<unsigned long>(LONG_MAX)) {
    Fail(KEL_ERR_ARGUMENT, "CKelStream::SetSize");
  }
  ++s.nGeneration;
  if (nSize <= s.nTotal) {
    s.Truncate(nSize);
    return;
  }
  unsigned long nKeepPosition = s.nPosition;
  s.MarkDirty(s.nTotal);
  s.Locate(s.nTotal);
  s.Append(nullptr, nSize - s.nTotal);
  s.Locate(nKeepPosition);
}

void CKelStream::Flush() { m_pImpl->FlushFile(); }
