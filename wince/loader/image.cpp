#include "loader/image.h"

#include <dlfcn.h>
#include <sys/mman.h>
#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "loader/device_functions.h"
#include "loader/format.h"
#include "loader/modules.h"

namespace loader {

namespace {

constexpr uint32_t kImportNameOffset = 2;  // after the hint
constexpr uint32_t kByOrdinal = 0x80000000;
constexpr uint32_t kPage = 0x1000;

uint32_t addressOf(const void* pointer) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(pointer));
}

/// Returns where the image is to be mapped; null: the system chooses. It is taken from the
/// environment, so that a profiler knows the addresses before the program starts.
void* wantedAddress() {
  const char* const text = std::getenv("IPODCTL_IMAGE_ADDRESS");
  return text != nullptr ? reinterpret_cast<void*>(std::strtoul(text, nullptr, 0)) : nullptr;
}

uint32_t wholePages(uint32_t size) { return (size + kPage - 1) / kPage * kPage; }

int protectionOf(uint32_t sectionFlags) {
  int protection = PROT_READ;
  if ((sectionFlags & kSectionExecutable) != 0) protection |= PROT_EXEC;
  if ((sectionFlags & kSectionWritable) != 0) protection |= PROT_WRITE;
  return protection;
}

}  // namespace

Image::~Image() {
  if (isAttached) {
    const auto entry = reinterpret_cast<EntryPoint>(memory + headers->entryPoint);
    entry(memory, DLL_PROCESS_DETACH, nullptr);
  }
  if (memory != nullptr) munmap(memory, size);
  for (const auto& [name, dll] : dlls)
    releaseModule(dll);
}

Problem Image::load(const std::string& path) {
  filePath = path;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return path + " cannot be read";
  file.assign(std::istreambuf_iterator<char>(stream), {});
  for (const auto step : {&Image::readHeaders, &Image::map, &Image::relocate, &Image::bindImports,
                          &Image::protect, &Image::attach}) {
    const Problem problem = (this->*step)();
    if (!problem.empty()) return std::string(path).append(": ").append(problem);
  }
  return {};
}

template <class T>
const T* Image::fileAt(uint32_t offset, uint32_t count) const {
  const uint64_t end = offset + uint64_t{count} * sizeof(T);
  return end <= file.size() ? reinterpret_cast<const T*>(file.data() + offset) : nullptr;
}

template <class T>
T* Image::at(uint32_t rva, uint32_t count) const {
  const uint64_t end = rva + uint64_t{count} * sizeof(T);
  return end <= size ? reinterpret_cast<T*>(memory + rva) : nullptr;
}

const char* Image::textAt(uint32_t rva) const {
  if (rva >= size) return nullptr;
  const void* end = std::memchr(memory + rva, 0, size - rva);
  return end != nullptr ? reinterpret_cast<const char*>(memory + rva) : nullptr;
}

Problem Image::readHeaders() {
  const auto* offset = fileAt<uint32_t>(kHeaderOffsetAt);
  if (offset == nullptr || std::memcmp(file.data(), "MZ", 2) != 0) return "not an image";
  headers = fileAt<Headers>(*offset);
  if (headers == nullptr || headers->signature != kSignature) return "not an image";
  if (headers->machine != kMachineArm) return "not for ARM";
  if (headers->magic != kOptionalMagic || headers->directoryCount != kDirectories)
    return "headers of another form";
  if (headers->subsystem != kSubsystemWindowsCe) return "not for Windows CE";
  const bool isDll = (headers->characteristics & kCharacteristicDll) != 0;
  if (isDll == (use == Kind::kProgram)) return isDll ? "not a program" : "not a DLL";
  sections = fileAt<SectionHeader>(*offset + static_cast<uint32_t>(sizeof(Headers)),
                                   headers->sectionCount);
  return sections != nullptr ? "" : "no sections";
}

