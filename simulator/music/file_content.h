#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace simulator {

/// The whole of a text file. Throws std::runtime_error, without the file's name in the text, when
/// the file cannot be read or holds more than `limit` bytes.
std::string readFileContent(const std::filesystem::path& file, size_t limit);

}  // namespace simulator
