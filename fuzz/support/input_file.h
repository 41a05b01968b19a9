#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A file in memory for parsers that need a file name.
class InputFile {
 public:
  InputFile();
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// Replaces the content of the file.
  void write(const uint8_t* bytes, size_t size) const;
  const std::string& path() const { return name; }

 private:
  const int descriptor;
  const std::string name;
};
