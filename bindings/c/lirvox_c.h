/* The C interface: the recognizer and the services of its platform behind opaque handles. */
#ifndef LIRVOX_C_H
#define LIRVOX_C_H

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define LIRVOX_C_EXPORT __attribute__((visibility("default")))
#else
#define LIRVOX_C_EXPORT
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * In short: make a platform, change what is to differ, install it; then, on the one
 * recognizer of the process, set a database and a delegate, and start.
 *
 *     lirvox_platform* platform = lirvox_platform_new("myapp");
 *     lirvox_platform_install(platform);
 *     lirvox_platform_free(platform);
 *     lirvox_recognizer* recognizer = lirvox_shared_instance();
 *     lirvox_database* database = lirvox_database_new(NULL);
 *     lirvox_set_database(recognizer, database);
 *     lirvox_database_free(database);
 *     lirvox_set_delegate(recognizer, on_track, on_nothing, me, NULL);
 *     if (lirvox_start_recognize(recognizer) != LIRVOX_OK) puts(lirvox_last_error());
 *
 * Strings are UTF-8 and end with a zero byte. Those that come in are copied; those that
 * go out as char* are the caller's, to be given to lirvox_free, and those that go out as
 * const char* are not. What a function named ..._new or ..._use_... returns is the
 * caller's, to be given to the matching ..._free, at any time: what still needs the
 * object keeps it. A free of NULL does nothing. Any other NULL handle is an error.
 *
 * Threads. "Any" in a function's comment means: any thread but a real-time one, also at
 * the same time as others, and from inside callbacks. "One at a time" means: any thread,
 * but for one handle one after the other.
 *
 * Callbacks get the context that was given with them. `release`, if not NULL, is called
 * once with the context when no callback can come any more, also when the function that
 * was given it failed. Callbacks must return normally: no longjmp, no exception.
 */

/* --- Version ------------------------------------------------------------------------ */

/* The version of this header. */
#define LIRVOX_VERSION_MAJOR 0
#define LIRVOX_VERSION_MINOR 1
#define LIRVOX_VERSION_PATCH 0
#define LIRVOX_VERSION_NUMBER \
  (LIRVOX_VERSION_MAJOR * 1000000 + LIRVOX_VERSION_MINOR * 1000 + LIRVOX_VERSION_PATCH)

/* The version of the library that runs, as "0.1.0". Threads: any, real-time ones too. */
LIRVOX_C_EXPORT const char* lirvox_version(void);
/* The same to compare with LIRVOX_VERSION_NUMBER. Threads: any, real-time ones too. */
LIRVOX_C_EXPORT uint32_t lirvox_version_number(void);

/* --- Errors and memory -------------------------------------------------------------- */

/* How a function ended. */
typedef enum lirvox_status {
  LIRVOX_OK = 0,
  LIRVOX_INVALID_ARGUMENT = 1, /* NULL where it may not be, an impossible number */
  LIRVOX_OUT_OF_MEMORY = 2,
  LIRVOX_FAILED = 3,       /* the system or the archive would not: see the text */
  LIRVOX_NO_INPUT = 4,     /* there is nothing to listen to */
  LIRVOX_NO_DATABASE = 201 /* no database file is installed */
} lirvox_status;

/* What went wrong in the last call on this thread that failed, for people; "" before the
 * first. Stays until the next failure on this thread. Threads: any. */
LIRVOX_C_EXPORT const char* lirvox_last_error(void);

/* Frees a string. Threads: any. */
LIRVOX_C_EXPORT void lirvox_free(char* string);

/* Tells a host that a context is needed no more. Called on any thread. */
typedef void (*lirvox_release)(void* context);

/* --- Platform: set up before anything else ------------------------------------------- */

/* The services of the system, to be altered and then installed. */
typedef struct lirvox_platform lirvox_platform;

/* The system's services; `application_name` names the application's folders and what the
 * sound server shows; NULL or "" stands for the name of the program. NULL on failure.
 * Threads: any. */
LIRVOX_C_EXPORT lirvox_platform* lirvox_platform_new(const char* application_name);
/* What was installed stays so. Threads: one at a time. */
LIRVOX_C_EXPORT void lirvox_platform_free(lirvox_platform* platform);

/* Makes the library use these services; later changes of `platform` need another
 * install. Call it before the first lirvox_shared_instance: what is there already may
 * keep the old ones. Threads: one at a time, and while the library does nothing. */
