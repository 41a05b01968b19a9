/* For compilers of the device and of Windows: only the layouts. */
#include "host/platform_layout.h"
