#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

namespace simulator {

/// A folder of its own for one test, removed with all that is in it.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "music-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    // As a program finds the folder when a link stands in the way to it.
    root = std::filesystem::canonical(name);
  }
  ~TemporaryFolder() { std::filesystem::remove_all(root); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return root; }

  /// Writes a file, with the folders that lead to it.
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
