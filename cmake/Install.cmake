# The installed tree: headers, the two libraries, and a CMake package that brings along what finds
# Android's libraries.
include(CMakePackageConfigHelpers)

# A host has no device's libkivparamstorage.so, so ours lies beside the library.
set_target_properties(spatializerparamstorage kivparamstorage PROPERTIES
    INSTALL_RPATH $ORIGIN
    INSTALL_RPATH_USE_LINK_PATH ON)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/spatializerparamstorage)
install(TARGETS spatializerparamstorage kivparamstorage
    EXPORT spatializerparamstorageTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY include/ormel sibling/include/kivparamstorage
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(EXPORT spatializerparamstorageTargets
    NAMESPACE ormel::
    DESTINATION ${package_dir})

write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/spatializerparamstorageConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/spatializerparamstorageConfigVersion.cmake
    cmake/spatializerparamstorageConfig.cmake
    cmake/FindAndroidPlatform.cmake
    DESTINATION ${package_dir})
