' What one draw costs in a script's loop.
Option Explicit
Const calls = 200000
Dim d, cause, i, x, start, loops, draws, run
Set d = CreateObject("palvex.c_Distribution")
d.distType = "Normal"
d.param1 = 10
d.param2 = 2
If Not d.ParamsOK(cause) Then WScript.Quit 1
loops = 1000
draws = 1000
For run = 1 To 5
  start = Timer
  For i = 1 To calls
    x = 0.5
  Next
  If Timer - start < loops Then loops = Timer - start
  start = Timer
  For i = 1 To calls
    x = d.RandVal(0.3)
  Next
  If Timer - start < draws Then draws = Timer - start
Next
WScript.Echo "In a VBScript loop:"
WScript.Echo "  one turn with a draw      " & Round(draws / calls * 1E9) & " ns"
WScript.Echo "  one turn without          " & Round(loops / calls * 1E9) & " ns"
WScript.Echo "all 1 checks done, 0 failed"
WScript.Quit 0
