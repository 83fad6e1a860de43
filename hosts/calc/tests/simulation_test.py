"""Simulations of workbooks: the menu's service, the terminal program, and a CSV table of the same formulas."""
import json
import os
import signal
import subprocess
import time
import unittest

from office import BUILD, OfficeTest, properties

PALVEX = os.path.join(BUILD, "hosts/terminal/palvex")
FILTERS = {"ods": "calc8", "xlsx": "Calc MS Excel 2007 XML"}
TRIALS = 3000

COSTS = {"A1": "Rate", "B1": 600, "B2": 25, "B3": 80, "B4": 0, "B5": "=B2+B3+B4", "B6": "=B5*B1",
         "B8": "=2*B2", "B9": "=PALVEX.FUNCTIONS.QUANTILE(\"Uniform\";0.5;B2;B3)"}
# Rework can take as long as twice the design of the same trial: a live parameter.
TABLE = [
    ("# A project",),
    ("Name", "Type", "Param1", "Param2", "Param3", "Chance", "Cell", "Unit"),
    ("Trials", "", TRIALS),
    ("Seed", "", 7),
    ("Sampling", "", "lhs"),
    ("Rate", "Normal", 620, 45, "", "", "'My costs'.B1", "EUR"),
    ("Design", "PERT", 20, 25, 40, "", "'My costs'!$B$2", "days"),
    ("Build", "Histogram", "='My costs'.D1:D4", "Raw Data", "", "", "$'My costs'.$B$3", "days"),
    ("Rework", "Triangular", 5, 8, "='My costs'.B8", 0.5, "'My costs'.B4", "days"),
    ("Days", "", "", "", "", "", "'My costs'.B5", "days"),
    ("Cost", "", "", "", "", "", "'My costs'.B6", "EUR"),
    ("Middle", "", "", "", "", "", "'My costs'.B9"),
]
BUILD_TIMES = (60.0, 75.0, 80.0, 120.0)
CSV = """Name,Type,Param1,Param2,Param3,Chance,Formula,Data
Rate,Normal,620,45,,,,60
Design,PERT,20,25,40,,,75
Build,Histogram,=H2:H6,Raw Data,,,,80
Rework,Triangular,5,8,=[Longest],0.5,,120
Days,,,,,,[Design]+[Build]+[Rework],
Cost,,,,,,[Days]*[Rate],
Middle,,,,,,([Design]+[Build])/2,
""".replace("Rework,", "Longest,,,,,,2*[Design],\nRework,", 1)


def fill(sheet, cells):
    for address, value in cells.items():
        cell = sheet.getCellRangeByName(address)
        if isinstance(value, str):
            cell.Formula = value
        else:
            cell.Value = value


def simulate(*arguments, **environment):
    return subprocess.run([PALVEX, "simulate", *arguments], capture_output=True, text=True, timeout=120,
                          env={**os.environ, **environment})


def results(*arguments):
    run = simulate(*arguments, "--json")
    assert run.returncode == 0, run.stderr
    return json.loads(run.stdout)


def wait_until(holds):
    for _ in range(300):
        if holds():
            return
        time.sleep(0.1)
    raise AssertionError("did not happen within half a minute")


