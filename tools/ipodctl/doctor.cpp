#include "ipodctl/doctor.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <thread>

#include "iaptrace/check_diagnosis.h"
#include "ipodctl/device_map.h"
#include "ipodctl/doctor_session.h"
#include "ipodctl/doctor_steps.h"
#include "ipodctl/probe.h"
#include "link/file_descriptor.h"
#include "trace/trace_line.h"
#include "trace/trace_parser.h"

namespace tool {
namespace {

using Clock = std::chrono::steady_clock;

/// Longer than the session can take. Only a library that hangs takes so long.
constexpr std::chrono::seconds kLongestSession(60);

/// The recorder writes at least this often.
constexpr std::chrono::milliseconds kLookAgain(100);

/// Asks the person at a terminal. Without a terminal nobody can be asked.
bool mayConnect(const DoctorOptions& options) {
  std::cout << "Connecting stops what the iPod plays.\n";
  if (options.yes || isatty(STDIN_FILENO) == 0 || isatty(STDOUT_FILENO) == 0) return true;
  std::cout << "Press Enter to connect, or Ctrl-C to leave it alone. " << std::flush;
  std::string line;
  return static_cast<bool>(std::getline(std::cin, line));
}

/// Makes an empty file that only this user can read, and returns its name.
std::string newTrace() {
  const char* const folder = std::getenv("TMPDIR");
  std::string name = std::string(folder != nullptr && *folder != 0 ? folder : "/tmp") +
                     "/ipodctl-doctor-XXXXXX.trace";
  constexpr int kSuffix = 6;
  const int file = mkstemps(name.data(), kSuffix);
  if (file >= 0) close(file);
  return name;
}

/// In the child process. The library's console lines would be between the steps.
[[noreturn]] void runAsChild() {
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0) dup2(nowhere, STDOUT_FILENO);
  runShortSession();
  std::exit(EXIT_SUCCESS);  // the recorder writes the rest
}

/// The process that runs the session. It is ended with this object.
class SessionProcess {
 public:
  SessionProcess() : child(fork()) {
    if (child == 0) runAsChild();
  }
  SessionProcess(const SessionProcess&) = delete;
  SessionProcess& operator=(const SessionProcess&) = delete;
  ~SessionProcess() {
    if (!isRunning()) return;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
  }

  bool hasStarted() const { return child > 0; }
  bool isRunning() {
    if (child > 0 && !hasEnded) hasEnded = waitpid(child, nullptr, WNOHANG) != 0;
    return child > 0 && !hasEnded;
  }

 private:
  pid_t child;
  bool hasEnded = false;
};

/// Reads what is recorded so far. A trace that is being written can lack its first line.
trace::Trace recordedSoFar(const std::string& file) {
  try {
    return trace::readTrace(file);
  } catch (const trace::ParseError&) {
    return {};
  }
}

/// Prints steps once each, in their order, when they are reached.
class StepList {
 public:
  void showReached(const std::vector<Step>& steps) {
    while (shown < steps.size() && (steps[shown].done || mayLeaveOut(steps)))
      show(steps[shown++]);
  }

  /// At the end: the step that is missing, and those after it.
  void showRest(const std::vector<Step>& steps) {
    showReached(steps);
    for (bool isFirst = true; shown < steps.size(); ++shown) {
      if (steps[shown].done) {
        show(steps[shown]);
      } else {
        std::cout << (isFirst ? "  FAILED  " : "  -       ") << steps[shown].what << '\n';
        isFirst = false;
      }
    }
  }

 private:
  /// An optional step is left out when a later one is reached.
  bool mayLeaveOut(const std::vector<Step>& steps) const {
    if (!steps[shown].isOptional) return false;
    for (size_t i = shown + 1; i < steps.size(); ++i) {
      if (steps[i].done) return true;
    }
    return false;
  }

  static void show(const Step& step) {
    if (!step.done) {
      std::cout << "  -       " << step.what << " (not seen)\n";
      return;
    }
    char time[32];
    std::snprintf(time, sizeof time, "%7.3f s", std::chrono::duration<double>(*step.done).count());
    std::cout << "  ok      " << step.what
              << std::string(kColumn - std::min(kColumn, step.what.size()), ' ') << time << '\n'
              << std::flush;
  }

  static constexpr size_t kColumn = 42;
  size_t shown = 0;
};

/// Runs the session and prints its steps. Returns false when it did not end by itself.
bool followSession(const std::string& file) {
  StepList list;
  SessionProcess session;
  const auto end = Clock::now() + kLongestSession;
  while (session.isRunning() && Clock::now() < end) {
    std::this_thread::sleep_for(kLookAgain);
    list.showReached(stepsOf(recordedSoFar(file)));
  }
  list.showRest(stepsOf(recordedSoFar(file)));
  return session.hasStarted() && !session.isRunning();
}

bool isComplete(const std::vector<Step>& steps) {
  for (const Step& step : steps) {
    if (!step.done && !step.isOptional) return false;
  }
  return true;
}

ExitStatus diagnoseSession(const std::string& file, const DoctorOptions& options) {
  const trace::Trace records = recordedSoFar(file);
  const iaptrace::checking::Diagnosis diagnosis = iaptrace::checking::diagnose(records);
  std::cout << '\n' << iaptrace::checking::textOf(diagnosis);
  const bool isHealthy = diagnosis.findings.empty() && isComplete(stepsOf(records));
  if (options.probe && !isHealthy) probe(mappedDevice("IPD1:"));
  std::cout << "\nThe trace: " << file << "\n  iaptrace decode " << file << " shows it.\n";
  return isHealthy ? kHealthy : kFault;
}

void complain(const std::string& text) { std::cerr << "ipodctl doctor: " << text << '\n'; }

/// Returns why a trace cannot be written to a file, which is made if it is not there; empty when it
/// can.
std::string refusalOf(const std::string& file) {
  constexpr mode_t kOnlyForTheUser = 0600;
  const simulator::FileDescriptor opened(
      open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOnlyForTheUser));
  if (!opened) return std::strerror(errno);
  constexpr size_t kMarkSize = sizeof trace::kFirstLine - 2;  // without the line feed
  char mark[kMarkSize] = {};
  const ssize_t size = read(opened.get(), mark, kMarkSize);
  const bool isTrace = size == kMarkSize && std::memcmp(mark, trace::kFirstLine, kMarkSize) == 0;
  return size == 0 || isTrace ? "" : "it is there and is not a trace";
}

}  // namespace

ExitStatus runDoctor(const DoctorOptions& options) {
  const std::string file = options.trace.empty() ? newTrace() : options.trace;
  const std::string refusal = refusalOf(file);
  if (!refusal.empty()) {
    complain("cannot record to " + file + ": " + refusal + "; name another file with --trace FILE");
    return kWrongUsage;
  }
  if (!options.device.empty()) mapDevice("IPD1:", options.device);
  setenv("IPODCTL_TRACE", file.c_str(), 1);
  if (!mayConnect(options)) return kFault;
  if (!followSession(file)) {
    complain("the session did not end within a minute. Send the trace " + file +
             " to the developers.");
    return kFault;
  }
  return diagnoseSession(file, options);
}

}  // namespace tool
