#include "entry_events.h"

namespace {

const Telltale first("first built", "first destroyed");

}  // namespace

extern "C" void useLateStatic() { static const Telltale late("late built", "late destroyed"); }
