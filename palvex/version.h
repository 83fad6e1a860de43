#pragma once

// The version of the library, for the preprocessor and for a comparison such as
// `PALVEX_VERSION_MAJOR > 0 || PALVEX_VERSION_MINOR >= 2`. Before version 1 a new minor version may
// change the interface.
#define PALVEX_VERSION_MAJOR 0
#define PALVEX_VERSION_MINOR 2
#define PALVEX_VERSION_PATCH 0
#define PALVEX_VERSION "0.2.0"
