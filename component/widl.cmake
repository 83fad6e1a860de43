# Compiles the interface description. The compiler only warns about what it leaves out of the type
# library, so a warning is a failure here.
function(widl)
  execute_process(
    COMMAND ${WIDL} --win${BITS} -I idl -L ${STDOLE} ${ARGN} palvex.idl
    WORKING_DIRECTORY ${CMAKE_CURRENT_LIST_DIR}
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0 OR NOT output STREQUAL "")
    file(REMOVE ${LIBRARY} ${HEADER})
    message(FATAL_ERROR "${output}")
  endif()
endfunction()

widl(-t -o ${LIBRARY})
widl(-h -H ${HEADER})
