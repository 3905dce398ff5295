// Resident memory of this process over a long run: samples of VmRSS taken
// at call counts, and the verdict on whether it stayed flat after warm-up.
#ifndef TESTS_LONGRUN_RSS_MONITOR_H_
#define TESTS_LONGRUN_RSS_MONITOR_H_

#include <vector>

namespace longrun {

struct RssSample {
  long nCalls;
  long nRssKb;
  long nHeapKb;
};

// VmRSS of this process in kB, from /proc/self/status; -1 when unreadable.
long CurrentRssKb();
// Bytes the C heap has handed out and not had back, in kB (mallinfo2): what
// tells a leak from the allocator's keeping freed memory; -1 without it.
long HeapInUseKb();

struct RssVerdict {
  long nFirstKb = 0;     // first sample
  long nWarmKb = 0;      // first sample at or after the warm-up
  long nMaxKb = 0;       // largest sample at or after the warm-up
  long nLastKb = 0;      // last sample
  long nWarmHeapKb = 0;  // heap in use at the warm-up sample
  long nLastHeapKb = 0;  // heap in use at the last sample
  double dSlope = 0;     // bytes per 1,000 calls, least squares after warm-up
  bool bFlat = false;    // nMaxKb - nWarmKb <= the bound
};

// Judges samples in call order; those before nWarmupCalls only warm up.
RssVerdict JudgeRss(const std::vector<RssSample>& samples, long nWarmupCalls, long nBoundKb);

}  // namespace longrun

#endif  // TESTS_LONGRUN_RSS_MONITOR_H_
