#include "timezone.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>

#include "calendar.h"

namespace ocimem::values {

// "std offset [dst [offset] [,start[/time],end[/time]]]" with Mm.w.d dates.
struct ZoneRules::Rule {
  LocalTimeType standard;
  bool has_dst = false;
  LocalTimeType daylight;
  int start_month = 0, start_week = 0, start_weekday = 0, start_time = 7200;
  int end_month = 0, end_week = 0, end_weekday = 0, end_time = 7200;
};

namespace {

std::uint32_t Be32(const std::string& b, std::size_t at) {
  return (static_cast<std::uint32_t>(static_cast<unsigned char>(b[at])) << 24) |
         (static_cast<std::uint32_t>(static_cast<unsigned char>(b[at + 1])) << 16) |
         (static_cast<std::uint32_t>(static_cast<unsigned char>(b[at + 2])) << 8) |
         static_cast<std::uint32_t>(static_cast<unsigned char>(b[at + 3]));
}

std::int64_t Be64(const std::string& b, std::size_t at) {
  return static_cast<std::int64_t>((static_cast<std::uint64_t>(Be32(b, at)) << 32) | Be32(b, at + 4));
}

struct PosixReader {
  std::string_view s;
  std::size_t pos = 0;
  bool AtEnd() const { return pos >= s.size(); }

  bool Name(std::string* out) {
    if (AtEnd()) return false;
    if (s[pos] == '<') {
      const std::size_t close = s.find('>', pos);
      if (close == std::string_view::npos) return false;
      *out = std::string(s.substr(pos + 1, close - pos - 1));
      pos = close + 1;
      return true;
    }
    const std::size_t begin = pos;
    while (!AtEnd() && std::isalpha(static_cast<unsigned char>(s[pos]))) ++pos;
    *out = std::string(s.substr(begin, pos - begin));
    return pos - begin >= 3;
  }

  // [+|-]hh[:mm[:ss]] in seconds.
  bool Time(int* seconds) {
    int sign = 1;
    if (!AtEnd() && (s[pos] == '+' || s[pos] == '-')) sign = s[pos++] == '-' ? -1 : 1;
    int parts[3] = {0, 0, 0};
    for (int i = 0; i < 3; ++i) {
      if (i > 0) {
        if (AtEnd() || s[pos] != ':') break;
        ++pos;
      }
      const std::size_t begin = pos;
      while (!AtEnd() && std::isdigit(static_cast<unsigned char>(s[pos]))) {
        parts[i] = parts[i] * 10 + (s[pos++] - '0');
      }
      if (pos == begin) return false;
    }
    *seconds = sign * (parts[0] * 3600 + parts[1] * 60 + parts[2]);
    return true;
  }

  bool Date(int* month, int* week, int* weekday, int* time) {
    if (AtEnd() || s[pos] != 'M') return false;
    ++pos;
    int values[3] = {0, 0, 0};
    for (int i = 0; i < 3; ++i) {
      if (i > 0) {
        if (AtEnd() || s[pos] != '.') return false;
        ++pos;
      }
      const std::size_t begin = pos;
      while (!AtEnd() && std::isdigit(static_cast<unsigned char>(s[pos]))) {
        values[i] = values[i] * 10 + (s[pos++] - '0');
      }
      if (pos == begin) return false;
    }
    *month = values[0];
    *week = values[1];
    *weekday = values[2];
    if (!AtEnd() && s[pos] == '/') {
      ++pos;
      return Time(time);
    }
    return true;
  }
};

// Day of month of the w-th (5 = last) weekday d (0 = Sunday) of a month.
int RuleDay(int year, int month, int week, int weekday) {
  const std::int64_t first = DayNumber(year, month, 1);
  const int first_weekday = static_cast<int>((first + 1) % 7);  // JDN 0 was a Monday
  int day = 1 + (weekday - first_weekday + 7) % 7 + (week - 1) * 7;
  while (day > DaysInMonth(year, month)) day -= 7;
  return day;
}

std::string FoldName(std::string_view name) {
  std::string out(name);
  for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return out;
}

class RegionIndex {
 public:
  const ZoneRules* Find(std::string_view name) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!indexed_) BuildIndex();
    const std::string key = FoldName(name);
    auto loaded = rules_.find(key);
    if (loaded != rules_.end()) return loaded->second.get();
    auto path = paths_.find(key);
    if (path == paths_.end()) return nullptr;
    std::ifstream in(path->second, std::ios::binary);
    std::ostringstream bytes;
    bytes << in.rdbuf();
    std::unique_ptr<ZoneRules> rules = ZoneRules::FromTzif(bytes.str());
    const ZoneRules* result = rules.get();
    rules_.emplace(key, std::move(rules));
    return result;
  }

