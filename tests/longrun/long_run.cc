// A long run on one context: documents written with adpProcessObject, read
// back with adpProcessBuffer or adpProcessStream, every k-th one stored and
// given the LOB pass, now and then a malformed record, each result checked.
// Resident memory is sampled every 1% of the calls and must stay flat after
// the first 10%.
//
// Usage: long_run [--calls N] [--seed S] [--lob-every K] [--bad-every M]
//                 [--bound-kb B]
// Exit status: 0 flat and every check passed, 1 a check failed, 2 memory
// grew beyond the bound, 3 bad arguments or set-up.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <coldef.h>
#include <oci.h>
#include <varnadp.h>

#include <host/kel.h>

#include "doc_record.h"
#include "doc_session.h"
#include "rss_monitor.h"

// AddressSanitizer holds freed memory back in its quarantine and pads every
// block, and ThreadSanitizer keeps shadow memory and its own allocator, so
// resident memory under them says nothing about the program's own: such a
// build reports the samples without a verdict (LeakSanitizer checks for
// leaks at exit).
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define LONGRUN_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define LONGRUN_SANITIZED 1
#endif
#endif

namespace longrun {
namespace {

#ifdef LONGRUN_SANITIZED
constexpr bool kJudgeRss = false;
#else
constexpr bool kJudgeRss = true;
#endif

struct Options {
  long nCalls = 1000000;
  uint64_t nSeed = 20261121;
  long nLobEvery = 7;
  long nBadEvery = 50;
  // Growth allowed after warm-up. A leak of a few bytes per call passes
  // 2 MB within the run (2.3 bytes per call over 900,000 calls), while the
  // allocator's own high-water marks (the largest record is about 700 kB in
  // its stream, its copies and its instance) stay well inside it.
  long nBoundKb = 2048;
};

struct Counts {
  long nObject = 0;   // adpProcessObject
  long nBuffer = 0;   // adpProcessBuffer, malformed records included
  long nStream = 0;   // adpProcessStream
  long nLobs = 0;     // adpWriteLobs
  long nBad = 0;      // malformed records refused with their code
  long nStored = 0;   // documents stored and checked after the LOB pass
  long Total() const { return nObject + nBuffer + nStream + nLobs; }
};

struct Failure {
  std::string text;
};

std::string LastException() {
  CKelException e(0, "");
  if (!KelGetLastException(&e)) return "none";
  return std::to_string(e.GetRC()) + " in " + e.GetFunc() + ": " + e.GetText();
}

std::string StreamText(CKelStream& stream) {
  stream.Seek(0, 0);
  std::string out(stream.GetSize(), '\0');
  if (!out.empty()) out.resize(stream.Read(&out[0], out.size()));
  return out;
}

// Where two texts first differ, for a failure report.
std::string Difference(const std::string& want, const std::string& got) {
  size_t i = 0;
  while (i < want.size() && i < got.size() && want[i] == got[i]) ++i;
  return "sizes " + std::to_string(want.size()) + "/" + std::to_string(got.size()) +
         ", first difference at byte " + std::to_string(i);
}

class LongRun {
 public:
  explicit LongRun(const Options& o) : opt_(o), db_("longrun") {
    trace_.CaptureToBuffer();
    if (adpCreateContext(&ctx_, &trace_, nullptr) != 0) throw Failure{"adpCreateContext failed"};
    if (coldefDescribe(db_.Env(), db_.Err(), db_.Svc(), "SCOTT.LR_DOC_T", &defs_) != 0) {
      throw Failure{"coldefDescribe failed"};
    }
  }
  ~LongRun() {
    if (ctx_ != nullptr) adpDestroyContext(ctx_, nullptr);
    if (defs_ != nullptr) coldefFree(defs_);
  }
  LongRun(const LongRun&) = delete;
  LongRun& operator=(const LongRun&) = delete;

  void Iteration(long nIt);
  const Counts& counts() const { return n_; }

 private:
  void Expect(bool bOk, long nIt, const std::string& what) {
    if (!bOk) {
      throw Failure{"iteration " + std::to_string(nIt) + ": " + what + "\n" + trace_.GetBuffer()};
    }
  }
  std::string Write(void* pObject, void* pInd, long nIt, const char* pszWhat);
  void LobPass(const DocValues& doc, const std::string& expected, void* pInstance, OCIInd* pInd,
               long nIt);
  void Malformed(const std::string& expected, size_t nBodyAt, long nIt);

