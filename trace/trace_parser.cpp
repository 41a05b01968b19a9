#include "trace/trace_parser.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "trace/trace_line.h"

namespace trace {
namespace {

constexpr std::string_view kMark = "# ipodctl-trace 1";
constexpr size_t kShownText = 40;
constexpr size_t kMostDevices = 100;

/// Returns the text up to the next blank, and removes both.
std::string_view takeWord(std::string_view& text) {
  const size_t end = std::min(text.find(' '), text.size());
  const std::string_view word = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return word;
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (text.substr(0, prefix.size()) != prefix) return false;
  text.remove_prefix(prefix.size());
  return true;
}

template <typename Number>
std::optional<Number> numberOf(std::string_view digits) {
  Number value = 0;
  const auto [end, error] = std::from_chars(digits.begin(), digits.end(), value);
  const bool isWhole = !digits.empty() && error == std::errc() && end == digits.end();
  return isWhole ? std::optional(value) : std::nullopt;
}

/// Reads SECONDS.MICROS. Fewer than six digits after the point are a decimal fraction.
std::optional<Time> timeOf(std::string_view word) {
  constexpr size_t kFraction = 6;
  constexpr uint64_t kMostSeconds = 1000000000;
  const size_t point = word.find('.');
  if (point == std::string_view::npos || word.size() - point - 1 > kFraction) return std::nullopt;
  std::string fraction(word.substr(point + 1));
  if (fraction.empty()) return std::nullopt;
  fraction.resize(kFraction, '0');
  const auto seconds = numberOf<uint64_t>(word.substr(0, point));
  const auto micros = numberOf<uint64_t>(fraction);
  if (!seconds || !micros || *seconds > kMostSeconds) return std::nullopt;
  return std::chrono::seconds(*seconds) + Time(*micros);
}

std::optional<uint8_t> byteOf(std::string_view pair) {
  const auto isHex = [](char one) { return std::isxdigit(static_cast<unsigned char>(one)) != 0; };
  if (pair.size() != 2 || !std::all_of(pair.begin(), pair.end(), isHex)) return std::nullopt;
  uint8_t byte = 0;
  std::from_chars(pair.begin(), pair.end(), byte, 16);
  return byte;
}

/// The text in quotation marks, short and without what a terminal would obey.
std::string quoted(std::string_view text) {
  std::string shown(text.substr(0, kShownText));
  for (char& one : shown) {
    if (one < ' ' || one > '~') one = '?';
  }
  return "\"" + shown + (text.size() > kShownText ? "...\"" : "\"");
}

class Parser {
 public:
  Trace parse(std::string_view text) {
    while (!text.empty()) {
      const size_t end = text.find('\n');
      isCut = end == std::string_view::npos;
      std::string_view content = text.substr(0, end);
      text.remove_prefix(isCut ? text.size() : end + 1);
      if (!content.empty() && content.back() == '\r') content.remove_suffix(1);
      ++line;
      takeLine(content);
    }
    if (line == 0) refuse("the file is empty. Record the session again");
    return std::move(records);
  }

 private:
  [[noreturn]] void refuse(const std::string& why) const {
    throw ParseError((line == 0 ? why : "line " + std::to_string(line) + ": " + why) + ".");
  }

  void takeLine(std::string_view content) {
    if (line == 1) return takeMark(content);
    if (content.empty()) return;
    if (content.front() == '#') return takeEvent(content.substr(1));
    takeData(content);
  }

  void takeMark(std::string_view content) const {
    if (content == kMark) return;
    refuse("a trace begins with \"" + std::string(kMark) + "\", not with " + quoted(content) +
           ". Name a file that a recorder wrote");
  }

  void takeData(std::string_view content) {
    std::string_view rest = content;
    Record record;
    const auto at = timeOf(takeWord(rest));
    record.device = takeWord(rest);
    const std::string_view direction = takeWord(rest);
    const bool isData = direction == "<" || direction == ">";
    if (!at || record.device.empty() || !isData) {
      if (isCut) return;
      refuse("neither data (\"SECONDS.MICROS DEVICE < HEX\", \"... > HEX\") nor a comment: " +
             quoted(content) + ". Correct or remove the line");
    }
    record.kind = direction == "<" ? Record::Kind::kRead : Record::Kind::kWritten;
    while (!rest.empty())
      takeByte(rest, record.bytes);
    if (!record.bytes.empty()) add(std::move(record), *at);
  }

