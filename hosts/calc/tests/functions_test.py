"""The worksheet functions in cells: typed in, saved, loaded again."""
import math
import unittest
from statistics import NormalDist

from office import OfficeTest, properties

NORMAL = NormalDist(100, 15)
INVALID_ARGUMENT, NO_NUMBER, ARGUMENT_MISSING, DIVISION_BY_ZERO = 502, 503, 504, 532

NUMBERS = [  # a formula over the data of setUp, and what it is to show
    ('PALVEX_DENSITY("Normal";115;D1;D2)', NORMAL.pdf(115)),
    ('PALVEX_PROBABILITY("Normal";115;D1;D2;;;;)', NORMAL.cdf(115)),
    ('PALVEX_PROBABILITY("Normal";115;D1;D2;;;100)', 2 * NORMAL.cdf(115) - 1),
    ('PALVEX_EXCEEDANCE("Normal";10;0;1)', 7.619853024160526e-24),
    ('PALVEX_QUANTILE("Normal";0.975;D1;D2)', NORMAL.inv_cdf(0.975)),
    ('PALVEX_QUANTILE("Triangular";0.5;0;1;4)', 4 - math.sqrt(6)),
    ('PALVEX_QUANTILE("Uniform";1;2;5)', 5),
    ('PALVEX_MEAN("Exponential";0.25)', 4),  # without its minimum
    ('PALVEX_MEAN("Beta";2;3)', 0.4),        # without its ends
    ('PALVEX_MEAN("PERT";2;3;10)', 4),
    ('PALVEX_MEAN("LognormalMean";7;2)', 7),
    ('PALVEX_STDEV("Uniform";2;5)', 3 / math.sqrt(12)),
    ('PALVEX_MEAN("Histogram";E1:F3;"Data and Counts (2 cols)")', 20),
    ('PALVEX_MEAN("Normal";D5;1)', 0),       # an empty cell
]
FAULTS = [
    ('PALVEX_STDEV("Normal";1;-2)', INVALID_ARGUMENT),
    ('PALVEX_MEAN("Normal";1)', INVALID_ARGUMENT),
    ('PALVEX_MEAN("Gaussian";1;2)', INVALID_ARGUMENT),
    ('PALVEX_QUANTILE("Normal";1.5;0;1)', NO_NUMBER),
    ('PALVEX_DENSITY("Normal")', ARGUMENT_MISSING),
    ('PALVEX_MEAN("Normal";1/0;1)', DIVISION_BY_ZERO),
]
TEXTS = [
    ('PALVEX_CHECK("Normal";1;2)', ""),
    ('PALVEX_CHECK("Normal";1;-2)', "Negative value for Std Dev.  Must be a non-negative real number."),
    ('PALVEX_CHECK("Normal";1)', "Std Dev is missing."),
    ('PALVEX_CHECK("Triangular";3;2;1)', "Likely can not be less than Minimum."),
    ('PALVEX_CHECK("Normal";0;1;;;5;5)', "LTL value can not be equal to UTL value."),
]
FILTERS = {"ods": "calc8", "xlsx": "Calc MS Excel 2007 XML"}


class FunctionsTest(OfficeTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.formulas = [formula for formula, _ in NUMBERS + FAULTS + TEXTS]

    def setUp(self):
        super().setUp()
        sheet = self.document.Sheets[0]
        sheet.getCellRangeByName("D1:D2").setDataArray(((100.0,), (15.0,)))
        sheet.getCellRangeByName("E1:F3").setDataArray(((10.0, 1.0), (20.0, 2.0), (30.0, 1.0)))
        for row, formula in enumerate(self.formulas):
            sheet.getCellByPosition(0, row).FormulaLocal = "=" + formula

    def check(self, document):
        sheet = document.Sheets[0]
        cells = {formula: sheet.getCellByPosition(0, row) for row, formula in enumerate(self.formulas)}
        for formula, expected in NUMBERS:
            with self.subTest(formula):
                self.assertEqual(cells[formula].getError(), 0)
                self.assertAlmostEqual(cells[formula].Value, expected, delta=1e-13 * abs(expected))
        for formula, error in FAULTS:
            with self.subTest(formula):
                self.assertEqual(cells[formula].getError(), error)
        for formula, sentence in TEXTS:
            with self.subTest(formula):
                self.assertEqual(cells[formula].String, sentence)

    def test_values_and_faults(self):
        self.check(self.document)

    def test_saved_and_loaded_again(self):
        for extension, name in FILTERS.items():
            with self.subTest(extension):
                path = self.office.path("functions." + extension)
                self.document.storeToURL("file://" + path, properties(FilterName=name))
                loaded = self.office.open(path)
                self.addCleanup(loaded.close, True)
                self.check(loaded)
                loaded.Sheets[0].getCellRangeByName("D1").Value = 200
                quantile = loaded.Sheets[0].getCellByPosition(0, 4)
                self.assertAlmostEqual(quantile.Value, 100 + NORMAL.inv_cdf(0.975), 11)

    def test_the_wizard_describes_every_argument(self):
        descriptions = self.office.create("com.sun.star.sheet.FunctionDescriptions")
        found = {}
        for i in range(descriptions.Count):
            function = {item.Name: item.Value for item in descriptions.getByIndex(i)}
            if function["Name"].startswith("PALVEX_"):
                found[function["Name"]] = function
        self.assertEqual(set(found), {"PALVEX_" + name for name in (
            "DENSITY", "PROBABILITY", "EXCEEDANCE", "QUANTILE", "MEAN", "STDEV", "CHECK")})
        for function in found.values():
            self.assertTrue(function["Description"])
            self.assertIn([a.Name for a in function["Arguments"]][:2],
                          (["type", "x"], ["type", "p"], ["type", "p1"]))
            for argument in function["Arguments"]:
                self.assertGreater(len(argument.Description), 15)


if __name__ == "__main__":
    unittest.main()
