#pragma once

/// Simulation of a table of uncertain figures: build a Model or read it from a worksheet, say what
/// is to be simulated in Settings, call run, read Results. All of it is in palvex::simulation.

#include "simulation/Correlations.h"
#include "simulation/Fault.h"
#include "simulation/Model.h"
#include "simulation/Results.h"
#include "simulation/Run.h"
#include "simulation/Sheet.h"
#include "simulation/Simulation.h"
#include "simulation/Workbook.h"
