// Calls the library's functions in the order that a file names, and writes each call with its
// results. A file that it wrote is also a file that it reads.

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "ipodctl.h"

namespace {

constexpr int kUnwritten = -77;
constexpr unsigned short kUnwrittenUnit = 0xEEEE;
constexpr int kMostUnits = 4096;

using Arguments = std::vector<int>;

/// A number that a function writes.
class Number {
 public:
  explicit Number(const char* ofOutput) : name(ofOutput) {}
  int* place() { return &value; }
  std::string text() const {
    return std::string(" ") + name + "=" +
           (value == kUnwritten ? "unwritten" : std::to_string(value));
  }

 private:
  const char* name;
  int value = kUnwritten;
};

std::string unitText(unsigned short unit) {
  if (unit >= ' ' && unit <= '~' && unit != '"' && unit != '\\') {
    return std::string(1, static_cast<char>(unit));
  }
  char escaped[8];
  std::snprintf(escaped, sizeof escaped, "\\u%04X", unit);
  return escaped;
}

/// A text that a function writes, with a guard after its end.
class Text {
 public:
  Text(const char* ofOutput, int maxChars)
      : name(ofOutput),
        size(maxChars > 0 ? static_cast<size_t>(maxChars) : 0),
        units(size + 1, kUnwrittenUnit) {}

  unsigned short* place() { return units.data(); }

  std::string text() const {
    size_t end = size;
    while (end > 0 && units[end - 1] == kUnwrittenUnit)
      --end;
    std::string shown = std::string(" ") + name + "=\"";
    for (size_t i = 0; i < end; ++i)
      shown += unitText(units[i]);
    return shown + "\"" + (units.back() == kUnwrittenUnit ? "" : " (overrun)");
  }

