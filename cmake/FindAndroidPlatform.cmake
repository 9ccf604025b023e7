# The platform's own libraries as Debian packages them. Gives AndroidPlatform::log, ::base, ::utils, ::cutils and
# ::binder_headers; a missing one is an error that names its package.

include(FindPackageHandleStandardArgs)

find_path(AndroidPlatform_INCLUDE_DIR android-base/properties.h PATH_SUFFIXES android)

function(_android_platform_require file package)
    if(NOT EXISTS "${file}")
        message(FATAL_ERROR "AndroidPlatform: ${file} is missing; install the package ${package}")
    endif()
endfunction()

if(NOT AndroidPlatform_INCLUDE_DIR)
    message(FATAL_ERROR "AndroidPlatform: the platform's headers are missing; install the package android-libbase-dev")
endif()

function(_android_platform_library name header)
    set(package android-lib${name}-dev)
    _android_platform_require("${AndroidPlatform_INCLUDE_DIR}/${header}" ${package})
    # Only there: a library of the same short name elsewhere is another one.
    find_library(AndroidPlatform_${name}_LIBRARY ${name}
                 PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH)
    if(NOT AndroidPlatform_${name}_LIBRARY)
        message(FATAL_ERROR "AndroidPlatform: lib${name} is missing; install the package ${package}")
    endif()
    if(TARGET AndroidPlatform::${name})
        return()
    endif()
    get_filename_component(directory "${AndroidPlatform_${name}_LIBRARY}" DIRECTORY)
    add_library(AndroidPlatform::${name} SHARED IMPORTED)
    set_target_properties(AndroidPlatform::${name} PROPERTIES
        IMPORTED_LOCATION "${AndroidPlatform_${name}_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${AndroidPlatform_INCLUDE_DIR}"
        # The libraries need each other, and their directory is not on the loader's path.
        INTERFACE_LINK_OPTIONS "LINKER:-rpath,${directory};LINKER:-rpath-link,${directory}")
endfunction()

_android_platform_library(log android/log.h)
_android_platform_library(base android-base/properties.h)
_android_platform_library(utils utils/String16.h)
_android_platform_library(cutils cutils/multiuser.h)
set_property(TARGET AndroidPlatform::utils APPEND PROPERTY INTERFACE_LINK_LIBRARIES AndroidPlatform::log)

_android_platform_require("${AndroidPlatform_INCLUDE_DIR}/binder/PersistableBundle.h"
                          android-platform-frameworks-native-headers)
if(NOT TARGET AndroidPlatform::binder_headers)
    add_library(AndroidPlatform::binder_headers INTERFACE IMPORTED)
    set_target_properties(AndroidPlatform::binder_headers PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${AndroidPlatform_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES AndroidPlatform::utils)
endif()

find_package_handle_standard_args(AndroidPlatform REQUIRED_VARS AndroidPlatform_INCLUDE_DIR
                                  AndroidPlatform_log_LIBRARY AndroidPlatform_base_LIBRARY
                                  AndroidPlatform_utils_LIBRARY AndroidPlatform_cutils_LIBRARY)
mark_as_advanced(AndroidPlatform_INCLUDE_DIR AndroidPlatform_log_LIBRARY AndroidPlatform_base_LIBRARY
                 AndroidPlatform_utils_LIBRARY AndroidPlatform_cutils_LIBRARY)
