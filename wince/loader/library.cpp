// A shared library with the exports of ipodctl. It loads the image of ipodctl.dll and passes every
// call to it, so that programs for the library run on the image.
#include <cstdio>
#include <cstdlib>
#include <iterator>

#include "loader/image.h"

namespace {

struct ExportName {
  const char* name;
};

constexpr ExportName kExports[] = {
#define EXPORT(name) {#name},
#include "exports.inc"
#undef EXPORT
};

[[noreturn]] void fail(const std::string& problem) {
  std::fprintf(stderr, "the image cannot be used: %s\n", problem.c_str());
  std::abort();
}

/// Returns the path of the file. It is taken from the environment, so that a damaged file can be
/// tried.
const char* imagePath() {
  const char* const path = std::getenv("IPODCTL_IMAGE");
  return path != nullptr ? path : DEFAULT_IMAGE;
}

loader::Image image;

}  // namespace

/// The functions of the image, in the order of the exports.
extern "C" __attribute__((visibility("hidden"))) void* imageFunctions[std::size(kExports)];
void* imageFunctions[std::size(kExports)];

namespace {

/// Loads the image with this library and unloads it with this library.
const struct Loading {
  Loading() {
    const loader::Problem problem = image.load(imagePath());
    if (!problem.empty()) fail(problem);
    for (size_t i = 0; i < std::size(kExports); ++i) {
      imageFunctions[i] = image.find(kExports[i].name);
      if (imageFunctions[i] == nullptr) fail(std::string("it does not export ") + kExports[i].name);
    }
  }
} loading;

}  // namespace
