#include <varnadp.h>

#include "interface/version.h"

extern "C" {
const char szVersion[] = VARNADP_VERSION_SHORT;
const char szFullZRWVersion[] = VARNADP_VERSION_FULL;
const char szVarnVersionLabel[] = "VarnVerLabel=" VARNADP_VERSION_FULL;
const char szMainProductName[] = "varnadp object-type adapter";
const char szCopyright[] = "Copyright (c) 2026 the varnadp developers. All rights reserved.";
}
