# Defines ormel::spatializerparamstorage, and ormel::kivparamstorage for hosts that read the shared
# store.
include(CMakeFindDependencyMacro)

list(INSERT CMAKE_MODULE_PATH 0 ${CMAKE_CURRENT_LIST_DIR})
find_dependency(AndroidPlatform)
list(REMOVE_AT CMAKE_MODULE_PATH 0)

include(${CMAKE_CURRENT_LIST_DIR}/spatializerparamstorageTargets.cmake)
