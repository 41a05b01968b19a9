// Converts a serial port's time-outs to the plan of one read or write.
#pragma once

#include <windows.h>

#include "device.h"

namespace coredll {

/// Returns whether a port accepts these.
bool areUsable(const COMMTIMEOUTS& timeouts);

TransferPlan readPlan(const COMMTIMEOUTS& timeouts, DWORD count);
TransferPlan writePlan(const COMMTIMEOUTS& timeouts, DWORD count);

}  // namespace coredll
