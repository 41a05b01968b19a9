// What a serial port's time-outs mean for one read or write.
#ifndef COREDLL_COMM_TIMEOUTS_H
#define COREDLL_COMM_TIMEOUTS_H

#include <windows.h>

#include "device.h"

namespace coredll {

// Whether a port can be given these.
bool areUsable(const COMMTIMEOUTS& timeouts);

TransferPlan readPlan(const COMMTIMEOUTS& timeouts, DWORD count);
TransferPlan writePlan(const COMMTIMEOUTS& timeouts, DWORD count);

}  // namespace coredll

#endif
