#pragma once

#include <string>

#include "headunit/misbehaviour.h"
#include "headunit/trial.h"

namespace headunit_test {

/// The sentence with which the program ends; of the head unit's the one before it disconnects.
std::string lastSentence(const Outcome& outcome);

/// Empty, or what the head unit did wrong with an iPod that misbehaved. `whole` is its run with the
/// same model when nothing is wrong.
///
/// It must end within its bound, with an exit status that fits its last sentence. It may call the
/// iPod lost only when the iPod does not answer the test either, and must ask it nothing more then.
/// It shows what an undisturbed session shows at this place, or that something was not answered. A
/// fault of one message costs nothing but time.
std::string faultOfHeadUnit(const Outcome& outcome, const Misbehaviour& misbehaviour,
                            const Outcome& whole);

/// The same for the example.
std::string faultOfExample(const Outcome& outcome, const Misbehaviour& misbehaviour,
                           const Outcome& whole);

}  // namespace headunit_test
