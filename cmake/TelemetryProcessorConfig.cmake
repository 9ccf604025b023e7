# Gives Telemetry::processor, the library, and Telemetry::host_platform, what a desk has in place of a device's OS.
include(CMakeFindDependencyMacro)
list(PREPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}")
find_dependency(AndroidPlatform)
list(POP_FRONT CMAKE_MODULE_PATH)
find_dependency(jsoncpp)
include("${CMAKE_CURRENT_LIST_DIR}/TelemetryProcessorTargets.cmake")
