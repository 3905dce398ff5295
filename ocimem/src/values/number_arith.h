// Exact arithmetic on NUMBER values in their decimal form: sums, differences and products
// are exact before the 40-digit rounding of EncodeNumber; quotients are worked out to more
// digits than a NUMBER keeps and truncated, so that EncodeNumber's rounding is the only one.
#ifndef OCIMEM_VALUES_NUMBER_ARITH_H
#define OCIMEM_VALUES_NUMBER_ARITH_H

#include "values/number.h"

namespace ocimem::values {

Decimal AddDecimals(const Decimal& a, const Decimal& b);
Decimal SubtractDecimals(const Decimal& a, const Decimal& b);
Decimal MultiplyDecimals(const Decimal& a, const Decimal& b);
// False when `b` is zero.
bool DivideDecimals(const Decimal& a, const Decimal& b, Decimal* out);
// a - b * TRUNC(a / b), exactly; `a` itself when `b` is zero.
Decimal RemainderDecimals(const Decimal& a, const Decimal& b);
// -1, 0, 1 in numeric order.
int CompareDecimals(const Decimal& a, const Decimal& b);
// Cuts to `frac_digits` digits after the point (toward zero); negative counts cut digits
// before the point.
Decimal TruncateToFraction(const Decimal& d, int frac_digits);
// The greatest integer not above `d`, and the least not below it.
Decimal FloorDecimal(const Decimal& d);
Decimal CeilDecimal(const Decimal& d);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_NUMBER_ARITH_H
