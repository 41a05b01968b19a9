// The simulated iPod as a program.
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>

#include "audio/audio_output.h"
#include "console/commands.h"
#include "console/options.h"
#include "database/resized_library.h"
#include "faults/fault_text.h"
#include "link/pty_ipod.h"
#include "link/pty_port.h"
#include "link/socket_port.h"
#include "link/terminal_port.h"
#include "link/trace_recorder.h"
#include "music/built_in_library.h"
#include "music/json_library.h"
#include "music/music_folder.h"
#include "screen/png_file.h"
#include "screen/screen.h"

namespace {

using namespace simulator;

enum ExitStatus { kEnded = 0, kCannotRun = 1, kWrongCommandLine = 2 };

void say(const std::string& text) {
  std::printf("%s\n", text.c_str());
  std::fflush(stdout);
}

void complain(const std::string& text) { std::fprintf(stderr, "ipodsim: %s\n", text.c_str()); }

struct Music {
  MusicLibrary library;
  std::string summary;  ///< of the user's music
};

Music personal(MusicLibrary library, const SkippedFiles& skipped) {
  std::string summary = summaryOf(library, skipped);
  return {std::move(library), std::move(summary)};
}

Music loadFolder(const Options& options) {
  FolderReport report;
  MusicLibrary library = loadMusicFolder(options.music, report);
  for (const std::string& warning : report.warnings) {
    if (!options.quiet) complain(warning);
  }
  return personal(std::move(library), report.skipped);
}

Music loadMusic(const Options& options) {
  if (!options.music.empty()) return loadFolder(options);
  if (!options.library.empty()) return personal(loadJsonLibrary(options.library), {});
  return {builtInLibrary(), ""};
}

MusicLibrary resized(MusicLibrary library, const Options& options) {
  return options.tracks ? resizedLibrary(std::move(library), *options.tracks) : library;
}

void requireScreen(const Options& options) {
  if (options.screen.empty()) return;
  try {
    requirePlaceForPng(options.screen);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(error.what() + std::string("\nTry ipodsim --screen FILE.png with a "
                                                        "file that can be written."));
  }
}

void showScreen(const Options& options, const Picture& image) {
  try {
    const Personality& model = options.personality;
    writePng(renderScreen(model.screenWidth, model.screenHeight, image), options.screen);
    if (!options.quiet) say("screen written to " + options.screen.string());
  } catch (const std::exception& error) {
    complain(error.what());
  }
}

void connectOutputs(SimulatedIpod& ipod, const Options& options) {
  if (!options.screen.empty()) {
    ipod.setImageHook([&options](const Picture& image) { showScreen(options, image); });
  }
  if (options.quiet && !options.trace) return;
  ipod.setTrace([&options](const Traffic& traffic) {
    const bool isAlwaysSaid =
        traffic.kind == Traffic::Kind::kEvent || traffic.kind == Traffic::Kind::kFault;
    if (options.trace || isAlwaysSaid) say(describe(traffic));
  });
}

/// Returns a descriptor that receives the signals that end the program, and blocks them in every
/// thread.
FileDescriptor catchSignals() {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  sigprocmask(SIG_BLOCK, &ending, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  return FileDescriptor(signalfd(-1, &ending, SFD_CLOEXEC));
}

/// Reads the complete lines of standard input.
class InputLines {
 public:
  /// Runs the commands that have arrived. Returns false when the program is to end.
  bool serve(PtyIpod& pty) {
    char some[1024];
    const ssize_t size = read(STDIN_FILENO, some, sizeof some);
    if (size <= 0) return false;
    pending.append(some, static_cast<size_t>(size));
    for (size_t end; (end = pending.find('\n')) != std::string::npos;) {
      const CommandResult result = doCommand(pty, pending.substr(0, end));
      pending.erase(0, end + 1);
      if (!result.answer.empty()) say(result.answer);
      if (result.quit) return false;
    }
    return true;
  }

 private:
  std::string pending;
};

/// Returns null when nothing is to be recorded. A file that cannot be written is reported, and the
/// iPod runs anyway.
std::unique_ptr<TraceRecorder> makeRecorder(const Options& options) {
  if (options.record.empty()) return nullptr;
  try {
    return std::make_unique<TraceRecorder>(options.record,
                                           options.serial ? "COM1:" : "IPD1:", complain);
  } catch (const trace::TraceFileError& error) {
    complain(error.what());
    return nullptr;
  }
}

bool hasLink(const Options& options) {
  return options.device.empty() && options.listenAddress.empty();
}

PortMaker portMaker(const Options& options) {
  if (!options.device.empty()) {
    return [&] { return std::make_unique<TerminalPort>(options.device, options.baud, complain); };
  }
  if (!options.listenAddress.empty()) {
    return [&] {
      return std::make_unique<SocketPort>(options.listenAddress, options.listenPort, complain);
    };
  }
  return [] { return std::make_unique<PtyPort>(); };
}

void runUntilEnded(PtyIpod& pty, const FileDescriptor& signals, bool isInteractive) {
  InputLines input;
  pollfd waits[] = {{signals.get(), POLLIN, 0}, {isInteractive ? STDIN_FILENO : -1, POLLIN, 0}};
  while (poll(waits, std::size(waits), -1) >= 0) {
    if (waits[0].revents != 0) return;
    if (waits[1].revents != 0 && !input.serve(pty)) return;
  }
}

void run(const Options& options) {
  const FileDescriptor signals = catchSignals();
  requireScreen(options);
  Music music = loadMusic(options);
  SimulatedIpod ipod(options.personality, resized(std::move(music.library), options), options.seed);
  for (const std::string& fault : options.faults)
    addFault(ipod.faults(), fault);
  const std::unique_ptr<TraceRecorder> recorder = makeRecorder(options);
  const std::unique_ptr<AudioOutput> audio = makeAudioOutput();
  PtyIpod pty(ipod, options.serial ? FrameKind::kSerial : FrameKind::kUsb, portMaker(options),
              hasLink(options) ? options.link : std::filesystem::path());
  if (recorder) pty.observe(*recorder);
  audio->follow(pty);
  pty.start();
  if (hasLink(options)) audio->start(audioSocketOf(options.link), complain);
  const std::string place = pty.slavePath();
  pty.access([&](SimulatedIpod& device) {
    connectOutputs(device, options);
    say("iPod ready on " + place);
    if (!options.quiet && !music.summary.empty()) say(music.summary);
  });
  runUntilEnded(pty, signals, options.interactive);
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
  } catch (const LinkError& error) {
    complain(error.what() + std::string("\nTry ipodsim --link PATH."));
    return kCannotRun;
  } catch (const std::exception& error) {
    complain(error.what());
    return kCannotRun;
  }
  return kEnded;
}
