/*
 * Shows what plays. A worker thread owns the library, because its calls block for up to seconds.
 * The main thread draws from a snapshot and never waits for the iPod. Commands of the user are jobs
 * of the worker.
 *
 *     now_playing play|pause|next|previous|watch...     one after the other, two seconds for each
 *
 * It ends within 60 s whatever the iPod does.
 */
#include <string.h>

#include "ipodctl.h"
#include "platform.h"

enum { TEXT_UNITS = 64, MOST_JOBS = 8, FRAME_MS = 100, CONNECT_FRAMES = 250, JOB_FRAMES = 20 };

enum Stage { CONNECTING, CONNECTED, NO_IPOD, LOST };

struct Snapshot {
  enum Stage stage;
  int track; /* -1: nothing plays */
  int status;
  int position; /* ms */
  unsigned short title[TEXT_UNITS];
  unsigned short artist[TEXT_UNITS];
};

/* What both threads use. The lock is held while a snapshot is copied, never during a call of the
 * library: otherwise the screen would wait for the iPod. */
static struct {
  Lock lock;
  struct Snapshot shown;
  int jobs[MOST_JOBS];
  int jobCount;
  int mustEnd;
} shared;

static void init_shared(void) {
  memset(&shared, 0, sizeof shared); /* CONNECTING, no jobs */
  init_lock(&shared.lock);
}

/* Of the user's thread: gives the worker a job. A job beyond MOST_JOBS is dropped, as no user waits
 * for what he typed so long ago. */
static void add_job(int command) {
  take_lock(&shared.lock);
  if (shared.jobCount < MOST_JOBS) shared.jobs[shared.jobCount++] = command;
  release_lock(&shared.lock);
}

/* Of the worker: returns the oldest job, 0 when there is none, -1 when the program ends. */
static int take_job(void) {
  int job = 0;
  take_lock(&shared.lock);
  if (shared.mustEnd) {
    job = -1;
  } else if (shared.jobCount > 0) {
    job = shared.jobs[0];
    memmove(shared.jobs, shared.jobs + 1, (size_t)--shared.jobCount * sizeof *shared.jobs);
  }
  release_lock(&shared.lock);
  return job;
}

static void publish(const struct Snapshot* snapshot) {
  take_lock(&shared.lock);
  shared.shown = *snapshot;
  release_lock(&shared.lock);
}

/* Asks what plays; the texts only when the track is another one. The index is the last question
 * because its result shows whether the iPod is still there. Returns 0 without an answer. */
static int read_player(struct Snapshot* player) {
  const int before = player->track;
  IpodGetCurrentPlayStatus(&player->status);
  IpodGetCurrentTrackPosition(&player->position);
  if (!IpodGetTrackIndex(&player->track)) return 0;
  if (player->track == before && player->title[0] != 0) return 1;
  memset(player->title, 0, sizeof player->title);
  memset(player->artist, 0, sizeof player->artist);
  if (player->track < 0) return 1;
  return IpodGetTrackInfo(NULL, player->artist, NULL, player->title, NULL, NULL, TEXT_UNITS - 1) ==
         0;
}

/* The iPod announces nothing by itself, so this asks it twice a second. */
static void follow_player(struct Snapshot* player) {
  int job;
  int failures = 0;
  while (failures < 2 && (job = take_job()) >= 0) {
    if (job > 0) IpodCommand(job);
    failures = read_player(player) ? 0 : failures + 1;
    if (failures == 0) publish(player);
    wait_ms(failures == 0 ? 500 : 1000); /* after a failure late answers may still arrive */
  }
  if (failures < 2) return;
  player->stage = LOST;
  publish(player);
}

