"""The report as a page: well-formed, complete, and nothing that a browser would have to fetch or run."""

import random
import unittest
import xml.etree.ElementTree

from host_support import DATA, HostTest

HTML = "{http://www.w3.org/1999/xhtml}"
SVG = "{http://www.w3.org/2000/svg}"


class ReportTest(HostTest):
    def report(self, file, *options):
        self.output("report", file, *options, "-o", "report.html")
        root = xml.etree.ElementTree.parse(self.folder / "report.html").getroot()
        for element in root.iter():
            self.assertNotIn(element.tag.split("}")[1], ("script", "link", "img", "iframe", "image", "use"))
            for name, value in element.attrib.items():
                self.assertNotIn("href", name)
                self.assertNotIn("url(", value)
                if name in ("x", "y", "cx", "cy", "width", "height", "points"):
                    self.assertNotRegex(value, "nan|inf")
        return root

    def labels(self, root):
        return [picture.get("aria-label") for picture in root.iter(SVG + "svg")]

    def test_real_data(self):
        root = self.report(DATA / "airquality.csv")
        labels = self.labels(root)
        for name in ("Ozone", "Solar.R", "Wind", "Temp", "Month", "Day"):
            self.assertIn("Histogram of " + name, labels)
            self.assertIn("Normal quantile plot of " + name, labels)
        self.assertIn("Scatter of Temp by Ozone", labels)  # the strongest correlation but those with the months
        self.assertIn("Box plots of Ozone by Month", labels)
        text = " ".join(root.itertext())
        self.assertIn("Ozone is not normally distributed (p < 0.0001).", text)
        self.assertIn("The means of the groups differ (p < 0.0001).", text)

    def test_hostile_files(self):
        rng = random.Random(3)
        files = {
            "one row": "a,b,c\n1,2,t\n",
            "constant": "a,b\n" + "3,NA\n" * 20,
            "names": '"<script>alert(1)</script>","&amp;","a""b",""\n' + "".join(
                f"{rng.random()},{rng.random()},<b>{i % 2}</b>,{i}\n" for i in range(20)),
            "huge": "a,b\n" + "".join(f"{rng.choice((1e308, -1e308, 5e-324, 1e300))},{i}e299\n" for i in range(20)),
            "tiny": "a,b\n" + "".join(f"{i}e-320,{1 + i * 2.3e-16}\n" for i in range(20)),
            "rows": "a,b,g\n" + "".join(f"{rng.gauss(0, 1)},{i},{rng.choice('xyz')}\n" for i in range(100000)),
            "columns": ",".join(f"c{i}" for i in range(60)) + "\n" + (",".join("1" * 60) + "\n") * 3,
        }
        for name, text in files.items():
            with self.subTest(name):
                (self.folder / "h.csv").write_text(text)
                root = self.report("h.csv")
                self.assertGreater(len(self.labels(root)), 0)
                self.assertLess((self.folder / "report.html").stat().st_size, 4 << 20)
        (self.folder / "bytes.csv").write_bytes(b"a\xff\x01,b\n1,\xc3\n2,\xed\xa0\x80\n")
        self.report("bytes.csv", "--by", "b")


if __name__ == "__main__":
    unittest.main()
