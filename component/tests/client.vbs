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

' Kinds of results, lists, variables that are only kept.
Check "NumParams", d.NumParams, CInt(0)
Check "ScaleFactor", d.ScaleFactor, 1.0
Check "param1", IsEmpty(d.param1), True
Check "Dynamic", d.Dynamic, False
names = d.ValidDistributions
Check "LBound", LBound(names), CLng(1)
Check "UBound", UBound(names), CLng(10)
Check "last", names(10), "Histogram"
d.graphMin = -10
Check "graphMin", d.graphMin, "-10"

' Properties with and without their arguments.
d.distType = "Triangular"
d.param1 = 0
d.param2 = "5"
d.param3 = 10.0
Check "param2", d.param2, "5"
cause = "left over"
Check "ParamsOK", d.ParamsOK(cause), True
Check "cause", cause, ""
Near "StDev about 0", d.StDev(0), Sqr(100 / 24 + 25)
Near "XMin", d.XMin + 1, 1
Near "XMax", d.XMax(3), 10
Check "ResizeArrays", IsEmpty(d.ResizeArrays(5)), True
d.GraphX(3) = 2.5
Near "GraphX", d.GraphX(3), 2.5

' A fault of the user.
d.param2 = -1
Check "ParamsOK", d.ParamsOK(cause), False
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
