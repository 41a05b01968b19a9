#!/usr/bin/python3 -B
"""Loads `ipodctl serve` from another process, and checks what its clients see.

usage: serve_load.py IPODCTL IPODSIM SECONDS [NOISE]

Twenty event streams are read and 1,000 requests a second are sent by two other processes. Then

  - every stream has each change of the playback within 1 s,
  - every request is answered, or refused with 503,
  - the memory of ipodctl serve grows by less than 10 MB,
  - the median time of a command to the iPod at most doubles, or is below NOISE ms (5): what the
    other programs of the machine can cost.

It prints the figures, and fails with exit status 1.
"""

import http.client
import json
import multiprocessing
import os
import pathlib
import re
import selectors
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time

STREAMS = 20
REQUESTS_A_SECOND = 1000
SENDERS = 2
MOST_LATE = 1.0
MOST_GROWTH = 10 << 20


class Serve:
    """A simulated iPod and the program."""

    def __init__(self, ipodctl, ipodsim, folder, *ipod_options):
        runtime = pathlib.Path(folder, "run")
        runtime.mkdir(mode=0o700)
        link = os.path.join(folder, "ipod")
        quiet = {"stdout": subprocess.DEVNULL, "stderr": subprocess.DEVNULL}
        self.ipod = subprocess.Popen([ipodsim, "--link", link, *ipod_options], **quiet)
        self.process = subprocess.Popen(
            [ipodctl, "serve", "--port", "0", "--device", link, "--quiet"], stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, text=True, env={**os.environ, "XDG_RUNTIME_DIR": str(runtime)})
        found = re.search(r"127\.0\.0\.1:(\d+)/\?token=(\w+)", self.process.stdout.readline())
        self.port, self.token = int(found[1]), found[2]

    def request(self, method, path, body=None):
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        connection.request(method, path, json.dumps(body) if body is not None else None,
                           {"Authorization": f"Bearer {self.token}", "Content-Type": "application/json"})
        answer = connection.getresponse()
        document = json.loads(answer.read())
        connection.close()
        if answer.status != 200:
            raise RuntimeError(f"{path}: {answer.status} {document}")
        return document

    def wait_for(self, what, condition):
        end = time.monotonic() + 20
        while time.monotonic() < end:
            state = self.request("GET", "/v1/state")
            if condition(state):
                return state
            time.sleep(0.1)
        raise RuntimeError(f"{what} did not happen within 20 s")

    def memory(self):
        text = pathlib.Path(f"/proc/{self.process.pid}/status").read_text()
        return int(re.search(r"VmRSS:\s+(\d+) kB", text)[1]) << 10

    def end(self):
        for process in (self.process, self.ipod):
            process.send_signal(signal.SIGTERM)
            process.wait(15)


def head(token, port, target):
    return (f"GET {target} HTTP/1.1\r\nHost: 127.0.0.1:{port}\r\n"
            f"Authorization: Bearer {token}\r\n\r\n").encode()


def send_requests(port, token, seconds, rate, results):
    """One sender: requests on one connection, paced; a new connection for every hundredth."""
    answers = {"200": 0, "503": 0, "other": 0, "failed": 0}
    target = head(token, port, "/v1/state")
    connection, count = None, 0
    begin = time.monotonic()
    while (now := time.monotonic()) < begin + seconds:
        if count >= (now - begin) * rate:
            time.sleep(0.001)
            continue
        count += 1
        try:
            if connection is None or count % 100 == 0:
                connection = socket.create_connection(("127.0.0.1", port), timeout=5)
            connection.sendall(target)
            answer = b""
            while b"\r\n\r\n" not in answer:
                answer += connection.recv(65536) or b"\r\n\r\n"
            length = re.search(rb"Content-Length: (\d+)", answer)
            missing = int(length[1]) - len(answer.split(b"\r\n\r\n", 1)[1]) if length else 0
            while missing > 0:
                missing -= len(connection.recv(65536)) or missing
            status = answer[9:12].decode()
            answers[status if status in answers else "other"] += 1
            if b"Connection: close" in answer:
                connection = None
        except OSError:
            answers["failed"] += 1
            connection = None
    results.put(answers)


