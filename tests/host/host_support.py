"""Runs the qmml command in a folder of the test's own."""

import os
import pathlib
import subprocess
import tempfile
import unittest

QMML = os.environ["QMML"]
DATA = pathlib.Path(os.environ["QMML_DATA"])


class HostTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_qmml(self, *arguments, stdin=b"", environment=None):
        return subprocess.run([QMML, *map(str, arguments)], input=stdin, capture_output=True, cwd=self.folder,
                              timeout=120, env=environment)

    def output(self, *arguments, stdin=b"", environment=None):
        done = self.run_qmml(*arguments, stdin=stdin, environment=environment)
        self.assertEqual((done.returncode, done.stderr), (0, b""), arguments)
        return done.stdout

    def evaluate(self, formula, csv, *options):
        return self.output("eval", formula, "--data", "-", *options, stdin=csv)

    def failure(self, *arguments, stdin=b""):
        """The message of a call that fails as it should: exit code 2, nothing on standard output."""
        done = self.run_qmml(*arguments, stdin=stdin)
        self.assertEqual((done.returncode, done.stdout), (2, b""), arguments)
        message = done.stderr.decode()
        self.assertTrue(message.startswith("qmml: ") and message.endswith("\n"), message)
        return message
