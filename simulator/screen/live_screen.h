#pragma once

#include <mutex>

#include "device/simulated_ipod.h"
#include "screen/screen_view.h"

namespace simulator {

/// The screen of a running iPod. Its functions may be called from any thread.
class LiveScreen {
 public:
  explicit LiveScreen(const FontFiles& fonts) : painter(fonts) {}

  bool hasFont() const { return painter.hasFont(); }

  /// Takes over what the iPod shows now. Call it while the iPod is locked: later calls are newer.
  void look(const SimulatedIpod& ipod, Time now);

  /// Forgets the uploaded image; call it when another iPod is looked at from now on.
  void forgetImage();

  struct Shown {
    std::shared_ptr<const Picture> picture;
    uint64_t revision = 0;  ///< grows when the picture changes; the first one has 1
  };
  /// Returns the picture of the last look().
  Shown shown();

 private:
  std::shared_ptr<const Picture> uploadedImage(const SimulatedIpod& ipod);

  const TextPainter painter;
  std::mutex mutex;  ///< guards everything below
  const SimulatedIpod* lastIpod = nullptr;
  size_t lastCount = 0;  ///< of its uploaded images
  std::shared_ptr<const Picture> lastImage;
  ScreenView view;
  bool isRendered = false;
  Shown latest;
};

/// Returns what an iPod shows, apart from the image.
ScreenView viewOf(const SimulatedIpod& ipod, Time now);

}  // namespace simulator
