// The C11 threads of the examples, made of POSIX threads, which are all that ThreadSanitizer knows:
// a thread of the C library's thrd_create ends the program there.
#include <pthread.h>
#include <stdint.h>
#include <stdlib.h>
#include <threads.h>

struct start {
  thrd_start_t run;
  void* context;
};

static void* run_start(void* argument) {
  const struct start start = *(struct start*)argument;
  free(argument);
  return (void*)(intptr_t)start.run(start.context);
}

int thrd_create(thrd_t* thread, thrd_start_t run, void* context) {
  struct start* const start = malloc(sizeof *start);
  if (start == NULL) return thrd_nomem;
  start->run = run;
  start->context = context;
  pthread_t made;
  if (pthread_create(&made, NULL, run_start, start) != 0) {
    free(start);
    return thrd_error;
  }
  *thread = made;
  return thrd_success;
}

int thrd_join(thrd_t thread, int* result) {
  void* returned = NULL;
  if (pthread_join(thread, &returned) != 0) return thrd_error;
  if (result != NULL) *result = (int)(intptr_t)returned;
  return thrd_success;
}

_Static_assert(sizeof(mtx_t) >= sizeof(pthread_mutex_t), "a mutex of C11 holds one of POSIX");

int mtx_init(mtx_t* mutex, int type) {
  (void)type;
  return pthread_mutex_init((pthread_mutex_t*)mutex, NULL) == 0 ? thrd_success : thrd_error;
}

int mtx_lock(mtx_t* mutex) {
  return pthread_mutex_lock((pthread_mutex_t*)mutex) == 0 ? thrd_success : thrd_error;
}

int mtx_unlock(mtx_t* mutex) {
  return pthread_mutex_unlock((pthread_mutex_t*)mutex) == 0 ? thrd_success : thrd_error;
}
