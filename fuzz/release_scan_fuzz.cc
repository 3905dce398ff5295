// The release parser and the field extent scan over random bytes, each
// checked against a plain restatement of what it must answer:
//  - a context is made with special strings taken from the input (or the
//    defaults);
//  - CAdpReleseParser cuts the data into blocks: each block lies inside the
//    data and after the one before, the cut stops, and the only error is the
//    release that escapes nothing (-1102);
//  - _RemoveReleaseChars drops each release and keeps the byte it escapes;
//  - CKelStream::GetDelimitedLength, with the list as given and prepared
//    once, over the data laid out in pages of the stream's own and of the
//    caller's, from several positions, finds the
//    first of the context's value-end strings and of its special strings
//    that matches whole, the earlier string of the list first at one
//    position.
#include <host/kel_exception.h>
#include <host/kel_stream.h>
#include <host/kel_trace.h>
#include <varnadp.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "adapter/adp.h"
#include "fuzz_session.h"
#include "stream/release.h"

namespace {

[[noreturn]] void Wrong(const char* pszWhat) { fuzz::Die(std::string("wrong answer: ") + pszWhat); }

// Where the first of the strings (positive lengths only) matches whole in
// data from nFrom on, and which; the length to the end and -1 when none does.
long ReferenceLength(const std::string& data, size_t nFrom, const char* const* ppszStrings,
                     const int* pnLengths, int& nIndex) {
  for (size_t nAt = nFrom; nAt < data.size(); ++nAt) {
    for (int i = 0; ppszStrings[i] != nullptr; ++i) {
      const size_t n = pnLengths[i] > 0 ? static_cast<size_t>(pnLengths[i]) : 0;
      if (n == 0 || nAt + n > data.size()) continue;
      if (std::memcmp(data.data() + nAt, ppszStrings[i], n) == 0) {
        nIndex = i;
        return static_cast<long>(nAt - nFrom);
      }
    }
  }
  nIndex = -1;
  return static_cast<long>(data.size() - nFrom);
}

void CheckParser(CAdp& adp, const std::string& data) {
  CKelTrace trace;
  trace.ToCallback(nullptr, nullptr);  // silent: its lines are the tests' business
  CAdpReleseParser parser(adp, data.data(), static_cast<unsigned long>(data.size()), 1);
  const char* pLast = data.data();
  for (size_t nBlocks = 0;; ++nBlocks) {
    if (nBlocks > data.size() + 1) Wrong("the release parser does not stop");
    CAdpReleaseDataBlock block;
    int nMore = 0;
    try {
      nMore = parser.GetNextBlock(trace, block);
    } catch (const CKelException& e) {
      if (e.GetRC() != -1102) Wrong("the release parser failed with another code");
      return;
    }
    if (block.GetData() < pLast || block.GetData() + block.GetSize() > data.data() + data.size()) {
      Wrong("a block lies outside the data or before the one before it");
    }
    pLast = block.GetData() + block.GetSize();
    if (nMore == 0) return;
  }
}

void CheckRemove(CAdp& adp, const std::string& data) {
  const char cRelease = adp._GetRelease()[0];
  std::string expected;
  for (size_t i = 0; i < data.size(); ++i) {
    if (data[i] != cRelease) {
      expected += data[i];
    } else if (i + 1 < data.size()) {
      expected += data[++i];
    }
  }
  std::string text = data;
  const unsigned long nLength =
      adp._RemoveReleaseChars(text.empty() ? nullptr : &text[0], static_cast<unsigned long>(text.size()));
  if (nLength != expected.size() || text.compare(0, nLength, expected) != 0) {
    Wrong("_RemoveReleaseChars");
  }
}

void CheckScan(CAdp& adp, const std::string& data, fuzz::Input& layout) {
  // Pages: the first layout bytes give the piece sizes; odd sizes are the
  // caller's buffers, even ones copied into the stream's pages.
  CKelStream stream(1 + layout.Byte() % 64u, nullptr, nullptr, 0);
  for (size_t nAt = 0; nAt < data.size();) {
    const uint8_t nByte = layout.Byte();
    size_t n = 1 + nByte % 97u;
    if (n > data.size() - nAt) n = data.size() - nAt;
    if (nByte & 1) {
      stream.WritePage(stream.NewPage(data.data() + nAt, static_cast<unsigned long>(n), 0),
                       static_cast<unsigned long>(n));
    } else {
      stream.Write(data.data() + nAt, static_cast<unsigned long>(n));
    }
    nAt += n;
  }
  const char* const* aSets[2] = {adp._GetValueEndStrings(), adp._GetSpecialStrings()};
  const int* aLengths[2] = {adp._GetValueEndLengths(), adp._GetSpecialLengths()};
  CKelDelimiters aPrepared[2];
  for (int nSet = 0; nSet < 2; ++nSet) {
    aPrepared[nSet].Prepare(const_cast<const char**>(aSets[nSet]), aLengths[nSet]);
  }
  for (size_t nFrom = 0; nFrom <= data.size(); nFrom += 1 + layout.Byte() % 23u) {
    for (int nSet = 0; nSet < 2; ++nSet) {
      stream.Seek(static_cast<long>(nFrom), 0);
      int nIndex = 99;
      const long nGot = stream.GetDelimitedLength(const_cast<const char**>(aSets[nSet]),
                                                  aLengths[nSet], nIndex);
      int nWant = 99;
      const long nExpected = ReferenceLength(data, nFrom, aSets[nSet], aLengths[nSet], nWant);
      if (nGot != nExpected || nIndex != nWant) Wrong("GetDelimitedLength");
      if (stream.Tell() != static_cast<long>(nFrom)) Wrong("GetDelimitedLength moved the position");
      int nPreparedIndex = 99;
      if (stream.GetDelimitedLength(aPrepared[nSet], nPreparedIndex) != nExpected ||
          nPreparedIndex != nWant) {
        Wrong("GetDelimitedLength of a prepared list");
      }
      if (stream.Tell() != static_cast<long>(nFrom)) Wrong("GetDelimitedLength moved the position");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
  fuzz::Input in(pData, nSize);
  const uint8_t nFlags = in.Byte();
  DB_SPECIAL_STRINGS special;
  std::memset(&special, 0, sizeof special);
  if (nFlags & 1) {
    std::snprintf(special.szDelimiterLen, sizeof special.szDelimiterLen, "%u", 1 + in.Byte() % 4u);
    std::snprintf(special.szTerminatorLen, sizeof special.szTerminatorLen, "%u", 1 + in.Byte() % 4u);
    std::string s = in.Bytes(4);
    std::memcpy(special.szDelimiter, s.data(), s.size());
    s = in.Bytes(4);
    std::memcpy(special.szTerminator, s.data(), s.size());
    s = in.Bytes(1);
    std::memcpy(special.szRelease, s.data(), s.size());
  }
  // The layout bytes come first, so that the data is the input's tail.
  const std::string layoutBytes = in.Bytes(in.Byte() % 64u);
  const std::string data = in.Bytes(in.Size());
  VARNADP* pCtx = nullptr;
  if (adpCreateContext(&pCtx, nullptr, (nFlags & 1) ? &special : nullptr) != 0) return 0;
  CAdp& adp = *static_cast<CAdp*>(pCtx);
  CheckParser(adp, data);
  CheckRemove(adp, data);
  fuzz::Input layout(reinterpret_cast<const uint8_t*>(layoutBytes.data()), layoutBytes.size());
  CheckScan(adp, data, layout);
  adpDestroyContext(pCtx, nullptr);
  return 0;
}
