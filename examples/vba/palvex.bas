Attribute VB_Name = "palvexExamples"
' Worksheet functions and a small simulation with palvex. Import this file in the Visual Basic
' editor (File > Import File). The component must be registered; no reference is needed.
'
'   =PalvexQuantile(0.9, "Triangular", A1, A2, A3)    the value that 90 % stay below
'   =PalvexProbability(12, "Normal", 10, 2)           the probability of a value up to 12
'   =PalvexMean("Gamma", 2, 3, 0)                     the mean

Option Explicit

Private Const ClassName As String = "palvex.c_Distribution"

' A checked distribution. A fault of the description becomes an error with its sentence.
Public Function NewDistribution(ByVal typeName As String, ParamArray parameters() As Variant) As Object
    Dim given As Variant
    given = parameters
    Set NewDistribution = Described(typeName, given)
End Function

Private Function Described(ByVal typeName As String, ByVal parameters As Variant) As Object
    Dim d As Object, fault As String
    Set d = CreateObject(ClassName)
    d.distType = typeName
    Dim i As Long
    For i = LBound(parameters) To UBound(parameters)
        Select Case i - LBound(parameters) + 1
            Case 1: Assign d, "param1", parameters(i)
            Case 2: Assign d, "param2", parameters(i)
            Case 3: Assign d, "param3", parameters(i)
            Case 4: Assign d, "param4", parameters(i)
        End Select
    Next i
    If Not d.ParamsOK(fault) Then Err.Raise vbObjectError + 1, "palvex", fault
    Set Described = d
End Function

' A cell stays a cell: the object reads it itself and can name it in its messages.
Private Sub Assign(ByVal d As Object, ByVal member As String, ByVal value As Variant)
    If IsObject(value) Then
        CallByName d, member, VbSet, value
    Else
        CallByName d, member, VbLet, value
    End If
End Sub

' The value at position p (0 to 1) of a distribution.
Public Function PalvexQuantile(ByVal p As Double, ByVal typeName As String, ParamArray parameters() As Variant) As Variant
    Dim given As Variant
    given = parameters
    On Error GoTo Failed
    PalvexQuantile = Described(typeName, given).RandVal(p)
    Exit Function
Failed:
    PalvexQuantile = Err.Description
End Function

' The probability of a value up to x.
Public Function PalvexProbability(ByVal x As Double, ByVal typeName As String, ParamArray parameters() As Variant) As Variant
    Dim given As Variant
    given = parameters
    On Error GoTo Failed
    PalvexProbability = Described(typeName, given).cdf(x)
    Exit Function
Failed:
    PalvexProbability = Err.Description
End Function

' The mean.
Public Function PalvexMean(ByVal typeName As String, ParamArray parameters() As Variant) As Variant
    Dim given As Variant
    given = parameters
    On Error GoTo Failed
    PalvexMean = Described(typeName, given).mean
    Exit Function
Failed:
    PalvexMean = Err.Description
End Function

' A uniform random number that is never 0 or 1: at these ends some types answer with the last value
' that a double can tell apart, and the exponential type has none.
Public Function UniformNumber() As Double
    UniformNumber = (Int(Rnd * 16777216#) + 0.5) / 16777216#
End Function

' The cost of a project: work, price and a delay that may not be negative. Writes the mean and three
' percentiles to the Immediate window.
Public Sub SimulateProject()
    Const trials As Long = 10000
    Dim work As Object, price As Object, delay As Object
    Set work = NewDistribution("Triangular", 80, 100, 150)
    Set price = NewDistribution("Lognormal", 4, 0.25, 0)
    Set delay = NewDistribution("Normal", 2, 5)
    delay.ltl = 0
    Dim fault As String
    If Not delay.ParamsOK(fault) Then Err.Raise vbObjectError + 1, "palvex", fault

    Dim cost() As Double, total As Double, i As Long
    ReDim cost(1 To trials)
    Randomize
    For i = 1 To trials
        cost(i) = work.RandVal(UniformNumber()) * price.RandVal(UniformNumber()) _
                + 300 * delay.RandVal(UniformNumber())
        total = total + cost(i)
    Next i
    Sort cost, 1, trials
    Debug.Print "mean "; Format(total / trials, "0"); ", 10 % "; Format(cost(trials / 10), "0"); _
                ", 50 % "; Format(cost(trials / 2), "0"); ", 90 % "; Format(cost(9 * trials / 10), "0")
End Sub

Private Sub Sort(values() As Double, ByVal first As Long, ByVal last As Long)
    Dim i As Long, j As Long, pivot As Double, kept As Double
    i = first
    j = last
    pivot = values((first + last) \ 2)
    Do While i <= j
        Do While values(i) < pivot: i = i + 1: Loop
        Do While values(j) > pivot: j = j - 1: Loop
        If i <= j Then
            kept = values(i)
            values(i) = values(j)
            values(j) = kept
            i = i + 1
            j = j - 1
        End If
    Loop
    If first < j Then Sort values, first, j
    If i < last Then Sort values, i, last
End Sub
