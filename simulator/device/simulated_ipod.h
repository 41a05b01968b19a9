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

/// An iPod at the end of a cable.
///
/// It has no thread, no clock and no file descriptor: whoever runs it pushes in the bytes of the
/// accessory, takes out the iPod's own, and says what time it is. Time may never go back. The same
/// calls with the same times, bytes and seed give the same output, byte by byte.
///
///     ipod.plugIn(now, FrameKind::kUsb);
///     ipod.receive(now, bytes);
///     for (const Bytes& write : ipod.takeOutput(now)) ...   // one write each
///     sleepUntil(ipod.nextWake());                          // or more bytes come
///
/// It is not safe for use by two threads at once.
class SimulatedIpod {
 public:
  struct Counters {
    size_t bytesReceived = 0;  ///< since the start, like all of these
    size_t bytesSent = 0;
    size_t messagesReceived = 0;
    size_t messagesSent = 0;     ///< as often as they were written
    size_t messagesLost = 0;     ///< by a fault
    size_t malformedFrames = 0;  ///< good checksum, but no command inside
  };

  explicit SimulatedIpod(Personality personality, MusicLibrary library, uint32_t seed = 1);
  SimulatedIpod(const SimulatedIpod&) = delete;
  SimulatedIpod& operator=(const SimulatedIpod&) = delete;

  // The cable
  void plugIn(Time now, FrameKind kind);
  void unplug(Time now);
  bool plugged() const { return decoder.has_value(); }
  /// The accessory is gone although the cable is still there: it closed its end. The iPod forgets
  /// it, and starts anew with the next one.
  void hangUp(Time now);

  // Bytes and time
  void receive(Time now, ByteView bytes);
  /// What is to be written by now, each element in one write.
  std::vector<Bytes> takeOutput(Time now);
  /// When takeOutput() will have something or something will happen by itself, if ever.
  std::optional<Time> nextWake() const;
  /// Lets the time pass.
  void advance(Time now);

  // What a person does with the iPod in the hand
  void pressPlay(Time now);
  void pressPause(Time now);
  void pressNext(Time now);
  void pressPrevious(Time now);
  /// Tells the accessory this sample rate in Hz, whatever plays.
  void announceSampleRate(Time now, uint32_t rate);
  /// Notifies the accessory of the position, whether or not it wants to know.
  void tellPosition(Time now);

  // Looking inside
  const Personality& personality() const { return state.personality; }
  const MusicLibrary& library() const { return state.catalogue.library(); }
  const Player& player() const { return state.player; }
  const DisplayImage& display() const { return state.display; }
  FaultPlan& faults() { return state.faults; }
  const FaultPlan& faults() const { return state.faults; }
  bool inExtendedMode() const { return state.extendedMode; }
  bool notificationsOn() const { return state.notificationsOn; }
  /// Bit n: the accessory announced lingo n.
  uint32_t announcedLingoes() const { return state.announcedLingoes; }
  /// Bit n: button n of the Simple Remote is down.
  uint32_t heldButtons() const { return remote.held(); }
  const Counters& counters() const { return tally; }
  /// Of the link that is plugged now; all 0 when none is.
  FrameDecoder::Counters frameCounters() const;
  /// The messages of both directions and other events, oldest first; the latest kHistoryLimit.
  const std::deque<Traffic>& history() const { return past; }
  static constexpr size_t kHistoryLimit = 10000;
  /// How many messages of this kind the history holds.
  size_t countReceived(Lingo lingo, uint16_t command) const;
  size_t countSent(Lingo lingo, uint16_t command) const;

  /// Called with everything that happens on the link, at the moment when it happens.
  void setTrace(std::function<void(const Traffic&)> hook) { trace = std::move(hook); }
  /// Called when an uploaded image is complete and shows.
  void setImageHook(std::function<void(const Picture&)> hook) { imageHook = std::move(hook); }

 private:
  /// One frame on its way, as it will be written.
  struct Parcel {
    Message message;
    std::string note;
    Bytes bytes;
    bool together = false;  ///< goes in one write with what is due at the same moment
    size_t splitAt = 0;     ///< bytes of the first of two writes; 0: it is one write
    Time splitGap{0};
  };
  /// The second write of a frame whose first is out. Nothing gets in between.
  struct Remainder {
    Time due;
    Bytes bytes;
  };

  void step(Time now);
  void settle();
  void noteWaste(FrameDecoder::Waste waste, ByteView bytes);
  void noteStrike(const Fault& fault);
  void takePayload(ByteView payload);
  void takeMessage(const Message& message);
  void transmit(Outgoing outgoing);
  void post(const Outgoing& outgoing, const Fate& fate);
  Bytes frameOf(const Message& message, const Fate& fate) const;
  Time dueTime(const Outgoing& outgoing, const Fate& fate) const;
  void fallSilent(bool withNotice);
  std::vector<Bytes> collectDue(Time now);
  void write(Parcel parcel, std::vector<Bytes>& writes, bool join);
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
  bool silent = false;
  size_t receivedHere = 0;  ///< bytes, since the accessory came
  size_t sentHere = 0;
  size_t imagesSeen = 0;
  Counters tally;
  std::deque<Traffic> past;
  std::function<void(const Traffic&)> trace;
  std::function<void(const Picture&)> imageHook;
};

}  // namespace simulator
