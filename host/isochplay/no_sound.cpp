// For a platform without sound.
#include "sound.h"

void passToSound(const IsochplayCall&) {}
