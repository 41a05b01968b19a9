#include "ipodctl/commands/logo_command.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

#include "ipodctl/logo/convert_logo.h"
#include "ipodctl/logo/logo_preview.h"

namespace tool {
namespace {

/// What serve takes is 4 MB in base64.
constexpr size_t kLargestPicture = 3u << 20;

std::string pictureOf(const CommandOptions& options) {
  if (options.picture.empty()) throw std::runtime_error("name a PNG: ipodctl logo FILE.png");
  errno = 0;
  std::ifstream file(options.picture, std::ios::binary);
  std::string bytes(kLargestPicture + 1, '\0');
  file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  bytes.resize(static_cast<size_t>(file.gcount()));
  if (bytes.empty()) {
    const std::string why = errno != 0 ? std::strerror(errno) : "it is empty";
    throw std::runtime_error("cannot read " + options.picture + ": " + why);
  }
  if (bytes.size() > kLargestPicture) {
    throw std::runtime_error(options.picture + " has more than 3 MB; make the picture smaller");
  }
  return bytes;
}

std::string base64(const std::string& bytes) {
  constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const auto byte = [&](size_t j) {
      return j < bytes.size() ? uint32_t{static_cast<uint8_t>(bytes[j])} : 0;
    };
    const uint32_t group = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
    for (const unsigned shift : {18u, 12u, 6u, 0u})
      text += kLetters[group >> shift & 63];
  }
  const size_t missing = (3 - bytes.size() % 3) % 3;
  text.replace(text.size() - missing, missing, missing, '=');
  return text;
}

void write(const std::string& bytes, const std::string& name) {
  errno = 0;
  std::ofstream file(name, std::ios::binary | std::ios::trunc);
  file << bytes;
  if (!file.flush()) {
    throw std::runtime_error("cannot write " + name + ": " + std::strerror(errno));
  }
}

}  // namespace

nlohmann::json writeLogo(const CommandOptions& options) {
  const LogoLimits limits = logoLimits(options.model);
  const std::string bitmap = convertLogo(pictureOf(options), limits.width, limits.height);
  nlohmann::json written = {{"ok", true}, {"model", options.model}};
  if (!options.output.empty()) {
    write(bitmap, options.output);
    written["bitmap"] = options.output;
  }
  if (!options.preview.empty()) {
    writeLogoPreview(bitmap, options.model, options.preview);
    written["preview"] = options.preview;
  }
  return written;
}

nlohmann::json logoRequest(const CommandOptions& options) {
  if (options.remove) return {{"remove", true}};
  const LogoLimits limits = logoLimits(options.model);
  const std::string picture = pictureOf(options);
  convertLogo(picture, limits.width, limits.height);
  return {{"png", base64(picture)}, {"model", options.model}};
}

}  // namespace tool
