// The adapter's own error texts, passed with their count to every
// CKelException the adapter raises, so that a host finds them by code.
#ifndef VARNADP_INTERFACE_ERR_LOOKUP_H
#define VARNADP_INTERFACE_ERR_LOOKUP_H

#include <host/kel.h>

enum {
  ADP_ERR_UNSUPPORTED_TYPE = -1101,
  ADP_ERR_RELEASE_POSITION = -1102,
  ADP_ERR_BAD_FORMAT = -1103,
};

extern const KEL_ERR_MSG gAdpErrLookup[3];
constexpr unsigned long ADP_ERR_LOOKUP_COUNT = 3;

#endif  // VARNADP_INTERFACE_ERR_LOOKUP_H
