# Installs the build, then moves the tree: nothing in it may remember where it was installed.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(REMOVE_RECURSE "${work}")
file(MAKE_DIRECTORY "${work}")
run(${CMAKE_COMMAND} --install "${build}" --prefix "${work}/installed")
file(RENAME "${work}/installed" "${work}/moved")

# Headers that are not meant for others stay behind.
file(GLOB_RECURSE headers RELATIVE "${work}/moved/include/corvo-telemetry" "${work}/moved/include/corvo-telemetry/*.h")
foreach(internal IN ITEMS common/log.h common/timestamp_locale.h storage/connection/connection.h)
  if(internal IN_LIST headers)
    message(FATAL_ERROR "${internal} is installed")
  endif()
endforeach()
# Those that are name each other by their full path, and need no plog.
foreach(header IN LISTS headers)
  file(STRINGS "${work}/moved/include/corvo-telemetry/${header}" includes REGEX "^#include (\"|<plog/)")
  if(includes)
    message(FATAL_ERROR "${header} includes what others may not have: ${includes}")
  endif()
endforeach()
foreach(file IN ITEMS LICENSE CHANGELOG.md hosting.md)
  if(NOT EXISTS "${work}/moved/share/doc/corvo-telemetry/${file}")
    message(FATAL_ERROR "${file} is not installed")
  endif()
endforeach()
run("${work}/moved/bin/corvo-telemetry-host" --help)
