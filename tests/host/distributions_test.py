"""qmml dist against closed forms."""

import math
import unittest

from host_support import HostTest


def normal_lower(z):
    return math.erfc(-z / math.sqrt(2)) / 2


def normal_density(z):
    return math.exp(-z * z / 2) / math.sqrt(2 * math.pi)


def binomial(k):
    return math.comb(10, k) * 0.3**k * 0.7 ** (10 - k)


def poisson(k):
    return math.exp(-2.5) * 2.5**k / math.factorial(k)


class Distributions(HostTest):
    # name, parameters, x, density and lower tail at x, p and its quantile: closed forms.
    CASES = [
        ("beta", "--a 2 --b 3", 0.5, 1.5, 0.6875, 0.6875, 0.5),
        ("binom", "--p 0.3 --n 10", 4, binomial(4), sum(map(binomial, range(5))), None, None),
        ("cauchy", "--location 1 --scale 2", 3, 1 / (4 * math.pi), 0.75, 0.25, -1),
        ("chi2", "--df 4", 3, 0.75 * math.exp(-1.5), 1 - 2.5 * math.exp(-1.5), 1 - 2.5 * math.exp(-1.5), 3),
        ("expon", "--lambda 0.5", 3, 0.5 * math.exp(-1.5), 1 - math.exp(-1.5), 0.75, 4 * math.log(2)),
        ("extreme", "--location 1 --scale 2", 3, math.exp(-1 - math.exp(-1)) / 2, math.exp(-math.exp(-1)),
         math.exp(-1), 1),
        ("f", "--df1 2 --df2 6", 3, 2.0**-4, 1 - 2.0**-3, 0.875, 3),
        ("gamma", "--shape 3", 2, 2 * math.exp(-2), 1 - 5 * math.exp(-2), 1 - 5 * math.exp(-2), 2),
        ("geom", "--p 0.25", 2, 0.75**2 * 0.25, 1 - 0.75**3, None, None),
        ("laplace", "--location 1 --scale 2", 3, math.exp(-1) / 4, 1 - math.exp(-1) / 2, 0.25, 1 - 2 * math.log(2)),
        ("logis", "--location 1 --scale 2", 3, math.exp(-1) / (1 + math.exp(-1)) ** 2 / 2, 1 / (1 + math.exp(-1)),
         0.75, 1 + 2 * math.log(3)),
        ("lognorm", "--mu 1 --sigma 2", math.exp(3), normal_density(1) / (2 * math.exp(3)), normal_lower(1), 0.5,
         math.e),
        ("normal", "--mu 1 --sigma 2", 3, normal_density(1) / 2, normal_lower(1), normal_lower(-1.5), -2),
        ("pareto", "--shape 3", 2, 3 / 16, 7 / 8, 7 / 8, 2),
        ("poisson", "--lambda 2.5", 3, poisson(3), sum(map(poisson, range(4))), None, None),
        ("rayleigh", "--b 2", 3, 0.75 * math.exp(-9 / 8), 1 - math.exp(-9 / 8), 1 - math.exp(-0.5), 2),
        ("student", "--df 2", 1, 3**-1.5, 0.5 + 1 / math.sqrt(12), 0.5 + 1 / math.sqrt(12), 1),
        ("weibull", "--scale 2 --shape 3 --location 1", 2, 0.375 * math.exp(-1 / 8), 1 - math.exp(-1 / 8),
         1 - math.exp(-1), 3),
    ]

    def values(self, *arguments):
        return [float(line) for line in self.output("dist", *arguments).split()]

    def test_known_values_of_every_family(self):
        for name, parameters, x, density, lower, p, quantile in self.CASES:
            with self.subTest(name):
                arguments, expected = ["--pdf", x, "--cdf", x, "--upper", x], [density, lower, 1 - lower]
                if p is not None:
                    arguments += ["--quantile", repr(p)]
                    expected.append(quantile)
                values = self.values(name, *parameters.split(), *arguments)
                for value, reference in zip(values, expected, strict=True):
                    # Some tails rest on series of six digits.
                    self.assertAlmostEqual(value, reference, delta=2e-6 * abs(reference))

    def test_every_listed_family_is_tested(self):
        listed = [line.split()[0] for line in self.output("dist", "--list").decode().splitlines()[1:]]
        self.assertEqual(listed, [case[0] for case in self.CASES])

    def test_points_defaults_and_aliases(self):
        self.assertEqual(self.values("normal", "--cdf", "-1.5", "-1e0", "0", "-.5"),
                         self.values("normal", "--mu", "0", "--sigma", "1", "--cdf", "-1.50", "-1", "0", "-0.5"))
        self.assertEqual(self.values("rayl", "--b", "2", "--cdf", "1"),
                         self.values("rayleigh", "--b", "2", "--cdf", "1"))
        self.assertEqual(self.output("dist", "binom", "--pdf", "0", "3", "--p", "0.5", "--n", "3", "--csv"),
                         b"function,at,value\npdf,0,0.125\npdf,3,0.125\n")

    def test_failures(self):
        for arguments, expected in [
            (["normal", "--cdf", "0", "--sigma", "-1"], "parameters outside the domain"),
            (["normal", "--cdf", "0", "--quantile", "0"], "parameters outside the domain"),
            (["chi2", "--upper", "1", "--df", "0"], "parameters outside the domain"),
            (["chi2", "--cdf", "1"], "chi2 needs --df"),
            (["chi2", "--cdf", "1", "--df", "2", "--mu", "1"], "no parameter --mu; it takes --df"),
            (["poisson", "--quantile", "0.5", "--lambda", "1"], "no --quantile"),
            (["normal", "--quantile", "1.5"], "between 0 and 1"),
            (["normal", "--cdf", "one"], '"one" is not a number'),
            (["normal", "--cdf", "0", "--mu", "nan"], '"nan" is not a number'),
            (["normal"], "is required"),
            (["abnormal", "--cdf", "0"], 'unknown distribution "abnormal"'),
            ([], "name of a distribution is required"),
        ]:
            with self.subTest(arguments):
                message = self.failure("dist", *arguments)
                self.assertIn(expected, message)
                self.assertEqual(message.count("\n"), 1)


if __name__ == "__main__":
    unittest.main()
