#include <audlmd.h>

#undef NDEBUG
#include <assert.h>
#include <stdio.h>
#include <string.h>

static void read_sound(const audlmd_sound* sound) {
    /*! [read] */
    /* 16-bit samples with dither, in blocks, up to the end. */
    int16_t block[2 * 480];
    int64_t position = 0;
    for (int64_t frames; (frames = audlmd_read(sound, position, 480, AUDLMD_S16 | AUDLMD_DITHERED, block)) != 0;) {
        if (frames < 0) {
            fprintf(stderr, "%s\n", audlmd_error());
            break;
        }
        position += frames;
    }
    assert(position == audlmd_frames(sound) && audlmd_channels(sound) == 2 && audlmd_sample_rate(sound) == 48000);
    /*! [read] */
}

static audlmd_sound* play_strip(const audlmd_sound* sound) {
    /*! [strip] */
    const char* const options[] = {"from", "0.25s", "reverse", "true",
                                   "gain", "-3",    "fadeOut", "{\"length\": \"0.1s\", \"curve\": \"power\"}",
                                   NULL};
    audlmd_sound* strip = audlmd_strip(sound, options);
    if (strip == NULL)
        fprintf(stderr, "%s\n", audlmd_error());
    /*! [strip] */
    return strip;
}

static audlmd_sound* build_timeline(const audlmd_sound* sound) {
    /*! [timeline] */
    const char* const whole[] = {"name", "film", "sampleRate", "48000", "channels", "2", NULL};
    audlmd_timeline* timeline = audlmd_timeline_new(whole);
    const char* const first[] = {"at", "0", "gain", "-6", NULL};
    const char* const second[] = {"at", "0.5s", "speed", "0.5", NULL};
    if (audlmd_timeline_add(timeline, "music", sound, first) != 0 ||
        audlmd_timeline_add(timeline, "voice", sound, second) != 0)
        fprintf(stderr, "%s\n", audlmd_error());
    audlmd_sound* mix = audlmd_mix(timeline, NULL);
    audlmd_timeline_free(timeline); /* the mix keeps what it needs */
    /*! [timeline] */
    return mix;
}

static void tell(const audlmd_sound* mix) {
    /*! [report] */
    char* report = audlmd_report(mix);
    char* timeline = audlmd_timeline_text(mix);
    assert(strstr(report, "\"channels\"") != NULL && strstr(timeline, "\"voice\"") != NULL);
    audlmd_free_text(report);
    audlmd_free_text(timeline);
    /*! [report] */
}

static void listen(const audlmd_sound* sound) {
    /*! [player] */
    const char* const options[] = {"latency", "0.1", NULL};
    audlmd_player* player = audlmd_player_new(sound, options);
    audlmd_player_seek(player, 4800);
    audlmd_player_set_gain(player, -3);
    audlmd_player_set_speed(player, -1); /* backwards */
    audlmd_player_set_loop(player, 0, 24000);
    audlmd_player_play(player);

    /* The program's audio callback calls this, again and again. */
    float device[2 * 256];
    audlmd_player_fill(player, device, 256);

    printf("%s at %lld, peak %f\n", audlmd_player_is_playing(player) == 1 ? "plays" : "stands",
           (long long)audlmd_player_position(player), (double)audlmd_player_take_peak(player, 0));
    audlmd_player_stop(player);
    char* lost = audlmd_player_report(player); /* what was late, as JSON */
    audlmd_free_text(lost);
    audlmd_player_free(player); /* when the callback no longer runs */
    /*! [player] */
}

int main(void) {
    static float samples[2 * 48000];
    for (int i = 0; i < 2 * 48000; ++i)
        samples[i] = (float)(i % 100) / 100.0F - 0.5F; /* a saw tooth */

    /*! [samples] */
    audlmd_sound* sound = audlmd_from_samples(samples, 48000, 2, 48000); /* copied */
    /*! [samples] */

    /*! [open] */
    const char* const options[] = {"films", "false", NULL};
    audlmd_sound* gone = audlmd_open("gone.wav", options);
    if (gone == NULL)
        fprintf(stderr, "audlmd %s: %s\n", audlmd_version(), audlmd_error());
    audlmd_free(gone); /* NULL may be freed */
    /*! [open] */
    assert(gone == NULL);

    read_sound(sound);
    audlmd_sound* strip = play_strip(sound);
    audlmd_sound* mix = build_timeline(sound);
    assert(audlmd_frames(strip) == 36000 && audlmd_frames(mix) == 24000 + 96000);
    tell(mix);
    listen(sound);
    audlmd_free(mix);
    audlmd_free(strip);
    audlmd_free(sound);
    return 0;
}
