#include "controller/ipod_controller_base.h"

#include <new>

#include "base/debug_print.h"
#include "link/serial_transport.h"
#include "link/usb_transport.h"

namespace ipodctl {
namespace {

std::unique_ptr<Transport> makeTransport(int kind) {
  switch (kind) {
    case kSerialLink:
      return std::unique_ptr<Transport>(new (std::nothrow) SerialTransport);
    case kUsbLink:
      return std::unique_ptr<Transport>(new (std::nothrow) UsbTransport);
    default:
      return nullptr;
  }
}

}  // namespace

IpodControllerBase::IpodControllerBase(int transportKind)
    : transport(makeTransport(transportKind)) {}

IpodControllerBase::~IpodControllerBase() { releaseTransport(); }

void IpodControllerBase::releaseTransport() {
  if (!transport) return;
  transport->releaseLocksOfKilledReader();
  transport->removeHandlers(this);
  transport->shutDown();
  transport->flushMessages();
  transport.reset();
}

bool IpodControllerBase::IdentifyIpod(const char* deviceName, bool showLogo) {
  if (!clearReplies() || !transport->open(deviceName)) return false;
  transport->startReadData();
  if (!indentifyIpod()) return false;
  debugPrint("indentifyIpod = 1 \n");
  if (showLogo && logo) uploadLogo();
  return true;
}

bool IpodControllerBase::CloseIpod() {
  if (!transport) return false;
  if (identified) ExitExtendedMode();
  identified = 0;
  const bool closed = transport->close();
  transport->awaitReader();
  clearReplies();
  keptMessages.clear();
  return closed;
}

uint8_t IpodControllerBase::isIdentified() { return identified; }

int IpodControllerBase::onIncomingMessage(std::unique_ptr<LingoMessage>) { return 0; }

}  // namespace ipodctl
