# Fails when an include runs against an arrow, anywhere in the tree.
cmake_minimum_required(VERSION 3.25)

# Each row: a folder, and the folders besides itself from which it may include.
set(floor "published common")
set(page "calibration wizard hoststate pictures headboard ${floor}")
set(stand_ins "simulator/files simulator/boundary simulator/camera simulator/solver simulator/host")
set(product "plugin lsc_page apga_page config_page ${page}")
set(rows
    "published:"
    "common: published"
    "wizard: ${floor}"
    "hoststate: ${floor}"
    "pictures: ${floor}"
    "headboard: ${floor}"
    "calibration: ${page}"
    "lsc_page: ${page}"
    "apga_page: ${page}"
    "config_page: wizard headboard ${floor}"
    "plugin: ${product}"
    "simulator/files:"
    "simulator/boundary:"
    "simulator/camera: published simulator/files simulator/boundary"
    "simulator/solver: published simulator/files simulator/boundary" # not the camera: it sees frames and registers alone
    "simulator/host: published simulator/files simulator/boundary simulator/camera"
    "tools/headboard-image: headboard ${floor} simulator/files simulator/camera"
    "tools/headboard-config: config_page wizard headboard ${floor} simulator/files simulator/camera"
    "tools/screenshots: ${product} tests/support"
    "tests/support: ${product} ${stand_ins}"
    "tests: ${product} ${stand_ins} tools/headboard-image tools/headboard-config tests/support"
    "hardening: ${product} ${stand_ins} tools/headboard-image tests/support"
    "benchmarks: ${product} ${stand_ins} tests/support")

set(folders "")
foreach(row IN LISTS rows)
    string(REGEX MATCH "^([^:]+):(.*)$" unused "${row}")
    set(folder ${CMAKE_MATCH_1})
    string(REGEX REPLACE "[ ;]+" ";" below "${CMAKE_MATCH_2}")
    list(APPEND folders ${folder})
    set(below_${folder} ${folder} ${below})
endforeach()

# The row that holds a file: that of the longest folder above it.
function(folder_of file result)
    set(best "")
    foreach(folder IN LISTS folders)
        string(FIND "${file}" "${folder}/" at)
        string(LENGTH "${folder}" length)
        string(LENGTH "${best}" longest)
        if(at EQUAL 0 AND length GREATER longest)
            set(best ${folder})
        endif()
    endforeach()
    set(${result} "${best}" PARENT_SCOPE)
endfunction()

set(wrong "")
set(seen 0)
file(GLOB_RECURSE sources RELATIVE ${SOURCE}
    ${SOURCE}/src/*.h ${SOURCE}/src/*.cpp ${SOURCE}/simulator/*.h ${SOURCE}/simulator/*.cpp ${SOURCE}/tools/*.h
    ${SOURCE}/tools/*.cpp ${SOURCE}/tests/*.h ${SOURCE}/tests/*.cpp ${SOURCE}/hardening/*.h ${SOURCE}/hardening/*.cpp
    ${SOURCE}/benchmarks/*.h ${SOURCE}/benchmarks/*.cpp)
foreach(source IN LISTS sources)
    string(REGEX REPLACE "^src/" "" file ${source})
    folder_of(${file} from)
    file(STRINGS ${SOURCE}/${source} includes REGEX "^#include \"[^\"]*/")
    foreach(include IN LISTS includes)
        string(REGEX REPLACE "^#include \"([^\"]*)\".*" "\\1" target "${include}")
        folder_of(${target} to)
        math(EXPR seen "${seen} + 1")
        if(NOT from OR NOT to IN_LIST below_${from})
            string(APPEND wrong "\n  ${source} includes ${target}")
        endif()
    endforeach()
endforeach()
if(wrong OR seen LESS 1000)
    message(FATAL_ERROR "includes that run against the arrows (${seen} seen):${wrong}")
endif()
