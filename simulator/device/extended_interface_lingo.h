#pragma once

#include "device/device_state.h"
#include "wire/payload.h"

namespace simulator {

/// The Extended Interface lingo: browsing the database, playing, and the display.
class ExtendedInterfaceLingo {
 public:
  /// `sendStray` sends an unsolicited notification for a fault.
  ExtendedInterfaceLingo(DeviceState& device, std::function<void()> sendStray)
      : state(device), sendStrayNotification(std::move(sendStray)) {}

  void handle(const Message& message);

 private:
  bool answersNow(uint16_t command) const;

  // extended_database.cpp
  void requestProtocolVersion(PayloadReader& data);
  void requestName(PayloadReader& data);
  void resetSelection(PayloadReader& data);
  void selectRecord(PayloadReader& data);
  void selectSortedRecord(PayloadReader& data);
  void countRecords(PayloadReader& data);
  void retrieveRecords(PayloadReader& data);
  Status select(uint8_t categoryNumber, uint32_t index, SortOrder order);
  void playTrackOf(const std::vector<uint32_t>& list, uint32_t index);
  void sendListing(Category category, uint32_t start, uint32_t count);
  void sendRecord(Category category, uint32_t index);

  // extended_playback.cpp
  void playStatus(PayloadReader& data);
  void currentIndex(PayloadReader& data);
  void trackTitle(PayloadReader& data);
  void trackArtist(PayloadReader& data);
  void trackAlbum(PayloadReader& data);
  void trackInfo(PayloadReader& data);
  void setNotifications(PayloadReader& data);
  void playSelection(PayloadReader& data);
  void playControl(PayloadReader& data);
  void getShuffle(PayloadReader& data);
  void setShuffle(PayloadReader& data);
  void getRepeat(PayloadReader& data);
  void setRepeat(PayloadReader& data);
  void playingTrackCount(PayloadReader& data);
  void setCurrentTrack(PayloadReader& data);
  void replyTrackText(uint16_t command, uint32_t index, std::string Track::*text);
  void refuseTrackIndex();
  const Track* playingTrack(uint32_t index) const;
  std::vector<uint32_t> tracksToPlay();
  bool control(PlayControlCode code);

  // extended_display.cpp
  void displayImage(PayloadReader& data);
  void monoImageLimits(PayloadReader& data);
  void colourImageLimits(PayloadReader& data);

  void reply(uint16_t command, Bytes data, std::optional<size_t> textOffset = {}) {
    state.send(Lingo::kExtendedInterface, command, std::move(data), textOffset);
  }

  DeviceState& state;
  std::function<void()> sendStrayNotification;

  friend struct ExtendedInterfaceTable;
};

}  // namespace simulator
