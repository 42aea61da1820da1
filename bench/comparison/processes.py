"""Child processes, and what the kernel counts of a process."""

import ctypes
import os
import signal
import subprocess
import time

_libc = ctypes.CDLL(None, use_errno=True)
_PR_SET_PDEATHSIG = 1


def _end_with_parent():
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)


def start(command, environment, log, **streams):
    """A child in a session of its own, so that Ctrl-C reaches it through us alone; it does not
    outlive us either. Its messages go to the file `log`."""
    with open(log, "ab") as messages:
        streams.setdefault("stdin", subprocess.DEVNULL)
        streams.setdefault("stdout", messages)
        return subprocess.Popen(command, env=environment, stderr=messages, start_new_session=True,
                                preexec_fn=_end_with_parent, **streams)


def end(process):
    """Ends a child that may have ended already."""
    for ending in (signal.SIGTERM, signal.SIGKILL):
        if process.poll() is not None:
            return
        process.send_signal(ending)
        try:
            process.wait(timeout=3)
        except subprocess.TimeoutExpired:
            pass


def wait_with_usage(process, timeout):
    """Waits for a child's end: its status and CPU seconds, or nothing when it does not end."""
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        pid, status, usage = os.wait4(process.pid, os.WNOHANG)
        if pid != 0:
            process.returncode = os.waitstatus_to_exitcode(status)
            return process.returncode, usage.ru_utime + usage.ru_stime
        time.sleep(0.02)
    return None


def cpu_seconds(pid):
    """What all threads of a process have used, those that have ended included."""
    clock = ctypes.c_int()
    error = _libc.clock_getcpuclockid(pid, ctypes.byref(clock))
    if error != 0:
        raise ProcessLookupError(error, os.strerror(error))
    return time.clock_gettime(clock.value)


def wake_ups(pid):
    """How often the living threads of a process have gone to sleep, and so were woken."""
    return sum(wake_ups_by_thread(pid).values())


def wake_ups_by_thread(pid):
    counts = {}
    for thread in os.listdir(f"/proc/{pid}/task"):
        try:
            with open(f"/proc/{pid}/task/{thread}/status") as status:
                counts[thread] = int(_field(status, "voluntary_ctxt_switches:")[0])
        except FileNotFoundError:  # the thread has just ended
            pass
    return counts


def private_dirty_bytes(pid):
    with open(f"/proc/{pid}/smaps_rollup") as memory:
        return int(_field(memory, "Private_Dirty:")[0]) * 1024


def _field(lines, name):
    for line in lines:
        words = line.split()
        if words[0] == name:
            return words[1:]
    raise ValueError(f"the kernel does not tell {name}")
