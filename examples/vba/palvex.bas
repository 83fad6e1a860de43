Attribute VB_Name = "palvex"
' Worksheet functions and a simulation with palvex, for spreadsheets with Visual Basic for Applications.
' Import this file in the Visual Basic editor (File > Import File). The component must be registered;
' no reference is needed.
'
'   =PalvexQuantile(0.9, "Triangular", A1, A2, A3)       the value that 90 % stay below
'   =PalvexProbability(12, "Normal", 10, 2, , , 0)       P(X <= 12), nothing below 0
'   =PalvexDensity(12, "Gamma", 2, 3, 5)                 the density
'   =PalvexMean("PERT", 8, 10, 15)                       the mean; PalvexStDev likewise
'   =PalvexCheck("Triangular", A1, A2, A3)               "" or one sentence that says what is wrong
'
' After type and up to four parameters come the lower and the upper limit, each optional. Where the description
' is wrong a function gives #VALUE!, where there is no number #NUM!, so that SUM cannot pass over a fault.
' The macro SimulateTable runs the table on the active sheet, see docs/automation.md.
Option Explicit

' ==== Computing: the statements that VBA and VBScript share ====

' Kept between calls: setting up a distribution costs more than asking it.
Dim keptLaws
Const MostKeptLaws = 500

' The places of a law, an array.
Const LawObject = 0
Const LawType = 1
Const LawParameters = 2
Const LawLower = 3
Const LawUpper = 4

' The places of a row, an array.
Const RowName = 0
Const RowType = 1
Const RowParameters = 2
Const RowLower = 3
Const RowUpper = 4
Const RowChance = 5
Const RowFormula = 6
Const RowInput = 7
Const RowLaw = 8

' A law by its description: parameters is an array of four, Empty where not given. `fault` receives "" or the
' sentence for people; with a fault the result is Empty.
Function MakeLaw(kind, parameters, lower, upper, fault)
    Dim d, engineType, engineParameters, i
    MakeLaw = Empty
    engineType = kind
    engineParameters = parameters
    fault = TranslatedFault(engineType, engineParameters)
    If fault <> "" Then Exit Function
    Set d = CreateObject("palvex.c_Distribution")
    If Not IsTypeName(d, engineType) Then
        fault = "Unknown distribution type '" & kind & "'."
        Exit Function
    End If
    d.distType = engineType
    For i = 0 To 3
        AssignParameter d, i, engineParameters(i)
    Next
    If IsObject(lower) Then Set d.ltl = lower Else d.ltl = lower
    If IsObject(upper) Then Set d.utl = upper Else d.utl = upper
    If Not d.ParamsOK(fault) Then Exit Function
    MakeLaw = Array(d, engineType, engineParameters, lower, upper)
End Function

Sub AssignParameter(d, i, value)
    Select Case i
        Case 0: If IsObject(value) Then Set d.param1 = value Else d.param1 = value
        Case 1: If IsObject(value) Then Set d.param2 = value Else d.param2 = value
        Case 2: If IsObject(value) Then Set d.param3 = value Else d.param3 = value
        Case 3: If IsObject(value) Then Set d.param4 = value Else d.param4 = value
    End Select
End Sub

' Asked first, because the object refuses an unknown name with a message box.
Function IsTypeName(d, name)
    Dim known
    IsTypeName = False
    For Each known In d.ValidDistributions
        If known = name Then IsTypeName = True
    Next
End Function

' Two more types for people become types of the engine: PERT a beta law, LognormalMean a lognormal one.
Function TranslatedFault(kind, parameters)
    Dim low, likely, high, mean, sd, variance, i
    TranslatedFault = ""
    If kind <> "PERT" And kind <> "LognormalMean" Then Exit Function
    For i = 0 To 2
        If IsObject(parameters(i)) Then parameters(i) = parameters(i).Value
        If Not (IsNumeric(parameters(i)) Or IsEmpty(parameters(i))) Then
            TranslatedFault = "Non-numeric value for parameter " & (i + 1) & " of " & kind & "."
            Exit Function
        End If
    Next
    If kind = "PERT" Then
        low = CDbl(parameters(0))
        likely = CDbl(parameters(1))
        high = CDbl(parameters(2))
        If likely < low Then
            TranslatedFault = "Likely can not be less than Minimum."
        ElseIf high < likely Then
            TranslatedFault = "Maximum can not be less than Likely."
        ElseIf high = low Then
            kind = "Uniform"
            parameters = Array(low, high, Empty, Empty)
        Else
            kind = "Beta"
            parameters = Array(1 + 4 * (likely - low) / (high - low), 1 + 4 * (high - likely) / (high - low), low, high)
        End If
    Else
        mean = CDbl(parameters(0)) - CDbl(parameters(2))
        sd = CDbl(parameters(1))
        If sd <= 0 Then
            TranslatedFault = "Value of zero or less for Std Dev.  Must be a positive real number."
        ElseIf mean <= 0 Then
            TranslatedFault = "Mean must be greater than Minimum."
        Else
            variance = Log(1 + (sd / mean) * (sd / mean))
            kind = "Lognormal"
            parameters = Array(Log(mean) - variance / 2, Sqr(variance), CDbl(parameters(2)), Empty)
        End If
    End If
