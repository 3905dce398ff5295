// classic_headers.c compiled as C++: the same casts and guards must hold there.
#include "classic_headers.c"
