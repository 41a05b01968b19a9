#include "audio/track_sound.h"

#include <stdexcept>

#include "audio/music_file.h"
#include "audio/rate_converter.h"
#include "audio/tune.h"

namespace simulator {

std::unique_ptr<SampleSource> openSound(const Playing& playing) {
  std::unique_ptr<SampleSource> source;
  if (!playing.file.empty()) source = openMusicFile(playing.file);
  if (!source) source = std::make_unique<Tune>(playing.track, playing.trackRate);
  try {
    return convertedTo(playing.streamRate, std::move(source));
  } catch (const std::runtime_error&) {
    // A rate that no file has.
    return std::make_unique<Tune>(playing.track, playing.streamRate);
  }
}

}  // namespace simulator
