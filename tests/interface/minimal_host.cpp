// The same host as a C++ program; its runtime is linked as the build says.
#include "tests/interface/minimal_host.c"
