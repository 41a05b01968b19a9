// The playing track's texts, and the iPod's name and serial number.

#include <cstdio>

#include "api/ipodctl.h"
#include "api/library_state.h"
#include "api/text_output.h"

namespace ipodctl {
namespace {

constexpr uint8_t kFifthText[] = {'U', 'n', 'K', 'n', 'o', 'w', 'n'};

using TextRequest = bool (IpodControllerBase::*)(RecordIndex trackIndex, ByteString& text);

void writeTrackText(TextRequest request, RecordIndex trackIndex, unsigned short* buffer,
                    int maxChars) {
  if (buffer == nullptr) return;
  ByteString text;
  if ((ipodController.*request)(trackIndex, text)) writeText(text, {buffer, nullptr, maxChars});
}

void writeGenre(RecordIndex trackIndex, unsigned short* buffer, int maxChars) {
  ByteString genre;
  TrackInfoType answeredType{};
  if (buffer == nullptr ||
      !ipodController.GetIndexedTrackInfo(trackIndex, genre, answeredType, TrackInfoType::kGenre)) {
    std::printf("Failed Gnere \n");
    return;
  }
  std::printf("Gnere is %s\n", reinterpret_cast<const char*>(genre.text()));
  writeText(genre, {buffer, nullptr, maxChars});
}

/// The host's 16-bit text, printed as the 8-bit one that it is not: its first character shows.
void printSerialNumber(const unsigned short* serial, int maxChars) {
  const bool written = serial != nullptr && maxChars > 0;
  const char shown[] = {written ? static_cast<char>(serial[0]) : '\0', '\0'};
  std::printf("IpodGetSerialNumber is %s\n", shown);
}

}  // namespace
}  // namespace ipodctl

using namespace ipodctl;

int IPODCTL_CALL IpodGetTrackInfo(int* trackIndex, unsigned short* artist, unsigned short* album,
                                  unsigned short* title, unsigned short* genre,
                                  unsigned short* fifth, int maxChars) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  RecordIndex index = 0;
  if (!ipodController.GetCurrentTrackIndex(index)) return -1;
  if (trackIndex != nullptr) *trackIndex = index;
  writeTrackText(&IpodControllerBase::GetTrackTitle, index, title, maxChars);
  writeTrackText(&IpodControllerBase::GetTrackArtist, index, artist, maxChars);
  writeTrackText(&IpodControllerBase::GetTrackAlbum, index, album, maxChars);
  writeGenre(index, genre, maxChars);
  writeText(kFifthText, sizeof(kFifthText), {fifth, nullptr, maxChars});
  return 0;
}

int IPODCTL_CALL IpodGetName(unsigned short* name, int maxChars) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  std::printf("IpodGetName start\n");
  ByteString text;
  if (ipodController.RequestIpodName(text)) writeText(text, {name, nullptr, maxChars});
  std::printf("IpodGetName end\n");
  return 0;
}

int IPODCTL_CALL IpodGetSerialNumber(unsigned short* serial, int maxChars) {
  const LibraryLockHold lock;
  if (!lock) return 0;
  std::printf("IpodGetSerialNumber start\n");
  ByteString text;
  if (ipodController.RequestSerialNumber(text)) {
    writeText(text, {serial, nullptr, maxChars});
    printSerialNumber(serial, maxChars);
  }
  std::printf("IpodGetSerialNumber end\n");
  return 0;
}
