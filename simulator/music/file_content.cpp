#include "music/file_content.h"

#include <array>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

namespace simulator {

std::string readFileContent(const std::filesystem::path& file, size_t limit) {
  std::error_code error;
  if (std::filesystem::is_directory(file, error)) throw std::runtime_error("is a folder");
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error(std::generic_category().message(errno));
  std::string content;
  std::array<char, 65536> block{};
  // The bytes are counted while reading, because a pipe or a device reports no size.
  while (stream.read(block.data(), block.size()) || stream.gcount() > 0) {
    content.append(block.data(), static_cast<size_t>(stream.gcount()));
    if (content.size() > limit) {
      throw std::runtime_error("is larger than " + std::to_string(limit) + " bytes");
    }
  }
  if (stream.bad()) throw std::runtime_error("cannot be read to its end");
  return content;
}

}  // namespace simulator