End Function

' MakeLaw, or the law of an earlier call with the same description. Data ranges are always read anew.
Function KeptLaw(kind, parameters, lower, upper, fault)
    Dim key, i
    If kind = "Histogram" Then
        KeptLaw = MakeLaw(kind, parameters, lower, upper, fault)
        Exit Function
    End If
    key = kind
    For i = 0 To 3
        key = key & "|" & VarType(parameters(i)) & ":" & CStr(parameters(i))
    Next
    key = key & "|" & VarType(lower) & ":" & CStr(lower) & "|" & VarType(upper) & ":" & CStr(upper)
    If Not IsObject(keptLaws) Then Set keptLaws = CreateObject("Scripting.Dictionary")
    If keptLaws.Count > MostKeptLaws Then keptLaws.RemoveAll
    If Not keptLaws.Exists(key) Then
        Dim made
        made = MakeLaw(kind, parameters, lower, upper, fault)
        If fault <> "" Then
            KeptLaw = Empty
            Exit Function
        End If
        keptLaws.Add key, made
    End If
    fault = ""
    KeptLaw = keptLaws.Item(key)
End Function

' ---- the law between its limits ----
' cdf and pdf of the component keep settled departures from the law (docs/departures.md); a worksheet is to
' show the law.

Function LawQuantile(law, p)
    LawQuantile = law(LawObject).RandVal(p)
End Function

Function LawMean(law)
    LawMean = law(LawObject).mean
End Function

Function LawStDev(law)
    LawStDev = law(LawObject).StDev
End Function

Function LawProbability(law, x)
    Dim lower, upper, below, above, part
    part = UnlimitedProbability(law, x)
    LimitsOf law, lower, upper
    below = 0
    above = 1
    If Not IsEmpty(lower) Then below = UnlimitedProbability(law, lower)
    If Not IsEmpty(upper) Then above = UnlimitedProbability(law, upper)
    If IsReversed(lower, upper) Then
        If x < lower And part > above Then part = above  ' what lies between the limits is cut out
        If x >= lower Then part = part - below + above
        LawProbability = part / (1 - below + above)
    Else
        If part < below Then part = below
        If part > above Then part = above
        LawProbability = (part - below) / (above - below)
    End If
End Function

Function LawDensity(law, x)
    Dim lower, upper, below, above, d
    LimitsOf law, lower, upper
    below = 0
    above = 1
    If Not IsEmpty(lower) Then below = UnlimitedProbability(law, lower)
    If Not IsEmpty(upper) Then above = UnlimitedProbability(law, upper)
    If IsReversed(lower, upper) Then above = above + 1
    d = law(LawObject).pdf(x) / (above - below)
    Select Case law(LawType)
        Case "Gamma"
            d = d / CDbl(law(LawParameters)(1))
        Case "Beta"
            d = d / (CDbl(law(LawParameters)(3)) - CDbl(law(LawParameters)(2)))
    End Select
    LawDensity = d
End Function

Sub LimitsOf(law, lower, upper)
    lower = Empty
    upper = Empty
    If Not IsEmpty(law(LawLower)) And IsNumeric(law(LawLower)) Then lower = CDbl(law(LawLower))
    If Not IsEmpty(law(LawUpper)) And IsNumeric(law(LawUpper)) Then upper = CDbl(law(LawUpper))
End Sub

Function IsReversed(lower, upper)
    IsReversed = False
    If IsEmpty(lower) Or IsEmpty(upper) Then Exit Function
    IsReversed = lower > upper
End Function

