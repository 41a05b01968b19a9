#include "byte_fault.h"

namespace virtual_platform {

void SpoiledLine::spoil(const ByteFault& byteFault) {
  fault = byteFault;
  carried = 0;
  struck = false;
}

void SpoiledLine::carry(const BYTE* bytes, std::size_t count, std::vector<BYTE>& arrived) {
  const std::size_t before = arrived.size();
  arrived.insert(arrived.end(), bytes, bytes + count);
  if (!fault || struck) return;
  const std::vector<BYTE> intended(arrived.begin() + static_cast<std::ptrdiff_t>(before),
                                   arrived.end());
  arrived.resize(before);
  for (const BYTE byte : intended)
    carryByte(byte, arrived);
}

void SpoiledLine::carryByte(BYTE byte, std::vector<BYTE>& arrived) {
  if (!fault || carried++ != fault->at) {
    arrived.push_back(byte);
    return;
  }
  struck = true;
  switch (fault->kind) {
    case ByteFault::Kind::kFlipped:
      arrived.push_back(byte ^ fault->value);
      break;
    case ByteFault::Kind::kLost:
      break;
    case ByteFault::Kind::kDoubled:
      arrived.insert(arrived.end(), 2, byte);
      break;
    case ByteFault::Kind::kInserted:
      arrived.push_back(fault->value);
      arrived.push_back(byte);
      break;
  }
}

}  // namespace virtual_platform
