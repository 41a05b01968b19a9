#pragma once

#include "audio/sample_source.h"

namespace simulator {

/// Returns the source at another sample rate. Throws std::runtime_error when the rates cannot be
/// converted.
std::unique_ptr<SampleSource> convertedTo(uint32_t rate, std::unique_ptr<SampleSource> source);

}  // namespace simulator
