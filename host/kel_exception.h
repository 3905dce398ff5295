// Error values of the host services and the per-thread "last exception".
#ifndef HOST_KEL_EXCEPTION_H_
#define HOST_KEL_EXCEPTION_H_

#include <host/kel_api.h>

// Host error codes. Every one of them has a text in the host's own table.
enum {
  KEL_ERR_INCOMPLETE = -2,   // a traced scope ended without success
  KEL_ERR_ARGUMENT = -8,     // invalid argument or misuse of an object
  KEL_ERR_POSITION = -9,     // a list position that belongs to another list
  KEL_ERR_IO = -11,          // file could not be opened, read or written
  KEL_ERR_MEMORY = -10,      // memory could not be obtained
  KEL_ERR_CONNECTION = -13,  // the database connection is unusable
  KEL_ERR_CONVERSION = -18,  // a value could not be converted
  KEL_ERR_LOB = -21,         // large-object transfer failed
  KEL_ERR_NOT_LINKED = -22,  // tree node is not in a tree
  KEL_ERR_LINKED = -23,      // tree node is already in a tree
  KEL_ERR_DATABASE = -24,    // a database call failed
  KEL_ERR_CAPACITY = -25,    // a fixed buffer is too small
  KEL_ERR_FORMAT = 1         // the stream does not hold the expected format
};

// One row of an error-message table: a code and its NUL-terminated text.
struct KEL_ERR_MSG {
  int nCode;
  const char* pszText;
};

// CKelException: the single error type of the host services and of the
// libraries that run inside a host. It is a self-contained value: the code,
// the raising function's name and the resolved text are copied into inline
// buffers at construction, so a copy never allocates, never throws, and
// stays valid after the caller's message table or name buffer is gone.
// Names longer than KEL_EXC_FUNC_MAX - 1 bytes and texts longer than
// KEL_EXC_TEXT_MAX - 1 bytes are cut at that length.
class KEL_API CKelException {
 public:
  enum { KEL_EXC_FUNC_MAX = 128, KEL_EXC_TEXT_MAX = 256 };

  // A host code; the text comes from the host's own table.
  CKelException(int nRC, const char* pszFunc) noexcept;
  // The text is looked up by nRC first in the nCount rows of pTable (which
  // may be NULL), then in the host's own table; unknown codes get
  // "Unknown error".
  CKelException(int nRC, const char* pszFunc, const KEL_ERR_MSG* pTable,
                unsigned long nCount) noexcept;

  int GetRC() const noexcept { return m_nRC; }
  const char* GetFunc() const noexcept { return m_szFunc; }
  const char* GetText() const noexcept { return m_szText; }

 private:
  // The code stays the first member: callers may read it at offset 0.
  int m_nRC;
  char m_szFunc[KEL_EXC_FUNC_MAX];
  char m_szText[KEL_EXC_TEXT_MAX];
};

// The host's own text for a code, or "Unknown error"; never NULL.
KEL_API const char* KelGetErrorText(int nRC) noexcept;

// Keeps a copy of the exception as the last one of the calling thread,
// replacing any earlier one. Each thread has its own slot.
KEL_API void KelSetLastException(const CKelException& exception) noexcept;

// Copies the calling thread's last exception into *pException and returns 1;
// returns 0 and leaves *pException untouched when this thread has none (or
// it was cleared). pException may be NULL to ask only whether one is set.
KEL_API int KelGetLastException(CKelException* pException) noexcept;

// Forgets the calling thread's last exception.
KEL_API void KelClearLastException() noexcept;

#endif  // HOST_KEL_EXCEPTION_H_
