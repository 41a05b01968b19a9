#pragma once

#include <cstdint>

#include "lingo/database_codes.h"

namespace ipodctl {

/// The category that the host means by a type, kNone when there is no such type.
Category categoryOfType(int type);

/// The host's number for what a list holds, -1 when no list is open.
int typeOfCategory(Category category);

/// True for the categories that a list can hold.
bool isListed(Category category);

/// True for the lists that are split into tabs when they are long.
bool allowsTabs(Category category);

/// True for the lists that begin with a play-all entry.
bool hasPlayAll(Category category);

/// The first record of a category that the host is offered. The first playlist is the whole
/// library, which is not offered.
RecordIndex firstOffered(Category category);

/// The category whose records are counted when a new tree opens with this list: the host's types 6
/// to 8 are audiobooks, podcasts and composers there, and the categories of their numbers below.
Category topLevelCategory(Category category);

/// The order in which the records of a category are sorted below a selection.
SortOrder sortOrderOf(Category category);

}  // namespace ipodctl
