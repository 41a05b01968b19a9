#include "iaptrace/timeline.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>
#include <sstream>

#include "iaptrace/annotation.h"
#include "iaptrace/time_text.h"
#include "wire/command_layout.h"
#include "wire/command_names.h"
#include "wire/printable.h"

namespace iaptrace {
namespace {

// All numbers are pixels.
constexpr double kWidth = 1200;
constexpr double kLeft = 140;
constexpr double kRight = 1170;
constexpr double kStagesTop = 78;
constexpr double kStagesHeight = 26;
constexpr double kLatencyTop = 150;
constexpr double kLatencyHeight = 230;
constexpr double kLanesTop = 430;
constexpr double kLaneHeight = 48;
constexpr double kBytesHeight = 90;
constexpr double kBinWidth = 5;

constexpr char kHostColour[] = "#2563eb";
constexpr char kIpodColour[] = "#0d9488";
constexpr char kFaultColour[] = "#dc2626";
constexpr char kUnaskedColour[] = "#d97706";

/// Makes a text safe inside XML. What XML cannot contain is escaped by printable().
std::string xml(const std::string& text) {
  std::string safe;
  for (const char one : simulator::printable(text)) {
    switch (one) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += one;
    }
  }
  return safe;
}

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f", value);
  return text;
}

std::string secondsText(trace::Time at) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f s", static_cast<double>(at.count()) / 1e6);
  return text;
}

std::string msText(trace::Time latency) { return millisecondsText(latency); }

std::string laneName(uint8_t lingo) {
  const char* name = simulator::lingoName(lingo);
  return name != nullptr ? name : "other lingoes";
}

class Drawing {
 public:
  Drawing(const Conversation& conversation, const Exchanges& pairs, const Statistics& numbers,
          const std::string& deviceName)
      : items(conversation),
        exchanges(pairs),
        statistics(numbers),
        notes(annotate(conversation, pairs)),
        device(deviceName) {
    for (const Item& item : items) {
      if (item.isMessage()) lanes.insert(laneName(item.message.lingo));
    }
    const double seconds = static_cast<double>(statistics.duration.count()) / 1e6;
    longest = std::max(seconds, 0.001);
    bytesTop =
        kLanesTop + kLaneHeight * static_cast<double>(std::max<size_t>(lanes.size(), 1)) + 50;
    height = bytesTop + kBytesHeight + 60;
  }

  std::string draw() {
    begin();
    heading();
    timeGrid();
    stages();
    latencies();
    messages();
    byteBars();
    events();
    out << "</svg>\n";
    return out.str();
  }

 private:
  double x(trace::Time at) const {
    return kLeft + (kRight - kLeft) * static_cast<double>(at.count()) / 1e6 / longest;
  }

  /// From 0.01 ms at the bottom to 10 s at the top.
  static double y(trace::Time latency) {
    const double ms = std::clamp(static_cast<double>(latency.count()) / 1000, 0.01, 10000.0);
    return kLatencyTop + kLatencyHeight * (1 - (std::log10(ms) + 2) / 6);
  }

  void begin() {
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << number(kWidth) << "\" height=\""
        << number(height) << "\" viewBox=\"0 0 " << number(kWidth) << ' ' << number(height)
        << "\" font-family=\"Helvetica, Arial, sans-serif\" font-size=\"12\" fill=\"#334155\">\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
  }

  void text(double atX, double atY, const std::string& content, const char* style = "") {
    out << "<text x=\"" << number(atX) << "\" y=\"" << number(atY) << "\" " << style << '>'
        << xml(content) << "</text>\n";
  }

  void line(double x1, double y1, double x2, double y2, const char* style) {
    out << "<line x1=\"" << number(x1) << "\" y1=\"" << number(y1) << "\" x2=\"" << number(x2)
        << "\" y2=\"" << number(y2) << "\" " << style << "/>\n";
  }

