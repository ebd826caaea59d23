"""A terminal whose screen can be read: the test types keys and waits for what a user would see."""

import fcntl
import os
import pty
import select
import struct
import subprocess
import termios
import time

import pyte

# Seconds. Only a program that hangs takes so long.
PATIENCE = 120


class Terminal:
    """Runs a program until the terminal is closed."""

    def __init__(self, command, directory, environment, columns=100, lines=30):
        self.screen = pyte.Screen(columns, lines)
        self._stream = pyte.ByteStream(self.screen)
        self._keyboard, slave = pty.openpty()
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", lines, columns, 0, 0))
        # A session of its own, so that the program is not stopped by job control.
        self._program = subprocess.Popen(
            command, cwd=directory, env=environment | {"TERM": "xterm-256color"},
            stdin=slave, stdout=slave, stderr=slave, start_new_session=True)
        os.close(slave)

    def type(self, keys):
        os.write(self._keyboard, keys.encode())

    def text(self):
        return "\n".join(line.rstrip() for line in self.screen.display)

    def wait(self, is_reached):
        """Reads what the program writes until is_reached is true of the text of the screen. Returns that text."""
        end = time.monotonic() + PATIENCE
        while not is_reached(self.text()):
            ready, _, _ = select.select([self._keyboard], [], [], max(0, end - time.monotonic()))
            if not ready:
                raise AssertionError(f"this is not what was waited for:\n{self.text()}")
            self._stream.feed(os.read(self._keyboard, 65536))
        return self.text()

    def wait_for_exit(self):
        self._program.wait(PATIENCE)

    def close(self):
        self._program.kill()
        self._program.wait()
        os.close(self._keyboard)
