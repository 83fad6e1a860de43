"""An office without a screen for tests: its own profile, its own pipe, and gone when the tests are."""
import os
import shutil
import subprocess
import tempfile
import time
import uuid

import uno
from com.sun.star.beans import PropertyValue
from com.sun.star.connection import NoConnectException

BUILD = os.environ["PALVEX_BUILD"]
PROGRAM = "/usr/lib/libreoffice/program/soffice.bin"
STARTED_ANEW = (79, 81)  # how a new profile's first start ends


def properties(**values):
    return tuple(PropertyValue(Name=name, Value=value) for name, value in values.items())


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
        local = uno.getComponentContext()
        resolver = local.ServiceManager.createInstanceWithContext(
            "com.sun.star.bridge.UnoUrlResolver", local)
        limit = time.monotonic() + 120
        while time.monotonic() < limit:
            if self.process is None or self.process.poll() in STARTED_ANEW:
                self.process = subprocess.Popen(self.command, stdin=subprocess.DEVNULL)
            if self.process.poll() is not None:
                raise RuntimeError(f"the office ended with {self.process.returncode}")
            try:
                return resolver.resolve(url)
            except NoConnectException:
                time.sleep(0.1)
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
