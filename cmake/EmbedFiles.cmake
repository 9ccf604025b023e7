# telemetry_embed(TARGET NAME FILES...) puts files into a target as bytes. Sources of the target then have them by
#
#     #include "embedded/NAME.h"
#     std::string_view page = embedded::report_html;  // of report.html
#
# CMake writes the bytes when it configures, which it does anew when a file changes: it is the one tool that every build
# has, also one for another machine, and tools that read the sources find the header before anything is built.

function(telemetry_embed target name)
    set(namespace "Velo::OS::Telemetry::replay::embedded")
    set(declarations "")
    set(definitions "")
    foreach(file IN LISTS ARGN)
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/${file}")
        get_filename_component(variable "${file}" NAME)
        string(MAKE_C_IDENTIFIER "${variable}" variable)
        file(READ "${file}" bytes HEX)
        string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
        string(APPEND declarations "extern const std::string_view ${variable};\n")
        # The closing NUL, which is no part of the view, lets a file be empty.
        string(APPEND definitions "namespace {\nconstexpr char ${variable}_bytes[] = {${bytes}'\\0'};\n}\n"
            "const std::string_view ${variable}{${variable}_bytes, sizeof(${variable}_bytes) - 1};\n")
    endforeach()

    set(generated "${CMAKE_CURRENT_BINARY_DIR}/embedded/${name}")
    string(CONCAT header "#pragma once\n\n#include <string_view>\n\n"
        "namespace ${namespace} {\n\n${declarations}\n}  // namespace ${namespace}\n")
    string(CONCAT source "#include \"embedded/${name}.h\"\n\n"
        "namespace ${namespace} {\n\n${definitions}\n}  // namespace ${namespace}\n")
    # Leaves a file alone that has not changed.
    file(CONFIGURE OUTPUT "${generated}.h" CONTENT "${header}" @ONLY)
    file(CONFIGURE OUTPUT "${generated}.cpp" CONTENT "${source}" @ONLY)
    target_sources(${target} PRIVATE "${generated}.cpp")
    target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}")
endfunction()
