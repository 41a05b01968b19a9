#pragma once

#include "audio/playing.h"
#include "audio/sample_source.h"

namespace simulator {

/// Returns the sound of the track that plays, at the rate of the stream: its file, or a generated
/// tune when there is no file that can be decoded.
std::unique_ptr<SampleSource> openSound(const Playing& playing);

}  // namespace simulator
