"""Starting programs that cannot outlive the test, and ending exactly those."""

import ctypes
import os
import signal
import subprocess

_PR_SET_PDEATHSIG = 1
_libc = ctypes.CDLL(None, use_errno=True)


def _prepare(before):
    if before is not None:
        before()
    # Last: a change of user takes this back.
    _libc.prctl(_PR_SET_PDEATHSIG, signal.SIGKILL)


class Processes:
    """The programs started for one desktop, ended in reverse order."""

    def __init__(self, log_folder):
        self._log_folder = log_folder
        self._running = []

    def start(self, arguments, environment, *, name=None, stdin=subprocess.DEVNULL,
              stdout=None, pass_fds=(), umask=-1, before=None):
        """Starts a program in the foreground; its output goes to a log named after it.

        The program dies with this process, even if this one is killed. `before` is called in it
        before it becomes the program. The returned Popen has two more attributes, `log_path`
        (standard error) and `output_path` (standard output).
        """
        name = name or os.path.basename(arguments[0])
        stem = os.path.join(self._log_folder, f"{len(os.listdir(self._log_folder)):03}-{name}")
        with open(stem + ".err", "wb") as log, open(stem + ".out", "wb") as output:
            process = subprocess.Popen(
                arguments, env=environment, stdin=stdin,
                stdout=output if stdout is None else stdout, stderr=log,
                pass_fds=pass_fds, umask=umask, preexec_fn=lambda: _prepare(before))
        process.log_path = stem + ".err"
        process.output_path = stem + ".out"
        self._running.append(process)
        return process

    def end(self, process):
        """Kills one program, stopped or not, and waits for its end."""
        if process.poll() is None:
            process.kill()
            process.wait()
        for stream in (process.stdin, process.stdout):
            if stream is not None:
                try:
                    stream.close()
                except BrokenPipeError:
                    pass  # what was still to be written concerned a program that is gone
        if process in self._running:
            self._running.remove(process)

    @property
    def running(self):
        """The programs that were not ended, in the order of their start."""
        return list(self._running)

    def end_all_but(self, processes):
        for process in reversed(self.running):
            if process not in processes:
                self.end(process)

    def end_all(self):
        self.end_all_but(())


def read_log(process):
    with open(process.log_path, errors="replace") as log:
        return log.read()