 private:
  const char* name;
  size_t size;
  std::vector<unsigned short> units;
};

std::string indexText(const int* index) { return index ? std::to_string(*index) : "null"; }

template <int (*kFunction)(int*)>
std::string withNumber(const Arguments&) {
  Number number("out");
  const int result = kFunction(number.place());
  return std::to_string(result) + number.text();
}

template <int (*kFunction)(void)>
std::string plain(const Arguments&) {
  return std::to_string(kFunction());
}

template <int (*kFunction)(int)>
std::string withMode(const Arguments& given) {
  return std::to_string(kFunction(given[0]));
}

template <const int* (*kFunction)(void)>
std::string moving(const Arguments&) {
  return indexText(kFunction());
}

template <int (*kFunction)(unsigned short*, int)>
std::string withText(const Arguments& given) {
  Text text("text", given[0]);
  const int result = kFunction(text.place(), given[0]);
  return std::to_string(result) + text.text();
}

template <int (*kFunction)(int, unsigned short*, unsigned short*, int)>
std::string withTwoTexts(const Arguments& given) {
  Text first("first", given[0]);
  Text second("second", given[0]);
  const int result = kFunction(0, first.place(), second.place(), given[0]);
  return std::to_string(result) + first.text() + second.text();
}

std::string trackInfo(const Arguments& given) {
  Number index("index");
  Text artist("artist", given[0]);
  Text album("album", given[0]);
  Text title("title", given[0]);
  Text genre("genre", given[0]);
  Text fifth("fifth", given[0]);
  const int result = IpodGetTrackInfo(index.place(), artist.place(), album.place(), title.place(),
                                      genre.place(), fifth.place(), given[0]);
  return std::to_string(result) + index.text() + artist.text() + album.text() + title.text() +
         genre.text() + fifth.text();
}

std::string waitFor(const Arguments& given) {
  std::this_thread::sleep_for(std::chrono::milliseconds(given[0]));
  return {};
}

struct Call {
  const char* name;
  size_t arguments;
  std::string (*run)(const Arguments& given);
};

constexpr Call kCalls[] = {
    {"wait", 1, waitFor},
    {"IpodConnect", 0, plain<IpodConnect>},
    {"IpodDisconnect", 0, plain<IpodDisconnect>},
    {"IpodIsConnect", 0, plain<IpodIsConnect>},
    {"isIpodAudioPresent", 4,
     [](const Arguments& given) {
       return std::to_string(isIpodAudioPresent(given[0], given[1], given[2], given[3]));
     }},
    {"IpodSetSameIpod", 1,
     [](const Arguments& given) {
       IpodSetSameIpod(given[0]);
       return std::string("done");
     }},
    {"IpodValidateUpDownTree", 0, plain<IpodValidateUpDownTree>},
    {"IpodCommand", 1, withMode<IpodCommand>},
    {"IpodSongPlay", 1, withMode<IpodSongPlay>},
    {"IpodSongGetNumElem", 0, withNumber<IpodSongGetNumElem>},
    {"IpodGetTrackIndex", 0, withNumber<IpodGetTrackIndex>},
    {"IpodSetShuffleMode", 1, withMode<IpodSetShuffleMode>},
    {"IpodGetShuffleMode", 0, withNumber<IpodGetShuffleMode>},
    {"IpodSetRepeatMode", 1, withMode<IpodSetRepeatMode>},
    {"IpodGetRepeatMode", 0, withNumber<IpodGetRepeatMode>},
    {"IpodGetCurrentPlayStatus", 0, withNumber<IpodGetCurrentPlayStatus>},
    {"IpodGetCurrentTrackPosition", 0, withNumber<IpodGetCurrentTrackPosition>},
    {"IpodGetFirstItem", 3,
     [](const Arguments& given) {
       return indexText(IpodGetFirstItem(given[0], given[1], given[2]));
     }},
    {"IpodGetNextItem", 0, moving<IpodGetNextItem>},
    {"IpodGetPrevItem", 0, moving<IpodGetPrevItem>},
    {"IpodGetParentItem", 0, moving<IpodGetParentItem>},
    {"IpodCurItemIsEmpty", 0, plain<IpodCurItemIsEmpty>},
    {"IpodIsPlayAll", 0, plain<IpodIsPlayAll>},
    {"IpodIsTrack", 0, plain<IpodIsTrack>},
    {"IpodGetType", 0, plain<IpodGetType>},
    {"IpodIsTabActive", 0, plain<IpodIsTabActive>},
    {"IpodIsTabVisualizationActive", 0, plain<IpodIsTabVisualizationActive>},
    {"IpodDisableTabVisualizationActive", 0, plain<IpodDisableTabVisualizationActive>},
    {"IpodEnableTabVisualizationActive", 0, plain<IpodEnableTabVisualizationActive>},
    {"IpodGetMediaFileCount", 0, withNumber<IpodGetMediaFileCount>},
    {"IpodGetNumberOfPlaylist", 0, plain<IpodGetNumberOfPlaylist>},
    {"IpodGetItemName", 1, withTwoTexts<IpodGetItemName>},
    {"IpodGetParentUpDownName", 1, withTwoTexts<IpodGetParentUpDownName>},
    {"IpodGetTrackInfo", 1, trackInfo},
    {"IpodGetName", 1, withText<IpodGetName>},
    {"IpodGetSerialNumber", 1, withText<IpodGetSerialNumber>},
};

/// A line such as "IpodGetFirstItem(0, 2, 0) = -1". What follows the parenthesis is ignored.
struct Line {
  std::string name;
  Arguments given;
};

bool readArguments(std::string inside, Arguments& given) {
  while (!inside.empty()) {
    size_t used = 0;
    try {
      given.push_back(std::stoi(inside, &used));
    } catch (const std::exception&) {
      return false;
    }
    inside.erase(0, used);
    inside.erase(0, inside.find_first_not_of(", ") == std::string::npos
                        ? inside.size()
                        : inside.find_first_not_of(", "));
  }
  return true;
}

bool readLine(const std::string& text, Line& line) {
  const size_t open = text.find('(');
  const size_t close = text.find(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return false;
  line.name = text.substr(0, open);
  return readArguments(text.substr(open + 1, close - open - 1), line.given);
}

const Call* findCall(const Line& line) {
  for (const Call& call : kCalls) {
    if (line.name == call.name && line.given.size() == call.arguments) return &call;
  }
  return nullptr;
}

std::string callText(const Line& line) {
  std::string text = line.name + "(";
  for (size_t i = 0; i < line.given.size(); ++i)
    text += (i == 0 ? "" : ", ") + std::to_string(line.given[i]);
  return text + ")";
}

bool isHarmless(const Line& line) {
  const bool isText = line.name.find("Name") != std::string::npos ||
                      line.name.find("Info") != std::string::npos ||
                      line.name.find("Serial") != std::string::npos;
  return !isText || line.given.empty() || (line.given[0] >= 0 && line.given[0] <= kMostUnits);
}

bool runLine(const std::string& text, std::ostream& output) {
  Line line;
  const Call* const call = readLine(text, line) ? findCall(line) : nullptr;
  if (call == nullptr || !isHarmless(line)) {
    std::cerr << "calls_driver: this is not a call that it knows: " << text << '\n';
    return false;
  }
  const std::string result = call->run(line.given);
  output << callText(line) << (result.empty() ? "" : " = ") << result << std::endl;
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: calls_driver CALLS OUTPUT\n"
                 "CALLS has a call in each line, as OUTPUT then has; the results are ignored.\n";
    return 2;
  }
  std::ifstream calls(argv[1]);
  std::vector<std::string> lines;
  for (std::string text; std::getline(calls, text);)
    lines.push_back(text);
  std::ofstream output(argv[2]);
  if (lines.empty() || !output) {
    std::cerr << "calls_driver: cannot read " << argv[1] << " or write " << argv[2] << '\n';
    return 2;
  }
  for (const std::string& text : lines) {
    const bool isComment = text.empty() || text[0] == '#';
    if (isComment) {
      output << text << std::endl;
    } else if (!runLine(text, output)) {
      return 2;
    }
  }
  return 0;
}
