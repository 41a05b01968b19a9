#include "examples/example_run.h"

#include <ipodctl.h>
#include <threads.h>
#include <windows.h>

#include <algorithm>
#include <ctime>
#include <regex>
#include <sstream>

#include "support/captured_output.h"

extern "C" {
/// The linker renames the programs' calls and the functions of the C library.
int __real_clock_gettime(clockid_t clock, timespec* now);
int __wrap_clock_gettime(clockid_t clock, timespec* now);
int __wrap_thrd_create(thrd_t* thread, thrd_start_t start, void* context);
int __wrap_thrd_join(thrd_t thread, int* result);
int __wrap_thrd_sleep(const timespec* duration, timespec* rest);
}

namespace example_test {
namespace {

using program_run::CapturedOutput;
using simulator::SimulatedIpod;
using virtual_platform::Direction;
using virtual_platform::VirtualIpod;
using virtual_platform::VirtualWorld;

constexpr DWORD kFrameMilliseconds = 100;

unsigned startedThreads = 0;
Time lastFrame{0};
Time longest{0};

void countFrame(Time now) {
  if (lastFrame > Time(0)) longest = std::max(longest, now - lastFrame);
  lastFrame = now;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

int callMain(const ProgramRun& wanted) {
  std::vector<std::string> words = wanted.arguments;
  words.insert(words.begin(), "example");
  std::vector<char*> argv;
  for (std::string& word : words)
    argv.push_back(word.data());
  argv.push_back(nullptr);
  return wanted.main(static_cast<int>(words.size()), argv.data());
}

void runInWorld(const ProgramRun& wanted, SimulatedIpod& ipod, VirtualIpod& cable,
                Outcome& outcome) {
  const CapturedOutput output;
  VirtualWorld world(wanted.seed);
  world.keepNoTrace();
  startedThreads = 0;
  lastFrame = longest = Time(0);
  if (wanted.hasIpod) world.addDevice("IPD1:", cable);
  if (wanted.handle) world.spawn([&] { wanted.handle(ipod, cable); });
  outcome.failure = world.run([&] {
    outcome.status = callMain(wanted);
    outcome.took = world.now();
    outcome.lines = linesOf(output.text());
    IpodDisconnect();  // for a program without an iPod, which does not disconnect itself
  });
  if (!outcome.failure.empty()) outcome.lines = linesOf(output.text());
}

/// Returns whether the library printed it.
bool isOfLibrary(const std::string& line) {
  static const std::regex kConsole(
      "|Tavrel version is .*|Ipod[A-Za-z]* (start|end)|(No iP|IP)od connected|Failed .*");
  return std::regex_match(line, kConsole);
}

}  // namespace

Outcome run(const ProgramRun& wanted) {
  Outcome outcome;
  SimulatedIpod ipod(wanted.model, wanted.library);
  VirtualIpod cable(ipod, simulator::FrameKind::kUsb);
  if (wanted.disturb) wanted.disturb(ipod, cable);
  runInWorld(wanted, ipod, cable, outcome);
  outcome.struck = ipod.faults().injectedInAll() + (cable.isPlugged() ? 0 : 1);
  outcome.bytes[0] = cable.passed(Direction::kFromIpod);
  outcome.bytes[1] = cable.passed(Direction::kToIpod);
  outcome.traffic.assign(ipod.history().begin(), ipod.history().end());
  return outcome;
}

Time longestFrame() { return longest; }

std::vector<std::string> ownLines(const Outcome& outcome) {
  std::vector<std::string> own;
  std::copy_if(outcome.lines.begin(), outcome.lines.end(), std::back_inserter(own),
               [](const std::string& line) { return !isOfLibrary(line); });
  return own;
}

}  // namespace example_test

using namespace example_test;

int __wrap_thrd_sleep(const timespec* duration, timespec*) {
  constexpr DWORD kPerSecond = 1000;
  constexpr DWORD kNanoseconds = 1000000;
  const DWORD milliseconds = static_cast<DWORD>(duration->tv_sec) * kPerSecond +
                             static_cast<DWORD>(duration->tv_nsec) / kNanoseconds;
  if (milliseconds == kFrameMilliseconds) countFrame(VirtualWorld::current()->now());
  Sleep(milliseconds);
  return 0;
}

int __wrap_thrd_create(thrd_t*, thrd_start_t start, void* context) {
  ++startedThreads;
  VirtualWorld::current()->spawn([start, context] {
    start(context);
    --startedThreads;
  });
  return thrd_success;
}

/// The examples have one thread at most.
int __wrap_thrd_join(thrd_t, int*) {
  while (startedThreads > 0)
    Sleep(1);
  return thrd_success;
}

int __wrap_clock_gettime(clockid_t clock, timespec* now) {
  constexpr long kNanosecondsPerSecond = 1000000000;
  const VirtualWorld* const world = VirtualWorld::current();
  if (world == nullptr) return __real_clock_gettime(clock, now);
  now->tv_sec = world->now().count() / kNanosecondsPerSecond;
  now->tv_nsec = world->now().count() % kNanosecondsPerSecond;
  return 0;
}
