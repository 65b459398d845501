"""What goes in and out unchanged, and what is refused."""

import os
import subprocess
import unittest

from host_support import QMML, HostTest


class Files(HostTest):
    def test_rows_pass_through_unchanged(self):
        cases = {
            "quotes": (b'k,x\n"a,b",1\n"say ""hi""",2\nit"s,3\n',
                       b'k,x,result\n"a,b",1,2\n"say ""hi""",2,3\nit"s,3,4\n'),
            "line_end_in_quotes": (b'k,x\n"two\nlines",1\nb,2\n', b'k,x,result\n"two\nlines",1,2\nb,2,3\n'),
            "carriage_returns": (b'x,k\r\n1,"a\r\nb"\r\n2,"q"\r\n3,c',
                                 b'x,k,result\r\n1,"a\r\nb",2\r\n2,"q",3\r\n3,c,4\r\n'),
            "byte_order_mark": (b"\xef\xbb\xbfx,k\n1,a\n", b"\xef\xbb\xbfx,k,result\n1,a,2\n"),
            "no_last_line_end": (b"x,k\n1,a", b"x,k,result\n1,a,2\n"),
            "blank_lines_at_the_end": (b"x,k\n1,a\n\n\n", b"x,k,result\n1,a,2\n"),
            "blank_line_of_one_column": (b"x\n1\n\n2\n", b"x,result\n1,2\n,\n2,3\n"),
            "header_only": (b"x,k\n", b"x,k,result\n"),
            "quoted_and_padded_numbers": (b'"x",k\n"1",a\n 2 ,b\n+3,c\n"NA",d\n1e-400,e\n',
                                          b'"x",k,result\n"1",a,2\n 2 ,b,3\n+3,c,4\n"NA",d,\n1e-400,e,1\n'),
            "bytes_that_are_no_text": (b"x,k\n1,\xff\x80\n", b"x,k,result\n1,\xff\x80,2\n"),
        }
        for name, (table, expected) in cases.items():
            with self.subTest(name):
                self.assertEqual(self.evaluate("x+1", table, "--x", "x"), expected)

    def test_output_may_replace_the_input_and_keeps_its_permissions(self):
        path = self.folder / "t.csv"
        path.write_bytes(b"x\n1\n")
        path.chmod(0o640)
        (self.folder / "link.csv").symlink_to("t.csv")
        self.output("eval", "x+1", "--data", "t.csv", "--x", "x", "--output", "link.csv")
        self.assertEqual(path.read_bytes(), b"x,result\n1,2\n")
        self.assertEqual(path.stat().st_mode & 0o777, 0o640)
        self.assertTrue((self.folder / "link.csv").is_symlink())
        self.assertEqual(len(list(self.folder.iterdir())), 2)

    def test_a_device_is_written_to_and_not_replaced(self):
        self.output("eval", "1", "--data", "-", "--output", "/dev/null", stdin=b"x\n1\n")
        self.assertTrue(os.path.exists("/dev/null") and not os.path.isfile("/dev/null"))


