#include "screen/live_screen.h"

namespace simulator {

namespace {

uint32_t secondsOf(Time time) {
  return static_cast<uint32_t>(std::chrono::duration_cast<seconds>(time).count());
}

void describeTrack(ScreenView& view, const SimulatedIpod& ipod, Time now) {
  const Player& player = ipod.player();
  const Track& track = ipod.library().tracks[*player.currentTrack()];
  view.title = track.title;
  view.artist = track.artist;
  view.album = track.album;
  view.index = player.list().currentIndex();
  view.tracks = player.list().size();
  view.positionSeconds = secondsOf(player.position(now));
  view.lengthSeconds = track.lengthMs / 1000;
  view.shuffle = player.shuffle();
  view.repeat = player.repeat();
}

bool isSame(const Picture& a, const Picture& b) {
  return a.width == b.width && a.height == b.height && a.pixels == b.pixels;
}

}  // namespace

ScreenView viewOf(const SimulatedIpod& ipod, Time now) {
  ScreenView view;
  view.width = ipod.personality().screenWidth;
  view.height = ipod.personality().screenHeight;
  view.hasColours = ipod.personality().display.colour;
  view.ipodName = ipod.name();
  view.plugged = ipod.plugged();
  view.state = ipod.player().state();
  if (ipod.display().shown()) {
    view.page = ScreenView::Page::kImage;
  } else if (ipod.inExtendedMode()) {
    view.page = ScreenView::Page::kConnected;
  } else if (ipod.player().currentTrack() && !ipod.showsMenu()) {
    view.page = ScreenView::Page::kPlaying;
    describeTrack(view, ipod, now);
  }
  return view;
}

void LiveScreen::look(const SimulatedIpod& ipod, Time now) {
  const std::lock_guard<std::mutex> lock(mutex);
  ScreenView seen = viewOf(ipod, now);
  seen.image = uploadedImage(ipod);
  if (isRendered && seen == view) return;
  view = std::move(seen);
  isRendered = false;
}

void LiveScreen::forgetImage() {
  const std::lock_guard<std::mutex> lock(mutex);
  lastIpod = nullptr;
  lastImage.reset();
}

LiveScreen::Shown LiveScreen::shown() {
  const std::lock_guard<std::mutex> lock(mutex);
  if (isRendered) return latest;
  isRendered = true;
  auto picture = std::make_shared<const Picture>(renderView(view, painter));
  if (!latest.picture || !isSame(*picture, *latest.picture)) {
    latest = {std::move(picture), latest.revision + 1};
  }
  return latest;
}

/// Returns the image on the iPod's screen. It is copied only when it is new.
std::shared_ptr<const Picture> LiveScreen::uploadedImage(const SimulatedIpod& ipod) {
  const DisplayImage& display = ipod.display();
  const bool isNew = lastIpod != &ipod || lastCount != display.shownCount();
  if (isNew) lastImage.reset();
  lastIpod = &ipod;
  lastCount = display.shownCount();
  if (!display.shown()) {
    lastImage.reset();
  } else if (!lastImage) {
    lastImage = std::make_shared<const Picture>(*display.shown());
  }
  return lastImage;
}

}  // namespace simulator
