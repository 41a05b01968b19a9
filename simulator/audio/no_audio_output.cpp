// For a build without the libraries that decode and convert.
#include "audio/audio_output.h"

namespace simulator {
namespace {

class NoAudioOutput final : public AudioOutput {
 public:
  void follow(PtyIpod&) override {}
  void start(const std::filesystem::path&,
             const std::function<void(const std::string&)>&) override {}
};

}  // namespace

std::unique_ptr<AudioOutput> makeAudioOutput() { return std::make_unique<NoAudioOutput>(); }

}  // namespace simulator
