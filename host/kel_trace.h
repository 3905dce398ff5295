// Line-oriented diagnostic output of the host services.
#ifndef HOST_KEL_TRACE_H_
#define HOST_KEL_TRACE_H_

#include <host/kel_api.h>

#include <cstdarg>
#include <cstddef>
#include <cstdio>

// Receives one trace line without its trailing "\n"; pszLine is NUL-terminated
// and nLength excludes the NUL. nLevel is the level the line was printed at
// (0 for unconditional lines). The text is valid only during the call.
typedef void (*KEL_TRACE_CALLBACK)(void* pContext, int nLevel,
                                   const char* pszLine, size_t nLength);

// CKelTrace: where a host's diagnostic lines go. The host owns the trace and
// lends it to the code it calls for the duration of a call; a trace is used
// by one thread at a time. Every Printf produces exactly one line: the
// formatted text and "\n", never truncated. Printing never throws: if memory
// for a very long line or for the capture buffer cannot be obtained, the
// line is cut to what fits in a fixed stack buffer (stdio/callback sinks) or
// dropped (capture sink).
class KEL_API CKelTrace {
 public:
  enum { KEL_TRACE_DEFAULT_LEVEL = 1 };

  // Writes to stderr and shows levels up to KEL_TRACE_DEFAULT_LEVEL.
  CKelTrace() noexcept;
  ~CKelTrace();
  CKelTrace(const CKelTrace&) = delete;
  CKelTrace& operator=(const CKelTrace&) = delete;

  // Unconditional line.
  void Printf(const char* pszFormat, ...) noexcept KEL_PRINTF_FORMAT(2, 3);
  // Line shown only when nLevel <= GetLevel().
  void Printf(int nLevel, const char* pszFormat, ...) noexcept
      KEL_PRINTF_FORMAT(3, 4);
  // Unconditional when bAlways is not 0, else obeys nLevel as above.
  void VPrintf(int bAlways, int nLevel, const char* pszFormat,
               va_list args) noexcept KEL_PRINTF_FORMAT(4, 0);

  void SetLevel(int nLevel) noexcept { m_nLevel = nLevel; }
  int GetLevel() const noexcept { return m_nLevel; }
  // Whether a line at nLevel would be shown.
  int IsShown(int nLevel) const noexcept { return nLevel <= m_nLevel; }

  // Sink selection; each call replaces the previous sink (closing a file the
  // trace opened). The capture buffer survives sink changes until
  // ClearBuffer().
  void ToStderr() noexcept;
  // Appends to the named file, creating it. Throws CKelException
  // KEL_ERR_ARGUMENT for a NULL name and KEL_ERR_IO when it cannot be opened;
  // the previous sink then stays in place.
  void ToFile(const char* pszFile);
  // Writes to a stdio stream the caller keeps open and closes itself.
  void ToStdio(FILE* pFile) noexcept;
  // Hands every line to pfnCallback (see KEL_TRACE_CALLBACK); a NULL
  // callback makes the trace silent.
  void ToCallback(KEL_TRACE_CALLBACK pfnCallback, void* pContext) noexcept;
  // Appends every line, "\n" included, to an in-memory buffer.
  void CaptureToBuffer() noexcept;

  // The captured text so far, NUL-terminated ("" when nothing was captured).
  const char* GetBuffer() const noexcept;
  size_t GetBufferSize() const noexcept { return m_nBufferSize; }
  void ClearBuffer() noexcept;

 private:
  enum Sink { SINK_STDIO, SINK_CALLBACK, SINK_BUFFER };

  KEL_LOCAL void Emit(int nLevel, char* pLine, size_t nLength) noexcept;
  KEL_LOCAL void CloseOwnedFile() noexcept;

  int m_nLevel;
  Sink m_eSink;
  FILE* m_pFile;
  int m_bOwnsFile;
  KEL_TRACE_CALLBACK m_pfnCallback;
  void* m_pCallbackContext;
  char* m_pBuffer;
  size_t m_nBufferSize;
  size_t m_nBufferCapacity;
};

// Unconditional line on pTrace; a NULL trace prints nothing.
KEL_API void kelTracePrintf(CKelTrace* pTrace, const char* pszFormat, ...)
    KEL_PRINTF_FORMAT(2, 3);

#endif  // HOST_KEL_TRACE_H_
