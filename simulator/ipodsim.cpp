// The simulated iPod as a program.
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <exception>
#include <memory>
#include <vector>

#include "console/commands.h"
#include "console/options.h"
#include "control/control_server.h"
#include "faults/fault_text.h"
#include "link/pty_ipod.h"
#include "link/pty_port.h"
#include "link/replaceable_ipod.h"
#include "link/socket_port.h"
#include "link/terminal_port.h"
#include "link/trace_recorder.h"
#include "music/built_in_library.h"
#include "music/json_library.h"
#include "music/music_folder.h"
#include "screen/png_file.h"
#include "screen/screen_file.h"

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

void requireScreen(const Options& options) {
  if (options.screen.empty()) return;
  try {
    requirePlaceForPng(options.screen);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(error.what() + std::string("\nTry ipodsim --screen FILE.png with a "
                                                        "file that can be written."));
  }
}

bool isScreenWanted(const Options& options) {
  return !options.screen.empty() || !options.control.empty();
}

/// Without need no font is read.
FontFiles fontsFor(const Options& options) {
  if (!isScreenWanted(options)) return {};
  return options.font.empty() ? FontFiles::ofTheSystem() : FontFiles::only(options.font);
}

/// What shows the screen to the user.
struct ScreenOutputs {
  explicit ScreenOutputs(const Options& options) : live(fontsFor(options)) {
    if (isScreenWanted(options) && !live.hasFont()) {
      complain(
          "the screen has no texts, because no font can be read; install fonts-dejavu-core, "
          "or name a font with --font FILE.ttf");
    }
    if (options.screen.empty()) return;
    file = std::make_unique<ScreenFile>(live, options.screen, complain);
  }

  void look(const PtyIpod& pty) {
    pty.inspect(
        [this](const SimulatedIpod& ipod, PtyIpod::Cable cable) { live.look(ipod, cable.now); });
  }

  LiveScreen live;
  std::unique_ptr<ScreenFile> file;  ///< null: none wanted
};

/// Writes the screen at once when it shows an uploaded image, however short.
void showUploads(SimulatedIpod& ipod, const PtyIpod& pty, ScreenOutputs& screen,
                 const Options& options) {
  screen.live.forgetImage();
  if (!screen.file) return;
  ipod.setImageHook([&](const Picture&) {
    screen.live.look(ipod, pty.now());
    const bool isWritten = screen.file->write();
    if (isWritten && !options.quiet) say("screen written to " + options.screen.string());
  });
}

void connectOutputs(SimulatedIpod& ipod, const PtyIpod& pty, ScreenOutputs& screen,
                    const Options& options) {
  showUploads(ipod, pty, screen, options);
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

/// Makes the socket. What it refuses gets the name of the option.
std::unique_ptr<ControlServer> makeControl(const Options& options, ControlVerbs& verbs,
                                           PtyIpod& pty) {
  if (options.control.empty()) return nullptr;
  try {
    return std::make_unique<ControlServer>(options.control, verbs, pty);
  } catch (const LinkError& refused) {
    throw std::runtime_error(refused.what() + std::string("\nTry ipodsim --control SOCKET."));
  }
}

/// The parts of the running program.
class Session {
 public:
  explicit Session(const Options& chosen)
      : options(chosen),
        music(loadMusic(options)),
        screen(options),
        replaceable(options.personality, std::move(music.library), options.tracks, options.seed),
        recorder(makeRecorder(options)),
        pty(replaceable.ipod(), options.serial ? FrameKind::kSerial : FrameKind::kUsb,
            portMaker(options), hasLink(options) ? options.link : std::filesystem::path()),
        verbs(pty, replaceable, screen.live),
        control(makeControl(options, verbs, pty)) {
    for (const std::string& fault : options.faults)
      addFault(replaceable.ipod().faults(), fault);
    replaceable.setPreparation(
        [this](SimulatedIpod& ipod) { connectOutputs(ipod, pty, screen, options); });
    if (recorder) pty.observe(*recorder);
  }

  void start() {
    pty.start();
    const std::string place = pty.slavePath();
    screen.look(pty);
    if (screen.file) screen.file->keepAsItIs();
    pty.access([&](SimulatedIpod& ipod) {
      connectOutputs(ipod, pty, screen, options);
      say("iPod ready on " + place);
      if (!options.quiet && !music.summary.empty()) say(music.summary);
    });
  }

  void runUntil(const FileDescriptor& signals) {
    InputLines input;
    while (true) {
      std::vector<pollfd> waits = {{signals.get(), POLLIN, 0},
                                   {options.interactive ? STDIN_FILENO : -1, POLLIN, 0}};
      if (control) control->appendTo(waits);
      if (poll(waits.data(), waits.size(), limitMs()) < 0) return;
      if (waits[0].revents != 0) return;
      if (waits[1].revents != 0 && !input.serve(pty)) return;
      if (control) control->serve();
      writeScreen();
    }
  }

 private:
  using Clock = std::chrono::steady_clock;

  int limitMs() const {
    const int controlLimit = control ? control->limitMs() : -1;
    if (!screen.file) return controlLimit;
    const auto left = std::chrono::ceil<milliseconds>(nextScreen - Clock::now()).count();
    const int screenLimit = static_cast<int>(std::max<int64_t>(left, 0));
    return controlLimit < 0 ? screenLimit : std::min(screenLimit, controlLimit);
  }

  void writeScreen() {
    if (!screen.file || Clock::now() < nextScreen) return;
    screen.look(pty);
    screen.file->writeChange();
    nextScreen = Clock::now() + kScreenInterval;
  }

  static constexpr Time kScreenInterval = milliseconds(250);

  const Options& options;
  Music music;
  ScreenOutputs screen;
  ReplaceableIpod replaceable;
  std::unique_ptr<TraceRecorder> recorder;
  PtyIpod pty;
  ControlVerbs verbs;
  std::unique_ptr<ControlServer> control;
  Clock::time_point nextScreen{};
};

void run(const Options& options) {
  const FileDescriptor signals = catchSignals();
  requireScreen(options);
  Session session(options);
  session.start();
  session.runUntil(signals);
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
