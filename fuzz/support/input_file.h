#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// A file in memory for readers that want a file's name.
class InputFile {
 public:
  InputFile();
  ~InputFile();
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  /// From now on the file holds these bytes and no others.
  void write(const uint8_t* bytes, size_t size) const;
  const std::string& path() const { return name; }

 private:
  const int descriptor;
  const std::string name;
};