  void rectangle(double left, double top, double wide, double high, const std::string& style,
                 const std::string& title) {
    out << "<rect x=\"" << number(left) << "\" y=\"" << number(top) << "\" width=\"" << number(wide)
        << "\" height=\"" << number(high) << "\" " << style << "><title>" << xml(title)
        << "</title></rect>\n";
  }

  size_t failures() const {
    size_t count = statistics.unexpected;
    for (const CommandStatistics& each : statistics.commands)
      count += each.failures();
    return count;
  }

  void heading() {
    const size_t count = statistics.fromHost.messages + statistics.fromIpod.messages;
    text(24, 34, device.empty() ? "a trace without a device" : device,
         "font-size=\"20\" font-weight=\"bold\" fill=\"#0f172a\"");
    text(24, 56,
         secondsText(statistics.duration) + ", " + std::to_string(count) + " messages, " +
             std::to_string(statistics.fromHost.damaged + statistics.fromIpod.damaged) +
             " damaged frames, " + std::to_string(failures()) +
             (failures() == 1 ? " failure" : " failures"));
    const struct {
      const char* colour;
      const char* name;
    } legend[] = {{kHostColour, "host"},
                  {kIpodColour, "iPod"},
                  {kUnaskedColour, "unsolicited"},
                  {kFaultColour, "refused, unanswered, damaged"}};
    double at = 740;
    for (const auto& each : legend) {
      out << "<circle cx=\"" << number(at) << "\" cy=\"30\" r=\"5\" fill=\"" << each.colour
          << "\"/>\n";
      text(at + 10, 34, each.name);
      at += 34 + 6.2 * static_cast<double>(std::string(each.name).size());
    }
  }

  void timeGrid() {
    const double wanted = longest / 10;
    double step = std::pow(10, std::floor(std::log10(wanted)));
    if (step * 5 < wanted) {
      step *= 10;
    } else if (step * 2 < wanted) {
      step *= 5;
    } else if (step < wanted) {
      step *= 2;
    }
    for (int i = 0; i * step <= longest; ++i) {
      const double at = kLeft + (kRight - kLeft) * i * step / longest;
      line(at, kStagesTop, at, bytesTop + kBytesHeight, "stroke=\"#e2e8f0\"");
      char label[32];
      std::snprintf(label, sizeof label, "%g s", i * step);
      text(at, bytesTop + kBytesHeight + 20, label, "text-anchor=\"middle\"");
    }
  }

  void stages() {
    static constexpr const char* kColours[] = {"#dbeafe", "#bfdbfe", "#ddd6fe", "#fbcfe8",
                                               "#fed7aa", "#bbf7d0", "#a7f3d0"};
    text(24, kStagesTop + 17, "connecting", "font-weight=\"bold\"");
    for (const ConnectionStatistics& each : statistics.connections) {
      trace::Time from = each.opened;
      size_t colour = 0;
      for (const Milestone& step : each.milestones) {
        const double wide = std::max(1.0, x(step.at) - x(from));
        const std::string style =
            std::string("fill=\"") + kColours[colour++ % std::size(kColours)] + '"';
        rectangle(x(from), kStagesTop, wide, kStagesHeight, style,
                  step.stage + " after " + msText(step.at - each.opened));
        if (wide > 7.0 * static_cast<double>(step.stage.size()) + 6) {
          text(x(from) + 4, kStagesTop + 17, step.stage);
        }
        from = step.at;
      }
      if (each.isConnected) {
        text(x(from) + 6, kStagesTop + 17, "connected after " + msText(from - each.opened),
             "fill=\"#15803d\"");
      }
    }
  }

