// What a person types: the first letter selects the parser, and the rest is the text.
//
//     f late=200@04:001A#3       a fault
//     s packet-gap=30            a setting of the simulated iPod
//     o --serial --tracks 10     ipodsim's options
//     i rate 48000               a command while ipodsim runs
//     d IPD1:=/tmp/ipod          IPODCTL_DEVICES

#include <array>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "console/commands.h"
#include "console/options.h"
#include "coredll/device_map.h"
#include "coredll/device_names.h"
#include "coredll/open_failure.h"
#include "device/personality_settings.h"
#include "faults/fault_text.h"
#include "support/require.h"
#include "support/small_library.h"

namespace {

/// Checks that a parser refuses what it does not understand with a message for the user, and with
/// nothing else.
template <class Reader>
void mayRefuse(Reader read) {
  try {
    read();
  } catch (const std::invalid_argument& refused) {
    require(*refused.what() != '\0', "refused without a reason");
  }
}

void readFault(const std::string& text) {
  simulator::Random random(1);
  simulator::FaultPlan plan(random);
  mayRefuse([&] { addFault(plan, text); });
  mayRefuse([&] {
    const std::string written = faultText(simulator::parseFault(text));
    require(faultText(simulator::parseFault(written)) == written, "a fault that changes its text");
  });
}

void readSetting(const std::string& text) {
  simulator::Personality personality;
  mayRefuse([&] { applySetting(personality, text); });
}

void readOptions(const std::string& text) {
  std::istringstream words(text);
  std::vector<std::string> arguments{"ipodsim"};
  for (std::string word; words >> word;)
    arguments.push_back(word);
  std::vector<const char*> argv;
  argv.reserve(arguments.size());
  for (const std::string& argument : arguments)
    argv.push_back(argument.c_str());
  mayRefuse([&] { simulator::parseOptions(static_cast<int>(argv.size()), argv.data()); });
}

/// Runs a command. This iPod has no thread, and its cable stays unplugged: a pseudo-terminal
/// belongs to the system.
void readCommand(const std::string& text) {
  std::string name;
  std::istringstream(text) >> name;
  if (name == "plug") return;
  static const auto music = std::make_shared<const simulator::Catalogue>(simulator::smallLibrary());
  simulator::SimulatedIpod ipod(simulator::Personality{}, music);
  simulator::PtyIpod pty(ipod, simulator::FrameKind::kUsb);
  doCommand(pty, text);
}

/// Checks that what an entry leads to is complete, or is refused with a message for the user.
void readEnd(const std::string& text) {
  try {
    const coredll::WireEnd end = coredll::wireEndOf(text);
    const bool isSocket = end.kind == coredll::WireEnd::Kind::kSocket;
    require(isSocket ? !end.host.empty() && !end.port.empty() : !end.path.empty(), "no end");
  } catch (const coredll::OpenFailure& refused) {
    require(*refused.what() != '\0', "refused without a reason");
  }
}

void readDevices(const std::string& text) {
  setenv("IPODCTL_DEVICES", text.c_str(), 1);
  for (const std::u16string_view name : {u"IPD1:", u"COM1:", u""}) {
    std::vector<WCHAR> wide(name.begin(), name.end());
    wide.push_back(0);
    const auto entry = coredll::findDevice(coredll::narrowed(wide.data()));
    require(!entry || text.find(entry->path) != std::string::npos, "a path that nobody wrote");
    require(!entry || entry->isSerialPort == (name == u"COM1:"), "another kind of port");
    if (entry) readEnd(entry->path);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const std::string text(data + 2, data + size);
  switch (data[0]) {
    case 'f':
      readFault(text);
      break;
    case 's':
      readSetting(text);
      break;
    case 'o':
      readOptions(text);
      break;
    case 'i':
      readCommand(text);
      break;
    case 'd':
      readDevices(text.substr(0, text.find('\0')));
      break;
    default:
      break;
  }
  return 0;
}
