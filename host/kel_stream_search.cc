#include <host/kel_exception.h>
#include <host/kel_stream.h>
#include <host/kel_stream_impl.h>

#include <cstring>
#include <vector>

#ifdef __SSE2__
#include <emmintrin.h>
#endif
#if defined(__x86_64__) && defined(__GNUC__)
#define KEL_SCAN_32 1
#include <immintrin.h>
#endif

namespace {

// The strings of one search that can match at all (length > 0), in list
// order. The adapter passes at most five, so the usual case lives on the
// stack.
class NeedleSet {
 public:
  NeedleSet(const char** ppszStrings, const int* pnLengths) {
    for (int i = 0; ppszStrings[i] != nullptr; ++i) {
      if (pnLengths[i] <= 0) continue;
      Add(i, ppszStrings[i], static_cast<unsigned long>(pnLengths[i]));
    }
  }

  struct Needle {
    int nIndex;
    const char* pszString;
    unsigned long nLength;
  };

  size_t Count() const { return m_nCount; }
  const Needle& operator[](size_t i) const {
    return i < kInline ? m_aInline[i] : m_overflow[i - kInline];
  }

 private:
  static constexpr size_t kInline = 8;

  void Add(int nIndex, const char* pszString, unsigned long nLength) {
    Needle needle{nIndex, pszString, nLength};
    if (m_nCount < kInline) {
      m_aInline[m_nCount] = needle;
    } else {
      try {
        m_overflow.push_back(needle);
      } catch (const std::bad_alloc&) {
        throw CKelException(KEL_ERR_MEMORY, "CKelStream::GetDelimitedLength");
      }
    }
    ++m_nCount;
  }

  Needle m_aInline[kInline];
  std::vector<Needle> m_overflow;
  size_t m_nCount = 0;
};

// Distinct first bytes up to this many are found with one memchr each;
// beyond that a byte table is cheaper.
constexpr size_t kMaxMemchrBytes = 8;

// Most fields end within a few dozen bytes of where the scan starts: up to
// this many bytes of the current page are looked at one by one, against
// the first bytes of up to kFewStrings strings, before the general scan
// (which builds its tables first) takes over.
constexpr unsigned long kShortScan = 48;
constexpr int kFewStrings = 6;

// Window sizes of the memchr scan: small first, since fields are short.
constexpr size_t kFirstWindow = 64;
constexpr size_t kLastWindow = 64 * 1024;

}  // namespace

bool CKelStream::Impl::MatchAt(size_t nSegmentIndex, unsigned long nOffsetIn,
                               const char* pszString,
                               unsigned long nLength) const {
  while (nLength > 0) {
    if (nSegmentIndex >= segments.size()) return false;
    const KelSegment& segment = segments[nSegmentIndex];
    unsigned long nAvailable = segment.nSize - nOffsetIn;
    if (nAvailable > 0) {
      unsigned long nTake = nAvailable < nLength ? nAvailable : nLength;
      if (memcmp(segment.pData + nOffsetIn, pszString, nTake) != 0) {
        return false;
      }
      pszString += nTake;
      nLength -= nTake;
    }
    ++nSegmentIndex;
    nOffsetIn = 0;
  }
  return true;
}

#ifdef __SSE2__
namespace {

// Up to six first bytes, each in every lane of a register of its own.
class FirstBytes {
 public:
  explicit FirstBytes(const unsigned char (*aabSplat)[16])
      : m_v0(Load(aabSplat[0])),
        m_v1(Load(aabSplat[1])),
        m_v2(Load(aabSplat[2])),
        m_v3(Load(aabSplat[3])),
        m_v4(Load(aabSplat[4])),
        m_v5(Load(aabSplat[5])) {}

  // A bit for each of the sixteen bytes at p that is one of the first bytes.
  unsigned Hits(const unsigned char* p) const {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const __m128i a = _mm_or_si128(_mm_cmpeq_epi8(block, m_v0), _mm_cmpeq_epi8(block, m_v1));
    const __m128i b = _mm_or_si128(_mm_cmpeq_epi8(block, m_v2), _mm_cmpeq_epi8(block, m_v3));
    const __m128i c = _mm_or_si128(_mm_cmpeq_epi8(block, m_v4), _mm_cmpeq_epi8(block, m_v5));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(_mm_or_si128(a, b), c)));
  }

 private:
  static __m128i Load(const unsigned char* p) {
    return _mm_load_si128(reinterpret_cast<const __m128i*>(p));
  }

  __m128i m_v0, m_v1, m_v2, m_v3, m_v4, m_v5;
};

}  // namespace
#endif

