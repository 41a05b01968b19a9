#include "support/host_folder.h"

#include <fstream>
#include <iterator>

namespace session {

namespace fs = std::filesystem;

namespace {

constexpr char kLogoFile[] = "logo_zel.bmp";

}  // namespace

HostFolder::HostFolder() : before(fs::current_path()) { fs::current_path(folder / ""); }

HostFolder::~HostFolder() { fs::current_path(before); }

void HostFolder::putLogo() const { fs::copy_file(headUnitLogo(), folder / kLogoFile); }

void HostFolder::writeLogo(const std::string& bytes) const {
  std::ofstream(folder / kLogoFile, std::ios::binary) << bytes;
}

void HostFolder::removeLogo() const { fs::remove(folder / kLogoFile); }

fs::path headUnitLogo() { return HEADUNIT_LOGO; }

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace session
