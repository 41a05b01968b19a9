/* For compilers of the device and of Windows: the layouts alone. */
#include "host/platform_layout.h"
