// The simulated iPod as a program for Windows, at a TCP port.
#include <windows.h>

#include <cstdio>
#include <exception>
#include <string>

#include "database/resized_library.h"
#include "faults/fault_text.h"
#include "music/built_in_library.h"
#include "music/json_library.h"
#include "music/music_summary.h"
#include "options.h"
#include "plugged_ipod.h"

namespace {

using namespace simulator;

enum ExitStatus { kEnded = 0, kCannotRun = 1, kWrongCommandLine = 2 };

void say(const std::string& text) {
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

void complain(const std::string& text) { std::fprintf(stderr, "ipodsim: %s\n", text.c_str()); }

/// Set by Ctrl-C.
HANDLE ending = nullptr;

BOOL WINAPI end(DWORD) {
  SetEvent(ending);
  return TRUE;
}

/// Starts what the program needs of the system.
void prepareSystem() {
  SetConsoleOutputCP(CP_UTF8);
  ending = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  SetConsoleCtrlHandler(end, TRUE);
  WSADATA details;
  if (WSAStartup(MAKEWORD(2, 2), &details) != 0)
    throw std::runtime_error("Windows has no TCP; install its network");
}

MusicLibrary loadMusic(const Options& options) {
  MusicLibrary music =
      options.library.empty() ? builtInLibrary() : loadJsonLibrary(options.library);
  return options.tracks ? resizedLibrary(std::move(music), *options.tracks) : music;
}

void showTraffic(SimulatedIpod& ipod, const Options& options) {
  if (options.quiet && !options.trace) return;
  ipod.setTrace([&options](const Traffic& traffic) {
    const bool isAlwaysSaid =
        traffic.kind == Traffic::Kind::kEvent || traffic.kind == Traffic::Kind::kFault;
    if (options.trace || isAlwaysSaid) say(describe(traffic));
  });
}

void showUploads(SimulatedIpod& ipod, const Options& options) {
  if (options.quiet) return;
  ipod.setImageHook([](const Picture& image) {
    say("the screen shows an image of " + std::to_string(image.width) + " x " +
        std::to_string(image.height) + " pixels");
  });
}

void run(const Options& options) {
  prepareSystem();
  MusicLibrary music = loadMusic(options);
  const std::string summary = options.library.empty() ? "" : summaryOf(music, {});
  SimulatedIpod ipod(options.personality, std::move(music), options.seed);
  for (const std::string& fault : options.faults)
    addFault(ipod.faults(), fault);
  PluggedIpod plugged(ipod, options.place, complain);
  showTraffic(ipod, options);
  showUploads(ipod, options);
  say("iPod ready on " + plugged.place());
  if (!options.quiet && !summary.empty()) say(summary);
  plugged.runUntil(ending);
}

}  // namespace

int main(int argc, char** argv) {
  std::optional<Options> options;
  try {
    options = parseOptions(argc, argv);
  } catch (const std::exception& error) {
    complain(error.what());
    return kWrongCommandLine;
  }
  if (!options) return kEnded;
  try {
    run(*options);
  } catch (const std::exception& error) {
    complain(error.what());
    return kCannotRun;
  }
  return kEnded;
}
