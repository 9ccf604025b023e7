# What an install holds. All of it may move together: nothing in it names the prefix, the build or the sources.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# A folder of its own, because "telemetry/" and "platform/" are anybody's names.
set(header_dir "${CMAKE_INSTALL_INCLUDEDIR}/libtelemetryprocessor")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TelemetryProcessor")

# Only what a desk has and a device has not; a device's libraries are found where they are.
set(host_libraries telemetry_host_binder telemetry_host_logging telemetry_host_settings telemetry_host_tracing)

set_target_properties(telemetryprocessor ${host_libraries} PROPERTIES
    INSTALL_RPATH "$ORIGIN"
    INSTALL_RPATH_USE_LINK_PATH ON)
set_target_properties(telemetryprocessor PROPERTIES EXPORT_NAME processor)
foreach(target telemetry_headers telemetry_host_platform ${host_libraries})
    string(REPLACE telemetry_ "" name ${target})
    set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
endforeach()

install(TARGETS telemetryprocessor telemetry_host_platform ${host_libraries} telemetry_headers
        EXPORT TelemetryProcessorTargets
        INCLUDES DESTINATION "${header_dir}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/telemetry" DESTINATION "${header_dir}" FILES_MATCHING PATTERN "*.h")
foreach(header settings/HostTelemetrySettings.h logging/HostLoggerBackend.h tracing/HostTracing.h)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/platform/${header}" DESTINATION "${header_dir}/platform/${folder}")
endforeach()

if(TARGET telemetry-replay)
    file(RELATIVE_PATH libraries_from_tools "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set_target_properties(telemetry-replay PROPERTIES
        INSTALL_RPATH "$ORIGIN/${libraries_from_tools}"
        INSTALL_RPATH_USE_LINK_PATH ON)
    install(TARGETS telemetry-replay)
endif()

install(FILES "${PROJECT_SOURCE_DIR}/README.md" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

install(EXPORT TelemetryProcessorTargets NAMESPACE Telemetry:: DESTINATION "${package_dir}")
# Until 1.0 a minor version may change what the headers offer.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TelemetryProcessorConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TelemetryProcessorConfigVersion.cmake"
              "${PROJECT_SOURCE_DIR}/cmake/TelemetryProcessorConfig.cmake"
              "${PROJECT_SOURCE_DIR}/cmake/FindAndroidPlatform.cmake"
        DESTINATION "${package_dir}")

file(RELATIVE_PATH headers_from_libraries "${CMAKE_INSTALL_FULL_LIBDIR}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
get_target_property(android_library AndroidPlatform::utils IMPORTED_LOCATION)
get_filename_component(android_libdir "${android_library}" DIRECTORY)
configure_file("${PROJECT_SOURCE_DIR}/cmake/telemetryprocessor.pc.in" "${PROJECT_BINARY_DIR}/telemetryprocessor.pc"
               @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/telemetryprocessor.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
