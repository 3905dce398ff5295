// classic_media_lob.c compiled as C++, for the C++ build of the classic media program.
#include "classic_media_lob.c"