' P(X <= x) without limits.
Function UnlimitedProbability(law, x)
    Dim p, low, high, fault
    p = law(LawParameters)
    Select Case law(LawType)
        Case "Gamma"
            low = CDbl(p(2))  ' Empty is 0
            If x <= low Then
                UnlimitedProbability = 0
            Else
                Dim unitGamma
                unitGamma = KeptLaw("Gamma", Array(p(0), 1, 0, Empty), Empty, Empty, fault)
                UnlimitedProbability = unitGamma(LawObject).cdf((x - low) / CDbl(p(1)))
            End If
        Case "Beta"
            low = CDbl(p(2))
            high = CDbl(p(3))
            If x <= low Then
                UnlimitedProbability = 0
            ElseIf x >= high Then
                UnlimitedProbability = 1
            ElseIf CDbl(p(1)) = 1 Then
                UnlimitedProbability = ((x - low) / (high - low)) ^ CDbl(p(0))
            Else
                UnlimitedProbability = law(LawObject).cdf(x)
            End If
        Case "Johnson"
            UnlimitedProbability = PositionOf(law, x)
        Case Else
            UnlimitedProbability = law(LawObject).cdf(x)
    End Select
End Function

' The p whose value without limits is x, by bisection.
Function PositionOf(law, x)
    Dim bare, low, high, middle, fault, i
    bare = KeptLaw(law(LawType), law(LawParameters), Empty, Empty, fault)
    low = 0
    high = 1
    For i = 1 To 60
        middle = (low + high) / 2
        If middle <= low Or middle >= high Then Exit For
        If bare(LawObject).RandVal(middle) <= x Then low = middle Else high = middle
    Next
    PositionOf = low
End Function

' ---- random numbers ----
' Philox4x32-10 (Salmon, Moraes, Dror, Shaw: Parallel random numbers: as easy as 1, 2, 3; SC11), the
' generator of "palvex simulate": the same seed, trial and input give the same number here and there. Rnd of
' VBA repeats after 16.7 million numbers, which a simulation of ten inputs and two million trials exceeds.

' The number of (0, 1) that belongs to seed, trial (from 0), input (from 1) and purpose (0: its value, 1: whether
' it happens). Seed and trial are whole numbers from 0 to 2^53.
Function UniformNumber(seed, trial, inputNumber, purpose)
    Dim w
    w = Philox(Array(LowWord(trial), HighWord(trial), CDbl(inputNumber), CDbl(purpose)), LowWord(seed), HighWord(seed))
    UniformNumber = (w(1) * 1048576 + Int(w(0) / 4096) + 0.5) / 4503599627370496
End Function

' Ten rounds on a counter of four words; words are whole doubles from 0 to 2^32 - 1.
Function Philox(counter, key0, key1)
    Dim c, turn, high0, low0, high1, low1
    c = counter
    For turn = 1 To 10
        MultiplyWords 53841, 8019, c(0), high0, low0   ' D2511F53
        MultiplyWords 52638, 36183, c(2), high1, low1  ' CD9E8D57
        c = Array(XorWords(XorWords(high1, c(1)), key0), low1, XorWords(XorWords(high0, c(3)), key1), low0)
        key0 = LowWord(key0 + 2654435769)              ' 9E3779B9
        key1 = LowWord(key1 + 3144134277)              ' BB67AE85
    Next
    Philox = c
End Function

' Both words of the product of b and a, whose halves are aHigh and aLow. All steps are exact in doubles.
Sub MultiplyWords(aHigh, aLow, b, high, low)
    Dim bHigh, bLow, lowest, middle
    bHigh = Int(b / 65536)
    bLow = b - bHigh * 65536
    lowest = CDbl(aLow) * bLow
    middle = CDbl(aLow) * bHigh + CDbl(aHigh) * bLow + Int(lowest / 65536)
    low = LowWord(middle * 65536) + (lowest - Int(lowest / 65536) * 65536)
    high = CDbl(aHigh) * bHigh + Int(middle / 65536)
End Sub

Function XorWords(a, b)
    Dim both
    both = SignedWord(a) Xor SignedWord(b)
    If both < 0 Then XorWords = both + 4294967296 Else XorWords = CDbl(both)
End Function

Function SignedWord(word)
    If word >= 2147483648 Then SignedWord = CLng(word - 4294967296) Else SignedWord = CLng(word)
End Function

Function LowWord(number)
    LowWord = CDbl(number) - Int(CDbl(number) / 4294967296) * 4294967296
End Function

Function HighWord(number)
    HighWord = LowWord(Int(CDbl(number) / 4294967296))
End Function

' ---- simulation ----
' The table has the columns Name, Type, Param1 to Param4, LTL, UTL, Chance and Formula, in any order; its first
' row names them. A row with a type is an input, a row with a formula a result of [Name]s above it; without any
' formula there is one result, Total. A parameter "=[Name]" is the value of a row above in the same trial.

