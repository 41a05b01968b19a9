#pragma once

#include "head_unit.h"

// The sections of the session in which something plays.

/// Plays the tracks of the open list. Returns false when nothing plays then.
bool playTracks(HeadUnit& headUnit);
void playNextTrack(HeadUnit& headUnit);
void pauseAndPlayOn(HeadUnit& headUnit);
void changeShuffleMode(HeadUnit& headUnit);
/// Skips to a track at another sample rate, which the iPod announces.
void followSampleRate(HeadUnit& headUnit);
