#pragma once

#include <memory>
#include <string>

#include "player/player.h"
#include "screen/display_image.h"
#include "screen/text_painter.h"

namespace simulator {

/// What the screen shows, as far as it can be seen: two equal views are the same picture.
struct ScreenView {
  enum class Page {
    kImage,      ///< the image that the accessory uploaded
    kConnected,  ///< the extended mode without an image
    kPlaying,
    kMenu,
  };

  uint16_t width = 0;
  uint16_t height = 0;
  bool hasColours = true;
  Page page = Page::kMenu;
  std::shared_ptr<const Picture> image;  ///< of kImage

  std::string ipodName;
  bool plugged = false;
  PlayState state = PlayState::kStopped;
  Shuffle shuffle = Shuffle::kOff;
  Repeat repeat = Repeat::kOff;

  // Of kPlaying
  std::string title;
  std::string artist;
  std::string album;
  uint32_t index = 0;
  uint32_t tracks = 0;
  uint32_t positionSeconds = 0;
  uint32_t lengthSeconds = 0;
};

bool operator==(const ScreenView& a, const ScreenView& b);

/// Returns the picture of the whole screen.
Picture renderView(const ScreenView& view, const TextPainter& painter);

}  // namespace simulator
