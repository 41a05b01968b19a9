// The library's 35 functions on Linux, carried out by the DLL under Wine, so that a program's tests
// test the DLL. The DLL's calls of the platform are sent back and made here.
//
// The environment variable IPODCTL_REMOTE has the command that starts the other side.

#include <arpa/inet.h>
#include <ipodctl.h>
#include <isochplay.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#include <windows.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <mutex>
#include <thread>

#include "support/remote_message.h"

namespace {

using remote::Kind;
using remote::Message;
using remote::Socket;
using remote::Upcall;

int playAudio(Message& call) {
  WAVEFORMATEX format = {};
  switch (call.take<int32_t>()) {
    case 0:
      return SelectZeroBandwithInterface();
    case 1:
      return SelectFullBandwithInterface();
    case 2:
      format.wFormatTag = call.take<uint16_t>();
      format.nChannels = call.take<uint16_t>();
      format.nSamplesPerSec = call.take<uint32_t>();
      format.wBitsPerSample = call.take<uint16_t>();
      return StartIpodAudioPlay(&format);
    case 3:
      return StopIpodAudioPlay();
    case 4:
      return SelectFrequency(call.take<int32_t>());
    default:
      break;
  }
  int words[4];
  for (int& word : words)
    word = call.take<int32_t>();
  return IpodAudioPresent(words[0], words[1], words[2], words[3]);
}

int postMessage(Message& call) {
  const auto window = call.take<uint64_t>();
  const auto message = call.take<uint32_t>();
  const auto wParam = call.take<uint64_t>();
  const auto lParam = call.take<int64_t>();
  return PostMessageW(reinterpret_cast<HWND>(window), message, static_cast<WPARAM>(wParam),
                      static_cast<LPARAM>(lParam));
}

/// The other side. It is started at the first call, and ends with this process.
class Remote {
 public:
  Remote() {
    uint16_t port = 0;
    const Socket listener = remote::listenAtFreePort(port);
    start(port);
    const Socket upcalls = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    close(listener);
    remotePort = Message::receive(upcalls).take<uint16_t>();
    remote::connectTo(remotePort);  // when this one ends, the other side does
    std::thread([upcalls] { serve(upcalls); }).detach();
  }

  Message call(const Message& request) {
    thread_local const Connection connection(remotePort);
    request.send(connection.socket);
    return Message::receive(connection.socket);
  }

  /// Returns the copy here of a list's index, by its address there.
  int* indexAt(int64_t address) {
    const std::lock_guard lock(mutex);
    return &indexes[address];
  }

 private:
  struct Connection {
    explicit Connection(uint16_t port) : socket(remote::connectTo(port)) {}
    ~Connection() { close(socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    const Socket socket;
  };

  static void start(uint16_t port) {
    const char* const command = std::getenv("IPODCTL_REMOTE");
    if (command == nullptr) throw std::runtime_error("IPODCTL_REMOTE is not set");
    const std::string line = "exec " + std::string(command) + " " + std::to_string(port);
    if (fork() == 0) {
      execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
      _exit(EXIT_FAILURE);
    }
  }

  static void serve(Socket upcalls) {
    for (;;) {
      Message call = Message::receive(upcalls);
      Message reply;
      reply.put<int32_t>(call.take<Upcall>() == Upcall::kAudio ? playAudio(call)
                                                               : postMessage(call));
      reply.send(upcalls);
    }
  }

  uint16_t remotePort = 0;
  std::mutex mutex;
  std::map<int64_t, int> indexes;
};

Remote& theRemote() {
  static Remote& other = *new Remote;
  return other;
}

/// A buffer of this many units.
struct Text {
  unsigned short* units;
  int size;

