"""Runs programs for the measurements: what they and those they start cost."""

import os
import pathlib
import subprocess
import sys
import time


def _note_peaks(process, peaks):
    """Notes the most kilobytes that a process and those below it have had. A later note replaces an earlier
    one: until its program starts, a process shows the memory of the one that starts it."""
    try:
        status = pathlib.Path(f"/proc/{process}/status").read_text(encoding="utf-8")
        peaks[process] = int(status.split("VmHWM:")[1].split()[0])
        below = pathlib.Path(f"/proc/{process}/task/{process}/children").read_text(encoding="ascii")
    except (OSError, IndexError):
        return  # It has ended.
    for child in below.split():
        _note_peaks(child, peaks)


def run(words, output=subprocess.DEVNULL):
    """(processor seconds, kilobytes) of a program and those it starts; the peaks of all are added."""
    started = subprocess.Popen(words, stdout=output)
    peaks, ended = {}, 0
    while not ended:
        _note_peaks(started.pid, peaks)
        time.sleep(0.002)
        ended, status, usage = os.wait4(started.pid, os.WNOHANG)
    started.returncode = os.waitstatus_to_exitcode(status)
    if started.returncode:
        sys.exit(f"{' '.join(words)} failed")
    return usage.ru_utime + usage.ru_stime, sum(peaks.values())