  Options opt_;
  DocSession db_;
  CKelTrace trace_;
  CKelStream stream_{0, nullptr, nullptr, 0};
  VARNADP* ctx_ = nullptr;
  Column_Def* defs_ = nullptr;
  std::string input_;  // the buffer read last, kept until its LOB pass
  Counts n_;
};

std::string LongRun::Write(void* pObject, void* pInd, long nIt, const char* pszWhat) {
  Column_Def* pList = defs_;
  stream_.SetSize(0);
  const int rc = adpProcessObject(ctx_, &trace_, &stream_, &pList, db_.Env(), db_.Err(),
                                  db_.Svc(), pObject, static_cast<OCIInd*>(pInd), OCI_IND_NOTNULL,
                                  db_.DocType());
  ++n_.nObject;
  Expect(rc == 0, nIt, std::string(pszWhat) + ": adpProcessObject gave " + LastException());
  return StreamText(stream_);
}

void LongRun::Iteration(long nIt) {
  const DocValues doc = MakeDoc(opt_.nSeed, nIt);
  size_t nBodyAt = 0;
  const std::string expected = ExpectedStream(doc, true, &nBodyAt);

  // Object to stream.
  lr_doc_ind* pInd = nullptr;
  lr_doc_t* pDoc = db_.Build(doc, &pInd);
  const std::string written = Write(pDoc, pInd, nIt, "built document");
  db_.Release(pDoc, true);
  Expect(written == expected, nIt, "stream of the built document: " + Difference(expected, written));

  // Stream to object, from a buffer or from the stream just written. Each
  // page of a host stream is written to a LOB on its own from the LOB's
  // first byte, so the LOB pass reads a record larger than a page from a
  // buffer.
  // The largest records always get the pass: it is where memory peaks, and
  // the peak is to be reached within the warm-up.
  const bool bLobPass = nIt % opt_.nLobEvery == 0 || IsLarge(nIt);
  bool bBuffer = nIt % 2 == 0;
  if (bLobPass && written.size() > CKelStream::KEL_DEFAULT_PAGE_SIZE) bBuffer = true;
  Column_Def* pList = defs_;
  void* pInstance = nullptr;
  OCIInd* pReadInd = nullptr;
  short nInd = 0;
  int nLobsPending = -1;
  int rc;
  if (bBuffer) {
    input_ = written;
    const void* pBuffer = input_.data();
    rc = adpProcessBuffer(ctx_, &trace_, &pBuffer, input_.size(), &pList, db_.Env(), db_.Err(),
                          db_.Svc(), &pInstance, &pReadInd, &nInd, db_.DocType(), &nLobsPending);
    ++n_.nBuffer;
    Expect(rc == 0, nIt, "adpProcessBuffer gave " + LastException());
    Expect(static_cast<const char*>(pBuffer) == input_.data() + input_.size(), nIt,
           "adpProcessBuffer did not take the whole record");
  } else {
    stream_.Seek(0, 0);
    rc = adpProcessStream(ctx_, &trace_, &stream_, &pList, db_.Env(), db_.Err(), db_.Svc(),
                          &pInstance, &pReadInd, &nInd, db_.DocType(), &nLobsPending);
    ++n_.nStream;
    Expect(rc == 0, nIt, "adpProcessStream gave " + LastException());
    Expect(stream_.IsEnd() != 0, nIt, "adpProcessStream did not take the whole record");
  }
  Expect(nLobsPending == ((doc.body || doc.img) ? 1 : 0), nIt, "LOBs pending flag");

  if (bLobPass) {
    LobPass(doc, expected, pInstance, pReadInd, nIt);
  } else {
    // The read object written back, its LOBs (pending until a pass) null.
    auto* pRead = reinterpret_cast<lr_doc_ind*>(pReadInd);
    pRead->_atomic = OCI_IND_NOTNULL;
    pRead->body = OCI_IND_NULL;
    pRead->img = OCI_IND_NULL;
    const std::string back = Write(pInstance, pReadInd, nIt, "read document");
    const std::string want = ExpectedStream(doc, false);
    Expect(back == want, nIt, "stream of the read document: " + Difference(want, back));
  }

  if (nIt % opt_.nBadEvery == opt_.nBadEvery - 1) Malformed(expected, nBodyAt, nIt);
  trace_.ClearBuffer();
}

// Stores the object just read, runs the LOB pass over it, commits and
// checks the stored LOB bytes and the stored document's stream; then
// deletes the rows stored before it, so that the database keeps one.
void LongRun::LobPass(const DocValues& doc, const std::string& expected, void* pInstance,
                      OCIInd* pInd, long nIt) {
  pInd[0] = OCI_IND_NOTNULL;
  db_.Store(pInstance, pInd);
  if (doc.body || doc.img) {
    const std::string sql =
        "SELECT VALUE(d) FROM lr_docs d WHERE id = " + std::to_string(doc.id) + " FOR UPDATE";
    const int rc = adpWriteLobs(ctx_, &trace_, sql.c_str());
    ++n_.nLobs;
    Expect(rc == 0, nIt, "adpWriteLobs gave " + LastException());
  }
  db_.Exec("COMMIT");

  lr_doc_ind* pStoredInd = nullptr;
  lr_doc_t* pStored = db_.Fetch(doc.id, &pStoredInd);
  std::string failure;
  if ((pStoredInd->body == OCI_IND_NULL) != !doc.body) {
    failure = "stored BODY null or not null against the record";
  } else if (doc.body && db_.LobContents(pStored->body) != *doc.body) {
    failure = "stored BODY bytes: " + Difference(*doc.body, db_.LobContents(pStored->body));
  } else if ((pStoredInd->img == OCI_IND_NULL) != !doc.img) {
    failure = "stored IMG null or not null against the record";
  } else if (doc.img && db_.LobContents(pStored->img) != *doc.img) {
    failure = "stored IMG bytes: " + Difference(*doc.img, db_.LobContents(pStored->img));
  }
  if (failure.empty()) {
    const std::string stored = Write(pStored, pStoredInd, nIt, "stored document");
    if (stored != expected) failure = "stream of the stored document: " + Difference(expected, stored);
  }
  db_.Release(pStored, false);
  Expect(failure.empty(), nIt, failure);
  ++n_.nStored;

  db_.Exec("DELETE FROM lr_docs WHERE id < " + std::to_string(doc.id));
  db_.Exec("COMMIT");
}

// A record the reader must refuse, read on the same context: a release
// before a byte that is not special (-1102) from a buffer, or a NUMBER text
// of more than 1,024 bytes (-18) from the stream, in turn.
void LongRun::Malformed(const std::string& expected, size_t nBodyAt, long nIt) {
  const bool bRelease = (nIt / opt_.nBadEvery) % 2 == 0;
  std::string bad;
  int nWant;
  if (bRelease) {
    bad = expected.substr(0, nBodyAt) + "!Q" + expected.substr(nBodyAt);
    nWant = -1102;
  } else {
    bad = std::string(1100, '7') + expected.substr(expected.find('|'));
    nWant = -18;
  }
  Column_Def* pList = defs_;
  void* pInstance = nullptr;
  OCIInd* pInd = nullptr;
  short nInd = 0;
  int nLobsPending = -1;
  int rc;
  if (bRelease) {
    const void* pBuffer = bad.data();
    rc = adpProcessBuffer(ctx_, &trace_, &pBuffer, bad.size(), &pList, db_.Env(), db_.Err(),
                          db_.Svc(), &pInstance, &pInd, &nInd, db_.DocType(), &nLobsPending);
    ++n_.nBuffer;
  } else {
    stream_.SetSize(0);
    stream_.Write(bad.data(), bad.size());
    stream_.Seek(0, 0);
    rc = adpProcessStream(ctx_, &trace_, &stream_, &pList, db_.Env(), db_.Err(), db_.Svc(),
                          &pInstance, &pInd, &nInd, db_.DocType(), &nLobsPending);
    ++n_.nStream;
  }
  Expect(rc == nWant, nIt,
         "malformed record gave " + std::to_string(rc) + ", not " + std::to_string(nWant));
  CKelException e(0, "");
  Expect(KelGetLastException(&e) && e.GetRC() == nWant, nIt,
         "last exception of the malformed record: " + LastException());
  // adpProcessBuffer traces under the name of adpProcessStream.
  Expect(std::strstr(trace_.GetBuffer(), "*ERR: in adpProcessStream (-2)") != nullptr, nIt,
         "no error trace for the malformed record");
  ++n_.nBad;
}

bool ParseArgs(int argc, char** argv, Options& o) {
  for (int i = 1; i < argc; ++i) {
    if (i + 1 >= argc) return false;
    char* pEnd = nullptr;
    const long long v = std::strtoll(argv[i + 1], &pEnd, 10);
    if (*pEnd != '\0' || v <= 0) return false;
    const std::string name = argv[i++];
    if (name == "--calls") {
      o.nCalls = static_cast<long>(v);
    } else if (name == "--seed") {
      o.nSeed = static_cast<uint64_t>(v);
    } else if (name == "--lob-every") {
      o.nLobEvery = static_cast<long>(v);
    } else if (name == "--bad-every") {
      o.nBadEvery = static_cast<long>(v);
    } else if (name == "--bound-kb") {
      o.nBoundKb = static_cast<long>(v);
    } else {
      return false;
    }
  }
  return o.nCalls >= 100;
}

int Run(const Options& opt) {
  const auto t0 = std::chrono::steady_clock::now();
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  std::vector<RssSample> samples;
  samples.push_back({0, CurrentRssKb(), HeapInUseKb()});
  const long nStep = opt.nCalls / 100;
  long nNext = nStep;
  long nIt = 0;
  Counts counts;
  try {
    LongRun run(opt);
    std::printf("calls rss_kb heap_in_use_kb\n");
    std::printf("%ld %ld %ld\n", samples.back().nCalls, samples.back().nRssKb,
                samples.back().nHeapKb);
    for (; run.counts().Total() < opt.nCalls; ++nIt) {
      run.Iteration(nIt);
      while (run.counts().Total() >= nNext && nNext <= opt.nCalls) {
        samples.push_back({run.counts().Total(), CurrentRssKb(), HeapInUseKb()});
        std::printf("%ld %ld %ld\n", samples.back().nCalls, samples.back().nRssKb,
                samples.back().nHeapKb);
        nNext += nStep;
      }
    }
    counts = run.counts();
  } catch (const Failure& f) {
    std::fprintf(stderr, "long_run: %s\n", f.text.c_str());
    return 1;
  } catch (const OciFailure& f) {
    std::fprintf(stderr, "long_run: iteration %ld: %s\n", nIt, f.what());
    return 1;
  }
  const double dSeconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  const RssVerdict v = JudgeRss(samples, opt.nCalls / 10, opt.nBoundKb);
  std::printf("calls %ld in %.1f s (%ld iterations): object->stream %ld, buffer->object %ld, "
              "stream->object %ld, LOB passes %ld; %ld stored and checked, %ld malformed "
              "refused\n",
              counts.Total(), dSeconds, nIt, counts.nObject, counts.nBuffer, counts.nStream,
              counts.nLobs, counts.nStored, counts.nBad);

  std::printf("heap in use kB: after warm-up %ld, last %ld\n", v.nWarmHeapKb, v.nLastHeapKb);
  std::printf("rss kB: first %ld, after warm-up %ld, max %ld, last %ld; slope %.1f bytes per "
              "1000 calls; bound %ld kB: %s\n",
              v.nFirstKb, v.nWarmKb, v.nMaxKb, v.nLastKb, v.dSlope, opt.nBoundKb,
              !kJudgeRss ? "not judged under a sanitizer" : v.bFlat ? "flat" : "NOT FLAT");
  return v.bFlat || !kJudgeRss ? 0 : 2;
}

}  // namespace
}  // namespace longrun

int main(int argc, char** argv) {
  longrun::Options opt;
  if (!longrun::ParseArgs(argc, argv, opt)) {
    std::fprintf(stderr,
                 "usage: long_run [--calls N>=100] [--seed S] [--lob-every K] [--bad-every M] "
                 "[--bound-kb B]\n");
    return 3;
  }
  try {
    return longrun::Run(opt);
  } catch (const longrun::OciFailure& f) {
    std::fprintf(stderr, "long_run: set-up: %s\n", f.what());
    return 3;
  }
}
