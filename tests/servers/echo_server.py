# SPDX-FileCopyrightText: The Sorakaze developers
# SPDX-License-Identifier: GPL-3.0-or-later
"""echo_server.py PORT FILE: Python's own HTTP/1.0 server. It tells what it was asked; /unmeasured is FILE without a length."""
import http.server
import pathlib
import sys


class Handler(http.server.BaseHTTPRequestHandler):
    def answer(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
        self.send_response(200)
        if self.path == "/unmeasured":
            self.send_header("Content-Type", "application/octet-stream")
            self.end_headers()
            self.wfile.write(pathlib.Path(sys.argv[2]).read_bytes())
            return
        self.send_header("Content-Type", "text/plain")
        self.send_header("Set-Cookie", "one=1")
        self.send_header("Set-Cookie", "two=2")
        self.end_headers()
        if self.command != "HEAD":
            self.wfile.write(self.requestline.encode("latin-1") + b"\n" + self.headers.as_bytes() + body)

    do_GET = do_HEAD = do_POST = do_PUT = answer


http.server.ThreadingHTTPServer(("127.0.0.1", int(sys.argv[1])), Handler).serve_forever()