' Runs `trials` trials of a table (a two-dimensional array). Returns a dictionary of results: name, sorted array
' of values (from 0). `fault` receives "" or one sentence.
Function Simulate(table, trials, seed, fault)
    Dim results, rows, names, row, series, total, valueOf, trial, i
    Set results = CreateObject("Scripting.Dictionary")
    Set Simulate = results
    Set rows = ReadTable(table, fault)
    If fault <> "" Then Exit Function
    Set names = CreateObject("Scripting.Dictionary")
    For Each row In rows.Items
        If row(RowFormula) <> "" Then names.Add row(RowName), names.Count
    Next
    total = names.Count = 0
    If total Then names.Add "Total", 0
    ReDim series(names.Count - 1, trials - 1)

    For trial = 0 To trials - 1
        Set valueOf = CreateObject("Scripting.Dictionary")
        valueOf.CompareMode = 1
        If total Then series(0, trial) = 0
        For Each row In rows.Items
            valueOf(row(RowName)) = TrialValue(row, valueOf, trial, seed, fault)
            If fault <> "" Then
                fault = "Trial " & (trial + 1) & ", " & row(RowName) & ": " & fault
                Exit Function
            End If
            If total Then
                series(0, trial) = series(0, trial) + valueOf(row(RowName))
            ElseIf row(RowFormula) <> "" Then
                series(names(row(RowName)), trial) = valueOf(row(RowName))
            End If
        Next
    Next

    Dim name, values
    For Each name In names.Keys
        ReDim values(trials - 1)
        For i = 0 To trials - 1
            values(i) = series(names(name), i)
        Next
        SortValues values, 0, trials - 1
        results.Add name, values
    Next
End Function

' What a row gives in a trial, or why it gives nothing.
Function TrialValue(row, valueOf, trial, seed, fault)
    On Error Resume Next
    If row(RowFormula) <> "" Then
        TrialValue = FormulaValue(row(RowFormula), valueOf)
    Else
        TrialValue = DrawnValue(row, valueOf, trial, seed, fault)
    End If
    If Err.Number <> 0 Then fault = Err.Description
    Err.Clear
End Function

' One input's value in a trial. A row with references is set up anew.
Function DrawnValue(row, valueOf, trial, seed, fault)
    Dim law, parameters, i
    DrawnValue = 0
    fault = ""
    If row(RowChance) < 1 Then
        If UniformNumber(seed, trial, row(RowInput), 1) >= row(RowChance) Then Exit Function
    End If
    law = row(RowLaw)
    If IsEmpty(law) Then
        parameters = row(RowParameters)
        For i = 0 To 3
            parameters(i) = Resolved(parameters(i), valueOf)
        Next
        law = MakeLaw(row(RowType), parameters, Resolved(row(RowLower), valueOf), Resolved(row(RowUpper), valueOf), fault)
        If fault <> "" Then Exit Function
    End If
    DrawnValue = LawQuantile(law, UniformNumber(seed, trial, row(RowInput), 0))
End Function

Function IsReference(content)
    IsReference = False
    If VarType(content) = vbString Then IsReference = Left(content, 2) = "=[" And Right(content, 1) = "]"
End Function

Function Referred(content)
    Referred = Mid(content, 3, Len(content) - 3)
End Function

Function Resolved(content, valueOf)
    If IsReference(content) Then Resolved = valueOf(Referred(content)) Else Resolved = content
End Function

' ---- formulas: numbers, [Name]s, + - * / ^, comparisons, c ? a : b and some functions ----

Function FormulaValue(formula, valueOf)
    Dim place
    place = 1
    FormulaValue = ChoiceAt(formula, place, valueOf)
    If NextSign(formula, place) <> "" Then FormulaFault formula, place
End Function

Sub FormulaFault(formula, place)
    Err.Raise 5, "palvex", "The formula can not be read from character " & place & " on: " & formula
End Sub

' The character at the place, blanks left out; "" at the end.
Function NextSign(formula, place)
    Do While Mid(formula, place, 1) = " "
        place = place + 1
    Loop
    NextSign = Mid(formula, place, 1)
End Function

Function Taken(formula, place, sign)
    NextSign formula, place
    Taken = Mid(formula, place, Len(sign)) = sign
    If Taken Then place = place + Len(sign)
End Function

Function ChoiceAt(formula, place, valueOf)
    Dim yes, no
    ChoiceAt = ComparisonAt(formula, place, valueOf)
    If Not Taken(formula, place, "?") Then Exit Function
    yes = ChoiceAt(formula, place, valueOf)
    If Not Taken(formula, place, ":") Then FormulaFault formula, place
    no = ChoiceAt(formula, place, valueOf)
    If ChoiceAt <> 0 Then ChoiceAt = yes Else ChoiceAt = no
End Function

