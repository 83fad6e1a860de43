' Runs the computing part of examples/vba/palvex.bas, which stands in front of these lines.
Dim checks, fails, law, fault, table(6, 7), results, i
checks = 0
fails = 0

Sub Check(what, found, expected)
  checks = checks + 1
  If CStr(found) = CStr(expected) Then Exit Sub
  fails = fails + 1
  WScript.Echo "FAILED " & what & ": " & CStr(found) & ", expected " & CStr(expected)
End Sub

Function Listed(values)
  Dim value
  For Each value In values
    Listed = Listed & " " & value
  Next
End Function

Sub Near(what, found, expected)
  checks = checks + 1
  If Abs(found - expected) <= 0.00000000001 * Abs(expected) Then Exit Sub
  fails = fails + 1
  WScript.Echo "FAILED " & what & ": " & CStr(found) & ", expected " & CStr(expected)
End Sub

Function Described(kind, p1, p2, p3, p4, lower, upper)
  Described = KeptLaw(kind, Array(p1, p2, p3, p4), lower, upper, fault)
  Check kind, fault, ""
End Function

' The published vectors of Philox4x32-10.
Dim words
words = Philox(Array(0, 0, 0, 0), 0, 0)
Check "zeros", Listed(words), Listed(Array(1713891541, 3781805453, 3159862348, 2600524760))
words = Philox(Array(4294967295, 4294967295, 4294967295, 4294967295), 4294967295, 4294967295)
Check "ones", Listed(words), Listed(Array(1083123565, 1103641358, 2718681030, 1834242557))
words = Philox(Array(608135816, 2242054355, 320440878, 57701188), 2752067618, 698298832)
Check "digits of pi", Listed(words), Listed(Array(3513581065, 2499661035, 1342301216, 605187745))

' The law where the component's members depart from it.
law = Described("Gamma", 2, 3, 5, Empty, Empty, Empty)
Near "gamma probability", LawProbability(law, 8), 1 - 2 * Exp(-1)
Near "gamma density", LawDensity(law, 8), Exp(-1) / 3
law = Described("Beta", 3, 1, 0, 10, Empty, Empty)
Near "beta probability", LawProbability(law, 5), 0.125
Near "beta density", LawDensity(law, 5), 0.075
law = Described("Uniform", 0, 10, Empty, Empty, 2, 6)
Near "cut uniform probability", LawProbability(law, 3), 0.25
Near "cut uniform density", LawDensity(law, 3), 0.25
law = Described("Uniform", 0, 10, Empty, Empty, 8, 2)
Near "below the gap", LawProbability(law, 1), 0.25
Near "in the gap", LawProbability(law, 5), 0.5
Near "above the gap", LawProbability(law, 9), 0.75
Near "density beside a gap", LawDensity(law, 1), 0.25
law = Described("Johnson", 10, 2, 0, 3, Empty, Empty)
Near "Johnson probability", LawProbability(law, 12), 0.84134474606854293
law = Described("PERT", 8, 10, 15, Empty, Empty, Empty)
Near "PERT mean", LawMean(law), 10.5
law = Described("LognormalMean", 100, 30, 0, Empty, Empty, Empty)
Near "mean", LawMean(law), 100
Near "sd", LawStDev(law), 30

' Sentences.
Sub Fault_(kind, p1, p2, p3, sentence)
  law = KeptLaw(kind, Array(p1, p2, p3, Empty), Empty, Empty, fault)
  Check kind, fault, sentence
End Sub
Fault_ "Triangle", 1, 2, 3, "Unknown distribution type 'Triangle'."
Fault_ "Triangular", 1, 0, 3, "Likely can not be less than Minimum."
Fault_ "PERT", 1, 4, 3, "Maximum can not be less than Likely."
Fault_ "LognormalMean", 1, "x", 3, "Non-numeric value for parameter 2 of LognormalMean."

' Formulas.
Dim valueOf
Set valueOf = CreateObject("Scripting.Dictionary")
valueOf("Work cost") = 3
Near "precedence", FormulaValue("2 + [Work cost] * -2 ^ 2 - 6 / 4", valueOf), -11.5
Near "functions", FormulaValue("max(1, [Work cost], 2.5) + sqrt(16)*(ln(exp(2)) - .5)", valueOf), 9
Near "choice", FormulaValue("[Work cost] >= 3 ? 10 : 20", valueOf), 10

' A simulation: the drawn number of each trial by hand, a risk, a live parameter, percentiles.
Sub Row(r, content)
  Dim c
  For c = 0 To 7
    table(r, c) = content(c)
  Next
End Sub
Row 0, Array("Name", "Type", "Param1", "Param2", "Param3", "Chance", "Formula", "Unit")
Row 1, Array("Work", "Uniform", 10, 20, Empty, Empty, Empty, "days")
Row 2, Array("Delay", "Uniform", 0, "=[Work]", Empty, Empty, "", "days")
Row 3, Array("Strike", "Uniform", 5, 6, Empty, "30%", Empty, "days")
Row 4, Array("# a comment", Empty, Empty, Empty, Empty, Empty, Empty, Empty)
Row 5, Array("Time", Empty, Empty, Empty, Empty, Empty, "[work] + [Delay] + [Strike]", Empty)
Row 6, Array("Short", Empty, Empty, Empty, Empty, Empty, "[Time] < 20 ? 1 : 0", Empty)
Dim expected(39), work, delay, strike, short_
short_ = 0
For i = 0 To 39
  work = 10 + 10 * UniformNumber(7, i, 1, 0)
  delay = work * UniformNumber(7, i, 2, 0)
  strike = 0
  If UniformNumber(7, i, 3, 1) < 0.3 Then strike = 5 + UniformNumber(7, i, 3, 0)
  expected(i) = work + delay + strike
  If expected(i) < 20 Then short_ = short_ + 1
Next
SortValues expected, 0, 39
Set results = Simulate(table, 40, 7, fault)
Check "fault", fault, ""
Check "results", Listed(results.Keys), " Time Short"
Near "median", Percentile(results("Time"), 50), expected(19)
Near "P80", Percentile(results("Time"), 80), expected(31)
Near "P81", Percentile(results("Time"), 81), expected(32)
Near "share", MeanOf(results("Short")), short_ / 40

' A fault in a trial and faults of the table.
Sub TableFault(r, c, content, sentence)
  Dim before
  before = table(r, c)
  table(r, c) = content
  Set results = Simulate(table, 40, 7, fault)
  Check "row " & r, fault, sentence
  table(r, c) = before
End Sub
TableFault 3, 2, "=[Nothing]", "Row 4, Strike: There is no row 'Nothing' above."
TableFault 3, 1, "Unifrom", "Row 4, Strike: Unknown distribution type 'Unifrom'."
TableFault 3, 5, 1.5, "Row 4, Strike: A chance is a number from 0 to 1."
TableFault 3, 0, "work", "Row 4, work: A row above has the same name."
TableFault 2, 2, 1000, "Trial 1, Delay: Maximum can not be less than Minimum."
TableFault 5, 6, "[Work] + ", "Trial 1, Time: The formula can not be read from character 9 on: [Work] +"
table(5, 6) = Empty
table(5, 1) = "Uniform"
TableFault 5, 2, "x", "Row 6, Time: Non-numeric value for Minimum."

WScript.Echo "all " & checks & " checks done, " & fails & " failed"
WScript.Quit fails
