#pragma once

#include <cstdint>

namespace loader {

constexpr uint32_t kHeaderOffsetAt = 0x3C;
constexpr uint32_t kSignature = 0x00004550;  // "PE", two zeros
constexpr uint16_t kMachineArm = 0x01C0;
constexpr uint16_t kCharacteristicDll = 0x2000;
constexpr uint16_t kOptionalMagic = 0x010B;
constexpr uint16_t kSubsystemWindowsCe = 9;

constexpr uint32_t kSectionExecutable = 0x20000000;
constexpr uint32_t kSectionWritable = 0x80000000;

constexpr uint16_t kRelocationNone = 0;
constexpr uint16_t kRelocationHighLow = 3;

enum DirectoryNumber { kExports = 0, kImports = 1, kRelocations = 5, kDirectories = 16 };

struct Directory {
  uint32_t rva;
  uint32_t size;
};

/// The headers after the stub, as they are in the file.
struct Headers {
  uint32_t signature;
  uint16_t machine;
  uint16_t sectionCount;
  uint32_t timeStamp;
  uint32_t symbolTable;
  uint32_t symbolCount;
  uint16_t optionalSize;
  uint16_t characteristics;
  uint16_t magic;
  uint8_t linkerVersion[2];
  uint32_t codeSize;
  uint32_t dataSize;
  uint32_t zeroSize;
  uint32_t entryPoint;
  uint32_t codeBase;
  uint32_t dataBase;
  uint32_t imageBase;
  uint32_t sectionAlignment;
  uint32_t fileAlignment;
  uint16_t versions[6];
  uint32_t reserved;
  uint32_t imageSize;
  uint32_t headersSize;
  uint32_t checksum;
  uint16_t subsystem;
  uint16_t dllCharacteristics;
  uint32_t memorySizes[4];
  uint32_t loaderFlags;
  uint32_t directoryCount;
  Directory directories[kDirectories];
};
static_assert(sizeof(Headers) == 4 + 20 + 224, "as in the file");

struct SectionHeader {
  char name[8];
  uint32_t memorySize;
  uint32_t rva;
  uint32_t fileSize;
  uint32_t fileOffset;
  uint32_t unused[3];
  uint32_t flags;
};
static_assert(sizeof(SectionHeader) == 40, "as in the file");

struct ImportDescriptor {
  uint32_t names;
  uint32_t timeStamp;
  uint32_t forwarder;
  uint32_t dll;
  uint32_t slots;
};

struct ExportDirectory {
  uint32_t unused[3];
  uint32_t dll;
  uint32_t ordinalBase;
  uint32_t functionCount;
  uint32_t nameCount;
  uint32_t functions;
  uint32_t names;
  uint32_t ordinals;
};

struct RelocationBlock {
  uint32_t page;
  uint32_t size;
};

}  // namespace loader