Function ComparisonAt(formula, place, valueOf)
    Dim sign, other
    ComparisonAt = SumAt(formula, place, valueOf)
    For Each sign In Array("<=", ">=", "==", "!=", "<", ">")
        If Taken(formula, place, sign) Then
            other = SumAt(formula, place, valueOf)
            Select Case sign
                Case "<=": ComparisonAt = Abs(ComparisonAt <= other)
                Case ">=": ComparisonAt = Abs(ComparisonAt >= other)
                Case "==": ComparisonAt = Abs(ComparisonAt = other)
                Case "!=": ComparisonAt = Abs(ComparisonAt <> other)
                Case "<": ComparisonAt = Abs(ComparisonAt < other)
                Case ">": ComparisonAt = Abs(ComparisonAt > other)
            End Select
            Exit Function
        End If
    Next
End Function

Function SumAt(formula, place, valueOf)
    Dim term
    term = ProductAt(formula, place, valueOf)
    Do
        If Taken(formula, place, "+") Then
            term = term + ProductAt(formula, place, valueOf)
        ElseIf Taken(formula, place, "-") Then
            term = term - ProductAt(formula, place, valueOf)
        Else
            Exit Do
        End If
    Loop
    SumAt = term
End Function

Function ProductAt(formula, place, valueOf)
    Dim factor
    factor = SignedAt(formula, place, valueOf)
    Do
        If Taken(formula, place, "*") Then
            factor = factor * SignedAt(formula, place, valueOf)
        ElseIf Taken(formula, place, "/") Then
            factor = factor / SignedAt(formula, place, valueOf)
        Else
            Exit Do
        End If
    Loop
    ProductAt = factor
End Function

Function SignedAt(formula, place, valueOf)
    If Taken(formula, place, "-") Then
        SignedAt = -SignedAt(formula, place, valueOf)
    Else
        SignedAt = PowerAt(formula, place, valueOf)
    End If
End Function

Function PowerAt(formula, place, valueOf)
    Dim base
    base = OperandAt(formula, place, valueOf)
    If Taken(formula, place, "^") Then base = base ^ SignedAt(formula, place, valueOf)
    PowerAt = base
End Function

Function OperandAt(formula, place, valueOf)
    Dim sign, closing, start
    sign = NextSign(formula, place)
    start = place
    If sign = "(" Then
        place = place + 1
        OperandAt = ChoiceAt(formula, place, valueOf)
        If Not Taken(formula, place, ")") Then FormulaFault formula, place
    ElseIf sign = "[" Then
        closing = InStr(place, formula, "]")
        If closing = 0 Then FormulaFault formula, place
        OperandAt = valueOf(Mid(formula, place + 1, closing - place - 1))
        place = closing + 1
    ElseIf IsOneOf(sign, "0123456789.") Then
        Do While IsOneOf(Mid(formula, place, 1), "0123456789.")
            place = place + 1
        Loop
        OperandAt = DecimalValue(Mid(formula, start, place - start))
    Else
        Do While IsOneOf(LCase(Mid(formula, place, 1)), "abcdefghijklmnopqrstuvwxyz0123456789")
            place = place + 1
        Loop
        If Not Taken(formula, place, "(") Then FormulaFault formula, start
        OperandAt = FunctionAt(LCase(Trim(Mid(formula, start, place - start - 1))), formula, place, valueOf)
    End If
End Function

Function IsOneOf(sign, signs)
    IsOneOf = False
    If sign <> "" Then IsOneOf = InStr(signs, sign) > 0
End Function

' Digits with a point, whatever the regional settings.
Function DecimalValue(text)
    Dim parts
    parts = Split(text, ".")
    DecimalValue = 0
    If parts(0) <> "" Then DecimalValue = CDbl(parts(0))
    If UBound(parts) > 0 Then
        If parts(1) <> "" Then DecimalValue = DecimalValue + CDbl(parts(1)) / 10 ^ Len(parts(1))
    End If
End Function

' The value of a function from behind its opening bracket.
Function FunctionAt(name, formula, place, valueOf)
    Dim value, other
    value = ChoiceAt(formula, place, valueOf)
    Select Case name
        Case "abs": value = Abs(value)
        Case "exp": value = Exp(value)
        Case "ln": value = Log(value)
        Case "log10": value = Log(value) / Log(10)
        Case "sqrt": value = Sqr(value)
        Case "min", "max", "sum"
        Case Else: Err.Raise 5, "palvex", "There is no function '" & name & "': " & formula
    End Select
    Do While Taken(formula, place, ",")
        other = ChoiceAt(formula, place, valueOf)
        Select Case name
            Case "min": If other < value Then value = other
            Case "max": If other > value Then value = other
            Case "sum": value = value + other
            Case Else: FormulaFault formula, place
        End Select
    Loop
    If Not Taken(formula, place, ")") Then FormulaFault formula, place
    FunctionAt = value
