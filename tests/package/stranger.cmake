# Builds another project against the installed tree and runs its program.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

run(${configure_project} -S "${CMAKE_CURRENT_LIST_DIR}/stranger" -B "${work}/stranger")
run(${CMAKE_COMMAND} --build "${work}/stranger")
file(MAKE_DIRECTORY "${work}/data")
run("${work}/stranger/stranger" "${work}/data")
