#pragma once

#include "hosts/calc/Document.h"

namespace palvex::calc {

/// Inserts a sheet "palvex" with a small table that can be simulated as it is. @throws Fault when
/// there is one already, or when the document's structure is protected
void insertRegister(const Document& document);

}  // namespace palvex::calc
