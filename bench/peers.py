"""The programs that a download is held against: suck and slrnpull of Debian, unpacked from their packages (whose
installation would configure a host for them), and the bare client. Each fetches `articles` articles of a group into
an empty folder and says how many milliseconds it took, or fails when not all are there."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import time

LIMIT = 300  # seconds that one run may take


def install(cache):
    """Fetches and unpacks the two packages into the folder `cache`, once."""
    cache.mkdir(parents=True, exist_ok=True)
    for name in ("suck", "slrnpull"):
        if not (cache / "usr/bin" / name).exists():
            subprocess.run(["apt-get", "-q", "download", name], cwd=cache, check=True, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
            subprocess.run(["dpkg", "-x", next(cache.glob(name + "_*.deb")), cache], check=True)
    return cache / "usr/bin"


def run(command):
    """Returns the milliseconds that a command took and what it printed."""
    start = time.monotonic()
    done = subprocess.run(command, capture_output=True, timeout=LIMIT, stdin=subprocess.DEVNULL)
    took = 1000 * (time.monotonic() - start)
    if done.returncode:
        raise RuntimeError(f"{command}: status {done.returncode}\n{done.stdout!r}\n{done.stderr!r}")
    return took, done.stdout.decode("ascii", "replace")


class Folder:
    """An empty folder, removed at the end."""

    def __enter__(self):
        self.path = pathlib.Path(tempfile.mkdtemp(prefix="pelnor-bench-"))
        return self.path

    def __exit__(self, *_):
        shutil.rmtree(self.path, ignore_errors=True)


def expect_files(folder, articles):
    found = sum(len(files) for _, _, files in os.walk(folder))
    if found < articles:
        raise RuntimeError(f"{found} of {articles} articles in {folder}")


def suck(programs, port, group, articles):
    with Folder() as folder:
        (folder / "sucknewsrc").write_text(f"{group} 0\n")
        (folder / "articles").mkdir()
        took, _ = run([programs / "suck", f"127.0.0.1:{port}", "-dd", folder, "-dt", folder, "-dm",
                       folder / "articles", "-m", "-q", "-H", "-K"])
        expect_files(folder / "articles", articles)
        return took


def slrnpull(programs, port, group, articles):
    with Folder() as folder:
        for name in ("data", "news", "out.going"):
            (folder / name).mkdir()
        (folder / "slrnpull.conf").write_text(f"{group} {articles} 0 0\n")
        took, _ = run([programs / "slrnpull", "-d", folder, "-h", f"127.0.0.1:{port}", "--no-post", "--logfile",
                       folder / "log"])
        expect_files(folder / "news", articles)
        return took
