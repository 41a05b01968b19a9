#include "session.h"

#include "browsing.h"
#include "head_unit.h"
#include "information.h"
#include "ipodctl.h"
#include "playback.h"

namespace {

using Section = void (*)(HeadUnit&);

constexpr Section kWhilePlaying[] = {playNextTrack,  pauseAndPlayOn, changeShuffleMode,
                                     showTrackTexts, showIdentity,   followSampleRate};

constexpr char kNoIpod[] =
    "No iPod could be connected on \"IPD1:\". Check the cable, then start headunit again.";
constexpr char kLost[] =
    "The iPod is lost: no usable answer comes any more. Plug it in again, then start headunit "
    "again.";
constexpr char kGaps[] =
    "The iPod did not answer everything. Plug it in again, then start headunit again.";

/// Connects in two attempts: a single disturbed message can make one fail.
bool connectInTwoAttempts() {
  if (IpodConnect() == 1) return true;
  leaveIpodAlone();
  return IpodConnect() == 1;
}

bool connectToIpod(HeadUnit& headUnit) {
  headUnit.screen.beginSection("Connect, with the logo");
  if (!connectInTwoAttempts()) {
    headUnit.screen.show(kNoIpod);
    return false;
  }
  headUnit.screen.show("connected");
  headUnit.ipod.begin();
  return true;
}

/// Runs the sections until the iPod is lost.
void runSections(HeadUnit& headUnit) {
  if (headUnit.ipod.isLost()) return;
  if (!browse(headUnit) || !playTracks(headUnit)) {
    if (!headUnit.ipod.isLost()) showIdentity(headUnit);
    return;
  }
  for (const Section section : kWhilePlaying) {
    section(headUnit);
    if (headUnit.ipod.isLost()) return;
  }
}

/// Shows why the session was not complete, and what to do.
Ending showEnding(const HeadUnit& headUnit) {
  if (headUnit.ipod.isLost()) {
    headUnit.screen.show(kLost);
    return Ending::kNoIpod;
  }
  if (headUnit.hasGaps) {
    headUnit.screen.show(kGaps);
    return Ending::kWithGaps;
  }
  return Ending::kWhole;
}

void disconnect(Screen& screen) {
  screen.beginSection("Disconnect");
  IpodDisconnect();
  screen.show("disconnected");
}

}  // namespace

Ending runSession() {
  HeadUnit headUnit;
  if (!connectToIpod(headUnit)) return Ending::kNoIpod;
  runSections(headUnit);
  const Ending ending = showEnding(headUnit);
  disconnect(headUnit.screen);
  return ending;
}
