/** \file
 * audlmd for C, and for languages that call C: opens sounds, renders strips and timelines, plays live.
 *
 * Whatever can be heard is a sound: a file, samples in memory, a strip of another sound with its fades, gains
 * and speed, or a mix of a timeline. All sounds are read in the same way, from any place, and the samples do
 * not depend on how many are read at a time.
 *
 * Samples are interleaved: a frame is one sample of each channel. Floats have full scale from -1 to 1, and
 * are not clipped; integers are rounded to the nearest step, and clipped. Positions and lengths are frames.
 *
 * Options are a list of texts, key and value by turns, with NULL at the end; NULL alone is an empty list. A
 * key that is not known is an error, so nothing mistyped is ignored.
 *
 * Errors: functions that make something return NULL, the others -1, and audlmd_error() then has one line for
 * the user. A failure changes nothing.
 *
 * Threads: different objects may be used on different threads. One sound may be read on several. The
 * functions of a player say who may call them. Nothing may be used once its object is freed; a NULL may be
 * freed.
 */
#ifndef AUDLMD_H
#define AUDLMD_H

#include <stdint.h>

#if defined(__GNUC__)
#define AUDLMD_API __attribute__((visibility("default")))
#else
#define AUDLMD_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Something that can be heard. */
typedef struct audlmd_sound audlmd_sound;
/** A timeline that is being built. */
typedef struct audlmd_timeline audlmd_timeline;
/** Live playback of a sound. */
typedef struct audlmd_player audlmd_player;

/** The containers of samples. Those of 2 and 4 bytes have the machine's byte order. */
typedef enum audlmd_format {
    AUDLMD_F32 = 0,
    AUDLMD_S16 = 1,
    /** Three bytes, the lowest first. */
    AUDLMD_S24 = 2,
    AUDLMD_S32 = 3,
    /** Added to an integer format: the noise of triangular dither, which depends on channel and position
       alone. */
    AUDLMD_DITHERED = 16
} audlmd_format;

/** The version of the library, such as "1.1.0.0". Never freed. */
AUDLMD_API const char* audlmd_version(void);
/** What the last failure on this thread was, one line. Valid until the next failure on this thread. */
AUDLMD_API const char* audlmd_error(void);

/* ---- Sounds ---------------------------------------------------------------------------------------------
 */

/** Opens a sound file, or a timeline (OpenTimelineIO, its bundles, or audlmd's own JSON): the content decides.
 * Films and what else libsndfile does not read are decoded by the program ffmpeg, once, into a folder; that
 * may take minutes.
 *
 * - `films`: "false": nothing is decoded, and no program is started
 * - `cache`: the folder of decoded films; left out, audlmd in the user's cache folder
 * - `stream`: of a film, the stream with sound, from 1
 * - `timeline`: of a file with several timelines, the name of one
 * - `media`: a folder; below it a timeline's media are looked for that are not where it says
 * - `sampleRate`: of a timeline that does not say it; 48000 where it is left out
 *
 * and those of audlmd_mix().
 * \snippet interface.c open */
AUDLMD_API audlmd_sound* audlmd_open(const char* path, const char* const* options);

/** A sound of samples in memory, which are copied: frames of so many channels, at so many frames per
 * second.
 * \snippet interface.c samples */
AUDLMD_API audlmd_sound* audlmd_from_samples(const float* interleaved, int64_t frames, int channels,
                                             int sample_rate);

/** A part of a sound, as a strip of a timeline plays it. The keys are those of a strip in audlmd's own JSON
 * (docs/timeline.schema.json): from, to, reverse, speed, converter, gain, fadeIn, fadeOut, equaliser,
 * automation and others. Values are JSON, or a text as it is: {"gain", "-3", "to", "1.5s", "fadeOut",
 * "{\"length\": \"1s\", \"curve\": \"log\"}", NULL}. A time is a number of samples, or seconds as in "1.5s",
 * at the sample rate of the strip, which is the sound's unless the key sampleRate names another. The strip
 * keeps the sound; free it as you like.
 * \snippet interface.c strip */
AUDLMD_API audlmd_sound* audlmd_strip(const audlmd_sound* sound, const char* const* options);

/** The mix of a timeline.
 *
 * - `threads`: that render side by side; as many as there are processors where it is left out
 * - `channels`: a number, or a layout such as mono, stereo or 5.1: the mix is folded down to that
 *
 * A medium that is not there is silent, and reported.
 * \snippet interface.c timeline */
AUDLMD_API audlmd_sound* audlmd_mix(const audlmd_timeline* timeline, const char* const* options);

/** Frees a sound; strips, mixes and players that were made of it keep what they need. */
AUDLMD_API void audlmd_free(audlmd_sound* sound);

