"""An office without a screen for tests: its own profile, its own pipe, and gone when the tests are."""
import os
import queue
import shutil
import subprocess
import tempfile
import threading
import time
import unittest
import uuid

import uno
from com.sun.star.beans import PropertyValue
from com.sun.star.connection import NoConnectException
from com.sun.star.uno import RuntimeException

BUILD = os.environ["PALVEX_BUILD"]
PROGRAM = "/usr/lib/libreoffice/program/soffice.bin"
STARTED_ANEW = (79, 81)  # how a new profile's first start ends


def properties(**values):
    return tuple(PropertyValue(Name=name, Value=value) for name, value in values.items())


def ask(resolver, url, answers):
    """Speaks to an office until it answers."""
    for _ in range(300):
        try:
            answers.put(resolver.resolve(url))
            return
        except NoConnectException:
            time.sleep(0.1)
        except RuntimeException:
            return  # it is no more


class Office:
    def __init__(self, window=False):
        self.folder = tempfile.mkdtemp(prefix="palvex-office-")
        pipe = "palvex" + uuid.uuid4().hex
        bundled = os.path.join(BUILD, "hosts/calc/extension")
        self.command = [
            "setpriv", "--pdeathsig", "KILL", PROGRAM, *([] if window else ["--headless"]),
            "--norestore", "--nologo", "--nodefault",
            f"-env:UserInstallation=file://{self.folder}/profile",
            f"-env:BUNDLED_EXTENSIONS=file://{bundled}",
            f"--accept=pipe,name={pipe};urp;",
        ]
        self.process = None
        try:
            self.context = self._connect(f"uno:pipe,name={pipe};urp;StarOffice.ComponentContext")
        except BaseException:
            self.close()
            raise
        self.desktop = self.create("com.sun.star.frame.Desktop")

    def _connect(self, url):
        """Starts the office and waits for it. A new profile's first start ends by itself, and whoever was
        speaking to it may wait for ever: each start has a listener of its own."""
        local = uno.getComponentContext()
        resolver = local.ServiceManager.createInstanceWithContext(
            "com.sun.star.bridge.UnoUrlResolver", local)
        for _ in range(6):
            # From the main thread: the office dies with the thread that started it.
            self.process = subprocess.Popen(self.command, stdin=subprocess.DEVNULL)
            answers = queue.Queue()
            threading.Thread(target=ask, args=(resolver, url, answers), daemon=True).start()
            limit = time.monotonic() + 30
            while time.monotonic() < limit and self.process.poll() is None:
                try:
                    return answers.get(timeout=0.1)
                except queue.Empty:
                    pass
            if self.process.poll() not in (None, *STARTED_ANEW):
                raise RuntimeError(f"the office ended with {self.process.returncode}")
            self.process.kill()
            self.process.wait()
        raise RuntimeError("the office does not answer")

    def create(self, service):
        return self.context.ServiceManager.createInstanceWithContext(service, self.context)

    def new(self):
        return self.desktop.loadComponentFromURL("private:factory/scalc", "_blank", 0,
                                                 properties(Hidden=True, MacroExecutionMode=4))

    def open(self, path, **how):
        return self.desktop.loadComponentFromURL("file://" + path, "_blank", 0,
                                                 properties(Hidden=True, MacroExecutionMode=4, **how))

    def path(self, name):
        return os.path.join(self.folder, name)

    def close(self):
        if self.process is not None:
            self.process.kill()
            self.process.wait()
        shutil.rmtree(self.folder, ignore_errors=True)


class OfficeTest(unittest.TestCase):
    """Tests that share one office, each with a new document."""

    @classmethod
    def setUpClass(cls):
        cls.office = Office()
        cls.addClassCleanup(cls.office.close)

    def setUp(self):
        self.document = self.office.new()
        self.addCleanup(self.document.close, True)


def run_basic(document, source, function, arguments=(), vba=False):
    """Runs a function of a Basic module that is put into the document; its result."""
    library = document.BasicLibraries
    library.VBACompatibilityMode = vba
    if not library.hasByName("Standard"):
        library.createLibrary("Standard")
    module = library.getByName("Standard")
    name = "Module" + uuid.uuid4().hex[:8]
    module.insertByName(name, ("Option VBASupport 1\n" if vba else "") + source)
    script = document.getScriptProvider().getScript(
        f"vnd.sun.star.script:Standard.{name}.{function}?language=Basic&location=document")
    return script.invoke(tuple(arguments), (), ())[0]
