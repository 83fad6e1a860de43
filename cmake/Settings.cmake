# A compiler cache, where there is one, makes a second build of the same sources a matter of seconds.
find_program(PALVEX_CCACHE ccache)
if(PALVEX_CCACHE AND PROJECT_IS_TOP_LEVEL AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${PALVEX_CCACHE})
endif()

# What every target of the project is compiled with. Results are to be bit-reproducible, so products and
# sums are never fused.
add_library(palvex_settings INTERFACE)
target_compile_options(palvex_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -ffp-contract=off
  -fno-semantic-interposition)  # position-independent code may still inline what it exports

option(PALVEX_WARNINGS_AS_ERRORS "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})
if(PALVEX_WARNINGS_AS_ERRORS)
  target_compile_options(palvex_settings INTERFACE -Werror)
endif()
