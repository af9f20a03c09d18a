# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""The real application with a display, a sound server, a recorder and a voice service of its own: what a page posts, and
what is heard of the answer, with the time of each. For scripts/try-viewer and the benchmark."""
import array
import http.server
import json
import math
import operator
import os
import pathlib
import pwd
import queue
import secrets
import shutil
import signal
import socket
import statistics
import struct
import subprocess
import tempfile
import threading
import time
import urllib.parse

ROOT = pathlib.Path(__file__).resolve().parents[3]
STATION = pathlib.Path(os.environ.get("SORAKAZE_STATION", ROOT / "build/Sorakaze"))
RATE = 48000
TONE_SECONDS = 0.6
TONE_PEAK = 0.25
PATIENCE = 20


def tone():
    """A WAV file of a sine of 500 Hz."""
    samples = array.array("h", (round(TONE_PEAK * 32767 * math.sin(2 * math.pi * 500 * i / RATE))
                                for i in range(int(TONE_SECONDS * RATE)))).tobytes()
    return (b"RIFF" + struct.pack("<I", 36 + len(samples)) + b"WAVEfmt " +
            struct.pack("<IHHIIHH", 16, 1, 1, RATE, RATE * 2, 2, 16) + b"data" + struct.pack("<I", len(samples)) + samples)


class Trap:
    """A port of this machine that nobody may come to, by TCP or by UDP."""

    def __init__(self):
        self.seen = []
        self.stream = socket.create_server(("127.0.0.1", 0))
        self.host = f"127.0.0.1:{self.stream.getsockname()[1]}"
        self.datagrams = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.datagrams.bind(self.stream.getsockname())
        for wait in (self.accept, self.receive):
            threading.Thread(target=wait, daemon=True).start()

    def accept(self):
        while True:
            connection, _ = self.stream.accept()
            with connection:
                connection.settimeout(1)
                try:
                    self.seen.append(connection.recv(100))
                except OSError as error:
                    self.seen.append(error)

    def receive(self):
        while True:
            self.seen.append(self.datagrams.recv(100))


class Service(http.server.ThreadingHTTPServer):
    """Answers each post with the page that `answers` has for its text, or with one that plays the tone; and with a redirect to
    that where it has a path."""
    daemon_threads = True
    PLAY = '<html><body><audio autoplay src="/tone.wav"></audio></body></html>'

    def __init__(self, answers):
        super().__init__(("127.0.0.1", 0), Handler)
        self.answers = answers
        self.tone = tone()
        self.posts = queue.Queue()  # (path, the fields in their order)
        self.gets = []  # the paths asked for
        threading.Thread(target=self.serve_forever, daemon=True).start()


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def answer(self, body, kind="text/html; charset=utf-8", status=200, **headers):
        self.send_response(status)
        for name, value in {"Content-Type": kind, "Content-Length": len(body), "Set-Cookie": "a=b", **headers}.items():
            self.send_header(name.replace("_", "-"), str(value))
        self.end_headers()
        self.wfile.write(body)

    def do_POST(self):
        body = self.rfile.read(int(self.headers["Content-Length"])).decode()
        fields = urllib.parse.parse_qsl(body, keep_blank_values=True)
        self.server.posts.put((self.path, fields))
        answer = self.server.answers.get(dict(fields).get("WriteText"), Service.PLAY)
        if answer.startswith("/"):
            self.answer(b"", status=302, Location=answer)
        else:
            self.answer(answer.encode())

    def do_GET(self):
        self.server.gets.append(self.path)
        if self.path == "/tone.wav":
            self.answer(self.server.tone, "audio/wav")
        elif self.path == "/closed":
            self.answer(b"", status=401, WWW_Authenticate='Basic realm="x"')
        elif self.path == "/redirected":
            self.answer(Service.PLAY.encode())
        elif self.path == "/file.bin":
            self.answer(b"x" * 1000, "application/octet-stream", Content_Disposition="attachment; filename=file.bin")
        else:
            self.answer(b"<html></html>")


class Recorder:
    """What the device plays, with the time of every sample."""

    def __init__(self, environment):
        self.process = subprocess.Popen(
            ["parec", "-d", "ear.monitor", f"--rate={RATE}", "--channels=1", "--format=s16le", "--latency-msec=10"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment)
        self.chunks = queue.Queue()
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        while data := os.read(self.process.stdout.fileno(), 4096):
            self.chunks.put((time.time(), array.array("h", data[:len(data) // 2 * 2])))

    def hear(self, silence=0.5):
        """Waits for a sound and for `silence` seconds behind it: when it began, how long it was without its pauses, and its
        level in dB; None where nothing is heard. A machine that is short of time may punch holes into it."""
        end = time.time() + PATIENCE
        began, levels, quiet = None, [], 0
        while quiet < silence and time.time() < end:
            try:
                when, samples = self.chunks.get(timeout=0.5)
            except queue.Empty:
                continue
            for start in range(0, len(samples), RATE // 200):
                block = samples[start:start + RATE // 200]
                level = 10 * math.log10(sum(map(operator.mul, block, block)) / len(block) / 32768 ** 2 + 1e-12)
                if level > -40:
                    began = began or when - (len(samples) - start) / RATE
                    levels.append((level, len(block)))
                    quiet = 0
                elif began:
                    quiet += len(block) / RATE
        return began and (began, sum(size for _, size in levels) / RATE, statistics.median(level for level, _ in levels))

    def forget(self):
        while not self.chunks.empty():
            self.chunks.get()


class Rig:
    """Display, sound server and recorder; use it with `with`."""

    def __enter__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="sorakaze-viewer-"))
        self.folder.chmod(0o711)
        self.processes = []
        read, write = os.pipe()
        self.start("Xvfb", "-displayfd", str(write), "-screen", "0", "1024x768x24", "-nolisten", "tcp", "-ac", "-noreset",
                   pass_fds=[write])
        os.close(write)
        with open(read) as number:
            display = number.readline().strip()
        socket = self.folder / "sound"
        home = self.folder / "server"
        home.mkdir(mode=0o700)
        cookie = self.folder / "cookie"
        cookie.write_bytes(bytes(256))
        # A user's server as it is on a desktop: in a folder of the user's own, for whoever has the cookie.
        self.own_server = {"PULSE_SERVER": f"unix:{home}/sound", "PULSE_COOKIE": f"{home}/cookie"}
        (home / "cookie").write_bytes(secrets.token_bytes(256))
        (home / "cookie").chmod(0o600)
        self.environment = {"PATH": os.environ["PATH"], "LANG": "C.UTF-8", "DISPLAY": f":{display}",
                            "PULSE_SERVER": f"unix:{socket}", "PULSE_COOKIE": str(cookie), "HOME": str(home), "XDG_RUNTIME_DIR": str(home)}
        self.start("openbox", stdout=subprocess.DEVNULL)
        self.start("pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--disallow-exit",
                   "-L", f"module-native-protocol-unix socket={socket} auth-anonymous=1",
                   "-L", f"module-native-protocol-unix socket={home}/sound auth-cookie={home}/cookie",
                   "-L", f"module-null-sink sink_name=ear rate={RATE}")
        for _ in range(PATIENCE * 10):
            if subprocess.run(["pactl", "info"], capture_output=True, env=self.environment).returncode == 0:
                break
            time.sleep(0.1)
        # A device that somebody plays on already, so that it works in small steps.
        self.start("pacat", "--latency-msec=20", "/dev/zero", "--raw")
        self.recorder = Recorder(self.environment)
        self.processes.append(self.recorder.process)
        self.recorder.chunks.get(timeout=PATIENCE)
        return self

    def start(self, *command, **options):
        environment = getattr(self, "environment", None)
        self.processes.append(subprocess.Popen(command, env=environment, stderr=subprocess.DEVNULL, **options))

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.terminate()
        for process in self.processes:
            process.wait(PATIENCE)
        shutil.rmtree(self.folder, ignore_errors=True)

    def sound_of(self, account):
        """Where a user's programs find the sound server."""
        return {**self.environment, **(self.own_server if account.pw_uid == os.geteuid() else {})}

    def view(self, user, page):
        """Has the page's bytes, as the application hands them over, run by the program alone. It has to find the sound server
        at the usual place."""
        account = pwd.getpwnam(user)
        program = self.folder / "sorakaze-viewer"
        if not program.exists():
            shutil.copy(STATION / "Sorakaze.app/Contents/Linux/sorakaze-viewer", program)
        runtime = pathlib.Path(tempfile.mkdtemp(prefix=user, dir=self.folder))
        (runtime / "pulse").mkdir(mode=0o700)
        (runtime / "pulse/native").symlink_to(self.folder / "sound")
        for path in (runtime, runtime / "pulse"):
            os.chown(path, account.pw_uid, account.pw_gid)
        environment = {name: self.environment[name] for name in ("PATH", "LANG")}
        process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, cwd="/",
                                   start_new_session=True,
                                   env={**environment, "XDG_RUNTIME_DIR": str(runtime), "HOME": "/nonexistent"}, **identity(account))
        self.processes.append(process)
        process.stdin.write(page)
        process.stdin.close()
        process.told = queue.Queue()  # the lines that it says, with their times
        threading.Thread(target=lambda: [process.told.put((time.time(), line)) for line in process.stdout], daemon=True).start()
        return process

    def run(self, *command):
        return subprocess.run(command, capture_output=True, text=True, env=self.environment, timeout=PATIENCE).stdout


