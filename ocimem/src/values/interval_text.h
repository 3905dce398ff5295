// INTERVAL YEAR TO MONTH / DAY TO SECOND values and their text forms.
#ifndef OCIMEM_VALUES_INTERVAL_TEXT_H
#define OCIMEM_VALUES_INTERVAL_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

#include "value_types.h"

namespace ocimem::values {

constexpr int kOraIntervalInvalid = 1867;
constexpr int kOraLeadingPrecision = 1873;
constexpr int kOraPrecisionRange = 30088;
constexpr std::int64_t kMaxLeadingField = 999999999;

// Normalised totals from separate fields (any signs); kOraLeadingPrecision
// when the leading field exceeds nine digits.
int MakeYearMonth(std::int64_t years, std::int64_t months, IntervalValue* out);
int MakeDaySecond(std::int64_t days, std::int64_t hours, std::int64_t minutes,
                  std::int64_t seconds, std::int64_t nanos, IntervalValue* out);

void SplitYearMonth(const IntervalValue& v, std::int32_t* years, std::int32_t* months);
void SplitDaySecond(const IntervalValue& v, std::int32_t* days, std::int32_t* hours,
                    std::int32_t* minutes, std::int32_t* seconds, std::int32_t* nanos);

// `+01-02`, `+01 02:02:02.980000`: leading field zero-padded to lfprec,
// fraction cut to fsprec digits. 0 or kOraPrecisionRange.
int FormatInterval(IntervalKind kind, const IntervalValue& v, int lfprec, int fsprec,
                   std::string* out);

// `[+|-]years-months` or `[+|-]days hh:mi:ss[.fraction]`.
int ParseInterval(IntervalKind kind, std::string_view text, IntervalValue* out);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_INTERVAL_TEXT_H