 private:
  void BuildIndex() {
    indexed_ = true;
    const char* dir = std::getenv("TZDIR");
    const std::filesystem::path root = dir != nullptr && *dir != '\0' ? dir : "/usr/share/zoneinfo";
    std::error_code ec;
    std::filesystem::recursive_directory_iterator it(root, ec);
    for (; !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
      const std::string relative = it->path().lexically_relative(root).generic_string();
      if (it->is_directory(ec)) {
        if (relative == "posix" || relative == "right") it.disable_recursion_pending();
        continue;
      }
      paths_.emplace(FoldName(relative), it->path().string());
    }
  }

  std::mutex mutex_;
  bool indexed_ = false;
  std::map<std::string, std::string> paths_;
  std::map<std::string, std::unique_ptr<ZoneRules>> rules_;
};

}  // namespace

std::unique_ptr<ZoneRules> ZoneRules::FromTzif(const std::string& b) {
  constexpr std::size_t kHeader = 44;
  if (b.size() < kHeader || b.compare(0, 4, "TZif") != 0) return nullptr;
  auto counts = [&b](std::size_t at, std::uint32_t c[6]) {
    for (int i = 0; i < 6; ++i) c[i] = Be32(b, at + 20 + 4 * static_cast<std::size_t>(i));
  };
  std::uint32_t c[6];
  counts(0, c);
  std::size_t at = kHeader;
  int time_size = 4;
  if (b[4] >= '2') {
    // Skip the 32-bit block; the 64-bit one follows with its own header.
    at += c[3] * 5 + c[4] * 6 + c[5] + c[2] * 8 + c[1] + c[0];
    if (b.size() < at + kHeader) return nullptr;
    counts(at, c);
    at += kHeader;
    time_size = 8;
  }
  const std::uint32_t isut = c[0], isstd = c[1], leap = c[2], timecnt = c[3], typecnt = c[4],
                      charcnt = c[5];
  const std::size_t need = timecnt * static_cast<std::size_t>(time_size) + timecnt + typecnt * 6 +
                           charcnt + leap * static_cast<std::size_t>(time_size + 4) + isstd + isut;
  if (b.size() < at + need || typecnt == 0) return nullptr;
  auto rules = std::unique_ptr<ZoneRules>(new ZoneRules);
  for (std::uint32_t i = 0; i < timecnt; ++i) {
    rules->transitions_.push_back(time_size == 8 ? Be64(b, at + 8 * i)
                                                 : static_cast<std::int32_t>(Be32(b, at + 4 * i)));
  }
  at += timecnt * static_cast<std::size_t>(time_size);
  for (std::uint32_t i = 0; i < timecnt; ++i) {
    rules->transition_types_.push_back(static_cast<std::uint8_t>(b[at + i]));
  }
  at += timecnt;
  const std::size_t abbr_at = at + typecnt * 6;
  for (std::uint32_t i = 0; i < typecnt; ++i) {
    LocalTimeType t;
    t.offset_seconds = static_cast<std::int32_t>(Be32(b, at + 6 * i));
    t.is_dst = b[at + 6 * i + 4] != 0;
    const auto index = static_cast<unsigned char>(b[at + 6 * i + 5]);
    if (index < charcnt) t.abbreviation = std::string(b.c_str() + abbr_at + index);
    rules->types_.push_back(t);
  }
  for (std::uint8_t index : rules->transition_types_) {
    if (index >= typecnt) return nullptr;
  }
  at += need - timecnt * static_cast<std::size_t>(time_size) - timecnt;
  if (time_size == 8 && at < b.size() && b[at] == '\n') {
    const std::size_t end = b.find('\n', at + 1);
    const std::string footer = b.substr(at + 1, end == std::string::npos ? std::string::npos : end - at - 1);
    auto rule = std::make_shared<Rule>();
    PosixReader r{footer};
    int offset = 0;
    if (!footer.empty() && r.Name(&rule->standard.abbreviation) && r.Time(&offset)) {
      rule->standard.offset_seconds = -offset;
      if (!r.AtEnd() && r.s[r.pos] != ',') {
        rule->has_dst = r.Name(&rule->daylight.abbreviation);
        rule->daylight.is_dst = true;
        rule->daylight.offset_seconds = rule->standard.offset_seconds + 3600;
        if (!r.AtEnd() && r.s[r.pos] != ',' && r.Time(&offset)) {
          rule->daylight.offset_seconds = -offset;
        }
      }
      if (rule->has_dst) {
        bool ok = !r.AtEnd() && r.s[r.pos++] == ',' &&
                  r.Date(&rule->start_month, &rule->start_week, &rule->start_weekday,
                         &rule->start_time) &&
                  !r.AtEnd() && r.s[r.pos++] == ',' &&
                  r.Date(&rule->end_month, &rule->end_week, &rule->end_weekday, &rule->end_time);
        if (!ok) rule->has_dst = false;
      }
      rules->footer_ = rule;
    }
  }
  return rules;
}

