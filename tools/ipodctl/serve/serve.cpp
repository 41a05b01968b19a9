#include "ipodctl/serve/serve.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "ipodctl/device_map.h"
#include "ipodctl/logo/convert_logo.h"
#include "ipodctl/logo/logo_preview.h"
#include "ipodctl/mpris/mpris.h"
#include "ipodctl/serve/access.h"
#include "ipodctl/serve/event_log.h"
#include "ipodctl/serve/event_stream.h"
#include "ipodctl/serve/head_unit.h"
#include "ipodctl/serve/http_server.h"
#include "ipodctl/serve/ipod_control.h"
#include "ipodctl/serve/ipod_watch.h"
#include "ipodctl/serve/routes.h"
#include "ipodctl/serve/runtime_file.h"
#include "ipodctl/serve/static_files.h"
#include "ipodctl/serve/wire_monitor.h"
#include "link/file_descriptor.h"

namespace tool {
namespace {

/// A command line that cannot work. The message says what to write instead.
class WrongOptions : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

void say(const std::string& text) { std::cerr << "ipodctl serve: " << text << std::endl; }

void checkAddress(const ServeOptions& options) {
  in6_addr any = {};
  const std::string& address = options.address;
  const bool isNumeric = inet_pton(AF_INET, address.c_str(), &any) == 1 ||
                         inet_pton(AF_INET6, address.c_str(), &any) == 1;
  if (!isNumeric || address == "0.0.0.0" || address == "::") {
    throw WrongOptions("--listen needs one address of this computer in numbers, such as 127.0.0.1");
  }
  if (!isLoopback(address) && options.tokenFile.empty()) {
    throw WrongOptions("other computers reach " + address +
                       ": write a token of 32 characters into a file and add --token-file FILE");
  }
}

/// SIGINT and SIGTERM, which this thread waits for and no other thread receives.
class EndSignals {
 public:
  EndSignals() {
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  }

  void await() const {
    int one = 0;
    sigwait(&signals, &one);
  }

 private:
  sigset_t signals = {};
};

/// Sees to it that the program ends, also when a call of the library does not return.
class EndGuard {
 public:
  explicit EndGuard(std::function<void()> cleanUp)
      : thread([this, clean = std::move(cleanUp)] { watch(clean); }) {}
  EndGuard(const EndGuard&) = delete;
  EndGuard& operator=(const EndGuard&) = delete;
  ~EndGuard() {
    {
      const std::lock_guard lock(mutex);
      hasEnded = true;
    }
    changed.notify_all();
    thread.join();
  }

 private:
  void watch(const std::function<void()>& cleanUp) {
    constexpr std::chrono::milliseconds kUsual{1500};
    constexpr std::chrono::milliseconds kLongest{8500};
    std::unique_lock lock(mutex);
    if (changed.wait_for(lock, kUsual, [this] { return hasEnded; })) return;
    say("waits for the iPod's answer to a call of the library, at most 10 seconds");
    if (changed.wait_for(lock, kLongest, [this] { return hasEnded; })) return;
    say("the call did not return; ends without it");
    cleanUp();
    _exit(kFault);
  }

