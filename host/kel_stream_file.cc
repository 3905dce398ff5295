#include <host/kel_exception.h>
#include <host/kel_stream.h>
#include <host/kel_stream_impl.h>

#include <cerrno>
#include <cstring>

#include <unistd.h>

namespace {

[[noreturn]] void Fail(int nRC, const char* pszFunc) {
  throw CKelException(nRC, pszFunc);
}

}  // namespace

void CKelStream::Impl::OpenFile(const char* pszFile, const char* pszMode) {
  if (pszMode == nullptr || pszMode[0] == '\0') {
    Fail(KEL_ERR_ARGUMENT, "CKelStream::CKelStream");
  }
  bool bPlus = false;
  for (const char* p = pszMode + 1; *p != '\0'; ++p) {
    if (*p == '+') {
      bPlus = true;
    } else if (*p != 'b') {
      Fail(KEL_ERR_ARGUMENT, "CKelStream::CKelStream");
    }
  }
  bool bLoad = true;
  switch (pszMode[0]) {
    case 'r':
      bReadOnly = !bPlus;
      pFile = fopen(pszFile, bPlus ? "r+b" : "rb");
      break;
    case 'w':
      bLoad = false;
      pFile = fopen(pszFile, "w+b");
      break;
    case 'a':
      bAppend = true;
      pFile = fopen(pszFile, "r+b");
      if (pFile == nullptr && errno == ENOENT) pFile = fopen(pszFile, "w+b");
      break;
    default:
      Fail(KEL_ERR_ARGUMENT, "CKelStream::CKelStream");
  }
  if (pFile == nullptr) Fail(KEL_ERR_IO, "CKelStream::CKelStream");
  if (bLoad) LoadFile();
  nFileSize = nTotal;
  Locate(bAppend ? nTotal : 0);
  if (bReadOnly) {
    // Nothing will be written back; the handle is not needed any more.
    fclose(pFile);
    pFile = nullptr;
  }
}

void CKelStream::Impl::LoadFile() {
  for (;;) {
    if (segments.empty() || segments.back().nCapacity == segments.back().nSize) {
      AddOwnedSegment(nPageSize);
    }
    KelSegment& last = segments.back();
    size_t nRoom = last.nCapacity - last.nSize;
    size_t nGot = fread(last.pData + last.nSize, 1, nRoom, pFile);
    last.nSize += nGot;
    nTotal += nGot;
    if (nGot < nRoom) {
      if (ferror(pFile)) Fail(KEL_ERR_IO, "CKelStream::CKelStream");
      return;
    }
  }
}

void CKelStream::Impl::FlushFile() {
  if (pFile == nullptr) return;
  if (nDirtyFrom < nTotal) {
    if (fseek(pFile, static_cast<long>(nDirtyFrom), SEEK_SET) != 0) {
      Fail(KEL_ERR_IO, "CKelStream::Flush");
    }
    for (const KelSegment& segment : segments) {
      unsigned long nEnd = segment.nStart + segment.nSize;
      if (nEnd <= nDirtyFrom) continue;
      unsigned long nSkip =
          nDirtyFrom > segment.nStart ? nDirtyFrom - segment.nStart : 0;
      size_t nCount = segment.nSize - nSkip;
      if (fwrite(segment.pData + nSkip, 1, nCount, pFile) != nCount) {
        Fail(KEL_ERR_IO, "CKelStream::Flush");
      }
    }
  }
  if (fflush(pFile) != 0) Fail(KEL_ERR_IO, "CKelStream::Flush");
  if (nFileSize > nTotal &&
      ftruncate(fileno(pFile), static_cast<off_t>(nTotal)) != 0) {
    Fail(KEL_ERR_IO, "CKelStream::Flush");
  }
  nFileSize = nTotal;
  nDirtyFrom = ULONG_MAX;
}