static_assert(kFewStrings == 6, "six first bytes are compared at once");

#ifdef KEL_SCAN_32
namespace {

bool HasAvx2() {
  static const bool bHas = __builtin_cpu_supports("avx2") != 0;
  return bHas;
}

// The first of the bytes nFrom .. nTo - 1 at p (at least 32 of them) that is
// one of the six first bytes, or nTo: 32 bytes at a time, the last 32 loaded
// so that they end at nTo.
__attribute__((target("avx2"))) unsigned long FirstHit32(const unsigned char* p,
                                                          unsigned long nFrom, unsigned long nTo,
                                                          const unsigned char (*aabSplat)[16]) {
  const __m256i v0 = _mm256_set1_epi8(static_cast<char>(aabSplat[0][0]));
  const __m256i v1 = _mm256_set1_epi8(static_cast<char>(aabSplat[1][0]));
  const __m256i v2 = _mm256_set1_epi8(static_cast<char>(aabSplat[2][0]));
  const __m256i v3 = _mm256_set1_epi8(static_cast<char>(aabSplat[3][0]));
  const __m256i v4 = _mm256_set1_epi8(static_cast<char>(aabSplat[4][0]));
  const __m256i v5 = _mm256_set1_epi8(static_cast<char>(aabSplat[5][0]));
  // Whole blocks, then one more that ends at nTo (rest bytes of it new).
  for (bool bLast = false; !bLast; nFrom += 32) {
    unsigned long nAt = nFrom;
    unsigned nShift = 0;
    if (nFrom + 32 > nTo) {
      if (nFrom >= nTo) break;
      bLast = true;
      nAt = nTo - 32;
      nShift = static_cast<unsigned>(32 - (nTo - nFrom));
    }
    const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p + nAt));
    const __m256i a = _mm256_or_si256(_mm256_cmpeq_epi8(block, v0), _mm256_cmpeq_epi8(block, v1));
    const __m256i b = _mm256_or_si256(_mm256_cmpeq_epi8(block, v2), _mm256_cmpeq_epi8(block, v3));
    const __m256i c = _mm256_or_si256(_mm256_cmpeq_epi8(block, v4), _mm256_cmpeq_epi8(block, v5));
    const unsigned nBits =
        static_cast<unsigned>(_mm256_movemask_epi8(_mm256_or_si256(_mm256_or_si256(a, b), c))) >>
        nShift;
    if (nBits != 0) return nFrom + static_cast<unsigned long>(__builtin_ctz(nBits));
  }
  return nTo;
}

}  // namespace
#endif

CKelDelimiters::CKelDelimiters() noexcept
    : m_ppszStrings(nullptr), m_pnLengths(nullptr), m_nCount(0), m_bAllSingle(true),
      m_anIndex(), m_abFirst(), m_aabSplat() {}

void CKelDelimiters::Prepare(const char** ppszStrings, const int* pnLengths) {
  if (ppszStrings == nullptr || pnLengths == nullptr) {
    throw CKelException(KEL_ERR_ARGUMENT, "CKelDelimiters::Prepare");
  }
  static_assert(KEL_FEW_STRINGS == kFewStrings, "one limit");
  m_ppszStrings = ppszStrings;
  m_pnLengths = pnLengths;
  m_nCount = 0;
  m_bAllSingle = true;
  for (int i = 0; ppszStrings[i] != nullptr; ++i) {
    if (pnLengths[i] <= 0) continue;
    if (m_nCount == kFewStrings) {
      m_nCount = -1;
      break;
    }
    m_anIndex[m_nCount] = i;
    m_abFirst[m_nCount] = static_cast<unsigned char>(ppszStrings[i][0]);
    if (pnLengths[i] != 1) m_bAllSingle = false;
    ++m_nCount;
  }
  // Unused compare slots repeat the first string's byte.
  for (int k = 0; k < kFewStrings; ++k) {
    const int nFrom = k < m_nCount ? k : 0;
    memset(m_aabSplat[k], m_nCount > 0 ? m_abFirst[nFrom] : 0, sizeof m_aabSplat[k]);
  }
}

