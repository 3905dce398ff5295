// classic_demo.c compiled and run as C++.
#include "classic_demo.c"
