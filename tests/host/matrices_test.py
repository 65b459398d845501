"""The matrix command: files in and out, CSV, every operation once, failures."""

import unittest

from host_support import DATA, HostTest


class MatrixTest(HostTest):
    def file(self, name, text):
        (self.folder / name).write_text(text)
        return name

    def numbers(self, *arguments):
        lines = self.output("matrix", *arguments).decode().splitlines()
        return [[float(cell) for cell in line.split()] for line in lines]

    def test_results(self):
        a = self.file("a.txt", "4\t2\r\n2\t3\r\n")
        b = self.file("b.txt", "2\n3\n")
        inverse = [[0.375, -0.25], [-0.25, 0.5]]
        cases = {
            ("add", a, a): [[8, 4], [4, 6]],
            ("subtract", a, a): [[0, 0], [0, 0]],
            ("multiply", a, b): [[14], [13]],
            ("kronecker", b, b): [[4], [6], [6], [9]],
            ("transpose", b): [[2, 3]],
            ("inverse", a): inverse,
            ("pinv", a): inverse,
            ("solve", a, b): [[0], [1]],
            ("det", a): [[8]],
            ("rank", a): [[2]],
            ("trace", a): [[7]],
            ("sumsq", b): [[13]],
            ("means", a): [[3], [2.5]],
            ("crossproducts", a): [[2, -1], [-1, 0.5]],
            ("correlations", a): [[1, -1], [-1, 1]],
            ("correlations", a, "--about-origin"): [[1, 14 / 260**0.5], [14 / 260**0.5, 1]],
            ("cholesky", a): [[2, 1], [0, 2**0.5]],
            ("sweep", a): [[-0.375, 0.25], [0.25, -0.5]],
            ("sweep", a, "--last", "1"): [[-0.25, 0.5], [0.5, 2]],
            ("eigen", a, "--part", "values"): [[(7 + 17**0.5) / 2], [(7 - 17**0.5) / 2]],
            ("svd", a, "--part", "values"): [[(7 + 17**0.5) / 2], [(7 - 17**0.5) / 2]],
            ("show", a): [[4, 2], [2, 3]],
        }
        for arguments, expected in cases.items():
            with self.subTest(arguments):
                result = self.numbers(*arguments, "--digits", "15")
                self.assertEqual(len(result), len(expected))
                for row, wanted in zip(result, expected):
                    self.assertEqual(len(row), len(wanted))
                    for value, number in zip(row, wanted):
                        self.assertAlmostEqual(value, number, places=12)
        q = self.numbers("orthonormalise", a, "--digits", "15")
        self.assertAlmostEqual(q[0][0] * q[0][1] + q[1][0] * q[1][1], 0, places=14)

    def test_the_table_is_aligned_and_labelled(self):
        table = self.output("matrix", "correlations", DATA / "airquality.csv", "--columns", "Ozone,Wind", "--complete")
        self.assertEqual(table.decode().split("\n")[0], "           Ozone       Wind")
        self.assertIn("Wind   -0.601547          1", table.decode())
        names = self.output("matrix", "means", "-", stdin="été,b\n1,20\n".encode())
        self.assertEqual(names.decode(), "été   1\nb    20\n")

    def test_files_are_written_and_replaced_whole(self):
        a = self.file("a.txt", "1\t2\n3\t.\n")
        old = self.file("out.txt", "x" * 1000)
        self.output("matrix", "transpose", a, "--output", old)
        self.assertEqual((self.folder / old).read_bytes(), b"1\t3\r\n2\t.\r\n")
        self.output("matrix", "show", a, "--output", "out.csv")
        self.assertEqual((self.folder / "out.csv").read_text(), "1,2\n3,\n")
        self.assertEqual(self.output("matrix", "transpose", "-", stdin=b"a,b\n1,2\n3,4\n"), b"1  3\n2  4\n")
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["a.txt", "out.csv", "out.txt"])

    def test_failures(self):
        a = self.file("a.txt", "1\t2\r\n2\t4\r\n")
        b = self.file("b.txt", "1\t2\t3\r\n")
        bad = self.file("bad.csv", "a,b\n1,2\n3,four\n")
        cases = {
            ("inverse", a): "inverse: the matrix is singular",
            ("inverse", b): "not square",
            ("multiply", a, b): "do not conform",
            ("multiply", a): "takes two files",
            ("frobnicate", a): "no operation",
            ("show", "none.txt"): "cannot be opened",
            ("show", bad): "is not a number",
            ("show", bad, "--columns", "c"): "no column",
            ("eigen", a, "--output", "o.txt"): "choose with --part",
            ("eigen", a, "--part", "w"): "there are values, vectors, positive",
            ("correlations", self.file("c.txt", "1\t1\n1\t2\n")): "no variance",
        }
        for arguments, message in cases.items():
            with self.subTest(arguments):
                self.assertIn(message, self.failure("matrix", *arguments))


if __name__ == "__main__":
    unittest.main()