  void latencies() {
    text(24, kLatencyTop - 8, "latency", "font-weight=\"bold\"");
    text(24, kLatencyTop + 8, "of each");
    text(24, kLatencyTop + 24, "request");
    static constexpr struct {
      int64_t micros;
      const char* label;
    } kMarks[] = {{10, "0.01 ms"},   {100, "0.1 ms"},  {1000, "1 ms"},    {10000, "10 ms"},
                  {100000, "0.1 s"}, {1000000, "1 s"}, {10000000, "10 s"}};
    for (const auto& each : kMarks) {
      const double at = y(trace::Time(each.micros));
      line(kLeft, at, kRight, at, "stroke=\"#e2e8f0\"");
      text(kLeft - 8, at + 4, each.label, "text-anchor=\"end\" fill=\"#64748b\"");
    }
    text(kLeft - 8, kLatencyTop - 8, "none", "text-anchor=\"end\" fill=\"#dc2626\"");
    for (const Exchange& exchange : exchanges.all)
      dotOf(exchange);
  }

  void dotOf(const Exchange& exchange) {
    const Item& request = items[exchange.request];
    const bool isUnanswered = notes[exchange.request].isUnanswered;
    const bool isRefused = !isUnanswered && notes[exchange.replies.back()].isRefusal;
    const trace::Time latency =
        isUnanswered ? trace::Time(0) : notes[exchange.replies.back()].latency;
    const char* const colour = isUnanswered || isRefused         ? kFaultColour
                               : request.sender == Sender::kHost ? kHostColour
                                                                 : kIpodColour;
    const double atY = isUnanswered ? kLatencyTop - 12 : y(latency);
    if (!isNew(x(request.at), atY, colour)) return;
    const std::string title =
        std::string(simulator::commandName(request.message)) + " at " + secondsText(request.at) +
        (isUnanswered ? ", no answer" : ", " + msText(latency)) + (isRefused ? ", refused" : "");
    out << "<circle cx=\"" << number(x(request.at)) << "\" cy=\"" << number(atY)
        << "\" r=\"3\" fill=\"" << colour << "\" fill-opacity=\"0.7\"><title>" << xml(title)
        << "</title></circle>\n";
  }

  /// Returns whether nothing of this colour is there: a long trace has many equal dots.
  bool isNew(double atX, double atY, const std::string& colour) {
    return drawn.insert(number(atX) + '/' + number(atY) + colour).second;
  }

  void messages() {
    text(24, kLanesTop - 20, "messages", "font-weight=\"bold\"");
    double middle = kLanesTop + kLaneHeight / 2;
    for (const std::string& lane : lanes) {
      text(24, middle + 4, lane);
      line(kLeft, middle, kRight, middle, "stroke=\"#cbd5e1\"");
      for (size_t i = 0; i < items.size(); ++i) {
        if (items[i].isMessage() && laneName(items[i].message.lingo) == lane) tickOf(i, middle);
      }
      middle += kLaneHeight;
    }
    for (const Item& item : items) {
      const bool isDamage = item.kind != Item::Kind::kEvent && !item.isMessage();
      if (isDamage && isNew(x(item.at), kLanesTop, kFaultColour)) {
        line(x(item.at), kLanesTop - 6, x(item.at), bytesTop - 40,
             "stroke=\"#dc2626\" stroke-dasharray=\"3 2\"");
      }
    }
  }

  /// Messages of the host are above the line, those of the iPod below.
  void tickOf(size_t index, double middle) {
    const Item& item = items[index];
    const Annotation& note = notes[index];
    const bool isHost = item.sender == Sender::kHost;
    const bool isFault =
        note.isRefusal || note.isUnanswered || note.isUnexpected || note.isOutOfTurn;
    const char* const colour = isFault              ? kFaultColour
                               : note.isUnsolicited ? kUnaskedColour
                               : isHost             ? kHostColour
                                                    : kIpodColour;
    const double end = middle + (isHost ? -18 : 18);
    if (!isNew(x(item.at), end, colour)) return;
    const std::string style = std::string("fill=\"") + colour + '"';
    rectangle(x(item.at) - 0.6, std::min(middle, end), 1.2, 18, style,
              std::string(simulator::commandName(item.message)) + " at " + secondsText(item.at));
  }

