#include "headunit/trial.h"

#include <ipodctl.h>
#include <threads.h>
#include <windows.h>

#include <sstream>

#include "pause.h"
#include "session.h"
#include "support/captured_output.h"
#include "virtual/virtual_world.h"

extern "C" {
/// The main function of the example.
int firstSession(void);
/// The linker renames the program's call and the library's function.
int __real_IpodDisconnect(void);
int __wrap_IpodDisconnect(void);
}

namespace headunit_test {
namespace {

using program_run::CapturedOutput;

using simulator::SimulatedIpod;
using virtual_platform::Direction;
using virtual_platform::VirtualIpod;
using virtual_platform::VirtualWorld;

/// Longer than the delay of an answer in any trial.
constexpr DWORD kQuietMilliseconds = 5000;
constexpr DWORD kHandlingMilliseconds = 100;

bool writesText(int (*read)(unsigned short*, int)) {
  unsigned short text[8] = {0};
  read(text, 8);
  return text[0] != 0;
}

bool writesNumber(int (*read)(int*)) {
  int number = 0;
  read(&number);
  return number != 0;
}

bool saysTrackIndex() { return IpodGetTrackIndex(nullptr) == 1; }
bool saysName() { return writesText(IpodGetName); }
bool saysSerialNumber() { return writesText(IpodGetSerialNumber); }
bool saysShuffleMode() { return writesNumber(IpodGetShuffleMode); }
bool saysRepeatMode() { return writesNumber(IpodGetRepeatMode); }
bool saysPlayStatus() { return writesNumber(IpodGetCurrentPlayStatus); }

/// Asks all questions that need no list, each one after a long pause. Returns true at the first
/// answer.
bool answersAnything() {
  for (bool (*const question)() : {saysTrackIndex, saysName, saysSerialNumber, saysShuffleMode,
                                   saysRepeatMode, saysPlayStatus}) {
    Sleep(kQuietMilliseconds);
    if (question()) return true;
  }
  return false;
}

/// The examination of the iPod before the program of the present run disconnects.
struct Examination {
  VirtualWorld* world = nullptr;
  bool hasAnswered = false;
  Time took{0};
};
Examination examination;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

int runProgram(HostProgram program) {
  return program == HostProgram::kHeadUnit ? static_cast<int>(runSession()) : firstSession();
}

void handle(const Trial& trial, SimulatedIpod& ipod, VirtualWorld& world, const bool& hasEnded) {
  while (!hasEnded) {
    (ipod.*trial.handle)(world.now());
    Sleep(kHandlingMilliseconds);
  }
}

void runInWorld(const Trial& trial, SimulatedIpod& ipod, VirtualWorld& world, Outcome& outcome) {
  const CapturedOutput output;
  bool hasEnded = false;
  examination = {&world, false, Time(0)};
  if (trial.handle != nullptr) world.spawn([&] { handle(trial, ipod, world, hasEnded); });
  outcome.failure = world.run([&] {
    outcome.status = runProgram(trial.program);
    outcome.took = world.now() - examination.took;
    hasEnded = true;
    __real_IpodDisconnect();  // for a program without an iPod, which does not disconnect itself
  });
  outcome.answersAtTheEnd = examination.hasAnswered;
  outcome.lines = linesOf(output.text());
}

}  // namespace

Outcome run(const Trial& trial) {
  Outcome outcome;
  SimulatedIpod ipod(trial.model, trial.library);
  VirtualIpod cable(ipod, simulator::FrameKind::kUsb);
  VirtualWorld world(trial.seed);
  world.addDevice("IPD1:", cable);
  if (trial.disturb) trial.disturb(ipod, cable);
  runInWorld(trial, ipod, world, outcome);
  outcome.struck = ipod.faults().injectedInAll() + (cable.isPlugged() ? 0 : 1);
  outcome.bytes[0] = cable.passed(Direction::kFromIpod);
  outcome.bytes[1] = cable.passed(Direction::kToIpod);
  outcome.traffic.assign(ipod.history().begin(), ipod.history().end());
  return outcome;
}

}  // namespace headunit_test

/// The pauses of the programs take no real time.
void waitMilliseconds(int milliseconds) { Sleep(static_cast<DWORD>(milliseconds)); }

extern "C" int thrd_sleep(const timespec* duration, timespec*) {
  constexpr DWORD kPerSecond = 1000;
  constexpr DWORD kNanoseconds = 1000000;
  Sleep(static_cast<DWORD>(duration->tv_sec) * kPerSecond +
        static_cast<DWORD>(duration->tv_nsec) / kNanoseconds);
  return 0;
}

/// The test itself asks the iPod before the link closes.
extern "C" int __wrap_IpodDisconnect(void) {
  using namespace headunit_test;
  const Time start = examination.world->now();
  examination.hasAnswered = answersAnything();
  examination.took += examination.world->now() - start;
  return __real_IpodDisconnect();
}
