#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

/// The smallest files that TagLib accepts as audio: all headers, but no sound.
namespace simulator {

/// Returns a FLAC file whose header has `samples` at `sampleRate`, with Vorbis comments
/// "FIELD=value".
std::string flacFile(uint32_t sampleRate, uint32_t samples,
                     std::initializer_list<std::string_view> comments = {});

/// Returns an MPEG-4 audio file whose header has `samples` at `sampleRate`, without tags.
std::string mp4File(uint16_t sampleRate, uint32_t samples);

}  // namespace simulator
