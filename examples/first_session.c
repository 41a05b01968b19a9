#include <stdio.h>
#ifdef _WIN32
#include <windows.h>
#else
#include <threads.h>
#endif

#include "ipodctl.h"

/* Leaves the iPod alone: late answers arrive meanwhile, and the next request discards them. */
static void wait_a_second(void) {
#ifdef _WIN32
  Sleep(1000);
#else
  const struct timespec second = {1, 0};
  thrd_sleep(&second, NULL);
#endif
}

/* Tries twice: one disturbed message can make an attempt fail. */
static int connect_ipod(void) {
  if (IpodConnect()) return 1;
  wait_a_second();
  return IpodConnect();
}

/* Returns 1 when the first artist plays, else 0: there is none, or the iPod did not answer. */
static int play_first_artist(void) {
  unsigned short name[64] = {0};
  int status = IPOD_STOPPED;
  int i;
  IpodGetFirstItem(0, IPOD_ARTISTS, 0); /* the artists; the cursor is on "play all" */
  if (!IpodGetNextItem()) return 0;     /* the first 35 artists, or the first one of a few */
  IpodDisableTabVisualizationActive();  /* now surely the first artist */
  IpodGetItemName(0, name, NULL, 63);   /* its name */
  IpodGetFirstItem(1, IPOD_TRACKS, 1);  /* all of its tracks */
  if (!name[0] || !IpodGetNextItem()) return 0;
  IpodSongPlay(0); /* play them from the first */
  wait_a_second();
  IpodGetCurrentPlayStatus(&status);
  if (status != IPOD_PLAYING) return 0;
  for (i = 0; name[i] != 0; i++)
    putchar(name[i]);
  puts(" plays");
  return 1;
}

/* The result of IpodGetTrackIndex says whether the iPod answered. */
static void explain_failure(void) {
  wait_a_second();
  if (IpodGetTrackIndex(NULL)) {
    puts("The iPod does not say that an artist plays. Put music on it, then start again.");
  } else {
    puts("The iPod gives no usable answer. Plug it in again, then start again.");
  }
}

int main(void) {
  int plays = 0;
  int attempt;
  if (!connect_ipod()) {
    puts("No iPod could be connected. Check the cable, then start again.");
    return 1;
  }
  for (attempt = 0; attempt < 2 && !plays; attempt++) {
    wait_a_second(); /* many iPods acknowledge the connection twice */
    plays = play_first_artist();
  }
  if (!plays) explain_failure();
  IpodDisconnect();
  return plays ? 0 : 1;
}
