#include "control/wait_conditions.h"

#include <algorithm>

namespace simulator {

namespace {

/// The screen changes with the time alone, and so does a position while the iPod winds.
constexpr Time kLookInterval = milliseconds(100);
constexpr Time kLongInterval = seconds(60);

template <typename Value>
bool fits(const std::optional<Value>& wanted, const Value& is) {
  return !wanted || *wanted == is;
}

std::optional<std::string> titleOf(const SimulatedIpod& ipod) {
  const std::optional<uint32_t> track = ipod.player().currentTrack();
  if (!track) return std::nullopt;
  return ipod.library().tracks[*track].title;
}

bool fitsIpod(const WaitConditions& wanted, const SimulatedIpod& ipod, PtyIpod::Cable cable) {
  return fits(wanted.state, ipod.player().state()) &&
         fits(wanted.extended, ipod.inExtendedMode()) &&
         fits(wanted.accessory, cable.hasAccessory) && fits(wanted.plugged, cable.isPlugged) &&
         (!wanted.title || titleOf(ipod) == wanted.title) &&
         (!wanted.position || ipod.player().position(cable.now) >= *wanted.position);
}

/// Returns how long nothing can change that the iPod does not report.
Time quietTime(const WaitConditions& wanted, const SimulatedIpod& ipod, PtyIpod::Cable cable) {
  if (wanted.screenRevision) return kLookInterval;
  if (!wanted.position || !ipod.player().currentTrack()) return kLongInterval;
  const Time left = *wanted.position - ipod.player().position(cable.now);
  const Time least = milliseconds(1);
  return ipod.player().state() == PlayState::kPlaying ? std::clamp(left, least, kLookInterval)
                                                      : kLookInterval;
}

}  // namespace

WaitLook lookFor(const WaitConditions& conditions, const PtyIpod& pty, LiveScreen& screen) {
  WaitLook result = pty.inspect([&](const SimulatedIpod& ipod, PtyIpod::Cable cable) {
    if (conditions.screenRevision) screen.look(ipod, cable.now);
    return WaitLook{fitsIpod(conditions, ipod, cable), quietTime(conditions, ipod, cable)};
  });
  if (conditions.screenRevision) {
    result.isTrue = result.isTrue && screen.shown().revision >= *conditions.screenRevision;
  }
  return result;
}

}  // namespace simulator