class SimulationTest(OfficeTest):
    def setUp(self):
        super().setUp()
        self.service = self.office.create("palvex.Simulation")
        sheets = self.document.Sheets
        sheets.insertNewByName("My costs", 0)
        self.costs = sheets.getByName("My costs")
        fill(self.costs, COSTS)
        self.costs.getCellRangeByName("D1:D4").setDataArray(tuple((days,) for days in BUILD_TIMES))

    def insert_table(self, rows=TABLE):
        self.document.Sheets.insertNewByName("palvex", 1)
        fill(self.document.Sheets.getByName("palvex"),
             {"ABCDEFGH"[column] + str(row): value for row, line in enumerate(rows, 1)
              for column, value in enumerate(line) if value != ""})

    def store(self, extension="ods"):
        path = self.office.path("project." + extension)
        self.document.storeToURL("file://" + path, properties(FilterName=FILTERS[extension]))
        return path

    def written_results(self):
        rows = self.document.Sheets.getByName("palvex results").getCellRangeByName("A1:D20").getDataArray()
        return {row[0]: row[1:] for row in rows}

    def assert_fault(self, event, *parts):
        with self.assertRaises(Exception) as raised:
            self.service.trigger(event)
        for part in parts:
            self.assertIn(part, raised.exception.Message)

    def test_same_numbers_on_all_ways(self):
        self.insert_table()
        self.service.trigger("run")
        written = self.written_results()
        self.assertEqual((written["Trials"][0], written["Seed"][0], written["Sampling"][0]), (TRIALS, 7, "lhs"))
        path = self.store()
        ways = {"ods": results(path), "xlsx": results(self.store("xlsx")), "jobs": results(path, "--jobs", "2")}
        for name, way in ways.items():
            with self.subTest(name):
                self.assertEqual(way, ways["ods"])
        for place, result in enumerate(ways["ods"]["results"]):
            with self.subTest(result["name"]):
                self.assertEqual(written["Result"][place], result["name"])
                for label, figure in (("Mean", result["mean"]), ("Standard deviation", result["sd"]),
                                      ("P80", result["percentiles"][3]["value"])):
                    self.assertEqual(written[label][place], figure)
        table = self.office.path("project.csv")
        with open(table, "w", encoding="utf-8") as file:
            file.write(CSV)
        csv = results(table, "-n", str(TRIALS), "--seed", "7", "--sampling", "lhs")
        named = {result["name"]: result for result in csv["results"]}
        for result in ways["ods"]["results"]:
            for figure in ("mean", "sd", "min", "max"):
                self.assertAlmostEqual(result[figure], named[result["name"]][figure],
                                       delta=1e-12 * abs(result[figure]))
        # In closed form: the law's means, and half of the reworks.
        design, build = (20 + 4 * 25 + 40) / 6, ways["ods"]["inputs"][2]["mean"]
        self.assertAlmostEqual(named["Days"]["mean"], design + build + 0.5 * (5 + 8 + 2 * design) / 3, delta=0.4)

    def test_options_hold_before_the_table(self):
        self.insert_table()
        way = results(self.store(), "-n", "100", "--seed", "9", "--sampling", "random")
        self.assertEqual((way["trials"], way["seed"], way["sampling"]), (100, 9, "random"))

    def test_document_is_not_touched(self):
        self.insert_table()
        self.costs.protect("")  # the copy's inputs change all the same
        self.document.UndoManager.clear()
        self.service.trigger("run")
        self.assertEqual([self.costs.getCellRangeByName(a).Value for a in ("B1", "B2", "B3", "B4")], [600, 25, 80, 0])
        self.assertEqual(self.document.UndoManager.getAllUndoActionTitles(), ("palvex: results",))
        sheet = self.document.Sheets.getByName("palvex results")
        self.assertEqual(len(sheet.Charts.ElementNames), 6)
        self.service.trigger("run")  # over the earlier results
        self.assertEqual(len(sheet.Charts.ElementNames), 6)

    def test_a_failing_trial(self):
        self.costs.getCellRangeByName("B6").Formula = "=IF(B2>38;1/0;B5)"
        self.insert_table()
        sentence = "Row 11, Cost, trial "
        self.assert_fault("run", sentence, ": 'My costs'.B6 shows #DIV/0! (Rate = ", "Design = 38.")
        self.assertEqual([self.costs.getCellRangeByName(a).Value for a in ("B1", "B2", "B3")], [600, 25, 80])
        self.assertFalse(self.document.Sheets.hasByName("palvex results"))
        run = simulate(self.store())
        self.assertEqual(run.returncode, 1)
        self.assertIn(sentence, run.stderr)
        way = results(self.store(), "--skip-failures")
        self.assertEqual(way["trials"] + way["failures"], TRIALS)
        self.assertGreater(way["failures"], 0)
        self.assertEqual(results(self.store(), "--skip-failures", "--jobs", "2"), way)

    def test_faults_are_sentences(self):
        self.assert_fault("run", "there is no sheet 'palvex'")
        self.assert_fault("go", '"run" and "new"')
        for line, fault in (
                (("X", "Normal", 1, -2, "", "", "'My costs'.B1"), "Row 12, X: Negative value for Std Dev."),
                (("X", "Normal", 1, 2, "", "", "Nowhere.B1"), "Row 12, X: Cell: there is no sheet 'Nowhere'."),
                (("X", "Normal", 1, 2, "", "", "'My costs'.B1"), "Row 12, X: Cell: 'My costs'.B1 receives the draw of Row 6, Rate, too."),
                (("X", "Normal", 1, 2), "Row 12, X: the cell that receives the draw is missing.")):
            self.insert_table(TABLE[:-1] + [line])
            self.assert_fault("run", fault)
            self.document.Sheets.removeByName("palvex")
        self.insert_table()
        self.document.protect("")
        self.assert_fault("run", "structure is protected")
        self.document.unprotect("")

    def test_new_register_can_be_simulated(self):
        self.service.trigger("new")
        self.assert_fault("new", "There is a sheet 'palvex' already.")
        self.service.trigger("run")
        self.assertAlmostEqual(self.written_results()["Mean"][0], 11 * 1000 - 6500 - 0.4 * 1033, delta=60)

    def test_a_run_that_is_ended_leaves_nothing(self):
        self.insert_table()
        folder = self.office.path("temporary")
        os.mkdir(folder)
        profiles = lambda: [name for name in os.listdir(folder) if name.startswith("palvex-")]
        for number in (signal.SIGTERM, signal.SIGKILL):
            run = subprocess.Popen([PALVEX, "simulate", self.store(), "-n", "1e6", "--jobs", "2"], stdout=subprocess.DEVNULL,
                                   env={**os.environ, "TMPDIR": folder})
            wait_until(lambda: len(profiles()) == 3)  # its own, and those of its two helpers
            time.sleep(1)
            run.send_signal(number)
            self.assertEqual(run.wait(60), -number)
            wait_until(lambda: not profiles())

    def test_without_libreoffice(self):
        path = self.store()
        for run in (simulate(path, PALVEX_LIBREOFFICE="/nowhere"), simulate(path, PALVEX_CALC="/nowhere")):
            self.assertEqual((run.returncode, run.stdout, run.stderr.count("\n")), (1, "", 1))
            self.assertIn("apt-get install libreoffice-calc", run.stderr)
        self.assertEqual(subprocess.run([PALVEX, "types"], capture_output=True, check=False,
                                        env={**os.environ, "PALVEX_LIBREOFFICE": "/nowhere"}).returncode, 0)


if __name__ == "__main__":
    unittest.main()
