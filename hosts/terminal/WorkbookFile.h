#pragma once

#include <memory>
#include <string>

#include "hosts/calc/Door.h"

namespace palvex::terminal {

/// Whether a file is one for a spreadsheet program (.ods, .xlsx, ...), by its name.
[[nodiscard]] bool isWorkbook(const std::string& path);

/// Opens a workbook in LibreOffice Calc, which is loaded into this process now and not before.
/// @throws Refusal  with a sentence: without LibreOffice, which package to install
[[nodiscard]] std::unique_ptr<calc::OpenWorkbook> openWorkbook(const std::string& path);

}  // namespace palvex::terminal
