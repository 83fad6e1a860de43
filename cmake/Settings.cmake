# What every target of the project is compiled with. Results are to be bit-reproducible, so products and
# sums are never fused.
add_library(palvex_settings INTERFACE)
target_compile_options(palvex_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -ffp-contract=off)

option(PALVEX_WARNINGS_AS_ERRORS "Treat warnings as errors" ${PROJECT_IS_TOP_LEVEL})
if(PALVEX_WARNINGS_AS_ERRORS)
  target_compile_options(palvex_settings INTERFACE -Werror)
endif()
