# What an install holds, as two components: what runs, and what building against it takes besides. All of it may move
# together: nothing in it names the prefix, the build or the sources.

include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# A folder of its own, because "telemetry/" and "platform/" are anybody's names.
set(header_dir "${CMAKE_INSTALL_INCLUDEDIR}/libtelemetryprocessor")
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/TelemetryProcessor")
set(data_dir "${CMAKE_INSTALL_DATADIR}/libtelemetryprocessor")
set(doc_dir "${CMAKE_INSTALL_DATAROOTDIR}/doc/libtelemetryprocessor")

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
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
        INCLUDES DESTINATION "${header_dir}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/telemetry" DESTINATION "${header_dir}" COMPONENT development
        FILES_MATCHING PATTERN "*.h")
foreach(header settings/HostTelemetrySettings.h logging/HostLoggerBackend.h tracing/HostTracing.h)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES "${PROJECT_SOURCE_DIR}/platform/${header}" DESTINATION "${header_dir}/platform/${folder}"
        COMPONENT development)
endforeach()

if(TARGET telemetry-replay)
    file(RELATIVE_PATH libraries_from_tools "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
    set_target_properties(telemetry-replay PROPERTIES
        INSTALL_RPATH "$ORIGIN/${libraries_from_tools}"
        INSTALL_RPATH_USE_LINK_PATH ON)
    install(TARGETS telemetry-replay COMPONENT runtime)
    if(TARGET replay_documents)
        install(FILES "${PROJECT_BINARY_DIR}/replay/telemetry-replay.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1"
            COMPONENT runtime)
        # bash looks here for a file of the command's own name.
        install(FILES "${PROJECT_BINARY_DIR}/replay/telemetry-replay.bash"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME telemetry-replay
            COMPONENT runtime)
    endif()
endif()

# Not with the documents, which small systems leave out.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/samples" DESTINATION "${data_dir}" COMPONENT runtime
    FILES_MATCHING PATTERN "*.json" PATTERN "*.jsonl")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION "${data_dir}" COMPONENT development)
install(FILES "${PROJECT_SOURCE_DIR}/README.md" "${PROJECT_SOURCE_DIR}/CHANGELOG.md"
        DESTINATION "${doc_dir}" COMPONENT runtime)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION "${doc_dir}" COMPONENT runtime
    PATTERN "Doxyfile" EXCLUDE)

install(EXPORT TelemetryProcessorTargets NAMESPACE Telemetry:: DESTINATION "${package_dir}" COMPONENT development)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/TelemetryProcessorConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/TelemetryProcessorConfigVersion.cmake"
              "${PROJECT_SOURCE_DIR}/cmake/TelemetryProcessorConfig.cmake"
              "${PROJECT_SOURCE_DIR}/cmake/FindAndroidPlatform.cmake"
        DESTINATION "${package_dir}" COMPONENT development)

file(RELATIVE_PATH headers_from_libraries "${CMAKE_INSTALL_FULL_LIBDIR}" "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
get_target_property(android_library AndroidPlatform::utils IMPORTED_LOCATION)
get_filename_component(android_libdir "${android_library}" DIRECTORY)
configure_file("${PROJECT_SOURCE_DIR}/cmake/telemetryprocessor.pc.in" "${PROJECT_BINARY_DIR}/telemetryprocessor.pc"
               @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/telemetryprocessor.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig"
    COMPONENT development)
