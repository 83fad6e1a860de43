# Writes what the function wizard shows of the worksheet functions.
#   cmake -D OUTPUT=CalcAddIns.xcu -P functions.cmake

set(named_kind "type|The type: Normal, Uniform, Triangular, Lognormal, Exponential, Weibull, Beta, Gamma, Johnson, Histogram, PERT or LognormalMean")
set(named_x "x|The value that is asked about")
set(named_p "p|A probability from 0 to 1")
set(named_p1 "p1|First parameter: mean, minimum, location, lambda, shape or alpha; of a histogram the range of its data")
set(named_p2 "p2|Second parameter: standard deviation, likely or maximum value, scale, beta or the minimum; of a histogram the layout: Raw Data, Data and Counts (2 cols) or Bins and Counts (3 cols)")
set(named_p3 "p3|Third parameter: maximum, minimum or skewness; leave it out where the type has none")
set(named_p4 "p4|Fourth parameter: a beta law's maximum or the kurtosis; leave it out where the type has none")
set(named_ltl "ltl|Lower limit, leave it out for none; above the upper limit it cuts out what lies between")
set(named_utl "utl|Upper limit, leave it out for none")

# A property in the one language that there is.
function(property name value)
  string(REPLACE "&" "&amp;" value "${value}")
  string(REPLACE "<" "&lt;" value "${value}")
  string(APPEND text "<prop oor:name=\"${name}\"><value xml:lang=\"en\">${value}</value></prop>\n")
  set(text "${text}" PARENT_SCOPE)
endfunction()

# One function: its method, and the arguments before the law's own.
function(describe method leading description)
  string(TOUPPER "PALVEX_${method}" name)
  string(APPEND text "<node oor:name=\"${method}\" oor:op=\"replace\">\n")
  property(DisplayName ${name})
  property(Description "${description}")
  property(CompatibilityName ${name})
  string(APPEND text "<prop oor:name=\"Category\"><value>palvex</value></prop>\n<node oor:name=\"Parameters\">\n")
  foreach(argument kind ${leading} p1 p2 p3 p4 ltl utl)
    string(REGEX REPLACE "^([^|]*)\\|.*" "\\1" shown "${named_${argument}}")
    string(REGEX REPLACE "^[^|]*\\|" "" explained "${named_${argument}}")
    string(APPEND text "<node oor:name=\"${argument}\" oor:op=\"replace\">\n")
    property(DisplayName ${shown})
    property(Description "${explained}")
    string(APPEND text "</node>\n")
  endforeach()
  string(APPEND text "</node>\n</node>\n")
  set(text "${text}" PARENT_SCOPE)
endfunction()

set(text [[<?xml version="1.0" encoding="UTF-8"?>
<oor:component-data xmlns:oor="http://openoffice.org/2001/registry" xmlns:xs="http://www.w3.org/2001/XMLSchema" oor:name="CalcAddIns" oor:package="org.openoffice.Office">
<node oor:name="AddInInfo">
<node oor:name="palvex.Functions" oor:op="replace">
<node oor:name="AddInFunctions">
]])
describe(density x "The density at x of a distribution, between its limits")
describe(probability x "The probability of a value up to x, between the limits")
describe(exceedance x "The probability of a value above x, between the limits, exact also where it is small")
describe(quantile p "The value that a share p of all values does not exceed, between the limits")
describe(mean "" "The mean between the limits")
describe(stdev "" "The standard deviation between the limits")
describe(check "" "What is wrong with a distribution, in one sentence; an empty text when nothing is")
string(APPEND text "</node>\n</node>\n</node>\n</oor:component-data>\n")
file(WRITE ${OUTPUT} "${text}")
