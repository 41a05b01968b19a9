// Requests of the library to an iPod at the other end of a socket, and the least that two threads
// need for the same.
//
// usage: session_cost WORK COUNT
//
//   status COUNT      connects and asks for the play status COUNT times
//   records COUNT     connects, retrieves COUNT records at once at least five times, and prints the
//                     processor's time for a record
//   compare COUNT     asks COUNT times as the library does and COUNT times as the floor does, in
//                     turns of 100, and prints the ratio of the times
//   disconnect COUNT  connects and disconnects COUNT times and prints the longest disconnect
//   idle COUNT        connects, waits COUNT seconds and prints how often a thread was woken
//
// Everything runs on one processor, so that it does not depend on where the threads are.

#include <ipodctl.h>
#include <isochplay.h>
#include <sched.h>
#include <semaphore.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "api/library_state.h"
#include "socket_ipod.h"

namespace {

std::atomic<uint64_t> allocations{0};

}  // namespace

// Counts the allocations of the library and of the platform.
void* operator new(size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  std::abort();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  ++allocations;
  return std::malloc(size);
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new[](size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, size_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, size_t) noexcept { std::free(memory); }

// The audio library, silent.
int WINAPI SelectZeroBandwithInterface() { return 0; }
int WINAPI SelectFullBandwithInterface() { return 0; }
int WINAPI StartIpodAudioPlay(const WAVEFORMATEX*) { return 0; }
int WINAPI StopIpodAudioPlay() { return 0; }
int WINAPI SelectFrequency(int) { return 0; }
int WINAPI IpodAudioPresent(int, int, int, int) { return 0; }

namespace {

using Clock = std::chrono::steady_clock;

double microseconds(Clock::duration time) {
  return std::chrono::duration<double, std::micro>(time).count();
}

void useOneProcessor() {
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(0, &one);
  sched_setaffinity(0, sizeof(one), &one);
}

/// What the program prints for people; the library has the standard output for itself.
FILE* report = stderr;

void connect() {
  if (IpodConnect() == 1) return;
  std::fputs("session_cost: the iPod at the socket was not connected\n", report);
  std::exit(1);
}

void askStatus() {
  int status = 0;
  IpodGetCurrentPlayStatus(&status);
  if (status != IPOD_PLAYING) {
    std::fputs("session_cost: a request had a wrong answer\n", report);
    std::exit(1);
  }
}

void status(int count) {
  const bench::SocketIpod ipod;
  connect();
  askStatus();
  const uint64_t before = allocations;
  for (int i = 0; i < count; ++i)
    askStatus();
  const uint64_t after = allocations;
  std::fprintf(report, "iPod %d\n", ipod.process());
  std::fprintf(report, "allocations %.3f\n", double(after - before) / count);
  IpodDisconnect();
}

double processorMicroseconds() {
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  return double(used.ru_utime.tv_sec + used.ru_stime.tv_sec) * 1e6 +
         double(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
}

void records(int count) {
  const bench::SocketIpod ipod;
  connect();
  const int rounds = std::max(5, 200000 / count);
  std::vector<double> costs;
  for (int i = 0; i < rounds; ++i) {
    ipodctl::RecordList list;
    const double before = processorMicroseconds();
    const auto wanted = static_cast<uint32_t>(count);
    if (!ipodctl::ipodController.RetrieveDbRecords(ipodctl::Category::kTracks, 0, wanted, list) ||
        list.size() != wanted) {
      std::fputs("session_cost: records are missing\n", report);
      std::exit(1);
    }
    costs.push_back((processorMicroseconds() - before) / count);
  }
  double sum = 0;
  for (const double cost : costs)
    sum += cost;
  std::fprintf(report, "microseconds %.3f\n", sum / double(costs.size()));
  IpodDisconnect();
}

/// The least that two threads need: one writes and waits, the other reads and wakes it.
class Floor {
 public:
  explicit Floor(int socketEnd) : socket(socketEnd) {
    sem_init(&ready, 0, 0);
    reader = std::thread([this] {
      uint8_t bytes[4096];
      while (::read(socket, bytes, sizeof(bytes)) > 0)
        sem_post(&ready);
    });
  }
  ~Floor() {
    ::shutdown(socket, SHUT_RDWR);
    reader.join();
  }

  void ask() {
    constexpr uint8_t kRequest[] = {0x55, 0x03, 0x04, 0x00, 0x1C, 0xDD};
    if (::write(socket, kRequest, sizeof(kRequest)) != sizeof(kRequest)) std::abort();
    sem_wait(&ready);
  }

 private:
  int socket;
  sem_t ready;
  std::thread reader;
};

std::vector<double> timed(int count, const std::function<void()>& ask) {
  std::vector<double> times;
  for (int i = 0; i < count; ++i) {
    const auto start = Clock::now();
    ask();
    times.push_back(microseconds(Clock::now() - start));
  }
  return times;
}

double share(std::vector<double> times, double part) {
  std::sort(times.begin(), times.end());
  return times[static_cast<size_t>(double(times.size() - 1) * part)];
}

void append(std::vector<double>& all, const std::vector<double>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

void compare(int count) {
  constexpr int kTurn = 100;
  const bench::SocketIpod ipodOfTheFloor;
  Floor floor(ipodOfTheFloor.hostEnd());
  const bench::SocketIpod ipod;
  connect();
  std::vector<double> ours;
  std::vector<double> theFloors;
  for (int i = 0; i < count; i += kTurn) {
    append(ours, timed(kTurn, askStatus));
    append(theFloors, timed(kTurn, [&] { floor.ask(); }));
  }
  for (const double part : {0.5, 0.99}) {
    std::fprintf(report, "p%.0f library %.2f us floor %.2f us ratio %.3f\n", part * 100,
                 share(ours, part), share(theFloors, part),
                 share(ours, part) / share(theFloors, part));
  }
  IpodDisconnect();
}

void disconnect(int count) {
  const bench::SocketIpod ipod;
  std::vector<double> times;
  for (int i = 0; i < count; ++i) {
    connect();
    append(times, timed(1, [] { IpodDisconnect(); }));
  }
  std::fprintf(report, "milliseconds median %.3f longest %.3f\n", share(times, 0.5) / 1000,
               share(times, 1) / 1000);
}

uint64_t wakeUps() {
  rusage used = {};
  getrusage(RUSAGE_SELF, &used);
  return static_cast<uint64_t>(used.ru_nvcsw);
}

void idle(int seconds) {
  const bench::SocketIpod ipod;
  connect();
  usleep(100000);
  const uint64_t before = wakeUps();
  sleep(static_cast<unsigned>(seconds));
  std::fprintf(report, "wake-ups %llu\n",
               static_cast<unsigned long long>(wakeUps() - before - 1));  // one is the sleep's
  IpodDisconnect();
}

}  // namespace

int main(int argc, char** argv) {
  const std::string work = argc == 3 ? argv[1] : "";
  const int count = argc == 3 ? std::atoi(argv[2]) : 0;
  if (count < 1) {
    std::fputs("usage: session_cost WORK COUNT\n", stderr);
    return 2;
  }
  useOneProcessor();
  if (work == "status") status(count);
  if (work == "records") records(count);
  if (work == "compare") compare(count);
  if (work == "disconnect") disconnect(count);
  if (work == "idle") idle(count);
}
