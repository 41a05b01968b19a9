#include "device/simulated_ipod.h"

#include <algorithm>

#include "faults/fault_text.h"
#include "wire/hex_text.h"

namespace simulator {

namespace {

constexpr uint8_t kGoesToSleep = 0x01;  // the state that NotifyiPodStateChange reports
constexpr size_t kShownWaste = 264;     // bytes: a frame in short form is shorter

std::optional<Time> earlier(std::optional<Time> a, std::optional<Time> b) {
  if (!a || !b) return a ? a : b;
  return std::min(*a, *b);
}

void spoilFrame(Bytes& frame, const Fate& fate) {
  if (fate.corruptFromEnd && *fate.corruptFromEnd < frame.size()) {
    frame[frame.size() - 1 - *fate.corruptFromEnd] ^= 1;
  }
  if (fate.cutAt && *fate.cutAt < frame.size()) frame.resize(*fate.cutAt);
  frame.insert(frame.begin(), fate.noise.begin(), fate.noise.end());
}

}  // namespace

SimulatedIpod::SimulatedIpod(Personality personality, MusicLibrary library, uint32_t seed)
    : SimulatedIpod(std::move(personality), std::make_shared<const Catalogue>(std::move(library)),
                    seed) {}

SimulatedIpod::SimulatedIpod(Personality personality, std::shared_ptr<const Catalogue> music,
                             uint32_t seed)
    : state(std::move(personality), std::move(music), seed),
      audio(state),
      identification(state, audio),
      general(state, identification),
      remote(state),
      extended(state,
               [this] {
                 post({notifier.strayNotification(), {}, {}, Time(0)}, {});
               }),
      notifier(state) {
  state.transmit = [this](Outgoing outgoing) { transmit(std::move(outgoing)); };
  state.faults.setStrikeHook([this](const Fault& fault) { noteStrike(fault); });
}

void SimulatedIpod::plugIn(Time now, FrameKind frameKind) {
  unplug(now);
  kind = frameKind;
  decoder.emplace(frameKind, state.personality.packetGap);
  decoder->setWasteHook(
      [this](FrameDecoder::Waste waste, ByteView bytes) { noteWaste(waste, bytes); });
  noteEvent("plugged in");
}

void SimulatedIpod::unplug(Time now) {
  advance(now);
  if (!plugged()) return;
  decoder->reset();
  startOver();
  decoder.reset();
  noteEvent("unplugged");
}

void SimulatedIpod::hangUp(Time now) {
  advance(now);
  if (!plugged()) return;
  decoder->reset();
  startOver();
  noteEvent("the accessory closed the link");
}

void SimulatedIpod::receive(Time now, ByteView bytes) {
  advance(now);
  if (!plugged()) return;
  const std::optional<size_t> cut =
      state.faults.bytesBeforeUnplug(FaultKind::kUnplugAfterReceived, receivedHere, bytes.size());
  const ByteView arriving = bytes.prefix(cut.value_or(bytes.size()));
  receivedHere += arriving.size();
  tally.bytesReceived += arriving.size();
  decoder->push(now, arriving, [this](ByteView payload) { takePayload(payload); });
  if (cut) unplug(now);
}

std::vector<Bytes> SimulatedIpod::takeOutput(Time now) {
  advance(now);
  std::vector<Bytes> writes = collectDue(now);
  cutAtUnplug(writes);
  return writes;
}

std::optional<Time> SimulatedIpod::nextWake() const {
  const std::optional<Time> next = earlier(state.timers.next(), state.player.nextEnd());
  if (remainder) return earlier(next, remainder->due);
  if (!outbox.empty()) return earlier(next, outbox.begin()->first);
  return next;
}

void SimulatedIpod::advance(Time now) {
  while (true) {
    const std::optional<Time> next = earlier(state.timers.next(), state.player.nextEnd());
    if (!next || *next > now) break;
    step(*next);
  }
  step(now);
}

void SimulatedIpod::pressPlay(Time now) {
  advance(now);
  isMenuOpen = false;
  state.startPlaying();
  settle();
}

void SimulatedIpod::pressPause(Time now) {
  advance(now);
  isMenuOpen = false;
  state.player.pause(now);
  settle();
}

void SimulatedIpod::pressNext(Time now) {
  advance(now);
  isMenuOpen = false;
  state.player.next(now);
  settle();
}

void SimulatedIpod::pressPrevious(Time now) {
  advance(now);
  isMenuOpen = false;
  state.player.previous(now);
  settle();
}

void SimulatedIpod::pressMenu(Time now) {
  advance(now);
  isMenuOpen = true;
}

void SimulatedIpod::pressSelect(Time now) {
  advance(now);
  isMenuOpen = false;
}

void SimulatedIpod::moveTo(Time now, Time position) {
  advance(now);
  state.player.moveTo(position, now);
  settle();
}

void SimulatedIpod::announceSampleRate(Time now, uint32_t rate) {
  advance(now);
  audio.announce(rate);
}

void SimulatedIpod::tellPosition(Time now) {
  advance(now);
  const Message told = notifier.strayNotification();
  state.sendUnasked(Lingo::kExtendedInterface, told.command, told.data);
}

FrameDecoder::Counters SimulatedIpod::frameCounters() const {
  return decoder ? decoder->counters() : FrameDecoder::Counters{};
}

size_t SimulatedIpod::countReceived(Lingo lingo, uint16_t command) const {
  return countTraffic(Traffic::Kind::kReceived, lingo, command);
}

size_t SimulatedIpod::countSent(Lingo lingo, uint16_t command) const {
  return countTraffic(Traffic::Kind::kSent, lingo, command);
}

void SimulatedIpod::step(Time now) {
  state.now = std::max(state.now, now);
  state.player.advance(state.now);
  settle();
  state.timers.run(state.now);
  settle();
}

/// Does what follows from the events so far.
void SimulatedIpod::settle() {
  const PlayerChanges changes = state.player.takeChanges();
  if (changes.track) audio.followTrack();
  notifier.update(changes);
  if (state.display.shownCount() == imagesSeen) return;
  imagesSeen = state.display.shownCount();
  if (imageHook && state.display.shown()) imageHook(*state.display.shown());
}

void SimulatedIpod::noteWaste(FrameDecoder::Waste waste, ByteView bytes) {
  if (!isObserved()) return;
  const std::string shown = ": " + hexText(bytes, kShownWaste);
  switch (waste) {
    case FrameDecoder::Waste::kBadChecksum:
      return noteEvent("a frame with a wrong checksum" + shown);
    case FrameDecoder::Waste::kUnfinished:
      return note(Traffic::Kind::kNoise, {}, "a frame that was not finished" + shown);
    case FrameDecoder::Waste::kNoise:
      return note(Traffic::Kind::kNoise, {}, "bytes that form no frame" + shown);
  }
}

void SimulatedIpod::noteStrike(const Fault& fault) {
  if (!isObserved()) return;
  const Message request{fault.target.lingo.value_or(0), fault.target.command.value_or(0), {}};
  note(Traffic::Kind::kFault, request, faultText(fault));
}

void SimulatedIpod::takePayload(ByteView payload) {
  const std::optional<Message> message = parseMessage(payload);
  if (!message) {
    ++tally.malformedFrames;
    return noteEvent("a frame without a command");
  }
  ++tally.messagesReceived;
  note(Traffic::Kind::kReceived, *message, "");
  state.request = Cause{message->lingo, message->command};
  takeMessage(*message);
  state.request.reset();
  settle();
}

void SimulatedIpod::takeMessage(const Message& message) {
  if (general.comesTooEarly(message)) return;
  switch (static_cast<Lingo>(message.lingo)) {
    case Lingo::kGeneral:
      return general.handle(message);
    case Lingo::kSimpleRemote:
      return remote.handle(message);
    case Lingo::kExtendedInterface:
      return extended.handle(message);
    case Lingo::kDigitalAudio:
      return audio.handle(message);
  }
}

void SimulatedIpod::transmit(Outgoing outgoing) {
  if (!plugged() || isSilent) return;
  const Message intended = isObserved() ? outgoing.message : Message{};
  const Fate fate = state.faults.decide(outgoing, kind);
  if (fate.silenceAfter || fate.sleepNotice) return fallSilent(fate.sleepNotice);
  for (uint32_t n = 0; n < fate.notificationsBefore; ++n) {
    post({notifier.strayNotification(), {}, {}, outgoing.delay}, {});
  }
  if (fate.lost) {
    ++tally.messagesLost;
    return note(Traffic::Kind::kLost, intended, fate.note);
  }
  for (unsigned copy = 0; copy < fate.copies; ++copy)
    post(outgoing, fate);
}

void SimulatedIpod::post(const Outgoing& outgoing, const Fate& fate) {
  if (!plugged() || isSilent) return;
  Parcel parcel;
  if (isObserved()) parcel.message = outgoing.message;
  parcel.note = fate.note;
  parcel.bytes = frameOf(outgoing.message, fate);
  parcel.together = fate.together || outgoing.together;
  parcel.splitAt = fate.splitAt.value_or(0);
  parcel.splitGap = fate.splitGap;
  outbox.emplace(dueTime(outgoing, fate), std::move(parcel));
}

Bytes SimulatedIpod::frameOf(const Message& message, const Fate& fate) const {
  const bool isLongForm =
      fate.form == LengthForm::kLong || state.personality.lengthForm == LengthForm::kLong;
  Bytes frame = encodeFrame(kind, messagePayload(message),
                            isLongForm ? LengthForm::kLong : LengthForm::kAsNeeded);
  spoilFrame(frame, fate);
  return frame;
}

Time SimulatedIpod::dueTime(const Outgoing& outgoing, const Fate& fate) const {
  return state.now + state.personality.answerDelay + outgoing.delay + fate.delay;
}

void SimulatedIpod::fallSilent(bool hasNotice) {
  if (hasNotice) {
    Outgoing notice;
    notice.message = {
        static_cast<uint8_t>(Lingo::kGeneral), kNotifyIpodStateChange, {kGoesToSleep}};
    post(notice, {});
  }
  isSilent = true;
  noteEvent("falls silent");
}

std::vector<Bytes> SimulatedIpod::collectDue(Time now) {
  std::vector<Bytes> writes;
  bool isJoined = false;
  while (true) {
    if (remainder) {
      if (remainder->due > now) break;
      writes.push_back(std::move(remainder->bytes));
      remainder.reset();
    }
    if (outbox.empty() || outbox.begin()->first > now) break;
    Parcel parcel = std::move(outbox.begin()->second);
    outbox.erase(outbox.begin());
    const bool isTogether = parcel.together;
    write(std::move(parcel), writes, isJoined);
    isJoined = isTogether;
  }
  return writes;
}

void SimulatedIpod::write(Parcel parcel, std::vector<Bytes>& writes, bool isJoined) {
  ++tally.messagesSent;
  note(Traffic::Kind::kSent, parcel.message, parcel.note);
  Bytes& bytes = parcel.bytes;
  if (parcel.splitAt > 0 && parcel.splitAt < bytes.size()) {
    const auto middle = bytes.begin() + static_cast<std::ptrdiff_t>(parcel.splitAt);
    remainder = Remainder{state.now + parcel.splitGap, Bytes(middle, bytes.end())};
    bytes.erase(middle, bytes.end());
  }
  if (isJoined && !writes.empty()) {
    writes.back().insert(writes.back().end(), bytes.begin(), bytes.end());
  } else if (!bytes.empty()) {
    writes.push_back(std::move(bytes));
  }
}

void SimulatedIpod::cutAtUnplug(std::vector<Bytes>& writes) {
  for (auto write = writes.begin(); write != writes.end(); ++write) {
    const std::optional<size_t> cut =
        state.faults.bytesBeforeUnplug(FaultKind::kUnplugAfterSent, sentHere, write->size());
    if (cut) write->resize(*cut);
    sentHere += write->size();
    tally.bytesSent += write->size();
    if (!cut) continue;
    writes.erase(write + 1, writes.end());
    return unplug(state.now);
  }
}

void SimulatedIpod::startOver() {
  general.stop();
  remote.stop();
  notifier.stop();
  state.forgetAccessory();
  outbox.clear();
  remainder.reset();
  isSilent = false;
  receivedHere = 0;
  sentHere = 0;
  settle();
}

void SimulatedIpod::note(Traffic::Kind trafficKind, const Message& message, std::string text) {
  if (!isObserved()) return;
  past.push_back({state.now, trafficKind, message, std::move(text)});
  if (trace) trace(past.back());
  if (past.size() > (hasHistory ? kHistoryLimit : 0)) past.pop_front();
}

size_t SimulatedIpod::countTraffic(Traffic::Kind trafficKind, Lingo lingo, uint16_t command) const {
  const auto matches = [&](const Traffic& each) {
    return each.kind == trafficKind && each.message.is(lingo, command);
  };
  return static_cast<size_t>(std::count_if(past.begin(), past.end(), matches));
}

}  // namespace simulator