  std::mutex mutex;
  std::condition_variable changed;
  bool hasEnded = false;  ///< guarded by mutex
  std::thread thread;
};

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw WrongOptions("cannot read " + path + "; name a picture with --logo FILE");
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// The screen of the largest model that shows a logo.
constexpr unsigned kScreenWidth = 320;
constexpr unsigned kScreenHeight = 240;

/// The library does not report the size of the iPod's screen to a host, and shows no logo that is
/// larger. So the client names the model.
std::string logoOf(const std::string& png, const std::string& model) {
  if (model.empty()) return convertLogo(png, kScreenWidth, kScreenHeight);
  const LogoLimits limits = logoLimits(model);
  return convertLogo(png, limits.width, limits.height);
}

/// A bitmap is used as it is.
std::string bitmapOf(const std::string& path) {
  const std::string content = contentOf(path);
  return content.compare(0, 2, "BM") == 0 ? content : logoOf(content, "");
}

void openBrowser(const std::string& url) {
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  std::string program = "xdg-open";
  std::string address = url;
  char* arguments[] = {program.data(), address.data(), nullptr};
  pid_t process = 0;
  const int error = posix_spawnp(&process, "xdg-open", nullptr, &attributes, arguments, environ);
  posix_spawnattr_destroy(&attributes);
  if (error != 0) say("cannot start xdg-open; open " + url);
}

std::string absolute(const std::string& path) {
  return path.empty() ? path : std::filesystem::absolute(path).string();
}

/// The library reads its logo from the current folder.
std::string enterOwnFolder(int port) {
  prepareRuntimeFolder(runtimeFolder());
  std::string folder = runtimeFolder() + "/" + std::to_string(port);
  prepareRuntimeFolder(folder);
  std::filesystem::current_path(folder);
  return folder;
}

/// Everything between the start and the end.
class Serving {
 public:
  explicit Serving(const ServeOptions& options)
      : files(options.page),
        ipod(absolute(options.control)),
        token(options.tokenFile.empty() ? newToken() : tokenOfFile(options.tokenFile)),
        usesMpris(options.usesMpris),
        logo(options.logo.empty() ? "" : bitmapOf(options.logo)),
        server(options.address, options.port, token,
               [this](const Request& request) { return route(*parts, request); }),
        folder(enterOwnFolder(server.port())),
        runtimeFile(runtimeFolder(), server.access().url(), token) {
    if (runtimeFile.otherProcess() != 0 && !options.isQuiet) {
      say("commands use the other ipodctl serve, the process " +
          std::to_string(runtimeFile.otherProcess()) + "; end that one first to use this one");
    }
  }

  /// The folder stays when there is a logo in it.
  ~Serving() { rmdir(folder.c_str()); }
  Serving(const Serving&) = delete;
  Serving& operator=(const Serving&) = delete;

  std::string url() const { return server.access().url() + "/?token=" + token; }

  void start() {
    headUnit = makeHeadUnit(events, {folder});
    // cppcheck-suppress uselessAssignmentPtrArg ; it takes the member for an argument of a lambda
    parts = std::make_unique<RoutedParts>(RoutedParts{
        *headUnit, streams, files, ipod, [this] { return wire.trace(); }, explainedTrace, logoOf});
    watch = std::make_unique<IpodWatch>(ipod, streams, events);
    server.start();
    if (usesMpris) mpris = std::make_unique<Mpris>(*headUnit, events);
    if (!logo.empty()) headUnit->setLogo(logo, [] { return true; });
  }

  void stop() {
    events.close();
    mpris.reset();
    server.stop();
    watch.reset();
    headUnit.reset();
  }

 private:
  EventLog events;
  WireMonitor wire{events};
  const StaticFiles files;
  const IpodControl ipod;
  const std::string token;
  const bool usesMpris;
  const std::string logo;  ///< the bitmap
  std::unique_ptr<HeadUnit> headUnit;
  std::unique_ptr<Mpris> mpris;
  std::unique_ptr<RoutedParts> parts;
  EventStreams streams{events, [this] { return stateDocument(*parts); },
                       [this](std::string& state) { completeState(*parts, state); }};
  std::unique_ptr<IpodWatch> watch;
  HttpServer server;
  const std::string folder;
  const RuntimeFile runtimeFile;
};

ExitStatus serve(const ServeOptions& options) {
  checkAddress(options);
  const EndSignals signals;
  if (!options.device.empty()) mapDevice("IPD1:", options.device);
  auto serving = std::make_unique<Serving>(options);
  const std::string url = serving->url();
  // The first line is printed when clients are answered; the head unit's library prints before.
  const simulator::FileDescriptor output(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
  serving->start();
  dprintf(output.get(), "head unit ready on %s\n", url.c_str());
  if (options.opensBrowser) openBrowser(url);
  signals.await();
  const EndGuard guard([] {});
  serving->stop();
  serving.reset();
  return kHealthy;
}

}  // namespace

ExitStatus runServe(const ServeOptions& options) {
  try {
    return serve(options);
  } catch (const WrongOptions& error) {
    say(error.what());
    return kWrongUsage;
  } catch (const std::exception& error) {
    say(error.what());
    return kFault;
  }
}

}  // namespace tool
