/*
 * Browses the music: the artists with their tabs as jump letters, two pages of names, the albums of
 * one artist, the tracks of one album. Then it plays all tracks of the artist.
 *
 *     browse_tabs [TAB]           chooses this tab, 1 to 9999; without TAB the first one
 *
 * It ends within 60 s whatever the iPod does.
 */
#include <stdlib.h>
#include <string.h>

#include "ipodctl.h"
#include "platform.h"

enum { NAME_UNITS = 64, ROWS = 5, PATIENCE_MS = 30000 };

static unsigned started; /* when the browsing began */

static int takes_too_long(void) { return now_ms() - started > PATIENCE_MS; }

/* Reads the current entry's name. A tab whose names are not received has the label " - ". */
static int has_name(unsigned short* name) {
  memset(name, 0, NAME_UNITS * sizeof *name);
  IpodGetItemName(0, name, NULL, NAME_UNITS - 1);
  return name[0] != 0 && !(name[0] == ' ' && name[1] == '-');
}

/* Asks twice, because an answer may get lost. An entry may also have no name; then an iPod that is
 * still there answers another question. Returns 0 when the iPod does not answer, or too slowly. */
static int read_name(unsigned short* name) {
  if (takes_too_long()) return 0;
  if (has_name(name)) return 1;
  wait_ms(1000);
  if (!IpodGetTrackIndex(NULL)) return 0;
  has_name(name);
  return 1;
}

/* Opens a list as IpodGetFirstItem does, in two attempts. Returns null for an empty list: there is
 * nothing, or the iPod does not say how long it is. */
static const int* open_list(int descend, int type, int tracksOfSelection) {
  int attempt;
  for (attempt = 0; attempt < 2; attempt++) {
    const int* const index = IpodGetFirstItem(descend, type, tracksOfSelection);
    if (index != NULL && IpodGetNextItem() != NULL) {
      IpodGetPrevItem(); /* on the entry on which it opened */
      return index;
    }
    wait_ms(1000);
    if (index != NULL && descend) IpodGetParentItem(); /* leave the empty list */
  }
  return NULL;
}

/* Shows the entries from the current one on, and returns to it. */
static int show_pages(const int* index, int pages) {
  unsigned short name[NAME_UNITS] = {0};
  const int first = *index;
  int shown = 0;
  do {
    const int isPlayAll = IpodIsPlayAll(); /* its name is four units 0xFFFF */
    if (shown > 0 && shown % ROWS == 0) puts("  -- next page");
    if (!isPlayAll && !read_name(name)) return 0;
    printf("  ");
    if (!isPlayAll) print_text(name);
    puts(isPlayAll ? "[play all]" : "");
    IpodGetNextItem(); /* after the last entry: the first */
    shown++;
  } while (shown < pages * ROWS && *index != first);
  if (*index != first) puts("  ...");
  while (shown-- > 0)
    IpodGetPrevItem();
  return 1;
}

/* Shows the labels of the tabs, such as "Aalt - Juno", as a screen shows its jump letters, and
 * chooses one: from now on its 35 artists are the entries. The list has opened on the play-all tab.
 */
static int jump_to(int wanted) {
  unsigned short label[NAME_UNITS];
  int tab = 0;
  while (IpodGetNextItem() && !IpodIsPlayAll()) {
    if (!read_name(label)) return 0;
    printf("  tab %d: ", ++tab);
    print_text(label);
    puts("");
  }
  for (; tab >= wanted; tab--)
    IpodGetPrevItem(); /* from the play-all tab: the last tab */
  if (IpodIsPlayAll()) IpodGetPrevItem();
  IpodDisableTabVisualizationActive();
  return 1;
}

static int show_artists(int tab) {
  const int* const artists = open_list(0, IPOD_ARTISTS, 0);
  int count = 0;
  if (artists == NULL) return 0;
  IpodGetMediaFileCount(&count);
  printf("%d artists\n", count);
  if (IpodIsTabVisualizationActive() && !jump_to(tab)) return 0;
  if (!show_pages(artists, 2)) return 0;
  if (IpodIsPlayAll()) IpodGetNextItem(); /* a list without tabs: the first artist */
  return 1;
}

/* Shows what is below the current entry and goes to its first item. */
static int show_below(int type, const char* title) {
  unsigned short name[NAME_UNITS];
  const int* index;
  if (!read_name(name)) return 0;
  printf("%s ", title);
  print_text(name);
  puts("");
  index = open_list(1, type, 0);
  if (index == NULL || !show_pages(index, 1)) return 0;
  if (IpodIsPlayAll()) IpodGetNextItem();
  return 1;
}

/* No call reports whether the iPod obeyed, so this looks; twice, as the answer may get lost. */
static int plays(void) {
  int status = IPOD_STOPPED;
  int attempt;
  for (attempt = 0; attempt < 2 && status != IPOD_PLAYING; attempt++) {
    wait_ms(1000);
    IpodGetCurrentPlayStatus(&status);
  }
  return status == IPOD_PLAYING;
}

/* From an artist's first album: the entry before it is "play all". */
static int play_all(void) {
  IpodGetPrevItem();
  if (!IpodIsPlayAll() || open_list(1, IPOD_TRACKS, 1) == NULL) return 0;
  IpodValidateUpDownTree(); /* "next album" and the like refer to this list from now on */
  IpodSongPlay(-1);
  if (!plays()) return 0;
  puts("plays all of them");
  return 1;
}

static int browse(int tab) {
  started = now_ms();
  if (!show_artists(tab) || !show_below(IPOD_ALBUMS, "Albums of")) return 0;
  if (!show_below(IPOD_TRACKS, "Tracks of")) return 0;
  IpodGetParentItem(); /* from the tracks to the albums */
  return play_all();
}

/* The result of IpodGetTrackIndex says whether the iPod answers. */
static void explain_failure(void) {
  const int wasSlow = takes_too_long();
  wait_ms(1000); /* late answers arrive meanwhile, and the next request discards them */
  if (!IpodGetTrackIndex(NULL)) {
    puts("The iPod gives no usable answer. Plug it in again, then start again.");
  } else if (wasSlow) {
    puts("The iPod answers too slowly. Plug it in again, then start again.");
  } else {
    puts("The iPod does not say what is in a list. Put music on it, then start again.");
  }
}

/* Tries twice: one disturbed message can make an attempt fail. */
static int connect_ipod(void) {
  if (IpodConnect()) return 1;
  wait_ms(1000);
  return IpodConnect();
}

int main(int argc, char** argv) {
  const int tab = argc > 1 ? atoi(argv[1]) : 1;
  int isDone;
  if (argc > 2 || tab < 1 || tab > 9999) {
    fputs("browse_tabs: give the number of a tab, 1 to 9999, or nothing\n", stderr);
    return 2;
  }
  if (!connect_ipod()) {
    puts("No iPod could be connected. Check the cable, then start again.");
    return 1;
  }
  wait_ms(1000); /* many iPods acknowledge the connection twice */
  isDone = browse(tab);
  if (!isDone) explain_failure();
  IpodDisconnect();
  return isDone ? 0 : 1;
}
