# `cpack` makes two Debian packages of what an install holds: the libraries with the tool, and what building against
# them takes besides.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "libtelemetryprocessor maintainers <maintainers@libtelemetryprocessor.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)  # whatever the umask is
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libtelemetryprocessor${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION "Telemetry event pipeline, and telemetry-replay to run it on a desk
The shared library that an on-device telemetry service loads: monitors observe every event, guards may drop it,
appliers enrich it. With telemetry-replay, which runs the same pipeline over captured events.")
# What the binaries link against says which packages they need; their own libraries lie beside each other.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libtelemetryprocessor-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION "Telemetry event pipeline: headers, CMake package and pkg-config file
For building a service, or a desk program, with libtelemetryprocessor.")
# What the public headers include and the CMake package looks for.
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "android-liblog-dev, android-libbase-dev, android-libutils-dev, android-libcutils-dev, \
android-platform-frameworks-native-headers, libjsoncpp-dev")

include(CPack)
