"""Makes project.ods beside this file: the estimate of a small project that can be simulated at once.

Run by scripts/calc example. The figures are those of `palvex simulate --example`.
"""
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(HERE, "../../hosts/calc/tests"))
from office import Office, properties  # noqa: E402

BOLD = 150.0
DELAYS = (0, 3, 5, 0, 8, 2, 12, 0, 1, 4)

ESTIMATE = [
    ("Item", "Plan", "Unit", "", "", "Delays of ten earlier projects (days)"),
    ("Day rate", 620, "EUR"),
    ("Design", 25, "days"),
    ("Build", 75, "days"),
    ("Test", 20, "days"),
    ("Commissioning", 8, "days"),
    ("Delivery delay", 0, "days"),
    ("Licences", 26000, "EUR"),
    ("Redesign", 0, "days"),
    ("Bad ground", 0, "EUR"),
    (),
    ("Duration", "=B3+B9+B4+B7+B5+B6", "days"),
    ("Labour, a team of four", "=B12*4*B2", "EUR"),
    ("Cost", "=B13+B8+B10", "EUR"),
]
PALVEX = [
    ("# The uncertain figures of the sheet Estimate. palvex > Simulate draws them and writes 'palvex results'.",),
    ("# A formula is a live parameter: commissioning takes at most as long as the test of the same trial.",),
    ("Name", "Type", "Param1", "Param2", "Param3", "LTL", "UTL", "Chance", "Cell", "Unit"),
    ("Trials", "", 10000),
    ("Seed", "", 1),
    ("Day rate", "Normal", 620, 45, "", 550, "", "", "Estimate.B2", "EUR"),
    ("Design", "PERT", 20, 25, 40, "", "", "", "Estimate.B3", "days"),
    ("Build", "Triangular", 60, 75, 120, "", "", "", "Estimate.B4", "days"),
    ("Test", "PERT", 15, 20, 45, "", "", "", "Estimate.B5", "days"),
    ("Commissioning", "Triangular", 5, 8, "=Estimate.B5", "", "", "", "Estimate.B6", "days"),
    ("Delivery delay", "Histogram", "=Estimate.F2:F11", "Raw Data", "", 0, "", "", "Estimate.B7", "days"),
    ("Licences", "Uniform", 18000, 26000, "", "", "", "", "Estimate.B8", "EUR"),
    ("Redesign", "LognormalMean", 15, 10, "", "", 60, 0.25, "Estimate.B9", "days"),
    ("Bad ground", "Triangular", 20000, 35000, 90000, "", "", 0.1, "Estimate.B10", "EUR"),
    ("Duration", "", "", "", "", "", "", "", "Estimate.B12", "days"),
    ("Labour", "", "", "", "", "", "", "", "Estimate.B13", "EUR"),
    ("Cost", "", "", "", "", "", "", "", "Estimate.B14", "EUR"),
]
FUNCTIONS = [
    ("Question", "Answer"),
    ("How likely is the build to take 90 days or less?", '=PALVEX.FUNCTIONS.PROBABILITY("Triangular";90;60;75;120)'),
    ("... and to take longer?", '=PALVEX.FUNCTIONS.EXCEEDANCE("Triangular";90;60;75;120)'),
    ("How long does it take at most, with 80 % confidence?", '=PALVEX.FUNCTIONS.QUANTILE("Triangular";0.8;60;75;120)'),
    ("What does it take on average?", '=PALVEX.FUNCTIONS.MEAN("Triangular";60;75;120)'),
    ("... if 100 days are the end of it?", '=PALVEX.FUNCTIONS.MEAN("Triangular";60;75;120;;;100)'),
    ("What were the delays on average, in classes?", '=PALVEX.FUNCTIONS.MEAN("Histogram";Estimate.F2:F11;"Raw Data")'),
    ("What is wrong with this one?", '=PALVEX.FUNCTIONS.CHECK("Triangular";75;60;120)'),
]


def write(sheet, rows, head, widths):
    for i, row in enumerate(rows):
        for j, value in enumerate(row):
            cell = sheet.getCellByPosition(j, i)
            if isinstance(value, str):
                cell.Formula = value
            else:
                cell.Value = value
    sheet.getCellRangeByPosition(0, head, len(rows[head]) - 1, head).CharWeight = BOLD
    for column, width in enumerate(widths):
        sheet.Columns[column].Width = width


def main():
    office = Office()
    try:
        document = office.new()
        sheets = document.Sheets
        sheets[0].Name = "Estimate"
        sheets.insertNewByName("palvex", 1)
        sheets.insertNewByName("Functions", 2)
        write(sheets[0], ESTIMATE, 0, (4500, 2500, 1500))
        write(sheets[1], PALVEX, 2, (3200, 3000, 2000, 2000, 2000, 1500, 1500, 1500, 2800))
        write(sheets[2], FUNCTIONS, 0, (9500, 6000))
        for row, delay in enumerate(DELAYS, 1):
            sheets[0].getCellByPosition(5, row).Value = delay
        document.storeToURL("file://" + os.path.join(HERE, "project.ods"), properties(FilterName="calc8"))
        document.close(True)
    finally:
        office.close()


if __name__ == "__main__":
    main()
