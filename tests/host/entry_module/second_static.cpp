#include "entry_events.h"

namespace {

const Telltale second("second built", "second destroyed");

}  // namespace
