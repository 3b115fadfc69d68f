# Holds the source lists of Android.bp to those of this project's programs and libraries, and its
# version and the flags of the library that ships to this project's:
#     cmake -D TARGETS=FILE -D VERSION=VERSION -P android_bp_test.cmake
# A module's name is the target's, but for a prefix "lib" or "ormel_" or an ending "_host", since an
# Android tree has one space of names.
cmake_minimum_required(VERSION 3.22)
include(${CMAKE_CURRENT_LIST_DIR}/../cmake/Shipped.cmake)

# Targets that an Android tree has no use for:
set(only_here
    dump_lists       # script/test-arm's
    hostile          # script/hostile's
    load_costs       # script/size's
    make_dictionary  # script/fuzz's
    ormel_bench      # measures against a host's libraries
    readme_effect    # cut out of the README when this project is configured
    try_mutator)     # tries a fuzzer's mutator where there is no fuzzer
# libFuzzer, which an Android tree links, has a main of its own.
set(not_there fuzz/replay.cpp)

get_filename_component(root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
file(READ ${root}/Android.bp text)
string(REGEX REPLACE "//[^\n]*" "" text "${text}")
# Brackets would hold the elements of CMake's lists together.
string(REPLACE "[" "<" text "${text}")
string(REPLACE "]" ">" text "${text}")

if(NOT text MATCHES "-DORMEL_VERSION=..${VERSION}..\"")
    message(SEND_ERROR "The version is ${VERSION} here, and another one in Android.bp")
endif()

# sources_NAME of every module, and of every group of files or rule.
string(REGEX MATCHALL "\n[a-z_]+ {\n[^\n}][^\n]*(\n[^\n}][^\n]*)*" blocks "${text}")
foreach(block IN LISTS blocks)
    string(REGEX MATCH "\n    name: \"([^\"]*)\"" ignored "${block}")
    if(CMAKE_MATCH_1 STREQUAL ormel_shipped_defaults)
        string(REGEX MATCHALL "-[^\"]+" shipped_flags "${block}")
    endif()
    string(REGEX REPLACE "^(lib|ormel_)|_host$" "" name "${CMAKE_MATCH_1}")
    if(NOT block MATCHES "\n    srcs: <([^>]*)>")
        continue()
    endif()
    string(REGEX MATCHALL "[^\", \n]+" sources_${name} "${CMAKE_MATCH_1}")
    if(NOT block MATCHES "^\n(filegroup|genrule) ")
        list(APPEND modules ${name})
        continue()
    endif()
    foreach(pattern IN LISTS sources_${name})
        file(GLOB found ${root}/${pattern})
        if(NOT found)
            message(SEND_ERROR "There is no ${pattern}, which Android.bp names")
        endif()
    endforeach()
endforeach()

set(expected_flags ${ORMEL_SHIPPED_COMPILE_FLAGS} ${ORMEL_SHIPPED_LINK_FLAGS})
list(SORT expected_flags)
list(SORT shipped_flags)
if(NOT shipped_flags STREQUAL expected_flags)
    message(SEND_ERROR "Shipped with [${expected_flags}], in Android.bp with [${shipped_flags}]")
endif()

# Among a module's sources, ":NAME" stands for what is in the group of files.
foreach(module IN LISTS modules)
    foreach(source IN LISTS sources_${module})
        if(source MATCHES "^:(lib|ormel_)?(.*)")
            list(REMOVE_ITEM sources_${module} ${source})
            list(APPEND sources_${module} ${sources_${CMAKE_MATCH_2}})
        endif()
    endforeach()
endforeach()

# Each target has a module with its sources, and each module a target.
file(STRINGS ${TARGETS} lines)
foreach(line IN LISTS lines)
    string(REPLACE " " ";" here "${line}")
    list(POP_FRONT here target)
    if(target IN_LIST only_here)
        continue()
    endif()
    set(there ${sources_${target}})
    set(lacking ${here})
    list(REMOVE_ITEM lacking ${there} ${not_there})
    list(REMOVE_ITEM there ${here} "")
    if(lacking OR there)
        message(SEND_ERROR
            "${target} in Android.bp lacks [${lacking}] and has besides [${there}]")
    endif()
    list(REMOVE_ITEM modules ${target})
endforeach()
if(modules)
    message(SEND_ERROR "Android.bp has what this project has not: ${modules}")
endif()
