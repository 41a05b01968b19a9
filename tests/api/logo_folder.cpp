#include "api/logo_folder.h"

#include <stdlib.h>

#include <fstream>
#include <stdexcept>

#include "support/payload_text.h"

namespace {

constexpr char kLogoFile[] = "logo_zel.bmp";

/// Header, information header and one row of pixels, blue first.
constexpr char kLogo[] =
    "42 4D 42 00 00 00 00 00 00 00 36 00 00 00"
    "28 00 00 00 04 00 00 00 01 00 00 00 01 00 18 00"
    "00 00 00 00 0C 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
    "00 00 FF 00 FF 00 FF 00 00 00 00 00";

}  // namespace

LogoFolder::LogoFolder() : before(std::filesystem::current_path()) {
  std::string name = (std::filesystem::temp_directory_path() / "ipodctl-logo-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no folder for the logo");
  folder = name;
  std::filesystem::current_path(folder);
}

LogoFolder::~LogoFolder() {
  std::filesystem::current_path(before);
  std::filesystem::remove_all(folder);
}

void LogoFolder::writeLogo() const {
  const Bytes bytes = bytesOf(kLogo);
  std::ofstream file(folder / kLogoFile, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

void LogoFolder::removeLogo() const { std::filesystem::remove(folder / kLogoFile); }
