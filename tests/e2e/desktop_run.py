#!/usr/bin/env python3
# The program from a fresh image in an X server (xvfb-run), driven by xdotool
# key presses: -23.5 dBm at 1550 nm on the screen, three results stored by
# hand, a description typed in the results list, the results saved to a file
# named on the screen keyboard, timed recording at 10 s, quit with code 0 and
# the state saved. The screen is read from the program's trace (OPM_TRACE=1).
#   desktop_run.py <make-image.sh> <build-dir>
import json, os, queue, re, shutil, subprocess, sys, tempfile, threading, time

LIMIT_S = 30  # only reached when something is broken
# xdotool types a capital letter it must map to a spare key as the small one
# (X's rule for a key with one symbol), so the Ø of the unit tests is ø here.
DESCRIPTION = "Spleiß Nord – ø 9 µm"


def fail(message):
    sys.exit("FAIL: " + message)


def inside(image):
    env = dict(os.environ, OPM_TRACE="1", QT_QPA_PLATFORM="xcb",
               TAVIX_REGISTRY=image + "/registry.reg", TAVIX_BENCH=image + "/bench.ini")
    program = subprocess.Popen([image + "/PowerMeter"], env=env, stderr=subprocess.PIPE,
                               text=True, cwd="/")
    lines = queue.Queue()
    threading.Thread(target=lambda: [lines.put(l) for l in program.stderr], daemon=True).start()

    def wait_for(pattern, what, limit=LIMIT_S):
        deadline = time.monotonic() + limit
        while time.monotonic() < deadline and program.poll() is None:
            try:
                match = re.search(pattern, lines.get(timeout=0.2))
            except queue.Empty:
                continue
            if match:
                return match
        fail(f"no {what} within {limit} s (program: {program.poll()})")

    def keys(*names):
        for name in names:
            subprocess.run(["xdotool", "key", name], check=True, timeout=LIMIT_S)
            time.sleep(0.3)  # one at a time, as a hand presses them

    shown = float(wait_for(r"^shown 394/1020: +(-?[0-9.]+) dBm", "value").group(1))
    if abs(shown + 23.5) > 0.05:
        fail(f"the screen shows {shown} dBm for -23.5 dBm")
    window = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "Power meter"],
                            capture_output=True, text=True, timeout=LIMIT_S).stdout.split()
    subprocess.run(["xdotool", "windowfocus", "--sync", window[0]], check=True, timeout=LIMIT_S)
    for number in (1, 2, 3):  # Enter opens the menu, F1 stores
        keys("Return", "F1")
        wait_for(rf"^result {number}: 1550 nm -23\.", f"result {number} stored by hand")
    keys("Return", "F3", "Return")  # the results list, the newest result selected
    wait_for(r"^shown 395/1010: .*3/3", "the results list")
    def on_keyboard(*erase, text):  # F1 opens it over the screen
        keys("F1")
        time.sleep(1)
        keys(*erase)
        subprocess.run(["xdotool", "type", "--delay", "100", text], check=True, timeout=LIMIT_S)
        keys("Return")

    on_keyboard(text=DESCRIPTION)
    keys("Escape", "F3", "Down", "Return")  # back on the menu, to the result files
    wait_for(r"^shown 396/1010: ", "the result files")
    on_keyboard("BackSpace", "BackSpace", "BackSpace", "BackSpace", text="nord1")  # not "temp"
    wait_for(r"^shown 396/1502: \d+-\d+-\d+/", "the preview of the saved file")
    keys("F4", "Escape")
    results = json.load(open(image + "/data/nord1.txt", encoding="utf-8"))["OLTS"]
    if [r["WaveLen"] for r in results] != ["1550"] * 3 or results[2]["Desc"] != DESCRIPTION:
        fail(f"the saved file holds {results}")
    keys("Return", "F2", "Right", "Return")  # parameters: recording on, 10 s; the menu is back
    keys("F1")  # start recording
    started = time.monotonic()
    for number in (4, 5):
        wait_for(rf"^result {number}: 1550 nm -23\.", f"recorded result {number}", limit=25)
    print(f"{shown:.3f} dBm shown; 3 results by hand; 2 recorded in {time.monotonic() - started:.1f} s")
    keys("Return", "F4")  # quit
    try:
        code = program.wait(timeout=LIMIT_S)
    except subprocess.TimeoutExpired:
        program.kill()
        fail("the program did not end after quit")
    if code != 0:
        fail(f"exit code {code} after quit")
    if '"PowerMeter_AutoSave"="1"' not in open(image + "/registry.reg", encoding="utf-8").read():
        fail("the timed-recording setting was not kept")
    if "WaveLengthShift=0" not in open(image + "/etc_gui/opm.ini", encoding="utf-8").read():
        fail("the meter's state was not saved on quit")


def main():
    if sys.argv[1] == "--inside":
        return inside(sys.argv[2])
    image = tempfile.mkdtemp(prefix="opm-desktop-")
    try:
        subprocess.run([sys.argv[1], "--fresh", sys.argv[2], image], check=True, timeout=120)
        env = dict(os.environ, TAVIX_BENCH=image + "/bench.ini")
        for setting, value in (("input.dBm", "-23.5"), ("input.wavelength", "1550")):
            subprocess.run([image + "/opm-bench", "set", setting, value], env=env, check=True,
                           timeout=LIMIT_S, stdout=subprocess.DEVNULL)
        # Written back on quit: take it out to see it return.
        ini = image + "/etc_gui/opm.ini"
        text = open(ini, encoding="utf-8").read().replace("WaveLengthShift=0\n", "")
        open(ini, "w", encoding="utf-8").write(text)
        sys.exit(subprocess.run(["xvfb-run", "-a", "-s", "-screen 0 1024x768x24", sys.executable,
                                 __file__, "--inside", image], timeout=240).returncode)
    finally:
        shutil.rmtree(image, ignore_errors=True)


if __name__ == "__main__":
    main()
