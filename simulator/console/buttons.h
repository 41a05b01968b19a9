#pragma once

#include <string>

#include "link/pty_ipod.h"

namespace simulator {

/// Presses a button of the iPod, as a person does. Returns false when there is none of this name.
bool pressButton(PtyIpod& pty, const std::string& name);

/// Returns the names of the buttons, with a comma and a blank between them.
std::string buttonNames();

}  // namespace simulator
