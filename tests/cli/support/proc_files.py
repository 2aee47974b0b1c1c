# SPDX-License-Identifier: GPL-2.0-or-later
"""The kernel's proc files as a test wants them: files of ours, bound over them inside the box."""
import contextlib
import threading

IDLE_FIELD = 3  # behind user, nice and system


@contextlib.contextmanager
def bound(olt, path, content, mode=0o644):
    """While it lasts, the daemon finds this content at the path.  Gives the file."""
    file = olt.state / "log" / path.strip("/").replace("/", "-")
    file.write_bytes(content.encode() if isinstance(content, str) else content)
    file.chmod(mode)
    olt.exec("mount", "--bind", f"/var/log/{file.name}", path, check=True)
    try:
        yield file
    finally:
        olt.exec("umount", "--lazy", path, check=True)  # the daemon may be reading it


def stat_line(total, idle):
    """First line of /proc/stat with this sum of counters, always of the same length."""
    return f"cpu  {total - idle:015d} 0 0 {idle:015d} 0 0 0 0 0 0\n"


@contextlib.contextmanager
def busy(olt, total, idle):
    """While it lasts, of every `total` ticks that pass `idle` are idle, whatever two moments are compared."""
    with bound(olt, "/proc/stat", stat_line(total, idle)) as file:
        done = threading.Event()

        def tick():
            count = 1
            with open(file, "r+b", buffering=0) as counters:
                while not done.wait(0.002):
                    count += 1
                    counters.seek(0)
                    counters.write(stat_line(total * count, idle * count).encode())

        clock = threading.Thread(target=tick)
        clock.start()
        try:
            yield
        finally:
            done.set()
            clock.join()


def meminfo(total, free, *more):
    return "".join(f"{line}\n" for line in (f"MemTotal:       {total} kB", f"MemFree:        {free} kB", *more))
