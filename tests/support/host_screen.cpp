#include "support/host_screen.h"

#include <functional>
#include <stdexcept>

namespace session {

namespace {

constexpr unsigned short kPlayAllUnit = 0xFFFF;

using ReadName = int (*)(int, unsigned short*, unsigned short*, int);
using ReadText = int (*)(unsigned short*, int);

std::string nameFrom(ReadName read) {
  TextBuffer first;
  TextBuffer second;
  read(0, first.units(), second.units(), TextBuffer::kSize);
  return first.text() + second.text();
}

std::string textFrom(ReadText read) {
  TextBuffer text;
  read(text.units(), TextBuffer::kSize);
  return text.text();
}

void append(Names& names, const Names& more) {
  names.insert(names.end(), more.begin(), more.end());
}

// The place in the list, which is the same again when a walk is back at its start: the index of a
// play-all tab changes with the first move.
int place(const int* index) { return IpodIsPlayAll() != 0 ? -1 : *index; }

// Calls `visit` for each entry from the current one on, once around, until it returns true.
bool visitEntries(const int* index, const std::function<bool()>& visit) {
  constexpr int kMostEntries = 5000;
  const int first = place(index);
  for (int i = 0; i < kMostEntries; ++i) {
    if (visit()) return true;
    if (IpodGetNextItem() == nullptr || place(index) == first) return false;
  }
  throw std::runtime_error("a list without an end");
}

// Calls `visit` for each tab while its items are shown, until it returns true.
bool visitTabs(const int* index, const std::function<bool()>& visit) {
  return visitEntries(index, [&] {
    if (IpodIsPlayAll() != 0) return false;
    IpodDisableTabVisualizationActive();
    if (visit()) return true;
    IpodGetParentItem();
    return false;
  });
}

}  // namespace

std::string TextBuffer::text() const {
  if (content[0] == kPlayAllUnit) return kPlayAll;
  std::string text;
  for (const unsigned short unit : content) {
    if (unit != 0) text.push_back(static_cast<char>(unit));
  }
  return text;
}

std::string itemName() { return nameFrom(IpodGetItemName); }
std::string parentUpDownName() { return nameFrom(IpodGetParentUpDownName); }
std::string ipodName() { return textFrom(IpodGetName); }
std::string serialNumber() { return textFrom(IpodGetSerialNumber); }

Names entriesOnce(const int* index) {
  Names names;
  visitEntries(index, [&] {
    names.push_back(itemName());
    return false;
  });
  return names;
}

Names wholeList(const int* index) {
  Names names;
  if (IpodIsTabActive() == 0) {
    names = entriesOnce(index);
  } else {
    visitTabs(index, [&] {
      append(names, entriesOnce(index));
      return false;
    });
  }
  if (!names.empty() && names.front() == kPlayAll) names.erase(names.begin());
  return names;
}

bool goToItem(const int* index, const std::string& name) {
  const auto isHere = [&] { return itemName() == name; };
  if (IpodIsTabActive() == 0) return visitEntries(index, isHere);
  return visitTabs(index, [&] { return visitEntries(index, isHere); });
}

int valueOf(int (*read)(int*)) {
  int value = -77;
  read(&value);
  return value;
}

std::pair<int, int> playStatusAndIndex() {
  return {valueOf(IpodGetCurrentPlayStatus), valueOf(IpodGetTrackIndex)};
}

TrackTexts trackTexts() {
  TrackTexts texts;
  TextBuffer artist, album, title, genre, fifth;
  texts.result = IpodGetTrackInfo(&texts.index, artist.units(), album.units(), title.units(),
                                  genre.units(), fifth.units(), TextBuffer::kSize);
  texts.artist = artist.text();
  texts.album = album.text();
  texts.title = title.text();
  texts.genre = genre.text();
  texts.fifth = fifth.text();
  return texts;
}

}  // namespace session
