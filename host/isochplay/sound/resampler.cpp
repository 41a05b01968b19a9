#include "resampler.h"

#include <soxr.h>

#include <utility>

namespace isochplay {
namespace {

constexpr size_t kSome = 1024;  // frames

soxr* makeConverter(int from, int to) {
  const soxr_io_spec_t samples = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
  return soxr_create(from, to, kChannels, nullptr, &samples, nullptr, nullptr);
}

}  // namespace

void Resampler::Deleter::operator()(soxr* stale) const { soxr_delete(stale); }

Frames Resampler::convert(int rate, const Frames& frames) {
  Frames converted;
  if (rate != from) {
    converted = rest();
    from = rate;
    converter.reset(rate == target ? nullptr : makeConverter(rate, target));
  }
  if (!converter) {
    converted.insert(converted.end(), frames.begin(), frames.end());
    return converted;
  }
  for (size_t used = 0; used < frames.size();)
    used += process(frames.data() + used, frames.size() - used, converted);
  return converted;
}

/// Appends what is ready. Returns the number of input frames that were used.
size_t Resampler::process(const Frame* input, size_t count, Frames& output) {
  size_t used = 0;
  for (size_t made = kSome; made == kSome;) {
    const size_t at = output.size();
    size_t usedNow = 0;
    output.resize(at + kSome);
    soxr_process(converter.get(), input == nullptr ? nullptr : input + used, count - used, &usedNow,
                 output.data() + at, kSome, &made);
    output.resize(at + made);
    used += usedNow;
  }
  return used;
}

Frames Resampler::rest() {
  Frames last;
  if (converter) process(nullptr, 0, last);
  converter.reset();
  from = 0;
  return last;
}

}  // namespace isochplay
