#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "device/digital_audio_lingo.h"
#include "device/extended_interface_lingo.h"
#include "device/general_lingo.h"
#include "device/notifier.h"
#include "device/simple_remote_lingo.h"
#include "device/traffic.h"
#include "wire/frame_decoder.h"

namespace simulator {

/// A simulated iPod at the end of a cable.
///
/// It has no thread, no clock and no file descriptor. Its user passes in the bytes of the accessory
/// and the time, and takes the iPod's bytes out. Time may never go back. The same calls with the
/// same times, bytes and seed give the same output, byte by byte.
///
///     ipod.plugIn(now, FrameKind::kUsb);
///     ipod.receive(now, bytes);
///     for (const Bytes& write : ipod.takeOutput(now)) ...   // one write each
///     sleepUntil(ipod.nextWake());                          // or more bytes arrive
///
/// It is not safe for use by two threads at once.
class SimulatedIpod {
 public:
  struct Counters {
    size_t bytesReceived = 0;  ///< since the start, like all of these
    size_t bytesSent = 0;
    size_t messagesReceived = 0;
    size_t messagesSent = 0;     ///< repetitions included
    size_t messagesLost = 0;     ///< by a fault
    size_t malformedFrames = 0;  ///< correct checksum, but without a command
  };

  explicit SimulatedIpod(Personality personality, MusicLibrary library, uint32_t seed = 1);
  /// The catalogue may be that of other iPods, too: many iPods with the same music start faster.
  SimulatedIpod(Personality personality, std::shared_ptr<const Catalogue> music, uint32_t seed = 1);
  SimulatedIpod(const SimulatedIpod&) = delete;
  SimulatedIpod& operator=(const SimulatedIpod&) = delete;

  // The cable
  void plugIn(Time now, FrameKind kind);
  void unplug(Time now);
  bool plugged() const { return decoder.has_value(); }
  /// Call this when the accessory has closed its end, although the cable is still plugged in. The
  /// iPod forgets it, and starts again with the next one.
  void hangUp(Time now);

  // Bytes and time
  void receive(Time now, ByteView bytes);
  /// Returns what is to be written now, each element in one write.
  std::vector<Bytes> takeOutput(Time now);
  /// Returns when takeOutput() will return something or something will happen by itself, if ever.
  std::optional<Time> nextWake() const;
  /// Lets the time pass.
  void advance(Time now);

  // Actions of a person who holds the iPod
  void pressPlay(Time now);
  void pressPause(Time now);
  void pressNext(Time now);
  void pressPrevious(Time now);
  /// Shows the menu on the screen while music plays, until another button is pressed.
  void pressMenu(Time now);
  /// Leaves the menu that pressMenu() has shown.
  void pressSelect(Time now);
  /// Moves to a position of the track that plays or is paused.
  void moveTo(Time now, Time position);
  /// Sends this sample rate in Hz to the accessory, whatever plays.
  void announceSampleRate(Time now, uint32_t rate);
  /// Notifies the accessory of the position, also when it did not ask for it.
  void tellPosition(Time now);

  // Its state
  const Personality& personality() const { return state.personality; }
  const MusicLibrary& library() const { return state.catalogue.library(); }
  /// Returns its name as the accessory reads it.
  const std::string& name() const { return state.name(); }
  const Catalogue& catalogue() const { return state.catalogue; }
  const Player& player() const { return state.player; }
  bool showsMenu() const { return isMenuOpen; }
  const DisplayImage& display() const { return state.display; }
  FaultPlan& faults() { return state.faults; }
  const FaultPlan& faults() const { return state.faults; }
  bool inExtendedMode() const { return state.extendedMode; }
  bool notificationsOn() const { return state.notificationsOn; }
  /// Returns the lingoes that the accessory announced: bit n for lingo n.
  uint32_t announcedLingoes() const { return state.announcedLingoes; }
  /// Returns the buttons of the Simple Remote that are down: bit n for button n.
  uint32_t heldButtons() const { return remote.held(); }
  const Counters& counters() const { return tally; }
  /// Returns the counters of the link that is plugged in; all 0 when there is none.
  FrameDecoder::Counters frameCounters() const;
  /// Returns the latest kHistoryLimit messages of both directions and other events, oldest first.
  const std::deque<Traffic>& history() const { return past; }
  /// Keeps no history from now on. That saves time.
  void keepNoHistory() { hasHistory = false; }
  static constexpr size_t kHistoryLimit = 10000;
  /// Returns the number of messages of this kind in the history.
  size_t countReceived(Lingo lingo, uint16_t command) const;
  size_t countSent(Lingo lingo, uint16_t command) const;

  /// Sets a function that is called with each event of the link, when it happens.
  void setTrace(std::function<void(const Traffic&)> hook) { trace = std::move(hook); }
  /// Sets a function that is called when the screen shows an uploaded image.
  void setImageHook(std::function<void(const Picture&)> hook) { imageHook = std::move(hook); }

 private:
  /// One frame that is to be written.
  struct Parcel {
    Message message;
    std::string note;
    Bytes bytes;
    bool together = false;  ///< is in one write with what is due at the same moment
    size_t splitAt = 0;     ///< bytes of the first of two writes; 0: it is one write
    Time splitGap{0};
  };
  /// The second write of a frame whose first write is done. Nothing is written between them.
  struct Remainder {
    Time due;
    Bytes bytes;
  };

  void step(Time now);
  void settle();
  /// Returns whether somebody can read what happens.
  bool isObserved() const { return hasHistory || trace; }
  void noteWaste(FrameDecoder::Waste waste, ByteView bytes);
  void noteStrike(const Fault& fault);
  void takePayload(ByteView payload);
  void takeMessage(const Message& message);
  void transmit(Outgoing outgoing);
  void post(const Outgoing& outgoing, const Fate& fate);
  Bytes frameOf(const Message& message, const Fate& fate) const;
  Time dueTime(const Outgoing& outgoing, const Fate& fate) const;
  void fallSilent(bool hasNotice);
  std::vector<Bytes> collectDue(Time now);
  void write(Parcel parcel, std::vector<Bytes>& writes, bool isJoined);
  void cutAtUnplug(std::vector<Bytes>& writes);
  void startOver();
  void note(Traffic::Kind kind, const Message& message, std::string text);
  void noteEvent(std::string text) { note(Traffic::Kind::kEvent, {}, std::move(text)); }
  size_t countTraffic(Traffic::Kind kind, Lingo lingo, uint16_t command) const;

  DeviceState state;
  DigitalAudioLingo audio;
  Identification identification;
  GeneralLingo general;
  SimpleRemoteLingo remote;
  ExtendedInterfaceLingo extended;
  Notifier notifier;

  FrameKind kind = FrameKind::kUsb;
  std::optional<FrameDecoder> decoder;  ///< while the cable is plugged
  std::multimap<Time, Parcel> outbox;
  std::optional<Remainder> remainder;
  bool isSilent = false;
  bool isMenuOpen = false;
  size_t receivedHere = 0;  ///< bytes, since the accessory connected
  size_t sentHere = 0;
  size_t imagesSeen = 0;
  Counters tally;
  std::deque<Traffic> past;
  bool hasHistory = true;
  std::function<void(const Traffic&)> trace;
  std::function<void(const Picture&)> imageHook;
};

}  // namespace simulator
