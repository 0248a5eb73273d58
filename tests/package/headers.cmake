# Compiles each installed header alone.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

run(${configure_project} -S "${CMAKE_CURRENT_LIST_DIR}/headers" -B "${work}/headers")
run(${CMAKE_COMMAND} --build "${work}/headers")
