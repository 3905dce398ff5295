#include "interface/trace_func.h"

#include <host/kel.h>

void CKelTraceFunc::_Report() const { m_pTrace->Printf("*ERR: in %s (%d)", m_pszFunc, m_nRC); }
