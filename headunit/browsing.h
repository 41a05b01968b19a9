#pragma once

#include "head_unit.h"

/// Shows the artists, the albums of the first one, and the tracks of its first album. Stays in the
/// list of tracks. Returns false when one of the lists did not open.
bool browse(HeadUnit& headUnit);
