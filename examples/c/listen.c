/* What does the microphone hear? The C interface, with the main loop on this thread. */
#define _POSIX_C_SOURCE 199309L /* nanosleep */

#include <lirvox/lirvox_c.h>
#include <stdio.h>
#include <time.h>

static void print_track(void* answered, int32_t track, float position, float now) {
  (void)now;
  printf("track %d at %.1f s\n", (int)track, (double)position);
  *(bool*)answered = true;
}

static void print_none(void* answered) {
  puts("not recognized");
  *(bool*)answered = true;
}

int main(void) {
  lirvox_platform* const platform = lirvox_platform_new("lirvox"); /* whose folders to use */
  lirvox_pump* const main_queue = lirvox_platform_use_pump(platform);
  lirvox_platform_install(platform);
  lirvox_platform_free(platform);

  lirvox_recognizer* const recognizer = lirvox_shared_instance();
  /* A process starts without a database: set one, and again after each update. */
  lirvox_database* const database = lirvox_database_new(NULL);
  lirvox_set_database(recognizer, database);
  lirvox_database_free(database);

  bool answered = false;
  lirvox_set_delegate(recognizer, print_track, print_none, &answered, NULL);
  if (lirvox_start_recognize(recognizer) != LIRVOX_OK) {
    fprintf(stderr, "%s\n", lirvox_last_error());
    return 1;
  }
  while (!answered) { /* once per frame of a game, say */
    const struct timespec frame = {0, 16 * 1000 * 1000};
    nanosleep(&frame, NULL);
    lirvox_pump_run(main_queue);
  }
  lirvox_pump_free(main_queue);
  return 0;
}
