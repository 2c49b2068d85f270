#!/usr/bin/env python3
"""The program from an instrument image in a real X session (xvfb-run),
driven by key presses (xdotool) as a user drives it: the bench's -23.5 dBm at
1550 nm on the screen, three results stored by hand, timed recording switched
on at 10 s and results arriving, quit with exit code 0 and the user's state
saved. What the screen shows is read from the program's trace (OPM_TRACE=1).

    desktop_run.py <make-image.sh> <build-dir>
"""
import os
import queue
import re
import shutil
import subprocess
import sys
import tempfile
import threading
import time

LIMIT_S = 30  # for anything that only hangs when something is broken


def fail(message):
    print("FAIL: " + message, file=sys.stderr)
    sys.exit(1)


class Program:
    def __init__(self, image):
        env = dict(os.environ, OPM_TRACE="1", QT_QPA_PLATFORM="xcb",
                   TAVIX_REGISTRY=os.path.join(image, "registry.reg"),
                   TAVIX_BENCH=os.path.join(image, "bench.ini"))
        self.process = subprocess.Popen([os.path.join(image, "PowerMeter")], env=env,
                                        stderr=subprocess.PIPE, text=True, cwd="/")
        self.lines = queue.Queue()
        self.seen = []
        threading.Thread(target=self._read, daemon=True).start()

    def _read(self):
        for line in self.process.stderr:
            self.lines.put(line.rstrip("\n"))

    def wait_for(self, pattern, what, limit=LIMIT_S):
        """The first trace line from now on that matches; fails after `limit` s."""
        deadline = time.monotonic() + limit
        while time.monotonic() < deadline:
            try:
                line = self.lines.get(timeout=0.2)
            except queue.Empty:
                if self.process.poll() is not None:
                    fail(f"the program ended ({self.process.returncode}) waiting for {what}")
                continue
            self.seen.append(line)
            match = re.search(pattern, line)
            if match:
                return match
        fail(f"no {what} within {limit} s; last lines:\n" + "\n".join(self.seen[-15:]))


def key(*names):
    for name in names:
        subprocess.run(["xdotool", "key", "--clearmodifiers", name], check=True, timeout=LIMIT_S)
        time.sleep(0.3)  # one key at a time, as a hand presses them


def inside(image):
    program = Program(image)
    value = program.wait_for(r"^shown 394/1020: +(-?[0-9.]+) dBm", "value on the screen")
    shown = float(value.group(1))
    if abs(shown + 23.5) > 0.05:
        fail(f"the screen shows {shown} dBm for -23.5 dBm")
    print(f"screen: {shown:.3f} dBm for -23.5 dBm at 1550 nm")
    window = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "Power meter"],
                            capture_output=True, text=True, timeout=LIMIT_S).stdout.split()
    if not window:
        fail("no window named 'Power meter'")
    subprocess.run(["xdotool", "windowfocus", "--sync", window[0]], check=True, timeout=LIMIT_S)

    for number in (1, 2, 3):  # Enter opens the menu, F1 stores
        key("Return", "F1")
        program.wait_for(rf"^result {number}: 1550 nm -23\.", f"result {number} stored by hand")
    print("three results stored by hand")

    key("Return", "F2")  # parameters: timed recording is the first field
    program.wait_for(r"^shown 399/", "the parameter dialog")
    key("Right", "Return")  # on; the menu stays open over the screen
    key("F1")  # start recording
    started = time.monotonic()
    for number in (4, 5):
        program.wait_for(rf"^result {number}: 1550 nm -23\.", f"recorded result {number}", limit=25)
    print(f"two results recorded in {time.monotonic() - started:.1f} s at a 10 s interval")

    key("Return", "F4")  # quit
    try:
        code = program.process.wait(timeout=LIMIT_S)
    except subprocess.TimeoutExpired:
        program.process.kill()
        fail("the program did not end after quit")
    if code != 0:
        fail(f"exit code {code} after quit")
    with open(os.path.join(image, "registry.reg"), encoding="utf-8") as hive:
        if '"PowerMeter_AutoSave"="1"' not in hive.read():
            fail("the timed-recording setting was not kept")
    with open(os.path.join(image, "etc_gui", "opm.ini"), encoding="utf-8") as ini:
        if "WaveLengthShift=0" not in ini.read():
            fail("the meter's state was not saved on quit")
    print("quit with exit code 0, settings and meter state saved")


def main():
    if len(sys.argv) == 3 and sys.argv[1] == "--inside":
        inside(sys.argv[2])
        return
    make_image, build = sys.argv[1], sys.argv[2]
    image = tempfile.mkdtemp(prefix="opm-desktop-")
    try:
        subprocess.run([make_image, "--fresh", build, image], check=True, timeout=120)
        env = dict(os.environ, TAVIX_BENCH=os.path.join(image, "bench.ini"))
        for setting, value in (("input.dBm", "-23.5"), ("input.wavelength", "1550")):
            subprocess.run([os.path.join(image, "opm-bench"), "set", setting, value], env=env,
                           check=True, timeout=LIMIT_S, stdout=subprocess.DEVNULL)
        # The meter's state is written back on quit: take it out to see it return.
        ini_path = os.path.join(image, "etc_gui", "opm.ini")
        with open(ini_path, encoding="utf-8") as ini:
            text = ini.read()
        with open(ini_path, "w", encoding="utf-8") as ini:
            ini.write(re.sub(r"WaveLengthShift=0\n", "", text))
        result = subprocess.run(["xvfb-run", "-a", "-s", "-screen 0 1024x768x24", sys.executable,
                                 __file__, "--inside", image], timeout=240)
        sys.exit(result.returncode)
    finally:
        shutil.rmtree(image, ignore_errors=True)


if __name__ == "__main__":
    main()
