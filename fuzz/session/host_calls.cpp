#include "session/host_calls.h"

#include <ipodctl.h>

#include <climits>
#include <cstddef>
#include <memory>

#include "support/require.h"

namespace {

constexpr int kUntouched = -77777;
constexpr uint8_t kOddNumbers = 0x80;

/// Returns small numbers around 0, and from 80 on special ones.
int numberFrom(Script& script) {
  constexpr int kOdd[] = {INT_MIN, INT_MIN + 1, -36, -35,     -3,          70,
                          71,      1000,        255, 0x10000, INT_MAX - 1, INT_MAX};
  const uint8_t choice = script.byte();
  if (choice < kOddNumbers) return choice - 2;
  return kOdd[(choice - kOddNumbers) % std::size(kOdd)];
}

/// A host's buffer of 16-bit units in separate memory, so that AddressSanitizer sees a unit beyond
/// it.
class Units {
 public:
  Units(bool isThere, int maxChars)
      : memory(isThere ? new unsigned short[maxChars > 0 ? static_cast<size_t>(maxChars) : 0]
                       : nullptr) {}
  unsigned short* get() const { return memory.get(); }

 private:
  const std::unique_ptr<unsigned short[]> memory;
};

struct TextArguments {
  explicit TextArguments(Script& script) {
    const uint8_t choice = script.byte();
    maxChars = choice < kOddNumbers ? choice : choice % 2 == 0 ? INT_MIN : -1;
    nullBuffers = script.byte();
  }
  Units buffer(unsigned number) const { return {(nullBuffers >> number & 1) == 0, maxChars}; }

