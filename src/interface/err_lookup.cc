#include "interface/err_lookup.h"

// The spelling of -1102's text is part of the interface: hosts match on it.
const KEL_ERR_MSG gAdpErrLookup[3] = {
    {ADP_ERR_UNSUPPORTED_TYPE, "Unsupported data type"},
    {ADP_ERR_RELEASE_POSITION, "Invalid relese character position"},
    {ADP_ERR_BAD_FORMAT, "Bad format string"},
};
