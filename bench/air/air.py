# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""The application on the air beside a plain music player daemon with the same MP3, each with an output that is heard by
nobody: processor time, context switches, memory; and how long the window takes to come up with 100,000 files."""
import contextlib
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "show"))
import station  # noqa: E402

SECONDS = int(os.environ.get("SORAKAZE_AIR_SECONDS", "60"))
FOLDER = station.ROOT / "build/bench/air"
PROGRAM = FOLDER / "Sorakaze.app/Contents/Linux/Sorakaze"
HZ = os.sysconf("SC_CLK_TCK")


def make(deployment):
    station.make()
    shutil.rmtree(FOLDER, ignore_errors=True)
    shutil.copytree(station.ROOT / "build/Sorakaze/Sorakaze.app", FOLDER / "Sorakaze.app")
    # The artist is looked up where nobody answers.
    (FOLDER / "Sorakaze.app/Contents/Resources/deployment.json").write_text(
        json.dumps({"encyclopaediaEnglish": "127.0.0.1:1"} | deployment))
    (FOLDER / "Programs").mkdir()
    (FOLDER / "Music").mkdir()
    (FOLDER / "Programs/Air.txt").write_text("mode: songs 1\nopening: 0, play [[iTunes]]\n")
    shutil.copy(station.TRACKS[0], FOLDER / "Music/track.mp3")


def processes(pid):
    """The process and all below it: sounds are decoded by others than the application."""
    found = [pid]
    for path in pathlib.Path("/proc").glob("[0-9]*/stat"):
        try:
            parent = int(path.read_text().rsplit(")", 1)[1].split()[1])
        except OSError:
            continue
        if parent == pid:
            found += processes(int(path.parent.name))
    return found


def usage(pid):
    """Seconds of processor time and context switches of all threads so far. That of children which have ended counts
    with their parents."""
    seconds = switches = 0
    for process in processes(pid):
        fields = pathlib.Path(f"/proc/{process}/stat").read_text().rsplit(")", 1)[1].split()
        seconds += sum(int(field) for field in fields[11:15]) / HZ
        for task in pathlib.Path(f"/proc/{process}/task").iterdir():
            for line in (task / "status").read_text().splitlines():
                if "ctxt_switches" in line:
                    switches += int(line.split()[1])
    return seconds, switches


def memory(pid):
    """Megabytes of all processes together: what they share counts once among them; and what is nobody else's."""
    shares = own = 0
    for process in processes(pid):
        rollup = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text()
        value = {line.split(":")[0]: int(line.split()[1]) for line in rollup.splitlines()[1:]}
        shares += value["Pss"] / 1024
        own += (value["Private_Clean"] + value["Private_Dirty"]) / 1024
    return shares, own


def over(pid):
    before = usage(pid)
    time.sleep(SECONDS)
    after = usage(pid)
    return (after[0] - before[0]) / SECONDS * 100, (after[1] - before[1]) / SECONDS


def xdotool(*arguments):
    return subprocess.run(["xdotool", *arguments], capture_output=True, text=True).stdout.split()


def await_window(pid):
    while True:
        found = xdotool("search", "--onlyvisible", "--pid", str(pid))
        if found:
            return found[0]


def display():
    read, write = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-nolisten", "tcp", "-noreset"], pass_fds=[write],
                              stderr=subprocess.DEVNULL)
    os.close(write)
    os.environ["DISPLAY"] = ":" + os.read(read, 16).decode().strip()
    return server


def start():
    return subprocess.Popen([PROGRAM], stderr=subprocess.DEVNULL)


def daemon(work):
    (work / "music").mkdir()
    shutil.copy(station.TRACKS[0], work / "music/track.mp3")
    (work / "mpd.conf").write_text(
        f'music_directory "{work}/music"\nplaylist_directory "{work}"\ndb_file "{work}/db"\nstate_file "{work}/state"\n'
        f'bind_to_address "{work}/socket"\naudio_output {{\ntype "null"\nname "null"\nmixer_type "none"\n}}\n')
    process = subprocess.Popen(["mpd", "--no-daemon", "--stderr", str(work / "mpd.conf")], stderr=subprocess.DEVNULL)
    for _ in range(100):
        try:
            connection = socket.socket(socket.AF_UNIX)
            connection.connect(str(work / "socket"))
            break
        except OSError:
            time.sleep(0.1)
    answers = connection.makefile("rw")
    answers.readline()
    for command in ("update", None, "add track.mp3", "play"):
        if command is None:
            time.sleep(2)
            continue
        answers.write(command + "\n")
        answers.flush()
        answers.readline()
    connection.close()
    return process


@contextlib.contextmanager
def environment():
    """A home, a display and a sound output that nobody else uses."""
    with tempfile.TemporaryDirectory() as name:
        os.environ.update(HOME=name, XDG_RUNTIME_DIR=name, XDG_CONFIG_HOME=name, SDL_AUDIODRIVER="dummy",
                          DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        server = display()
        try:
            yield pathlib.Path(name)
        finally:
            server.terminate()
            server.wait(10)


def beside_daemon(deployment, work=None):
    """Percent of a core and context switches a second of both, and what the application's memory was."""
    make(deployment)
    with contextlib.ExitStack() as stack:
        work = work or stack.enter_context(environment())
        app = start()
        window = await_window(app.pid)
        time.sleep(1)
        idle = memory(app.pid)
        xdotool("windowfocus", "--sync", window, "key", "space")
        peer = daemon(work)
        time.sleep(3)
        figures = {}
        both = [threading.Thread(target=lambda n=n, p=p: figures.update({n: over(p.pid)}))
                for n, p in (("Sorakaze", app), ("mpd", peer))]
        for thread in both:
            thread.start()
        for thread in both:
            thread.join()
        figures["memory"] = (*idle, memory(app.pid)[0])
        app.send_signal(signal.SIGTERM)
        figures["status"] = app.wait(10)
        peer.terminate()
        peer.wait(10)
        return figures


def time_to_window():
    for number in range(100_000):
        folder = FOLDER / f"Music/{number // 1000:03}"
        folder.mkdir(exist_ok=True)
        (folder / f"{number:06}.mp3").touch()
    times = []
    for _ in range(6):
        begin = time.monotonic()
        app = start()
        await_window(app.pid)
        times.append(time.monotonic() - begin)
        app.send_signal(signal.SIGTERM)
        app.wait(10)
    return sorted(times[1:])[2]


def main():
    with environment() as work:
        figures = beside_daemon({}, work)
        for label in ("Sorakaze", "mpd"):
            print(f"{label:10} {figures[label][0]:5.2f} % of a core, {figures[label][1]:6.1f} context switches a second")
        rest, own, on_air = figures["memory"]
        print(f"memory: {rest:.0f} MB at rest ({own:.0f} MB its own), {on_air:.0f} MB on the air")
        print(f"exit status {figures['status']}")
        print(f"start to visible window with 100,000 files: {time_to_window() * 1000:.0f} ms (median)")


if __name__ == "__main__":
    main()
