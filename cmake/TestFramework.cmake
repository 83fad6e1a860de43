# GoogleTest: the installed one, or for another platform its sources.
if(CMAKE_CROSSCOMPILING)
  set(PALVEX_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's sources")
  set(INSTALL_GTEST OFF)
  add_subdirectory(${PALVEX_GOOGLETEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  target_compile_options(gtest PRIVATE -O0)  # compiled oftener than run
else()
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()

# Makes the cases of <name>_tests known to ctest. On another platform's emulator starting a program
# costs more than most cases, so there the program is one test.
function(palvex_discover_tests name)
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${name}_tests)
    set_tests_properties(${name} PROPERTIES TIMEOUT 120)
  else()
    gtest_discover_tests(${name}_tests TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60)
  endif()
endfunction()
