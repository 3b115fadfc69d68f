# Installs the headers, the two libraries, and a CMake package that includes FindAndroidPlatform.
include(CMakePackageConfigHelpers)

# A host lacks the device's libkivparamstorage.so, so the stand-in is installed beside the library.
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
