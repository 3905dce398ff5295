// Applying and removing release-character escaping on memory buffers.
#include "stream/release.h"

#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif
// Long texts are scanned 32 bytes at a time where the processor has AVX2,
// found out when the program runs; builds for processors that all have it
// use the sixteen-byte scan as compiled.
#if defined(__x86_64__) && defined(__SSE2__) && !defined(__AVX2__) && (defined(__GNUC__) || defined(__clang__))
#define ADP_SCAN_32 1
#include <immintrin.h>
#endif

#include "adapter/adp.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"

namespace {

// strncmp over nLength bytes: equal up to the length or up to a zero byte
// the two have in common.
int EqualAsStrncmp(const char* pA, const char* pB, long nLength) {
  for (long i = 0; i < nLength; ++i) {
    if (pA[i] != pB[i]) return 0;
    if (pA[i] == '\0') return 1;
  }
  return 1;
}

#ifdef ADP_SCAN_32
bool HasAvx2() {
  static const bool bHas = __builtin_cpu_supports("avx2") != 0;
  return bHas;
}

// FindLead over the whole 32-byte blocks from p: the first lead byte in them
// (*pFound set), or where fewer than 32 bytes remain.
__attribute__((target("avx2"))) const char* FindLead32(const char* p, const char* pEnd,
                                                       const unsigned char (*aabLeads)[16], int nLeads,
                                                       bool* pFound) {
  const __m256i v0 = _mm256_set1_epi8(static_cast<char>(aabLeads[0][0]));
  const __m256i v1 = _mm256_set1_epi8(static_cast<char>(aabLeads[1 < nLeads ? 1 : 0][0]));
  const __m256i v2 = _mm256_set1_epi8(static_cast<char>(aabLeads[2 < nLeads ? 2 : 0][0]));
  const __m256i v3 = _mm256_set1_epi8(static_cast<char>(aabLeads[3 < nLeads ? 3 : 0][0]));
  const __m256i v4 = _mm256_set1_epi8(static_cast<char>(aabLeads[4 < nLeads ? 4 : 0][0]));
  for (; pEnd - p >= 32; p += 32) {
    const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    const __m256i a = _mm256_or_si256(_mm256_cmpeq_epi8(block, v0), _mm256_cmpeq_epi8(block, v1));
    const __m256i b = _mm256_or_si256(_mm256_cmpeq_epi8(block, v2), _mm256_cmpeq_epi8(block, v3));
    const unsigned nBits = static_cast<unsigned>(
        _mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(a, b), _mm256_cmpeq_epi8(block, v4))));
    if (nBits != 0) {
      *pFound = true;
      return p + __builtin_ctz(nBits);
    }
  }
  *pFound = false;
  return p;
}
#endif

// The first byte at or after p that is one of the nLeads lead bytes (each
// sixteen times in aabLeads, also marked in abLead), or pEnd: sixteen bytes
// at a time while they last. The value begins at pBegin (<= p); nothing
// outside [pBegin, pEnd) is read.
const char* FindLead(const char* pBegin, const char* p, const char* pEnd,
                     const unsigned char (*aabLeads)[16], int nLeads, const unsigned char* abLead) {
#ifdef __SSE2__
  if (nLeads > 0 && pEnd - pBegin >= 16) {
#ifdef ADP_SCAN_32
    if (pEnd - p >= 64 && HasAvx2()) {
      bool bFound = false;
      p = FindLead32(p, pEnd, aabLeads, nLeads, &bFound);
      if (bFound) return p;
    }
#endif
    // Five registers, loaded once; the blocks beyond the lead bytes there
    // are repeat the first.
    auto lead = [aabLeads, nLeads](int k) {
      return _mm_load_si128(reinterpret_cast<const __m128i*>(aabLeads[k < nLeads ? k : 0]));
    };
    const __m128i v0 = lead(0), v1 = lead(1), v2 = lead(2), v3 = lead(3), v4 = lead(4);
    auto leadBits = [&](const char* pFrom) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(pFrom));
      const __m128i a = _mm_or_si128(_mm_cmpeq_epi8(block, v0), _mm_cmpeq_epi8(block, v1));
      const __m128i b = _mm_or_si128(_mm_cmpeq_epi8(block, v2), _mm_cmpeq_epi8(block, v3));
      return static_cast<unsigned>(
          _mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), _mm_cmpeq_epi8(block, v4))));
    };
    for (; pEnd - p >= 16; p += 16) {
      const unsigned nBits = leadBits(p);
      if (nBits != 0) return p + __builtin_ctz(nBits);
    }
    // The last few bytes: the sixteen that end the value, less those
    // already looked at.
    if (p < pEnd) {
      const long nTail = pEnd - p;
      const unsigned nBits = leadBits(pEnd - 16) >> (16 - nTail);
      return nBits != 0 ? p + __builtin_ctz(nBits) : pEnd;
    }
    return p;
  }