LIRVOX_C_EXPORT lirvox_status lirvox_platform_install(const lirvox_platform* platform);

/* One line of diagnostics, without a line end. Called on any thread but a real-time one,
 * on several at once too. */
typedef void (*lirvox_log)(void* context, const char* line);

/* Sends diagnostics to the host instead of the standard error stream.
 * Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_status lirvox_platform_set_log(lirvox_platform* platform, lirvox_log log,
                                                      void* context, lirvox_release release);

/* Replaces the application's folders, as absolute paths; NULL leaves one as it is. An
 * installed database is "lirvox/db1.sqlite" in `caches`, which must be the application's
 * own folder: an update removes a folder "home" in it. The recording that
 * lirvox_start_recognize_from_file plays is in `resources`. Call this before
 * lirvox_platform_use_... functions. Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_status lirvox_platform_set_directories(lirvox_platform* platform,
                                                              const char* caches,
                                                              const char* configuration,
                                                              const char* resources);

/* Leaves out sound: nothing can be listened to, and no sound server is spoken to. For
 * programs that only install or update databases. Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_status lirvox_platform_use_no_sound(lirvox_platform* platform);

/* A request of an update runs: how many bytes of the answer there are, and how many there
 * will be, -1 while unknown. The first request asks for the generation, which takes a few
 * bytes; the second one fetches the archive. Called a few times a second on one thread of
 * the library's, and once at the end of each request. */
typedef void (*lirvox_download_progress)(void* context, int64_t received, int64_t expected);

/* Tells the host how far downloads have come. Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_status
lirvox_platform_set_download_progress(lirvox_platform* platform, lirvox_download_progress progress,
                                      void* context, lirvox_release release);

/* --- Main queue: on which thread the delegate is called ------------------------------- */

/* --- Without any of these, it is a thread of the library's. --- */

/* Work of the main queue, to be run or discarded once. */
typedef struct lirvox_task lirvox_task;

/* Takes a task that is due, and has it run later, in order, on the host's thread: never
 * inside this call. Called on any thread but a real-time one. */
typedef void (*lirvox_executor)(void* context, lirvox_task* task);

/* Runs a task and frees it. Threads: the host's, one at a time. */
LIRVOX_C_EXPORT void lirvox_task_run(lirvox_task* task);
/* Frees a task that will not run. Threads: any. */
LIRVOX_C_EXPORT void lirvox_task_discard(lirvox_task* task);

/* Hands the main queue's tasks to the host's event loop. Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_status lirvox_platform_set_executor(lirvox_platform* platform,
                                                           lirvox_executor executor, void* context,
                                                           lirvox_release release);

/* A main queue whose tasks wait until the host runs them. */
typedef struct lirvox_pump lirvox_pump;

/* Makes the main queue one that is pumped. NULL on failure. Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_pump* lirvox_platform_use_pump(lirvox_platform* platform);
/* Runs the tasks that wait and returns how many there were. Threads: the host's, one at
 * a time. */
LIRVOX_C_EXPORT size_t lirvox_pump_run(lirvox_pump* pump);
/* Threads: one at a time. */
LIRVOX_C_EXPORT void lirvox_pump_free(lirvox_pump* pump);

/* --- Samples of the host's in the place of a microphone ------------------------------- */

/* What is heard instead of a microphone. */
typedef struct lirvox_feed lirvox_feed;

/* Signed integers and floats in native byte order; full scale is the type's, or 1.0. */
typedef enum lirvox_sample_format {
  LIRVOX_INT16 = 1,
  LIRVOX_INT24 = 2, /* in three bytes */
  LIRVOX_INT32 = 3,
  LIRVOX_FLOAT32 = 4,
  LIRVOX_FLOAT64 = 5
} lirvox_sample_format;

/* Makes the recognizer hear what is put into the feed. NULL on failure.
 * Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_feed* lirvox_platform_use_feed(lirvox_platform* platform);
/* Threads: one at a time. */
LIRVOX_C_EXPORT void lirvox_feed_free(lirvox_feed* feed);