Problem Image::map() {
  size = headers->imageSize;
  void* const wanted = wantedAddress();
  void* const place =
      mmap(wanted, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (place == MAP_FAILED) return "no memory";
  memory = static_cast<uint8_t*>(place);
  if (wanted != nullptr && place != wanted) return "IPODCTL_IMAGE_ADDRESS is not free";
  if (addressOf(memory) == headers->imageBase) return "mapped at its preferred address by chance";
  for (uint32_t i = 0; i < headers->sectionCount; ++i) {
    const SectionHeader& section = sections[i];
    const auto* content = fileAt<uint8_t>(section.fileOffset, section.fileSize);
    auto* const target = at<uint8_t>(section.rva, section.fileSize);
    if (content == nullptr || target == nullptr) return "a section that is cut short";
    std::memcpy(target, content, section.fileSize);
  }
  return {};
}

Problem Image::relocate() {
  const Directory& directory = headers->directories[kRelocations];
  const uint32_t shift = addressOf(memory) - headers->imageBase;
  for (uint32_t done = 0; done < directory.size;) {
    const auto* block = at<RelocationBlock>(directory.rva + done);
    if (block == nullptr || block->size < sizeof(*block)) return "a bad block of relocations";
    const uint32_t count = (block->size - static_cast<uint32_t>(sizeof(*block))) / 2;
    const auto* entries =
        at<uint16_t>(directory.rva + done + static_cast<uint32_t>(sizeof(*block)), count);
    if (entries == nullptr) return "a bad block of relocations";
    Problem problem = relocatePage(block->page, entries, count, shift);
    if (!problem.empty()) return problem;
    done += block->size;
  }
  return {};
}

Problem Image::relocatePage(uint32_t page, const uint16_t* entries, uint32_t count,
                            uint32_t shift) {
  for (uint32_t i = 0; i < count; ++i) {
    const uint16_t kind = entries[i] >> 12;
    if (kind == kRelocationNone) continue;
    auto* const word = at<uint32_t>(page + (entries[i] & 0x0FFFu));
    if (kind != kRelocationHighLow || word == nullptr) return "a bad relocation";
    if (*word - headers->imageBase >= size) return "a relocation of a word that is not an address";
    *word += shift;
  }
  return {};
}

Problem Image::bindImports() {
  const Directory& directory = headers->directories[kImports];
  for (uint32_t rva = directory.rva;; rva += static_cast<uint32_t>(sizeof(ImportDescriptor))) {
    const auto* descriptor = at<ImportDescriptor>(rva);
    if (descriptor == nullptr) return "an import directory without an end";
    if (descriptor->dll == 0) return {};
    const char* const dll = textAt(descriptor->dll);
    if (dll == nullptr) return "an import of a DLL without a name";
    Problem problem = useDll(dll);
    if (problem.empty()) problem = bindTable(dll, descriptor->names, descriptor->slots);
    if (!problem.empty()) return problem;
  }
}

Problem Image::useDll(const std::string& dll) {
  const std::filesystem::path path = std::filesystem::path(filePath).parent_path() / dll;
  if (dlls.count(dll) > 0 || !exists(path)) return {};
  Problem problem;
  Image* const image = useModule(path.string(), problem);
  if (image != nullptr) dlls[dll] = image;
  return problem;
}

/// Returns null when the DLL has no such function.
void* Image::functionOf(const std::string& dll, const char* name) {
  const auto found = dlls.find(dll);
  if (found != dlls.end()) return found->second->find(name);
  void* function = moduleFunction(name);
  if (function == nullptr && use != Kind::kLibrary) function = deviceFunction(name);
  return function != nullptr ? function : dlsym(RTLD_DEFAULT, name);
}

Problem Image::bindTable(const std::string& dll, uint32_t namesRva, uint32_t slotsRva) {
  for (uint32_t offset = 0;; offset += 4) {
    const auto* entry = at<uint32_t>(namesRva + offset);
    auto* const slot = at<uint32_t>(slotsRva + offset);
    if (entry == nullptr || slot == nullptr) return "an import table without an end";
    if (*entry == 0) return {};
    const char* const name =
        (*entry & kByOrdinal) == 0 ? textAt(*entry + kImportNameOffset) : nullptr;
    void* const function = name != nullptr ? functionOf(dll, name) : nullptr;
    if (function == nullptr)
      return dll + " has no " + (name != nullptr ? name : "function of this ordinal");
    *slot = addressOf(function);
  }
}

Problem Image::protect() {
  if (mprotect(memory, wholePages(headers->headersSize), PROT_READ) != 0) return "not protected";
  for (uint32_t i = 0; i < headers->sectionCount; ++i) {
    const SectionHeader& section = sections[i];
    if (mprotect(memory + section.rva, wholePages(section.memorySize),
                 protectionOf(section.flags)) != 0)
      return "not protected";
  }
  __builtin___clear_cache(reinterpret_cast<char*>(memory), reinterpret_cast<char*>(memory + size));
  return {};
}

Problem Image::attach() {
  if (use == Kind::kProgram) return {};
  const auto entry = reinterpret_cast<EntryPoint>(memory + headers->entryPoint);
  isAttached = entry(memory, DLL_PROCESS_ATTACH, nullptr) != 0;
  return isAttached ? "" : "it refused to be attached";
}

void Image::run() {
  const auto entry = reinterpret_cast<ProgramEntryPoint>(memory + headers->entryPoint);
  constexpr int kShowNormal = 1;
  entry(memory, nullptr, u"", kShowNormal);
}

void* Image::find(const std::string& name) const {
  const auto* directory = at<ExportDirectory>(headers->directories[kExports].rva);
  if (directory == nullptr) return nullptr;
  const auto* names = at<uint32_t>(directory->names, directory->nameCount);
  const auto* ordinals = at<uint16_t>(directory->ordinals, directory->nameCount);
  const auto* functions = at<uint32_t>(directory->functions, directory->functionCount);
  if (names == nullptr || ordinals == nullptr || functions == nullptr) return nullptr;
  for (uint32_t i = 0; i < directory->nameCount; ++i) {
    const char* const exported = textAt(names[i]);
    if (exported != nullptr && name == exported && ordinals[i] < directory->functionCount)
      return at<uint8_t>(functions[ordinals[i]]);
  }
  return nullptr;
}

}  // namespace loader
