"""Streams: memory, endless rows, broken pipes, interruptions, progress."""

import os
import pty
import signal
import subprocess
import threading
import time
import unittest

from host_support import QMML, HostTest


class LargeFiles(HostTest):
    ROW = b"12.5,some text that only passes through,7\n"

    def peak_memory(self, rows):
        with (self.folder / "big.csv").open("wb") as big: # in pieces: a child's peak begins with its parent's
            big.write(b"a,b,c\n")
            for _ in range(rows // 1000):
                big.write(self.ROW * 1000)
        process = subprocess.Popen([QMML, "eval", "x*2 + sin(y)", "--data", "big.csv", "--x", "a", "--y", "c", "-o",
                                    "out.csv"], cwd=self.folder)
        _, status, usage = os.wait4(process.pid, 0)
        process.returncode = os.waitstatus_to_exitcode(status)
        self.assertEqual(process.returncode, 0)
        lines = 0
        with (self.folder / "out.csv").open("rb") as out:
            for line in out:
                lines += 1
        self.assertEqual(lines, rows + 1)
        self.assertTrue(line.startswith(self.ROW.strip() + b",25.6569865987"), line) # 25 + sin(7)
        return usage.ru_maxrss

    def test_memory_does_not_grow_with_the_file(self):
        small, large = self.peak_memory(20_000), self.peak_memory(1_000_000)
        self.assertLess(large - small, 8 * 1024) # kilobytes; the file grew by 41 megabytes

    def test_an_endless_row_is_refused(self):
        for start in (b"x,k\n1,", b'x,k\n1,"', b""):
            with self.subTest(start):
                message = self.failure("eval", "x", "--x", "x", "--data", "-", "-o", "o.csv",
                                       stdin=start + b"a" * (20 << 20))
                self.assertIn("longer than 16 MiB", message)
        self.assertEqual(list(self.folder.iterdir()), [])

    def feed(self, process, until):
        """Rows without end, until the process has gone or the event is set."""
        try:
            process.stdin.write(b"x\n")
            while not until.is_set():
                process.stdin.write(b"1.25\n" * 5000)
                process.stdin.flush()
                time.sleep(0.001)
        except BrokenPipeError:
            pass
        try:
            process.stdin.close()
        except BrokenPipeError:
            pass

    def start(self, *options, **streams):
        process = subprocess.Popen([QMML, "eval", "x", "--x", "x", "--data", "-", *options], cwd=self.folder,
                                   stdin=subprocess.PIPE, **streams)
        stop = threading.Event()
        feeder = threading.Thread(target=self.feed, args=(process, stop))
        feeder.start()
        self.addCleanup(feeder.join)
        self.addCleanup(stop.set)
        return process, stop

    def test_a_reader_that_leaves_early_is_no_failure(self):
        process, _ = self.start(stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.assertEqual(process.stdout.readline(), b"x,result\n")
        process.stdout.close()
        self.assertEqual((process.wait(60), process.stderr.read()), (0, b""))
        process.stderr.close()

    def test_an_interruption_leaves_nothing_behind(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(number):
                process, _ = self.start("-o", "out.csv")
                deadline = time.monotonic() + 60
                while not list(self.folder.iterdir()) and time.monotonic() < deadline:
                    time.sleep(0.01)
                self.assertEqual(len(list(self.folder.iterdir())), 1) # the unfinished file
                process.send_signal(number)
                self.assertEqual(process.wait(60), -number)
                self.assertEqual(list(self.folder.iterdir()), [])

    def test_progress_shows_on_a_terminal_only(self):
        terminal, side = pty.openpty()
        process, stop = self.start("-o", "out.csv", stderr=side)
        os.close(side)
        shown = b""
        while b"rows" not in shown:
            shown += os.read(terminal, 1000)
        stop.set()
        self.assertEqual(process.wait(60), 0)
        shown += os.read(terminal, 1000)
        os.close(terminal)
        self.assertRegex(shown.decode(), r"^\r\d+ rows\x1b\[K[^$]*written to out.csv, 0 results missing\s*$")

        process, stop = self.start("-o", "out.csv", stderr=subprocess.PIPE)
        time.sleep(0.8) # longer than a terminal would wait for its first progress
        stop.set()
        self.assertEqual((process.wait(60), process.stderr.read()), (0, b""))
        process.stderr.close()


if __name__ == "__main__":
    unittest.main()
