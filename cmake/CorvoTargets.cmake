# Compiler settings that every target of the project shares, and the helpers that create targets.

add_library(corvo-options INTERFACE)
# MSVC's default, /fp:precise, fuses nothing either.
if(MSVC)
  target_compile_options(corvo-options INTERFACE /W4 /permissive- /utf-8 $<$<BOOL:${CORVO_WERROR}>:/WX>)
else()
  target_compile_options(
    corvo-options
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              -Wconversion
              -Wsign-conversion
              -Wshadow
              -Wnon-virtual-dtor
              -Woverloaded-virtual
              -Wold-style-cast
              -Wnull-dereference
              # A multiplication fused with an addition rounds once instead of twice: one row more would be trimmed.
              -ffp-contract=off
              $<$<CXX_COMPILER_ID:Clang>:-Wreserved-identifier>
              # GCC 12 sees overlaps in std::string's own code that are not there.
              $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
              # GCC 13 and later see reads of empty optionals that are not there.
              $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_GREATER_EQUAL:$<CXX_COMPILER_VERSION>,13>>:-Wno-maybe-uninitialized>
              $<$<BOOL:${CORVO_WERROR}>:-Werror>)
endif()

if(CORVO_SANITIZE)
  add_compile_options(-fsanitize=${CORVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${CORVO_SANITIZE})
endif()
if(CORVO_COVERAGE)
  add_link_options(--coverage)
endif()

# Settings of every target whose code is ours.
function(corvo_configure target)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:corvo-options>)
  # What is loaded into hosts is measured, neither the command-line host nor tests.
  if(CORVO_COVERAGE AND CMAKE_CURRENT_SOURCE_DIR MATCHES "/src/[^/]+$" AND NOT target MATCHES "host")
    target_compile_options(${target} PRIVATE --coverage -fprofile-abs-path -fprofile-update=atomic)
  endif()
endfunction()

# Link settings of everything that is loaded into a host: no symbol left open, read-only relocations, neighbours only.
function(corvo_harden target)
  if(WIN32)
    corvo_harden_windows(${target})
  else()
    target_link_options(${target} PRIVATE -Wl,-z,relro -Wl,-z,now -Wl,--as-needed)
    # Clang links a sanitizer's runtime into programs only: its libraries find those symbols when they are loaded.
    if(NOT (CORVO_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL Clang))
      target_link_options(${target} PRIVATE -Wl,-z,defs)
    endif()
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "$ORIGIN")
  endif()
endfunction()

# A shared library of the project, exported to other projects as corvo-telemetry::<component>.
function(corvo_add_library component)
  set(target corvo-telemetry-${component})
  add_library(${target} SHARED)
  add_library(corvo-telemetry::${component} ALIAS ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${component} VERSION ${PROJECT_VERSION}
                                             SOVERSION ${PROJECT_VERSION_MAJOR})
  if(CMAKE_CXX_COMPILER_ID STREQUAL Clang AND NOT WIN32)
    set(map "${PROJECT_SOURCE_DIR}/cmake/standard_library_hidden.map")
    target_link_options(${target} PRIVATE "-Wl,--version-script=${map}")
    set_target_properties(${target} PROPERTIES LINK_DEPENDS "${map}")
  endif()
  corvo_harden(${target})
endfunction()

# The platform's own sources: name_posix.cc or name_windows.cc for each name.
function(corvo_platform_sources target)
  if(WIN32)
    set(suffix windows)
  else()
    set(suffix posix)
  endif()
  foreach(name IN LISTS ARGN)
    target_sources(${target} PRIVATE ${name}_${suffix}.cc)
  endforeach()
endfunction()

# A null reference is passed on purpose between these files of a target: neither optimiser nor sanitizer may rely on its
# absence.
function(corvo_allow_null_references target)
  if(NOT MSVC)
    set(options -fno-delete-null-pointer-checks)
    if(CORVO_SANITIZE)
      list(APPEND options -fno-sanitize=null)
    endif()
    set_source_files_properties(${ARGN} TARGET_DIRECTORY ${target} PROPERTIES COMPILE_OPTIONS "${options}")
  endif()
endfunction()
