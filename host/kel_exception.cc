#include <host/kel_exception.h>

#include <cstring>
#include <new>

namespace {

const KEL_ERR_MSG kHostErrors[] = {
    {KEL_ERR_INCOMPLETE, "Operation did not complete"},
    {KEL_ERR_ARGUMENT, "Invalid argument"},
    {KEL_ERR_POSITION, "Position belongs to another list"},
    {KEL_ERR_MEMORY, "Out of memory"},
    {KEL_ERR_IO, "File input/output error"},
    {KEL_ERR_CONNECTION, "Database connection lost"},
    {KEL_ERR_CONVERSION, "Value conversion failed"},
    {KEL_ERR_LOB, "Large object transfer failed"},
    {KEL_ERR_NOT_LINKED, "Node is not in a tree"},
    {KEL_ERR_LINKED, "Node is already in a tree"},
    {KEL_ERR_DATABASE, "Database error"},
    {KEL_ERR_CAPACITY, "Buffer capacity exceeded"},
    {KEL_ERR_FORMAT, "Unexpected data in stream"},
};

const char kUnknownError[] = "Unknown error";

const char* FindText(int nRC, const KEL_ERR_MSG* pTable, unsigned long nCount) {
  if (pTable == nullptr) return nullptr;
  for (unsigned long i = 0; i < nCount; ++i) {
    if (pTable[i].nCode == nRC) return pTable[i].pszText;
  }
  return nullptr;
}

void CopyCut(char* pDest, size_t nCapacity, const char* pszSrc) {
  if (pszSrc == nullptr) pszSrc = "";
  size_t n = strnlen(pszSrc, nCapacity - 1);
  memcpy(pDest, pszSrc, n);
  pDest[n] = '\0';
}

// One slot per thread; raw storage so that an empty slot needs no default
// constructor on the exception type.
struct LastExceptionSlot {
  bool bSet = false;
  alignas(CKelException) unsigned char abStorage[sizeof(CKelException)];

  CKelException* Get() {
    return std::launder(reinterpret_cast<CKelException*>(abStorage));
  }
};

thread_local LastExceptionSlot tLastException;

}  // namespace

const char* KelGetErrorText(int nRC) noexcept {
  const char* pszText =
      FindText(nRC, kHostErrors, sizeof(kHostErrors) / sizeof(kHostErrors[0]));
  return pszText != nullptr ? pszText : kUnknownError;
}

CKelException::CKelException(int nRC, const char* pszFunc) noexcept
    : CKelException(nRC, pszFunc, nullptr, 0) {}

CKelException::CKelException(int nRC, const char* pszFunc,
                             const KEL_ERR_MSG* pTable,
                             unsigned long nCount) noexcept
    : m_nRC(nRC) {
  CopyCut(m_szFunc, sizeof(m_szFunc), pszFunc);
  const char* pszText = FindText(nRC, pTable, nCount);
  if (pszText == nullptr) pszText = KelGetErrorText(nRC);
  CopyCut(m_szText, sizeof(m_szText), pszText);
}

void KelSetLastException(const CKelException& exception) noexcept {
  LastExceptionSlot& slot = tLastException;
  if (slot.bSet) {
    *slot.Get() = exception;
  } else {
    new (slot.abStorage) CKelException(exception);
    slot.bSet = true;
  }
}

int KelGetLastException(CKelException* pException) noexcept {
  LastExceptionSlot& slot = tLastException;
  if (!slot.bSet) return 0;
  if (pException != nullptr) *pException = *slot.Get();
  return 1;
}

void KelClearLastException() noexcept { tLastException.bSet = false; }
