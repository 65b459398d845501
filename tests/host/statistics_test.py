"""Statistics commands: values against formulas written out here, pictures as well-formed XML, failures."""

import math
import random
import statistics
import unittest
import xml.etree.ElementTree

from host_support import DATA, HostTest

SVG = "{http://www.w3.org/2000/svg}"


def column(name, file="airquality.csv"):
    rows = [line.split(",") for line in (DATA / file).read_text().split()]
    index = rows[0].index(name)
    return [None if row[index] == "NA" else float(row[index]) for row in rows[1:]]


def by_month(name):
    groups = {}
    for value, month in zip(column(name), column("Month")):
        if value is not None:
            groups.setdefault(month, []).append(value)
    return list(groups.values())


def variance_ratio(groups):
    values = [value for group in groups for value in group]
    mean = statistics.fmean(values)
    between = sum(len(group) * (statistics.fmean(group) - mean) ** 2 for group in groups)
    within = sum((value - statistics.fmean(group)) ** 2 for group in groups for value in group)
    return between / (len(groups) - 1) / (within / (len(values) - len(groups)))


def mid_ranks(values):
    return [sum(v < value for v in values) + (sum(v == value for v in values) + 1) / 2 for value in values]


def normal_tail(z):
    return math.erfc(z / math.sqrt(2)) / 2


