#include "rss_monitor.h"

#include <cstdio>
#include <cstring>

#include <malloc.h>

namespace longrun {

long CurrentRssKb() {
  std::FILE* f = std::fopen("/proc/self/status", "r");
  if (f == nullptr) return -1;
  char line[256];
  long nKb = -1;
  while (std::fgets(line, sizeof line, f) != nullptr) {
    if (std::strncmp(line, "VmRSS:", 6) == 0) {
      std::sscanf(line + 6, "%ld", &nKb);
      break;
    }
  }
  std::fclose(f);
  return nKb;
}

long HeapInUseKb() {
#if defined(__GLIBC__) && (__GLIBC__ > 2 || (__GLIBC__ == 2 && __GLIBC_MINOR__ >= 33))
  const struct mallinfo2 info = mallinfo2();
  return static_cast<long>((info.uordblks + info.hblkhd) / 1024);
#else
  return -1;
#endif
}

RssVerdict JudgeRss(const std::vector<RssSample>& samples, long nWarmupCalls, long nBoundKb) {
  RssVerdict v;
  if (samples.empty()) return v;
  v.nFirstKb = samples.front().nRssKb;
  v.nLastKb = samples.back().nRssKb;
  v.nLastHeapKb = samples.back().nHeapKb;
  bool bWarm = false;
  double n = 0, sx = 0, sy = 0, sxx = 0, sxy = 0;
  for (const RssSample& s : samples) {
    if (s.nCalls < nWarmupCalls) continue;
    if (!bWarm) {
      bWarm = true;
      v.nWarmKb = s.nRssKb;
      v.nWarmHeapKb = s.nHeapKb;
      v.nMaxKb = s.nRssKb;
    }
    if (s.nRssKb > v.nMaxKb) v.nMaxKb = s.nRssKb;
    const double x = static_cast<double>(s.nCalls);
    const double y = static_cast<double>(s.nRssKb) * 1024.0;
    n += 1;
    sx += x;
    sy += y;
    sxx += x * x;
    sxy += x * y;
  }
  if (!bWarm) return v;
  const double d = n * sxx - sx * sx;
  v.dSlope = d > 0 ? (n * sxy - sx * sy) / d * 1000.0 : 0.0;
  v.bFlat = v.nMaxKb - v.nWarmKb <= nBoundKb;
  return v;
}

}  // namespace longrun