long CKelStream::Impl::ShortScan(const KelLeadBytes& lead, int& nIndex) const {
  if (nPosition >= nTotal) return -1;
  const KelSegment& segment = segments[nSegment];
  if (nOffset >= segment.nSize) return -1;
  const int nCount = lead.nCount;
  if (nCount <= 0) return -1;
  const unsigned long nLeft = segment.nSize - nOffset;
  const unsigned long nScan = nLeft < kShortScan ? nLeft : kShortScan;
  const unsigned char* pFrom = reinterpret_cast<const unsigned char*>(segment.pData) + nOffset;
  // Whether a string, in list order, matches whole at nAt, whose byte is
  // some string's first byte.
  const auto matchAt = [&](unsigned long nAt) -> bool {
    const unsigned char b = pFrom[nAt];
    for (int k = 0; k < nCount; ++k) {
      if (lead.abFirst[k] != b) continue;
      const int i = lead.anIndex[k];
      if (lead.bAllSingle || lead.pnLengths[i] == 1 ||
          MatchAt(nSegment, nOffset + nAt, lead.ppszStrings[i],
                  static_cast<unsigned long>(lead.pnLengths[i]))) {
        nIndex = i;
        return true;
      }
    }
    return false;
  };
  unsigned long nAt = 0;
#ifdef __SSE2__
  // Sixteen bytes at a time: a bit for each byte that is some string's first
  // byte.
  const FirstBytes first(lead.aabSplat);
  for (; nAt + 16 <= nScan; nAt += 16) {
    for (unsigned nBits = first.Hits(pFrom + nAt); nBits != 0; nBits &= nBits - 1) {
      const unsigned long nHit = nAt + static_cast<unsigned long>(__builtin_ctz(nBits));
      if (matchAt(nHit)) return static_cast<long>(nHit);
    }
  }
  // The last bytes, fewer than sixteen: when the page holds sixteen bytes
  // that end where they do, one load of those, without the bits of the bytes
  // already looked at.
  if (nAt < nScan && nOffset + nScan >= 16) {
    const unsigned long nRest = nScan - nAt;
    unsigned nBits = first.Hits(pFrom + nScan - 16) >> (16 - nRest);
    for (; nBits != 0; nBits &= nBits - 1) {
      const unsigned long nHit = nAt + static_cast<unsigned long>(__builtin_ctz(nBits));
      if (matchAt(nHit)) return static_cast<long>(nHit);
    }
    nAt = nScan;
  }
#endif
  for (; nAt < nScan; ++nAt) {
    if (matchAt(nAt)) return static_cast<long>(nAt);
  }
#ifdef KEL_SCAN_32
  // A longer field: the rest of the page, 32 bytes at a time, where the
  // processor has AVX2 (the general scan would first build its tables).
  if (nScan < nLeft && HasAvx2()) {
    for (nAt = nScan; nAt < nLeft; ++nAt) {
      nAt = FirstHit32(pFrom, nAt, nLeft, lead.aabSplat);
      if (nAt < nLeft && matchAt(nAt)) return static_cast<long>(nAt);
    }
    nAt = nLeft;
  }
#endif
  // Nothing in the bytes looked at: the answer is known only when they were
  // the last of the data.
  const bool bLast = nAt == nLeft && segment.nStart + segment.nSize == nTotal;
  return bLast ? static_cast<long>(nLeft) : -1;
}

long CKelStream::GetDelimitedLength(const char** ppszStrings,
                                    const int* pnLengths, int& nIndex) {
  if (ppszStrings == nullptr || pnLengths == nullptr) {
    throw CKelException(KEL_ERR_ARGUMENT, "CKelStream::GetDelimitedLength");
  }
  CKelDelimiters delimiters;
  delimiters.Prepare(ppszStrings, pnLengths);
  return GetDelimitedLength(delimiters, nIndex);
}