  size_t bytes() const { return size > 0 ? static_cast<size_t>(size) * sizeof *units : 0; }
};

void put(Message& request, int number) {
  request.put(Kind::kNumber);
  request.put<int32_t>(number);
}

void put(Message& request, const int* number) {
  request.put(number != nullptr ? Kind::kNumberOut : Kind::kNull);
  if (number != nullptr) request.put<int32_t>(*number);
}

void put(Message& request, const Text& text) {
  request.put(text.units != nullptr ? Kind::kTextOut : Kind::kNull);
  if (text.units != nullptr)
    request.putText({reinterpret_cast<const char*>(text.units), text.bytes()});
}

void take(Message&, int) {}

void take(Message& reply, int* number) {
  if (number != nullptr) *number = reply.take<int32_t>();
}

void take(Message& reply, const Text& text) {
  if (text.units != nullptr)
    reply.takeText().copy(reinterpret_cast<char*>(text.units), text.bytes());
}

std::string devicesUnderWine() {
  const char* const variable = std::getenv("IPODCTL_DEVICES");
  std::string devices = variable != nullptr ? variable : "";
  for (size_t at = 0; (at = devices.find("=/", at)) != std::string::npos; at += 3)
    devices.insert(at + 1, "Z:");
  return devices;
}

/// Returns the copy of a list's index: a result that is a pointer is its address on the other side.
template <class... Arguments>
int64_t callRemote(const char* name, bool givesPointer, Arguments... arguments) {
  Message request;
  request.putText(name);
  request.put<uint8_t>(givesPointer);
  request.putText("Z:" + std::filesystem::current_path().string());
  request.putText(devicesUnderWine());
  request.put<uint8_t>(sizeof...(arguments));
  (put(request, arguments), ...);
  Message reply = theRemote().call(request);
  const auto result = reply.take<int64_t>();
  (take(reply, arguments), ...);
  for (auto left = reply.take<uint32_t>(); left > 0; --left) {
    int* const index = theRemote().indexAt(reply.take<int64_t>());
    *index = reply.take<int32_t>();
  }
  return result;
}

template <class... Arguments>
int call(const char* name, Arguments... arguments) {
  return static_cast<int>(callRemote(name, false, arguments...));
}

template <class... Arguments>
const int* callForIndex(const char* name, Arguments... arguments) {
  const int64_t address = callRemote(name, true, arguments...);
  return address == 0 ? nullptr : theRemote().indexAt(address);
}

}  // namespace

int IpodConnect() { return call("IpodConnect"); }
int IpodDisconnect() { return call("IpodDisconnect"); }
int IpodIsConnect() { return call("IpodIsConnect"); }
int isIpodAudioPresent(int first, int second, int third, int fourth) {
  return call("isIpodAudioPresent", first, second, third, fourth);
}
void IpodSetSameIpod(int sameIpod) { call("IpodSetSameIpod", sameIpod); }
int IpodValidateUpDownTree() { return call("IpodValidateUpDownTree"); }
int IpodCommand(int command) { return call("IpodCommand", command); }
int IpodSongPlay(int index) { return call("IpodSongPlay", index); }
int IpodSongGetNumElem(int* count) { return call("IpodSongGetNumElem", count); }
int IpodGetTrackIndex(int* index) { return call("IpodGetTrackIndex", index); }
int IpodSetShuffleMode(int mode) { return call("IpodSetShuffleMode", mode); }
int IpodGetShuffleMode(int* mode) { return call("IpodGetShuffleMode", mode); }
int IpodSetRepeatMode(int mode) { return call("IpodSetRepeatMode", mode); }
int IpodGetRepeatMode(int* mode) { return call("IpodGetRepeatMode", mode); }
int IpodGetCurrentPlayStatus(int* status) { return call("IpodGetCurrentPlayStatus", status); }
int IpodGetCurrentTrackPosition(int* position) {
  return call("IpodGetCurrentTrackPosition", position);
}
const int* IpodGetFirstItem(int descend, int type, int tracksOfSelection) {
  return callForIndex("IpodGetFirstItem", descend, type, tracksOfSelection);
}
const int* IpodGetNextItem() { return callForIndex("IpodGetNextItem"); }
const int* IpodGetPrevItem() { return callForIndex("IpodGetPrevItem"); }
const int* IpodGetParentItem() { return callForIndex("IpodGetParentItem"); }
int IpodCurItemIsEmpty() { return call("IpodCurItemIsEmpty"); }
int IpodIsPlayAll() { return call("IpodIsPlayAll"); }
int IpodIsTrack() { return call("IpodIsTrack"); }
int IpodGetType() { return call("IpodGetType"); }
int IpodIsTabActive() { return call("IpodIsTabActive"); }
int IpodIsTabVisualizationActive() { return call("IpodIsTabVisualizationActive"); }
int IpodDisableTabVisualizationActive() { return call("IpodDisableTabVisualizationActive"); }
int IpodEnableTabVisualizationActive() { return call("IpodEnableTabVisualizationActive"); }
int IpodGetMediaFileCount(int* count) { return call("IpodGetMediaFileCount", count); }
int IpodGetNumberOfPlaylist() { return call("IpodGetNumberOfPlaylist"); }
int IpodGetItemName(int unused, unsigned short* first, unsigned short* second, int maxChars) {
  return call("IpodGetItemName", unused, Text{first, maxChars}, Text{second, maxChars}, maxChars);
}
int IpodGetParentUpDownName(int unused, unsigned short* first, unsigned short* second,
                            int maxChars) {
  return call("IpodGetParentUpDownName", unused, Text{first, maxChars}, Text{second, maxChars},
              maxChars);
}
int IpodGetTrackInfo(int* trackIndex, unsigned short* artist, unsigned short* album,
                     unsigned short* title, unsigned short* genre, unsigned short* fifth,
                     int maxChars) {
  return call("IpodGetTrackInfo", trackIndex, Text{artist, maxChars}, Text{album, maxChars},
              Text{title, maxChars}, Text{genre, maxChars}, Text{fifth, maxChars}, maxChars);
}
int IpodGetName(unsigned short* name, int maxChars) {
  return call("IpodGetName", Text{name, maxChars}, maxChars);
}
int IpodGetSerialNumber(unsigned short* serial, int maxChars) {
  return call("IpodGetSerialNumber", Text{serial, maxChars}, maxChars);
}
