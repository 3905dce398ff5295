// NUMBER to text and back with the adapter's masks, and DATE to text, through
// the OCI calls as the adapter makes them.
#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <vector>

#include "oci.h"

namespace {

struct Handles {
  OCIEnv* env = nullptr;
  OCIError* err = nullptr;
  Handles() {
    OCIEnvCreate(&env, OCI_DEFAULT, nullptr, nullptr, nullptr, nullptr, 0, nullptr);
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

BENCHMARK_CAPTURE(NumberToText, Precision10Scale2, std::string("FM99999999.99"),
                  std::string("-1234567.89"));
BENCHMARK_CAPTURE(NumberToText, Precision5Scale0, std::string("FM99999"), std::string("12345"));
BENCHMARK_CAPTURE(NumberToText, NoDeclaredScale, kWideMask,
                  std::string("3.1415926535897932384626433832795028841"));
BENCHMARK_CAPTURE(TextToNumber, Decimal, std::string("-1234.50"));
BENCHMARK_CAPTURE(TextToNumber, Integer, std::string("1234567890"));
BENCHMARK_CAPTURE(TextToNumber, FortyDigits,
                  std::string("3.141592653589793238462643383279502884197"));
BENCHMARK_CAPTURE(DateToText, Full, std::string("YYYY-MM-DD HH24:MI:SS"), 19);
BENCHMARK_CAPTURE(DateToText, Short, std::string("DD-MON-YY"), 20);

}  // namespace

BENCHMARK_MAIN();
