#include <gtest/gtest.h>
#include <isochplay_desk.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/background_call.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

/// A call as a sink received it.
struct Heard {
  IsochplayFunction function;
  std::string text;
  bool hasFormat;
  DWORD samplesPerSecond;
  int sampleRate;
  std::vector<int> words;
};

void keepCall(void* context, const IsochplayCall* call) {
  const bool hasFormat = call->format != nullptr;
  static_cast<std::vector<Heard>*>(context)->push_back(
      {call->function, call->text, hasFormat, hasFormat ? DWORD{call->format->nSamplesPerSec} : 0,
       call->sampleRate, std::vector<int>(call->words, call->words + 4)});
}

WAVEFORMATEX stereo(DWORD sampleRate) {
  WAVEFORMATEX format = {};
  format.wFormatTag = WAVE_FORMAT_PCM;
  format.nChannels = 2;
  format.nSamplesPerSec = sampleRate;
  format.wBitsPerSample = 16;
  return format;
}

class Isochplay : public testing::Test {
 protected:
  void listen() { isochplaySetSink(keepCall, &calls); }

  ~Isochplay() override {
    isochplaySetSink(nullptr, nullptr);
    for (const auto function : {kSelectZeroBandwithInterface, kSelectFullBandwithInterface,
                                kStartIpodAudioPlay, kStopIpodAudioPlay, kSelectFrequency}) {
      isochplaySetResult(function, 0);
    }
    isochplaySetResult(kIpodAudioPresent, 1);
  }

  const WAVEFORMATEX format = stereo(44100);
  std::vector<Heard> calls;
};

TEST_F(Isochplay, WritesEachCallToStderr) {
  CaptureStderr();
  SelectZeroBandwithInterface();
  SelectFullBandwithInterface();
  StartIpodAudioPlay(&format);
  SelectFrequency(48000);
  IpodAudioPresent(1, -2, 3, 4);
  StopIpodAudioPlay();
  EXPECT_EQ(GetCapturedStderr(),
            "isochplay: SelectZeroBandwithInterface()\n"
            "isochplay: SelectFullBandwithInterface()\n"
            "isochplay: StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)\n"
            "isochplay: SelectFrequency(48000 Hz)\n"
            "isochplay: IpodAudioPresent(1, -2, 3, 4)\n"
            "isochplay: StopIpodAudioPlay()\n");
}

TEST_F(Isochplay, SucceedsUnlessAResultIsSet) {
  listen();
  EXPECT_EQ(SelectZeroBandwithInterface(), 0);
  EXPECT_EQ(SelectFullBandwithInterface(), 0);
  EXPECT_EQ(StartIpodAudioPlay(&format), 0);
  EXPECT_EQ(SelectFrequency(44100), 0);
  EXPECT_EQ(StopIpodAudioPlay(), 0);
  EXPECT_EQ(IpodAudioPresent(0, 0, 0, 0), 1);
}

TEST_F(Isochplay, StartsWithoutAFormat) {
  CaptureStderr();
  EXPECT_EQ(StartIpodAudioPlay(nullptr), 0);
  EXPECT_EQ(GetCapturedStderr(), "isochplay: StartIpodAudioPlay(no format)\n");
}

TEST_F(Isochplay, CallsTheSinkInsteadOfWritingToStderr) {
  listen();
  CaptureStderr();
  StartIpodAudioPlay(&format);
  SelectFrequency(32000);
  IpodAudioPresent(1, 2, 3, 4);
  StartIpodAudioPlay(nullptr);
  EXPECT_EQ(GetCapturedStderr(), "");
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[0].function, kStartIpodAudioPlay);
  EXPECT_EQ(calls[0].text, "StartIpodAudioPlay(44100 Hz, 2 channels, 16 bits)");
  EXPECT_EQ(calls[0].samplesPerSecond, 44100u);
  EXPECT_EQ(calls[1].function, kSelectFrequency);
  EXPECT_EQ(calls[1].sampleRate, 32000);
  EXPECT_EQ(calls[2].function, kIpodAudioPresent);
  EXPECT_EQ(calls[2].words, (std::vector<int>{1, 2, 3, 4}));
  EXPECT_FALSE(calls[3].hasFormat);
}

TEST_F(Isochplay, PassesEachFunctionToTheSink) {
  listen();
  SelectZeroBandwithInterface();
  SelectFullBandwithInterface();
  StopIpodAudioPlay();
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[0].function, kSelectZeroBandwithInterface);
  EXPECT_EQ(calls[1].function, kSelectFullBandwithInterface);
  EXPECT_EQ(calls[2].function, kStopIpodAudioPlay);
}

TEST_F(Isochplay, ReturnsTheResultsThatAreSet) {
  listen();
  isochplaySetResult(kSelectZeroBandwithInterface, 10);
  isochplaySetResult(kSelectFullBandwithInterface, 11);
  isochplaySetResult(kStartIpodAudioPlay, -1);
  isochplaySetResult(kStopIpodAudioPlay, 13);
  isochplaySetResult(kSelectFrequency, 14);
  isochplaySetResult(kIpodAudioPresent, 15);
  EXPECT_EQ(SelectZeroBandwithInterface(), 10);
  EXPECT_EQ(SelectFullBandwithInterface(), 11);
  EXPECT_EQ(StartIpodAudioPlay(&format), -1);
  EXPECT_EQ(StopIpodAudioPlay(), 13);
  EXPECT_EQ(SelectFrequency(1), 14);
  EXPECT_EQ(IpodAudioPresent(1, 2, 3, 4), 15);
}

TEST_F(Isochplay, LoadsNoSoundUnlessItIsWanted) {
  listen();
  unsetenv("IPODCTL_AUDIO");
  SelectFullBandwithInterface();
  StartIpodAudioPlay(&format);
  SelectFrequency(48000);
  StopIpodAudioPlay();
  std::stringstream maps;
  maps << std::ifstream("/proc/self/maps").rdbuf();
  EXPECT_NE(maps.str().find("libisochplay.so"), std::string::npos);
  EXPECT_EQ(maps.str().find("libisochplay_sound.so"), std::string::npos);
}

TEST_F(Isochplay, CanBeCalledOnManyThreads) {
  listen();
  isochplaySetSink(
      [](void*, const IsochplayCall* call) { EXPECT_EQ(call->function, kSelectFrequency); },
      nullptr);
  const auto callOften = [] {
    for (int i = 0; i < 1000; ++i)
      SelectFrequency(i);
    return true;
  };
  host_test::BackgroundCall first(callOften);
  host_test::BackgroundCall second(callOften);
  isochplaySetResult(kSelectFrequency, 3);
  EXPECT_EQ(first.result(), true);
  EXPECT_EQ(second.result(), true);
  EXPECT_EQ(SelectFrequency(0), 3);
}

}  // namespace
