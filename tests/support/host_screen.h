#pragma once

#include <ipodctl.h>

#include <string>
#include <utility>

#include "support/known_music.h"

/// What a head unit's screen shows, read through the exports.
namespace session {

/// The name of a list's play-all entry on this screen. The library marks it by four units 0xFFFF.
constexpr char kPlayAll[] = "[play all]";

/// A host's buffer of 16-bit units, cleared.
class TextBuffer {
 public:
  static constexpr int kSize = 120;

  unsigned short* units() { return content; }
  /// One byte a unit; zero units are left out.
  std::string text() const;

 private:
  unsigned short content[kSize] = {};
};

std::string itemName();
/// The name of what the up-down snapshot's list was opened from.
std::string parentUpDownName();
std::string ipodName();
std::string serialNumber();

/// Returns the names of the current entry and of all that follow it, once around, and returns to
/// the current entry. `index` is the list's current index.
Names entriesOnce(const int* index);
/// Returns the names of a list that was just opened, without the play-all entry. A list in tabs is
/// read tab by tab.
Names wholeList(const int* index);
/// Moves to the item with this name and chooses its tab. Returns false if there is none.
bool goToItem(const int* index, const std::string& name);

int valueOf(int (*read)(int*));
std::pair<int, int> playStatusAndIndex();

struct TrackTexts {
  int index = -2;
  int result = -2;
  std::string artist, album, title, genre, fifth;
};
TrackTexts trackTexts();

}  // namespace session
