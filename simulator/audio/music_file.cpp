#include "audio/music_file.h"

#include <sndfile.h>

#include <algorithm>
#include <vector>

namespace simulator {
namespace {

constexpr int kMostChannels = 64;

/// Closes the file.
struct Closer {
  void operator()(SNDFILE* file) const { sf_close(file); }
};

class MusicFile final : public SampleSource {
 public:
  MusicFile(SNDFILE* opened, const SF_INFO& information) : file(opened), info(information) {
    // Loud samples of a compressed file can be beyond 16 bits.
    sf_command(file.get(), SFC_SET_CLIPPING, nullptr, SF_TRUE);
  }

  uint32_t rate() const override { return static_cast<uint32_t>(info.samplerate); }

  void seek(Time position) override {
    const auto frame = static_cast<sf_count_t>(frameAt(position, rate()));
    isOver = sf_seek(file.get(), std::min(frame, info.frames), SEEK_SET) < 0;
  }

  void read(Frame* frames, size_t count) override {
    const size_t decoded = isOver ? 0 : decode(frames, count);
    isOver = decoded < count;
    std::fill(frames + decoded, frames + count, Frame{});
  }

 private:
  /// Returns the number of frames that the file still had.
  size_t decode(Frame* frames, size_t count) {
    const auto channels = static_cast<size_t>(info.channels);
    samples.resize(count * channels);
    const sf_count_t got =
        sf_readf_short(file.get(), samples.data(), static_cast<sf_count_t>(count));
    const auto decoded = static_cast<size_t>(std::max<sf_count_t>(got, 0));
    for (size_t i = 0; i < decoded; ++i) {
      const int16_t* const sample = &samples[i * channels];
      frames[i] = {sample[0], sample[channels > 1 ? 1 : 0]};
    }
    return decoded;
  }

  const std::unique_ptr<SNDFILE, Closer> file;
  const SF_INFO info;
  std::vector<int16_t> samples;
  bool isOver = false;
};

}  // namespace

std::unique_ptr<SampleSource> openMusicFile(const std::filesystem::path& file) {
  SF_INFO info = {};
  SNDFILE* const opened = sf_open(file.c_str(), SFM_READ, &info);
  if (opened == nullptr) return nullptr;
  auto music = std::make_unique<MusicFile>(opened, info);
  const bool isUsable = info.samplerate > 0 && info.channels > 0 && info.channels <= kMostChannels;
  if (!isUsable) return nullptr;
  return music;
}

}  // namespace simulator
