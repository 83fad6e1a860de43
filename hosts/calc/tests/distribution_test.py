"""The object palvex.c_Distribution, from Python and from Basic: texts, numbers, cells, errors."""
import math
import unittest

from office import OfficeTest, run_basic

START = '''
Function Answer
  Dim d, fault As String, s As String
  d = CreateUnoService("palvex.c_Distribution")
  d.distType = "Normal"
  d.param1 = 100
  d.param2 = 15
'''


def density(z, sd):
    return math.exp(-z * z / 2) / (sd * math.sqrt(2 * math.pi))


class DistributionTest(OfficeTest):
    def setUp(self):
        super().setUp()
        self.sheet = self.document.Sheets[0]

    def cell(self, address):
        return self.sheet.getCellRangeByName(address)

    def distribution(self, kind="Normal", *parameters):
        d = self.office.create("palvex.c_Distribution")
        d.distType = kind
        for number, value in enumerate(parameters, 1):
            setattr(d, f"param{number}", value)
        return d

    def basic(self, body, vba=False):
        return run_basic(self.document, START + body + "\nEnd Function\n", "Answer", vba=vba)

    def test_members_from_python(self):
        d = self.distribution("Normal", 100, "15")
        self.assertEqual(d.ParamsOK(""), (True, ""))
        self.assertEqual((d.mean, d.StDev(), d.StDev(80), d.XMin(), d.XMax(3)), (100, 15, 25, 40, 145))
        self.assertAlmostEqual(d.pdf(115), density(1, 15), 15)
        self.assertAlmostEqual(d.cdf(115) + d.cdf(85), 1, 15)
        self.assertAlmostEqual(d.RandVal(d.cdf(117)), 117, 9)
        self.assertEqual((d.NumParams(), d.ParamName(2), d.distType), (2, "Std Dev", "Normal"))
        self.assertEqual(len(d.ValidDistributions), 10)
        d.CreateGraphData(40, 160)
        d.setGraphX(3, 2.5)
        self.assertEqual((d.NumPoints, d.getGraphX(1), d.getGraphX(101), d.getGraphX(3)), (101, 40, 160, 2.5))
        self.assertAlmostEqual(d.getGraphPDF(51), density(0, 15), 15)
        d.distType = "Gaussian"  # refused with a message box, which nobody sees here
        self.assertEqual(d.distType, "Normal")
        d.param2 = -1
        self.assertEqual(d.ParamsOK(""),
                         (False, "Negative value for Std Dev.  Must be a non-negative real number."))

    def test_cells_are_live(self):
        self.cell("B2").Value = 100
        self.cell("B3").Formula = "=B2*0.15"
        d = self.distribution("Normal", self.cell("B2"), self.cell("B3"))
        self.assertEqual(d.ParamsOK(""), (True, ""))
        self.assertEqual(d.param1.AbsoluteName, "$Sheet1.$B$2")
        self.cell("B2").Value = 200
        self.assertEqual((d.mean, d.StDev()), (100, 15))
        d.Dynamic = True
        self.assertEqual((d.mean, d.StDev()), (200, 30))
        for content, fault in (("=1/0", "Error in cell value for Std Dev."),
                               ("fifteen", "Non-numeric value in cell referenced for Std Dev.")):
            self.cell("B3").Formula = content
            valid, sentence = d.ParamsOK("")
            self.assertFalse(valid)
            self.assertTrue(sentence.startswith(fault), sentence)

    def test_histogram_of_a_column(self):
        self.cell("A1:B3").setDataArray(((10.0, 1.0), (20.0, 2.0), (30.0, 1.0)))
        for data in (self.cell("A1:B3"), self.cell("A1:B1048576")):
            d = self.distribution("Histogram", data, "Data and Counts (2 cols)")
            self.assertEqual(d.ParamsOK(""), (True, ""))
            self.assertAlmostEqual(d.mean, 20, 12)
            self.assertEqual((d.XMin(), d.XMax()), (5, 35))

    def test_errors_from_python(self):
        d = self.distribution("Normal", 0, 1)
        d.ParamsOK("")
        with self.assertRaises(Exception) as raised:
            d.RandVal(2)
        message = raised.exception.Message
        self.assertEqual(raised.exception.ErrorCode, 5)
        for part in ("Error 5: Invalid procedure call", "in palvex.m_Normal.NormalINV at line",
                     "in palvex.c_Distribution.RandVal at line"):
            self.assertIn(part, message)
        self.assertEqual(d.LastErrorNumber, 5)
        self.assertIn("in palvex.c_Distribution.RandVal", d.LastErrorSource)
        self.assertIn("RandVal: (2,0,1,", d.LastErrorDescription)
        self.assertEqual((d.RandVal(0.5), d.LastErrorNumber), (0, 0))
        for call, number in ((lambda: d.pdf("x"), 13), (lambda: d.pdf(), 449), (lambda: d.cdf(1, 2), 450),
                             (lambda: d.ResizeArrays(40000), 6)):
            with self.assertRaises(Exception):
                call()
            self.assertEqual(d.LastErrorNumber, number)

    def test_plain_basic(self):
        self.cell("A1").Value = 100
        self.assertEqual(self.basic('''
          d.param1 = ThisComponent.Sheets(0).getCellRangeByName("A1")
          s = d.ParamsOK(fault) & fault
          s = s & "|" & d.StDev & "|" & d.StDev(80) & "|" & d.XMin & "|" & d.XMax(3) & "|" & d.NumParams
          s = s & "|" & (d.pdf(115) = d.pdf(115, False)) & "|" & (d.PDF(115) = d.pdf(115, , 5))
          d.PARAM2 = -1
          Answer = s & "|" & d.ParamsOK(fault) & "|" & fault'''),
            "True|15|25|40|145|2|True|True|False"
            "|Negative value for Std Dev.  Must be a non-negative real number.")
        self.assertEqual(self.basic('''
          names = d.ValidDistributions
          d.ParamsOK(fault)
          d.CreateGraphData d.XMin, d.XMax
          d.setGraphPDF 3, 2.5
          Answer = names(9) & "|" & d.NumPoints & "|" & d.getGraphPDF(3) & "|" & d.getGraphOL(0)'''),
            "Histogram|101|2.5|0")

    def test_errors_from_basic(self):
        for vba in (False, True):
            answer = self.basic('''
              On Error GoTo failed
              d.ParamsOK fault
              s = d.RandVal(2)
              Exit Function
            failed:
              Answer = Error$ & "|" & d.LastErrorNumber & "|" & d.LastErrorSource''', vba)
            message, number, source = answer.split("|")
            self.assertIn("Error 5: Invalid procedure call", message)
            self.assertIn("in palvex.c_Distribution.RandVal at line", message)
            self.assertEqual(number, "5")
            self.assertTrue(source.startswith("palvex") and "in palvex.m_Normal.NormalVAL" in source, source)

    def test_range_objects_of_vba_mode(self):
        self.cell("A1:A3").setDataArray(((100.0,), (7.0,), ("seven",)))
        self.assertEqual(self.basic('''
          Set d.param1 = Range("A1")
          Set d.param2 = Range("A2")
          s = d.ParamsOK(fault) & "|" & d.StDev
          Range("A2").Value = 8
          d.Dynamic = True
          s = s & "|" & d.StDev
          Set d.param2 = Range("A3")
          s = s & "|" & d.ParamsOK(fault) & "|" & fault
          d.distType = "Histogram"
          Set d.param1 = Range("A1:A2")
          d.param2 = "Raw Data"
          Answer = s & "|" & d.ParamsOK(fault) & "|" & d.mean''', vba=True),
            "True|7|8|False|Non-numeric value in cell referenced for Std Dev.  Must be a non-negative real"
            " number.|True|54")


if __name__ == "__main__":
    unittest.main()
