#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "base/growable_array.h"
#include "base/shared_value.h"
#include "base/text_string.h"
#include "controller/logo_bitmap.h"
#include "lingo/extended_interface_message.h"
#include "lingo/general_message.h"
#include "lingo/lingo_message.h"
#include "lingo/simple_remote_message.h"
#include "link/transport.h"

namespace ipodctl {

/// The link that a controller is made for. Any other number: none, and every operation that needs
/// the link fails.
enum TransportKind : int {
  kSerialLink = 0,
  kUsbLink = 1,
};

/// One record of a database category: its index and its name.
struct RecordEntry {
  RecordIndex index = 0;
  ByteString name;
};

using RecordList = GrowableArray<RecordEntry>;

/// The message received after a request of a lingo. One of another lingo is not an answer.
template <class Lingo>
class Reply {
 public:
  explicit Reply(std::unique_ptr<LingoMessage> received) : message(std::move(received)) {}

  /// Decodes the answer. Returns false when there is none or it does not decode.
  template <class... Fields, class... Outputs>
  bool read(bool (Lingo::*decoder)(Fields...) const, Outputs&... outputs) const {
    return answer() != nullptr && (answer()->*decoder)(outputs...);
  }

  /// Returns true when the answer acknowledges a command with status 0.
  bool acknowledges(uint16_t command) const {
    return answer() != nullptr && answer()->acknowledges(command);
  }

 private:
  const Lingo* answer() const { return message ? messageAs<Lingo>(*message) : nullptr; }

  std::unique_ptr<LingoMessage> message;
};

/// Every request that the library makes of the iPod, one operation each. An operation clears the
/// replies that were not taken, sends its command and waits at most one second for each reply; it
/// returns true on success and, unless it says otherwise, writes its outputs only then. Every
/// operation that needs the link fails at once without one, and fails when there is no memory.
///
/// Operations run on the host's threads, one at a time, but for GetDbRecordCount, which may run
/// during others; only onIncomingMessage runs on the link's reader thread. Numbers after "ExtIf"
/// are commands of the Extended Interface lingo.
///
/// The exports do not use all of this. docs/architecture.md says for whom the rest is, under "What
/// no export reaches".
class IpodControllerBase {
 public:
  explicit IpodControllerBase(int transportKind);
  IpodControllerBase(const IpodControllerBase&) = delete;
  IpodControllerBase& operator=(const IpodControllerBase&) = delete;
  virtual ~IpodControllerBase();

  /// Opens the link, starts its reader, identifies the accessory and, when asked and loaded, shows
  /// the logo. The result does not depend on the logo.
  virtual bool IdentifyIpod(const char* deviceName, bool showLogo);

  /// Leaves the Extended Interface mode if identified, and closes the link.
  virtual bool CloseIpod();

  virtual uint8_t isIdentified();

  virtual bool GetIpodName(ByteString& name);  ///< ExtIf 0x0014

  virtual bool EnterExtendedMode();  ///< General 0x05, acknowledged with status 0
  virtual bool ExitExtendedMode();   ///< General 0x06, not answered

  virtual bool ResetDbSelection();                                    ///< ExtIf 0x0016
  virtual bool GetDbRecordCount(Category category, uint32_t& count);  ///< ExtIf 0x0018

  /// ExtIf 0x001A. Appends the records that arrive, waiting once for each one asked for; any other
  /// Extended Interface message costs one of the waits. True when the last record decoded and there
  /// was memory for all of them. Records received before a time-out stay in the list.
  virtual bool RetrieveDbRecords(Category category, RecordIndex start, uint32_t count,
                                 RecordList& records);

  virtual bool SelectDbRecord(Category category, RecordIndex index);  ///< ExtIf 0x0017
  virtual bool PlayCurrentSelection(RecordIndex trackIndex);          ///< ExtIf 0x0028
  virtual bool PlayControl(PlayControlCode code);                     ///< ExtIf 0x0029

