# Runs at the end of an installation: makes the installed headers include each other by paths that cannot collide.
cmake_path(ABSOLUTE_PATH CORVO_INSTALLED_INCLUDE_DIR BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
set(include_dir "$ENV{DESTDIR}${CORVO_INSTALLED_INCLUDE_DIR}")

file(GLOB_RECURSE headers "${include_dir}/corvo-telemetry/*.h")
foreach(header IN LISTS headers)
  file(READ "${header}" text)
  string(REGEX REPLACE "#include \"([a-z_]+/[^\"]+)\"" "#include <corvo-telemetry/\\1>" text "${text}")
  file(WRITE "${header}" "${text}")
endforeach()

# The generated headers leave room for an include; in the build their macro comes from the command line.
file(GLOB_RECURSE headers "${include_dir}/corvo/telemetry/contract/*.pb.h")
foreach(header IN LISTS headers)
  file(READ "${header}" text)
  string(REPLACE "// @@protoc_insertion_point(includes)"
                 "#include <corvo-telemetry/data_contracts/data_contracts_export.h>" text "${text}")
  file(WRITE "${header}" "${text}")
endforeach()
