#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace loader {

/// Why the loader cannot load an image; empty when it could.
using Problem = std::string;

/// A DLL of Windows CE for ARM in the memory of an ARM Linux process: mapped away from its
/// preferred address, relocated, bound to the functions of this process, its pages protected as its
/// sections require. It is attached when it is loaded and detached when it is destroyed.
class Image {
 public:
  Image() = default;
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  /// Loads the file and calls its entry point. May be called once.
  Problem load(const std::string& path);

  /// Returns an exported function; null when there is none of this name.
  void* find(const std::string& name) const;

 private:
  using EntryPoint = int (*)(void* module, uint32_t reason, void* reserved);

  Problem readHeaders();
  Problem map();
  Problem relocate();
  Problem bindImports();
  Problem protect();
  Problem attach();

  template <class T>
  const T* fileAt(uint32_t offset, uint32_t count = 1) const;
  template <class T>
  T* at(uint32_t rva, uint32_t count = 1) const;
  const char* textAt(uint32_t rva) const;
  Problem relocatePage(uint32_t page, const uint16_t* entries, uint32_t count, uint32_t shift);
  Problem bindTable(const char* dll, uint32_t namesRva, uint32_t slotsRva);

  std::vector<uint8_t> file;
  const struct Headers* headers = nullptr;
  const struct SectionHeader* sections = nullptr;
  uint8_t* memory = nullptr;
  uint32_t size = 0;
  bool isAttached = false;
};

}  // namespace loader