  /// ExtIf 0x001C. Length and position in ms.
  virtual bool GetPlayStatus(uint32_t& trackLength, uint32_t& position, PlayState& state);

  virtual bool GetCurrentTrackIndex(RecordIndex& trackIndex);               ///< ExtIf 0x001E
  virtual bool GetTrackTitle(RecordIndex trackIndex, ByteString& title);    ///< ExtIf 0x0020
  virtual bool GetTrackArtist(RecordIndex trackIndex, ByteString& artist);  ///< ExtIf 0x0022
  virtual bool GetTrackAlbum(RecordIndex trackIndex, ByteString& album);    ///< ExtIf 0x0024

  virtual bool GetShuffle(PlayMode& mode);  ///< ExtIf 0x002C
  virtual bool SetShuffle(PlayMode mode);   ///< ExtIf 0x002E
  virtual bool GetRepeat(PlayMode& mode);   ///< ExtIf 0x002F
  virtual bool SetRepeat(PlayMode mode);    ///< ExtIf 0x0031

  virtual bool GetMonoImageLimits(ImageLimits& limits);   ///< ExtIf 0x0033
  virtual bool GetColorImageLimits(ImageLimits& limits);  ///< ExtIf 0x0039

  /// ExtIf 0x0032: one row of a picture. `height` is the picture's, `row` has `rowBytes` bytes.
  virtual bool SetDisplayImage(PixelFormat format, uint16_t packetIndex, uint16_t width,
                               uint16_t height, uint32_t rowBytes, const uint8_t* row);

  /// Replaces the logo by the bitmap file; false, and no logo, when it cannot be read.
  virtual bool LoadLogo(const char* fileName);
  virtual bool FreeLogo();

  virtual bool GetNumPlayingTracks(uint32_t& count);            ///< ExtIf 0x0035
  virtual bool SetCurrentPlayingTrack(RecordIndex trackIndex);  ///< ExtIf 0x0037

  virtual bool SelectSortDbRecord(Category category, RecordIndex index,
                                  SortOrder sortOrder);  ///< ExtIf 0x0038

  virtual bool RequestIpodName(ByteString& name);  ///< General 0x07
  virtual bool RequestSoftwareVersion(uint8_t& major, uint8_t& minor,
                                      uint8_t& revision);  ///< General 0x09

  /// General 0x0B. The reply's bytes as they are, the final zero byte among them.
  virtual bool RequestSerialNumber(ByteString& serial);

  /// General 0x0D. The id is the first two bytes of the reply; the text has three zero bytes at its
  /// end.
  virtual bool RequestModelNumber(uint16_t& modelId, ByteString& modelText);

  virtual bool RequestLingoProtocolVersion(uint8_t lingo, uint8_t& answeredLingo, uint8_t& major,
                                           uint8_t& minor);  ///< General 0x0F

  /// ExtIf 0x000C of a track of the playing list. The text's first character is the information
  /// type.
  virtual bool GetIndexedTrackInfo(RecordIndex trackIndex, ByteString& data,
                                   TrackInfoType& answeredType, TrackInfoType infoType);

  /// Simple Remote 0x00: holds a button (1 to 26; 0 is none) for a quarter of a second. Follow with
  /// ReleaseButtons.
  virtual bool PressButton(int buttonCode);

  virtual bool SendAudioButton(uint32_t value);  ///< Simple Remote 0x04 for 1.1 seconds
  virtual bool IdentifySimpleRemote();           ///< General 0x01; always false, though it is sent
  virtual bool ReleaseButtons();                 ///< Simple Remote 0x00, no button
  virtual bool IdentifyExtendedInterface();      ///< General 0x01; always false, though it is sent

  /// Receives an unsolicited message on the reader thread. Always 0.
  virtual int onIncomingMessage(std::unique_ptr<LingoMessage> message);

  /// The exchange that makes the accessory known and enters the Extended Interface mode, in at most
  /// three attempts, of which the third never succeeds.
  virtual bool indentifyIpod();

  /// True when the last wait for a message ended without one.
  bool lastWaitTimedOut() const { return waitTimedOut != 0; }

