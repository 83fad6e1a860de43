' Says whether scripts and programs of this bitness find palvex: double-click it, or cscript //nologo check.vbs
' For 32-bit programs on 64-bit Windows: %SystemRoot%\SysWOW64\cscript.exe //nologo check.vbs
Option Explicit
Dim duration, fault

On Error Resume Next
Set duration = CreateObject("palvex.c_Distribution")
If Err.Number <> 0 Then
  WScript.Echo "palvex is not registered here (error " & Err.Number & "): run register.cmd in this folder."
  WScript.Quit 1
End If
On Error GoTo 0

duration.distType = "Triangular"
duration.param1 = 8
duration.param2 = 10
duration.param3 = 15
If Not duration.ParamsOK(fault) Then
  WScript.Echo fault
  WScript.Quit 1
End If
WScript.Echo "palvex works. Of a triangular law from 8 over 10 to 15:"
WScript.Echo "the mean is            " & duration.mean
WScript.Echo "nine in ten stay below " & duration.RandVal(0.9)

duration.param3 = 9
If Not duration.ParamsOK(fault) Then WScript.Echo "And with 15 turned into 9: " & fault
