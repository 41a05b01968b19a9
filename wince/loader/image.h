#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace loader {

/// Why the loader cannot load an image; empty when it could.
using Problem = std::string;

/// A DLL or a program of Windows CE for ARM in the memory of an ARM Linux process: mapped away from
/// its preferred address, relocated, bound to the functions of this process, its pages protected as
/// its sections require. It is attached when it is loaded and detached when it is destroyed. A DLL
/// that it imports and whose file is in its folder is loaded, too.
class Image {
 public:
  enum class Kind {
    kLibrary,  ///< it finds the functions of coredll in the process
    kModule,   ///< another image uses it; some of its functions are those of a device's coredll
    kProgram,  ///< the same, but not a DLL
  };

  explicit Image(Kind kindOfUse = Kind::kLibrary) : use(kindOfUse) {}
  ~Image();
  Image(const Image&) = delete;
  Image& operator=(const Image&) = delete;

  /// Loads the file, and calls the entry point of a DLL. May be called once.
  Problem load(const std::string& path);

  /// Returns an exported function; null when there is none of this name.
  void* find(const std::string& name) const;

  /// Runs a program on this thread. The program ends the process.
  void run();

  /// Returns the address at which it is; null when it is not mapped.
  void* base() const { return memory; }

 private:
  using EntryPoint = int (*)(void* module, uint32_t reason, void* reserved);
  using ProgramEntryPoint = void (*)(void* program, void* previous, const char16_t* commandLine,
                                     int show);

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
  Problem bindTable(const std::string& dll, uint32_t namesRva, uint32_t slotsRva);

  void* functionOf(const std::string& dll, const char* name);
  Problem useDll(const std::string& dll);

  const Kind use;
  std::string filePath;
  std::map<std::string, Image*> dlls;  ///< those in its folder, by name
  std::vector<uint8_t> file;
  const struct Headers* headers = nullptr;
  const struct SectionHeader* sections = nullptr;
  uint8_t* memory = nullptr;
  uint32_t size = 0;
  bool isAttached = false;
};

}  // namespace loader
