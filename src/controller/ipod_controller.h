#pragma once

#include <cstdint>
#include <memory>

#include "base/shared_value.h"
#include "controller/ipod_controller_base.h"
#include "lingo/digital_audio_message.h"

namespace ipodctl {

/// Called with the new sample rate (Hz) on the link's reader thread. The return value is ignored.
using ResampleCallback = int (*)(int32_t sampleRate);

/// The controller of an iPod that streams digital audio: identification with the Extended Interface
/// and Digital Audio lingoes, and the sample rate that the iPod announces.
class IpodController : public IpodControllerBase {
 public:
  explicit IpodController(int transportKind);
  ~IpodController() override;

  /// Unregisters the notification handler, then closes. Returns true unless there is no link.
  bool CloseIpod() override;

  /// Follows a TrackNewAudioAttributes (Digital Audio 0x04): stores the rate, acknowledges, calls
  /// the resample callback. Destroys every message. Always 0.
  int onIncomingMessage(std::unique_ptr<LingoMessage> message) override;

  bool indentifyIpod() override;

  /// Opens the link, identifies, shows the logo when `image` is not null, and follows the iPod's
  /// sample-rate notifications from then on.
  virtual bool connect(const char* deviceName, const LogoBitmap* image);

  /// Replays the end of the identification with an iPod that starts it itself, e.g. after it left
  /// the Extended Interface mode. Waits for at most ten messages, one second each.
  virtual bool reenterExtendedMode();

  /// Waits for the iPod's sample rate, at most for three messages, one second each. The messages it
  /// takes live on until CloseIpod.
  virtual bool waitAudioAttributes(uint32_t& rate);

  /// Writes the sample rate that the iPod announced last, in Hz; 44100 at first. Returns false when
  /// it is 0, which is written, too.
  virtual bool getSampleRate(uint32_t& rate);

  /// Null removes the callback. Always true.
  virtual bool setResampleCallback(ResampleCallback callback);

 private:
  static void notificationTrampoline(void* owner, std::unique_ptr<LingoMessage> message);

  void announceLingoes();
  void answer(const LingoMessage& message);
  void answerDigitalAudio(const DigitalAudioMessage& message);
  bool endsVersionChain(const GeneralMessage& message);
  bool answersReentry(const LingoMessage& message);
  void acceptAudioAttributes(const DigitalAudioMessage& message);

  SharedValue<uint32_t> sampleRate;
  SharedValue<ResampleCallback> resampleCallback{nullptr};
};

}  // namespace ipodctl