class Failures(HostTest):
    def test_one_clear_line_and_no_half_written_file(self):
        many = b"x,k\n" + b"1,a\n" * 100000
        utf16 = "x,k\n1,a\n".encode("utf-16")
        column = ["x", "--x", "x"]
        cases = {
            "no_such_column": (["x", "--x", "nope"], b"x,k\n1,a\n", 'no column "nope"; it has x, k'),
            "column_twice": (["x", "--x", "x"], b"x,x\n1,2\n", "more than one column"),
            "name_taken": (["x", "--x", "x", "--name", "k"], b"x,k\n1,a\n", 'already has a column "k"'),
            "late_word": (column, many + b"abc,b\n", 'line 100002: column "x": abc is not a number'),
            "quote_behind_a_blank": (column, b'x,k\n "1",a\n', '"1" is not a number'),
            "infinity": (column, b"x\ninf\n", "inf is not a number"),
            "hexadecimal": (column, b"x\n0x10\n", "0x10 is not a number"),
            "too_large": (column, b"x\n1e999\n", "1e999 is not a number"),
            "decimal_comma": (column + ["--delimiter", ";"], b"x\n1,5\n", "1,5 is not a number"),
            "decimal_point": (column + ["--separators", ",;"], b"x\n1.5\n", "1.5 is not a number"),
            "short_row": (column, many + b"1\n", "line 100002: 1 fields where the header has 2"),
            "long_row_behind_quoted_lines": (column, b'x,k\n1,"a\nb"\n1,2,3\n', "line 4: 3 fields"),
            "blank_line": (column, b"x,k\n1,a\n\n2,b\n", "line 3: a blank line"),
            "open_quote": (column, many + b'1,"abc\n1,b\n', "line 100002: a quote that opens in this row is never"),
            "text_behind_quote": (column, b'x,k\n1,"a"b\n', "line 2: text behind a closing quote"),
            "empty_file": (column, b"", "no header line"),
            "blank_header": (column, b"\n1\n", "no header line"),
            "utf16": (column, utf16, "UTF-16"),
            "binary": (column, b"x\0\0\1,\2\n", "not a text file"),
            "bad_formula": (["x+", "--x", "x"], b"x\n1\n", "(error 4)"),
            "separators": (["x", "--separators", ",,"], b"x\n1\n", "--separators"),
            "separator_is_an_operator": (["x", "--separators", ".*"], b"x\n1\n", "--separators"),
            "delimiter": (["x", "--delimiter", "."], b"x\n1\n", "--delimiter"),
            "z_without_y": (["x", "--x", "x", "--z", "x"], b"x\n1\n", "--y"),
            "t_and_x": (["x", "--x", "x", "--t", "x"], b"x\n1\n", "--t"),
        }
        for name, (arguments, table, expected) in cases.items():
            with self.subTest(name):
                target = self.folder / "out.csv"
                for old in (None, b"old\n"):
                    if old:
                        target.write_bytes(old)
                    message = self.failure("eval", *arguments, "--data", "-", "--output", "out.csv", stdin=table)
                    self.assertIn(expected, message.splitlines()[0])
                    if "(error" not in message:
                        self.assertEqual(message.count("\n"), 1)
                    self.assertEqual([p.name for p in self.folder.iterdir()], ["out.csv"] if old else [])
                    if old:
                        self.assertEqual(target.read_bytes(), old)
                target.unlink()

    def test_files_that_cannot_be_opened(self):
        (self.folder / "t.csv").write_bytes(b"x\n1\n")
        (self.folder / "folder").mkdir()
        for arguments, expected in [
            (["--data", "none.csv"], "cannot read none.csv: No such file"),
            (["--data", "folder"], "cannot read folder: Is a directory"),
            (["--data", "t.csv", "--output", "folder"], "cannot write folder: it is a directory"),
            (["--data", "t.csv", "--output", "none/o.csv"], "cannot write none/o.csv: No such file"),
            (["--data", "t.csv", "--output", "/dev/full"], "cannot write /dev/full: No space"),
            ([], "--data is required"),
        ]:
            with self.subTest(expected):
                self.assertIn(expected, self.failure("eval", "x", "--x", "x", *arguments))
        for arguments in (["functions"], ["--help"], ["dist", "normal", "--cdf", "0"]):
            with self.subTest(arguments), open("/dev/full", "wb") as full:
                done = subprocess.run([QMML, *arguments], stdout=full, stderr=subprocess.PIPE)
                self.assertEqual(done.returncode, 2)
                self.assertIn(b"No space left", done.stderr)

    def test_the_caret_stands_under_the_place(self):
        cases = [
            # formula, its error, what stands above the caret
            ("x + q", 1, "q"),
            ("V1 = x + q", 1, "q"),
            ("  V1 blah =  x * (2 + qq)", 1, "qq)"),
            ("=x + q*2", 1, "q*2"),
            ("x + 2a", 3, "a"),
            ("été = x + 2a", 3, "a"),
            ("V1 = max(x, 1 + rate)", 1, "rate)"),
            ("q + 1", 4, "q + 1"),
            ("log(x + 1", 4, ""),
            ("Y = x + ", 4, ""),
            ("x +\t q", 1, "q"),
            ("   ", 0, None),
        ]
        for formula, code, rest in cases:
            with self.subTest(formula):
                first, shown, caret = self.failure("eval", formula, "--data", "-", "--x", "x",
                                                   stdin=b"x\n1\n").splitlines()
                self.assertIn(f"(error {code})", first)
                self.assertEqual(shown, "  " + formula.replace("\t", " "))
                self.assertEqual(caret.strip(), "^")
                if rest is not None:
                    self.assertEqual(shown[caret.index("^"):], rest)

    def test_the_librarys_text_is_shown(self):
        self.assertIn("Identifiant inconnu", self.failure("eval", "1 + q", "--check"))

    def test_bad_command_lines(self):
        for arguments in ([], ["nope"], ["eval"], ["eval", "x", "--nope"], ["functions", "extra"]):
            with self.subTest(arguments):
                self.assertEqual(self.failure(*arguments).count("\n"), 1)


if __name__ == "__main__":
    unittest.main()
