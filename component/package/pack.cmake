# Packs what a user of the component needs into one archive.
#   cmake -D VERSION=... -D DLL64=... -D DLL32=... -D ARCHIVE=... -P pack.cmake
cmake_path(GET ARCHIVE STEM LAST_ONLY folder)
cmake_path(GET ARCHIVE PARENT_PATH work)
get_filename_component(source ${CMAKE_CURRENT_LIST_DIR}/../.. ABSOLUTE)
set(content ${work}/${folder})
file(REMOVE_RECURSE ${content} ${ARCHIVE})

file(COPY ${DLL64} DESTINATION ${content}/win64)
file(COPY ${DLL32} DESTINATION ${content}/win32)
file(COPY ${source}/LICENSE ${source}/docs/report.png DESTINATION ${content})
# The pages lie beside each other here; what they show of the sources is not in the archive.
foreach(page automation.md departures.md simulation.md)
  file(READ ${source}/docs/${page} text)
  string(REPLACE "](../examples/vba/" "](" text "${text}")
  string(REGEX REPLACE "\\[([^]]*)\\]\\(\\.\\./[^)]*\\)" "\\1" text "${text}")
  file(WRITE ${content}/${page} "${text}")
endforeach()
set(PROJECT_VERSION ${VERSION})
# The Visual Basic editor imports lines that end as on Windows.
foreach(example palvex.bas check.vbs)
  configure_file(${source}/examples/vba/${example} ${content}/${example} @ONLY NEWLINE_STYLE DOS)
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/README.txt.in ${content}/README.txt @ONLY NEWLINE_STYLE DOS)
foreach(script register.cmd unregister.cmd)
  configure_file(${CMAKE_CURRENT_LIST_DIR}/${script} ${content}/${script} @ONLY NEWLINE_STYLE DOS)
endforeach()

execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${ARCHIVE} --format=zip ${folder}
                WORKING_DIRECTORY ${work} COMMAND_ERROR_IS_FATAL ANY)
message(STATUS "packed ${ARCHIVE}")
