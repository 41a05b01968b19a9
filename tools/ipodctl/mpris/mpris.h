#pragma once

#include <memory>

namespace tool {

class EventLog;
class HeadUnit;

/// The media player org.mpris.MediaPlayer2.ipodctl on the session bus, through which media keys and
/// programs such as playerctl use the iPod. Without a session bus it says so once and does nothing.
///
/// It has separate threads: one for the bus, one for the iPod, which can block for seconds. A call
/// on the bus is answered at once.
class Mpris {
 public:
  Mpris(HeadUnit& headUnit, EventLog& events);
  ~Mpris();
  Mpris(const Mpris&) = delete;
  Mpris& operator=(const Mpris&) = delete;

 private:
  class Player;

  std::unique_ptr<Player> player;
};

}  // namespace tool
