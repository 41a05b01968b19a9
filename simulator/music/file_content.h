#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace simulator {

/// Returns the content of a text file. Throws std::runtime_error, without the file's name in its
/// message, when the file cannot be read or has more than `limit` bytes.
std::string readFileContent(const std::filesystem::path& file, size_t limit);

}  // namespace simulator
