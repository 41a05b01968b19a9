/* Proves that a C compiler reads the platform's headers and lays the records out alike. */
#include "host/platform_layout.h"

#include <desk.h>
#include <isochplay_desk.h>
