#pragma once

#include <memory>
#include <string>

#include "output.h"

namespace isochplay {

/// Writes the samples to a WAV file of 16 bits and two channels. The file has one rate, that of the
/// first start; samples at another rate are converted. It is complete after each pause.
///
/// A new file has the mode 0600. An existing one is overwritten only when it is empty or was
/// written by this class. What fails is reported once; then nothing more is written.
std::unique_ptr<Output> makeWavOutput(const std::string& path);

}  // namespace isochplay
