# The Perfetto SDK, any release from v14.0 on: perfetto.h and a library built from perfetto.cc (position-independent
# when static). Gives PerfettoSdk::PerfettoSdk. PERFETTO_ROOT points at a folder that has both, in itself or in sdk/,
# include/ and lib/; no other is searched then, and a missing file is an error that says which.

include(FindPackageHandleStandardArgs)

set(_perfetto_search PATH_SUFFIXES sdk include lib perfetto NO_CACHE)
if(PERFETTO_ROOT)
    list(APPEND _perfetto_search PATHS "${PERFETTO_ROOT}" NO_DEFAULT_PATH)
endif()
# Not cached: another PERFETTO_ROOT must be looked into, and none must find nothing left over.
unset(PerfettoSdk_INCLUDE_DIR)
unset(PerfettoSdk_LIBRARY)
find_path(PerfettoSdk_INCLUDE_DIR perfetto.h ${_perfetto_search})
find_library(PerfettoSdk_LIBRARY perfetto ${_perfetto_search})

if(PERFETTO_ROOT)
    if(NOT PerfettoSdk_INCLUDE_DIR)
        message(FATAL_ERROR "PERFETTO_ROOT=${PERFETTO_ROOT}: no perfetto.h there, nor in its sdk/ or include/")
    endif()
    if(NOT PerfettoSdk_LIBRARY)
        message(FATAL_ERROR "PERFETTO_ROOT=${PERFETTO_ROOT}: no libperfetto.a or libperfetto.so there, nor in its sdk/ "
                            "or lib/; build one from the SDK's perfetto.cc with -fPIC")
    endif()
endif()

set(PerfettoSdk_FIND_QUIETLY TRUE)  # doing without is no fault: who asks says what follows
find_package_handle_standard_args(PerfettoSdk REQUIRED_VARS PerfettoSdk_INCLUDE_DIR PerfettoSdk_LIBRARY)

# The SDK aborts when its caller was compiled with other debug checks than itself, and these hang on NDEBUG. No file
# says how it was built, so a program that starts it finds out: once for each library.
function(_perfetto_find_debug_checks)
    file(TIMESTAMP "${PerfettoSdk_LIBRARY}" built)
    set(key "${PerfettoSdk_LIBRARY} ${built}")
    if(_perfetto_probed STREQUAL key)
        return()
    endif()
    foreach(option -UNDEBUG -DNDEBUG)
        try_run(status compiled
            SOURCE_FROM_CONTENT probe.cpp [[
#include <perfetto.h>
int main() {
    perfetto::TracingInitArgs args;
    args.backends = perfetto::kInProcessBackend;
    perfetto::Tracing::Initialize(args);
}
]]
            NO_CACHE
            COMPILE_DEFINITIONS ${option}
            LINK_LIBRARIES PerfettoSdk::PerfettoSdk
            COMPILE_OUTPUT_VARIABLE output)
        if(NOT compiled)
            message(FATAL_ERROR "No program can be built with ${PerfettoSdk_LIBRARY}:\n${output}")
        endif()
        if(status EQUAL 0)
            set(_perfetto_probed "${key}" CACHE INTERNAL "The library that _perfetto_debug_option belongs to")
            set(_perfetto_debug_option ${option} CACHE INTERNAL "How the SDK's callers are compiled")
            return()
        endif()
    endforeach()
    message(FATAL_ERROR "A program that starts the tracing of ${PerfettoSdk_LIBRARY} does not run: ${status}")
endfunction()

if(PerfettoSdk_FOUND AND NOT TARGET PerfettoSdk::PerfettoSdk)
    find_package(Threads REQUIRED)
    add_library(PerfettoSdk::PerfettoSdk UNKNOWN IMPORTED)
    # Imported, so that its folder is a system include folder and the SDK's warnings stay out.
    set_target_properties(PerfettoSdk::PerfettoSdk PROPERTIES
        IMPORTED_LOCATION "${PerfettoSdk_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${PerfettoSdk_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES Threads::Threads
        # A static SDK stays private to the library that holds it: a service may well bring a copy of its own.
        INTERFACE_LINK_OPTIONS LINKER:--exclude-libs,libperfetto.a)
    _perfetto_find_debug_checks()
    set_target_properties(PerfettoSdk::PerfettoSdk PROPERTIES INTERFACE_COMPILE_OPTIONS ${_perfetto_debug_option})
endif()
