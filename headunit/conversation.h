#pragma once

#include <cstddef>
#include <functional>

/// Calls functions of the library, and returns whether what they wrote makes sense. It may be
/// called twice.
using Question = std::function<bool()>;

/// Asks the connected iPod so that its answers can be shown.
///
/// Most functions of the library do not report that the iPod did not answer: they do not change
/// their outputs. An answer can also belong to an earlier question: many iPods acknowledge a
/// connection twice, and some answer late or twice. From then on each question gets the answer to
/// the previous one. A pause ends that, because the next question discards what has arrived
/// meanwhile.
class Conversation {
 public:
  /// Waits for the last acknowledgement of a new connection.
  void begin();

  /// Asks, and asks again after a pause when the answer makes no sense or may belong to another
  /// question. Returns false when there is no correct answer; at once when the iPod is lost.
  bool ask(const Question& question);

  /// Returns whether the iPod did not answer anything when it was last asked.
  bool isLost() const { return lost; }

 private:
  bool isInStep();
  bool answersAnything();

  std::size_t control = 0;  ///< the control question that the iPod answers
  bool lost = false;
};

/// Waits until late messages of the iPod have arrived.
void leaveIpodAlone();
