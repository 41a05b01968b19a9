#pragma once

#include <filesystem>
#include <functional>
#include <mutex>
#include <string>

#include "screen/live_screen.h"

namespace simulator {

/// The picture file that follows a screen. Its functions may be called from any thread.
class ScreenFile {
 public:
  /// `complain` receives a line for the user when the file cannot be written. The same failure is
  /// reported once.
  ScreenFile(LiveScreen& screen, std::filesystem::path path,
             std::function<void(const std::string&)> complaint)
      : live(screen), file(std::move(path)), complain(std::move(complaint)) {}

  /// Takes the file for the picture that is shown now.
  void keepAsItIs();
  /// Writes the picture. Returns false when that fails.
  bool write();
  /// Writes the picture if it is not in the file.
  void writeChange();

 private:
  bool write(const LiveScreen::Shown& shown);

  LiveScreen& live;
  const std::filesystem::path file;
  const std::function<void(const std::string&)> complain;
  std::mutex mutex;  ///< guards everything below, and the file
  uint64_t written = 0;
  std::string lastFailure;
};

}  // namespace simulator
