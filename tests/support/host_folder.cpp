#include "support/host_folder.h"

#include <fstream>
#include <iterator>

namespace session {

namespace fs = std::filesystem;

HostFolder::HostFolder() : before(fs::current_path()) { fs::current_path(folder / ""); }

HostFolder::~HostFolder() { fs::current_path(before); }

void HostFolder::putLogo() const { fs::copy_file(headUnitLogo(), folder / "logo_zel.bmp"); }

void HostFolder::writeLogo(const std::string& bytes) const {
  std::ofstream(folder / "logo_zel.bmp", std::ios::binary) << bytes;
}

fs::path headUnitLogo() { return HEADUNIT_LOGO; }

std::string contentOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

}  // namespace session