/* What the captures that start from now on hear, each from the first sample: `frames`
 * frames, at least one, of `channels` interleaved samples each, [1, 8], at `sample_rate`
 * Hz, [8000, 192000]. They are copied, mixed to one channel and resampled to 11025 Hz. A
 * capture that is longer than its samples waits for ever: set the recording time to
 * lirvox_feed_seconds, or less. Takes time and memory in proportion. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_feed_put(lirvox_feed* feed, const void* samples, size_t frames,
                                              uint32_t sample_rate, uint32_t channels,
                                              lirvox_sample_format format);
/* The length of what was put last, in seconds; 0 before the first. Threads: any. */
LIRVOX_C_EXPORT double lirvox_feed_seconds(const lirvox_feed* feed);

/* --- How loud it is --------------------------------------------------------------------- */

/* What has been heard by all captures. */
typedef struct lirvox_meter lirvox_meter;

/* Measures what the recognizer hears: a microphone, or the feed if lirvox_platform_use_feed
 * was called before. Without sound it shows nothing. NULL on failure.
 * Threads: one at a time. */
LIRVOX_C_EXPORT lirvox_meter* lirvox_platform_use_meter(lirvox_platform* platform);
/* Threads: one at a time. */
LIRVOX_C_EXPORT void lirvox_meter_free(lirvox_meter* meter);
/* The largest magnitude since the last call, in [0, 1] of full scale. To draw a level, ask
 * for it some ten times a second: 20 * log10(peak) is in dB. Threads: any, real-time ones
 * too. */
LIRVOX_C_EXPORT double lirvox_meter_take_peak(lirvox_meter* meter);
/* How many frames have arrived, 11025 a second: none do from an input that is dead.
 * Threads: any, real-time ones too. */
LIRVOX_C_EXPORT uint64_t lirvox_meter_frames(const lirvox_meter* meter);

/* --- Inputs of the device -------------------------------------------------------------- */

/* Something to listen to. The strings are good during the call. */
typedef struct lirvox_input {
  const char* identifier; /* for lirvox_prefer_input */
  const char* name;       /* for people */
  bool is_monitor;        /* hears what an output plays, not a room */
  bool is_current;        /* the one in use */
} lirvox_input;

/* Called inside lirvox_list_inputs, on its thread. */
typedef void (*lirvox_input_visitor)(void* context, const lirvox_input* input);

/* Visits all inputs of the installed platform. LIRVOX_NO_INPUT when there is no sound.
 * Threads: any; blocks while the sound server is asked. */
LIRVOX_C_EXPORT lirvox_status lirvox_list_inputs(lirvox_input_visitor visitor, void* context);
/* Listens to the input of that identifier from now on; NULL leaves the choice to the
 * system. Threads: any; blocks while the sound server is asked. */
LIRVOX_C_EXPORT lirvox_status lirvox_prefer_input(const char* identifier);

/* --- Database -------------------------------------------------------------------------- */

/* Where fingerprints are looked up. */
typedef struct lirvox_database lirvox_database;

/* Where the installed database is, or would be. NULL on failure. Threads: any. */
LIRVOX_C_EXPORT char* lirvox_installed_database_path(void);

/* The store in the file at `path`, which is opened by lookups; NULL stands for the
 * installed file. NULL on failure. Threads: any. */
LIRVOX_C_EXPORT lirvox_database* lirvox_database_new(const char* path);
/* Threads: one at a time. */
LIRVOX_C_EXPORT void lirvox_database_free(lirvox_database* database);

/* --- The recognizer -------------------------------------------------------------------- */

/* There is one per process, which lives until the process ends. */
typedef struct lirvox_recognizer lirvox_recognizer;

/* The one recognizer; the first call prepares the audio session. NULL on failure.
 * Threads: any. */
LIRVOX_C_EXPORT lirvox_recognizer* lirvox_shared_instance(void);

/* A track was found: its id, and the position in it, in seconds, at the start of the
 * capture and at the moment of the call. Called on the main queue. */
typedef void (*lirvox_did_recognize)(void* context, int32_t track_id, float absolute_time_offset,
                                     float relative_time_offset);
/* No track was found. Called on the main queue. */
typedef void (*lirvox_did_not_recognize)(void* context);

/* Who hears the outcomes; at most one call per capture. A callback that is NULL is not
 * called; all NULL removes the one before, whose release follows when a call that is
 * under way has returned. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_set_delegate(lirvox_recognizer* recognizer,
                                                  lirvox_did_recognize did_recognize,
                                                  lirvox_did_not_recognize did_not_recognize,
                                                  void* context, lirvox_release release);

/* Where things are looked up; NULL finds nothing. IMPORTANT: a process starts without,
 * and lirvox_download_database_if_needed leaves it as it was: set one at the start and
 * after each such update. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_set_database(lirvox_recognizer* recognizer,
                                                  lirvox_database* database);

/* Two lines for people: the size of the installed file, and the ids of the tracks in the
 * database that is set. NULL when there is none or it cannot be read. Threads: any;
 * blocks while the file is read. */
