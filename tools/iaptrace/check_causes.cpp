#include "iaptrace/check_causes.h"

#include <algorithm>
#include <iterator>

#include "iaptrace/check_stage.h"

namespace iaptrace::checking {
namespace {

constexpr Cause kCauses[] = {
    {"device-missing",
     "The device could not be opened because there is none of this name. Nothing was sent.",
     "Plug in the iPod, and see whether the driver has the device under this name. On Linux, map "
     "the name in IPODCTL_DEVICES."},
    {"device-busy",
     "The device could not be opened because something else has it open, or this user may not open "
     "it. Nothing was sent.",
     "End the other program that uses the device, or let the user open it."},
    {"silent",
     "The host announced itself, but received not a single byte. The device is open, but nobody "
     "answers at its other end.",
     "Check that the iPod is plugged in and awake, and the cable. On a serial line, check the "
     "speed "
     "and whether the device is mapped as a serial line, so that frames begin with FF."},
    {"wrong-speed",
     "Bytes arrived, but not one frame can be cut out of them. This is what a serial line looks "
     "like when its ends have different speeds.",
     "Set the line to the speed of the iPod; most models use 57600."},
    {"sync-missing",
     "The host's frames begin with 55, but this line needs the byte FF before each frame. The iPod "
     "ignores frames without it.",
     "Map the device as a serial line, such as IPD1:=serial:/dev/ttyUSB0@57600."},
    {"sync-extra",
     "The host sends the byte FF before each frame, but on a stream frames begin with 55. A driver "
     "may ignore such frames or take them for damaged ones.",
     "Map the device without serial:, as the stream driver. If it is a serial line, check that the "
     "iPod is plugged in."},
    {"bad-checksum",
     "A frame arrived with a wrong checksum or without its end. The library closes the link after "
     "such a frame.",
     "Connect again. If it happens often, replace the cable, keep it away from other lines, and "
     "check the speed of a serial line."},
    {"identification-refused",
     "The iPod refused the host's announcement of its lingoes. It does not accept this accessory, "
     "demands authentication, or was not disconnected since an earlier announcement.",
     "Unplug the iPod, plug it in again and connect once. If it still refuses, this model cannot "
     "be "
     "used."},
    {"no-digital-audio",
     "The iPod does not know the Digital Audio lingo, or does not use it. The host needs it and "
     "gives up.",
     "Use a model that sends its audio over USB. This one can only be controlled by a host that "
     "announces no digital audio."},
    {"stopped-at-",
     "The connection went as far as the stage in the name, and not further. At this stage the iPod "
     "did not send what the host waits for.",
     "Unplug the iPod, plug it in again and connect. If it stops at the same stage again, restart "
     "the iPod."},
    {"mode-change-pending",
     "The iPod had acknowledged the Extended Interface mode only as pending when the host sent "
     "the next request. That request was lost or refused.",
     "Let the host wait a second after it has connected before it sends the first request."},
    {"answers-shifted",
     "A message arrived late, twice or unasked during a request, and the host took it for the "
     "answer. Since then it has taken each answer for that of the next request.",
     "Let the host make no call for a second, then ask again."},
    {"text-too-long",
     "The iPod sent a text that does not fit into a frame of 255 bytes. The library rejects the "
     "long frame and closes the link.",
     "Shorten the title, artist, album or name in the iPod's music: at most 247 bytes in a list."},
    {"rate-not-acknowledged",
     "The iPod announced the sample rate of its audio, and the host did not acknowledge it. Some "
     "models then send no audio, or no notifications.",
     "Let the host connect without a logo, and see whether the acknowledgement follows. Restart "
     "the "
     "host if it does not."},
    {"rate-not-followed",
     "The audio library plays at another sample rate than the iPod announced. The music sounds too "
     "high or too low, or stutters.",
     "Check that the host passes each new rate to the audio library."},
    {"lost-after-",
     "The iPod answered up to the stage in the name and was then lost. The device failed, or "
     "nothing was answered any more.",
     "Check the plug and the cable, and the iPod's battery. Then let the host disconnect and "
     "connect again."},
    {"list-short",
     "The iPod sent fewer records of a list than the host asked for. The host waits a second "
     "for the missing ones, and the list has gaps.",
     "Open the list again. If it stays short, synchronise the iPod's music again."},
    {"unknown", "Something went wrong that fits none of the causes. The lines show it.",
     "Look at the lines with iaptrace decode, and attach the trace to a report (iaptrace redact "
     "replaces the names in it)."},
};

void appendStages(std::string& help, const char* prefix, const std::vector<Stage>& stages) {
  constexpr size_t kColumn = 30;
  for (const Stage stage : stages) {
    std::string name = std::string("  ") + prefix + nameOf(stage);
    name.resize(std::max(name.size() + 1, kColumn), ' ');
    help += name + meaningOf(stage) + "\n";
  }
}

}  // namespace

const Cause& causeOf(std::string_view id) {
  const auto fits = [&](const Cause& cause) {
    return cause.id.back() == '-' ? id.substr(0, cause.id.size()) == cause.id : id == cause.id;
  };
  const auto found = std::find_if(std::begin(kCauses), std::end(kCauses), fits);
  return found == std::end(kCauses) ? *std::prev(std::end(kCauses)) : *found;
}

std::string wrapped(std::string_view words) {
  constexpr size_t kWidth = 78;
  std::string text;
  while (!words.empty()) {
    size_t size = words.size() <= kWidth ? words.size() : words.rfind(' ', kWidth);
    if (size == std::string_view::npos) size = words.size();
    text += "  " + std::string(words.substr(0, size)) + "\n";
    words.remove_prefix(std::min(words.size(), size + 1));
  }
  return text;
}

std::string explanationOf(const Cause& cause) {
  return wrapped(cause.meaning) + wrapped("try: " + std::string(cause.whatToTry));
}

std::string causesHelp() {
  std::string help = "The causes that iaptrace check reports:\n\n";
  for (const Cause& cause : kCauses) {
    help += std::string(cause.id) + (cause.id.back() == '-' ? "STAGE" : "") + "\n";
    help += explanationOf(cause) + "\n";
  }
  help += "The stages, in their order. A connection stops at one of these:\n\n";
  appendStages(help, "stopped-at-", stagesThatStop());
  help += "\nAn iPod is lost after one of these:\n\n";
  appendStages(help, "lost-after-", stagesBeforeALoss());
  return help;
}

}  // namespace iaptrace::checking
