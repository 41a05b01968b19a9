// IPD1: mapped to a TCP port: "tcp:HOST:PORT".
#include <arpa/inet.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
#include <windows.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <utility>

#include "support/background_call.h"
#include "support/device_calls.h"

namespace socket_device {
namespace {

using host_test::BackgroundCall;
using host_test::DeviceMapping;
using host_test::failure;
using host_test::openDevice;
using host_test::OwnedHandle;
using host_test::Patience;
using host_test::readDevice;
using host_test::success;
using host_test::Transfer;
using host_test::writeDevice;
using testing::HasSubstr;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

/// A port of this machine, at which the test is the iPod.
class Port {
 public:
  explicit Port(int backlog = 1) : listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const general = reinterpret_cast<sockaddr*>(&address);
    const bool isUsable = bind(listener, general, size) == 0 && listen(listener, backlog) == 0 &&
                          getsockname(listener, general, &size) == 0;
    if (!isUsable) throw std::runtime_error("no port");
    portNumber = ntohs(address.sin_port);
  }
  Port(const Port&) = delete;
  Port& operator=(const Port&) = delete;
  ~Port() {
    hangUp();
    stopListening();
  }

  std::string name() const { return "127.0.0.1:" + std::to_string(portNumber); }

  void accept() { client = ::accept(listener, nullptr, nullptr); }
  void send(const Bytes& bytes) const {
    EXPECT_EQ(::send(client, bytes.data(), bytes.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(bytes.size()));
  }
  Bytes receive(std::size_t count) const {
    Bytes bytes(count);
    std::size_t received = 0;
    const Patience patience;
    pollfd watched = {client, POLLIN, 0};
    while (received < count && poll(&watched, 1, patience.left()) > 0) {
      const ssize_t n = read(client, bytes.data() + received, count - received);
      if (n <= 0) break;
      received += static_cast<std::size_t>(n);
    }
    bytes.resize(received);
    return bytes;
  }
  void hangUp() {
    if (client >= 0) close(std::exchange(client, -1));
  }
  void stopListening() {
    if (listener >= 0) close(std::exchange(listener, -1));
  }

 private:
  int listener;
  int client = -1;
  int portNumber = 0;
};

class SocketDevice : public testing::Test {
 protected:
  SocketDevice() { port.accept(); }

  Port port;
  DeviceMapping devices{"IPD1:=tcp:" + port.name()};
  OwnedHandle device{openDevice(u"IPD1:")};
};

TEST_F(SocketDevice, CarriesTheBytesAsTheyAre) {
  ASSERT_TRUE(device.isOpen());
  EXPECT_EQ(writeDevice(device.get(), {0x55, 0x02, 0xFF}), success({0x55, 0x02, 0xFF}));
  EXPECT_TRUE(FlushFileBuffers(device.get()));
  EXPECT_EQ(port.receive(3), (Bytes{0x55, 0x02, 0xFF}));
  port.send({0xFF, 0x55, 0x03});
  Bytes read;
  while (read.size() < 3) {
    const Transfer part = readDevice(device.get(), 3);
    ASSERT_TRUE(part.result);
    read.insert(read.end(), part.bytes.begin(), part.bytes.end());
  }
  EXPECT_EQ(read, (Bytes{0xFF, 0x55, 0x03}));
}

TEST_F(SocketDevice, ReadWaitsForAByte) {
  BackgroundCall<Transfer> read([handle = device.get()] { return readDevice(handle, 100); });
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_FALSE(read.isDone());
  port.send({0x55});
  EXPECT_EQ(read.result(), success({0x55}));
}

TEST_F(SocketDevice, EndOfTheStreamFailsTheReadAfterTheLastByte) {
  port.send({0x55});
  port.hangUp();
  EXPECT_EQ(readDevice(device.get(), 1), success({0x55}));
  EXPECT_EQ(readDevice(device.get(), 1), failure(ERROR_GEN_FAILURE));
}

TEST_F(SocketDevice, EndOfTheStreamFailsAReadThatWaits) {
  BackgroundCall<Transfer> read([handle = device.get()] { return readDevice(handle, 100); });
  EXPECT_TRUE(read.waitUntilBlocked());
  port.hangUp();
  EXPECT_EQ(read.result(), failure(ERROR_GEN_FAILURE));
}

/// A write to a socket without another side also sends a signal, which ends a program.
TEST_F(SocketDevice, WriteFailsAfterTheOtherSideHasClosed) {
  port.hangUp();
  Transfer last = success({});
  for (const Patience patience; last.result && !patience.isOver();)
    last = writeDevice(device.get(), {0x55});
  EXPECT_EQ(last, failure(ERROR_GEN_FAILURE));
}

TEST_F(SocketDevice, CloseWakesARead) {
  BackgroundCall<Transfer> read([handle = device.get()] { return readDevice(handle, 1); });
  EXPECT_TRUE(read.waitUntilBlocked());
  EXPECT_TRUE(device.close());
  EXPECT_EQ(read.result(), failure(ERROR_OPERATION_ABORTED));
  EXPECT_EQ(port.receive(1), Bytes());
}

TEST_F(SocketDevice, HasNoSerialSettings) {
  DCB state = {};
  EXPECT_FALSE(GetCommState(device.get(), &state));
  EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
}

/// Returns the line about an open that must fail with ERROR_FILE_NOT_FOUND.
std::string complaintAbout(const std::string& end) {
  const DeviceMapping devices("IPD1:=" + end);
  CaptureStderr();
  EXPECT_EQ(openDevice(u"IPD1:"), INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
  return GetCapturedStderr();
}

TEST(SocketDeviceOpen, FindsAHostByItsName) {
  Port port;
  const std::string number = port.name().substr(port.name().find(':'));
  const DeviceMapping devices("IPD1:=tcp:localhost" + number);
  EXPECT_TRUE(OwnedHandle(openDevice(u"IPD1:")).isOpen());
}

TEST(SocketDeviceOpen, SaysThatNobodyListens) {
  Port port;
  port.stopListening();
  EXPECT_EQ(complaintAbout("tcp:" + port.name()),
            "ipodctl: IPD1: tcp:" + port.name() +
                " cannot be reached: Connection refused; start ipodsim --listen there, or correct "
                "IPODCTL_DEVICES\n");
}

/// The first client waits to be accepted, and the system ignores the others. Takes two seconds.
TEST(SocketDeviceOpen, GivesUpAfterTwoSeconds) {
  using std::chrono::milliseconds;
  const Port port(0);
  const DeviceMapping devices("IPD1:=tcp:" + port.name());
  const OwnedHandle first(openDevice(u"IPD1:"));
  ASSERT_TRUE(first.isOpen());
  const auto begin = std::chrono::steady_clock::now();
  const std::string complaint = complaintAbout("tcp:" + port.name());
  const auto time = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(time, milliseconds(1900));
  EXPECT_LT(time, milliseconds(4000));
  EXPECT_EQ(complaint, "ipodctl: IPD1: tcp:" + port.name() +
                           " does not answer within 2 seconds; check the host and the network\n");
}

TEST(SocketDeviceOpen, SaysThatAHostIsNotFound) {
  EXPECT_THAT(complaintAbout("tcp:no host:5000"), HasSubstr("tcp:no host:5000 is not found"));
}

}  // namespace
}  // namespace socket_device
