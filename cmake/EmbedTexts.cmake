# Writes a source file that holds texts as constants: cmake -D output=<file> -D "texts=<name>=<file>;..." -P <this>
#
# Compilers bound the length of one literal, so a text is a row of them. Their borders are line ends.
set(source "#include \"host/show/report/sections.h\"\n\nnamespace corvo::telemetry::host::templates {\n\n")
foreach(text IN LISTS texts)
  string(REGEX MATCH "^([^=]+)=(.*)$" unused "${text}")
  set(name "${CMAKE_MATCH_1}")
  file(READ "${CMAKE_MATCH_2}" content)
  string(REGEX REPLACE "\n+$" "" content "${content}")
  string(REPLACE "\n" "\n)corvo\"\nR\"corvo(" content "${content}")
  string(APPEND source "const std::string_view ${name} =\nR\"corvo(${content})corvo\";\n\n")
endforeach()
string(APPEND source "}  // namespace corvo::telemetry::host::templates\n")
file(WRITE "${output}" "${source}")
