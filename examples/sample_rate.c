/*
 * Follows the sample rate of the iPod's digital audio from track to track.
 *
 *     sample_rate [TRACKS]        plays so many tracks, 1 to 100, for two seconds each; 3
 *
 * The iPod announces the rate of each new track, and the library passes it to the platform's audio
 * library at once, in the middle of any call: SelectFrequency of isochplay. It prints the line
 * "Tavrel RestartPlayForResample 48000". No function of ipodctl.h returns the rate and no message
 * announces it, so a host does nothing for it, except two things:
 *   - it keeps the connection: after IpodDisconnect nobody follows the rate;
 *   - it asks about once a second what plays, and shows it.
 * A product that needs the number, for its equaliser, gets it where it arrives, in its audio
 * driver.
 *
 * It ends within 30 s, and 12 s more for each track, whatever the iPod does.
 */
#include <stdlib.h>

#include "ipodctl.h"
#include "platform.h"

enum { MOST_TRACKS = 100, TRACK_SECONDS = 2, TEXT_UNITS = 64 };

/* Tries twice: one disturbed message can make an attempt fail. */
static int connect_ipod(void) {
  if (IpodConnect()) return 1;
  wait_ms(1000);
  return IpodConnect();
}

/* Asks twice, with a pause in which late answers arrive. Returns 0 when the iPod does not answer.
 */
static int read_index(int* index) {
  if (IpodGetTrackIndex(index)) return 1;
  wait_ms(1000);
  return IpodGetTrackIndex(index);
}

static void show_track(int index) {
  unsigned short title[TEXT_UNITS] = {0};
  IpodGetTrackInfo(NULL, NULL, NULL, title, NULL, NULL, TEXT_UNITS - 1);
  printf("track %d: ", index);
  print_text(title);
  puts(title[0] != 0 ? "" : "(no title)");
}

/* Shows the tracks while they play. Returns 0 when the iPod does not answer or nothing plays. */
static int follow(int tracks) {
  int shown = -1;
  int second;
  for (second = 0; second < tracks * TRACK_SECONDS; second++) {
    int index = -1;
    if (second > 0 && second % TRACK_SECONDS == 0) IpodCommand(IPOD_NEXT_TRACK);
    wait_ms(1000); /* the iPod announces the rate when the track begins */
    if (!read_index(&index) || index < 0) return 0;
    if (index != shown) show_track(index);
    shown = index;
  }
  return 1;
}

int main(int argc, char** argv) {
  const int tracks = argc > 1 ? atoi(argv[1]) : 3;
  int isDone;
  if (argc > 2 || tracks < 1 || tracks > MOST_TRACKS) {
    fputs("sample_rate: give the number of tracks, 1 to 100\n", stderr);
    return 2;
  }
  if (!connect_ipod()) {
    puts("No iPod could be connected. Check the cable, then start again.");
    return 1;
  }
  wait_ms(1000); /* many iPods acknowledge the connection twice */
  IpodCommand(IPOD_PLAY);
  isDone = follow(tracks);
  if (!isDone) puts("The iPod does not say what plays. Put music on it, or plug it in again.");
  IpodDisconnect();
  return isDone ? 0 : 1;
}
