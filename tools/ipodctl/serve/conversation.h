#pragma once

#include <chrono>
#include <cstddef>
#include <functional>

namespace tool {

/// Finds out whether the iPod's answers can be believed, and whether it is still there.
///
/// Most functions of the library do not report that the iPod did not answer: they do not change
/// their outputs. An answer can also belong to an earlier request: many iPods acknowledge a
/// connection twice, and some answer late or twice. So after some requests a control question is
/// asked, whose answer cannot be mistaken.
class Conversation {
 public:
  using Clock = std::chrono::steady_clock;

  /// Waits so long, or less when the head unit ends.
  using Pause = std::function<void(std::chrono::milliseconds)>;

  explicit Conversation(Pause wait) : pause(std::move(wait)) {}

  /// Asks a control question.
  bool isInStep();

  /// Throws OddAnswer when the control question does not get its answer, or when the `requests`
  /// since `begin` took so long that one of them was not answered.
  void check(Clock::time_point begin, int requests);

  /// True when a request that took so long was not answered.
  static bool isSilence(Clock::duration taken);

  /// After an answer that was missing or odd: returns whether the iPod is still there. An iPod that
  /// is there has had a second without requests afterwards, so that late answers have arrived.
  /// `wasSilent` says that the last request was not answered at all. `onOdd` is called before the
  /// head unit waits.
  bool isIpodThere(bool wasSilent, const std::function<void()>& onOdd);

 private:
  bool ask(size_t question);

  const Pause pause;
  size_t control = 0;          ///< the control question that the iPod answers
  Clock::duration latency{0};  ///< of the last control question
};

}  // namespace tool
