# Builds the stranger's program with the flags of the pkg-config file.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

file(GLOB_RECURSE file "${work}/moved/corvo-telemetry.pc")
cmake_path(GET file PARENT_PATH folder)
set(ENV{PKG_CONFIG_PATH} "${folder}")
function(ask variable)
  execute_process(COMMAND "${pkg_config}" ${ARGN} corvo-telemetry OUTPUT_VARIABLE answer OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(answer UNIX_COMMAND "${answer}")
  set(${variable} "${answer}" PARENT_SCOPE)
endfunction()
ask(compile --cflags)
ask(link --libs)
ask(libraries --variable=libdir)
ask(module --variable=module)

run("${compiler}" -std=c++20 ${flags} "-DCORVO_MODULE=\"${module}\"" ${compile} "${CMAKE_CURRENT_LIST_DIR}/stranger/main.cc"
    -o "${work}/by-pkg-config" ${link} "-Wl,-rpath,${libraries}")
file(REMOVE_RECURSE "${work}/data-by-pkg-config")
run("${work}/by-pkg-config" "${work}/data-by-pkg-config")
