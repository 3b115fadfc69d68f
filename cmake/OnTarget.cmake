# What the tests need for a target that is not the machine that builds: Android's, or one that is
# emulated.

# How a test starts a program of the build by itself: the program's file or, where programs run
# under an emulator that only CTest knows of, a script that starts it.
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

# For script/test-arm, which compares what it writes on ARM with what it writes here.
add_executable(dump_lists support/dump_lists.cpp)
target_link_libraries(dump_lists PRIVATE spatializerparamstorage ormel_options)
ormel_runnable(ignored dump_lists)

# For script/size. It has what the library links, so that a load finds that loaded.
add_executable(load_costs ${PROJECT_SOURCE_DIR}/bench/load_costs.cpp)
target_link_libraries(load_costs PRIVATE
    kivparamstorage LibXml2::LibXml2 Android::log Android::utils ${CMAKE_DL_LIBS} ormel_options)
target_link_options(load_costs PRIVATE LINKER:--no-as-needed)

# Paths of a target's sources from the project's folder, those of its objects included, without
# what is made in building.
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

# Appends a line for each program and library of a folder and those below it to targets.txt, such as
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

# Holds Android.bp to this project, whose sources are known when all has been read.
if(TARGET ormel-tuning)
    file(WRITE ${PROJECT_BINARY_DIR}/targets.txt "")
    cmake_language(DEFER DIRECTORY ${PROJECT_SOURCE_DIR}
        CALL ormel_write_targets ${PROJECT_SOURCE_DIR})
    add_test(NAME android_bp
        COMMAND ${CMAKE_COMMAND}
            -D TARGETS=${PROJECT_BINARY_DIR}/targets.txt -D VERSION=${PROJECT_VERSION}
            -P ${CMAKE_CURRENT_SOURCE_DIR}/android_bp_test.cmake)
endif()