End Function

' The rows of a table in order, or the first fault.
Function ReadTable(table, fault)
    Dim rows, columns, column, r, inputs, row, law, known
    Set rows = CreateObject("Scripting.Dictionary")
    rows.CompareMode = 1
    Set ReadTable = rows
    Set columns = CreateObject("Scripting.Dictionary")
    columns.CompareMode = 1
    fault = ""
    For column = LBound(table, 2) To UBound(table, 2)
        If CStr(table(LBound(table, 1), column)) <> "" Then columns(Trim(CStr(table(LBound(table, 1), column)))) = column
    Next
    If Not columns.Exists("Name") Then
        fault = "The first row of the table names its columns; there is none called Name."
        Exit Function
    End If
    inputs = 0
    For r = LBound(table, 1) + 1 To UBound(table, 1)
        If TextOf(table, r, columns, "Name") & TextOf(table, r, columns, "Type") & TextOf(table, r, columns, "Formula") <> "" _
           And Left(TextOf(table, r, columns, "Name"), 1) <> "#" Then
            row = Array(TextOf(table, r, columns, "Name"), TextOf(table, r, columns, "Type"), _
                Array(CellOf(table, r, columns, "Param1"), CellOf(table, r, columns, "Param2"), _
                      CellOf(table, r, columns, "Param3"), CellOf(table, r, columns, "Param4")), _
                CellOf(table, r, columns, "LTL"), CellOf(table, r, columns, "UTL"), _
                ChanceOf(CellOf(table, r, columns, "Chance")), TextOf(table, r, columns, "Formula"), 0, Empty)
            fault = RowFault(row, rows)
            If fault = "" And row(RowType) <> "" Then
                inputs = inputs + 1
                row(RowInput) = inputs
                If Not HasReference(row) Then row(RowLaw) = MakeLaw(row(RowType), row(RowParameters), row(RowLower), row(RowUpper), fault)
            End If
            If fault <> "" Then
                fault = "Row " & (r - LBound(table, 1) + 1) & ", " & row(RowName) & ": " & fault
                Exit Function
            End If
            rows.Add row(RowName), row
        End If
    Next
    If rows.Count = 0 Then fault = "The table has no rows."
End Function

Function CellOf(table, r, columns, name)
    CellOf = Empty
    If columns.Exists(name) Then CellOf = table(r, columns(name))
    If VarType(CellOf) = vbString Then
        If Trim(CellOf) = "" Then CellOf = Empty
    End If
End Function

Function TextOf(table, r, columns, name)
    Dim content
    content = CellOf(table, r, columns, name)
    If VarType(content) = vbError Then TextOf = "error value" Else TextOf = Trim(CStr(content))
End Function

' The chance as a number; -1 where it is none.
Function ChanceOf(content)
    ChanceOf = -1
    If IsEmpty(content) Then
        ChanceOf = 1
    ElseIf VarType(content) = vbString And Right(Trim(content), 1) = "%" Then
        If IsNumeric(Left(Trim(content), Len(Trim(content)) - 1)) Then ChanceOf = CDbl(Left(Trim(content), Len(Trim(content)) - 1)) / 100
    ElseIf IsNumeric(content) Then
        ChanceOf = CDbl(content)
    End If
End Function

Function HasReference(row)
    Dim i
    HasReference = IsReference(row(RowLower)) Or IsReference(row(RowUpper))
    For i = 0 To 3
        If IsReference(row(RowParameters)(i)) Then HasReference = True
    Next
End Function

' What is wrong with a row, given the rows above it: "" or a sentence.
Function RowFault(row, above)
    Dim i, rest, name, content
    RowFault = ""
    If row(RowName) = "" Then
        RowFault = "The name is missing."
    ElseIf InStr(row(RowName), "[") + InStr(row(RowName), "]") > 0 Then
        RowFault = "A name holds no brackets."
    ElseIf above.Exists(row(RowName)) Then
        RowFault = "A row above has the same name."
    ElseIf row(RowType) = "" And row(RowFormula) = "" Then
        RowFault = "A row needs a type or a formula."
    ElseIf row(RowType) <> "" And row(RowFormula) <> "" Then
        RowFault = "A row has a type or a formula, not both."
    ElseIf row(RowChance) < 0 Or row(RowChance) > 1 Then
        RowFault = "A chance is a number from 0 to 1."
    End If
    If RowFault <> "" Then Exit Function
    For Each content In Array(row(RowParameters)(0), row(RowParameters)(1), row(RowParameters)(2), row(RowParameters)(3), row(RowLower), row(RowUpper))
        If IsReference(content) Then
            If Not above.Exists(Referred(content)) Then RowFault = "There is no row '" & Referred(content) & "' above."
        End If
    Next
    rest = row(RowFormula)
    For Each name In above.Keys
        rest = Replace(rest, "[" & name & "]", "", 1, -1, 1)
    Next
    i = InStr(rest, "[")
    If i > 0 Then RowFault = "There is no row '" & Split(Mid(rest, i + 1), "]")(0) & "' above."
