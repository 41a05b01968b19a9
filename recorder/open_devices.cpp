#include "recorder/open_devices.h"

namespace recorder {
namespace {

/// Returns the capital letter of an ASCII letter.
WCHAR capital(WCHAR unit) {
  const bool isSmall = unit >= 'a' && unit <= 'z';
  return static_cast<WCHAR>(isSmall ? unit - 'a' + 'A' : unit);
}

bool hasLetters(const WCHAR* name, const char* letters) {
  for (size_t i = 0; letters[i] != 0; ++i)
    if (capital(name[i]) != static_cast<WCHAR>(letters[i])) return false;
  return true;
}

bool isDigit(WCHAR unit) { return unit >= '0' && unit <= '9'; }

}  // namespace

bool isDeviceName(const WCHAR* name) {
  constexpr size_t kLetters = 3;
  if (name == nullptr || !(hasLetters(name, "IPD") || hasLetters(name, "COM"))) return false;
  const WCHAR* rest = name + kLetters;
  if (!isDigit(*rest)) return false;
  while (isDigit(*rest))
    ++rest;
  return rest[0] == 0 || (rest[0] == ':' && rest[1] == 0);
}

void copyDeviceName(const WCHAR* name, char (&out)[trace::kDeviceSize + 1]) {
  constexpr WCHAR kLastAscii = 0x7F;
  size_t length = 0;
  for (; length < trace::kDeviceSize && name[length] != 0; ++length)
    out[length] = name[length] < kLastAscii ? static_cast<char>(name[length]) : '?';
  out[length] = 0;
}

bool OpenDevices::add(HANDLE handle, const char* name) {
  OpenDevice* const place = find(nullptr);
  if (place == nullptr) return false;
  *place = {};
  place->handle = handle;
  place->number = ++openings;
  for (size_t i = 0; i < trace::kDeviceSize && name[i] != 0; ++i)
    place->name[i] = name[i];
  return true;
}

OpenDevice* OpenDevices::find(HANDLE handle) {
  for (OpenDevice& place : places)
    if (place.handle == handle) return &place;
  return nullptr;
}

OpenDevice* OpenDevices::find(const OpenDevice& opening) {
  OpenDevice* const place = find(opening.handle);
  return place != nullptr && place->number == opening.number ? place : nullptr;
}

size_t OpenDevices::count() const {
  size_t open = 0;
  for (const OpenDevice& place : places)
    open += place.handle != nullptr ? 1 : 0;
  return open;
}

}  // namespace recorder