  void byteBars() {
    text(24, bytesTop - 8, "bytes", "font-weight=\"bold\"");
    const auto bins = static_cast<size_t>((kRight - kLeft) / kBinWidth) + 1;
    std::vector<size_t> host(bins);
    std::vector<size_t> ipod(bins);
    for (const Item& item : items) {
      if (item.kind == Item::Kind::kEvent) continue;
      const auto bin = std::min(bins - 1, static_cast<size_t>((x(item.at) - kLeft) / kBinWidth));
      (item.sender == Sender::kHost ? host : ipod)[bin] += item.bytes.size();
    }
    const size_t most = std::max<size_t>({*std::max_element(host.begin(), host.end()),
                                          *std::max_element(ipod.begin(), ipod.end()), 1});
    const double middle = bytesTop + kBytesHeight / 2;
    for (size_t i = 0; i < bins; ++i) {
      bar(i, host[i], most, middle, true);
      bar(i, ipod[i], most, middle, false);
    }
    line(kLeft, middle, kRight, middle, "stroke=\"#cbd5e1\"");
    text(24, middle - 8, std::to_string(statistics.fromHost.bytes) + " sent");
    text(24, middle + 18, std::to_string(statistics.fromIpod.bytes) + " received");
  }

  void bar(size_t bin, size_t bytes, size_t most, double middle, bool isHost) {
    if (bytes == 0) return;
    const double high =
        std::max(1.0, kBytesHeight / 2 * static_cast<double>(bytes) / static_cast<double>(most));
    const std::string style =
        std::string("fill=\"") + (isHost ? kHostColour : kIpodColour) + "\" fill-opacity=\"0.8\"";
    rectangle(kLeft + static_cast<double>(bin) * kBinWidth, isHost ? middle - high : middle,
              kBinWidth - 1, high, style, std::to_string(bytes) + " bytes");
  }

  void events() {
    double labelEnd = 0;
    for (const Item& item : items) {
      if (item.kind != Item::Kind::kEvent) continue;
      const auto kind = item.event->kind;
      const bool isFault = kind == trace::Record::Kind::kOpenFailed ||
                           kind == trace::Record::Kind::kReadFailed ||
                           kind == trace::Record::Kind::kWriteFailed;
      if (!isNew(x(item.at), kStagesTop, isFault ? kFaultColour : "event")) continue;
      line(x(item.at), kStagesTop + kStagesHeight, x(item.at), bytesTop + kBytesHeight,
           isFault ? "stroke=\"#dc2626\"" : "stroke=\"#94a3b8\" stroke-dasharray=\"2 3\"");
      const std::string name = eventName(*item.event);
      const double wide = 7.0 * static_cast<double>(name.size());
      const double from = std::min(x(item.at) + 3, kRight - wide);
      if (from < labelEnd) continue;
      labelEnd = from + wide;
      text(from, kStagesTop + kStagesHeight + 14, name,
           isFault ? "fill=\"#dc2626\"" : "fill=\"#64748b\"");
    }
  }

  static std::string eventName(const trace::Record& event) {
    constexpr size_t kMost = 30;
    using Kind = trace::Record::Kind;
    switch (event.kind) {
      case Kind::kOpened:
        return "open";
      case Kind::kOpenFailed:
        return "open failed";
      case Kind::kClosed:
        return "close";
      case Kind::kReadFailed:
        return "read failed";
      case Kind::kWriteFailed:
        return "write failed";
      default:
        return event.call.substr(0, kMost);
    }
  }

  const Conversation& items;
  const Exchanges& exchanges;
  const Statistics& statistics;
  std::vector<Annotation> notes;
  std::string device;
  std::set<std::string> lanes;
  std::set<std::string> drawn;
  double longest = 0;  ///< seconds
  double bytesTop = 0;
  double height = 0;
  std::ostringstream out;
};

}  // namespace

std::string timelineOf(const Conversation& items, const Exchanges& exchanges,
                       const Statistics& statistics, const std::string& device) {
  return Drawing(items, exchanges, statistics, device).draw();
}

}  // namespace iaptrace
