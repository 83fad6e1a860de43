// A JScript client: every member by late binding, errors, ranges played by plain objects.
var checks = 0, fails = 0;

function check(what, found, expected) {
  ++checks;
  if (found === expected) return;
  ++fails;
  WScript.Echo("FAILED " + what + ": " + found + ", expected " + expected);
}

function near(what, found, expected) {
  ++checks;
  if (Math.abs(found - expected) <= 1e-12 * Math.abs(expected)) return;
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
check("distType", d.distType, "");
check("ScaleFactor", d.ScaleFactor, 1);
check("Active", d.Active, false);
d.Active = true;
check("Active", d.Active, true);
d.graphMax = "5";
d.graphMin = "-5";
d.numberFormat = "0.0";
check("graphMax", d.graphMax, "5");
check("graphMin", d.graphMin, "-5");
check("numberFormat", d.numberFormat, "0.0");
var names = new VBArray(d.ValidDistributions);
check("lbound", names.lbound(), 1);
check("ubound", names.ubound(), 10);
check("name", names.getItem(9), "Johnson");
check("layout", new VBArray(d.DataConfigurations).getItem(1), "Raw Data");
check("NegInfinity", d.NegInfinity, "-Infinity");
check("PosInfinity", d.PosInfinity, "+Infinity");

d.distType = "Uniform";
d.param1 = 0;
d.param2 = 12;
check("ParamsOK", d.ParamsOK(""), true);
near("mean", d.mean, 6);
near("CalcMean", d.CalcMean(), 6);
near("StDev", d.StDev, Math.sqrt(12));
near("CalcStdev", d.CalcStdev(6), Math.sqrt(12));
near("XMin", d.XMin + 1, 1);
near("XMax", d.XMax(2), 12);

d.distType = "Beta";
check("distType", d.distType, "Beta");
check("NumParams", d.NumParams(), 4);
check("ParamName", d.ParamName(4), "Maximum");
d.param1 = 1;
d.param2 = 2;
d.param3 = 0;
d.param4 = 10;
check("param4", d.param4, 10);
check("ParamsOK", d.ParamsOK(""), true);
near("pdf", d.pdf(2.5), 1.5);
near("cdf", d.cdf(5), 0.75);
near("RandVal", d.RandVal(0.75), 5);
near("GuessParamValue", d.GuessParamValue(3, 10), 9);
d.ltl = 5;
d.utl = "+Infinity";
check("ltl", d.ltl, 5);
check("utl", d.utl, "+Infinity");
check("ParamsOK", d.ParamsOK(""), true);
near("pdf outside", d.pdf(2.5) + 1, 1);
near("pdf without truncation", d.pdf(2.5, true), 1.5);
near("RandVal(0.5)", d.RandVal(0.5), 10 - 10 * Math.sqrt(0.125));

d.ResizeArrays(3);
check("NumPoints", d.NumPoints, 3);
d.CreateGraphData(0, 10, true);
near("GraphX", d.GraphX(2), 5);
near("GraphPDF", d.GraphPDF(2), 1);
near("GraphOL", d.GraphOL(2), 1);
d.GraphX(3) = 2.5;
d.GraphPDF(3) = 3.5;
d.GraphOL(3) = 4.5;
near("GraphX", d.GraphX(3), 2.5);
near("GraphPDF", d.GraphPDF(3), 3.5);
near("GraphOL", d.GraphOL(3), 4.5);

d.distType = "Normal";
d.ltl = null;
check("a null limit", d.ParamsOK(""), false);
d.ltl = undefined;
d.utl = undefined;
var cell = new Cell(7);
d.param1 = cell;
d.param2 = 0;
check("ParamsOK", d.ParamsOK(""), true);
near("RandVal", d.RandVal(0.3), 7);
d.Dynamic = true;
cell.Value = 8;
near("a live cell", d.RandVal(0.3), 8);
d.Dynamic = false;
d.param2 = 1;
check("ParamsOK", d.ParamsOK(""), true);
check("an error", numberOfError(function() { d.RandVal(1.5); }), 5);
check("a text", numberOfError(function() { d.cdf("x"); }) !== 0, true);

d.param1 = 0;
WScript.Echo("all " + checks + " checks done, " + fails + " failed");
WScript.Quit(fails);
