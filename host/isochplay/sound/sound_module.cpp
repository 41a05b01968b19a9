#include "sound_module.h"

#include <unistd.h>

#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>

#include "alsa_output.h"
#include "complaint.h"
#include "stream.h"
#include "wav_output.h"

namespace isochplay {
namespace {

constexpr std::chrono::seconds kMostSecondsToFinish{2};

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() > end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

/// Returns null when there is none of this name.
std::unique_ptr<Output> makeOutput(const std::string& wanted) {
  constexpr char kAlsaPrefix[] = "alsa:";
  if (wanted == "alsa" || wanted == "default") return makeAlsaOutput("default");
  if (wanted.rfind(kAlsaPrefix, 0) == 0)
    return makeAlsaOutput(wanted.substr(sizeof kAlsaPrefix - 1));
  if (endsWith(wanted, ".wav")) return makeWavOutput(wanted);
  complainOnce("\"" + wanted + "\" is not an output; write alsa, or the name of a .wav file");
  return nullptr;
}

/// The sound of this process.
class Sound {
 public:
  void use(const std::string& wanted) {
    const std::lock_guard lock(mutex);
    if (wanted == current) return;
    finishStream();
    current = wanted;
    owner = getpid();
    try {
      std::unique_ptr<Output> output = wanted.empty() ? nullptr : makeOutput(wanted);
      if (output) stream = Stream::make(std::move(output));
    } catch (const std::system_error&) {
      complainOnce("the system makes no more threads; end other programs, and connect again");
    }
  }

  /// Returns null when there is no output, and in a process that was forked: the threads are in its
  /// parent.
  std::shared_ptr<Stream> get() {
    const std::lock_guard lock(mutex);
    return owner == getpid() ? stream : nullptr;
  }

  void finish() {
    const std::lock_guard lock(mutex);
    finishStream();
  }

 private:
  void finishStream() {
    if (stream && owner == getpid()) stream->finish(kMostSecondsToFinish);
    stream.reset();
  }

  std::mutex mutex;  ///< guards everything below
  std::string current;
  pid_t owner = 0;
  std::shared_ptr<Stream> stream;
};

/// Never destroyed: threads may still call while the process ends.
Sound& sound() {
  static auto& ofProcess = *new Sound;
  return ofProcess;
}

void pass(const IsochplayCall& call, Stream& stream) {
  switch (call.function) {
    case kSelectZeroBandwithInterface:
      return stream.selectBandwidth(false);
    case kSelectFullBandwithInterface:
      return stream.selectBandwidth(true);
    case kStartIpodAudioPlay:
      if (call.format != nullptr) stream.start(static_cast<int>(call.format->nSamplesPerSec));
      return;
    case kStopIpodAudioPlay:
      return stream.stop();
    case kSelectFrequency:
      return stream.setRate(call.sampleRate);
    case kIpodAudioPresent:
      return;
  }
}

/// At the end of the process.
__attribute__((destructor)) void writeTheRest() { sound().finish(); }

}  // namespace
}  // namespace isochplay

extern "C" __attribute__((visibility("default"))) void isochplaySound(const IsochplayCall* call,
                                                                      const char* wanted) {
  using isochplay::sound;
  const bool isBandwidth = call->function == kSelectZeroBandwithInterface ||
                           call->function == kSelectFullBandwithInterface;
  if (isBandwidth) sound().use(wanted);
  if (const auto stream = sound().get()) isochplay::pass(*call, *stream);
}