LocalTimeType ZoneRules::FromFooter(std::int64_t t) const {
  const Rule& r = *footer_;
  if (!r.has_dst) return r.standard;
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  FromEpochSeconds(t + r.standard.offset_seconds + ToEpochSeconds(1970, 1, 1, 0, 0, 0), &year,
                   &month, &day, &hour, &minute, &second);
  // Start is given in standard local time, end in daylight local time.
  const std::int64_t start =
      ToUnixSeconds(year, r.start_month, RuleDay(year, r.start_month, r.start_week, r.start_weekday),
                    0, 0, 0) + r.start_time - r.standard.offset_seconds;
  const std::int64_t end =
      ToUnixSeconds(year, r.end_month, RuleDay(year, r.end_month, r.end_week, r.end_weekday), 0,
                    0, 0) + r.end_time - r.daylight.offset_seconds;
  const bool dst = start < end ? (t >= start && t < end) : !(t >= end && t < start);
  return dst ? r.daylight : r.standard;
}

LocalTimeType ZoneRules::At(std::int64_t t) const {
  if (transitions_.empty() || t < transitions_.front()) {
    if (transitions_.empty() && footer_) return FromFooter(t);
    return types_.front();
  }
  if (t >= transitions_.back() && footer_) return FromFooter(t);
  const auto it = std::upper_bound(transitions_.begin(), transitions_.end(), t);
  return types_[transition_types_[static_cast<std::size_t>(it - transitions_.begin() - 1)]];
}

std::vector<std::int64_t> ZoneRules::FromLocal(std::int64_t local) const {
  std::vector<int> offsets;
  for (std::int64_t probe : {local - 86400, local, local + 86400}) {
    const int o = At(probe).offset_seconds;
    if (std::find(offsets.begin(), offsets.end(), o) == offsets.end()) offsets.push_back(o);
  }
  std::vector<std::int64_t> instants;
  for (int o : offsets) {
    const std::int64_t utc = local - o;
    if (At(utc).offset_seconds == o &&
        std::find(instants.begin(), instants.end(), utc) == instants.end()) {
      instants.push_back(utc);
    }
  }
  std::sort(instants.begin(), instants.end());
  return instants;
}

const ZoneRules* FindRegion(std::string_view name) {
  static RegionIndex* index = new RegionIndex;  // lives for the process
  return index->Find(name);
}

int ParseOffset(std::string_view text, int* minutes) {
  std::size_t pos = 0;
  bool negative = false;
  if (pos < text.size() && (text[pos] == '+' || text[pos] == '-')) negative = text[pos++] == '-';
  const std::size_t hour_begin = pos;
  int hours = 0;
  while (pos < text.size() && pos - hour_begin < 2 && std::isdigit(static_cast<unsigned char>(text[pos]))) {
    hours = hours * 10 + (text[pos++] - '0');
  }
  if (pos == hour_begin || pos >= text.size() || text[pos] != ':') return -1;
  ++pos;
  const std::size_t minute_begin = pos;
  int mins = 0;
  // Only two digits count; a longer run is refused below, and accumulating
  // all of it could overflow.
  while (pos < text.size() && std::isdigit(static_cast<unsigned char>(text[pos]))) {
    if (pos - minute_begin < 2) mins = mins * 10 + (text[pos] - '0');
    ++pos;
  }
  if (pos != text.size() || pos == minute_begin || pos - minute_begin > 2) return 1875;
  if (hours > 15) return 1874;
  if (mins > 59) return 1875;
  *minutes = (negative ? -1 : 1) * (hours * 60 + mins);
  return 0;
}

}  // namespace ocimem::values
