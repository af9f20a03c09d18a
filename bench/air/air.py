# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""The application on the air beside a plain music player daemon with the same MP3, each with an output that is heard by
nobody: processor time, context switches, memory; and how long the window takes to come up with 100,000 files."""
import os
import pathlib
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "show"))
import station  # noqa: E402

SECONDS = int(os.environ.get("SORAKAZE_AIR_SECONDS", "60"))
FOLDER = station.ROOT / "build/bench/air"
PROGRAM = FOLDER / "Sorakaze.app/Contents/Linux/Sorakaze"
HZ = os.sysconf("SC_CLK_TCK")


def make():
    station.make()
    shutil.rmtree(FOLDER, ignore_errors=True)
    shutil.copytree(station.ROOT / "build/Sorakaze/Sorakaze.app", FOLDER / "Sorakaze.app")
    # The artist is looked up where nobody answers.
    (FOLDER / "Sorakaze.app/Contents/Resources/deployment.json").write_text('{"encyclopaediaEnglish": "127.0.0.1:1"}')
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
    import socket
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


def main():
    make()
    with tempfile.TemporaryDirectory() as name:
        work = pathlib.Path(name)
        os.environ.update(HOME=name, XDG_RUNTIME_DIR=name, XDG_CONFIG_HOME=name, SDL_AUDIODRIVER="dummy",
                          DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent")
        server = display()
        try:
            app = start()
            window = await_window(app.pid)
            time.sleep(1)
            idle = memory(app.pid)
            xdotool("windowfocus", "--sync", window, "key", "space")
            peer = daemon(work)
            time.sleep(3)
            import threading
            figures = {}
            both = [threading.Thread(target=lambda n=n, p=p: figures.update({n: over(p.pid)}))
                    for n, p in (("Sorakaze", app), ("mpd", peer))]
            for thread in both:
                thread.start()
            for thread in both:
                thread.join()
            for label, (percent, switches) in figures.items():
                print(f"{label:10} {percent:5.2f} % of a core, {switches:6.1f} context switches a second")
            print(f"memory: {idle[0]:.0f} MB at rest ({idle[1]:.0f} MB its own), "
                  f"{memory(app.pid)[0]:.0f} MB on the air")
            app.send_signal(signal.SIGTERM)
            print(f"exit status {app.wait(10)}")
            peer.terminate()
            peer.wait(10)

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
            print(f"start to visible window with 100,000 files: {sorted(times[1:])[2] * 1000:.0f} ms (median)")
        finally:
            server.terminate()
            server.wait(10)


main()
