# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""Fetches a page of 1 MB from nginx over loopback: a program around HTTPSocket::Get beside curl's command-line tool, whole process
against whole process, in turns; the ratio is taken pair by pair. Then what a wait for a silent server costs the processor."""
import hashlib
import os
import pathlib
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parents[2]
FETCH = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT / "build/release/bench/http_fetch"
PAIRS = 200
WAITS = (1, 11)  # seconds: the difference leaves the start and the end of the process out


def nginx(folder):
    """Serves folder on a free loopback port; gives its process and its address."""
    program = next((p for p in (ROOT / "build/unpacked/nginx/usr/sbin/nginx", pathlib.Path("/usr/sbin/nginx")) if p.exists()), None)
    if program is None:
        raise SystemExit("nginx is missing. `scripts/setup test` fetches it.")
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        port = probe.getsockname()[1]
    paths = "".join(f'{kind}_temp_path "{folder}/{kind}";' for kind in ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
    configuration = folder / "nginx.conf"
    configuration.write_text(f'daemon off; master_process off; error_log stderr; pid "{folder}/pid"; events {{}}'
                             f'http {{ access_log off; sendfile on; {paths}'
                             f'server {{ listen 127.0.0.1:{port}; root "{folder}"; }} }}')
    server = subprocess.Popen(["setpriv", "--pdeathsig", "KILL", program, "-p", folder, "-c", configuration, "-e", "stderr"])
    for _ in range(1000):
        with socket.socket() as probe:
            # From another address than the server's, or it could meet itself.
            probe.bind(("127.0.0.2", 0))
            if probe.connect_ex(("127.0.0.1", port)) == 0:
                return server, f"http://127.0.0.1:{port}"
        time.sleep(0.01)
    server.kill()
    raise SystemExit("nginx doesn't come up.")


def run(command, expected=0):
    """The seconds on the wall and on the processor of a whole process."""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL if expected else None)
    _, status, usage = os.wait4(process.pid, 0)
    wall = time.monotonic() - begin
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != expected:
        raise SystemExit(f"{command} ended with {process.returncode}")
    return wall, usage.ru_utime + usage.ru_stime


def compare(name, page, url):
    ours, theirs = [str(FETCH), url], ["curl", "--silent", "--http1.0", url]
    for command in (ours, theirs):
        if hashlib.sha256(subprocess.run(command, stdout=subprocess.PIPE).stdout).digest() != hashlib.sha256(page).digest():
            raise SystemExit(f"{command} gives another page")
    pairs = [(run(ours), run(theirs)) for _ in range(PAIRS)]
    for program, index in (("HTTPSocket", 0), ("curl", 1)):
        wall = statistics.median(pair[index][0] for pair in pairs) * 1000
        processor = statistics.median(pair[index][1] for pair in pairs) * 1000
        print(f"{name}: {program:12} {wall:6.2f} ms wall, {processor:6.2f} ms processor")
    ratios = sorted(theirs[0] / ours[0] for ours, theirs in pairs)
    print(f"{name}: speed against curl, wall: {statistics.median(ratios):.2f} "
          f"(quarters {ratios[PAIRS // 4]:.2f} to {ratios[3 * PAIRS // 4]:.2f})")


def wait():
    """A server that takes connections and says nothing."""
    silent = socket.create_server(("127.0.0.1", 0))
    held = []

    def take():
        while True:
            held.append(silent.accept())

    threading.Thread(target=take, daemon=True).start()
    url = f"http://127.0.0.1:{silent.getsockname()[1]}/"
    for place in ("main", "thread"):
        # 3: the time was up.
        short, long = (run([str(FETCH), "--on", place, "--timeout", str(seconds), url], 3)[1] for seconds in WAITS)
        share = (long - short) / (WAITS[1] - WAITS[0])
        print(f"a wait with nothing arriving, {place:6}: {share * 100:.2f} % of a core")


if shutil.which("curl") is None:
    raise SystemExit("curl is missing. `scripts/setup bench` installs it.")
with tempfile.TemporaryDirectory() as place:
    folder = pathlib.Path(place)
    # Signs of life are counted in characters: bytes that are no text cost more.
    pages = {"text": ("<p>A page of text, 日本語も少し。</p>\n".encode() * 30000)[:1 << 20], "noise": os.urandom(1 << 20)}
    for name, page in pages.items():
        (folder / name).write_bytes(page)
    server, address = nginx(folder)
    try:
        for name, page in pages.items():
            compare(name, page, f"{address}/{name}")
    finally:
        server.kill()
        server.wait()
wait()
