#pragma once

#include <CLI/CLI.hpp>

#include "hosts/terminal/Program.h"

/// The program's commands, one file each: what it takes, and what it does when it is chosen.
namespace palvex::terminal {

void addTypes(CLI::App& program);
void addCheck(CLI::App& program);
void addEval(CLI::App& program);
void addQuantile(CLI::App& program);
void addDescribe(CLI::App& program);
void addDraw(CLI::App& program);
void addGuess(CLI::App& program);
void addPlot(CLI::App& program);
void addSimulate(CLI::App& program, const Role& role);
void addDemo(CLI::App& program);

}  // namespace palvex::terminal
