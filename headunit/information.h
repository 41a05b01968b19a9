#pragma once

#include "head_unit.h"

// Sections of the session with texts.

void showTrackTexts(HeadUnit& headUnit);
/// The iPod's name and serial number.
void showIdentity(HeadUnit& headUnit);
