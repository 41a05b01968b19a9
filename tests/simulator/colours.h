/// The colours that several tests of the screen expect.
#pragma once

#include "screen/screen.h"

namespace simulator {

constexpr Colour kWhite{255, 255, 255};
constexpr Colour kBlack{0, 0, 0};

}  // namespace simulator
