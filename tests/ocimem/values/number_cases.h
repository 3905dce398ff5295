// Tables of NUMBER conversions shared by the algorithm tests and the tests
// that go through the OCI entry points. Values are written as plain decimal
// text (or E-notation) and stored as a NUMBER before use.
#ifndef TESTS_OCIMEM_VALUES_NUMBER_CASES_H
#define TESTS_OCIMEM_VALUES_NUMBER_CASES_H

#include <string>

namespace number_cases {

constexpr const char* kMask60 = "FM9999999999999999999999999999.99999999999999999999999999999";

struct ToTextCase {
  const char* name;
  const char* mask;
  const char* value;
  const char* text;  // expected text; nullptr when `ora` is expected
  int ora;
};

// oracle-datatypes.md section 3.3 and the Oracle column of 9.1.
inline const ToTextCase kToText[] = {
    // UNCONFIRMED: oracle-datatypes.md §3.2 rule 7 (zero with a point prints "0.")
    {"Row01ZeroWithPoint", "FM99999999.99", "0", "0.", 0},
    {"Row02TrailingPointKept", "FM99999999.99", "5", "5.", 0},
    {"Row03OneFractionDigit", "FM99999999.99", "12.3", "12.3", 0},
    {"Row04TrailingZeroTrimmed", "FM99999999.99", "1234.5", "1234.5", 0},
    {"Row05Negative", "FM99999999.99", "-1234.5", "-1234.5", 0},
    {"Row06NoLeadingZero", "FM99999999.99", "0.5", ".5", 0},
    {"Row07NegativeFraction", "FM99999999.99", "-0.5", "-.5", 0},
    {"Row08HalfAwayFromZero", "FM99999999.99", "0.005", ".01", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.2 rule 7
    {"Row09RoundsToZero", "FM99999999.99", "0.004", "0.", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.2 rule 8 (minus kept)
    {"Row10NegativeRoundsToZero", "FM99999999.99", "-0.004", "-0.", 0},
    {"Row11DecimalRounding", "FM99999999.99", "1.005", "1.01", 0},
    {"Row12DecimalRoundingNegative", "FM99999999.99", "-1.005", "-1.01", 0},
    {"Row13LargestFitting", "FM99999999.99", "99999999.994", "99999999.99", 0},
    {"Row14RoundingOverflows", "FM99999999.99", "99999999.995", nullptr, 22065},
    // UNCONFIRMED: oracle-datatypes.md §3.4 (same code for a value too wide before rounding)
    {"Row15TooWide", "FM99999999.99", "123456789", nullptr, 22065},
    {"Row16IntegerHalfUp", "FM99999", "2.5", "3", 0},
    {"Row17IntegerHalfDown", "FM99999", "-2.5", "-3", 0},
    {"Row18IntegerZero", "FM99999", "0", "0", 0},
    {"Row19IntegerRoundsToZero", "FM99999", "0.4", "0", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.2 rule 8
    {"Row20IntegerNegativeRoundsToZero", "FM99999", "-0.4", "-0", 0},
    {"Row21IntegerLargestFitting", "FM99999", "99999.4", "99999", 0},
    {"Row22IntegerRoundingOverflows", "FM99999", "99999.5", nullptr, 22065},
    {"Row23IntegerNegativeTooWide", "FM99999", "-123456", nullptr, 22065},
    {"Row24NegativeScaleMask", "FM9999999", "123.456", "123", 0},
    {"Row25NegativeScaleTooWide", "FM9999999", "12345678", nullptr, 22065},
    {"Row26FractionOnly", "FM.9999", "0.1234", ".1234", 0},
    {"Row27FractionOnlyRounded", "FM.9999", "0.12345", ".1235", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.3 row 28
    {"Row28FractionOnlyRoundsToZero", "FM.9999", "0.00004", "0.", 0},
    {"Row29FractionOnlyNegative", "FM.9999", "-0.5", "-.5", 0},
    {"Row30FractionOnlyRoundsToOne", "FM.9999", "0.99995", nullptr, 22065},
    {"Row31FractionOnlyOne", "FM.9999", "1", nullptr, 22065},
    {"Row32WideMaskTenth", kMask60, "0.1", ".1", 0},
    {"Row33WideMaskHundred", kMask60, "100", "100.", 0},
    {"Row34WideMaskPi", kMask60, "3.14159", "3.14159", 0},
    {"Row34WideMaskNegativePi", kMask60, "-3.14159", "-3.14159", 0},
    {"Row35WideMaskOneThird", kMask60, ".3333333333333333333333333333333333333333",
     ".33333333333333333333333333333", 0},
    {"Row36WideMaskTwoThirds", kMask60, ".6666666666666666666666666666666666666667",
     ".66666666666666666666666666667", 0},
    {"Row37WideMaskNoCarry", kMask60, "0.12345678901234567890123456789012345678",
     ".12345678901234567890123456789", 0},
    {"Row38WideMaskWidestInteger", kMask60, "1234567890123456789012345678",
     "1234567890123456789012345678.", 0},
    {"Row39WideMaskTooWide", kMask60, "12345678901234567890123456789", nullptr, 22065},
    {"Row40WideMask38DigitInteger", kMask60, "12345678901234567890123456789012345678", nullptr,
     22065},
    {"Row41WideMaskSmallest", kMask60, "1E-29", ".00000000000000000000000000001", 0},
    {"Row42WideMaskHalfAway", kMask60, "-1.5E-29", "-.00000000000000000000000000002", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.2 rule 7
    {"Row43WideMaskRoundsToZero", kMask60, "4E-30", "0.", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.2 rule 7
    {"Row43WideMaskMinimumRoundsToZero", kMask60, "1E-130", "0.", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.5, candidate (a)
    {"FmAloneZero", "FM", "0", "0", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.5, candidate (a)
    {"FmAloneSmallRoundsToZero", "FM", "0.4", "0", 0},
    // UNCONFIRMED: oracle-datatypes.md §3.5, candidate (a)
    {"FmAloneFive", "FM", "5", nullptr, 22065},
    {"Pg91ThirteenTrailingPoint", "FM99999999.99", "13", "13.", 0},
    {"Pg91MinusSeventy", "FM99999999.99", "-70", "-70.", 0},
    // Further elements: fixed width without FM, '0', ',' and S.
    {"NoFmLeadingBlank", "99999", "5", "     5", 0},
    {"NoFmNegative", "99999", "-5", "    -5", 0},
    {"NoFmFractionZeroes", "99.99", "0", "   .00", 0},
    {"NoFmZeroInteger", "99999", "0", "     0", 0},
    {"ZeroElementForcesDigits", "FM0999", "5", "0005", 0},
    {"ZeroElementInFractionStopsTrim", "FM990.90", "1", "1.00", 0},
    {"FmTrimsNinesOnly", "fm990D99", "1", "1.", 0},
    {"GroupSeparator", "FM9,999,999", "1234567", "1,234,567", 0},
    {"GroupSeparatorSkippedLeft", "FM9,999", "123", "123", 0},
    {"GroupSeparatorNoFm", "9,999", "123", "   123", 0},
    {"LeadingSPositive", "FMS9999", "12", "+12", 0},
    {"LeadingSNegative", "FMS9999", "-12", "-12", 0},
    {"TrailingSPositive", "FM9999S", "12", "12+", 0},
    {"TrailingSNegative", "FM9999S", "-12", "12-", 0},
    {"LeadingSNoFm", "S9999", "12", "  +12", 0},
    {"TrailingMiNegative", "FM999MI", "-7", "7-", 0},
    {"TrailingMiPositiveNoFm", "999MI", "7", "  7 ", 0},
    {"BracketsNegative", "FM999PR", "-7", "<7>", 0},
    {"DollarLeading", "FM$999", "-7", "-$7", 0},
    {"InvalidMaskLetter", "FM99Q9", "1", nullptr, 22061},
    {"InvalidMaskTwoPoints", "FM9.9.9", "1", nullptr, 22061},
    {"InvalidMaskSInMiddle", "9S9", "1", nullptr, 22061},
};

struct FromTextCase {
  const char* name;
  const char* text;
  const char* mask;  // nullptr: build it from the text as the adapter does
  const char* value;  // plain text of the expected value; nullptr when `ora` is expected
  int ora;
};

// oracle-datatypes.md section 4.4 and the Oracle column of 9.2.
inline const FromTextCase kFromText[] = {
    {"Row01LeadingSign", "-1234.50", nullptr, "-1234.5", 0},
    {"Row02Plain", "1234.50", nullptr, "1234.5", 0},
    {"Row03PlusSign", "+5", nullptr, "5", 0},
    {"Row04TrailingMinus", "5-", nullptr, "-5", 0},
    {"Row05TrailingPlus", "5+", nullptr, "5", 0},
    {"Row06Groups", "1,234.50", nullptr, "1234.5", 0},
    {"Row07CommaIsGroup", "1,5", nullptr, "15", 0},
    {"Row08Zero", "0", nullptr, "0", 0},
    {"Row09NegativeZero", "-0", nullptr, "0", 0},
    {"Row10LeadingPoint", ".5", nullptr, ".5", 0},
    {"Row11TrailingPoint", "5.", nullptr, "5", 0},
    {"Row12NegativeLeadingPoint", "-.5", nullptr, "-.5", 0},
    {"Row13LeadingZeros", "007", nullptr, "7", 0},
    {"Row14Dollar", "$5", nullptr, "5", 0},
    {"Row15Exponent", "1.5E+10", nullptr, nullptr, 22061},
    {"Row16LowerExponent", "1e5", nullptr, nullptr, 22061},
    // UNCONFIRMED: oracle-datatypes.md §4.4 row 17 (blank not skipped)
    {"Row17LeadingBlank", " 5", nullptr, nullptr, 22061},
    // UNCONFIRMED: oracle-datatypes.md §4.4 row 17
    {"Row17TrailingBlank", "5 ", nullptr, nullptr, 22061},
    {"Row18SignInMiddle", "1-2", nullptr, nullptr, 22061},
    {"Row19TwoSigns", "--5", nullptr, nullptr, 22061},
    {"Row19MixedSigns", "+-5", nullptr, nullptr, 22061},
    {"Row20SignsBothEnds", "-5-", nullptr, nullptr, 22061},
    {"Row21TwoPoints", "1.2.3", nullptr, nullptr, 22061},
    {"Row22CommaFirst", ",5", nullptr, nullptr, 22061},
    {"Row23CommaAfterPoint", "1.2,3", nullptr, nullptr, 22061},
    {"Row24Letters", "abc", nullptr, nullptr, 22061},
    // UNCONFIRMED: oracle-datatypes.md §4.4 row 25 (22062 chosen)
    {"Row25SignOnly", "-", nullptr, nullptr, 22062},
    // UNCONFIRMED: oracle-datatypes.md §4.4 row 25 (22062 chosen)
    {"Row25PointOnly", ".", nullptr, nullptr, 22062},
    {"Row26FortyFourDigits", "12345678901234567890123456789012345678901234", nullptr,
     "12345678901234567890123456789012345678900000", 0},
    {"FortyNinesKept", "9999999999999999999999999999999999999999", nullptr,
     "9999999999999999999999999999999999999999", 0},
    {"FortyOneNinesRoundUp", "99999999999999999999999999999999999999999", nullptr,
     "100000000000000000000000000000000000000000", 0},
    {"ShorterThanMask", "12", "9999", "12", 0},
    {"TooManyIntegerDigits", "12345", "9999", nullptr, 22062},
    {"TooManyFractionDigits", "1.234", "9.99", nullptr, 22062},
    {"LeadingSMissingSign", "5", "S9", nullptr, 22062},
    {"LetterInText", "1x", "99", nullptr, 22062},
    {"BracketsNegative", "<7>", "999PR", "-7", 0},
    {"TrailingMi", "7-", "999MI", "-7", 0},
    {"InvalidMask", "5", "9Q", nullptr, 22061},
};

// Builds the mask for a text as the adapter does: digit -> 9, sign -> S.
inline std::string BuildMask(const std::string& text) {
  std::string mask;
  for (char c : text) {
    if (c >= '0' && c <= '9') {
      mask += '9';
    } else if (c == '+' || c == '-') {
      mask += 'S';
    } else {
      mask += c;
    }
  }
  return mask;
}

}  // namespace number_cases

#endif  // TESTS_OCIMEM_VALUES_NUMBER_CASES_H