  int maxChars;
  uint8_t nullBuffers;
};

int readNumber(Script& script, int (*read)(int*), bool (*mayWrite)(int)) {
  const bool isNull = script.byte() % 8 == 7;
  const std::unique_ptr<int> value(new int(kUntouched));
  const int result = read(isNull ? nullptr : value.get());
  require(*value == kUntouched || mayWrite(*value), "a value that it never writes");
  return result;
}

int readTexts(Script& script, int (*read)(int, unsigned short*, unsigned short*, int)) {
  const TextArguments arguments(script);
  const Units first = arguments.buffer(0);
  const Units second = arguments.buffer(1);
  return read(numberFrom(script), first.get(), second.get(), arguments.maxChars);
}

int readText(Script& script, int (*read)(unsigned short*, int)) {
  const TextArguments arguments(script);
  const Units text = arguments.buffer(0);
  return read(text.get(), arguments.maxChars);
}

int readTrackInfo(Script& script) {
  const TextArguments arguments(script);
  const Units texts[] = {arguments.buffer(0), arguments.buffer(1), arguments.buffer(2),
                         arguments.buffer(3), arguments.buffer(4)};
  const std::unique_ptr<int> index(new int(kUntouched));
  return IpodGetTrackInfo((arguments.nullBuffers & 0x20) == 0 ? index.get() : nullptr,
                          texts[0].get(), texts[1].get(), texts[2].get(), texts[3].get(),
                          texts[4].get(), arguments.maxChars);
}

/// Returns 1 for an address, which must be readable, else 0.
int isAddress(const int* index) {
  if (index == nullptr) return 0;
  const volatile int& value = *index;
  static_cast<void>(value);
  return 1;
}

bool anything(int) { return true; }
bool isMode(int value) { return value >= IPOD_MODE_OFF && value <= IPOD_MODE_ALBUMS; }
bool isStatus(int value) { return value >= IPOD_STOPPED && value <= IPOD_PAUSED; }

int audioPresent(Script& script) {
  const int first = numberFrom(script);
  const int second = numberFrom(script);
  const int third = numberFrom(script);
  return isIpodAudioPresent(first, second, third, numberFrom(script));
}

int setSameIpod(Script& script) {
  IpodSetSameIpod(numberFrom(script));
  return 0;
}

int command(Script& script) { return IpodCommand(numberFrom(script)); }

int firstItem(Script& script) {
  const int descend = numberFrom(script);
  const int type = numberFrom(script);
  return isAddress(IpodGetFirstItem(descend, type, numberFrom(script)));
}

struct Export {
  const char* name;
  int least;  ///< of the results, like `most`; an address is 1
  int most;
  int (*call)(Script& script);
};

using S = Script;

constexpr Export kCalls[kExports] = {
    {"IpodConnect", 0, 1, [](S&) { return IpodConnect(); }},
    {"IpodDisconnect", 0, 0, [](S&) { return IpodDisconnect(); }},
    {"IpodIsConnect", 0, 1, [](S&) { return IpodIsConnect(); }},
    {"isIpodAudioPresent", INT_MIN, INT_MAX, audioPresent},
    {"IpodSetSameIpod", 0, 0, setSameIpod},
    {"IpodValidateUpDownTree", 0, 0, [](S&) { return IpodValidateUpDownTree(); }},
    {"IpodCommand", 0, 0, command},
    {"IpodSongPlay", 0, 0, [](S& s) { return IpodSongPlay(numberFrom(s)); }},
    {"IpodSongGetNumElem", 0, 0, [](S& s) { return readNumber(s, IpodSongGetNumElem, anything); }},
    {"IpodGetTrackIndex", 0, 1, [](S& s) { return readNumber(s, IpodGetTrackIndex, anything); }},
    {"IpodSetShuffleMode", 0, 0, [](S& s) { return IpodSetShuffleMode(numberFrom(s)); }},
    {"IpodGetShuffleMode", 0, 0, [](S& s) { return readNumber(s, IpodGetShuffleMode, isMode); }},
    {"IpodSetRepeatMode", 0, 0, [](S& s) { return IpodSetRepeatMode(numberFrom(s)); }},
    {"IpodGetRepeatMode", 0, 0, [](S& s) { return readNumber(s, IpodGetRepeatMode, isMode); }},
    {"IpodGetCurrentPlayStatus", 0, 0,
     [](S& s) { return readNumber(s, IpodGetCurrentPlayStatus, isStatus); }},
    {"IpodGetCurrentTrackPosition", 0, 0,
     [](S& s) { return readNumber(s, IpodGetCurrentTrackPosition, anything); }},
    {"IpodGetFirstItem", 0, 1, firstItem},
    {"IpodGetNextItem", 0, 1, [](S&) { return isAddress(IpodGetNextItem()); }},
    {"IpodGetPrevItem", 0, 1, [](S&) { return isAddress(IpodGetPrevItem()); }},
    {"IpodGetParentItem", 0, 1, [](S&) { return isAddress(IpodGetParentItem()); }},
    {"IpodCurItemIsEmpty", 0, 1, [](S&) { return IpodCurItemIsEmpty(); }},
    {"IpodIsPlayAll", 0, 1, [](S&) { return IpodIsPlayAll(); }},
    {"IpodIsTrack", 0, 1, [](S&) { return IpodIsTrack(); }},
    {"IpodGetType", -1, IPOD_TYPE_8, [](S&) { return IpodGetType(); }},
    {"IpodIsTabActive", 0, 1, [](S&) { return IpodIsTabActive(); }},
    {"IpodIsTabVisualizationActive", 0, 1, [](S&) { return IpodIsTabVisualizationActive(); }},
    {"IpodDisableTabVisualizationActive", 0, 0,
     [](S&) { return IpodDisableTabVisualizationActive(); }},
    {"IpodEnableTabVisualizationActive", 0, 0,
     [](S&) { return IpodEnableTabVisualizationActive(); }},
    {"IpodGetMediaFileCount", 0, 0,
     [](S& s) { return readNumber(s, IpodGetMediaFileCount, anything); }},
    {"IpodGetNumberOfPlaylist", INT_MIN, INT_MAX, [](S&) { return IpodGetNumberOfPlaylist(); }},
    {"IpodGetItemName", 0, 0, [](S& s) { return readTexts(s, IpodGetItemName); }},
    {"IpodGetParentUpDownName", 0, 0, [](S& s) { return readTexts(s, IpodGetParentUpDownName); }},
    {"IpodGetTrackInfo", -1, 0, readTrackInfo},
    {"IpodGetName", 0, 0, [](S& s) { return readText(s, IpodGetName); }},
    {"IpodGetSerialNumber", 0, 0, [](S& s) { return readText(s, IpodGetSerialNumber); }},
};

}  // namespace

void callExport(uint8_t number, Script arguments) {
  const Export& each = kCalls[number];
  const int result = each.call(arguments);
  require(result >= each.least && result <= each.most,
          [&] { return std::string(each.name) + " returned " + std::to_string(result); });
}

const char* exportName(uint8_t number) { return kCalls[number].name; }

bool isGroupStep(uint8_t number, Script arguments) {
  if (kCalls[number].call != command) return false;
  const int wanted = numberFrom(arguments);
  return wanted == IPOD_PREVIOUS_GROUP || wanted == IPOD_NEXT_GROUP;
}