  /// The loaded logo, null when there is none.
  const LogoBitmap* logoImage() const { return logo.get(); }

 protected:
  /// Clears the replies and sends a command that nothing answers, or whose answers the caller takes
  /// itself. Returns false without a link or memory. Only an answer shows whether the command
  /// arrived.
  template <class Lingo, class... Parameters, class... Arguments>
  bool sendOnly(bool (Lingo::*builder)(Parameters...), Arguments... arguments) {
    return clearReplies() && sendWithoutClearing(builder, arguments...);
  }

  /// Sends a command as sendOnly does and waits for one message, which must be its reply.
  template <class Lingo, class... Parameters, class... Arguments>
  Reply<Lingo> sendAndAwaitReply(bool (Lingo::*builder)(Parameters...), Arguments... arguments) {
    return Reply<Lingo>(sendOnly(builder, arguments...) ? nextMessage() : nullptr);
  }

  /// Sends a command as sendOnly does and waits for its acknowledgement with status 0, as long as
  /// the iPod sends anything of the Extended Interface lingo at least every second.
  template <class... Parameters, class... Arguments>
  bool sendAndAwaitAcknowledgement(bool (ExtendedInterfaceMessage::*builder)(Parameters...),
                                   Arguments... arguments) {
    ExtendedInterfaceMessage command;
    return clearReplies() && buildAndSend(command, builder, arguments...) &&
           awaitAcknowledgement(command.getCommand());
  }

  /// Sends a command between messages that are still to be taken; otherwise as sendOnly.
  template <class Lingo, class... Parameters, class... Arguments>
  bool sendWithoutClearing(bool (Lingo::*builder)(Parameters...), Arguments... arguments) {
    Lingo command;
    return buildAndSend(command, builder, arguments...);
  }

  /// The shape of both identifications: up to three attempts, each of which announces the accessory
  /// and then answers message after message until `identified` is set or none is received for a
  /// second. An identification that needs the third attempt fails.
  template <class Announce, class Answer>
  bool identifyInAttempts(Announce announce, Answer answer) {
    identified = 0;
    int attemptsLeft = kIdentificationAttempts;
    while (!identified && attemptsLeft > 0) {
      --attemptsLeft;
      announce();
      std::unique_ptr<LingoMessage> message;
      while (!identified && (message = nextMessage()))
        answer(*message);
    }
    return concludeIdentification(attemptsLeft);
  }

  /// Destroys the received messages that were not taken, so that none is mistaken for a new reply.
  /// Returns false without a link.
  bool clearReplies();

  /// Waits one second for a message.
  std::unique_ptr<LingoMessage> nextMessage();

  /// Answers the messages of the General lingo that both identifications answer alike.
  void answerInBothIdentifications(const GeneralMessage& message);

  /// Stops the link's reader permanently and destroys the link.
  void releaseTransport();

  std::unique_ptr<Transport> transport;
  SharedValue<uint8_t> identified{0};

  /// Messages that were taken without being destroyed; CloseIpod destroys them.
  GrowableArray<std::unique_ptr<LingoMessage>> keptMessages;

 private:
  static constexpr int kIdentificationAttempts = 3;

  /// Builds a command and sends it; false without a link or memory.
  template <class Lingo, class... Parameters, class... Arguments>
  bool buildAndSend(Lingo& command, bool (Lingo::*builder)(Parameters...), Arguments... arguments) {
    if (!transport || !(command.*builder)(arguments...)) return false;
    transport->sendMessage(command);
    return true;
  }

  bool awaitAcknowledgement(uint16_t command);
  void answerRemoteUiMode(const GeneralMessage& message);
  void answerAccessoryInfo(const GeneralMessage& message);
  void answerIdentification(const GeneralMessage& message);
  bool concludeIdentification(int attemptsLeft);
  void uploadLogo();

  std::unique_ptr<LogoBitmap> logo;
  SharedValue<uint8_t> waitTimedOut{0};
};

}  // namespace ipodctl
