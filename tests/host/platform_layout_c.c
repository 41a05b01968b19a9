/* Checks that a C compiler accepts the platform's headers and gives the records the same layout. */
#include "host/platform_layout.h"

#include <desk.h>
#include <isochplay_desk.h>
