#!/usr/bin/env python3
"""Writes the fuzzer's seed corpus: a few host sessions in the harness's input
format (three images, then operations), each reaching a different part of
the plug-in so that mutation starts from live runs and acquisitions rather
than from random bytes. Usage: make_corpus.py DIRECTORY"""
import pathlib
import sys

# Image: camera id, flags, null pointers, width, height, pitch, first row,
# colour plane shape, stride, AOI flag (then four AOI bytes when set).
FULL = 0x3F  # colour planes, live buffer, view, display, colour display
def image(camera, width, height, flags=FULL, nulls=0, pitch=0x09, first=0x20,
          colour=0, stride=0x05, aoi=None):
    data = [camera, flags, nulls, width & 0xFF, height & 0xFF, pitch, first, colour, stride]
    if aoi is None:
        return data + [0]
    return data + [1] + [v & 0xFF for v in aoi]

SANE = image(0, 32, 16) + image(1, 24, 12, flags=0x0E) + image(2, 16, 8, flags=0x0F)

ACQUIRE, LIVE_START, LIVE_STOP, WAIT, STATUS, ATTACH, DETACH, ORDER = 0, 2, 3, 4, 5, 6, 7, 8
FAULT, RUN, PARAM, CHANGE, TAMPER, LIFECYCLE, NULLS = 9, 10, 11, 12, 13, 14, 15
WAITING = 0x04
UNPLUG, REPLUG, DROP, FAIL_WRITES, PULSE, RESET = 0, 1, 2, 3, 4, 5

SEEDS = {
    "acquire": SANE + [ACQUIRE, 0 | WAITING, 7, ACQUIRE, 1 | WAITING, 8, ACQUIRE, 2, 9,
                       STATUS, 2, WAIT, 2, STATUS, 2],
    "live": SANE + [LIVE_START, 0, RUN, 3, LIVE_STOP, 0, LIVE_START, 1, RUN, 2, ACQUIRE,
                    1 | WAITING, 4, LIVE_START, 2, RUN, 1, LIVE_STOP, 2],
    "detach": SANE + [ACQUIRE, 0, 1, DETACH, 0, ACQUIRE, 0 | WAITING, 2, ATTACH, 1, DETACH, 1,
                      ATTACH, 1, ORDER, 0x03, 1, 0, ORDER, 0x07, 0, 0, STATUS, 0],
    "unplug": SANE + [LIVE_START, 0, RUN, 1, FAULT, UNPLUG, 0, RUN, 1, LIVE_STOP, 0,
                      FAULT, REPLUG, 0, ACQUIRE, 0 | WAITING, 3, FAULT, UNPLUG, 1, ACQUIRE,
                      1, 4, WAIT, 1, FAULT, REPLUG, 1, ATTACH, 1, ACQUIRE, 1 | WAITING, 5],
    "writes": SANE + [FAULT, FAIL_WRITES, 0, 0, PARAM, 0, 15, 3, 0x00, 0x10, 0, 0,
                      ACQUIRE, 0 | WAITING, 1, FAULT, FAIL_WRITES, 1, 13, LIVE_START, 1,
                      FAULT, FAIL_WRITES, 2, 3, CHANGE, 0, 1, 1, 8, 2, 24, 10, ACQUIRE,
                      0 | WAITING, 2, FAULT, PULSE, 0, CHANGE, 1, 3, 1, ACQUIRE, 1, 3, WAIT, 1],
    "geometry": image(0, 32, 16, pitch=0x80 | 0x08, stride=0x80 | 0x04, first=0x70)
    + image(0, 40, 20, pitch=0x02, colour=0x80 | 0x15, stride=0x01, aoi=(8, 2, 24, 12))
    + image(1, -3, 12, flags=0x3F, nulls=0x21, first=0xF0)
    + [LIVE_START, 0, RUN, 1, LIVE_STOP, 0, LIVE_START, 1, RUN, 2, LIVE_STOP, 1, ACQUIRE,
       1 | WAITING, 0, LIVE_START, 2, RUN, 1, LIVE_STOP, 2],
    "tamper": SANE + [LIVE_START, 0, TAMPER, 2, 0, LIVE_START, 1, TAMPER, 0, 1, 11,
                      ACQUIRE, 1 | WAITING, 0, NULLS, 3, LIFECYCLE, 8, ACQUIRE, 0 | WAITING, 1,
                      LIFECYCLE, 0, ACQUIRE, 2 | WAITING, 2],
}

out = pathlib.Path(sys.argv[1])
out.mkdir(parents=True, exist_ok=True)
for name, data in SEEDS.items():
    (out / name).write_bytes(bytes(data))
