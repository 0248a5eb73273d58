# What is different on Windows: one folder for programs and libraries, resources, link settings.

enable_language(RC)

# The loader looks for a program's libraries beside the program, and a module's beside the module.
set(CORVO_LIBRARY_DIR "${CMAKE_INSTALL_BINDIR}")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
set(CMAKE_SHARED_LIBRARY_PREFIX "")

# The version that Windows shows in the properties of a file.
function(corvo_version_resource target)
  set(CORVO_FILE_NAME "${target}")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(CORVO_FILE_TYPE VFT_APP)
    string(APPEND CORVO_FILE_NAME ${CMAKE_EXECUTABLE_SUFFIX})
  else()
    set(CORVO_FILE_TYPE VFT_DLL)
    string(APPEND CORVO_FILE_NAME ${CMAKE_SHARED_LIBRARY_SUFFIX})
  endif()
  configure_file("${PROJECT_SOURCE_DIR}/cmake/version.rc.in" "${PROJECT_BINARY_DIR}/resources/${target}.rc" @ONLY)
  target_sources(${target} PRIVATE "${PROJECT_BINARY_DIR}/resources/${target}.rc")
endfunction()

# Makes UTF-8 the narrow encoding of a program: its arguments, its paths, its log texts.
function(corvo_utf8_program target)
  if(MSVC)
    target_sources(${target} PRIVATE "${PROJECT_SOURCE_DIR}/cmake/utf8.manifest")
  else()
    file(WRITE "${PROJECT_BINARY_DIR}/resources/utf8.rc" "1 24 \"${PROJECT_SOURCE_DIR}/cmake/utf8.manifest\"\n")
    target_sources(${target} PRIVATE "${PROJECT_BINARY_DIR}/resources/utf8.rc")
  endif()
endfunction()

# Addresses are drawn at random from the whole address space, data is never executed.
function(corvo_harden_windows target)
  if(MSVC)
    target_link_options(${target} PRIVATE /DYNAMICBASE /HIGHENTROPYVA /NXCOMPAT)
  else()
    target_link_options(${target} PRIVATE -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat)
  endif()
  corvo_version_resource(${target})
endfunction()

# The libraries of others that the programs need beside them, in the build tree as in the installed one. Other toolchains
# put them there themselves.
set(CORVO_RUNTIME_LIBRARIES "")
if(CORVO_WINDOWS_PREFIX)
  foreach(name IN ITEMS libprotobuf.dll libsqlite3.dll)
    list(APPEND CORVO_RUNTIME_LIBRARIES "${CORVO_WINDOWS_PREFIX}/bin/${name}")
  endforeach()
  foreach(name IN ITEMS libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll)
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name} OUTPUT_VARIABLE library
                    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    list(APPEND CORVO_RUNTIME_LIBRARIES "${library}")
  endforeach()
  file(COPY ${CORVO_RUNTIME_LIBRARIES} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
endif()
