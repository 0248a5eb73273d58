# The installed tree, and the packages through which other projects use it: docs/hosting.md shows how.

include(CMakePackageConfigHelpers)
set(CORVO_CMAKE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/corvo-telemetry")

install(
  TARGETS corvo-telemetry-commons corvo-telemetry-data-contracts corvo-telemetry-storage
  EXPORT corvo-telemetry-targets
  RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}"
  LIBRARY DESTINATION "${CORVO_LIBRARY_DIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(TARGETS corvo-telemetry-host RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
# A module is never linked, so it is not exported: hosts load it from corvo-telemetry_PLUGIN_DIR.
install(TARGETS corvo-telemetry-data-cleanup LIBRARY DESTINATION "${CORVO_LIBRARY_DIR}")

# The public headers, each in the folder that code includes it from.
function(corvo_install_headers folder)
  install(FILES ${ARGN} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/corvo-telemetry/${folder}")
endfunction()
corvo_install_headers(common src/common/error.h src/common/logger.h src/common/text.h src/common/timestamp.h
                      "${PROJECT_BINARY_DIR}/include/common/commons_export.h")
corvo_install_headers(framework src/framework/plugin_module.h src/framework/telemetry_collector_base.h)
corvo_install_headers(plugin src/plugin/load_plugin.h)
corvo_install_headers(
  storage
  src/storage/database_name.h
  src/storage/result_code.h
  src/storage/results.h
  src/storage/sql_command.h
  src/storage/statement_observer.h
  src/storage/storage_options.h
  src/storage/telemetry_storage.h
  "${PROJECT_BINARY_DIR}/include/storage/storage_export.h")
corvo_install_headers(data_contracts src/data_contracts/shared_instance.h
                      "${PROJECT_BINARY_DIR}/include/data_contracts/data_contracts_export.h")
# The contracts keep the path that a .proto file of another project imports them by.
install(DIRECTORY proto/corvo "${PROJECT_BINARY_DIR}/proto/generated/corvo" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}"
        FILES_MATCHING PATTERN "*.h" PATTERN "*.proto")
# In the source tree a header is included as "folder/name.h", which could be anybody's.
install(CODE "set(CORVO_INSTALLED_INCLUDE_DIR \"${CMAKE_INSTALL_INCLUDEDIR}\")")
install(SCRIPT cmake/CorvoInstalledIncludes.cmake)

install(EXPORT corvo-telemetry-targets NAMESPACE corvo-telemetry:: DESTINATION "${CORVO_CMAKE_DIR}")
configure_package_config_file(
  cmake/corvo-telemetry-config.cmake.in "${PROJECT_BINARY_DIR}/cmake/corvo-telemetry-config.cmake"
  INSTALL_DESTINATION "${CORVO_CMAKE_DIR}" PATH_VARS CORVO_LIBRARY_DIR)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/cmake/corvo-telemetry-config-version.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/cmake/corvo-telemetry-config.cmake"
              "${PROJECT_BINARY_DIR}/cmake/corvo-telemetry-config-version.cmake" DESTINATION "${CORVO_CMAKE_DIR}")

# The same for builds without CMake.
set(CORVO_PKGCONFIG_DIR "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}/${CORVO_PKGCONFIG_DIR}"
           OUTPUT_VARIABLE CORVO_PREFIX_FROM_PKGCONFIG)
configure_file(cmake/corvo-telemetry.pc.in "${PROJECT_BINARY_DIR}/cmake/corvo-telemetry.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/cmake/corvo-telemetry.pc" DESTINATION "${CORVO_PKGCONFIG_DIR}")

install(DIRECTORY docs/schema DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(FILES LICENSE CHANGELOG.md docs/behaviour.md docs/contracts.md docs/host.md docs/hosting.md docs/storage.md
        DESTINATION "${CMAKE_INSTALL_DOCDIR}")

# cpack packs the installed tree into one archive.
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  install(FILES ${CORVO_RUNTIME_LIBRARIES} DESTINATION "${CMAKE_INSTALL_BINDIR}")
  install(FILES packaging/windows/corvo-telemetry-cleanup.xml packaging/windows/install.ps1 DESTINATION .)
else()
  set(CPACK_GENERATOR TGZ)
endif()
set(CPACK_PACKAGE_VENDOR "Corvo")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
include(CPack)
