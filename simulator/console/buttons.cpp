#include "console/buttons.h"

namespace simulator {

namespace {

struct Button {
  const char* name;
  void (*press)(SimulatedIpod&, Time now);
};

void pressPlayPause(SimulatedIpod& ipod, Time now) {
  if (ipod.player().state() == PlayState::kPlaying) {
    ipod.pressPause(now);
  } else {
    ipod.pressPlay(now);
  }
}

constexpr Button kButtons[] = {
    {"play", [](SimulatedIpod& ipod, Time now) { ipod.pressPlay(now); }},
    {"pause", [](SimulatedIpod& ipod, Time now) { ipod.pressPause(now); }},
    {"play-pause", pressPlayPause},
    {"next", [](SimulatedIpod& ipod, Time now) { ipod.pressNext(now); }},
    {"previous", [](SimulatedIpod& ipod, Time now) { ipod.pressPrevious(now); }},
    {"menu", [](SimulatedIpod& ipod, Time now) { ipod.pressMenu(now); }},
    {"select", [](SimulatedIpod& ipod, Time now) { ipod.pressSelect(now); }},
};

}  // namespace

bool pressButton(PtyIpod& pty, const std::string& name) {
  for (const Button& button : kButtons) {
    if (name != button.name) continue;
    pty.act(button.press);
    return true;
  }
  return false;
}

std::string buttonNames() {
  std::string names;
  for (const Button& button : kButtons)
    names += (names.empty() ? "" : ", ") + std::string(button.name);
  return names;
}

}  // namespace simulator
