# Finds Android's platform libraries as Debian packages them for hosts: headers and libraries are in
# subfolders named android of the usual folders. Defines the targets Android::log and
# Android::utils.

find_path(ANDROID_PLATFORM_INCLUDE_DIR utils/Singleton.h PATH_SUFFIXES android)
foreach(library log utils)
    find_library(ANDROID_PLATFORM_${library} ${library} PATH_SUFFIXES android NO_DEFAULT_PATH
        PATHS ${CMAKE_SYSTEM_LIBRARY_PATH} /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE})
endforeach()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(AndroidPlatform REQUIRED_VARS
    ANDROID_PLATFORM_log ANDROID_PLATFORM_utils ANDROID_PLATFORM_INCLUDE_DIR)

if(AndroidPlatform_FOUND AND NOT TARGET Android::log)
    get_filename_component(android_platform_libdir ${ANDROID_PLATFORM_utils} DIRECTORY)
    foreach(library log utils)
        add_library(Android::${library} SHARED IMPORTED)
        # Headers of imported targets are system headers, which silences the warnings in Android's.
        set_target_properties(Android::${library} PROPERTIES
            IMPORTED_LOCATION ${ANDROID_PLATFORM_${library}}
            INTERFACE_INCLUDE_DIRECTORIES
                "${ANDROID_PLATFORM_INCLUDE_DIR};${ANDROID_PLATFORM_INCLUDE_DIR}/android"
            INTERFACE_LINK_OPTIONS "-Wl,-rpath-link,${android_platform_libdir}")
    endforeach()
endif()
