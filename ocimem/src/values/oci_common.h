// Helpers shared by the OCI value entry points.
#ifndef OCIMEM_VALUES_OCI_COMMON_H
#define OCIMEM_VALUES_OCI_COMMON_H

#include <string>
#include <string_view>

#include "date_format.h"
#include "oci.h"

namespace ocimem::values {

// The adapter passes no language; AMERICAN is the only one this library speaks.
bool IsAmerican(const oratext* lang, std::size_t length);
sword FailLanguage(OCIError* err);

// Records a datetime/interval error with Oracle's text for `ora`.
sword FailDate(OCIError* err, int ora);

// A NULL or empty mask means Oracle's default date mask DD-MON-YY.
std::string_view MaskOrDefault(const oratext* fmt, std::size_t length);

// The parsed form of a datetime mask; the last mask of each thread is kept
// because the adapter converts many values with one mask. The pointer is
// valid until the thread's next call. Returns 0 or the mask's ORA error.
int CachedDateMask(std::string_view text, const DateMask** out);

// Copies text into a caller buffer of *buf_size bytes: a text that exactly
// fills the buffer is accepted without terminator; longer is ORA-01877.
sword CopyText(OCIError* err, const std::string& text, ub4* buf_size, oratext* buf);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_OCI_COMMON_H
