// The C program is a C++ program too.
#include "c_header_test.c"
