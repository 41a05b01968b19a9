#include "alsa_output.h"

#include <alsa/asoundlib.h>
#include <dlfcn.h>

#include <utility>

#include "complaint.h"

namespace isochplay {
namespace {

constexpr char kLibrary[] = "libasound.so.2";
constexpr unsigned kLatency = 100000;  // microseconds
constexpr int kMayConvertRates = 1;

/// The functions of the library.
struct Alsa {
  decltype(&snd_pcm_open) open = nullptr;
  decltype(&snd_pcm_set_params) setParams = nullptr;
  decltype(&snd_pcm_writei) write = nullptr;
  decltype(&snd_pcm_recover) recover = nullptr;
  decltype(&snd_pcm_drain) drain = nullptr;
  decltype(&snd_pcm_close) close = nullptr;
  decltype(&snd_strerror) errorText = nullptr;
  decltype(&snd_lib_error_set_handler) setErrorHandler = nullptr;

  /// Returns whether all were found.
  bool load() {
    void* const library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
    return library != nullptr && find(library, "snd_pcm_open", open) &&
           find(library, "snd_pcm_set_params", setParams) &&
           find(library, "snd_pcm_writei", write) && find(library, "snd_pcm_recover", recover) &&
           find(library, "snd_pcm_drain", drain) && find(library, "snd_pcm_close", close) &&
           find(library, "snd_strerror", errorText) &&
           find(library, "snd_lib_error_set_handler", setErrorHandler);
  }

 private:
  template <typename Function>
  static bool find(void* library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(dlsym(library, name));
    return function != nullptr;
  }
};

/// ALSA would write several lines.
void ignoreError(const char*, int, const char*, int, const char*, ...) {}

class AlsaOutput final : public Output {
 public:
  explicit AlsaOutput(std::string name) : device(std::move(name)) {
    if (alsa.load()) {
      alsa.setErrorHandler(ignoreError);
    } else {
      fail(std::string("there is no ") + kLibrary + "; install libasound2");
    }
  }
  ~AlsaOutput() override { closeCard(); }

  void start(int startedRate) override { useRate(startedRate); }

  void play(int playedRate, const Frames& frames) override {
    useRate(playedRate);
    // Without this, what the card was late once would be late for ever.
    const size_t most = static_cast<size_t>(playedRate);
    const size_t first = frames.size() > most ? frames.size() - most : 0;
    for (size_t played = first; card != nullptr && played < frames.size();) {
      const snd_pcm_sframes_t done =
          alsa.write(card, frames.data() + played, frames.size() - played);
      if (done >= 0) {
        played += static_cast<size_t>(done);
      } else if (alsa.recover(card, static_cast<int>(done), 1) < 0) {
        fail(alsa.errorText(static_cast<int>(done)));
      }
    }
  }

  void stop() override { closeCard(); }

 private:
  void useRate(int wanted) {
    if (hasFailed || (card != nullptr && wanted == rate)) return;
    closeCard();
    rate = wanted;
    int error = alsa.open(&card, device.c_str(), SND_PCM_STREAM_PLAYBACK, 0);
    if (error < 0) card = nullptr;
    if (error >= 0) {
      error = alsa.setParams(card, SND_PCM_FORMAT_S16, SND_PCM_ACCESS_RW_INTERLEAVED, kChannels,
                             static_cast<unsigned>(rate), kMayConvertRates, kLatency);
    }
    if (error < 0) fail(alsa.errorText(error));
  }

  void closeCard() {
    if (card == nullptr) return;
    alsa.drain(card);
    alsa.close(std::exchange(card, nullptr));
  }

  void fail(const std::string& why) {
    hasFailed = true;
    complainOnce("cannot play on the sound card \"" + device + "\": " + why +
                 "; connect one, or record with IPODCTL_AUDIO=FILE.wav");
    closeCard();
  }

  const std::string device;
  Alsa alsa;
  snd_pcm_t* card = nullptr;
  int rate = 0;  ///< Hz, of the card
  bool hasFailed = false;
};

}  // namespace

std::unique_ptr<Output> makeAlsaOutput(const std::string& device) {
  return std::make_unique<AlsaOutput>(device);
}

}  // namespace isochplay
