#!/usr/bin/python3 -B
"""Disturbs the iPod of `ipodctl serve` at random while clients browse, play and follow events.

usage: serve_faults.py IPODCTL IPODSIM SECONDS [SEED]

The time is divided into ten rounds, a short one into fewer. In each, faults are added to the simulated iPod through its
control socket and removed again, and the cable is pulled and plugged in. Then

  - the iPod is ready again within 6 s after each fault has ended,
  - each list has the generation, the path, the count and the names that were asked for,
  - no request is refused but for a missing iPod, a missing answer or an old generation,
  - the generation never falls, on any event stream,
  - after the last round the program has as many descriptors and threads as after the first one, and
    less than 10 MB more memory: the recorded trace has 4 MB.

It prints the seed and the figures, and fails with exit status 1.
"""

import collections
import http.client
import json
import os
import pathlib
import random
import socket
import sys
import tempfile
import threading
import time

from serve_load import Serve

MOST_ROUNDS = 10
SHORTEST_ROUND = 4
MOST_SECONDS_AWAY = 6.0
MOST_GROWTH = 10 << 20
BROWSERS = 2
PLACEHOLDER = "(name too long)"
ALLOWED = {200, 409, 503, 504}
# Each is what a cable or an iPod can do. An iPod that lies about its lists is none of them.
FAULTS = ["late=300", "late=1500", "lost", "lost@04:001A", "doubled", "doubled@04:0018", "wrong-command=77",
          "cut=5", "corrupt", "corrupt@04:001A", "noise=40", "split=4/200", "together", "notifications-before=3",
          "notifications-between=2", "silence", "sleep", "unplug-sent=40", "unplug-received=30",
          "random=20/lost,late,doubled,noise", "random=5/corrupt,cut"]
# After these the iPod is silent until it is plugged in again.
NEEDS_PLUG = ("unplug", "silence", "sleep")
UNNOTICED = 1.2
PATHS = ["artists", "albums", "genres", "playlists", "tracks", "composers", "artists/3/albums",
         "artists/5/all-tracks", "genres/1/artists", "genres/0/artists/1/tracks", "albums/all/tracks"]
COMMANDS = ["toggle", "next-track", "previous-track", "fast-forward", "end-seek", "next", "pause", "play"]


