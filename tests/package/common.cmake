cmake_minimum_required(VERSION 3.25)

# Runs a command and stops the test with all of its output when it fails.
function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
  endif()
endfunction()

# The arguments that configure a project of this folder against the installed tree and nothing else of the build. plog
# stays out of reach: Debian 12 has none.
foreach(prefix IN LISTS prefixes)
  if(EXISTS "${prefix}/include/plog")
    list(REMOVE_ITEM prefixes "${prefix}")
  endif()
endforeach()
set(configure_project
    ${CMAKE_COMMAND} -G ${generator} "-DCMAKE_CXX_COMPILER=${compiler}" "-DCMAKE_CXX_FLAGS=${flags}"
    "-DCMAKE_CXX_COMPILER_LAUNCHER=${launcher}" -DCMAKE_DISABLE_FIND_PACKAGE_plog=ON)
string(REPLACE ";" ":" prefix_path "${work}/moved;${prefixes}")
set(ENV{CMAKE_PREFIX_PATH} "${prefix_path}")
