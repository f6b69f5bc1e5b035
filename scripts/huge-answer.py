#!/usr/bin/python3
"""Closes a return with the built till against a service whose advice-note
answer is huge, and prints what it cost: the close's wall time, the till's
peak memory and the size of the document file the till wrote.

    scripts/huge-answer.py [--build build] [--megabytes 300] [--chunked]

A loopback HTTP server stands in for the service: it hands out a token and
answers the advice note with a JSON object of the given size (Content-Length
known, or chunked with --chunked). The till runs the plain-return scenario
(till/scenarios/01-plain-return.json) under /usr/bin/time -v in a temporary
data folder; the scenario's own expectations may fail, only the costs count.
"""

import argparse
import http.server
import json
import os
import re
import subprocess
import sys
import tempfile
import threading
import time

CHUNK = 1024 * 1024


class Service(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    megabytes = 300
    chunked = False
    advice_notes = 0

    def log_message(self, *args):
        pass

    def do_POST(self):
        length = int(self.headers.get("Content-Length", "0"))
        self.rfile.read(length)
        if self.path.endswith("/advicenote"):
            Service.advice_notes += 1
            self.huge()
        elif self.path.endswith("/token"):
            self.small({"access_token": "huge-answer-token", "token_type": "bearer", "expires_in": 3600})
        else:
            self.small({"status": "ok"})

    def small(self, obj):
        body = json.dumps(obj).encode()
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def huge(self):
        head = b'{"uuid":"u-1","Key4":"1/2/3","pad":"'
        tail = b'"}'
        padding = self.megabytes * CHUNK - len(head) - len(tail)
        self.send_response(200)
        self.send_header("Content-Type", "application/json")
        if self.chunked:
            self.send_header("Transfer-Encoding", "chunked")
        else:
            self.send_header("Content-Length", str(len(head) + padding + len(tail)))
        self.end_headers()
        block = b"x" * CHUNK
        try:
            self.write(head)
            while padding > 0:
                piece = block[:min(padding, CHUNK)]
                self.write(piece)
                padding -= len(piece)
            self.write(tail)
            if self.chunked:
                self.wfile.write(b"0\r\n\r\n")
        except (BrokenPipeError, ConnectionResetError):
            # The client gave up on the answer: what this script measures.
            self.close_connection = True

    def write(self, data):
        if self.chunked:
            self.wfile.write(b"%x\r\n" % len(data) + data + b"\r\n")
        else:
            self.wfile.write(data)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    parser.add_argument("--build", default="build", help="the build folder (bin/tessaro-till, plugins/)")
    parser.add_argument("--megabytes", type=int, default=300, help="size of the advice-note answer")
    parser.add_argument("--chunked", action="store_true", help="send the answer chunked, without Content-Length")
    options = parser.parse_args()
    Service.megabytes = options.megabytes
    Service.chunked = options.chunked

    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Service)
    threading.Thread(target=server.serve_forever, daemon=True).start()
    url = "http://127.0.0.1:%d" % server.server_address[1]
    build = os.path.abspath(options.build)
    till = os.path.join(build, "bin", "tessaro-till")
    plugins = os.path.join(build, "plugins")
    scenario = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "till", "scenarios", "01-plain-return.json")

    with tempfile.TemporaryDirectory(prefix="huge-answer-") as data:
        subprocess.run([till, "init", "--data", data, "--service-url", url, "--token-url", url + "/token"],
                       check=True, stdout=subprocess.DEVNULL)
        started = time.monotonic()
        run = subprocess.run(["/usr/bin/time", "-v", till, "run", "--plugins", plugins, "--data", data, scenario],
                             stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        elapsed = time.monotonic() - started
        peak = re.search(r"Maximum resident set size \(kbytes\): (\d+)", run.stderr)
        documents = os.path.join(data, "documents")
        sizes = [os.path.getsize(os.path.join(documents, name)) for name in os.listdir(documents)] \
            if os.path.isdir(documents) else []
        closes = [line for line in run.stdout.splitlines() if "close" in line.lower()]
        print("answer: %d MiB%s, advice notes received: %d" % (options.megabytes, " chunked" if options.chunked else "",
                                                              Service.advice_notes))
        print("till run: exit %d, %.1f s, peak RSS %s MiB" % (run.returncode, elapsed,
                                                            int(peak.group(1)) // 1024 if peak else "?"))
        print("largest document file: %d bytes" % max(sizes, default=0))
        for line in closes:
            print("  " + line)
        if run.returncode < 0 or "bad_alloc" in run.stderr:
            print(run.stderr[-2000:], file=sys.stderr)
    server.shutdown()


if __name__ == "__main__":
    main()
