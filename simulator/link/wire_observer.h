#pragma once

#include "wire/bytes.h"

namespace simulator {

/// Sees what crosses the wire, and what happens to it. It is called on the thread that runs the
/// iPod, while the iPod is locked, and must not block.
class WireObserver {
 public:
  virtual ~WireObserver() = default;

  virtual void onPlugged() = 0;
  virtual void onPulled() = 0;  ///< the accessory's next read fails
  virtual void onOpened() = 0;  ///< by an accessory
  virtual void onClosed() = 0;
  virtual void onReceived(ByteView bytes) = 0;  ///< what the accessory wrote
  virtual void onSent(ByteView bytes) = 0;      ///< what the accessory can read from now on
};

}  // namespace simulator