End Function

' Quicksort.
Sub SortValues(values, first, last)
    Dim i, j, pivot, kept
    i = first
    j = last
    pivot = values((first + last) \ 2)
    Do While i <= j
        Do While values(i) < pivot
            i = i + 1
        Loop
        Do While values(j) > pivot
            j = j - 1
        Loop
        If i <= j Then
            kept = values(i)
            values(i) = values(j)
            values(j) = kept
            i = i + 1
            j = j - 1
        End If
    Loop
    If first < j Then SortValues values, first, j
    If i < last Then SortValues values, i, last
End Sub

' The ceil(percent n / 100)-th smallest of sorted values (the smallest for 0).
Function Percentile(values, percent)
    Dim rank
    rank = -Int(-percent * (UBound(values) + 1) / 100)
    If rank < 1 Then rank = 1
    Percentile = values(rank - 1)
End Function

Function MeanOf(values)
    Dim i, total
    total = 0
    For i = 0 To UBound(values)
        total = total + values(i)
    Next
    MeanOf = total / (UBound(values) + 1)
End Function

Function StDevOf(values)
    Dim i, total, mean
    mean = MeanOf(values)
    total = 0
    For i = 0 To UBound(values)
        total = total + (values(i) - mean) * (values(i) - mean)
    Next
    If UBound(values) > 0 Then StDevOf = Sqr(total / UBound(values)) Else StDevOf = 0
End Function

' ==== Worksheet: what only VBA knows ====

Public Function PalvexDensity(ByVal x As Double, ByVal kind As String, ByVal param1 As Variant, Optional ByVal param2 As Variant, Optional ByVal param3 As Variant, Optional ByVal param4 As Variant, Optional ByVal ltl As Variant, Optional ByVal utl As Variant) As Variant
    PalvexDensity = Answer("density", x, kind, Array(Given(param1), Given(param2), Given(param3), Given(param4)), Given(ltl), Given(utl))
End Function

Public Function PalvexProbability(ByVal x As Double, ByVal kind As String, ByVal param1 As Variant, Optional ByVal param2 As Variant, Optional ByVal param3 As Variant, Optional ByVal param4 As Variant, Optional ByVal ltl As Variant, Optional ByVal utl As Variant) As Variant
    PalvexProbability = Answer("probability", x, kind, Array(Given(param1), Given(param2), Given(param3), Given(param4)), Given(ltl), Given(utl))
End Function

Public Function PalvexQuantile(ByVal p As Double, ByVal kind As String, ByVal param1 As Variant, Optional ByVal param2 As Variant, Optional ByVal param3 As Variant, Optional ByVal param4 As Variant, Optional ByVal ltl As Variant, Optional ByVal utl As Variant) As Variant
    PalvexQuantile = Answer("quantile", p, kind, Array(Given(param1), Given(param2), Given(param3), Given(param4)), Given(ltl), Given(utl))
End Function

Public Function PalvexMean(ByVal kind As String, ByVal param1 As Variant, Optional ByVal param2 As Variant, Optional ByVal param3 As Variant, Optional ByVal param4 As Variant, Optional ByVal ltl As Variant, Optional ByVal utl As Variant) As Variant
    PalvexMean = Answer("mean", 0, kind, Array(Given(param1), Given(param2), Given(param3), Given(param4)), Given(ltl), Given(utl))
End Function

Public Function PalvexStDev(ByVal kind As String, ByVal param1 As Variant, Optional ByVal param2 As Variant, Optional ByVal param3 As Variant, Optional ByVal param4 As Variant, Optional ByVal ltl As Variant, Optional ByVal utl As Variant) As Variant
    PalvexStDev = Answer("sd", 0, kind, Array(Given(param1), Given(param2), Given(param3), Given(param4)), Given(ltl), Given(utl))
End Function

' "" or one sentence. Cells go to the engine as cells, so that the sentence can speak of them.
Public Function PalvexCheck(ByVal kind As String, ByVal param1 As Variant, Optional ByVal param2 As Variant, Optional ByVal param3 As Variant, Optional ByVal param4 As Variant, Optional ByVal ltl As Variant, Optional ByVal utl As Variant) As Variant
    Dim law As Variant, fault As Variant
    On Error GoTo Failed
    law = MakeLaw(kind, Array(Present(param1), Present(param2), Present(param3), Present(param4)), Present(ltl), Present(utl), fault)
    PalvexCheck = fault
    Exit Function