def read_streams(port, token, seconds, results):
    """Notes when each stream has each status of the playback."""
    chosen = selectors.DefaultSelector()
    streams = []
    for number in range(STREAMS):
        connection = socket.create_connection(("127.0.0.1", port), timeout=5)
        connection.sendall(head(token, port, "/v1/events"))
        connection.setblocking(False)
        streams.append({"text": b"", "status": None, "changes": []})
        chosen.register(connection, selectors.EVENT_READ, number)
    end, ended = time.monotonic() + seconds, 0
    while time.monotonic() < end:
        for key, _ in chosen.select(0.1):
            stream = streams[key.data]
            some = key.fileobj.recv(1 << 16)
            ended += not some
            if not some:
                chosen.unregister(key.fileobj)
            stream["text"] += some
            *events, stream["text"] = stream["text"].split(b"\n\n")
            for event in events:
                found = re.search(rb'event: state\ndata: .*"status":"(\w+)"', event)
                if found and found[1] != stream["status"]:
                    stream["status"] = found[1]
                    stream["changes"].append((time.monotonic(), found[1].decode()))
    results.put((ended, [stream["changes"] for stream in streams]))


def change(serve, seconds):
    """Stops and plays. Returns when each change was done, and how long each command took."""
    changes, times = [], []
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        before = serve.request("GET", "/v1/state")["playback"]["status"]
        wanted = "paused" if before == "playing" else "playing"
        begin = time.monotonic()
        serve.request("POST", "/v1/command", {"command": "toggle"})
        times.append(time.monotonic() - begin)
        changes.append((begin + times[-1], wanted))
        time.sleep(0.4)
        serve.wait_for(wanted, lambda state: state["playback"]["status"] == wanted)
    return changes, times


def latest(changes, streams):
    """Returns how late the latest change was on any stream."""
    worst = 0.0
    for stream in streams:
        for done, status in changes:
            seen = [at for at, what in stream if what == status and at > done - 0.5]
            worst = max(worst, min(seen) - done if seen else float("inf"))
    return worst


def measure(serve, seconds):
    serve.wait_for("the connection", lambda state: state["connection"]["stage"] == "ready")
    generation = serve.request("GET", "/v1/state")["generation"]
    serve.request("POST", "/v1/play", {"generation": generation, "path": "artists/1/tracks", "index": 0})
    serve.wait_for("playing", lambda state: state["playback"]["status"] == "playing")
    _, quiet = change(serve, max(2, seconds / 5))
    results, read = multiprocessing.Queue(), multiprocessing.Queue()
    processes = [multiprocessing.Process(target=read_streams,
                                         args=(serve.port, serve.token, seconds + 3, read))]
    processes += [multiprocessing.Process(target=send_requests, args=(
        serve.port, serve.token, seconds + 2, REQUESTS_A_SECOND / SENDERS, results))
        for _ in range(SENDERS)]
    for process in processes:
        process.start()
    time.sleep(1)
    before = serve.memory()
    changes, loaded = change(serve, seconds)
    growth = serve.memory() - before
    answers = [results.get(timeout=30) for _ in range(SENDERS)]
    ended, streams = read.get(timeout=30)
    for process in processes:
        process.join()
    return {"requests": {name: sum(one[name] for one in answers) for name in answers[0]},
            "seconds": seconds + 2, "changes": len(changes), "streams_ended": ended,
            "latest_change_ms": round(1000 * min(latest(changes, streams), 99)), "growth_kb": growth >> 10,
            "median_command_ms": [round(1000 * statistics.median(one), 2) for one in (quiet, loaded)]}


def faults(figures, noise_ms):
    quiet, loaded = figures["median_command_ms"]
    requests = figures["requests"]
    if figures["changes"] < 3:
        yield "too few changes"
    if figures["latest_change_ms"] > 1000 * MOST_LATE:
        yield "a stream had a change late"
    if figures["streams_ended"]:
        yield "a stream ended"
    if requests["failed"] or requests["other"] or requests["200"] < figures["seconds"] * REQUESTS_A_SECOND / 2:
        yield "requests were not answered"
    if figures["growth_kb"] << 10 >= MOST_GROWTH:
        yield "the memory grew"
    if loaded > max(2 * quiet, noise_ms):
        yield "commands became slow"


def main():
    ipodctl, ipodsim, seconds, *noise = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        serve = Serve(ipodctl, ipodsim, folder)
        try:
            figures = measure(serve, float(seconds))
        finally:
            serve.end()
    print(json.dumps(figures))
    found = list(faults(figures, float(*noise or [5])))
    for fault in found:
        print("serve_load: " + fault, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
