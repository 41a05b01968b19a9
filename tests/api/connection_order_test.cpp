// What a connection prepares, in its order: the logo, the callback for new sample rates, the audio
// interface. The callback shows when a rate is announced meanwhile.

#include <dlfcn.h>
#include <isochplay.h>

#include <cstdio>
#include <functional>

#include "api/api_test.h"
#include "api/small_logo.h"
#include "lingo/received_message.h"
#include "support/host_folder.h"

using namespace ipodctl;

namespace {

std::function<void(const char* name)> whenAFileIsOpened;
std::function<void()> whenTheInterfaceIsSelected;

template <class Function>
Function* platformFunction(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" std::FILE* fopen(const char* name, const char* mode) {
  static const auto platformOpen = platformFunction<std::FILE*(const char*, const char*)>("fopen");
  if (whenAFileIsOpened) whenAFileIsOpened(name);
  return platformOpen(name, mode);
}

extern "C" int WINAPI SelectZeroBandwithInterface() {
  static const auto select = platformFunction<int()>("SelectZeroBandwithInterface");
  if (whenTheInterfaceIsSelected) whenTheInterfaceIsSelected();
  return select();
}

namespace {

class ConnectionOrder : public ApiTest {
 protected:
  void SetUp() override {
    ApiTest::SetUp();
    folder.writeLogo(smallLogo());
    ipodController.setResampleCallback(nullptr);
  }
  void TearDown() override {
    whenAFileIsOpened = nullptr;
    whenTheInterfaceIsSelected = nullptr;
    ApiTest::TearDown();
  }

  /// Returns whether the library follows a rate that is announced now.
  bool followsRates() {
    constexpr uint8_t kRate32000[] = {0x0A, 0x04, 0x00, 0x00, 0x7D, 0x00, 0, 0, 0, 0, 0, 0, 0, 0};
    ipodSampleRate = 0;
    ipodController.onIncomingMessage(makeReceivedMessage(kRate32000, sizeof(kRate32000)));
    return ipodSampleRate == 32000;
  }

  const session::HostFolder folder;
};

TEST_F(ConnectionOrder, ReadsTheLogoSetsTheCallbackAndSelectsTheInterface) {
  std::vector<std::string> steps;
  const auto note = [&](const char* step) {
    steps.push_back(std::string(step) + (followsRates() ? ", follows rates" : ""));
  };
  whenAFileIsOpened = [&](const char* name) {
    if (std::string(name) == "logo_zel.bmp") note("logo");
  };
  whenTheInterfaceIsSelected = [&] { note("interface"); };
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_THAT(steps, testing::ElementsAre("logo", "interface, follows rates"));
}

TEST_F(ConnectionOrder, ForgetsThePreviousIpodFirst) {
  ASSERT_EQ(IpodConnect(), 1);
  openTree(IPOD_ARTISTS, 36);
  IpodDisconnect();
  int level = -1;
  int hasPlayPause = -1;
  whenAFileIsOpened = [&](const char*) { level = browseTree.level; };
  whenTheInterfaceIsSelected = [&] { hasPlayPause = ipodHasPlayPause; };
  ASSERT_EQ(IpodConnect(), 1);
  EXPECT_EQ(level, 0);
  EXPECT_EQ(hasPlayPause, 0);
}

}  // namespace