Failed:
    PalvexCheck = Err.Description
End Function

' A worksheet error in place of a number that is not there: a fault of the description is #VALUE!, one of the
' arithmetic #NUM!, a density that the component does not know #N/A.
Private Function Answer(ByVal question As String, ByVal x As Double, ByVal kind As String, ByVal parameters As Variant, ByVal lower As Variant, ByVal upper As Variant) As Variant
    Const noNumber As Long = 2036, badDescription As Long = 2015, notKnown As Long = 2042
    Dim law As Variant, fault As Variant
    On Error GoTo Failed
    law = KeptLaw(kind, parameters, lower, upper, fault)
    If fault <> "" Then
        Answer = CVErr(badDescription)
        Exit Function
    End If
    Select Case question
        Case "density"
            If law(LawType) = "Johnson" Then Answer = CVErr(notKnown) Else Answer = LawDensity(law, x)
        Case "probability": Answer = LawProbability(law, x)
        Case "quantile"
            If x < 0 Or x > 1 Then Answer = CVErr(noNumber) Else Answer = LawQuantile(law, x)
        Case "mean": Answer = LawMean(law)
        Case "sd": Answer = LawStDev(law)
    End Select
    Exit Function
Failed:
    Answer = CVErr(noNumber)
End Function

' The value of a cell or number, a range of several cells as it is, Empty for what was left out.
Private Function Given(ByVal argument As Variant) As Variant
    If IsMissing(argument) Then
        Given = Empty
    ElseIf IsObject(argument) Then
        If argument.Count > 1 Then Set Given = argument Else Given = argument.Value
    Else
        Given = argument
    End If
End Function

' The argument itself, Empty for what was left out.
Private Function Present(ByVal argument As Variant) As Variant
    If IsMissing(argument) Then
        Present = Empty
    ElseIf IsObject(argument) Then
        Set Present = argument
    Else
        Present = argument
    End If
End Function

' Simulates the table around cell A1 of the active sheet and writes a sheet "palvex results": figures, and the
' points of an S-curve for a chart. The same seed gives the same numbers; 0 takes one from the clock.
Public Sub SimulateTable()
    Dim source As Worksheet, target As Worksheet, fault As Variant, results As Object
    Dim trials As Long, seed As Double, name As Variant, column As Long, percent As Variant, r As Long
    On Error GoTo Failed
    Set source = ActiveSheet
    trials = Val(InputBox("Trials", "palvex", "10000"))
    If trials < 1 Then Exit Sub
    seed = Int(Val(InputBox("Seed (0: from the clock)", "palvex", "1")))
    If seed <= 0 Then seed = Int(Now * 86400#)
    If source.Range("A1").CurrentRegion.Cells.Count < 2 Then
        MsgBox "There is no table around cell A1 of this sheet.", vbExclamation, "palvex"
        Exit Sub
    End If
    Set results = Simulate(source.Range("A1").CurrentRegion.Value, trials, seed, fault)
    If fault <> "" Then
        MsgBox fault, vbExclamation, "palvex"
        Exit Sub
    End If

    On Error Resume Next
    Set target = source.Parent.Worksheets("palvex results")
    On Error GoTo Failed
    If target Is Nothing Then
        Set target = source.Parent.Worksheets.Add(After:=source)
        target.Name = "palvex results"
    End If
    target.Cells.ClearContents
    target.Range("A1").Value = "Trials"
    target.Range("B1").Value = trials
    target.Range("A2").Value = "Seed"
    target.Range("B2").Value = seed
    target.Range("A4").Value = "Result"
    target.Range("A5").Value = "Mean"
    target.Range("A6").Value = "Standard error of the mean"
    target.Range("A7").Value = "Standard deviation"
    For percent = 0 To 100
        target.Cells(8 + percent, 1).Value = percent / 100
    Next
    target.Range("A8:A108").NumberFormat = "0%"
    column = 2
    For Each name In results.Keys
        target.Cells(4, column).Value = name
        target.Cells(5, column).Value = MeanOf(results(name))
        target.Cells(6, column).Value = StDevOf(results(name)) / Sqr(trials)
        target.Cells(7, column).Value = StDevOf(results(name))
        For r = 0 To 100
            target.Cells(8 + r, column).Value = Percentile(results(name), r)
        Next
        column = column + 1
    Next
    target.Activate
    Exit Sub
Failed:
    MsgBox Err.Description, vbExclamation, "palvex"
End Sub
