// classic_media.c compiled and run as C++.
#include "classic_media.c"