#else
  (void)pBegin;
  (void)aabLeads;
  (void)nLeads;
#endif
  // Short values byte by byte against the table.
  while (p < pEnd && !abLead[static_cast<unsigned char>(*p)]) ++p;
  return p;
}

}  // namespace

int CAdp::_CheckIfStringAtPos(const char* pPos, const char* pEnd, const char* pszString,
                              int nLength) const {
  if (static_cast<long>(nLength) > pEnd - pPos) return 0;
  return EqualAsStrncmp(pPos, pszString, nLength);
}

int CAdp::_IsSpecialString(const char* pPos, const char* pEnd) const {
  return _CheckIfStringAtPos(pPos, pEnd, ADP_GROUP_START, ADP_GROUP_START_LEN) ||
         _CheckIfStringAtPos(pPos, pEnd, ADP_GROUP_END, ADP_GROUP_END_LEN) ||
         _CheckIfStringAtPos(pPos, pEnd, m_szDelimiter, static_cast<int>(m_nDelimiterLen)) ||
         _CheckIfStringAtPos(pPos, pEnd, m_szRelease, static_cast<int>(m_nReleaseLen)) ||
         _CheckIfStringAtPos(pPos, pEnd, m_szTerminator, static_cast<int>(m_nTerminatorLen));
}

long CAdp::_WriteStringAddRelease(void* pData, unsigned long nSize, int bEscape) {
  const char* pBegin = static_cast<const char*>(pData);
  long nCount = static_cast<long>(nSize);
  if (!bEscape) {
    // The size cut to 32 bits in decimal ("%u"), then "|".
    char szPrefix[16];
    char* p = szPrefix + sizeof szPrefix;
    *--p = ADP_BINARY_LENGTH_END[0];
    unsigned nValue = static_cast<unsigned>(nSize);
    do {
      *--p = static_cast<char>('0' + nValue % 10);
      nValue /= 10;
    } while (nValue != 0);
    m_Out.Write(p, static_cast<unsigned long>(szPrefix + sizeof szPrefix - p));
    if (nSize != 0) m_Out.Write(pBegin, nSize);
    return nCount;
  }
  const char* pEnd = pBegin + nSize;
  const char* pRun = pBegin;
  // Only a byte that some special string begins with can start one,
  // unless an empty special string stands everywhere.
  const unsigned char* pLead = m_abSpecialLead;
  const bool bEverywhere = m_bEmptySpecial != 0;
  for (const char* pPos = pBegin; pPos < pEnd; ++pPos) {
    if (!bEverywhere) {
      pPos = FindLead(pBegin, pPos, pEnd, m_aabLeadBlocks, m_nLeadBytes, pLead);
      if (pPos == pEnd) break;
    }
    if (!_IsSpecialString(pPos, pEnd)) continue;
    if (pPos != pRun) m_Out.Write(pRun, static_cast<unsigned long>(pPos - pRun));
    m_Out.Write(m_szRelease, static_cast<unsigned long>(m_nReleaseLen));
    pRun = pPos;
    nCount += m_nReleaseLen;
  }
  if (pEnd != pRun) m_Out.Write(pRun, static_cast<unsigned long>(pEnd - pRun));
  return nCount;
}

