// The tags of an audio file. The file has no extension, so that its content decides what it is.

#include <string>

#include "music/audio_file.h"
#include "music/text.h"
#include "support/input_file.h"
#include "support/require.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const InputFile file;
  file.write(data, size);
  const std::optional<simulator::Track> track = simulator::readAudioFile(file.path());
  if (!track) return 0;
  require(track->lengthMs > 0 && track->sampleRate > 0, "a track of no length");
  for (const std::string* text :
       {&track->title, &track->artist, &track->album, &track->genre, &track->composer}) {
    require(simulator::trimmed(*text) == *text, "a text with blanks around it");
  }
  return 0;
}
