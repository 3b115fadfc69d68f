# Support for tests on a target other than the build machine: Android, or an emulated one.

# Sets a variable to the file with which a test starts a program of the build: the program or, where
# only CTest knows the emulator, a script that starts it there.
function(ormel_runnable variable target)
    if(NOT CMAKE_CROSSCOMPILING_EMULATOR)
        set(${variable} $<TARGET_FILE:${target}> PARENT_SCOPE)
        return()
    endif()
    set(script ${CMAKE_BINARY_DIR}/emulated/${target})
    list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
    file(GENERATE OUTPUT ${script}
        CONTENT "#!/bin/sh\nexec ${emulator} $<TARGET_FILE:${target}> \"$@\"\n"
        FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    set(${variable} ${script} PARENT_SCOPE)
endfunction()

# For script/test-arm, which compares its output on ARM with its output here.
add_executable(dump_lists support/dump_lists.cpp)
target_link_libraries(dump_lists PRIVATE spatializerparamstorage ormel_options)
ormel_runnable(ignored dump_lists)

# For script/size. It links the library's dependencies, so that they are loaded before the library.
add_executable(load_costs ${PROJECT_SOURCE_DIR}/bench/load_costs.cpp)
target_link_libraries(load_costs PRIVATE
    kivparamstorage LibXml2::LibXml2 Android::log Android::utils ${CMAKE_DL_LIBS} ormel_options)
target_link_options(load_costs PRIVATE LINKER:--no-as-needed)

# Paths of a target's sources, relative to the project's folder. Includes the sources of its object
# libraries; excludes generated files.
function(ormel_sources variable target)
    get_target_property(items ${target} SOURCES)
    get_target_property(folder ${target} SOURCE_DIR)
    set(paths "")
    foreach(item IN LISTS items)
        if(item MATCHES "^\\$<TARGET_OBJECTS:(.*)>$")
            ormel_sources(path ${CMAKE_MATCH_1})
        else()
            cmake_path(ABSOLUTE_PATH item BASE_DIRECTORY ${folder} OUTPUT_VARIABLE path)
            cmake_path(IS_PREFIX PROJECT_BINARY_DIR ${path} is_made)
            if(is_made)
                continue()
            endif()
            cmake_path(RELATIVE_PATH path BASE_DIRECTORY ${PROJECT_SOURCE_DIR})
        endif()
        list(APPEND paths ${path})
    endforeach()
    set(${variable} ${paths} PARENT_SCOPE)
endfunction()

# Appends a line to targets.txt for each program and library in a folder and its subfolders, such as
# "tuning_text tools/text/Names.cpp tools/text/Text.cpp".
function(ormel_write_targets folder)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(type ${target} TYPE)
        if(type MATCHES "^(EXECUTABLE|SHARED_LIBRARY|STATIC_LIBRARY)$")
            ormel_sources(paths ${target})
            list(JOIN paths " " paths)
            file(APPEND ${PROJECT_BINARY_DIR}/targets.txt "${target} ${paths}\n")
        endif()
    endforeach()
    get_property(subfolders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(subfolder IN LISTS subfolders)
        ormel_write_targets(${subfolder})
    endforeach()
endfunction()

# Checks Android.bp against this project, whose sources are known only after all folders are read.
if(TARGET ormel-tuning)
    file(WRITE ${PROJECT_BINARY_DIR}/targets.txt "")
    cmake_language(DEFER DIRECTORY ${PROJECT_SOURCE_DIR}
        CALL ormel_write_targets ${PROJECT_SOURCE_DIR})
    add_test(NAME android_bp
        COMMAND ${CMAKE_COMMAND}
            -D TARGETS=${PROJECT_BINARY_DIR}/targets.txt -D VERSION=${PROJECT_VERSION}
            -P ${CMAKE_CURRENT_SOURCE_DIR}/android_bp_test.cmake)
endif()
