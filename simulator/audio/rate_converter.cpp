#include "audio/rate_converter.h"

#include <soxr.h>

#include <algorithm>
#include <array>
#include <stdexcept>

namespace simulator {
namespace {

constexpr unsigned kChannels = 2;
constexpr size_t kInputFrames = 512;

/// Frees the converter.
struct Deleter {
  void operator()(soxr* converter) const { soxr_delete(converter); }
};

class RateConverter final : public SampleSource {
 public:
  RateConverter(uint32_t rate, std::unique_ptr<SampleSource> from)
      : source(std::move(from)), hertz(rate) {
    const soxr_io_spec_t samples = soxr_io_spec(SOXR_INT16_I, SOXR_INT16_I);
    const soxr_quality_spec_t quality = soxr_quality_spec(SOXR_MQ, 0);
    soxr_error_t error = nullptr;
    converter.reset(
        soxr_create(source->rate(), rate, kChannels, &error, &samples, &quality, nullptr));
    if (error == nullptr) {
      error = soxr_set_input_fn(converter.get(), supply, this, kInputFrames);
    }
    if (error != nullptr) throw std::runtime_error(error);
  }

  uint32_t rate() const override { return hertz; }

  void seek(Time position) override {
    source->seek(position);
    soxr_clear(converter.get());
    soxr_set_input_fn(converter.get(), supply, this, kInputFrames);
  }

  void read(Frame* frames, size_t count) override {
    const size_t made = soxr_output(converter.get(), frames, count);
    std::fill(frames + std::min(made, count), frames + count, Frame{});
  }

 private:
  /// Called by the converter for more input.
  static size_t supply(void* context, soxr_in_t* data, size_t wanted) {
    auto& self = *static_cast<RateConverter*>(context);
    const size_t count = std::min(wanted, self.input.size());
    self.source->read(self.input.data(), count);
    *data = self.input.data();
    return count;
  }

  const std::unique_ptr<SampleSource> source;
  const uint32_t hertz;
  std::unique_ptr<soxr, Deleter> converter;
  std::array<Frame, kInputFrames> input;
};

}  // namespace

std::unique_ptr<SampleSource> convertedTo(uint32_t rate, std::unique_ptr<SampleSource> source) {
  if (source->rate() == rate) return source;
  return std::make_unique<RateConverter>(rate, std::move(source));
}

}  // namespace simulator
