// The same host as a C++ program; its runtime is linked as the build says.
#include "tests/hosts/minimal_host.c"
