// NUMBER, DATE, TIMESTAMP and INTERVAL to text and back, through the OCI calls
// as the adapter makes them (its masks, page sizes and precisions).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "oci.h"

namespace {

struct Handles {
  OCIEnv* env = nullptr;
  OCIError* err = nullptr;
  Handles() {
    setenv("ORA_SDTZ", "+00:00", 1);
    OCIEnvCreate(&env, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
    OCIHandleAlloc(env, reinterpret_cast<void**>(&err), OCI_HTYPE_ERROR, 0, nullptr);
  }
  ~Handles() {
    OCIHandleFree(err, OCI_HTYPE_ERROR);
    OCIHandleFree(env, OCI_HTYPE_ENV);
  }
};

Handles& H() {
  static Handles handles;
  return handles;
}

const OraText* T(const std::string& s) { return reinterpret_cast<const OraText*>(s.c_str()); }

std::string BuildMask(const std::string& text) {
  std::string mask;
  for (char c : text) mask += (c >= '0' && c <= '9') ? '9' : ((c == '+' || c == '-') ? 'S' : c);
  return mask;
}

OCINumber Number(const std::string& text) {
  OCINumber n;
  const std::string mask = BuildMask(text);
  OCINumberFromText(H().err, T(text), static_cast<ub4>(text.size()), T(mask),
                    static_cast<ub4>(mask.size()), nullptr, 0, &n);
  return n;
}

const std::string kWideMask = "FM" + std::string(28, '9') + "." + std::string(29, '9');

void NumberToText(benchmark::State& state, const std::string& mask, const std::string& value) {
  const OCINumber n = Number(value);
  std::vector<OraText> page(mask.size() + 1);
  for (auto _ : state) {
    ub4 size = static_cast<ub4>(page.size());
    if (OCINumberToText(H().err, &n, T(mask), static_cast<ub4>(mask.size()), nullptr, 0, &size,
                        page.data()) != OCI_SUCCESS) {
      state.SkipWithError("OCINumberToText failed");
      break;
    }
    benchmark::DoNotOptimize(page.data());
  }
}

// One row of three NUMBER columns of different precision and scale: the
// masks alternate from call to call.
void NumberRowToText(benchmark::State& state) {
  const std::string masks[] = {"FM99999999.99", "FM99999", kWideMask};
  const OCINumber values[] = {Number("-1234567.89"), Number("12345"), Number("3.14159")};
  std::vector<OraText> page(kWideMask.size() + 1);
  for (auto _ : state) {
    for (int column = 0; column < 3; ++column) {
      ub4 size = static_cast<ub4>(page.size());
      const std::string& mask = masks[column];
      if (OCINumberToText(H().err, &values[column], T(mask), static_cast<ub4>(mask.size()),
                          nullptr, 0, &size, page.data()) != OCI_SUCCESS) {
        state.SkipWithError("OCINumberToText failed");
        break;
      }
      benchmark::DoNotOptimize(page.data());
    }
  }
}

void TextToNumber(benchmark::State& state, const std::string& text) {
  const std::string mask = BuildMask(text);
  OCINumber n;
  for (auto _ : state) {
    if (OCINumberFromText(H().err, T(text), static_cast<ub4>(text.size()), T(mask),
                          static_cast<ub4>(mask.size()), nullptr, 0, &n) != OCI_SUCCESS) {
      state.SkipWithError("OCINumberFromText failed");
      break;
    }
    benchmark::DoNotOptimize(&n);
  }
}

void DateToText(benchmark::State& state, const std::string& mask, ub4 page_size) {
  OCIDate d{};
  OCIDateSetDate(&d, 2001, 2, 3);
  OCIDateSetTime(&d, 4, 5, 6);
  std::vector<OraText> page(page_size);
  for (auto _ : state) {
    ub4 size = page_size;
    if (OCIDateToText(H().err, &d, T(mask), static_cast<ub1>(mask.size()), nullptr, 0, &size,
                      page.data()) != OCI_SUCCESS) {
      state.SkipWithError("OCIDateToText failed");
      break;
    }
    benchmark::DoNotOptimize(page.data());
  }
}

void DateFromText(benchmark::State& state, const std::string& mask, const std::string& text) {
  OCIDate d{};
  for (auto _ : state) {
    if (OCIDateFromText(H().err, T(text), static_cast<ub4>(text.size()), T(mask),
                        static_cast<ub1>(mask.size()), nullptr, 0, &d) != OCI_SUCCESS) {
      state.SkipWithError("OCIDateFromText failed");
      break;
    }
    benchmark::DoNotOptimize(&d);
  }
}

void NumberToReal(benchmark::State& state, const std::string& value) {
  const OCINumber n = Number(value);
  double d = 0;
  for (auto _ : state) {
    if (OCINumberToReal(H().err, &n, sizeof d, &d) != OCI_SUCCESS) {
      state.SkipWithError("OCINumberToReal failed");
      break;
    }
    benchmark::DoNotOptimize(&d);
  }
}

void RealToNumber(benchmark::State& state, double value) {
  OCINumber n;
  for (auto _ : state) {
    if (OCINumberFromReal(H().err, &value, sizeof value, &n) != OCI_SUCCESS) {
      state.SkipWithError("OCINumberFromReal failed");
      break;
    }
    benchmark::DoNotOptimize(&n);
  }
}

// A descriptor of `type` holding `text` read with `mask`.
struct DateTime {
  OCIDateTime* value = nullptr;
  ub4 type;
  DateTime(ub4 t, const std::string& text, const std::string& mask) : type(t) {
    OCIDescriptorAlloc(H().env, reinterpret_cast<void**>(&value), type, 0, nullptr);
    OCIDateTimeFromText(H().env, H().err, T(text), text.size(), T(mask),
                        static_cast<ub1>(mask.size()), nullptr, 0, value);
  }
  ~DateTime() { OCIDescriptorFree(value, type); }
};

const std::string kTimestampMask = "YYYY-MM-DD HH24:MI:SS.FF";
const std::string kZonedMask = "YYYY-MM-DD HH24:MI:SS.FF TZR TZD";

void DateTimeToText(benchmark::State& state, ub4 type, const std::string& mask,
                    const std::string& text, ub4 page_size) {
  DateTime dt(type, text, mask);
  std::vector<OraText> page(page_size);
  for (auto _ : state) {
    ub4 size = page_size;
    if (OCIDateTimeToText(H().env, H().err, dt.value, T(mask), static_cast<ub1>(mask.size()), 6,
                          nullptr, 0, &size, page.data()) != OCI_SUCCESS) {
      state.SkipWithError("OCIDateTimeToText failed");
      break;
    }
    benchmark::DoNotOptimize(page.data());
  }
}

void DateTimeFromText(benchmark::State& state, ub4 type, const std::string& mask,
                      const std::string& text) {
  DateTime dt(type, "2000-01-01 00:00:00", "YYYY-MM-DD HH24:MI:SS");
  for (auto _ : state) {
    if (OCIDateTimeFromText(H().env, H().err, T(text), text.size(), T(mask),
                            static_cast<ub1>(mask.size()), nullptr, 0, dt.value) != OCI_SUCCESS) {
      state.SkipWithError("OCIDateTimeFromText failed");
      break;
    }
    benchmark::DoNotOptimize(dt.value);
  }
}

struct Interval {
  OCIInterval* value = nullptr;
  ub4 type;
  Interval(ub4 t, const std::string& text) : type(t) {
    OCIDescriptorAlloc(H().env, reinterpret_cast<void**>(&value), type, 0, nullptr);
    OCIIntervalFromText(H().env, H().err, T(text), text.size(), value);
  }
  ~Interval() { OCIDescriptorFree(value, type); }
};

void IntervalToText(benchmark::State& state, ub4 type, const std::string& text) {
  Interval iv(type, text);
  std::vector<OraText> page(32);
  for (auto _ : state) {
    size_t length = 0;
    if (OCIIntervalToText(H().env, H().err, iv.value, 2, 6, page.data(), page.size(), &length) !=
        OCI_SUCCESS) {
      state.SkipWithError("OCIIntervalToText failed");
      break;
    }
    benchmark::DoNotOptimize(page.data());
  }
}

void IntervalFromText(benchmark::State& state, ub4 type, const std::string& text) {
  Interval iv(type, text);
  for (auto _ : state) {
    if (OCIIntervalFromText(H().env, H().err, T(text), text.size(), iv.value) != OCI_SUCCESS) {
      state.SkipWithError("OCIIntervalFromText failed");
      break;
    }
    benchmark::DoNotOptimize(iv.value);
  }
}

BENCHMARK_CAPTURE(NumberToText, Precision10Scale2, std::string("FM99999999.99"),
                  std::string("-1234567.89"));
BENCHMARK_CAPTURE(NumberToText, Precision5Scale0, std::string("FM99999"), std::string("12345"));
BENCHMARK_CAPTURE(NumberToText, NoDeclaredScale, kWideMask,
                  std::string("3.1415926535897932384626433832795028841"));
BENCHMARK(NumberRowToText);
BENCHMARK_CAPTURE(TextToNumber, Decimal, std::string("-1234.50"));
BENCHMARK_CAPTURE(TextToNumber, Integer, std::string("1234567890"));
BENCHMARK_CAPTURE(TextToNumber, FortyDigits,
                  std::string("3.141592653589793238462643383279502884197"));
BENCHMARK_CAPTURE(DateToText, Full, std::string("YYYY-MM-DD HH24:MI:SS"), 19);
BENCHMARK_CAPTURE(DateToText, Short, std::string("DD-MON-YY"), 20);
BENCHMARK_CAPTURE(DateFromText, Full, std::string("YYYY-MM-DD HH24:MI:SS"),
                  std::string("2001-02-03 04:05:06"));
BENCHMARK_CAPTURE(DateFromText, Short, std::string("DD-MON-YY"), std::string("03-FEB-01"));
BENCHMARK_CAPTURE(NumberToReal, Double, std::string("-1234567.89"));
BENCHMARK_CAPTURE(RealToNumber, Double, -1234567.89);
BENCHMARK_CAPTURE(DateTimeToText, Timestamp, ub4{OCI_DTYPE_TIMESTAMP}, kTimestampMask,
                  std::string("2001-02-03 04:05:06.123456"), 26);
BENCHMARK_CAPTURE(DateTimeToText, TimestampTzOffset, ub4{OCI_DTYPE_TIMESTAMP_TZ}, kZonedMask,
                  std::string("2001-02-03 04:05:06.123456 +05:30"), 40);
BENCHMARK_CAPTURE(DateTimeToText, TimestampTzRegion, ub4{OCI_DTYPE_TIMESTAMP_TZ}, kZonedMask,
                  std::string("2001-02-03 04:05:06.123456 US/Pacific PST"), 60);
BENCHMARK_CAPTURE(DateTimeToText, TimestampLtz, ub4{OCI_DTYPE_TIMESTAMP_LTZ}, kTimestampMask,
                  std::string("2001-02-03 04:05:06.123456"), 26);
BENCHMARK_CAPTURE(DateTimeFromText, Timestamp, ub4{OCI_DTYPE_TIMESTAMP}, kTimestampMask,
                  std::string("2001-02-03 04:05:06.123456"));
BENCHMARK_CAPTURE(DateTimeFromText, TimestampTzOffset, ub4{OCI_DTYPE_TIMESTAMP_TZ}, kZonedMask,
                  std::string("2001-02-03 04:05:06.123456 +05:30 "));
BENCHMARK_CAPTURE(DateTimeFromText, TimestampTzRegion, ub4{OCI_DTYPE_TIMESTAMP_TZ}, kZonedMask,
                  std::string("2001-02-03 04:05:06.123456 US/Pacific PST"));
BENCHMARK_CAPTURE(IntervalToText, DaySecond, ub4{OCI_DTYPE_INTERVAL_DS},
                  std::string("1 02:02:02.98"));
BENCHMARK_CAPTURE(IntervalToText, YearMonth, ub4{OCI_DTYPE_INTERVAL_YM}, std::string("1-2"));
BENCHMARK_CAPTURE(IntervalFromText, DaySecond, ub4{OCI_DTYPE_INTERVAL_DS},
                  std::string("+01 02:02:02.980000"));

}  // namespace

BENCHMARK_MAIN();
