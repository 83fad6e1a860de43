#pragma once

/// All that a program needs: probability laws (Law), and the distribution object of the worksheet
/// hosts (c_Distribution).

#include "engine/Law.h"
#include "engine/LawTypes.h"
#include "engine/c_Distribution.h"
#include "palvex/version.h"
#include "runtime/Cells.h"