  void takeByte(std::string_view& rest, std::vector<uint8_t>& bytes) const {
    const std::string_view pair = takeWord(rest);
    const auto byte = byteOf(pair);
    if (byte) {
      bytes.push_back(*byte);
    } else if (!(isCut && rest.empty() && pair.size() < 2)) {
      refuse("a byte is two hexadecimal digits, not " + quoted(pair) +
             ". Correct or remove the line");
    }
  }

  /// Reads what follows the '#' of an event. Anything else is a comment.
  void takeEvent(std::string_view content) {
    if (!takePrefix(content, " ")) return;
    const auto at = timeOf(takeWord(content));
    if (!at) return;
    Record record;
    if (takePrefix(content, "audio ")) {
      record.kind = Record::Kind::kAudio;
      record.call = content;
      return add(std::move(record), *at);
    }
    record.device = takeWord(content);
    if (!record.device.empty() && readEvent(content, record)) add(std::move(record), *at);
  }

  static bool readEvent(std::string_view text, Record& record) {
    if (text == "open ok") return setEvent(record, Record::Kind::kOpened);
    if (text == "close") return setEvent(record, Record::Kind::kClosed);
    if (takePrefix(text, "open failed ")) return setCode(record, Record::Kind::kOpenFailed, text);
    if (takePrefix(text, "read-failed ")) return setCode(record, Record::Kind::kReadFailed, text);
    if (takePrefix(text, "write-failed ")) return setCode(record, Record::Kind::kWriteFailed, text);
    return false;
  }

  static bool setEvent(Record& record, Record::Kind kind) {
    record.kind = kind;
    return true;
  }

  static bool setCode(Record& record, Record::Kind kind, std::string_view digits) {
    const auto code = numberOf<uint32_t>(digits);
    record.code = code.value_or(0);
    return code && setEvent(record, kind);
  }

  void add(Record record, Time at) {
    noteDevice(record.device);
    latest = std::max(latest, at);
    record.at = latest;
    record.line = line;
    records.push_back(std::move(record));
  }

  void noteDevice(const std::string& device) {
    const auto known = std::find(devices.begin(), devices.end(), device);
    if (device.empty() || known != devices.end()) return;
    devices.push_back(device);
    if (devices.size() > kMostDevices)
      refuse("there are more than 100 devices. Cut the trace into parts");
  }

  Trace records;
  Time latest{0};
  std::vector<std::string> devices;
  size_t line = 0;
  bool isCut = false;  ///< the line has no end
};

std::string contentOf(std::istream& file, const std::string& name) {
  std::string text;
  char some[65536];
  while (file.read(some, sizeof some) || file.gcount() > 0) {
    text.append(some, static_cast<size_t>(file.gcount()));
    if (text.size() > kLargestFile)
      throw ParseError(name + " is larger than 256 MB. Cut it into parts.");
  }
  if (file.bad())
    throw ParseError(name + " cannot be read. Copy it to another place and try again.");
  return text;
}

}  // namespace

Trace parseTrace(std::string_view text) { return Parser().parse(text); }

std::string readTraceText(const std::string& path) {
  if (path == "-") return contentOf(std::cin, "standard input");
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) {
    throw ParseError(path + " is a folder. Name a trace in it.");
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) throw ParseError(path + " cannot be read. Name a file that exists and is yours.");
  return contentOf(file, path);
}

Trace parseTraceOf(const std::string& path, std::string_view text) {
  try {
    return parseTrace(text);
  } catch (const ParseError& error) {
    throw ParseError((path == "-" ? "standard input" : path) + ": " + error.what());
  }
}

Trace readTrace(const std::string& path) { return parseTraceOf(path, readTraceText(path)); }

}  // namespace trace