class Faulty(Serve):
    """The program and an iPod that can be disturbed."""

    def __init__(self, ipodctl, ipodsim, folder):
        self.control = os.path.join(folder, "control")
        super().__init__(ipodctl, ipodsim, folder, "--control", self.control)
        self.wrong = []

    def ask_ipod(self, **request):
        with socket.socket(socket.AF_UNIX) as control:
            control.settimeout(10)
            control.connect(self.control)
            control.sendall(json.dumps(request).encode() + b"\n")
            answer = json.loads(control.makefile().readline())
        if not answer["ok"]:
            raise RuntimeError(f"ipodsim refused {request}: {answer['error']['message']}")

    def try_request(self, method, path, body=None):
        """Returns the status and the document. Another status than those of a lost iPod is noted."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=30)
        connection.request(method, path, json.dumps(body) if body is not None else None,
                           {"Authorization": f"Bearer {self.token}", "Content-Type": "application/json"})
        answer = connection.getresponse()
        document = json.loads(answer.read())
        connection.close()
        if answer.status not in ALLOWED:
            self.wrong.append(f"{method} {path} {body}: {answer.status} {document}")
        return answer.status, document

    def state(self):
        return self.request("GET", "/v1/state")

    def figures(self):
        """Returns the descriptors, threads and bytes of the program without clients."""
        process = pathlib.Path("/proc", str(self.process.pid))
        before = None
        end = time.monotonic() + 10
        while time.monotonic() < end:
            now = len(list((process / "fd").iterdir())), len(list((process / "task").iterdir()))
            if now == before:
                break
            before = now
            time.sleep(0.7)  # an event stream sees within half a second that its reader has gone
        return {"descriptors": before[0], "threads": before[1], "memory_kb": self.memory() >> 10}


def known_lists(serve):
    """Returns the names of each list as the undisturbed iPod has them."""
    lists = {}
    generation = serve.state()["generation"]
    for path in PATHS:
        answer = serve.request("GET", f"/v1/list/{path}?generation={generation}&count=60")
        lists[path] = answer["count"], [(item["index"], item["name"]) for item in answer["items"]]
    return lists


class Clients:
    """The threads of one round."""

    def __init__(self, serve, lists, seed):
        self.serve, self.lists, self.seed = serve, lists, seed
        self.is_over = threading.Event()
        self.counts = collections.Counter()
        self.threads = [threading.Thread(target=self.run, args=(self.browse, number)) for number in range(BROWSERS)]
        self.threads += [threading.Thread(target=self.run, args=(work, 0)) for work in (self.play, self.follow)]
        for thread in self.threads:
            thread.start()

    def end(self):
        self.is_over.set()
        for thread in self.threads:
            thread.join(60)
            if thread.is_alive():
                self.serve.wrong.append("a client waits without an end")

    def run(self, work, number):
        generator = random.Random(f"{self.seed} {work.__name__} {number}")
        try:
            while not self.is_over.is_set():
                work(generator)
        except (OSError, http.client.HTTPException, ValueError) as error:
            self.serve.wrong.append(f"{work.__name__}: {error!r}")

    def browse(self, generator):
        path = generator.choice(PATHS)
        count, names = self.lists[path]
        offset = generator.randrange(len(names))
        asked = names[offset:offset + generator.randrange(1, 12)]
        generation = self.serve.state()["generation"]
        status, answer = self.serve.try_request(
            "GET", f"/v1/list/{path}?generation={generation}&offset={offset}&count={len(asked)}")
        self.counts[f"lists {status}"] += 1
        if status != 200:
            self.is_over.wait(0.1)
            return
        found = [(item["index"], item["name"]) for item in answer["items"]]
        self.counts["placeholders"] += sum(name == PLACEHOLDER for _, name in found)
        right = [one if found[at:at + 1] != [(one[0], PLACEHOLDER)] else (one[0], PLACEHOLDER)
                 for at, one in enumerate(asked)]
        if (answer["generation"], answer["path"], answer["count"], found) != (generation, path, count, right):
            self.serve.wrong.append(f"{path} from {offset}: {answer} instead of {count} with {asked}")

    def play(self, generator):
        self.is_over.wait(generator.uniform(0.1, 1))
        if generator.random() < 0.3:
            body = {"generation": self.serve.state()["generation"], "path": generator.choice(["albums", "tracks"]),
                    "index": generator.randrange(20)}
            status, _ = self.serve.try_request("POST", "/v1/play", body)
        else:
            status, _ = self.serve.try_request("POST", "/v1/command", {"command": generator.choice(COMMANDS)})
        self.counts[f"changes {status}"] += 1

    def follow(self, generator):
        """Reads one event stream for some seconds."""
        end = time.monotonic() + generator.uniform(1, 20)
        connection = http.client.HTTPConnection("127.0.0.1", self.serve.port, timeout=30)
        connection.request("GET", "/v1/events?topics=state,console,wire,finding",
                           headers={"Authorization": f"Bearer {self.serve.token}"})
        answer = connection.getresponse()
        last, event = 0, b""
        while time.monotonic() < end and not self.is_over.is_set():
            line = answer.readline()
            if not line:
                self.serve.wrong.append("an event stream ended")
                break
            if line.startswith(b"event: "):
                event = line[7:].strip()
            if not line.startswith(b"data: "):
                continue
            self.counts["events"] += 1
            document = json.loads(line[6:])
            if event == b"state":
                if document["generation"] < last:
                    self.serve.wrong.append(f"generation {document['generation']} after {last}")
                last = document["generation"]
        connection.close()


def disturb(serve, generator):
    """Adds a fault, or pulls the cable, for a while. Returns what was done, and the generation that the
    iPod has left when it was plugged in again; None when it was not."""
    done = "unplug" if generator.random() < 0.25 else generator.choice(FAULTS)
    if done == "unplug":
        serve.ask_ipod(do="unplug")
    else:
        serve.ask_ipod(do="fault", fault=done)
    time.sleep(generator.uniform(0.1, 3))
    serve.ask_ipod(do="fault", clear=True)
    if not done.startswith(NEEDS_PLUG):
        return done, None
    serve.ask_ipod(do="unplug")
    left = serve.state()["generation"]
    serve.ask_ipod(do="plug")
    return done, left


def seconds_until_ready(serve, left):
    """Returns how long the iPod is away. An answer that is missing is noticed after a second."""
    begin = ready = time.monotonic()
    while (now := time.monotonic()) < begin + 20:
        state = serve.state()
        if state["connection"]["stage"] != "ready" or state["generation"] == left:
            ready = None
        elif ready is None:
            ready = now
        if ready is not None and (left is not None or now - ready > UNNOTICED):
            return ready - begin
        time.sleep(0.05)
    return float("inf")


def run(serve, seconds, seed):
    serve.wait_for("the connection", lambda state: state["connection"]["stage"] == "ready")
    lists = known_lists(serve)
    generator = random.Random(seed)
    figures, counts, longest, faults = [], collections.Counter(), (0.0, ""), 0
    rounds = int(max(2, min(MOST_ROUNDS, seconds / SHORTEST_ROUND)))
    for number in range(rounds):
        clients = Clients(serve, lists, f"{seed} {number}")
        end = time.monotonic() + seconds / rounds
        while time.monotonic() < end:
            done, left = disturb(serve, generator)
            faults += 1
            longest = max(longest, (seconds_until_ready(serve, left), done))
            time.sleep(generator.uniform(0, 0.5))
        clients.end()
        counts += clients.counts
        figures.append(serve.figures())
    first, last = figures[0], figures[-1]
    return {"seed": seed, "faults": faults, "generations": serve.state()["generation"],
            "longest_away_ms": round(1000 * min(longest[0], 99)), "after": longest[1],
            "answers": dict(sorted(counts.items())), "memory_kb": [each["memory_kb"] for each in figures],
            **{f"{name}_start": first[name] for name in first}, **{f"{name}_end": last[name] for name in last}}


def faults_of(serve, result):
    yield from serve.wrong[:20]
    if result["longest_away_ms"] > 1000 * MOST_SECONDS_AWAY:
        yield f"the iPod was away for {result['longest_away_ms']} ms after {result['after']}"
    if not result["answers"].get("lists 200"):
        yield "no list was answered"
    for name in ("descriptors", "threads"):
        if result[f"{name}_start"] != result[f"{name}_end"]:
            yield f"{name} stayed open"
    if (result["memory_kb_end"] - result["memory_kb_start"]) << 10 >= MOST_GROWTH:
        yield "the memory grew"


def main():
    _, ipodctl, ipodsim, seconds, *rest = sys.argv
    seed = int(rest[0]) if rest else random.randrange(1 << 32)
    print(f"seed {seed}", flush=True)
    with tempfile.TemporaryDirectory() as folder:
        serve = Faulty(ipodctl, ipodsim, folder)
        try:
            result = run(serve, float(seconds), seed)
        finally:
            serve.end()
    print(json.dumps(result))
    wrong = list(faults_of(serve, result))
    print("\n".join(wrong))
    sys.exit(1 if wrong else 0)


if __name__ == "__main__":
    main()
