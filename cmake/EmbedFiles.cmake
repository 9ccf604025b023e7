# telemetry_embed(TARGET NAME FILES...) puts files into a target as bytes. Sources of the target then have them by
#
#     #include "embedded/NAME.h"
#     std::string_view page = embedded::report_html;  // of report.html
#
# This file is also the script that writes those bytes, because CMake is the one tool that every build has, also one for
# another machine.

if(NOT CMAKE_SCRIPT_MODE_FILE)
    set(TELEMETRY_EMBED_SCRIPT "${CMAKE_CURRENT_LIST_FILE}")

    function(telemetry_embed target name)
        set(generated "${CMAKE_CURRENT_BINARY_DIR}/embedded/${name}")
        list(TRANSFORM ARGN PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/" OUTPUT_VARIABLE files)
        add_custom_command(OUTPUT "${generated}.h" "${generated}.cpp"
            COMMAND "${CMAKE_COMMAND}" "-DGENERATED=${generated}" "-DFILES=${files}" -P "${TELEMETRY_EMBED_SCRIPT}"
            DEPENDS ${files} "${TELEMETRY_EMBED_SCRIPT}"
            COMMENT "Embedding ${name}"
            VERBATIM)
        target_sources(${target} PRIVATE "${generated}.h" "${generated}.cpp")
        target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}")
    endfunction()
    return()
endif()

set(namespace "Velo::OS::Telemetry::replay::embedded")
get_filename_component(header "${GENERATED}.h" NAME)
set(declarations "")
set(definitions "")
foreach(file IN LISTS FILES)
    get_filename_component(variable "${file}" NAME)
    string(MAKE_C_IDENTIFIER "${variable}" variable)
    file(READ "${file}" bytes HEX)
    string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
    string(REGEX REPLACE "(......,......,......,......,......,......,......,......,)" "\\1\n    " bytes "${bytes}")
    string(APPEND declarations "extern const std::string_view ${variable};\n")
    # The closing NUL, which is no part of the view, lets a file be empty.
    string(APPEND definitions "namespace {\nconstexpr char ${variable}_bytes[] = {\n    ${bytes}'\\0'};\n}\n"
        "const std::string_view ${variable}{${variable}_bytes, sizeof(${variable}_bytes) - 1};\n")
endforeach()
file(WRITE "${GENERATED}.h" "#pragma once\n\n#include <string_view>\n\n"
    "namespace ${namespace} {\n\n${declarations}\n}  // namespace ${namespace}\n")
file(WRITE "${GENERATED}.cpp" "#include \"embedded/${header}\"\n\n"
    "namespace ${namespace} {\n\n${definitions}\n}  // namespace ${namespace}\n")
