#include "ipodctl/serve/static_files.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace tool {
namespace {

constexpr size_t kLargestFile = 4 << 20;

std::string typeOf(const std::string& name) {
  constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kTypes = {
      {{".html", "text/html; charset=utf-8"},
       {".css", "text/css; charset=utf-8"},
       {".js", "text/javascript; charset=utf-8"},
       {".mjs", "text/javascript; charset=utf-8"},
       {".json", "application/json"},
       {".svg", "image/svg+xml"},
       {".png", "image/png"},
       {".ico", "image/x-icon"},
       {".woff2", "font/woff2"}}};
  const std::string extension = std::filesystem::path(name).extension().string();
  for (const auto& [ending, type] : kTypes) {
    if (extension == ending) return std::string(type);
  }
  return "application/octet-stream";
}

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) throw std::runtime_error("cannot read " + path.string());
  return bytes;
}

}  // namespace

StaticFiles::StaticFiles(const std::string& folder) {
  if (!folder.empty()) {
    readFolder(folder);
    return;
  }
  for (const BuiltInFile* file = kBuiltInFiles; file->name != nullptr; ++file)
    add(file->name, std::string(file->bytes, file->bytes + file->size));
}

const StaticFiles::File* StaticFiles::find(const std::string& path) const {
  const auto found = files.find(path == "/" ? "/index.html" : path);
  return found == files.end() ? nullptr : &found->second;
}

void StaticFiles::add(const std::string& name, std::string bytes) {
  files["/" + name] = {std::move(bytes), typeOf(name)};
}

void StaticFiles::readFolder(const std::string& folder) {
  std::error_code error;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, error)) {
    const bool isFile = entry.is_regular_file() && !entry.is_symlink();
    if (!isFile || entry.file_size() > kLargestFile) continue;
    add(std::filesystem::relative(entry.path(), folder).generic_string(), contentOf(entry.path()));
  }
  if (find("/") == nullptr) {
    throw std::runtime_error("there is no index.html in " + folder + "; name the page's folder");
  }
}

}  // namespace tool