/* Every call of the library is made here. */
THREAD_FUNCTION(work) {
  struct Snapshot player = {CONNECTING, -1, IPOD_STOPPED, 0, {0}, {0}};
  (void)context;
  if (!IpodConnect()) {
    wait_ms(1000);
    if (!IpodConnect()) player.stage = NO_IPOD;
  }
  if (player.stage == NO_IPOD) {
    publish(&player);
    return 0;
  }
  wait_ms(1000); /* many iPods acknowledge the connection twice */
  player.stage = CONNECTED;
  follow_player(&player);
  IpodDisconnect();
  return 0;
}

static void draw(const struct Snapshot* player) {
  static const char* const states[] = {"stopped", "playing", "paused"};
  static const char* const stages[] = {
      "connecting ...", NULL, "No iPod could be connected. Check the cable, then start again.",
      "The iPod is lost. Plug it in again, then start again."};
  if (player->stage != CONNECTED) {
    puts(stages[player->stage]);
  } else if (player->track < 0) {
    puts("nothing plays");
  } else {
    print_text(player->title);
    printf(" - ");
    print_text(player->artist);
    printf(", %s at %d:%02d\n", states[player->status], player->position / 60000,
           player->position / 1000 % 60);
  }
  fflush(stdout);
}

/* Whether both look the same on the screen, which shows whole seconds. */
static int look_same(const struct Snapshot* left, const struct Snapshot* right) {
  if (left->stage != CONNECTED || right->stage != CONNECTED) return left->stage == right->stage;
  return left->track == right->track && left->status == right->status &&
         left->position / 1000 == right->position / 1000 &&
         memcmp(left->title, right->title, sizeof left->title) == 0;
}

/* Draws ten times a second what has changed, as long as the stage is this one. */
static void run_screen(struct Snapshot* drawn, enum Stage stage, int frames) {
  while (frames-- > 0 && drawn->stage == stage) {
    struct Snapshot next;
    wait_ms(FRAME_MS);
    take_lock(&shared.lock);
    next = shared.shown;
    release_lock(&shared.lock);
    if (!look_same(drawn, &next)) draw(&next);
    *drawn = next;
  }
}

/* Returns 1 when the iPod was there until the end. */
static int run(const int* commands, int count) {
  struct Snapshot drawn = {CONNECTING, -1, IPOD_STOPPED, 0, {0}, {0}};
  int i;
  draw(&drawn);
  run_screen(&drawn, CONNECTING, CONNECT_FRAMES);
  if (drawn.stage == CONNECTING) puts("No iPod so far. Check the cable, then start again.");
  for (i = 0; i < count; i++) {
    if (commands[i] != 0) add_job(commands[i]);
    run_screen(&drawn, CONNECTED, JOB_FRAMES);
  }
  take_lock(&shared.lock);
  shared.mustEnd = 1;
  release_lock(&shared.lock);
  return drawn.stage == CONNECTED;
}

/* Returns -1 for a word that is not a command. */
static int command_of(const char* word) {
  if (strcmp(word, "play") == 0) return IPOD_PLAY;
  if (strcmp(word, "pause") == 0) return IPOD_PAUSE;
  if (strcmp(word, "next") == 0) return IPOD_NEXT_TRACK;
  if (strcmp(word, "previous") == 0) return IPOD_PREVIOUS_TRACK;
  return strcmp(word, "watch") == 0 ? 0 : -1;
}

int main(int argc, char** argv) {
  int commands[MOST_JOBS];
  int count = 0;
  int isDone;
  Thread worker;
  while (count < argc - 1 && count < MOST_JOBS && command_of(argv[count + 1]) >= 0) {
    commands[count] = command_of(argv[count + 1]);
    count++;
  }
  if (count == 0 || count < argc - 1) {
    fputs("now_playing: give 1 to 8 of these words: play, pause, next, previous, watch\n", stderr);
    return 2;
  }
  init_shared();
  if (!start_thread(&worker, work, NULL)) {
    puts("There is no thread for the iPod. End other programs, then start again.");
    return 1;
  }
  isDone = run(commands, count);
  join_thread(worker); /* only here the user waits for the iPod */
  return isDone ? 0 : 1;
}
