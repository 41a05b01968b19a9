#pragma once

#include <memory>

#include "frame.h"

struct soxr;

namespace isochplay {

/// Converts samples to one rate.
class Resampler {
 public:
  explicit Resampler(int toRate) : target(toRate) {}

  /// Returns these samples at the target rate, and what remained of the ones before. The last of
  /// them may follow with the next call.
  Frames convert(int rate, const Frames& frames);
  /// Returns what remains of the samples so far.
  Frames rest();

 private:
  struct Deleter {
    void operator()(soxr* stale) const;
  };

  size_t process(const Frame* input, size_t count, Frames& output);

  const int target;
  int from = 0;                              ///< Hz, of the converter
  std::unique_ptr<soxr, Deleter> converter;  ///< null: the rates are equal
};

}  // namespace isochplay