unsigned long CAdp::_RemoveReleaseChars(void* pData, unsigned long nSize) {
  char* pBegin = static_cast<char*>(pData);
  char* pPos = pBegin;
  char* pEnd = pBegin + nSize;
  unsigned long nLength = nSize;
  const unsigned long nRelease = static_cast<unsigned long>(m_nReleaseLen);
  while (pPos != nullptr && pPos < pEnd) {
    pPos = static_cast<char*>(kel_memnstr(pPos, m_szRelease,
                                          static_cast<unsigned long>(pEnd - pPos), nRelease));
    if (pPos == nullptr) break;
    std::memmove(pPos, pPos + nRelease, static_cast<size_t>(pEnd - pPos) - nRelease);
    nLength -= nRelease;
    pEnd -= nRelease;
    ++pPos;
  }
  return nLength;
}

CAdpReleseParser::CAdpReleseParser(const CAdp& adp, const void* pData, unsigned long nSize,
                                   int bHonourReleases)
    : m_pAdp(&adp),
      m_pBase(static_cast<const char*>(pData)),
      m_pScan(m_pBase),
      m_pBlockStart(m_pBase),
      m_pEnd(m_pBase + nSize),
      m_nSize(nSize),
      m_bHonourReleases(bHonourReleases) {}

int CAdpReleseParser::GetNextBlock(CKelTrace& trace, CAdpReleaseDataBlock& block) {
  CKelTraceFunc scope(&trace, "CAdpReleseParser::GetNextBlock", -2);
  const CAdp& adp = *m_pAdp;
  const unsigned long nRelease = static_cast<unsigned long>(adp._GetReleaseLen());
  const char* pHit = nullptr;
  if (m_bHonourReleases) {
    pHit = static_cast<const char*>(kel_memnstr(
        m_pScan, adp._GetRelease(), static_cast<unsigned long>(m_pEnd - m_pScan), nRelease));
  }
  if (pHit == nullptr) {
    block.m_pData = m_pBlockStart;
    block.m_nSize = static_cast<unsigned long>(m_pEnd - m_pBlockStart);
    m_pScan = m_pEnd;
    m_pBlockStart = m_pEnd;
    scope.SetRC(0);
    return 0;
  }
  block.m_pData = m_pBlockStart;
  block.m_nSize = static_cast<unsigned long>(pHit - m_pBlockStart);
  m_pBlockStart = pHit + nRelease;
  m_pScan = m_pBlockStart;

  struct Escapable {
    const char* pszString;
    long nLength;
  };
  const Escapable aEscapable[] = {
      {ADP_GROUP_START, ADP_GROUP_START_LEN},
      {ADP_GROUP_END, ADP_GROUP_END_LEN},
      {adp._GetDelimiter(), adp._GetDelimiterLen()},
      {adp._GetRelease(), adp._GetReleaseLen()},
      {adp._GetTerminator(), adp._GetTerminatorLen()},
  };
  for (const Escapable& e : aEscapable) {
    if (adp._CheckIfStringAtPos(m_pScan, m_pEnd, e.pszString, static_cast<int>(e.nLength))) {
      m_pScan += e.nLength;
      scope.SetRC(0);
      return 1;
    }
  }
  trace.Printf("*ERR: at offset %d", static_cast<int>(m_pScan - m_pBase));
  throw CKelException(ADP_ERR_RELEASE_POSITION, "CAdpReleseParser::GetNextBlock", gAdpErrLookup,
                      ADP_ERR_LOOKUP_COUNT);
}