/** Samples in a frame. */
AUDLMD_API int audlmd_channels(const audlmd_sound* sound);
/** In frames per second. */
AUDLMD_API int audlmd_sample_rate(const audlmd_sound* sound);
/** The length, in frames. */
AUDLMD_API int64_t audlmd_frames(const audlmd_sound* sound);

/** Reads frames from `position` on into `buffer`, and returns how many: fewer at the end of the sound, 0
 * behind it. What fails in a mix is silent, and stands in the report; what fails in a file is an error, and
 * the buffer then holds anything. `format` is an audlmd_format, and the buffer has room for all that is asked
 * for.
 * \snippet interface.c read */
AUDLMD_API int64_t audlmd_read(const audlmd_sound* sound, int64_t position, int64_t frames, int format,
                               void* buffer);

/** What went wrong in a mix or a strip so far, as JSON: clips that were silent or too loud, peaks of the
 * channels, and what is not played as it was written. Free it by audlmd_free_text().
 * \snippet interface.c report */
AUDLMD_API char* audlmd_report(const audlmd_sound* sound);
/** The timeline of a mix or a strip in audlmd's own JSON, with what was left out filled in. Free
 * it by audlmd_free_text(). */
AUDLMD_API char* audlmd_timeline_text(const audlmd_sound* sound);
/** Frees a report, or the text of a timeline. */
AUDLMD_API void audlmd_free_text(char* text);

/* ---- Timelines that are built by calls ------------------------------------------------------------------
 */

/** An empty timeline. The keys are those of a timeline in audlmd's own JSON: name, sampleRate, channels,
 * length, timeReference, frameRate, markers. One thread at a time may use it.
 * \snippet interface.c timeline */
AUDLMD_API audlmd_timeline* audlmd_timeline_new(const char* const* options);
/** Places a part of a sound on a track, which is made where no track has the name; tracks are summed in the
 * order in which they were made. Keys as of audlmd_strip(), and `at`, where on the output the strip begins.
 * Times are at the timeline's sample rate. Returns 0. */
AUDLMD_API int audlmd_timeline_add(audlmd_timeline* timeline, const char* track, const audlmd_sound* sound,
                                   const char* const* options);
/** Frees a timeline; mixes of it keep what they need. */
AUDLMD_API void audlmd_timeline_free(audlmd_timeline* timeline);

/* ---- Live playback --------------------------------------------------------------------------------------
 */

/** Plays a sound forwards and backwards, at any speed, from any place, into the audio callback of the
 * program. Stands at the start and does not play yet. Keeps the sound.
 *
 * - `latency`: how far ahead rendering is, in seconds: 0.005 to 2, 0.05 where it is left out
 * - `fade`: of every change, in seconds: 0.001 to 0.1, 0.005 where it is left out
 *
 * \snippet interface.c player */
AUDLMD_API audlmd_player* audlmd_player_new(const audlmd_sound* sound, const char* const* options);
/** Frees a player. The callback must not run any more. */
AUDLMD_API void audlmd_player_free(audlmd_player* player);

/** The audio callback's: fills a buffer, with silence where nothing plays. Allocates nothing, takes no lock
 * and makes no system call. On one thread at a time. All other functions may be called on any other thread.
 */
AUDLMD_API void audlmd_player_fill(audlmd_player* player, float* interleaved, int64_t frames);

/** Plays on from where the player stands; at the end of the sound, plays it again. Returns 0, as do all
 * orders. */
AUDLMD_API int audlmd_player_play(audlmd_player* player);
/** Stops, and keeps the position. */
AUDLMD_API int audlmd_player_stop(audlmd_player* player);
/** Jumps to a frame of the sound; beyond the sound counts as its ends. */
AUDLMD_API int audlmd_player_seek(audlmd_player* player, int64_t position);
/** 1 is the sound's own speed, -1 plays backwards. */
AUDLMD_API int audlmd_player_set_speed(audlmd_player* player, double speed);
/** Plays `from` up to `to` again and again; no loop where both are 0. */
AUDLMD_API int audlmd_player_set_loop(audlmd_player* player, int64_t from, int64_t to);
/** In decibels, at most +10. */
AUDLMD_API int audlmd_player_set_gain(audlmd_player* player, double decibels);

/** The frame of the sound that the device was given last. */
AUDLMD_API int64_t audlmd_player_position(const audlmd_player* player);
/** 1 while it plays, 0 when it stands, also at the end of the sound. */
AUDLMD_API int audlmd_player_is_playing(const audlmd_player* player);
/** The largest magnitude of a channel since the last call; -1 for a channel that is not there. */
AUDLMD_API float audlmd_player_take_peak(audlmd_player* player, int channel);
/** What was late or failed so far, as JSON. Free it by audlmd_free_text(). */
AUDLMD_API char* audlmd_player_report(const audlmd_player* player);

#ifdef __cplusplus
}
#endif

#endif
