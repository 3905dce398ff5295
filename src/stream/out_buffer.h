// Collects the many small writes of one object (group marks, delimiters,
// value texts) and hands them to the host's stream in large runs, so that
// a field costs no call into the stream of its own. The owner flushes it
// before the stream is looked at: at the end of every object, and when an
// error leaves, so that what was written before the error is in the stream.
#ifndef SRC_STREAM_OUT_BUFFER_H_
#define SRC_STREAM_OUT_BUFFER_H_

#include <cstring>

#include <host/kel.h>

class CAdpOutBuffer {
 public:
  enum { ADP_OUT_SIZE = 8192 };

  CAdpOutBuffer() : m_pStream(nullptr), m_nUsed(0) {}
  CAdpOutBuffer(const CAdpOutBuffer&) = delete;
  CAdpOutBuffer& operator=(const CAdpOutBuffer&) = delete;

  // Starts over on another stream; bytes not flushed are dropped.
  void Bind(CKelStream* pStream) {
    m_pStream = pStream;
    m_nUsed = 0;
  }

  void Write(const void* pData, unsigned long nSize) {
    if (nSize <= ADP_OUT_SIZE - m_nUsed) {
      // Delimiters and marks are mostly one byte: no call for those.
      if (nSize == 1) {
        m_acData[m_nUsed++] = *static_cast<const char*>(pData);
        return;
      }
      std::memcpy(m_acData + m_nUsed, pData, nSize);
      m_nUsed += nSize;
      return;
    }
    Flush();
    if (nSize >= ADP_OUT_SIZE) {
      m_pStream->Write(pData, nSize);
    } else {
      std::memcpy(m_acData, pData, nSize);
      m_nUsed = nSize;
    }
  }

  // Room for nSize bytes to fill and then Commit, or NULL when nSize is
  // more than the buffer holds.
  char* Reserve(unsigned long nSize) {
    if (nSize > ADP_OUT_SIZE) return nullptr;
    if (nSize > ADP_OUT_SIZE - m_nUsed) Flush();
    return m_acData + m_nUsed;
  }
  void Commit(unsigned long nSize) { m_nUsed += nSize; }

  void Flush() {
    if (m_nUsed == 0) return;
    const unsigned long nUsed = m_nUsed;
    m_nUsed = 0;
    m_pStream->Write(m_acData, nUsed);
  }

 private:
  CKelStream* m_pStream;
  unsigned long m_nUsed;
  char m_acData[ADP_OUT_SIZE];
};

#endif  // SRC_STREAM_OUT_BUFFER_H_
