#pragma once

#include "head_unit.h"

// The sections of the session that show texts.

void showTrackTexts(HeadUnit& headUnit);
/// Shows the iPod's name and serial number.
void showIdentity(HeadUnit& headUnit);
