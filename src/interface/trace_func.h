// Entry/exit trace scope: held by value on the stack of a traced function.
// A scope that closes with a negative code (the function left by an exception,
// or returned without SetRC(0)) prints one "*ERR: in <name> (<code>)" line, so
// an exception leaves one such line per scope it crosses, innermost first.
#ifndef VARNADP_INTERFACE_TRACE_FUNC_H
#define VARNADP_INTERFACE_TRACE_FUNC_H

class CKelTrace;

class CKelTraceFunc {
 public:
  CKelTraceFunc(CKelTrace* pTrace, const char* pszFunc, int nRC)
      : m_pszFunc(pszFunc), m_nRC(nRC), m_pTrace(pTrace) {}
  // Inline, as it runs on every return of every traced function; only the
  // report is out of line.
  ~CKelTraceFunc() {
    if (m_pTrace != nullptr && m_nRC < 0) _Report();
  }

  CKelTraceFunc(const CKelTraceFunc&) = delete;
  CKelTraceFunc& operator=(const CKelTraceFunc&) = delete;

  void SetRC(int nRC) { m_nRC = nRC; }
  int GetRC() const { return m_nRC; }
  const char* GetFunc() const { return m_pszFunc; }

 private:
  void _Report() const;

  const char* m_pszFunc;
  int m_nRC;
  CKelTrace* m_pTrace;
};

#endif  // VARNADP_INTERFACE_TRACE_FUNC_H
