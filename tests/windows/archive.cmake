# Packs the archive, unpacks it elsewhere and runs a pass from an empty folder, with a path that leads nowhere else:
# it must hold every library that its programs need, and no other.

cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${work}/empty" RESULT_VARIABLE result OUTPUT_VARIABLE output
                  ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGN " " command)
    message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
  endif()
endfunction()

# Adds the libraries that a file needs, and those that they need, to the list; the system's own are not in the folder.
function(add_needed folder file list)
  execute_process(COMMAND "${objdump}" --private-headers "${folder}/${file}" OUTPUT_VARIABLE headers
                  COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "DLL Name: [^\n]+" names "${headers}")
  list(TRANSFORM names REPLACE "DLL Name: " "")
  set(needed ${${list}} ${file})
  foreach(name IN LISTS names)
    if(EXISTS "${folder}/${name}" AND NOT name IN_LIST needed)
      add_needed("${folder}" "${name}" needed)
    endif()
  endforeach()
  list(REMOVE_DUPLICATES needed)
  set(${list} ${needed} PARENT_SCOPE)
endfunction()

file(REMOVE_RECURSE "${work}")
file(MAKE_DIRECTORY "${work}/empty" "${work}/unpacked")
run("${cpack}" --config "${build}/CPackConfig.cmake" -B "${work}/packed")
file(GLOB archive "${work}/packed/*.zip")
file(ARCHIVE_EXTRACT INPUT "${archive}" DESTINATION "${work}/unpacked")
file(GLOB bin "${work}/unpacked/*/bin")

set(ENV{WINEPATH} "")
run(${emulator} "${bin}/corvo-telemetry-host.exe" generate --data-dir "${work}/data" --scale 0.01)
run(${emulator} "${bin}/corvo-telemetry-host.exe" run --data-dir "${work}/data")

file(GLOB packed RELATIVE "${bin}" "${bin}/*")
set(needed "")
add_needed("${bin}" corvo-telemetry-host.exe needed)
add_needed("${bin}" corvo-telemetry-data-cleanup.dll needed)
list(SORT packed)
list(SORT needed)
if(NOT packed STREQUAL needed)
  message(FATAL_ERROR "packed: ${packed}\nneeded: ${needed}")
endif()
