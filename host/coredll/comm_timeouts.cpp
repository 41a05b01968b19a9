#include "comm_timeouts.h"

#include <cstdint>

namespace coredll {
namespace {

TimeLimit totalOf(DWORD multiplier, DWORD constant, DWORD count) {
  if (multiplier == 0 && constant == 0) return std::nullopt;
  return static_cast<std::uint64_t>(multiplier) * count + constant;
}

/// Plans a read that returns what has arrived. It waits for the first byte unless both totals are
/// 0.
TransferPlan impatientReadPlan(const COMMTIMEOUTS& timeouts, DWORD count) {
  const DWORD multiplier =
      timeouts.ReadTotalTimeoutMultiplier == MAXDWORD ? 0 : timeouts.ReadTotalTimeoutMultiplier;
  const TimeLimit total = totalOf(multiplier, timeouts.ReadTotalTimeoutConstant, count);
  return {total ? 1u : 0u, total, std::nullopt};
}

}  // namespace

bool areUsable(const COMMTIMEOUTS& timeouts) {
  return timeouts.ReadIntervalTimeout != MAXDWORD ||
         timeouts.ReadTotalTimeoutMultiplier != MAXDWORD ||
         timeouts.ReadTotalTimeoutConstant != MAXDWORD;
}

TransferPlan readPlan(const COMMTIMEOUTS& timeouts, DWORD count) {
  if (timeouts.ReadIntervalTimeout == MAXDWORD) return impatientReadPlan(timeouts, count);
  const TimeLimit total =
      totalOf(timeouts.ReadTotalTimeoutMultiplier, timeouts.ReadTotalTimeoutConstant, count);
  const TimeLimit interval =
      timeouts.ReadIntervalTimeout == 0 ? TimeLimit() : timeouts.ReadIntervalTimeout;
  return {count, total, interval};
}

TransferPlan writePlan(const COMMTIMEOUTS& timeouts, DWORD count) {
  const TimeLimit total =
      totalOf(timeouts.WriteTotalTimeoutMultiplier, timeouts.WriteTotalTimeoutConstant, count);
  return {count, total, std::nullopt};
}

}  // namespace coredll
