#include "socket_ipod.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "wire_frame.h"

namespace {

using bench::Bytes;
using bench::frameOf;

constexpr char kPath[] = "/socket";
int hostSocket = -1;

void append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

uint32_t wordAt(const Bytes& bytes, size_t offset) {
  return static_cast<uint32_t>(bytes[offset]) << 24 |
         static_cast<uint32_t>(bytes[offset + 1]) << 16 |
         static_cast<uint32_t>(bytes[offset + 2]) << 8 | bytes[offset + 3];
}

/// Answers of which the request's first bytes say everything.
struct Line {
  Bytes request;
  std::vector<Bytes> replies;
};

const std::vector<Line>& lines() {
  static const std::vector<Line> all = {
      {{0x04, 0x00, 0x1C},
       {{0x04, 0x00, 0x1D, 0x00, 0x03, 0x0D, 0x40, 0x00, 0x00, 0x10, 0x00, 0x01}}},
      {{0x04, 0x00, 0x18}, {{0x04, 0x00, 0x19, 0x00, 0x01, 0x86, 0xA0}}},
      {{0x00, 0x13},
       {{0x00, 0x02, 0x00, 0x13},
        {0x0A, 0x04, 0x00, 0x00, 0xAC, 0x44, 0, 0, 0, 0, 0, 0, 0, 0},
        {0x0A, 0x02}}},
      {{0x00, 0x0F, 0x00}, {{0x00, 0x10, 0x00, 0x01, 0x09}}},
      {{0x00, 0x0F, 0x04}, {{0x00, 0x10, 0x04, 0x01, 0x0D}}},
      {{0x00, 0x0F, 0x0A}, {{0x00, 0x10, 0x0A, 0x01, 0x02}}},
      {{0x00, 0x05}, {{0x00, 0x02, 0x00, 0x05}}},
  };
  return all;
}

/// The records that 04 00 1A asks for, each with a name of 24 characters.
Bytes recordsFor(const Bytes& payload) {
  Bytes answer;
  const uint32_t first = wordAt(payload, 4);
  const uint32_t count = wordAt(payload, 8);
  for (uint32_t i = first; i < first + count; ++i) {
    Bytes record = {0x04, 0x00, 0x1B};
    for (int shift = 24; shift >= 0; shift -= 8)
      record.push_back(static_cast<uint8_t>(i >> shift));
    char name[32];
    std::snprintf(name, sizeof(name), "The long song no. %06u", i);
    append(record, Bytes(name, name + std::strlen(name) + 1));
    append(answer, frameOf(record));
  }
  return answer;
}

Bytes answerTo(const Bytes& payload) {
  if (payload.size() == 12 && payload[0] == 0x04 && payload[2] == 0x1A) return recordsFor(payload);
  Bytes answer;
  for (const Line& line : lines()) {
    if (payload.size() < line.request.size() ||
        std::memcmp(payload.data(), line.request.data(), line.request.size()) != 0) {
      continue;
    }
    for (const Bytes& reply : line.replies)
      append(answer, frameOf(reply));
    break;
  }
  return answer;
}

void writeAll(int socket, const Bytes& bytes) {
  size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = ::write(socket, bytes.data() + sent, bytes.size() - sent);
    if (count <= 0) _exit(0);
    sent += static_cast<size_t>(count);
  }
}

/// The request of the measured loop, answered with next to no work.
constexpr uint8_t kStatusRequest[] = {0x55, 0x03, 0x04, 0x00, 0x1C, 0xDD};

[[noreturn]] void serve(int socket) {
  const Bytes status = answerTo({0x04, 0x00, 0x1C});
  Bytes received;
  for (;;) {
    uint8_t bytes[4096];
    const ssize_t count = ::read(socket, bytes, sizeof(bytes));
    if (count <= 0) _exit(0);
    if (received.empty() && count == sizeof(kStatusRequest) &&
        std::memcmp(bytes, kStatusRequest, sizeof(kStatusRequest)) == 0) {
      writeAll(socket, status);
      continue;
    }
    received.insert(received.end(), bytes, bytes + count);
    while (received.size() >= 2 && received.size() >= received[1] + 3u) {
      const auto end = received.begin() + received[1] + 3;
      writeAll(socket, answerTo(Bytes(received.begin() + 2, end - 1)));
      received.erase(received.begin(), end);
    }
  }
}

template <class Function>
Function* real(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool isHostEnd(int descriptor) {
  int type = 0;
  socklen_t size = sizeof(type);
  return getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &size) == 0;
}

}  // namespace

namespace bench {

SocketIpod::SocketIpod() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) std::abort();
  child = fork();
  if (child == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::close(ends[0]);
    serve(ends[1]);
  }
  ::close(ends[1]);
  host = ends[0];
  hostSocket = host;
  setenv("IPODCTL_DEVICES", "IPD1:=/socket", 1);
}

SocketIpod::~SocketIpod() {
  ::close(host);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
}

}  // namespace bench

// What the platform asks of a terminal, answered for the socket. The platform's calls find these
// functions before those of the C library, whose parameters have reserved names.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

int open(const char* path, int flags, ...) {
  if (std::strcmp(path, kPath) == 0) {
    const int copy = dup(hostSocket);
    if ((flags & O_NONBLOCK) != 0) fcntl(copy, F_SETFL, O_NONBLOCK);
    return copy;
  }
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = va_arg(arguments, unsigned);
  va_end(arguments);
  return real<int(const char*, int, unsigned)>("open")(path, flags, mode);
}

int isatty(int descriptor) {
  return isHostEnd(descriptor) ? 1 : real<int(int)>("isatty")(descriptor);
}

int flock(int descriptor, int operation) {
  return isHostEnd(descriptor) ? 0 : real<int(int, int)>("flock")(descriptor, operation);
}

/// The platform waits until a line has sent what was written, but not on a pseudo terminal.
int fstat(int descriptor, struct stat* status) noexcept {
  constexpr unsigned kPseudoTerminals = 136;
  const int result = real<int(int, struct stat*)>("fstat")(descriptor, status);
  if (result == 0 && isHostEnd(descriptor)) status->st_rdev = makedev(kPseudoTerminals, 0);
  return result;
}

int tcgetattr(int descriptor, termios* settings) noexcept {
  return isHostEnd(descriptor) ? 0 : real<int(int, termios*)>("tcgetattr")(descriptor, settings);
}

int tcsetattr(int descriptor, int actions, const termios* settings) noexcept {
  return isHostEnd(descriptor)
             ? 0
             : real<int(int, int, const termios*)>("tcsetattr")(descriptor, actions, settings);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == TIOCEXCL && isHostEnd(descriptor)) return 0;
  return real<int(int, unsigned long, void*)>("ioctl")(descriptor, request, argument);
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
