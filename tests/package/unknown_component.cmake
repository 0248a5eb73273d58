# Asks for a component that does not exist and expects to be told which.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)

execute_process(
  COMMAND ${configure_project} -S "${CMAKE_CURRENT_LIST_DIR}/unknown_component" -B "${work}/unknown_component"
  RESULT_VARIABLE result
  OUTPUT_VARIABLE output
  ERROR_VARIABLE output)
string(REGEX REPLACE "[ \n]+" " " output "${output}")
if(result EQUAL 0)
  message(FATAL_ERROR "the unknown component was accepted")
endif()
if(NOT output MATCHES "has no component \"teleporter\"; it has commons, data-contracts, storage")
  message(FATAL_ERROR "the message does not name the component:\n${output}")
endif()
