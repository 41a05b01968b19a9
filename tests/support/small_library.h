#pragma once

#include "music/music_library.h"

namespace simulator {

/// A small library:
///
///     default order  title      artist    album   genre composer disc track year  ms    Hz
///     0              Able       Anna      First   Rock  Cole     1    1     2001  10000 44100
///     1              Baker      Anna      First   Rock  Cole     1    2     2001  20000 44100
///     2              Charlie    Anna      Second  Pop   Dorn     1    1     2003  30000 48000
///     3              The Delta  The Bees  Hive    Rock  -        1    1     1999   5000 32000
///     4              Echo       Carl      Hive    Jazz  Cole     1    2     0      6000 44100
///
/// plus the audiobook "Long Book" (one chapter, 60000 ms), the podcast "Daily" (one episode,
/// 90000 ms), and the playlists "Mix" (Echo, Able, the episode) and "Empty". It is called "Pod".
MusicLibrary smallLibrary();

}  // namespace simulator
