"""What a step adds to the writing of a full disc, on an image and on the emulated recorder."""
import os
import pathlib
import shutil
import statistics
import subprocess
import sys

MINUTES = 74
STEPS = (("an image, compared", 12, "image-uncompared", "image", "15 %"),
         ("an image of 99 tracks, compared", 99, "image-uncompared", "image", "15 %"),
         ("a disc with CD-TEXT", 12, "drive", "drive-named", "1 s"),
         ("a disc of 99 tracks with CD-TEXT", 99, "drive", "drive-named", "1 s"),
         ("a disc, compared", 12, "drive", "drive-verified", "-"))


def tracks_of(folder, count, make_sound):
    """The tracks of one disc: WAV files in CD format, all of one sound."""
    seconds = MINUTES * 60 // count
    sound = make_sound(folder / f"track-{seconds}.wav", seconds)
    place = folder / f"disc-{MINUTES}-{count}"
    place.mkdir(exist_ok=True)
    tracks = [place / f"{i + 1:02}.wav" for i in range(count)]
    for track in tracks:
        if not track.exists() or track.stat().st_size != sound.stat().st_size:
            with open(sound, "rb") as source, open(track, "wb", buffering=0) as copy:
                shutil.copyfileobj(source, copy, 1 << 20)  # as large a piece as the preparation writes
    return [str(track) for track in tracks]


def written(built, how, folder, tracks):
    """Seconds and megabytes of one write; a drive gets a blank disc."""
    place = folder / "write"
    shutil.rmtree(place, ignore_errors=True)
    place.mkdir()
    config = place / "drive.conf"
    config.write_text("[sr0]\ndisc = disc\n")
    drive = {"LD_PRELOAD": str(built / "emulator/libzib_emulated_drive.so"), "ZIB_DRIVE_CONFIG": str(config)}
    for track in tracks:  # What was prepared a moment ago is in memory.
        pathlib.Path(track).read_bytes()
    told = subprocess.run([str(built / "bench_burn"), how, str(place), *tracks], text=True, capture_output=True,
                          check=False, env={**os.environ, **(drive if how.startswith("drive") else {})})
    shutil.rmtree(place)
    if told.returncode != 0:
        sys.exit(f"bench_burn {how} failed: {told.stderr}")
    return [float(figure) for figure in told.stdout.split()]


def table(built, folder, turns, make_sound):
    """Both ways in turns; a figure is the median, what a step adds that of the pairs."""
    print(f"\n| {MINUTES} minutes of sound | without s | with s | adds | at most | MB above idle | at most |"
          "\n|---|---|---|---|---|---|---|")
    for name, count, without, with_it, limit in STEPS:
        tracks = tracks_of(folder, count, make_sound)
        pairs = [(written(built, without, folder, tracks), written(built, with_it, folder, tracks))
                 for _ in range(turns)]
        before, after = (statistics.median(pair[i][0] for pair in pairs) for i in (0, 1))
        share = 100 * statistics.median(pair[1][0] / pair[0][0] - 1 for pair in pairs)
        adds = f"{share:.0f} %" if limit.endswith("%") else f"{after - before:.2f} s"
        most = max(pair[1][1] for pair in pairs)
        print(f"| {name} | {before:.2f} | {after:.2f} | {adds} | {limit} | {most:.1f} | 30 |", flush=True)
