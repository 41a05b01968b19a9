#include "audio_bytes.h"

#include <cstddef>

namespace simulator {
namespace {

/// Returns the low `count` bytes of the number, the highest first.
std::string bigEndian(uint64_t number, size_t count) {
  std::string bytes;
  for (size_t i = count; i > 0; --i)
    bytes += static_cast<char>(number >> (8 * (i - 1)));
  return bytes;
}

/// Returns a length in the form of Vorbis comments: 32 bits, the lowest byte first.
std::string littleEndian(size_t number) {
  const std::string bytes = bigEndian(number, 4);
  return std::string(bytes.rbegin(), bytes.rend());
}

std::string withLength(std::string_view text) {
  return littleEndian(text.size()) + std::string(text);
}

std::string box(std::string_view type, const std::string& content) {
  return bigEndian(content.size() + 8, 4) + std::string(type) + content;
}

std::string zeros(size_t count) { return std::string(count, '\0'); }

}  // namespace

std::string flacFile(uint32_t sampleRate, uint32_t samples,
                     std::initializer_list<std::string_view> comments) {
  // 20 bits of rate, 3 of channels - 1, 5 of bits per sample - 1 and 36 of samples.
  const uint64_t format =
      (uint64_t{sampleRate} << 44) | (uint64_t{1} << 41) | (uint64_t{15} << 36) | samples;
  const std::string blockAndFrameSizes = bigEndian(4096, 2) + bigEndian(4096, 2) + zeros(6);
  const std::string streamInfo = blockAndFrameSizes + bigEndian(format, 8) + zeros(16);
  std::string tags = withLength("by hand") + littleEndian(comments.size());
  for (std::string_view comment : comments)
    tags += withLength(comment);
  constexpr char kLastBlock = '\x84';  // 80: the last; 04: Vorbis comments
  return "fLaC" + zeros(1) + bigEndian(streamInfo.size(), 3) + streamInfo + kLastBlock +
         bigEndian(tags.size(), 3) + tags;
}

std::string mp4File(uint16_t sampleRate, uint32_t samples) {
  const std::string mediaHeader =
      box("mdhd", zeros(12) + bigEndian(sampleRate, 4) + bigEndian(samples, 4) + zeros(4));
  const std::string handler = box("hdlr", zeros(8) + "soun" + zeros(13));
  const std::string sound =
      box("mp4a", zeros(6) + bigEndian(1, 2) + zeros(8) + bigEndian(2, 2) + bigEndian(16, 2) +
                      zeros(4) + bigEndian(sampleRate, 2) + zeros(2));
  const std::string samplesTable = box("stbl", box("stsd", zeros(4) + bigEndian(1, 4) + sound));
  const std::string media = box("mdia", mediaHeader + handler + box("minf", samplesTable));
  return box("ftyp", "M4B " + zeros(4)) + box("moov", box("trak", media));
}

}  // namespace simulator
