// Export control for the host-services library. Everything in qorvpi is
// hidden unless marked KEL_API, so the set of exported symbols is exactly the
// API declared in these headers.
#ifndef HOST_KEL_API_H_
#define HOST_KEL_API_H_

#if defined(__GNUC__) || defined(__clang__)
#define KEL_API __attribute__((visibility("default")))
#define KEL_LOCAL __attribute__((visibility("hidden")))
#define KEL_PRINTF_FORMAT(fmt, first) __attribute__((format(printf, fmt, first)))
#else
#define KEL_API
#define KEL_LOCAL
#define KEL_PRINTF_FORMAT(fmt, first)
#endif

#endif  // HOST_KEL_API_H_
