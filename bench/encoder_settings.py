#!/usr/bin/env python3
"""Measures what the settings of the H.264 encoder cost: processor time, likeness and size.

usage: encoder_settings.py FOLDER FILM...

Each FILM's first seconds are encoded by the ffmpeg program, which has the same encoder, in turn with
each effort and quality, and otherwise with Boxlift's settings (video_encoder.cpp and
h264_encoder.cpp in src/engine/media), without the limit of rate: it would hide what a quality
costs. FOLDER takes what is made on the way. Likeness is the mean structural similarity (SSIM) of the
pictures' luminance to the source's.
"""

import math
import os
import re
import resource
import statistics
import subprocess
import sys

CHOSEN = ("veryfast", 17)
SETTINGS = [(effort, 17) for effort in
            ("ultrafast", "superfast", "veryfast", "faster", "fast", "medium")]
SETTINGS += [("veryfast", quality) for quality in (15, 16, 18, 19, 20)]
SECONDS = 5
# The most from one key frame to the next; what a film that tells no rate is taken to have.
KEY_SECONDS = 4
ASSUMED_RATE = 25
# Where Boxlift takes AVX-512 from the encoder, it leaves it these; and where that is.
WITHOUT_AVX512 = "asm=AVX2,FMA3,BMI2,LZCNT"
MACROBLOCKS_AT_ONCE = 8
AVX512 = {"avx512f", "avx512cd", "avx512bw", "avx512dq", "avx512vl"}
# Picture by picture, whatever their times.
PAIRED = "[0:v]settb=1/1000,setpts=N[a];[1:v]settb=1/1000,setpts=N[b];[a][b]ssim"
LIKENESS = re.compile(r"SSIM Y:([0-9.]+)")


def processor_seconds():
    used = resource.getrusage(resource.RUSAGE_CHILDREN)
    return used.ru_utime + used.ru_stime


def ffmpeg(*arguments):
    """What it says, and the processor seconds that it takes."""
    before = processor_seconds()
    said = subprocess.run(["ffmpeg", "-nostdin", "-y", "-hide_banner", *arguments],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          errors="replace", check=True).stdout
    return said, processor_seconds() - before


def has_avx512():
    with open("/proc/cpuinfo", encoding="utf-8") as processors:
        return any(line.startswith("flags") and AVX512 <= set(line.split()) for line in processors)


def told(film, entry):
    """What the film says of its pictures."""
    return subprocess.run(["ffprobe", "-v", "error", "-select_streams", "V:0", "-show_entries",
                           f"stream={entry}", "-of", "default=nw=1:nk=1", film],
                          stdout=subprocess.PIPE, text=True, check=True).stdout


def fixed_settings(film, width):
    """Those that go with every effort and quality."""
    pictures, seconds = map(int, told(film, "avg_frame_rate").split("/"))
    rate = pictures / seconds if pictures and seconds else ASSUMED_RATE
    settings = ["-profile:v", "high", "-g", str(2 * round(KEY_SECONDS * rate)), "-force_key_frames",
                f"expr:if(isnan(prev_forced_t),1,gte(t-prev_forced_t,{KEY_SECONDS}))"]
    if has_avx512() and math.ceil(width / 16) % MACROBLOCKS_AT_ONCE:
        settings += ["-x264-params", WITHOUT_AVX512]
    return settings


class Clip:
    """Some seconds of a film, uncompressed, so that nothing but encoding is measured."""

    def __init__(self, film, folder):
        self.raw = os.path.join(folder, "clip.nut")
        self.encoded = os.path.join(folder, "clip.mkv")
        ffmpeg("-t", str(SECONDS), "-i", film, "-map", "0:V:0", "-fps_mode", "passthrough",
               "-vf", "scale=trunc(iw/2)*2:trunc(ih/2)*2", "-pix_fmt", "yuv420p",
               "-c:v", "rawvideo", self.raw)
        # A film that lies on its side has been turned.
        self.settings = fixed_settings(film, int(told(self.raw, "width")))
        self.reading = ffmpeg("-i", self.raw, "-f", "null", "-")[1]

    def encode(self, effort, quality):
        """Processor seconds, likeness and bytes."""
        taken = ffmpeg("-i", self.raw, "-fps_mode", "passthrough", "-c:v", "libx264", "-preset",
                       effort, "-crf", str(quality), *self.settings, self.encoded)[1]
        said = ffmpeg("-i", self.encoded, "-i", self.raw, "-lavfi", PAIRED, "-f", "null", "-")[0]
        likeness = float(LIKENESS.search(said).group(1))
        return max(taken - self.reading, 0), likeness, os.path.getsize(self.encoded)


def measure(films, folder):
    """For each setting the results of all films, in their order."""
    results = {setting: [] for setting in SETTINGS}
    for film in films:
        clip = Clip(film, folder)
        for setting, found in results.items():
            found.append(clip.encode(*setting))
    return results


def main():
    folder, films = sys.argv[1], sys.argv[2:]
    os.makedirs(folder, exist_ok=True)
    results = measure(films, folder)
    chosen_time = sum(time for time, _, _ in results[CHOSEN])
    chosen_sizes = [size for _, _, size in results[CHOSEN]]
    print(f"{len(films)} films; time and size of {CHOSEN[0]}, {CHOSEN[1]}: 1")
    print(f"{'effort, quality':18} {'time':>6} {'size':>6} {'likeness':>9} {'lowest':>7}  below 0.98")
    for (effort, quality), found in results.items():
        times, likenesses, sizes = zip(*found)
        size = math.exp(statistics.mean(math.log(a / b) for a, b in zip(sizes, chosen_sizes)))
        below = sum(likeness < 0.98 for likeness in likenesses)
        print(f"{effort + ', ' + str(quality):18} {sum(times) / chosen_time:6.2f} {size:6.2f} "
              f"{statistics.mean(likenesses):9.4f} {min(likenesses):7.4f}  {below}")


if __name__ == "__main__":
    main()
