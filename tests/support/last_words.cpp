#include "support/last_words.h"

#include <signal.h>
#include <unistd.h>

#include <cstring>

// Defined only in a program with a sanitizer.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

// The text is prepared in advance: a program that crashes can only write it.
char text[1024];

void say() {
  const ssize_t written = write(STDERR_FILENO, text, std::strlen(text));
  static_cast<void>(written);
}

void die(int signal) {
  say();
  raise(signal);  // now with its default action
}

// On a separate stack: the thread's own stack may have overflowed.
void handle(int signal) {
  struct sigaction action = {};
  action.sa_handler = die;
  action.sa_flags = static_cast<int>(SA_ONSTACK | SA_RESETHAND | SA_NODEFER);
  sigaction(signal, &action, nullptr);
}

void handleCrashes() {
  static char stack[64 * 1024];
  stack_t other = {};
  other.ss_sp = stack;
  other.ss_size = sizeof stack;
  sigaltstack(&other, nullptr);
  for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE})
    handle(signal);
}

// A sanitizer handles crashes itself.
bool handleDeaths() {
  handle(SIGALRM);
  handle(SIGABRT);
  if (__sanitizer_set_death_callback != nullptr) {
    __sanitizer_set_death_callback(say);
  } else {
    handleCrashes();
  }
  return true;
}

}  // namespace

LastWords::LastWords(const std::string& words) {
  [[maybe_unused]] static const bool handled = handleDeaths();
  const std::string line = "\n" + words + "\n";
  text[line.copy(text, sizeof text - 1)] = '\0';
}

LastWords::~LastWords() { text[0] = '\0'; }
