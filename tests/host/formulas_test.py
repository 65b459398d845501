"""Formulas over columns, and the data sets that come with the command."""

import csv
import os
import statistics
import unittest

from host_support import DATA, HostTest


class Formulas(HostTest):
    def test_every_row_gets_its_result_and_missing_stays_missing(self):
        rows = list(csv.DictReader((DATA / "airquality.csv").read_text().splitlines()))
        self.output("eval", "V1 = x/y - (z + 1)", "--data", DATA / "airquality.csv", "--x", "Ozone", "--y", "Wind",
                    "--z", "Solar.R", "-o", "out.csv")
        results = list(csv.DictReader((self.folder / "out.csv").read_text().splitlines()))
        self.assertEqual(len(results), len(rows))
        for row, result in zip(rows, results):
            if "NA" not in (row["Ozone"], row["Solar.R"]):
                expected = float(row["Ozone"]) / float(row["Wind"]) - (float(row["Solar.R"]) + 1)
                self.assertEqual(float(result["V1"]), expected)
            else:
                self.assertEqual(result["V1"], "")
            self.assertEqual({name: result[name] for name in row}, row)

    def test_variables_names_and_numbers(self):
        table = b"a,b,c\n1,20,300\n,NA,-4e2\n"
        cases = [
            # formula, options, header of the new column, results
            ("x+y+z", ["--x", "a", "--y", "b", "--z", "c"], "result", ["321", ""]),
            ("V1=2*T", ["--t", "c"], "V1", ["600", "-800"]),
            ("= x", ["--x", "c", "--name", "kept, as is"], '"kept, as is"', ["300", "-400"]),
            ("-x^2", ["--x", "b"], "result", ["-400", ""]),
            ("--(x+1)", ["--x", "b"], "result", ["21", ""]),
            ("3", [], "result", ["3", "3"]),
            ("x", ["--x", "b", "--na", "NA"], "result", ["20", "NA"]),
            ("x = x", ["--x", "b"], "result", ["1", "1"]),
            ("1/(x-1)", ["--x", "a", "--na", "."], "result", [".", "."]),
            ("x/3", ["--x", "a"], "result", ["0.3333333333333333", ""]),
            ("x*1000", ["--x", "c"], "result", ["300000", "-400000"]),
            ("10^(x/10)", ["--x", "c"], "result", ["1e+30", "1e-40"]),
        ]
        for formula, options, name, results in cases:
            with self.subTest(formula):
                lines = self.evaluate(formula, table, *options).decode().splitlines()
                self.assertEqual(lines, ["a,b,c," + name, "1,20,300," + results[0], ",NA,-4e2," + results[1]])

    def test_separators_come_from_the_option_and_never_from_the_locale(self):
        german = {**os.environ, "LC_ALL": "de_DE.UTF-8", "LC_NUMERIC": "de_DE.UTF-8"}
        self.assertEqual(self.output("eval", "max(x,1.5)", "--data", "-", "--x", "a", stdin=b"a\n0.5\n2.25\n",
                                     environment=german), b"a,result\n0.5,1.5\n2.25,2.25\n")
        comma = ["--x", "a", "--separators", ",;"]
        self.assertEqual(self.evaluate("max(x;1.5)", b"a;b\n0,5;1.0\n2,25;k\n", *comma),
                         b"a;b;result\n0,5;1.0;1,5\n2,25;k;2,25\n")
        self.assertEqual(self.evaluate("x+0.5", b"b\ta\n1\t0,25\n", *comma, "--delimiter", "tab"),
                         b"b\ta\tresult\n1\t0,25\t0,75\n")

    def test_check_is_stricter_than_an_evaluation(self):
        self.assertEqual(self.evaluate("1 2", b"a\n7\n"), b"a,result\n7,2\n")
        self.assertIn("error 4", self.failure("eval", "1 2", "--check"))
        self.assertIn(b"well formed", self.output("eval", "V = x + y*z", "--check"))


class DataSets(HostTest):
    def test_means_and_counts_are_the_published_ones(self):
        for file, column, count, mean in [
            ("airquality.csv", "Ozone", 116, "42.12931"),
            ("airquality.csv", "Solar.R", 146, "185.9315"),
            ("airquality.csv", "Wind", 153, "9.957516"),
            ("airquality.csv", "Temp", 153, "77.88235"),
            ("cars.csv", "speed", 50, "15.4"),
            ("cars.csv", "dist", 50, "42.98"),
        ]:
            with self.subTest(column):
                rows = csv.DictReader((DATA / file).read_text().splitlines())
                values = [float(row[column]) for row in rows if row[column] != "NA"]
                self.assertEqual((len(values), f"{statistics.mean(values):.7g}"), (count, mean))


if __name__ == "__main__":
    unittest.main()
