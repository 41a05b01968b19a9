#include "screen/screen_view.h"

#include <tuple>

#include "screen/pages.h"
#include "screen/screen.h"

namespace simulator {

namespace {

auto fieldsOf(const ScreenView& view) {
  return std::tie(view.width, view.height, view.hasColours, view.page, view.image, view.ipodName,
                  view.plugged, view.state, view.shuffle, view.repeat, view.title, view.artist,
                  view.album, view.index, view.tracks, view.positionSeconds, view.lengthSeconds);
}

}  // namespace

bool operator==(const ScreenView& a, const ScreenView& b) { return fieldsOf(a) == fieldsOf(b); }

Picture renderView(const ScreenView& view, const TextPainter& painter) {
  if (view.page == ScreenView::Page::kImage) {
    return renderScreen(view.width, view.height, *view.image);
  }
  Canvas canvas(view.width, view.height, view.hasColours);
  switch (view.page) {
    case ScreenView::Page::kConnected:
      drawConnectedPage(canvas, view, painter);
      break;
    case ScreenView::Page::kPlaying:
      drawPlayingPage(canvas, view, painter);
      break;
    default:
      drawMenuPage(canvas, view, painter);
      break;
  }
  return canvas.result();
}

}  // namespace simulator