LIRVOX_C_EXPORT char* lirvox_database_info(lirvox_recognizer* recognizer);

/* Length of a capture in seconds; 0 stands for the default of 5. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_set_recording_time(lirvox_recognizer* recognizer,
                                                        double seconds);
LIRVOX_C_EXPORT double lirvox_recording_time(lirvox_recognizer* recognizer);

/* The vote count that a result must exceed; 0 stands for the default of 30.
 * Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_set_minimum_finded_cnt(lirvox_recognizer* recognizer,
                                                            int32_t count);
LIRVOX_C_EXPORT int32_t lirvox_minimum_finded_cnt(lirvox_recognizer* recognizer);

/* LIRVOX_NO_DATABASE when no database file is installed. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_can_recognize(lirvox_recognizer* recognizer);

/* Starts a capture; does nothing while one runs. LIRVOX_NO_DATABASE and LIRVOX_NO_INPUT
 * when it cannot be. Threads: any; blocks while the sound server is asked. */
LIRVOX_C_EXPORT lirvox_status lirvox_start_recognize(lirvox_recognizer* recognizer);
/* Cancels a running capture: the delegate hears nothing of it. Returns when the input has
 * stopped. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_stop_recognize(lirvox_recognizer* recognizer);
/* Ends a running capture early, with a lookup. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_finish_recognize(lirvox_recognizer* recognizer);
/* True from a start until the capture has its length or is cancelled. Threads: any. */
LIRVOX_C_EXPORT bool lirvox_is_recording(lirvox_recognizer* recognizer);

/* Recognises "soundLirvox.dat" among the resources as if it had been heard, and starts a
 * live capture 6 seconds from now, for which there must be an input by then: a process that
 * listens to nothing is ended. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_start_recognize_from_file(lirvox_recognizer* recognizer);
/* Writes the capture so far to "soundLirvox.dat" in the caches; nothing when there is
 * none. A file that cannot be written is not reported. Threads: any; blocks while it is
 * written. */
LIRVOX_C_EXPORT lirvox_status lirvox_save_current_buffer_to_file(lirvox_recognizer* recognizer);

/* --- Bringing the database to the device ------------------------------------------------ */

/* Installs the "db1.sqlite" of a zip archive, and sets it as the database. LIRVOX_FAILED
 * when there is none, with the reason in the log. Threads: any, but while nothing is
 * recognised; blocks while it unpacks. */
LIRVOX_C_EXPORT lirvox_status lirvox_update_database_path(lirvox_recognizer* recognizer,
                                                          const char* path);

/* The host's access key for the service, "" before it is set. Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_set_user_api_key(lirvox_recognizer* recognizer,
                                                      const char* key);
LIRVOX_C_EXPORT char* lirvox_user_api_key(lirvox_recognizer* recognizer);

/* The generation of the database whose download was begun last; NULL before the first.
 * Threads: any. */
LIRVOX_C_EXPORT lirvox_status lirvox_set_dt_db_generated(lirvox_recognizer* recognizer,
                                                         const char* dt);
LIRVOX_C_EXPORT char* lirvox_dt_db_generated(lirvox_recognizer* recognizer);

/* A database is installed and opens (`good`), or does not. Called on a thread of the
 * library's, at most once. */
typedef void (*lirvox_update_completion)(void* context, bool good);

/* Asks the service for its database and installs it if it is newer. Returns at once.
 * IMPORTANT: most failures call no completion; wait for `release`, which comes in every
 * case, and no later than the time limits of the requests, 60 seconds each.
 * Threads: any, but while nothing is recognised. */
LIRVOX_C_EXPORT lirvox_status lirvox_download_database_if_needed(
    lirvox_recognizer* recognizer, lirvox_update_completion completion, void* context,
    lirvox_release release);
/* Gives up downloads that run. Threads: any, but for a completion. */
LIRVOX_C_EXPORT lirvox_status lirvox_cancel_download(lirvox_recognizer* recognizer);

#ifdef __cplusplus
}
#endif

#endif
