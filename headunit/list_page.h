#pragma once

#include <string>

#include "head_unit.h"

/// Shows the beginning of the open list, first its tabs if it has some, and stops at its first
/// item. `index` is the list's current index.
void showList(HeadUnit& headUnit, const int* index);

/// Returns the name of the current entry; "(no name)" without one.
std::string nameOfEntry(Conversation& ipod);
