#!/usr/bin/python3 -B
"""Prints what is heard in a WAV file of 16 bits, one line for each stretch of one pitch.

usage: pitch.py FILE.wav

Each line has the pitch in Hz (0: silence), the start and the length of the stretch in seconds. A
stretch of less than 0.15 s is left out. The last line is "end", the length of the file and the
largest difference of two neighbouring samples.
"""

import sys
import wave

import numpy

WINDOW = 0.04  # seconds
SHORTEST = 0.15
SILENCE = 50  # of 32768
SAME_PITCH = 0.03
FINE = 1 << 20  # points of a spectrum


def peak(samples, rate, points):
    """Returns the frequency of the largest line of the spectrum, between its lines."""
    spectrum = numpy.abs(numpy.fft.rfft(samples * numpy.hanning(len(samples)), points))
    at = int(spectrum.argmax())
    if 0 < at < len(spectrum) - 1:
        below, top, above = numpy.log(spectrum[at - 1:at + 2] + 1e-9)
        at += (below - above) / (2 * (below - 2 * top + above))
    return at * rate / points


def rough_pitches(samples, rate):
    size = int(rate * WINDOW)
    for start in range(0, len(samples) - size + 1, size):
        window = samples[start:start + size]
        is_silent = numpy.abs(window).max() < SILENCE
        yield start, 0.0 if is_silent else peak(window, rate, 1 << 14)


def stretches(samples, rate):
    """Yields the first and the last sample of each stretch, and whether it is silent."""
    first, last, pitch = 0, 0, None
    for start, rough in rough_pitches(samples, rate):
        if pitch is None or abs(rough - pitch) > SAME_PITCH * pitch:
            if pitch is not None:
                yield first, last, pitch == 0
            first, pitch = start, rough
        last = start + int(rate * WINDOW)
    if pitch is not None:
        yield first, last, pitch == 0


def main():
    with wave.open(sys.argv[1]) as file:
        rate = file.getframerate()
        frames = numpy.frombuffer(file.readframes(file.getnframes()), dtype="<i2")
    samples = frames.reshape(-1, 2)[:, 0].astype(float)
    for first, last, is_silent in stretches(samples, rate):
        if last - first < SHORTEST * rate:
            continue
        pitch = 0 if is_silent else peak(samples[first:last], rate, FINE)
        print(f"{pitch:.3f} {first / rate:.3f} {(last - first) / rate:.3f}")
    largest = numpy.abs(numpy.diff(samples)).max() if len(samples) > 1 else 0
    print(f"end {len(samples) / rate:.4f} {largest:.0f}")


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main()
