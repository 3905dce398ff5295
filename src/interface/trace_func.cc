#include "interface/trace_func.h"

#include <host/kel.h>

CKelTraceFunc::~CKelTraceFunc() {
  if (m_pTrace != nullptr && m_nRC < 0) m_pTrace->Printf("*ERR: in %s (%d)", m_pszFunc, m_nRC);
}
