# Checks that Android.bp has the same source lists, version and shipped flags as this project:
#     cmake -D TARGETS=FILE -D VERSION=VERSION -P android_bp_test.cmake
# A module's name is the target's, apart from a prefix "lib" or "ormel_" or a suffix "_host": in an
# Android tree all modules share one namespace.
cmake_minimum_required(VERSION 3.22)
include(${CMAKE_CURRENT_LIST_DIR}/../cmake/Shipped.cmake)

# Targets that an Android tree does not need:
set(only_here
    dump_lists       # for script/test-arm
    hostile          # for script/hostile
    load_costs       # for script/size
    make_dictionary  # for script/fuzz
    ormel_bench      # compares with the host's libraries
    readme_effect    # extracted from the README when this project is configured
    try_mutator)     # runs the fuzzer's mutator without a fuzzer
# Not needed in an Android tree, which links libFuzzer's main.
set(not_there fuzz/replay.cpp)

get_filename_component(root ${CMAKE_CURRENT_LIST_DIR} DIRECTORY)
file(READ ${root}/Android.bp text)
string(REGEX REPLACE "//[^\n]*" "" text "${text}")
# CMake does not split lists inside brackets.
string(REPLACE "[" "<" text "${text}")
string(REPLACE "]" ">" text "${text}")

if(NOT text MATCHES "-DORMEL_VERSION=..${VERSION}..\"")
    message(SEND_ERROR "The version is ${VERSION} here, but not in Android.bp")
endif()

# Sets sources_NAME for every module, filegroup and genrule.
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
            message(SEND_ERROR "Android.bp names ${pattern}, which does not exist")
        endif()
    endforeach()
endforeach()

set(expected_flags ${ORMEL_SHIPPED_COMPILE_FLAGS} ${ORMEL_SHIPPED_LINK_FLAGS})
list(SORT expected_flags)
list(SORT shipped_flags)
if(NOT shipped_flags STREQUAL expected_flags)
    message(SEND_ERROR "The shipped flags are [${expected_flags}], but in Android.bp [${shipped_flags}]")
endif()

# In a module's sources, ":NAME" means the files of that filegroup.
foreach(module IN LISTS modules)
    foreach(source IN LISTS sources_${module})
        if(source MATCHES "^:(lib|ormel_)?(.*)")
            list(REMOVE_ITEM sources_${module} ${source})
            list(APPEND sources_${module} ${sources_${CMAKE_MATCH_2}})
        endif()
    endforeach()
endforeach()

# Each target must have a module with its sources, and each module a target.
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
            "${target} in Android.bp lacks [${lacking}] and has in addition [${there}]")
    endif()
    list(REMOVE_ITEM modules ${target})
endforeach()
if(modules)
    message(SEND_ERROR "Android.bp has modules that this project lacks: ${modules}")
endif()
