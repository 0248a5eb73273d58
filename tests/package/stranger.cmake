# Does what docs/hosting.md tells a stranger to do, against the installed tree.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

# The program prints what the page says, whatever text its block holds.
function(expect_output program)
  file(REMOVE_RECURSE "${work}/data")
  execute_process(COMMAND "${program}" "${work}/data" RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE error)
  file(READ "${CMAKE_CURRENT_LIST_DIR}/../../docs/hosting.md" page)
  string(FIND "${page}" "```text\n${output}```" place)
  if(NOT result EQUAL 0 OR place EQUAL -1)
    message(FATAL_ERROR "${program} ended with ${result} and printed what the page does not:\n${output}${error}")
  endif()
endfunction()

run(${configure_project} -S "${CMAKE_CURRENT_LIST_DIR}/stranger" -B "${work}/stranger"
    "-DCMAKE_INSTALL_PREFIX=${work}/stranger-installed")
run(${CMAKE_COMMAND} --build "${work}/stranger")
expect_output("${work}/stranger/my-host")
run(${CMAKE_COMMAND} --install "${work}/stranger")
expect_output("${work}/stranger-installed/bin/my-host")
