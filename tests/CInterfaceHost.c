/* A host in C: installs, recognises and updates in the folder that BindingsTest has it run in. */
#include <lirvox/lirvox_c.h>
#include <math.h>
#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define CHECK(condition)                                                                \
  do {                                                                                  \
    if (!(condition)) {                                                                 \
      fprintf(stderr, "line %d: %s (%s)\n", __LINE__, #condition, lirvox_last_error()); \
      exit(1);                                                                          \
    }                                                                                   \
  } while (0)

enum { kMostTasks = 64, kExcerpt = 55125 };

/* The host's event loop: tasks come from any thread and run on the main one. */
static struct {
  pthread_mutex_t mutex;
  pthread_cond_t changed;
  lirvox_task* tasks[kMostTasks];
  int count;
} loop = {.mutex = PTHREAD_MUTEX_INITIALIZER, .changed = PTHREAD_COND_INITIALIZER};

static void execute(void* context, lirvox_task* task) {
  (void)context;
  pthread_mutex_lock(&loop.mutex);
  CHECK(loop.count < kMostTasks);
  loop.tasks[loop.count++] = task;
  pthread_cond_signal(&loop.changed);
  pthread_mutex_unlock(&loop.mutex);
}

static void run_a_task(void) {
  pthread_mutex_lock(&loop.mutex);
  while (loop.count == 0) pthread_cond_wait(&loop.changed, &loop.mutex);
  lirvox_task* const task = loop.tasks[0];
  memmove(loop.tasks, loop.tasks + 1, (size_t)--loop.count * sizeof *loop.tasks);
  pthread_mutex_unlock(&loop.mutex);
  lirvox_task_run(task);
}

struct answer {
  pthread_t thread;
  int calls;
  int32_t track;
  float position;
  atomic_int released;
};

static void did_recognize(void* context, int32_t track, float absolute, float relative) {
  struct answer* const answer = context;
  CHECK(pthread_equal(pthread_self(), answer->thread) && relative >= absolute);
  ++answer->calls;
  answer->track = track;
  answer->position = absolute;
}

static void did_not_recognize(void* context) {
  struct answer* const answer = context;
  ++answer->calls;
  answer->track = 0;
}

static void release(void* context) {
  ++((struct answer*)context)->released;
}

static atomic_int lines;
static void log_line(void* context, const char* line) {
  (void)context;
  lines += line[0] != 0;
}

static atomic_int reports;
static void count_report(void* context, int64_t received, int64_t expected) {
  (void)context;
  reports += received == 0 && expected <= 0;
}

/* Never called where there is none. */
static void no_input(void* context, const lirvox_input* input) {
  CHECK(!context && !input);
}

static void refusals(void) {
  struct answer answer = {0};
  lirvox_platform* const platform = lirvox_platform_new("host");
  CHECK(lirvox_platform_set_directories(NULL, NULL, NULL, NULL) == LIRVOX_INVALID_ARGUMENT);
  CHECK(strstr(lirvox_last_error(), "platform"));
  CHECK(lirvox_platform_set_directories(platform, "here", NULL, NULL) == LIRVOX_INVALID_ARGUMENT);
  CHECK(lirvox_platform_set_log(platform, NULL, &answer, release) == LIRVOX_INVALID_ARGUMENT);
  CHECK(answer.released == 1);
  CHECK(lirvox_set_recording_time(NULL, 1) == LIRVOX_INVALID_ARGUMENT);

  CHECK(lirvox_platform_use_no_sound(platform) == LIRVOX_OK);
  CHECK(lirvox_platform_install(platform) == LIRVOX_OK);
  CHECK(lirvox_list_inputs(no_input, NULL) == LIRVOX_NO_INPUT);

  lirvox_pump* const pump = lirvox_platform_use_pump(platform);
  CHECK(pump && lirvox_pump_run(pump) == 0);
  lirvox_pump_free(pump);
  lirvox_platform_free(platform);
}

static lirvox_meter* meter;

static lirvox_feed* install_platform(const char* folder) {
  char caches[1024];
  snprintf(caches, sizeof caches, "%s/c-caches/", folder);
  lirvox_platform* const platform = lirvox_platform_new("host");
  CHECK(lirvox_platform_set_directories(platform, caches, caches, NULL) == LIRVOX_OK);
  CHECK(lirvox_platform_set_log(platform, log_line, NULL, NULL) == LIRVOX_OK);
  CHECK(lirvox_platform_set_executor(platform, execute, NULL, NULL) == LIRVOX_OK);
  CHECK(lirvox_platform_set_download_progress(platform, count_report, NULL, NULL) == LIRVOX_OK);
  lirvox_feed* const feed = lirvox_platform_use_feed(platform);
  meter = lirvox_platform_use_meter(platform);
  CHECK(feed && meter && lirvox_platform_install(platform) == LIRVOX_OK);
  lirvox_platform_free(platform);
  return feed;
}

static void install_database(lirvox_recognizer* recognizer) {
  CHECK(lirvox_start_recognize(recognizer) == LIRVOX_NO_DATABASE);
  CHECK(strcmp(lirvox_last_error(), "No database file") == 0);
  CHECK(lirvox_update_database_path(recognizer, "excerpt.dat") == LIRVOX_FAILED && lines > 0);
  CHECK(lirvox_update_database_path(recognizer, "tracks.zip") == LIRVOX_OK);
  CHECK(lirvox_can_recognize(recognizer) == LIRVOX_OK);
  char* const info = lirvox_database_info(recognizer);
  CHECK(info && strchr(info, '2'));
  lirvox_free(info);
}

static void recognize(lirvox_recognizer* recognizer, lirvox_feed* feed, struct answer* answer) {
  CHECK(lirvox_set_recording_time(recognizer, lirvox_feed_seconds(feed)) == LIRVOX_OK);
  answer->calls = 0;
  CHECK(lirvox_start_recognize(recognizer) == LIRVOX_OK);
  while (answer->calls == 0) run_a_task();
}

/* A sound of another rate and format, in stereo, and silence. */
static void recognize_all(lirvox_recognizer* recognizer, lirvox_feed* feed, const int32_t* words,
                          struct answer* answer) {
  static double stereo[kExcerpt * 4];
  for (int i = 0; i < kExcerpt * 4; ++i) stereo[i] = words[i / 4] / 65536.0;
  CHECK(lirvox_feed_put(feed, words, 0, 11025, 1, LIRVOX_INT32) == LIRVOX_INVALID_ARGUMENT);
  CHECK(lirvox_feed_put(feed, words, 9, 11025, 9, LIRVOX_INT32) == LIRVOX_INVALID_ARGUMENT);
  CHECK(lirvox_feed_put(feed, words, 9, 50, 1, LIRVOX_INT32) == LIRVOX_INVALID_ARGUMENT);
  for (int silent = 0; silent < 2; ++silent) {
    CHECK(lirvox_feed_put(feed, stereo, 2 * kExcerpt, 22050, 2, LIRVOX_FLOAT64) == LIRVOX_OK);
    CHECK(fabs(lirvox_feed_seconds(feed) - 5) < 0.01);
    recognize(recognizer, feed, answer);
    const double peak = lirvox_meter_take_peak(meter);
    CHECK(silent ? peak == 0 : peak > 0 && peak <= 1);
    CHECK(silent ? answer->track == 0
                 : answer->track == 2 && fabsf(answer->position - 7.5F) < 0.05F);
    memset(stereo, 0, sizeof stereo);
  }
  CHECK(lirvox_meter_frames(meter) > kExcerpt);
}

static void end_early(lirvox_recognizer* recognizer, struct answer* answer) {
  answer->calls = 0;
  CHECK(lirvox_set_recording_time(recognizer, 60) == LIRVOX_OK);
  CHECK(lirvox_start_recognize(recognizer) == LIRVOX_OK && lirvox_is_recording(recognizer));
  CHECK(lirvox_stop_recognize(recognizer) == LIRVOX_OK && !lirvox_is_recording(recognizer));
  CHECK(lirvox_start_recognize(recognizer) == LIRVOX_OK);
  CHECK(lirvox_finish_recognize(recognizer) == LIRVOX_OK);
  while (answer->calls == 0) run_a_task();
  CHECK(lirvox_set_delegate(recognizer, NULL, NULL, NULL, NULL) == LIRVOX_OK);
  CHECK(answer->released == 1 && answer->calls == 1);
}

/* Wakes the loop, with a task that is none. */
static void released_when_over(void* context) {
  execute(context, NULL);
}
static void updated(void* context, bool good) {
  (void)context;
  (void)good;
  CHECK(!"nothing listens at that address");
}

/* No completion comes when the service is out of reach, but the release does. */
static void update(lirvox_recognizer* recognizer) {
  CHECK(lirvox_set_user_api_key(recognizer, "key") == LIRVOX_OK);
  CHECK(lirvox_dt_db_generated(recognizer) == NULL);
  pthread_mutex_lock(&loop.mutex);
  while (loop.count > 0) lirvox_task_discard(loop.tasks[--loop.count]);
  pthread_mutex_unlock(&loop.mutex);
  CHECK(lirvox_download_database_if_needed(recognizer, updated, NULL, released_when_over) ==
        LIRVOX_OK);
  run_a_task();
  CHECK(reports > 0);
}

int main(int argc, char** argv) {
  CHECK(argc == 2 && lirvox_version_number() == LIRVOX_VERSION_NUMBER);
  refusals();
  lirvox_feed* const feed = install_platform(argv[1]);
  lirvox_recognizer* const recognizer = lirvox_shared_instance();
  install_database(recognizer);

  struct answer answer = {.thread = pthread_self()};
  CHECK(lirvox_set_delegate(recognizer, did_recognize, did_not_recognize, &answer, release) ==
        LIRVOX_OK);
  static int32_t words[kExcerpt];
  FILE* const file = fopen("excerpt.dat", "rb");
  CHECK(file && fread(words, sizeof *words, kExcerpt, file) == kExcerpt);
  fclose(file);
  recognize_all(recognizer, feed, words, &answer);
  end_early(recognizer, &answer);
  lirvox_feed_free(feed);
  lirvox_meter_free(meter);
  update(recognizer);
  return 0;
}
