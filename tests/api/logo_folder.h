#pragma once

#include <filesystem>
#include <string>

/// An empty folder that is the current directory while it lives, for "logo_zel.bmp".
class LogoFolder {
 public:
  LogoFolder();
  ~LogoFolder();
  LogoFolder(const LogoFolder&) = delete;
  LogoFolder& operator=(const LogoFolder&) = delete;

  /// A logo of 4 x 1 pixels: red, green, blue, black.
  void writeLogo() const;
  void removeLogo() const;

 private:
  std::filesystem::path before;
  std::filesystem::path folder;
};
