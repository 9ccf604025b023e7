# The platform's own libraries as Debian packages them. Gives AndroidPlatform::log, ::base, ::utils, ::cutils and
# ::binder_headers; packages that are missing are named. Installed beside the package file, which finds it there.

include(FindPackageHandleStandardArgs)

set(_android_platform_missing "")

function(_android_platform_header variable header package)
    find_path(${variable} ${header} PATH_SUFFIXES android)
    mark_as_advanced(${variable})
    if(NOT ${variable})
        set(_android_platform_missing ${_android_platform_missing} ${package} PARENT_SCOPE)
    endif()
endfunction()

function(_android_platform_library name)
    # Only there: a library of the same short name elsewhere is another one.
    find_library(AndroidPlatform_${name}_LIBRARY ${name}
                 PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH)
    mark_as_advanced(AndroidPlatform_${name}_LIBRARY)
    if(NOT AndroidPlatform_${name}_LIBRARY OR TARGET AndroidPlatform::${name})
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

# A -dev package brings the library too, so only headers need be looked for to name it.
_android_platform_header(AndroidPlatform_INCLUDE_DIR android-base/properties.h android-libbase-dev)
_android_platform_header(AndroidPlatform_log_INCLUDE_DIR android/log.h android-liblog-dev)
_android_platform_header(AndroidPlatform_utils_INCLUDE_DIR utils/String16.h android-libutils-dev)
_android_platform_header(AndroidPlatform_cutils_INCLUDE_DIR cutils/multiuser.h android-libcutils-dev)
_android_platform_header(AndroidPlatform_binder_INCLUDE_DIR binder/PersistableBundle.h
                         android-platform-frameworks-native-headers)
foreach(_android_platform_name log base utils cutils)
    _android_platform_library(${_android_platform_name})
endforeach()

set(_android_platform_reason)
if(_android_platform_missing)
    list(JOIN _android_platform_missing " " _android_platform_missing)
    set(_android_platform_reason REASON_FAILURE_MESSAGE "install ${_android_platform_missing}")
endif()
find_package_handle_standard_args(AndroidPlatform
    REQUIRED_VARS AndroidPlatform_INCLUDE_DIR AndroidPlatform_log_INCLUDE_DIR AndroidPlatform_utils_INCLUDE_DIR
                  AndroidPlatform_cutils_INCLUDE_DIR AndroidPlatform_binder_INCLUDE_DIR
                  AndroidPlatform_log_LIBRARY AndroidPlatform_base_LIBRARY
                  AndroidPlatform_utils_LIBRARY AndroidPlatform_cutils_LIBRARY
    ${_android_platform_reason})

if(AndroidPlatform_FOUND AND NOT TARGET AndroidPlatform::binder_headers)
    set_property(TARGET AndroidPlatform::utils APPEND PROPERTY INTERFACE_LINK_LIBRARIES AndroidPlatform::log)
    add_library(AndroidPlatform::binder_headers INTERFACE IMPORTED)
    set_target_properties(AndroidPlatform::binder_headers PROPERTIES
        INTERFACE_INCLUDE_DIRECTORIES "${AndroidPlatform_INCLUDE_DIR}"
        INTERFACE_LINK_LIBRARIES AndroidPlatform::utils)
endif()