long CKelStream::GetDelimitedLength(const CKelDelimiters& delimiters, int& nIndex) {
  const char** ppszStrings = delimiters.m_ppszStrings;
  const int* pnLengths = delimiters.m_pnLengths;
  if (ppszStrings == nullptr || pnLengths == nullptr) {
    throw CKelException(KEL_ERR_ARGUMENT, "CKelStream::GetDelimitedLength");
  }
  const Impl& s = *m_pImpl;
  nIndex = -1;
  const KelLeadBytes lead{ppszStrings,          pnLengths,
                          delimiters.m_nCount,  delimiters.m_bAllSingle,
                          delimiters.m_anIndex, delimiters.m_abFirst,
                          delimiters.m_aabSplat};
  const long nShort = s.ShortScan(lead, nIndex);
  if (nShort >= 0) return nShort;
  NeedleSet needles(ppszStrings, pnLengths);

  bool abFirst[256] = {};
  unsigned char abDistinct[kMaxMemchrBytes];
  size_t nDistinct = 0;
  for (size_t i = 0; i < needles.Count(); ++i) {
    unsigned char b = static_cast<unsigned char>(needles[i].pszString[0]);
    if (abFirst[b]) continue;
    abFirst[b] = true;
    if (nDistinct < kMaxMemchrBytes) abDistinct[nDistinct] = b;
    ++nDistinct;
  }

  nIndex = -1;
  if (nDistinct == 0 || s.nPosition >= s.nTotal) {
    return static_cast<long>(s.nTotal - s.nPosition);
  }

  // Checks the needles with first byte *p in list order; the earliest
  // position is guaranteed by the caller scanning forward.
  auto matchHere = [&](size_t nSeg, const unsigned char* pBase,
                       const unsigned char* p) -> int {
    unsigned long nOff = static_cast<unsigned long>(p - pBase);
    for (size_t i = 0; i < needles.Count(); ++i) {
      const NeedleSet::Needle& needle = needles[i];
      if (static_cast<unsigned char>(needle.pszString[0]) != *p) continue;
      if (s.MatchAt(nSeg, nOff, needle.pszString, needle.nLength)) {
        return needle.nIndex;
      }
    }
    return -1;
  };

  unsigned long nOffset = s.nOffset;
  for (size_t nSeg = s.nSegment; nSeg < s.segments.size();
       ++nSeg, nOffset = 0) {
    const KelSegment& segment = s.segments[nSeg];
    if (nOffset >= segment.nSize) continue;
    const unsigned char* pBase =
        reinterpret_cast<const unsigned char*>(segment.pData);
    const unsigned char* pEnd = pBase + segment.nSize;
    const unsigned char* pFrom = pBase + nOffset;

    if (nDistinct <= kMaxMemchrBytes) {
      // Scan in growing windows so that a first byte that is rare (or
      // absent) costs no more than the distance to the nearest match. In a
      // window, each first byte is searched once and then only again after
      // its occurrence was consumed, so memchr passes every byte once per
      // distinct first byte.
      size_t nWindow = kFirstWindow;
      for (const unsigned char* pWindow = pFrom; pWindow < pEnd;) {
        size_t nLeft = static_cast<size_t>(pEnd - pWindow);
        const unsigned char* pWindowEnd =
            pWindow + (nLeft < nWindow ? nLeft : nWindow);
        const unsigned char* apNext[kMaxMemchrBytes];
        for (size_t k = 0; k < nDistinct; ++k) {
          apNext[k] = static_cast<const unsigned char*>(
              memchr(pWindow, abDistinct[k],
                     static_cast<size_t>(pWindowEnd - pWindow)));
        }
        for (;;) {
          size_t nBest = nDistinct;
          for (size_t k = 0; k < nDistinct; ++k) {
            if (apNext[k] != nullptr &&
                (nBest == nDistinct || apNext[k] < apNext[nBest])) {
              nBest = k;
            }
          }
          if (nBest == nDistinct) break;
          const unsigned char* p = apNext[nBest];
          int nFound = matchHere(nSeg, pBase, p);
          if (nFound >= 0) {
            nIndex = nFound;
            return static_cast<long>(segment.nStart + (p - pBase) -
                                     s.nPosition);
          }
          apNext[nBest] = static_cast<const unsigned char*>(
              memchr(p + 1, abDistinct[nBest],
                     static_cast<size_t>(pWindowEnd - p - 1)));
        }
        pWindow = pWindowEnd;
        if (nWindow < kLastWindow) nWindow *= 2;
      }
    } else {
      for (const unsigned char* p = pFrom; p < pEnd; ++p) {
        if (!abFirst[*p]) continue;
        int nFound = matchHere(nSeg, pBase, p);
        if (nFound >= 0) {
          nIndex = nFound;
          return static_cast<long>(segment.nStart + (p - pBase) - s.nPosition);
        }
      }
    }
  }
  return static_cast<long>(s.nTotal - s.nPosition);
}
