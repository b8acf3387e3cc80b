"""Writes a timeline of ten minutes to standard output, from the recordings in the folder that is named."""
import json
import sys

samples = sys.argv[1]


def power(length):
    return {"length": length, "curve": "power"}


# A guitar with crossfades, every second time reversed.
guitar = [{"name": f"guitar {at} s", "media": f"{samples}/guit_em9.flac", "at": f"{at}s", "to": "9.9s", "gain": -6,
           "fadeIn": power("1.9s"), "fadeOut": power("1.9s"), "reverse": at % 16 == 8} for at in range(0, 590, 8)]
# A tabla at three speeds, equalised.
tabla = [{"name": f"tabla {at} s", "media": f"{samples}/loop_tabla.flac", "at": f"{at}s", "to": "10.6s", "gain": -9,
          "speed": (0.75, 1.25, 1.5)[at // 15 % 3], "reverse": at % 60 == 45,
          "equaliser": ["highpass:80", "peak:900:-6:1.2"]} for at in range(0, 585, 15)]
# A slow hum with equaliser and automation. It sounds at 150, 300 and 450 s, the borders between four slices.
hum = [{"name": f"hum {at} s", "media": f"{samples}/ambi_haunted_hum.flac", "at": f"{at}s", "to": "9.7s", "gain": -6,
        "speed": 0.2, "fadeIn": power("0.7s"), "fadeOut": power("0.7s"),
        "equaliser": ["lowshelf:200:+3", "highshelf:6k:-4"],
        "automation": {"points": [[0, -12], ["4s", 0], ["5s", -9], ["9s", -3]]}} for at in range(10, 550, 45)]
# A cymbal that only the third of four slices plays.
cymbal = [{"name": "swell", "media": "late.flac", "at": "375s", "to": "1.8s", "gain": -9, "speed": 0.4,
           "reverse": True}]

tracks = {"guitar": guitar, "tabla": tabla, "hum": hum, "cymbal": cymbal}
json.dump({"audlmd": 1, "name": "film", "sampleRate": 44100, "channels": 2, "length": "600s",
           "tracks": [{"name": name, "strips": strips} for name, strips in tracks.items()]}, sys.stdout, indent=1)