def identity(account):
    """For a process that is to run as another user."""
    if account.pw_uid == os.geteuid():
        return {}
    return {"user": account.pw_uid, "group": account.pw_gid, "extra_groups": []}


class Station:
    """The application in a folder of its own, with one program whose opening is `lines`, run as `user`. Without a `service`
    it speaks with its own."""

    def __init__(self, rig, user, service, lines):
        self.rig = rig
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix=user, dir=rig.folder))
        self.folder.chmod(0o711)
        self.app = self.folder / "Sorakaze.app"
        shutil.copytree(STATION / "Sorakaze.app", self.app)
        (self.app / "Contents/Resources/deployment.json").write_text(
            json.dumps({"voice": f"127.0.0.1:{service.server_port}" if service else "", "encyclopaediaEnglish": "",
                        "encyclopaediaJapanese": ""}))
        (self.folder / "Programs").mkdir()
        (self.folder / "Music").mkdir()
        (self.folder / "Music/tone.wav").write_bytes(tone())
        (self.folder / "Programs/Voice.txt").write_text(
            "mode: songs 1\nj_personality:Kyoko\n" + "".join(f"opening: 0, {line}\n" for line in lines))
        account = pwd.getpwnam(user)
        self.own = {name: self.folder / name for name in ("home", "runtime", "temporary")}
        for path in self.own.values():
            path.mkdir(mode=0o700)
            os.chown(path, account.pw_uid, account.pw_gid)
        self.account = account
        self.process = None

    def open(self, **environment):
        """Starts the application, and its show once the window is there."""
        home = str(self.own["home"])
        self.messages = open(self.folder / "messages", "w+")
        self.process = subprocess.Popen(
            [self.app / "Contents/Linux/Sorakaze"], stderr=self.messages, cwd="/", **identity(self.account),
            env={**self.rig.sound_of(self.account), "HOME": home, "XDG_RUNTIME_DIR": str(self.own["runtime"]),
                 "TMPDIR": str(self.own["temporary"]), "DBUS_SESSION_BUS_ADDRESS": "unix:path=/nonexistent", **environment})
        self.rig.processes.append(self.process)
        while not (found := self.windows()):
            if self.process.poll() is not None:
                raise RuntimeError(f"it ended with status {self.process.returncode}: {self.complaints()}")
        self.window = found[0]
        while self.rig.run("xdotool", "getwindowfocus").split() != [self.window]:
            time.sleep(0.01)
        self.idle = self.browsers()
        self.rig.run("xdotool", "key", "space")

    def windows(self):
        return self.rig.run("xdotool", "search", "--onlyvisible", "--pid", str(self.process.pid)).split()

    def page_written(self):
        """When the page that is being loaded, or will be soon, was written."""
        while not (pages := list(self.own["temporary"].rglob("temp.html"))):
            time.sleep(0.01)
        return pages[0].stat().st_mtime

    def below(self):
        """The processes that the application has started, and theirs."""
        parents = {}
        for stat in pathlib.Path("/proc").glob("[0-9]*/stat"):
            try:
                parents[int(stat.parent.name)] = int(stat.read_text().rsplit(")", 1)[1].split()[1])
            except OSError:
                pass  # gone meanwhile
        found = {self.process.pid}
        while more := {pid for pid, parent in parents.items() if parent in found} - found:
            found |= more
        return sorted(found - {self.process.pid})

    def browsers(self):
        """Those of them that belong to a page, with their command lines."""
        arguments = {}
        for pid in self.below():
            try:
                arguments[pid] = pathlib.Path(f"/proc/{pid}/cmdline").read_bytes()
            except OSError:
                pass  # gone meanwhile
        # A renderer has its arguments as one text.
        programs = (b"sorakaze-viewer", b"QtWebEngineProcess")
        return {pid: line for pid, line in arguments.items()
                if line.replace(b"\0", b" ").split(b" ")[0].rsplit(b"/")[-1] in programs}

    def renderers(self):
        """Those that run a page."""
        return [pid for pid, line in self.browsers().items() if b"--type=renderer" in line]

    def left_behind(self):
        """All files but the lock that tells of one instance a folder."""
        return sorted(str(path.relative_to(self.folder)) for folder in self.own.values() for path in folder.rglob("*")
                      if path.suffix != ".lock")

    def terminate(self):
        """Ends it as a session does: the exit status and how long that took."""
        begin = time.monotonic()
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(PATIENCE), time.monotonic() - begin

    def complaints(self):
        self.messages.seek(0)
        return self.messages.read()

    def remove(self):
        self.messages.close()
        shutil.rmtree(self.folder)
