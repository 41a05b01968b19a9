#pragma once

#include "head_unit.h"

// Sections of the session in which something plays.

/// Plays the tracks of the open list. False when nothing plays then.
bool playTracks(HeadUnit& headUnit);
void playNextTrack(HeadUnit& headUnit);
void pauseAndPlayOn(HeadUnit& headUnit);
void changeShuffleMode(HeadUnit& headUnit);
/// To a track at another sample rate, which announces itself.
void followSampleRate(HeadUnit& headUnit);
