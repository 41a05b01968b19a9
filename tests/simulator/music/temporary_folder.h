#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace simulator {

/// A temporary folder for one test. It is removed with its content.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "music-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    // The path without links, as a program resolves it.
    root = std::filesystem::canonical(name);
  }
  ~TemporaryFolder() { std::filesystem::remove_all(root); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return root; }

  /// Writes a file, and makes its folders.
  std::filesystem::path write(const std::filesystem::path& name, std::string_view content) const {
    const std::filesystem::path file = root / name;
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << content;
    return file;
  }

 private:
  std::filesystem::path root;
};

}  // namespace simulator
