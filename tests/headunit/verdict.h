#pragma once

#include <string>

#include "headunit/trial.h"
#include "support/misbehaviour.h"

namespace headunit_test {

using program_run::Misbehaviour;

/// Returns the last sentence of the program; that of the head unit is the one before it
/// disconnects.
std::string lastSentence(const Outcome& outcome);

/// Returns an empty text, or the error of the head unit with an iPod that misbehaved. `whole` is
/// its run with the same model without faults.
///
/// It must end within its bound, with an exit status that fits its last sentence. It may report a
/// lost iPod only when the iPod does not answer the test either, and must not ask it anything
/// afterwards. It shows what an undisturbed session shows at this place, or that something was not
/// answered. A fault of one message costs only time.
std::string faultOfHeadUnit(const Outcome& outcome, const Misbehaviour& misbehaviour,
                            const Outcome& whole);

/// Returns the same for the example.
std::string faultOfExample(const Outcome& outcome, const Misbehaviour& misbehaviour,
                           const Outcome& whole);

}  // namespace headunit_test
