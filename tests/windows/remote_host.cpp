// Carries out calls of ipodctl.dll for a program on Linux, whose side is remote_library.cpp.
//
// usage: remote_host PORT      the port of this machine at which that program listens

#include <winsock2.h>

#include <isochplay_desk.h>
#include <stream_driver.h>
#include <ws2tcpip.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "import_table.h"
#include "support/remote_message.h"

namespace {

using remote::Kind;
using remote::Message;
using remote::Socket;
using remote::Upcall;

/// Sends the library's calls of the platform to the program's side.
class Upcalls {
 public:
  explicit Upcalls(Socket toProgram) : connection(toProgram) {}

  /// Sends the port at which this side listens.
  void tell(uint16_t port) {
    Message own;
    own.put(port);
    own.send(connection);
  }
  int call(const Message& request) {
    const std::lock_guard lock(mutex);
    request.send(connection);
    return Message::receive(connection).take<int32_t>();
  }

 private:
  const Socket connection;
  std::mutex mutex;
};

Upcalls* upcalls = nullptr;

void playAudio(void*, const IsochplayCall* call) {
  Message request;
  request.put(Upcall::kAudio);
  request.put<int32_t>(call->function);
  if (call->format != nullptr) {
    request.put<uint16_t>(call->format->wFormatTag);
    request.put<uint16_t>(call->format->nChannels);
    request.put<uint32_t>(call->format->nSamplesPerSec);
    request.put<uint16_t>(call->format->wBitsPerSample);
  }
  if (call->function == kSelectFrequency) request.put<int32_t>(call->sampleRate);
  for (const int word : call->words)
    request.put<int32_t>(word);
  isochplaySetResult(call->function, upcalls->call(request));
}

BOOL WINAPI postMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  Message request;
  request.put(Upcall::kWindowMessage);
  request.put<uint64_t>(reinterpret_cast<uintptr_t>(window));
  request.put<uint32_t>(message);
  request.put<uint64_t>(wParam);
  request.put<int64_t>(lParam);
  return upcalls->call(request);
}

/// The arguments of a call, each of the size of a register or a stack slot, and what they point to.
class Arguments {
 public:
  explicit Arguments(Message& request) : count(request.take<uint8_t>()) {
    for (size_t i = 0; i < count; ++i)
      take(request, i);
  }

  int64_t pass(FARPROC function) {
    using Function =
        int64_t(WINAPI*)(int64_t, int64_t, int64_t, int64_t, int64_t, int64_t, int64_t);
    const auto call = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(function));
    return call(words[0], words[1], words[2], words[3], words[4], words[5], words[6]);
  }

  void putBack(Message& reply) const {
    for (size_t i = 0; i < count; ++i) {
      if (kinds[i] == Kind::kNumberOut) reply.put<int32_t>(numbers[i]);
      if (kinds[i] == Kind::kTextOut) reply.putText(texts[i]);
    }
  }

 private:
  static constexpr size_t kMost = 7;

  void take(Message& request, size_t i) {
    kinds.at(i) = request.take<Kind>();
    if (kinds[i] == Kind::kNumber) words[i] = request.take<int32_t>();
    if (kinds[i] == Kind::kNumberOut) {
      numbers[i] = request.take<int32_t>();
      words[i] = reinterpret_cast<intptr_t>(&numbers[i]);
    }
    if (kinds[i] == Kind::kTextOut) {
      texts[i] = request.takeText();
      words[i] = reinterpret_cast<intptr_t>(texts[i].data());
    }
  }

  size_t count;
  std::array<Kind, kMost> kinds = {};
  std::array<int64_t, kMost> words = {};
  std::array<int32_t, kMost> numbers = {};
  std::array<std::string, kMost> texts;
};

/// The indexes of lists that the library has returned.
class Indexes {
 public:
  void add(const int* index) {
    const std::lock_guard lock(mutex);
    if (index != nullptr) known.insert(index);
  }
  void put(Message& reply) {
    const std::lock_guard lock(mutex);
    reply.put<uint32_t>(static_cast<uint32_t>(known.size()));
    for (const int* const index : known) {
      reply.put<int64_t>(reinterpret_cast<intptr_t>(index));
      reply.put<int32_t>(*index);
    }
  }

 private:
  std::mutex mutex;
  std::set<const int*> known;
};

Indexes& indexes() {
  static Indexes& all = *new Indexes;
  return all;
}

Message carryOut(HMODULE library, Message& request) {
  const std::string name = request.takeText();
  const bool givesPointer = request.take<uint8_t>() != 0;
  const std::string folder = request.takeText();
  const std::string devices = request.takeText();
  if (name == "IpodConnect") {
    SetCurrentDirectoryA(folder.c_str());
    SetEnvironmentVariableA("IPODCTL_DEVICES", devices.c_str());
  }
  Arguments arguments(request);
  const int64_t result = arguments.pass(GetProcAddress(library, name.c_str()));
  if (givesPointer) indexes().add(reinterpret_cast<const int*>(result));
  Message reply;
  reply.put<int64_t>(result);
  arguments.putBack(reply);
  indexes().put(reply);
  std::fflush(stdout);
  return reply;
}

/// Serves one thread of the program until it ends.
void serve(Socket caller, HMODULE library) {
  try {
    for (;;) {
      Message request = Message::receive(caller);
      carryOut(library, request).send(caller);
    }
  } catch (const std::exception&) {
    closesocket(caller);
  }
}

int run(uint16_t port) {
  const HMODULE library = LoadLibraryW(L"ipodctl.dll");
  if (streamDriverInstall() == 0 ||
      !replaceImport(library, "PostMessageW", reinterpret_cast<ULONG_PTR>(postMessage)))
    throw std::runtime_error("the library is not loaded");
  Upcalls toProgram(remote::connectTo(port));
  upcalls = &toProgram;
  isochplaySetSink(playAudio, nullptr);
  uint16_t own = 0;
  const Socket listener = remote::listenAtFreePort(own);
  toProgram.tell(own);
  const Socket lifeline = accept(listener, nullptr, nullptr);
  std::thread([=] {
    for (;;)
      std::thread(serve, accept(listener, nullptr, nullptr), library).detach();
  }).detach();
  char none = 0;
  recv(lifeline, &none, sizeof none, 0);
  std::fflush(stdout);
  std::_Exit(EXIT_SUCCESS);
}

}  // namespace

int main(int argc, char** argv) {
  WSADATA data;
  if (argc != 2 || WSAStartup(MAKEWORD(2, 2), &data) != 0) return 2;
  try {
    return run(static_cast<uint16_t>(std::atoi(argv[1])));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "remote_host: %s\n", error.what());
    return EXIT_FAILURE;
  }
}
