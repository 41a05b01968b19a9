// How long each export may take on the deterministic platform, computed from the answers that it
// waits for.
#include <ipodctl.h>

#include "virtual/promises.h"
#include "virtual/waits.h"

namespace virtual_session {
namespace {

using exports::Export;
using exports::Waits;

milliseconds longestOf(const Waits& waits) {
  return waits.inAll() == 0 ? kAtOnce : requests(waits.questions, waits.commands);
}

milliseconds longestOf(const Export& exported) {
  const std::string name = exported.name;
  if (name == "IpodConnect") return connecting(2);  // then come the mode and the version
  if (name == "IpodDisconnect") return kClosing + kSteps;
  return longestOf(exported.waits);
}

Promise promiseOf(const Export& exported, const std::string& name, milliseconds longest) {
  return {name, longest, exported.isLegal, exported.lock != exports::Lock::kNone};
}

void addCommands(Promises& promises, const Export& command) {
  for (int code = IPOD_TOGGLE_PLAY_PAUSE; code <= IPOD_PREVIOUS_TRACK_NO_RESTART; ++code) {
    const milliseconds longest = longestOf(exports::waitsOfCommand(code, kReferenceTracks));
    promises.push_back(promiseOf(command, "IpodCommand(" + std::to_string(code) + ")", longest));
  }
}

Promises promisesOfAll() {
  Promises all;
  for (const Export& exported : exports::allExports()) {
    if (exported.name == std::string("IpodCommand")) {
      addCommands(all, exported);
    } else {
      all.push_back(promiseOf(exported, exported.name, longestOf(exported)));
    }
  }
  return all;
}

}  // namespace

const Promises& exportPromises() {
  static const Promises all = promisesOfAll();
  return all;
}

}  // namespace virtual_session
