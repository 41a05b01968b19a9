#pragma once

#include <filesystem>

#include "audio/sample_source.h"

namespace simulator {

/// Opens an audio file. Returns null when its format cannot be decoded.
std::unique_ptr<SampleSource> openMusicFile(const std::filesystem::path& file);

}  // namespace simulator
