#include <gtest/gtest.h>

#include "controller/controller_test.h"
#include "controller/logo_file.h"
#include "support/console.h"

namespace ipodctl::connection {
namespace {

constexpr const char* kIdentify = "55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00";
const Bytes kIdentified = {0x00, 0x10, 0x0A, 0x01, 0x02};

const Calls kUnregistered = {"removeHandler 0A 0004"};
const Calls kOpened = {"flush", "open IPD1:", "start"};

/// An identification that the iPod completes with its first message.
const Calls kIdentification = {"flush",
                               "sleep 80",
                               "sleep 20",
                               "flush",
                               "send 55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00",
                               "wait 0 ns 1 s"};
const Calls kRegistered = {"addHandler 0A 0004"};

const Calls kLimitsRequest = {"flush", "send 55 03 04 00 39", "wait 0 ns 1 s"};

class Connection : public ControllerTest {
 protected:
  Connection() : file(bitmap({}, Bytes(4 * 1 * 3))) {}

  void identifyAtOnce() { ipod().answer(kIdentify, {kIdentified}); }

  const LogoFile file;
  const LogoBitmap someImage;
};

TEST_F(Connection, OpensStartsIdentifiesAndRegistersForAudioAttributes) {
  identifyAtOnce();
  EXPECT_TRUE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(callLog(), kUnregistered + kOpened + kIdentification + kRegistered);
  EXPECT_EQ(controller().isIdentified(), 1);
}

TEST_F(Connection, ClearsRepliesFirst) {
  ipod().arrive({kIdentified});
  ipod().opens = false;
  EXPECT_FALSE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(liveMessages(), 0u);
}

TEST_F(Connection, ThatDoesNotOpenStopsThere) {
  ipod().opens = false;
  EXPECT_FALSE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(callLog(), kUnregistered + (Calls{"flush", "open IPD1:"}));
}

TEST_F(Connection, ThatDoesNotOpenLeavesTheLastIdentification) {
  identifyAtOnce();
  ASSERT_TRUE(controller().connect("IPD1:", nullptr));
  ipod().opens = false;
  EXPECT_FALSE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(controller().isIdentified(), 1);
}

TEST_F(Connection, ThatWasNotClosedIsMadeAgainWithOneHandler) {
  identifyAtOnce();
  ASSERT_TRUE(controller().connect("IPD1:", nullptr));
  callLog().clear();
  identifyAtOnce();
  EXPECT_TRUE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(callLog(), kUnregistered + kOpened + kIdentification + kRegistered);
  EXPECT_EQ(ipod().registeredHandlers(), 1u);
}

TEST_F(Connection, ThatFailsAfterAnOpenOneHasNoHandler) {
  identifyAtOnce();
  ASSERT_TRUE(controller().connect("IPD1:", nullptr));
  EXPECT_FALSE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(ipod().registeredHandlers(), 0u);
}

TEST_F(Connection, TriesToIdentifyWhateverTheReadersStartSays) {
  ipod().starts = false;
  identifyAtOnce();
  EXPECT_TRUE(controller().connect("IPD1:", nullptr));
}

TEST_F(Connection, ThatIsNotIdentifiedRegistersNothing) {
  EXPECT_FALSE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(ipod().registeredHandlers(), 0u);
  EXPECT_EQ(linesOf(callLog(), "addHandler"), Calls{});
  EXPECT_EQ(linesOf(callLog(), "send").size(), 3u);
}

TEST_F(Connection, IdentifiedInTheThirdAttemptOnlyFails) {
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {});
  ipod().answer(kIdentify, {kIdentified});
  EXPECT_FALSE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(linesOf(callLog(), "addHandler"), Calls{});
}

TEST_F(Connection, ThatCannotRegisterFails) {
  ipod().registers = false;
  identifyAtOnce();
  EXPECT_FALSE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(linesOf(callLog(), "addHandler"), kRegistered);
}

TEST_F(Connection, ShowsTheLogoBeforeItRegisters) {
  ASSERT_TRUE(controller().LoadLogo(file.path()));
  identifyAtOnce();
  EXPECT_TRUE(controller().connect("IPD1:", controller().logoImage()));
  EXPECT_EQ(callLog(), kUnregistered + kOpened + kIdentification + kLimitsRequest + kRegistered);
}

TEST_F(Connection, ShowsItsOwnLogoForAnyImage) {
  ASSERT_TRUE(controller().LoadLogo(file.path()));
  identifyAtOnce();
  ipod().answer("55 03 04 00 39", {{0x04, 0x00, 0x3A, 0x00, 0x04, 0x00, 0x01, 0x02}});
  EXPECT_TRUE(controller().connect("IPD1:", &someImage));
  EXPECT_EQ(linesOf(callLog(), "send").back(),
            "send 55 16 04 00 32 00 00 02 00 04 00 01 00 00 00 08 00 00 00 00 00 00 00 00");
}

TEST_F(Connection, WithoutAnImageShowsNoLogo) {
  ASSERT_TRUE(controller().LoadLogo(file.path()));
  identifyAtOnce();
  EXPECT_TRUE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(callLog(), kUnregistered + kOpened + kIdentification + kRegistered);
}

TEST_F(Connection, WithAnImageButNoLoadedLogoShowsNone) {
  identifyAtOnce();
  EXPECT_TRUE(controller().connect("IPD1:", &someImage));
  EXPECT_EQ(callLog(), kUnregistered + kOpened + kIdentification + kRegistered);
}

TEST_F(Connection, ThatIsNotIdentifiedShowsNoLogo) {
  ASSERT_TRUE(controller().LoadLogo(file.path()));
  EXPECT_FALSE(controller().connect("IPD1:", controller().logoImage()));
  EXPECT_EQ(linesOf(callLog(), "send 55 03 04 00 39"), Calls{});
}

TEST_F(Connection, OpensTheDeviceOfTheGivenName) {
  ipod().opens = false;
  controller().connect("COM1:", nullptr);
  EXPECT_EQ(callLog(), kUnregistered + (Calls{"flush", "open COM1:"}));
}

TEST_F(Connection, PrintsItsIdentificationInDebug) {
  identifyAtOnce();
  EXPECT_EQ(printedInDebug([&] { controller().connect("IPD1:", nullptr); }),
            "OUT-> Lingo=0\tCommand=0x13 Data=0x0 0x0 \n"
            "indentifyIpod A = true \nindentifyIpod = 1 \n");
}

TEST_F(Connection, ThatFailsPrintsNoSuccessInDebug) {
  ipod().opens = false;
  EXPECT_EQ(printedInDebug([&] { controller().connect("IPD1:", nullptr); }), "");
}

TEST_F(Connection, PrintsNothingOutsideDebug) {
  identifyAtOnce();
  EXPECT_EQ(printedQuietly([&] { controller().connect("IPD1:", nullptr); }), "");
}

TEST_F(Connection, OfAClosedControllerBeginsAnew) {
  identifyAtOnce();
  ASSERT_TRUE(controller().connect("IPD1:", nullptr));
  ASSERT_TRUE(controller().CloseIpod());
  EXPECT_EQ(ipod().registeredHandlers(), 0u);
  callLog().clear();
  identifyAtOnce();
  EXPECT_TRUE(controller().connect("IPD1:", nullptr));
  EXPECT_EQ(callLog(), kUnregistered + kOpened + kIdentification + kRegistered);
  EXPECT_EQ(ipod().registeredHandlers(), 1u);
}

using IpodIdentification = ControllerTest;

TEST_F(IpodIdentification, OpensStartsAndIdentifiesWithoutRegistering) {
  ipod().answer(kIdentify, {kIdentified});
  EXPECT_TRUE(controller().IdentifyIpod("IPD1:", false));
  EXPECT_EQ(callLog(), kOpened + kIdentification);
}

TEST_F(IpodIdentification, FailsWhenTheDeviceDoesNotOpen) {
  ipod().opens = false;
  EXPECT_FALSE(controller().IdentifyIpod("IPD1:", true));
  EXPECT_EQ(callLog(), (Calls{"flush", "open IPD1:"}));
}

TEST_F(IpodIdentification, FailsWhenTheIpodIsSilent) {
  EXPECT_FALSE(controller().IdentifyIpod("IPD1:", false));
}

TEST_F(IpodIdentification, WithoutALogoUploadsNone) {
  ipod().answer(kIdentify, {kIdentified});
  EXPECT_TRUE(controller().IdentifyIpod("IPD1:", true));
  EXPECT_EQ(callLog(), kOpened + kIdentification);
}

using BaseIpodIdentification = ControllerFixture<IpodControllerBase>;

TEST_F(BaseIpodIdentification, RunsTheBaseHandshake) {
  ipod().answer("55 0E 00 13 00 00 00 01 00 00 00 00 00 00 00 00", {{0x00, 0x02, 0x00, 0x05}});
  EXPECT_TRUE(controller().IdentifyIpod("COM1:", false));
  EXPECT_EQ(callLog().at(1), "open COM1:");
  EXPECT_EQ(linesOf(callLog(), "sync").size(), 2u);
  EXPECT_EQ(controller().isIdentified(), 1);
}

}  // namespace
}  // namespace ipodctl::connection
