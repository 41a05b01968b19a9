#pragma once

#include <string>

#include "head_unit.h"

/// Shows the beginning of the open list, its tabs first if it has some, and stops on its first
/// item. `index` is the list's current index.
void showList(HeadUnit& headUnit, const int* index);

/// The name of the current entry, "(no name)" without one.
std::string nameOfEntry(Conversation& ipod);
