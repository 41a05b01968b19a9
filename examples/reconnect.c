/*
 * Keeps an iPod connected: waits for one, notices that it is lost, and connects again when it is
 * back.
 *
 *     reconnect [SECONDS [CONNECTIONS]]     ends after so many, or with Ctrl-C; 60 and no limit
 *
 * It ends within SECONDS and 30 s more whatever the iPod does.
 */
#include <signal.h>
#include <stdlib.h>

#include "ipodctl.h"
#include "platform.h"

enum { SHORTEST_PAUSE_MS = 500, LONGEST_PAUSE_MS = 5000, MOST = 86400 };

static volatile sig_atomic_t isInterrupted;
static unsigned started;
static unsigned limit; /* ms */

static void interrupt(int number) {
  (void)number;
  isInterrupted = 1;
}

static int must_end(void) { return isInterrupted || now_ms() - started >= limit; }

/* A pause that Ctrl-C ends. */
static void pause_for(int milliseconds) {
  for (; milliseconds > 0 && !must_end(); milliseconds -= 100)
    wait_ms(100);
}

/* Says it at once, also to a program that reads the output. */
static void say(const char* sentence) {
  puts(sentence);
  fflush(stdout);
}

/* Tries until an iPod is connected. An iPod that starts up needs seconds, and one that is not there
 * may be away for hours: the pauses grow. Returns 0 when the program must end. */
static int await_ipod(void) {
  int pause = SHORTEST_PAUSE_MS;
  say("waiting for an iPod");
  while (!must_end()) {
    if (IpodConnect()) return 1;
    /* An iPod that does not answer keeps the link open, which this closes. */
    IpodDisconnect();
    pause_for(pause);
    pause = 2 * pause < LONGEST_PAUSE_MS ? 2 * pause : LONGEST_PAUSE_MS;
  }
  return 0;
}

/* IpodIsConnect does not notice a pulled cable; the result of IpodGetTrackIndex shows it. An answer
 * may also get lost, so it asks again after a pause, in which late answers arrive. */
static int is_lost(void) {
  if (IpodGetTrackIndex(NULL)) return 0;
  wait_ms(1000);
  return !IpodGetTrackIndex(NULL);
}

static void greet(void) {
  unsigned short name[64] = {0};
  IpodGetName(name, 63);
  printf("connected: ");
  print_text(name);
  say(name[0] ? "" : "an iPod that does not say its name");
}

/* Returns when the iPod is lost or the program must end. A product asks here what plays. */
static void watch_ipod(void) {
  while (!must_end()) {
    if (is_lost()) {
      say("The iPod is lost. Plug it in again.");
      return;
    }
    pause_for(1000);
  }
}

static int keep_connected(int connections) {
  int made = 0;
  while (await_ipod()) {
    made++;
    pause_for(1000); /* many iPods acknowledge the connection twice */
    greet();
    if (made < connections || connections == 0) watch_ipod();
    IpodDisconnect(); /* also after a loss: otherwise the next IpodConnect returns 0 */
    if (made == connections) break;
  }
  return made;
}

/* Returns -1 for a text that is not a number from `least` to MOST. */
static int number_of(const char* text, int least) {
  char* end;
  const long number = strtol(text, &end, 10);
  return *text != 0 && *end == 0 && number >= least && number <= MOST ? (int)number : -1;
}

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? number_of(argv[1], 1) : 60;
  const int connections = argc > 2 ? number_of(argv[2], 1) : 0;
  int made;
  if (argc > 3 || seconds < 0 || connections < 0) {
    fputs("reconnect: give the seconds and the number of connections, each 1 to 86400\n", stderr);
    return 2;
  }
  signal(SIGINT, interrupt);
  started = now_ms();
  limit = (unsigned)seconds * 1000;
  made = keep_connected(connections);
  printf("connections: %d\n", made);
  if (made > 0) return 0;
  puts("No iPod could be connected. Check the cable, then start again.");
  return 1;
}
