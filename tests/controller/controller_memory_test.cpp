// Every operation without memory at every place where it asks for some: it fails cleanly, and the
// next one works.

#include <gtest/gtest.h>

#include <string>

#include "controller/logo_file.h"
#include "controller/operations.h"
#include "controller/scripted_controller.h"
#include "lingo/received_message.h"
#include "support/memory_limit.h"
#include "support/row_name.h"

namespace ipodctl::controller_memory {
namespace {

using Controller = Scripted<IpodController>;

/// What an operation returned while its memory was limited, and whether the limit struck.
struct Limited {
  bool result;
  bool struck;
};

template <class Call>
Limited limited(const FailurePoint& point, const Call& call) {
  const MemoryLimit memory(point);
  const bool result = call();
  return {result, memory.struck()};
}

class SingleReplyWithoutMemory : public testing::TestWithParam<SingleReplyOperation> {};

TEST_P(SingleReplyWithoutMemory, FailsAndLeavesItsOutputs) {
  const SingleReplyOperation& row = GetParam();
  forEachFailure([&](const FailurePoint& point) {
    Controller controller;
    controller.ipod().answer(row.request, {row.reply});
    Limited outcome{};
    const Outcome withoutMemory = row.call(controller, true, [&](const auto& call) {
      outcome = limited(point, call);
      return outcome.result;
    });
    EXPECT_EQ(withoutMemory, outcome.struck ? (Outcome{false, row.untouched(true)})
                                            : (Outcome{true, row.outputs}));
    controller.ipod().answer(row.request, {row.reply});
    EXPECT_EQ(row.call(controller, false), (Outcome{true, row.outputs}));
    return outcome.struck;
  });
}

INSTANTIATE_TEST_SUITE_P(Of, SingleReplyWithoutMemory, testing::ValuesIn(singleReplyOperations()),
                         rowName<SingleReplyOperation>);

class AcknowledgedWithoutMemory : public testing::TestWithParam<AcknowledgedOperation> {};

TEST_P(AcknowledgedWithoutMemory, Fails) {
  const AcknowledgedOperation& row = GetParam();
  forEachFailure([&](const FailurePoint& point) {
    Controller controller;
    controller.ipod().answer(row.request, {row.acknowledgement});
    const Limited outcome = limited(point, [&] { return row.call(controller); });
    EXPECT_EQ(outcome.result, !outcome.struck);
    controller.ipod().answer(row.request, {row.acknowledgement});
    EXPECT_TRUE(row.call(controller));
    return outcome.struck;
  });
}

INSTANTIATE_TEST_SUITE_P(Operation, AcknowledgedWithoutMemory,
                         testing::ValuesIn(acknowledgedOperations()),
                         rowName<AcknowledgedOperation>);

class UnansweredWithoutMemory : public testing::TestWithParam<UnansweredOperation> {};

TEST_P(UnansweredWithoutMemory, FailsAndSendsNothing) {
  const UnansweredOperation& row = GetParam();
  forEachFailure([&](const FailurePoint& point) {
    Controller controller;
    callLog().clear();
    const Limited outcome = limited(point, [&] { return row.call(controller); });
    EXPECT_EQ(outcome.result, row.result && !outcome.struck);
    EXPECT_EQ(linesOf(callLog(), "send").size(), outcome.struck ? 0u : 1u);
    EXPECT_EQ(row.call(controller), row.result);
    return outcome.struck;
  });
}

INSTANTIATE_TEST_SUITE_P(Command, UnansweredWithoutMemory,
                         testing::ValuesIn(unansweredOperations()), rowName<UnansweredOperation>);

TEST(ButtonsWithoutMemory, Fail) {
  forEachFailure([](const FailurePoint& point) {
    Controller controller;
    const Limited outcome = limited(point, [&] { return controller.PressButton(26); });
    EXPECT_EQ(outcome.result, !outcome.struck);
    EXPECT_TRUE(controller.PressButton(26));
    return outcome.struck;
  });
}

TEST(AudioButtonWithoutMemory, Fails) {
  forEachFailure([](const FailurePoint& point) {
    Controller controller;
    const Limited outcome = limited(point, [&] { return controller.SendAudioButton(1); });
    EXPECT_EQ(outcome.result, !outcome.struck);
    EXPECT_TRUE(controller.SendAudioButton(1));
    return outcome.struck;
  });
}

constexpr const char* kRequestOfThree = "55 0C 04 00 1A 05 00 00 00 00 00 00 00 03";
const Payloads kThreeRecords = {{0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x00, 'a', 0x00},
                                {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x01, 'b', 0x00},
                                {0x04, 0x00, 0x1B, 0x00, 0x00, 0x00, 0x02, 'c', 0x00}};

TEST(RecordRetrievalWithoutMemory, FailsAndKeepsWholeRecordsOnly) {
  forEachFailure([](const FailurePoint& point) {
    Controller controller;
    RecordList records;
    controller.ipod().answer(kRequestOfThree, kThreeRecords);
    const Limited outcome = limited(
        point, [&] { return controller.RetrieveDbRecords(Category::kTracks, 0, 3, records); });
    EXPECT_EQ(outcome.result, !outcome.struck);
    EXPECT_EQ(records.size() == 3, !outcome.struck);
    for (const RecordEntry& record : records)
      EXPECT_EQ(textOf(record.name), std::string(1, static_cast<char>('a' + record.index)));
    records.clear();
    controller.ipod().answer(kRequestOfThree, kThreeRecords);
    EXPECT_TRUE(controller.RetrieveDbRecords(Category::kTracks, 0, 3, records));
    EXPECT_EQ(records.size(), 3u);
    return outcome.struck;
  });
}

/// An iPod that goes through the whole identification.
void answerIdentification(FakeTransport& ipod) {
  ipod.answer("55 0E 00 13 00 00 04 11 00 00 00 00 00 00 00 00",
              {{0x00, 0x02, 0x00, 0x13},
               {0x00, 0x27, 0x00},
               {0x00, 0x27, 0x02, 0x00, 0x0B, 0x00, 0x05, 0x01, 0x03, 0x02},
               {0x00, 0x27, 0x03, 0x04},
               {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0},
               {0x0A, 0x02}});
  ipod.answer("55 03 00 0F 00", {{0x00, 0x10, 0x00, 0x01, 0x07}});
  ipod.answer("55 03 00 0F 04", {{0x00, 0x10, 0x04, 0x01, 0x0D}});
  ipod.answer("55 03 00 0F 0A", {{0x00, 0x10, 0x0A, 0x01, 0x02}});
}

TEST(IdentificationWithoutMemory, SaysWhatItReached) {
  forEachFailure([](const FailurePoint& point) {
    Controller controller;
    answerIdentification(controller.ipod());
    const Limited outcome = limited(point, [&] { return controller.indentifyIpod(); });
    EXPECT_EQ(outcome.result, controller.isIdentified() == 1);
    EXPECT_TRUE(outcome.result || outcome.struck);
    answerIdentification(controller.ipod());
    EXPECT_TRUE(controller.indentifyIpod());
    return outcome.struck;
  });
}

TEST(BaseIdentificationWithoutMemory, SaysWhatItReached) {
  constexpr const char* kIdentify = "55 0E 00 13 00 00 00 01 00 00 00 00 00 00 00 00";
  const Payloads kAnswer = {{0x00, 0x02, 0x00, 0x13}, {0x00, 0x27, 0x00}, {0x00, 0x04, 0x01}};
  forEachFailure([&](const FailurePoint& point) {
    Scripted<IpodControllerBase> controller;
    controller.ipod().answer(kIdentify, kAnswer);
    controller.ipod().answer("55 02 00 05", {{0x00, 0x02, 0x00, 0x05}});
    const Limited outcome = limited(point, [&] { return controller.indentifyIpod(); });
    EXPECT_EQ(outcome.result, controller.isIdentified() == 1);
    controller.ipod().answer(kIdentify, kAnswer);
    controller.ipod().answer("55 02 00 05", {{0x00, 0x02, 0x00, 0x05}});
    EXPECT_TRUE(controller.indentifyIpod());
    return outcome.struck;
  });
}

TEST(ReentryWithoutMemory, SaysWhatItReached) {
  forEachFailure([](const FailurePoint& point) {
    Controller controller;
    FakeTransport& ipod = controller.ipod();
    const auto prepare = [&] {
      ipod.arriveAfterFlush({{0x0A, 0x02}});
      ipod.answer("55 03 00 0F 00", {{0x00, 0x10, 0x0A, 0x01, 0x02}});
      ipod.answer("55 02 00 05", {{0x00, 0x02, 0x00, 0x05}});
    };
    prepare();
    const Limited outcome = limited(point, [&] { return controller.reenterExtendedMode(); });
    EXPECT_TRUE(outcome.result || outcome.struck);
    prepare();
    EXPECT_TRUE(controller.reenterExtendedMode());
    return outcome.struck;
  });
}

const Bytes kRate48000 = {0x0A, 0x04, 0x00, 0x00, 0xBB, 0x80, 0, 0, 0, 0, 0, 0, 0, 0};

TEST(AudioAttributesWithoutMemory, AreStillReturned) {
  forEachFailure([](const FailurePoint& point) {
    Controller controller;
    controller.ipod().arriveAfterFlush({{0x0A, 0x02}, kRate48000});
    uint32_t rate = 0;
    const Limited outcome = limited(point, [&] { return controller.waitAudioAttributes(rate); });
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(rate, 48000u);
    return outcome.struck;
  });
}

TEST(AudioNotificationWithoutMemory, IsStillStoredAndPassedOn) {
  static int32_t toldRate;
  forEachFailure([](const FailurePoint& point) {
    Controller controller;
    toldRate = 0;
    controller.setResampleCallback([](int32_t rate) {
      toldRate = rate;
      return 0;
    });
    auto message = makeReceivedMessage(kRate48000.data(), 14);
    const Limited outcome =
        limited(point, [&] { return controller.onIncomingMessage(std::move(message)) == 0; });
    EXPECT_TRUE(outcome.result);
    EXPECT_EQ(toldRate, 48000);
    uint32_t rate = 0;
    EXPECT_TRUE(controller.getSampleRate(rate));
    EXPECT_EQ(rate, 48000u);
    return outcome.struck;
  });
}

TEST(LogoWithoutMemory, IsNotLoaded) {
  const LogoFile file(bitmap(sized(7, 2), Bytes(42)));
  forEachFailure([&](const FailurePoint& point) {
    Controller controller;
    EXPECT_TRUE(controller.LoadLogo(file.path()));
    const Limited outcome = limited(point, [&] { return controller.LoadLogo(file.path()); });
    EXPECT_EQ(outcome.result, !outcome.struck);
    EXPECT_EQ(controller.logoImage() == nullptr, outcome.struck);
    EXPECT_TRUE(controller.LoadLogo(file.path()));
    EXPECT_TRUE(controller.FreeLogo());
    return outcome.struck;
  });
}

/// An iPod that is identified and takes a logo of 4 x 1 pixels on a screen of 4 x 3.
void answerConnection(FakeTransport& ipod) {
  const Bytes acknowledged = {0x04, 0x00, 0x01, 0x00, 0x00, 0x32};
  answerIdentification(ipod);
  ipod.answer("55 03 04 00 39", {{0x04, 0x00, 0x3A, 0x00, 0x04, 0x00, 0x03, 0x02}});
  ipod.answer("55 16 04 00 32 00 00 02 00 04 00 02 00 00 00 08 FF FF FF FF FF FF FF FF",
              {acknowledged});
  ipod.answer("55 0D 04 00 32 00 01 00 00 00 00 00 00 00 00", {acknowledged});
}

TEST(ConnectionWithLogoWithoutMemory, SaysWhetherTheIpodIsIdentified) {
  const LogoFile file(bitmap({}, Bytes(12)));
  forEachFailure([&](const FailurePoint& point) {
    Controller controller;
    EXPECT_TRUE(controller.LoadLogo(file.path()));
    answerConnection(controller.ipod());
    const Limited outcome =
        limited(point, [&] { return controller.connect("IPD1:", controller.logoImage()); });
    EXPECT_EQ(outcome.result, controller.isIdentified() == 1);
    EXPECT_EQ(controller.ipod().registeredHandlers(), outcome.result ? 1u : 0u);
    EXPECT_TRUE(controller.CloseIpod());
    callLog().clear();
    answerConnection(controller.ipod());
    EXPECT_TRUE(controller.connect("IPD1:", controller.logoImage()));
    EXPECT_EQ(linesOf(callLog(), "send 55 0D 04 00 32").size(), 1u);
    return outcome.struck;
  });
}

TEST(ConstructionWithoutMemory, MakesAControllerThatDoesNotConnect) {
  for (const int kind : {kSerialLink, kUsbLink}) {
    forEachFailure([&](const FailurePoint& point) {
      return limited(point,
                     [&] {
                       IpodController controller(kind);
                       EXPECT_FALSE(controller.connect("IPD7:", nullptr));
                       controller.CloseIpod();
                       return true;
                     })
          .struck;
    });
  }
}

}  // namespace
}  // namespace ipodctl::controller_memory
