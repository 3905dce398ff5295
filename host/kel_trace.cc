#include <host/kel_exception.h>
#include <host/kel_trace.h>

#include <cstdlib>
#include <cstring>

namespace {

// Lines up to this length are formatted on the stack; longer ones on the heap.
constexpr size_t kStackLine = 512;

}  // namespace

CKelTrace::CKelTrace() noexcept
    : m_nLevel(KEL_TRACE_DEFAULT_LEVEL),
      m_eSink(SINK_STDIO),
      m_pFile(stderr),
      m_bOwnsFile(0),
      m_pfnCallback(nullptr),
      m_pCallbackContext(nullptr),
      m_pBuffer(nullptr),
      m_nBufferSize(0),
      m_nBufferCapacity(0) {}

CKelTrace::~CKelTrace() {
  CloseOwnedFile();
  free(m_pBuffer);
}

void CKelTrace::Printf(const char* pszFormat, ...) noexcept {
  va_list args;
  va_start(args, pszFormat);
  VPrintf(1, 0, pszFormat, args);
  va_end(args);
}

void CKelTrace::Printf(int nLevel, const char* pszFormat, ...) noexcept {
  va_list args;
  va_start(args, pszFormat);
  VPrintf(0, nLevel, pszFormat, args);
  va_end(args);
}

void CKelTrace::VPrintf(int bAlways, int nLevel, const char* pszFormat,
                        va_list args) noexcept {
  if (!bAlways && !IsShown(nLevel)) return;
  if (pszFormat == nullptr) pszFormat = "";

  // Room for the text, "\n" and the NUL; the newline is added here so that a
  // stdio sink gets the whole line in one write.
  char szStack[kStackLine];
  char* pLine = szStack;
  va_list copy;
  va_copy(copy, args);
  int nFormatted = vsnprintf(szStack, sizeof(szStack) - 1, pszFormat, copy);
  va_end(copy);
  if (nFormatted < 0) nFormatted = 0;
  size_t nLength = static_cast<size_t>(nFormatted);
  if (nLength >= sizeof(szStack) - 1) {
    char* pHeap = static_cast<char*>(malloc(nLength + 2));
    if (pHeap != nullptr) {
      vsnprintf(pHeap, nLength + 1, pszFormat, args);
      pLine = pHeap;
    } else {
      nLength = sizeof(szStack) - 2;
    }
  }
  pLine[nLength] = '\n';
  pLine[nLength + 1] = '\0';
  Emit(bAlways ? 0 : nLevel, pLine, nLength);
  if (pLine != szStack) free(pLine);
}

// pLine holds the text, "\n" and a NUL.
void CKelTrace::Emit(int nLevel, char* pLine, size_t nLength) noexcept {
  switch (m_eSink) {
    case SINK_STDIO:
      if (m_pFile != nullptr) {
        fwrite(pLine, 1, nLength + 1, m_pFile);
        fflush(m_pFile);
      }
      break;
    case SINK_CALLBACK:
      if (m_pfnCallback != nullptr) {
        // The callback sees the line without its newline.
        pLine[nLength] = '\0';
        m_pfnCallback(m_pCallbackContext, nLevel, pLine, nLength);
      }
      break;
    case SINK_BUFFER: {
      size_t nNeed = m_nBufferSize + nLength + 2;
      if (nNeed > m_nBufferCapacity) {
        size_t nCapacity = m_nBufferCapacity < 256 ? 256 : m_nBufferCapacity;
        while (nCapacity < nNeed) nCapacity *= 2;
        char* pGrown = static_cast<char*>(realloc(m_pBuffer, nCapacity));
        if (pGrown == nullptr) return;
        m_pBuffer = pGrown;
        m_nBufferCapacity = nCapacity;
      }
      memcpy(m_pBuffer + m_nBufferSize, pLine, nLength + 1);
      m_nBufferSize += nLength + 1;
      m_pBuffer[m_nBufferSize] = '\0';
      break;
    }
  }
}

void CKelTrace::CloseOwnedFile() noexcept {
  if (m_bOwnsFile && m_pFile != nullptr) fclose(m_pFile);
  m_bOwnsFile = 0;
  m_pFile = nullptr;
}

void CKelTrace::ToStderr() noexcept { ToStdio(stderr); }

void CKelTrace::ToFile(const char* pszFile) {
  if (pszFile == nullptr) {
    throw CKelException(KEL_ERR_ARGUMENT, "CKelTrace::ToFile");
  }
  FILE* pFile = fopen(pszFile, "a");
  if (pFile == nullptr) throw CKelException(KEL_ERR_IO, "CKelTrace::ToFile");
  CloseOwnedFile();
  m_eSink = SINK_STDIO;
  m_pFile = pFile;
  m_bOwnsFile = 1;
}

void CKelTrace::ToStdio(FILE* pFile) noexcept {
  CloseOwnedFile();
  m_eSink = SINK_STDIO;
  m_pFile = pFile;
}

void CKelTrace::ToCallback(KEL_TRACE_CALLBACK pfnCallback,
                           void* pContext) noexcept {
  CloseOwnedFile();
  m_eSink = SINK_CALLBACK;
  m_pfnCallback = pfnCallback;
  m_pCallbackContext = pContext;
}

void CKelTrace::CaptureToBuffer() noexcept {
  CloseOwnedFile();
  m_eSink = SINK_BUFFER;
}

const char* CKelTrace::GetBuffer() const noexcept {
  return m_pBuffer != nullptr ? m_pBuffer : "";
}

void CKelTrace::ClearBuffer() noexcept {
  m_nBufferSize = 0;
  if (m_pBuffer != nullptr) m_pBuffer[0] = '\0';
}

void kelTracePrintf(CKelTrace* pTrace, const char* pszFormat, ...) {
  if (pTrace == nullptr) return;
  va_list args;
  va_start(args, pszFormat);
  pTrace->VPrintf(1, 0, pszFormat, args);
  va_end(args);
}
