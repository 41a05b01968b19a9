#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "lingo/extended_interface_message.h"
#include "link/link_kinds.h"
#include "link/listener.h"
#include "support/memory_limit.h"
#include "support/row_name.h"
#include "support/scripted_platform.h"

namespace ipodctl {
namespace {

using testing::Contains;
using testing::IsEmpty;

const Bytes kFrame1 = {0x55, 0x02, 0x00, 0x01, 0xFD};
const Bytes kFrame2 = {0x55, 0x03, 0x00, 0x02, 0x07, 0xF4};

class WithoutMemory : public ScriptedPlatformTest, public testing::WithParamInterface<LinkKind> {
 protected:
  const LinkKind& kind() const { return GetParam(); }
  Bytes onWire(const Bytes& frame) const { return kind().sync + frame; }

  size_t devicesLeftOpen() const {
    return platform.callsOf("CreateFileW").size() - platform.callsOf("CloseHandle(device").size();
  }

  /// Checks that a wait for a message lasts its whole second.
  void expectNoSignal(Transport& transport) {
    const uint64_t before = platform.waited;
    EXPECT_EQ(transport.getMessage(0, 1), nullptr);
    EXPECT_EQ(platform.waited - before, 1000u);
  }

  /// Lets the reader read these bytes and then call `afterwards`.
  void runReader(Transport& transport, const Bytes& bytes, std::function<void()> afterwards) {
    platform.arrive(bytes);
    platform.arrivals.push_back({{}, true, std::move(afterwards)});
    platform.runThread();
    platform.arrivals.clear();
    transport.flushMessages();
  }
};

TEST_P(WithoutMemory, ATransportOpensOrStaysClosed) {
  forEachFailure([&](const FailurePoint& point) {
    platform.calls.clear();
    const std::unique_ptr<Transport> transport = kind().create();
    const MemoryLimit memory(point);
    const bool opened = transport->open(kind().deviceName);
    EXPECT_EQ(opened, !memory.struck());
    EXPECT_EQ(transport->isOpen(), opened);
    EXPECT_EQ(devicesLeftOpen(), opened ? 1u : 0u);
    return memory.struck();
  });
}

TEST_P(WithoutMemory, ATransportCreatedThenOpensLater) {
  forEachFailure([&](const FailurePoint& point) {
    std::unique_ptr<Transport> transport;
    bool struck = false;
    {
      const MemoryLimit memory(point);
      transport = kind().create();
      struck = memory.struck();
    }
    EXPECT_TRUE(transport->open(kind().deviceName));
    return struck;
  });
}

TEST_P(WithoutMemory, ATransportThatTheRegistryHasNoRoomForStaysClosed) {
  std::vector<std::unique_ptr<Transport>> transports;
  bool struck = false;
  while (!struck && transports.size() < 100) {
    const MemoryLimit memory(kNoMemory);
    transports.push_back(kind().create());
    struck = memory.struck();
    if (struck) {
      EXPECT_FALSE(transports.back()->open(kind().deviceName));
    }
  }
  EXPECT_TRUE(struck);
  EXPECT_EQ(devicesLeftOpen(), 0u);
  EXPECT_TRUE(transports.back()->open(kind().deviceName));
}

TEST_P(WithoutMemory, SendingNeedsNone) {
  const std::unique_ptr<Transport> transport = kind().create();
  ASSERT_TRUE(transport->open(kind().deviceName));
  ExtendedInterfaceMessage message;
  ASSERT_TRUE(message.buildSelectDbRecord(Category::kArtists, 7));
  const MemoryLimit memory(kNoMemory);
  EXPECT_TRUE(transport->sendMessage(message));
  EXPECT_TRUE(transport->sendSyncByte());
  EXPECT_EQ(memory.asked(), 0u);
}

TEST_P(WithoutMemory, ReadingFramesNeedsNone) {
  const std::unique_ptr<Transport> transport = kind().create();
  ASSERT_TRUE(transport->open(kind().deviceName));
  ASSERT_TRUE(transport->startReadData());
  platform.arrive(Bytes{0x00, 0x01} + onWire(kFrame1) + onWire(kFrame2));
  Bytes dest(65535);
  uint8_t* payload = nullptr;
  const MemoryLimit memory(kNoMemory);
  EXPECT_EQ(transport->readFrame(dest.data(), 65535, payload), 2);
  EXPECT_EQ(transport->readFrame(dest.data(), 65535, payload), 3);
  EXPECT_EQ(memory.asked(), 0u);
}

TEST_P(WithoutMemory, AMessageIsLostAndTheReaderContinues) {
  forEachFailure([&](const FailurePoint& point) {
    const std::unique_ptr<Transport> transport = kind().create();
    EXPECT_TRUE(transport->open(kind().deviceName));
    EXPECT_TRUE(transport->startReadData());
    std::unique_ptr<MemoryLimit> memory;
    bool struck = false;
    platform.arrivals.push_back(
        {onWire(kFrame1), false, [&] { memory = std::make_unique<MemoryLimit>(point); }});
    platform.arrivals.push_back({onWire(kFrame2), false, [&] {
                                   struck = memory->struck();
                                   memory.reset();
                                   if (struck) expectNoSignal(*transport);
                                 }});
    runReader(*transport, Bytes{}, [&] {
      if (!struck) {
        EXPECT_EQ(transport->getMessage(0, 1)->getCommand(), 1);
      }
      const auto second = transport->getMessage(0, 1);
      ASSERT_NE(second, nullptr);
      EXPECT_EQ(second->getCommand(), 2);
      EXPECT_EQ(transport->getMessage(0, 1), nullptr);
    });
    return struck;
  });
}

TEST_P(WithoutMemory, AFullQueueKeepsWhatItHolds) {
  const std::unique_ptr<Transport> transport = kind().create();
  ASSERT_TRUE(transport->open(kind().deviceName));
  ASSERT_TRUE(transport->startReadData());
  Bytes many;
  for (int i = 0; i < 40; ++i)
    many = many + onWire(kFrame1);
  std::unique_ptr<MemoryLimit> memory;
  platform.arrivals.push_back({many, false, [&] {
                                 memory = std::make_unique<MemoryLimit>(FailurePoint{30, true});
                               }});
  int taken = 0;
  runReader(*transport, Bytes{}, [&] {
    EXPECT_TRUE(memory->struck());
    memory.reset();
    while (transport->getMessage(0, 1) != nullptr)
      ++taken;
  });
  EXPECT_GT(taken, 0);
  EXPECT_LT(taken, 40);
}

TEST_P(WithoutMemory, AFailureLosesOneMessageOfManyAtMost) {
  Bytes many;
  for (int i = 0; i < 20; ++i)
    many = many + onWire(kFrame1);
  forEachFailure([&](const FailurePoint& point) {
    if (point.andAllLater) return false;
    const std::unique_ptr<Transport> transport = kind().create();
    EXPECT_TRUE(transport->open(kind().deviceName));
    EXPECT_TRUE(transport->startReadData());
    std::unique_ptr<MemoryLimit> memory;
    platform.arrivals.push_back(
        {many, false, [&] { memory = std::make_unique<MemoryLimit>(point); }});
    bool struck = false;
    int taken = 0;
    runReader(*transport, Bytes{}, [&] {
      struck = memory->struck();
      memory.reset();
      while (transport->getMessage(0, 1) != nullptr)
        ++taken;
    });
    EXPECT_EQ(taken, struck ? 19 : 20) << point.allowed;
    return struck;
  });
}

TEST_P(WithoutMemory, AHandlerIsRegisteredOrNot) {
  std::vector<std::string> heard;
  Listener anna{"anna", heard};
  forEachFailure([&](const FailurePoint& point) {
    heard.clear();
    const std::unique_ptr<Transport> transport = kind().create();
    bool added = false;
    bool struck = false;
    {
      const MemoryLimit memory(point);
      added = transport->addHandler(&anna, Listener::first, 0x02, 0x00);
      struck = memory.struck();
    }
    EXPECT_EQ(added, !struck);
    EXPECT_TRUE(transport->open(kind().deviceName));
    EXPECT_TRUE(transport->startReadData());
    runReader(*transport, onWire(kFrame2), nullptr);
    EXPECT_EQ(heard.size(), added ? 1u : 0u);
    return struck;
  });
}

TEST_P(WithoutMemory, TheLastHandlerOfAMessageIsCalledAnyway) {
  const std::unique_ptr<Transport> transport = kind().create();
  std::vector<std::string> heard;
  Listener anna{"anna", heard};
  Listener berta{"berta", heard};
  ASSERT_TRUE(transport->addHandler(&anna, Listener::first, 0x02, 0x00));
  ASSERT_TRUE(transport->addHandler(&berta, Listener::first, 0x02, 0x00));
  ASSERT_TRUE(transport->open(kind().deviceName));
  ASSERT_TRUE(transport->startReadData());
  std::unique_ptr<MemoryLimit> memory;
  constexpr uint32_t kMessageAndItsData = 2;
  platform.arrivals.push_back(
      {onWire(kFrame2), false, [&] {
         memory = std::make_unique<MemoryLimit>(FailurePoint{kMessageAndItsData, true});
       }});
  runReader(*transport, Bytes{}, [&] {
    memory.reset();
    EXPECT_EQ(transport->getMessage(0, 1), nullptr);
  });
  EXPECT_THAT(heard, Contains("berta first 0/2/1"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, WithoutMemory, testing::ValuesIn(kLinkKinds), rowName<LinkKind>);

}  // namespace
}  // namespace ipodctl
