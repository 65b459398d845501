"""What the command says of itself and of the formula language."""

import unittest

from host_support import HostTest


class Language(HostTest):
    def functions(self):
        text = self.output("functions").decode()
        for line in text.splitlines():
            call = line.split("  ")[1] if line.startswith("  ") else ""
            if call.endswith(")") and "(" in call:
                name, arguments = call[:-1].split("(")
                yield name, len(arguments.split(", "))

    def test_every_listed_function_takes_what_is_listed(self):
        functions = list(self.functions())
        self.assertEqual(len(functions), 73) # 72 and ifgraph
        for name, count in functions:
            with self.subTest(name):
                call = lambda n: f"{name}({','.join(['0.5'] * n)})"
                self.output("eval", call(count), "--check")
                self.failure("eval", call(count + (2 if name == "ifgraph" else 1)), "--check")
                if count > 1:
                    self.failure("eval", call(count - 1), "--check")

    def test_listed_priorities_hold(self):
        for formula, expected in [("2^3^2", 512), ("-2^2", -4), ("2*3^2", 18), ("1+2*3", 7), ("3 > 1+1", 1),
                                  ("1 > 2 = 0", 1), ("1 or 0 and 0", 1), ("not 1 + 1", 1)]:
            with self.subTest(formula):
                self.assertEqual(self.evaluate(formula, b"a\n0\n"), f"a,result\n0,{expected}\n".encode())

    def test_help_and_version(self):
        for arguments in (["--help"], ["eval", "--help"], ["dist", "--help"], ["functions", "--help"]):
            self.assertIn(b"Usage: qmml", self.output(*arguments))
        self.assertRegex(self.output("--version").decode(), r"^qmml \d+\.\d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
