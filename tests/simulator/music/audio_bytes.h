#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/// The smallest files that a reader of tags takes for audio: all the headers and no sound.
namespace simulator {

/// A FLAC file that says it plays `samples` at `sampleRate`, with Vorbis comments "FIELD=value".
std::string flacFile(uint32_t sampleRate, uint32_t samples,
                     std::initializer_list<std::string_view> comments = {});

/// An MPEG-4 audio file that says it plays `samples` at `sampleRate`, without tags.
std::string mp4File(uint16_t sampleRate, uint32_t samples);

}  // namespace simulator
