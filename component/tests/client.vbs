' A VBScript client: every member by late binding, errors, ranges played by classes of the script.
Option Explicit
Dim checks, fails
checks = 0
fails = 0

Sub Check(what, found, expected)
  checks = checks + 1
  If VarType(found) = VarType(expected) Then
    If found = expected Then Exit Sub
  End If
  fails = fails + 1
  WScript.Echo "FAILED " & what & ": " & CStr(found) & " (" & TypeName(found) & "), expected " & CStr(expected) & " (" & TypeName(expected) & ")"
End Sub

Sub Near(what, found, expected)
  checks = checks + 1
  If Abs(found - expected) <= 0.000000000001 * Abs(expected) Then Exit Sub
  fails = fails + 1
  WScript.Echo "FAILED " & what & ": " & CStr(found) & ", expected " & CStr(expected)
End Sub

Sub CheckError(what, number, description, trace)
  checks = checks + 1
  If Err.Number = number And Err.Description = description And InStr(Err.Source, trace) > 0 Then
    Err.Clear
    Exit Sub
  End If
  fails = fails + 1
  WScript.Echo "FAILED " & what & ": error " & Err.Number & " [" & Err.Source & "] " & Err.Description
  Err.Clear
End Sub

' A cell of a worksheet.
Class Cell
  Public Content
  Public Default Property Get Value()
    Value = Content
  End Property
  Public Property Get Application()
    Set Application = Me
  End Property
  Public Property Get Address()
    Address = "$A$1"
  End Property
  Public Property Get Count()
    Count = 1
  End Property
  Public Property Get Cells(i)
    Set Cells = Me
  End Property
End Class

Dim d, cause, names, c, i
Set d = CreateObject("palvex.c_Distribution")

' A fresh object.
Check "distType", d.distType, ""
Check "NumParams", d.NumParams, CInt(0)
Check "ParamName", d.ParamName(1), ""
Check "NumPoints", d.NumPoints, CInt(0)
Check "GraphX", d.GraphX(1), 0.0
Check "ScaleFactor", d.ScaleFactor, 1.0
Check "param1", IsEmpty(d.param1), True
Check "Active", d.Active, False
Check "Dynamic", d.Dynamic, False

' The catalogue.
names = d.ValidDistributions
Check "LBound", LBound(names), CLng(1)
Check "UBound", UBound(names), CLng(10)
Check "first", names(1), "Normal"
Check "last", names(10), "Histogram"
names = d.DataConfigurations
Check "layouts", names(3), "Bins and Counts (3 cols)"
Check "NegInfinity", d.NegInfinity, "-Infinity"
Check "PosInfinity", d.PosInfinity, "+Infinity"

' Variables that are only kept.
d.Active = True
d.graphMax = "10"
d.graphMin = -10
d.numberFormat = "0.00"
Check "Active", d.Active, True
Check "graphMax", d.graphMax, "10"
Check "graphMin", d.graphMin, "-10"
Check "numberFormat", d.numberFormat, "0.00"

' Evaluation: a triangle from 0 over 5 to 10.
d.distType = "Triangular"
d.param1 = 0
d.param2 = "5"
d.param3 = 10.0
Check "param2", d.param2, "5"
Check "NumParams", d.NumParams, CInt(3)
Check "ParamName", d.ParamName(2), "Likely"
cause = "left over"
Check "ParamsOK", d.ParamsOK(cause), True
Check "cause", cause, ""
Near "pdf", d.pdf(5), 0.2
Near "cdf", d.cdf(2.5), 0.125
Near "RandVal", d.RandVal(0.125), 2.5
Near "mean", d.mean, 5
Near "CalcMean", d.CalcMean, 5
Near "StDev", d.StDev, Sqr(100 / 24)
Near "StDev about 0", d.StDev(0), Sqr(100 / 24 + 25)
Near "CalcStdev", d.CalcStdev(5), Sqr(100 / 24)
Near "XMin", d.XMin + 1, 1
Near "XMax", d.XMax(3), 10
Near "GuessParamValue", d.GuessParamValue(3, 10), 11

' Truncation.
d.ltl = 2.5
d.utl = d.PosInfinity
Check "ParamsOK", d.ParamsOK(cause), True
Near "pdf outside", d.pdf(1) + 1, 1
Near "pdf without truncation", d.pdf(1, True), 0.04
Near "pdf with a prior x", d.pdf(5, False, 4), 0.2
Near "RandVal(0)", d.RandVal(0), 2.5

' Graph data.
Check "ResizeArrays", IsEmpty(d.ResizeArrays(5)), True
d.ScaleFactor = 2
d.CreateGraphData 0, 10
Check "NumPoints", d.NumPoints, CInt(5)
Near "GraphX", d.GraphX(3), 5
Near "GraphPDF", d.GraphPDF(3), 0.4
Near "GraphOL", d.GraphOL(3), 0.4
d.GraphX(3) = 2.5
d.GraphPDF(3) = 3.5
d.GraphOL(3) = 4.5
Near "GraphX", d.GraphX(3), 2.5
Near "GraphPDF", d.GraphPDF(3), 3.5
Near "GraphOL", d.GraphOL(3), 4.5
d.GraphX(9) = 1
Check "GraphX(9)", d.GraphX(9), 0.0
d.ScaleFactor = -3
Check "ScaleFactor", d.ScaleFactor, 1.0

' A fault of the user.
d.param2 = -1
Check "ParamsOK", d.ParamsOK(cause), False
Check "cause", cause, "Likely can not be less than Minimum."
Dim sentences(2)
Check "into an element", d.ParamsOK(sentences(1)), False
Check "element", sentences(1), "Likely can not be less than Minimum."

' Ranges of a worksheet.
Set c = New Cell
c.Content = 4
Set d.param2 = c
Check "ParamsOK", d.ParamsOK(cause), True
c.Content = 6
d.Dynamic = True
d.ltl = Empty
d.utl = Empty
Near "a live cell", d.cdf(6), 0.6
c.Content = "abc"
Check "ParamsOK", d.ParamsOK(cause), False
Check "cause", cause, "Non-numeric value in cell referenced for Likely."
d.Dynamic = False

' Errors.
d.distType = "Normal"
d.param1 = 0
d.param2 = 1
Check "ParamsOK", d.ParamsOK(cause), True
On Error Resume Next
i = d.RandVal(1.5)
CheckError "RandVal", 5, "Invalid procedure call or argument" & vbCrLf & "RandVal: (1.5,0,1,10,,)", "in palvex.c_Distribution.RandVal at line "
i = d.RandVal("x")
CheckError "a text", 13, "Type mismatch", ""
i = d.RandVal()
CheckError "no argument", 449, Err.Description, ""
i = d.RandVal(1, 2)
CheckError "an argument too many", 450, Err.Description, ""
d.NumPoints = 3
CheckError "a read-only property", 438, Err.Description, ""
i = d.Nothing_Such
CheckError "no such member", 438, Err.Description, ""
On Error GoTo 0

Set d.param2 = Nothing
Set d = Nothing
WScript.Echo "all " & checks & " checks done, " & fails & " failed"
WScript.Quit fails
