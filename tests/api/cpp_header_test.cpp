// The C program is also a C++ program.
#include "c_header_test.c"