class StatisticsTest(HostTest):
    def file(self, name, text):
        (self.folder / name).write_text(text)
        return name

    def figures(self, *arguments):
        """The lines "name  value" of a result."""
        lines = self.output(*arguments).decode().split("\n")
        return dict(line.split("  ", 1) for line in lines if "  " in line)

    def number(self, name, *arguments):
        return float(self.figures(*arguments)[name].strip())

    def picture(self, *arguments):
        self.output(*arguments, "--svg", "p.svg")
        root = xml.etree.ElementTree.parse(self.folder / "p.svg").getroot()
        self.assertEqual(root.tag, SVG + "svg")
        return root

    def test_describe(self):
        lines = self.output("describe", DATA / "airquality.csv", "--csv").decode().split("\n")
        names = lines[0].split(",")
        for line in lines[1:-1]:
            got = dict(zip(names, line.split(",")))
            values = sorted(v for v in column(got["column"]) if v is not None)
            n = len(values)
            at = lambda q: values[math.ceil(n * q) - 1]  # the default definition of a percentile
            expected = {"n": n, "missing": 153 - n, "mean": statistics.fmean(values), "sd": statistics.stdev(values),
                        "se": statistics.stdev(values) / n ** 0.5, "min": values[0], "q1": at(0.25), "median": at(0.5),
                        "q3": at(0.75), "max": values[-1], "mode": min(statistics.multimode(values)),
                        "sum": sum(values)}
            for name, value in expected.items():
                with self.subTest(column=got["column"], statistic=name):
                    self.assertAlmostEqual(float(got[name]), value, delta=1e-12 * abs(value))

    def test_describe_leaves_gaps_and_texts(self):
        self.file("a.csv", 'n,t,"c<>&"\n1,x,\n2,y,NA\n4,z,\n')
        table = self.output("describe", "a.csv").decode().split("\n")
        self.assertEqual(table[2].split(), ["c<>&", "0", "3"] + ["-"] * 10)
        self.assertEqual(table[-2], "Text columns: t")
        quartiles = self.output("describe", "a.csv", "--columns", "n", "--percentile-method", "6", "--csv").decode()
        self.assertEqual(quartiles.split("\n")[1].split(",")[7:10], ["1.5", "2", "3"])

    def test_groups(self):
        temperatures = by_month("Temp")
        arguments = DATA / "airquality.csv", "--value", "Temp", "--by", "Month"
        self.assertAlmostEqual(self.number("F", "test", "anova", *arguments), variance_ratio(temperatures), delta=1e-4)
        deviations = [[abs(v - statistics.fmean(group)) for v in group] for group in temperatures]
        self.assertAlmostEqual(self.number("F", "test", "levene", *arguments), variance_ratio(deviations), delta=1e-5)

        values = [value for group in temperatures for value in group]
        ranks, n, start, h = mid_ranks(values), len(values), 0, 0
        for group in temperatures:
            h += sum(ranks[start:start + len(group)]) ** 2 / len(group)
            start += len(group)
        ties = sum(values.count(value) ** 2 - 1 for value in values)  # t values of a tie add up to t^3 - t
        h = (12 / (n * (n + 1)) * h - 3 * (n + 1)) / (1 - ties / (n ** 3 - n))
        self.assertAlmostEqual(self.number("H", "test", "kruskal", *arguments), h, delta=1e-4)
        self.assertIn(b"The means of the groups differ (p < 0.0001)", self.output("test", "anova", *arguments))

    def test_pairs(self):
        x, y = column("speed", "cars.csv"), column("dist", "cars.csv")
        slope, constant = statistics.linear_regression(x, y)
        found = self.figures("test", "correlation", DATA / "cars.csv", "--x", "speed", "--y", "dist")
        self.assertAlmostEqual(float(found["r"]), statistics.correlation(x, y), delta=1e-6)
        self.assertEqual(found["line"].strip(), f"dist = {constant:.6g} + {slope:.6g} speed")

        x2 = [(7 * i) % 11 for i in range(50)]
        self.file("m.csv", "a,b,c\n" + "".join(f"{v[0]},{v[1]},{v[2]}\n" for v in zip(x, x2, y)))
        r1, r2, r12 = (statistics.correlation(*pair) for pair in ((x, y), (x2, y), (x, x2)))
        big_r = ((r1 * r1 + r2 * r2 - 2 * r1 * r2 * r12) / (1 - r12 * r12)) ** 0.5
        found = self.figures("test", "multiple", "m.csv", "--x", "a,b", "--y", "c")
        self.assertAlmostEqual(float(found["R"]), big_r, delta=1e-6)
        self.assertAlmostEqual(float(found["F"]), big_r ** 2 / 2 / ((1 - big_r ** 2) / 47), delta=1e-3)
        line = self.figures("test", "correlation", self.file("l.csv", "a,b\n1,2\n2,4\n3,6\n"), "--x", "a", "--y", "b")
        self.assertEqual((line["r"].strip(), line["p"].strip()), ("1", "-"))

    def test_classifications(self):
        self.file("t.csv", "a,b,n\nx,u,10\nx,v,20\ny,u,30\ny,v,25\n")
        expected = 85 * (10 * 25 - 20 * 30) ** 2 / (30 * 55 * 40 * 45)
        weighted = self.number("chi-square", "test", "chi2", "t.csv", "--x", "a", "--y", "b", "--count", "n")
        self.assertAlmostEqual(weighted, expected, delta=1e-5)
        rows = "".join(f"{a},{b}\n" * n for a, b, n in (("x", "u", 10), ("x", "v", 20), ("y", "u", 30), ("y", "v", 25)))
        self.file("u.csv", "a,b\n" + rows)
        self.assertAlmostEqual(self.number("chi-square", "test", "chi2", "u.csv", "--x", "a", "--y", "b"), expected,
                               delta=1e-5)

    def test_distributions_of_a_column(self):
        wind = sorted(column("Wind"))
        n, mean, sd = len(wind), statistics.fmean(wind), statistics.stdev(wind)

        def distance(lower):
            return max(max(abs((i + 1) / n - lower(v)), abs(i / n - lower(v))) for i, v in enumerate(wind))

        arguments = DATA / "airquality.csv", "--column", "Wind"
        self.assertAlmostEqual(self.number("D", "test", "lilliefors", *arguments),
                               distance(lambda v: 1 - normal_tail((v - mean) / sd)), delta=1e-7)
        self.assertAlmostEqual(self.number("D", "test", "ks", *arguments, "--family", "expon", "--parameters", "0.1"),
                               distance(lambda v: 1 - math.exp(-0.1 * v)), delta=1e-7)
        # W of 148 .. 236 as published with the test (Shapiro and Wilk 1965, weights of men).
        self.file("w.csv", "w\n" + "\n".join(map(str, [148, 154, 158, 160, 161, 162, 166, 170, 182, 195, 236])) + "\n")
        self.assertAlmostEqual(self.number("W", "test", "shapiro", "w.csv", "--column", "w"), 0.79, delta=0.005)

    def test_fits(self):
        wind = column("Wind")
        n, mean = len(wind), statistics.fmean(wind)
        fit = lambda family: self.figures("fit", family, DATA / "airquality.csv", "--column", "Wind")
        self.assertAlmostEqual(float(fit("normal")["sigma"]), statistics.pstdev(wind), delta=1e-7)
        self.assertAlmostEqual(float(fit("expon")["lambda"]), 1 / mean, delta=1e-9)
        found = fit("weibull")  # where the likelihood's derivatives vanish
        scale, shape = float(found["scale"]), float(found["shape"])
        powers = [v ** shape for v in wind]
        self.assertAlmostEqual(scale ** shape / statistics.fmean(powers), 1, delta=1e-7)
        slope = sum(p * math.log(v) for p, v in zip(powers, wind)) / sum(powers) - 1 / shape
        self.assertAlmostEqual(slope, sum(map(math.log, wind)) / n, delta=1e-8)

    def test_known_means_and_proportions(self):
        z = (10.3 + 0.5) / (2 / 50 ** 0.5)
        found = self.figures("test", "z", "--mean", "10.3", "--sd", "2", "--n", "50", "--mu0", "-.5")
        self.assertAlmostEqual(float(found["z"]), z, delta=1e-4)
        pooled = 98 / 190
        found = self.figures("test", "binomial", "--successes", "58", "40", "--n", "100", "90", "--pooled")
        z = (58 / 100 - 40 / 90) / (pooled * (1 - pooled) * (1 / 100 + 1 / 90)) ** 0.5
        self.assertAlmostEqual(float(found["z"]), z, delta=1e-5)
        self.assertAlmostEqual(float(found["p"].lstrip("= ")), 2 * normal_tail(z), delta=1e-5)
        exact = self.figures("test", "binomial", "--successes", "3", "--n", "10", "--p0", "0.5", "--exact")
        self.assertAlmostEqual(float(exact["p"].lstrip("= ")), sum(math.comb(10, k) for k in range(4)) / 1024, delta=1e-4)

    def test_rank(self):
        self.file("r.csv", 'v,"n"\r\n5,"a ""b"""\r\n2,\r\n,c\r\n5,d\r\n')
        ranks = {("mean",): "2.5,1,,2.5", ("low",): "2,1,,2", ("high", "--descending"): "2,3,,2"}
        for ties, expected in ranks.items():
            output = self.output("rank", "r.csv", "--column", "v", "--ties", *ties).decode()
            first, *rows = output.split("\r\n")[:-1]
            self.assertEqual(first, 'v,"n",rank')
            self.assertEqual(",".join(row.rsplit(",", 1)[1] for row in rows), expected)
        self.assertTrue(output.split("\r\n")[1].startswith('5,"a ""b""",'))

    def test_lowess(self):
        order = list(range(40))
        random.Random(7).shuffle(order)
        self.file("l.csv", "a;b\n" + "".join(f"{i},5;{'' if i == 11 else 3 - i / 4}\n".replace(".", ",") for i in order))
        rows = self.output("lowess", "l.csv", "--x", "a", "--y", "b", "--decimal", ",").decode().split("\n")[1:-1]
        for i, row in zip(order, rows):  # a straight line is its own smooth curve
            value = row.split(";")[2].replace(",", ".")
            if i == 11:
                self.assertEqual(value, "")
            else:
                self.assertAlmostEqual(float(value), 3 - i / 4, places=9)

    def test_select(self):
        numbers = list(map(int, self.output("select", "20", "-10", "29", "--seed", "5").split()))
        self.assertEqual(len(set(numbers)), 20)
        self.assertTrue(all(-10 <= number <= 29 for number in numbers))
        self.assertEqual(numbers, list(map(int, self.output("select", "20", "-10", "29", "--seed", "5").split())))
        self.assertNotEqual(numbers, list(map(int, self.output("select", "20", "-10", "29", "--seed", "6").split())))
        self.assertEqual(self.output("select", "1", "8", "8"), b"8\n")

    def test_pictures(self):
        data = DATA / "airquality.csv"
        bars = self.picture("describe", data, "--columns", "Month")
        heights = [float(bar.get("height")) for bar in bars.iter(SVG + "rect") if bar.get("stroke") != "none"]
        self.assertEqual(len(heights), 5)  # 31, 30, 31, 31, 30 days
        self.assertAlmostEqual(heights[1] / heights[0], 30 / 31, delta=1e-3)
        boxes = self.picture("test", "anova", data, "--value", "Ozone", "--by", "Month")
        self.assertEqual([text.text for text in boxes.iter(SVG + "text")][:5],
                         ["5 (26)", "6 (9)", "7 (26)", "8 (26)", "9 (29)"])
        dots = self.picture("lowess", DATA / "cars.csv", "--x", "speed", "--y", "dist")
        self.assertEqual(len(list(dots.iter(SVG + "circle"))), 49)  # of 50 cars two agree
        self.file("q.csv", '"<&"">"\n' + "".join(f"{v}\n" for v in range(30)))
        for picture in (self.picture("test", "shapiro", "q.csv", "--column", '<&">'),
                        self.picture("fit", "normal", "q.csv", "--column", '<&">')):
            self.assertIn('<&">', [text.text for text in picture.iter(SVG + "text")])

    def test_failures(self):
        self.file("a.csv", "a,b,t,c,p\n1,5,x,7,1\n2,5,x,7,2\n3,5,y,7,-4\n")
        self.file("none.csv", "a,b\n")
        self.file("texts.csv", "a\nx\n")
        cases = {
            ("describe", "none.csv"): "no rows",
            ("describe", self.file("empty.csv", "")): "is empty",
            ("describe", "texts.csv"): "no column of numbers",
            ("report", "texts.csv"): "no column of numbers",
            ("describe", "a.csv", "--columns", "t"): 'line 2: column "t": x is not a number',
            ("describe", "a.csv", "--columns", "q"): "it has a, b, t, c, p",
            ("test", "anova", "a.csv", "--value", "a", "--by", "b"): "fewer than two groups",
            ("test", "anova", "a.csv", "--value", "a", "--by", "a"): "too few values",
            ("test", "correlation", "a.csv", "--x", "a", "--y", "b"): "does not vary",
            ("test", "multiple", "a.csv", "--x", "a,a", "--y", "p"): "follows from the other",
            ("test", "chi2", "a.csv", "--x", "a", "--y", "b"): "fewer than two different",
            ("test", "shapiro", "a.csv", "--column", "c"): "all values are equal",
            ("test", "ks", "a.csv", "--column", "a", "--family", "gamma", "--parameters", "1"): "scale,shape",
            ("test", "z", "--mean", "1", "--sd", "1", "--n", "3"): "expected value",
            ("test", "binomial", "--successes", "7", "--n", "3", "--p0", "0.5"): "between 0 and",
            ("fit", "lognorm", "a.csv", "--column", "p"): "outside its support",
            ("fit", "cauchy", "a.csv", "--column", "p"): "there are beta",
            ("rank", "a.csv", "--column", "a", "--name", "b"): "already has a column",
            ("lowess", "none.csv", "--x", "a", "--y", "b"): "no rows",
            ("select", "4", "1", "3"): "3 numbers to choose from",
        }
        for arguments, message in cases.items():
            with self.subTest(arguments):
                self.assertIn(message, self.failure(*arguments))


if __name__ == "__main__":
    unittest.main()
