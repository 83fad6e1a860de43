// A JScript client: what it does otherwise than VBScript. Lists, null and undefined, errors, ranges played by plain
// objects.
var checks = 0, fails = 0;

function check(what, found, expected) {
  ++checks;
  if (found === expected) return;
  ++fails;
  WScript.Echo("FAILED " + what + ": " + found + ", expected " + expected);
}

function numberOfError(action) {
  try {
    action();
  } catch (e) {
    return e.number & 0xFFFF;
  }
  return 0;
}

function Cell(content) {
  this.Application = {};
  this.Address = "$A$1";
  this.Value = content;
  this.count = 1;  // to JScript, letter case matters
  var self = this;
  this.Cells = function(i) { return self; };
}

var d = new ActiveXObject("palvex.c_Distribution.1");
check("ScaleFactor", d.ScaleFactor, 1);
d.Active = true;
check("Active", d.Active, true);
var names = new VBArray(d.ValidDistributions);
check("lbound", names.lbound(), 1);

d.ResizeArrays(3);
d.GraphX(3) = 2.5;
check("GraphX", d.GraphX(3), 2.5);

d.distType = "Normal";
d.ltl = null;
check("a null limit", d.ParamsOK(""), false);
d.ltl = undefined;
d.utl = undefined;
var cell = new Cell(7);
d.param1 = cell;
d.param2 = 0;
check("ParamsOK", d.ParamsOK(""), true);
check("RandVal", d.RandVal(0.3), 7);
d.Dynamic = true;
cell.Value = 8;
check("a live cell", d.RandVal(0.3), 8);
d.Dynamic = false;
d.param2 = 1;
check("ParamsOK", d.ParamsOK(""), true);
check("an error", numberOfError(function() { d.RandVal(1.5); }), 5);
check("a text", numberOfError(function() { d.cdf("x"); }) !== 0, true);

d.param1 = 0;
WScript.Echo("all " + checks + " checks done, " + fails + " failed");
WScript.Quit(fails);
