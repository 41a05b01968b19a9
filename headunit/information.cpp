#include "information.h"

#include "ipodctl.h"
#include "screen_text.h"

namespace {

struct TrackTexts {
  int track = -1;
  TextBuffer artist;
  TextBuffer album;
  TextBuffer title;
  TextBuffer genre;

  bool areComplete() const {
    return !title.text().empty() && !artist.text().empty() && !album.text().empty() &&
           !genre.text().empty();
  }
};

/// Returns false when the iPod did not answer which track plays.
bool readTrackTexts(TrackTexts& texts) {
  texts = {};
  return IpodGetTrackInfo(&texts.track, texts.artist.units(), texts.album.units(),
                          texts.title.units(), texts.genre.units(), nullptr,
                          TextBuffer::kSize) == 0;
}

void showTrackText(Screen& screen, const char* label, const TextBuffer& buffer) {
  const std::string text = buffer.text();
  screen.show(label + (text.empty() ? "(not known)" : text));
}

void showText(HeadUnit& headUnit, const std::string& label,
              int(IPODCTL_CALL* read)(unsigned short*, int)) {
  std::string text;
  const bool hasCome = headUnit.ipod.ask([&] {
    TextBuffer buffer;
    read(buffer.units(), TextBuffer::kSize);
    text = buffer.text();
    return !text.empty();
  });
  if (hasCome) {
    headUnit.screen.show(label + text);
  } else {
    headUnit.showGap(label + "(not answered)");
  }
}

}  // namespace

void showTrackTexts(HeadUnit& headUnit) {
  headUnit.screen.beginSection("The playing track's texts");
  TrackTexts texts;
  bool isAnswered = false;
  // A track may have no texts. They are then requested twice, and shown as they are.
  headUnit.ipod.ask([&] {
    isAnswered = readTrackTexts(texts);
    return isAnswered && texts.areComplete();
  });
  if (headUnit.ipod.isLost()) return;
  if (!isAnswered) {
    headUnit.showGap("The iPod did not answer which track plays.");
    return;
  }
  showTrackText(headUnit.screen, "title:  ", texts.title);
  showTrackText(headUnit.screen, "artist: ", texts.artist);
  showTrackText(headUnit.screen, "album:  ", texts.album);
  showTrackText(headUnit.screen, "genre:  ", texts.genre);
}

void showIdentity(HeadUnit& headUnit) {
  headUnit.screen.beginSection("Name and serial number");
  showText(headUnit, "name:          ", IpodGetName);
  showText(headUnit, "serial number: ", IpodGetSerialNumber);
}
