// Exact conversion between decimal text and Oracle's NUMBER bytes (the
// VARNUM form an OCINumber holds), so that JSON numbers keep every digit
// and never pass through a double.
#ifndef TOOLS_VARNADP_NUMBER_TEXT_H
#define TOOLS_VARNADP_NUMBER_TEXT_H

#include <string>
#include <string_view>

#include <oci.h>

namespace varnadp {

enum class NumberParse { kOk, kSyntax, kOverflow };

// Reads a JSON number ("-12.5e3"): more than 40 significant digits round
// half away from zero, as Oracle rounds; magnitudes below 1E-130 become 0;
// 1E126 and above are kOverflow.
NumberParse NumberFromDecimal(std::string_view text, OCINumber* number);

// Appends the number as a JSON number with at least `scale` fraction digits
// (scale <= 0: none beyond the value's own). Plain notation unless that would
// take more than 40 zeros; then "d.dddE+n".
void AppendNumberDecimal(const OCINumber& number, int scale, std::string* out);

}  // namespace varnadp

#endif  // TOOLS_VARNADP_NUMBER_TEXT_H
