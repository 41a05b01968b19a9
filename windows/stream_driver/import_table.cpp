#include "import_table.h"

#include <cstdint>
#include <cstring>

namespace {

/// Returns a part of a loaded module by its offset.
template <class Type>
Type* at(HMODULE module, uintptr_t place) {
  return reinterpret_cast<Type*>(reinterpret_cast<uintptr_t>(module) + place);
}

const IMAGE_IMPORT_DESCRIPTOR* importsOf(HMODULE module) {
  const auto place = static_cast<uintptr_t>(at<IMAGE_DOS_HEADER>(module, 0)->e_lfanew);
  const IMAGE_OPTIONAL_HEADER& header = at<IMAGE_NT_HEADERS>(module, place)->OptionalHeader;
  const DWORD table = header.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
  return at<IMAGE_IMPORT_DESCRIPTOR>(module, table);
}

/// Returns the slot with the address of a function that the module imports from one DLL; null when
/// there is none.
ULONG_PTR* importIn(HMODULE module, const IMAGE_IMPORT_DESCRIPTOR& dll, const char* function) {
  const auto* name = at<IMAGE_THUNK_DATA>(module, dll.OriginalFirstThunk);
  for (auto* slot = at<IMAGE_THUNK_DATA>(module, dll.FirstThunk); name->u1.Ordinal != 0;
       ++slot, ++name) {
    if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) continue;
    const auto* entry = at<IMAGE_IMPORT_BY_NAME>(module, name->u1.AddressOfData);
    if (std::strcmp(reinterpret_cast<const char*>(entry->Name), function) == 0)
      return &slot->u1.Function;
  }
  return nullptr;
}

ULONG_PTR* importOf(HMODULE module, const char* function) {
  for (const auto* dll = importsOf(module); dll->Name != 0; ++dll) {
    if (ULONG_PTR* const slot = importIn(module, *dll, function)) return slot;
  }
  return nullptr;
}

}  // namespace

bool replaceImport(HMODULE module, const char* name, ULONG_PTR address) {
  ULONG_PTR* const slot = importOf(module, name);
  DWORD protection = 0;
  if (slot == nullptr || !VirtualProtect(slot, sizeof *slot, PAGE_READWRITE, &protection))
    return false;
  *slot = address;
  return VirtualProtect(slot, sizeof *slot, protection, &protection) != FALSE;
}
