"""What the measuring scripts share: a place to work in, files of random bytes, timed runs,
and a web server for the chunks."""

import contextlib
import json
import os
import random
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
from pathlib import Path

# Put before what is measured, "chrt -r 1" say.
PREFIX = os.environ.get("BENCH_PREFIX", "").split()
PROJECT = Path(__file__).resolve().parent.parent
MIB = 1 << 20


def fail(text):
    sys.exit(f"{Path(sys.argv[0]).name}: {text}")


def program(name):
    """A program of the build (BUILD_DIR, else build/) or of the system."""
    own = PROJECT / os.environ.get("BUILD_DIR", "build") / "bin" / name
    found = str(own) if own.exists() else shutil.which(name, path=os.environ["PATH"] + ":/usr/sbin")
    return found or fail(f"{name} is missing")


@contextlib.contextmanager
def scratch(mib):
    """A folder below TMPDIR that others may read, with room for that much; gone at the end."""
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(143))
    folder = Path(tempfile.mkdtemp(prefix="quorvelle-bench-"))
    try:
        folder.chmod(0o755)
        if shutil.disk_usage(folder).free < mib * MIB:
            fail(f"needs {mib} MiB in {folder.parent}")
        yield folder
    finally:
        shutil.rmtree(folder, ignore_errors=True)


def write_random(path, size, seed):
    """Bytes that depend on the seed alone."""
    source = random.Random(seed)
    path.parent.mkdir(parents=True, exist_ok=True)
    with open(path, "wb") as file:
        for done in range(0, size, MIB):
            file.write(source.randbytes(min(MIB, size - done)))


# Runs a program and tells what it used. A process of its own, and a small one: the peak of a
# program counts from what the process that starts it held.
STARTER = """
import json, os, subprocess, sys, time
start = time.monotonic()
process = subprocess.Popen(sys.argv[2:], close_fds=True)
_, status, usage = os.wait4(process.pid, 0)
told = [time.monotonic() - start, usage.ru_utime + usage.ru_stime, usage.ru_maxrss, status]
os.write(int(sys.argv[1]), json.dumps(told).encode())
"""


class Run:
    """A finished program: its output, the seconds it took, by the clock and of the
    processor, and the most memory that it or one of its children held, in MiB. It has to end
    with `code`."""

    def __init__(self, *words, code=0, **settings):
        reader, writer = os.pipe()
        command = [*PREFIX, *(str(word) for word in words)]
        with tempfile.TemporaryFile() as output:
            subprocess.run([sys.executable, "-I", "-S", "-c", STARTER, str(writer), *command],
                           stdout=output, stderr=subprocess.STDOUT, pass_fds=[writer], **settings)
            os.close(writer)
            with open(reader) as told:
                self.wall, self.processor, kilobytes, status = json.loads(told.read())
            output.seek(0)
            self.output = output.read().decode()
        self.peak = kilobytes / 1024
        ended = os.waitstatus_to_exitcode(status)
        if ended != code:
            fail(f"{' '.join(map(str, words))}: exit code {ended}\n{self.output}")


class WebServer:
    """nginx on a free loopback port, with the files below `root`; it runs without root's
    rights and knows how many body bytes it sent."""

    def __init__(self, folder, root):
        folder.mkdir()
        self.log = folder / "access.log"
        with socket.socket() as probe:
            probe.bind(("127.0.0.1", 0))
            port = probe.getsockname()[1]
        self.url = f"http://127.0.0.1:{port}"
        temporary = "\n".join(f"{kind}_temp_path {folder}/{kind};" for kind in
                              ("client_body", "proxy", "fastcgi", "uwsgi", "scgi"))
        (folder / "nginx.conf").write_text(f"""
daemon off;
worker_processes 1;
pid {folder}/nginx.pid;
error_log {folder}/error.log;
events {{}}
http {{
    log_format sent '$body_bytes_sent $status $uri';
    access_log {self.log} sent;
    {temporary}
    sendfile on;
    keepalive_requests 1000000;
    server {{ listen 127.0.0.1:{port}; root {root}; }}
}}
""")
        settings = {}
        if os.geteuid() == 0:
            shutil.chown(folder, "nobody", "nogroup")
            settings = {"user": "nobody", "group": "nogroup", "extra_groups": []}
        self.process = subprocess.Popen(
            [program("nginx"), "-p", folder, "-c", folder / "nginx.conf",
             "-e", folder / "error.log"], **settings)
        self._wait(port)

    def _wait(self, port):
        while self.process.poll() is None:
            with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port)):
                return
            time.sleep(0.05)
        fail("nginx did not start")

    def sent(self):
        """Body bytes and answers since the last call."""
        lines = [line.split() for line in self.log.read_text().splitlines()]
        with open(self.log, "r+") as log:
            log.truncate()
        return sum(int(line[0]) for line in lines), len(lines)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()


def verdict(text, value, limit, at_least=False):
    """Prints a figure beside its goal; whether it is met."""
    met = value >= limit if at_least else value <= limit
    print(f"{'PASS' if met else 'FAIL'}  {text}: {value:.3g}, goal "
          f"{'at least' if at_least else 'at most'} {limit:.3g}")
    return met
