"""Takes the pictures of docs/calc.md: the real windows, on a screen that nobody sees.

Run by scripts/calc pictures.
"""
import os
import shutil
import subprocess
import sys
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.join(HERE, "../..")
sys.path.insert(0, os.path.join(HERE, "tests"))
from office import Office, properties  # noqa: E402

SIZE = (1280, 800)
MENU = ("389", "9")  # where the menu palvex is in that window


def run(*command):
    subprocess.run(command, check=True)


class Screen:
    def __init__(self, office):
        self.office = office
        copy = shutil.copy(os.path.join(ROOT, "examples/calc/project.ods"), office.folder)
        self.document = office.desktop.loadComponentFromURL("file://" + copy, "_blank", 0, properties())
        self.controller = self.document.CurrentController
        window = self.controller.Frame.ContainerWindow
        window.setPosSize(0, 0, *SIZE, 15)
        time.sleep(2)

    def show(self, sheet, cell):
        self.controller.setActiveSheet(self.document.Sheets.getByName(sheet))
        self.controller.select(self.document.Sheets.getByName(sheet).getCellRangeByName(cell))

    def take(self, name):
        time.sleep(2)
        run("import", "-window", "root", "+dither", "-colors", "64", os.path.join(ROOT, "docs", name + ".png"))

    def dispatch(self, command):
        helper = self.office.create("com.sun.star.frame.DispatchHelper")
        helper.executeDispatch(self.controller.Frame, command, "", 0, ())


def keys(*names):
    for name in names:
        run("xdotool", "key", name)
        time.sleep(0.4)


def main():
    shown, wanted = os.pipe()  # the server tells its number there when it is ready
    server = subprocess.Popen(["Xvfb", "-displayfd", str(wanted), "-screen", "0", f"{SIZE[0]}x{SIZE[1]}x24"],
                              pass_fds=(wanted,), stderr=subprocess.DEVNULL)
    os.environ["DISPLAY"] = ":" + os.read(shown, 16).decode().strip()
    office = None
    try:
        office = Office(window=True)
        screen = Screen(office)
        screen.show("palvex", "A6")
        time.sleep(1)
        run("xdotool", "mousemove", *MENU, "click", "1")
        screen.take("calc-menu")
        keys("Escape", "Escape")
        office.create("palvex.Simulation").trigger("run")
        screen.show("palvex results", "A1")
        screen.take("calc-results")
        screen.show("Functions", "B4")
        wizard = threading.Thread(target=screen.dispatch, args=(".uno:FunctionDialog",), daemon=True)
        wizard.start()
        screen.take("calc-wizard")
        keys("Escape")
    finally:
        if office is not None:
            office.close()
        server.terminate()
        server.wait()


if __name__ == "__main__":
    main()
