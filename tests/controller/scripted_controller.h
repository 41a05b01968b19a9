#pragma once

#include <memory>
#include <utility>

#include "controller/fake_transport.h"
#include "controller/ipod_controller.h"

namespace ipodctl {

/// No transport kind has this number.
constexpr int kNoLink = 2;

/// A controller on a fake transport.
template <class Controller>
class Scripted final : public Controller {
 public:
  explicit Scripted(void (*onMessageMade)(const LingoMessage*) = nullptr) : Controller(kNoLink) {
    auto fake = std::make_unique<FakeTransport>(onMessageMade);
    link = fake.get();
    this->transport = std::move(fake);
  }

  FakeTransport& ipod() { return *link; }
  void setIdentified(uint8_t value) { this->identified = value; }

 private:
  FakeTransport* link = nullptr;
};

}  // namespace ipodctl
