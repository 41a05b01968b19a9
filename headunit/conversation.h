#pragma once

#include <cstddef>
#include <functional>

/// Calls functions of the library, and says whether what they wrote makes sense. It may be asked
/// twice.
using Question = std::function<bool()>;

/// Asks the connected iPod in such a way that its answers can be shown.
///
/// Most functions of the library do not report that the iPod did not answer: their outputs stay as
/// they were. And an answer can belong to an earlier question. Many iPods acknowledge a connection
/// twice, and some answer late or twice; from then on each question gets the answer to the one
/// before. A pause ends that: the next question discards what has arrived meanwhile.
class Conversation {
 public:
  /// Waits for the last acknowledgement of a new connection.
  void begin();

  /// Asks, and after a pause once more when the answer makes no sense or can be another question's.
  /// False when there is no such answer. Returns false at once when the iPod is lost.
  bool ask(const Question& question);

  /// The iPod answered nothing when it was last asked.
  bool isLost() const { return lost; }

 private:
  bool isInStep();
  bool answersAnything();

  std::size_t control = 0;  ///< the control question that the iPod answers
  bool lost = false;
};

/// Lets everything arrive that is still on its way from the iPod.
void leaveIpodAlone();
