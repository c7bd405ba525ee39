# Fails when an include runs against an arrow, or does not name its folder, anywhere in the tree.
cmake_minimum_required(VERSION 3.25)

# Each row: a folder, and the folders besides itself from which it may include.
set(floor "published common")
set(page "calibration wizard hoststate pictures headboard ${floor}")
set(stand_ins "simulator/files simulator/boundary simulator/camera simulator/solver simulator/pictures simulator/host simulator/host/session simulator/host/report simulator/host/run simulator/host/recording simulator/host/window")
set(below_host "published simulator/files simulator/boundary simulator/camera simulator/pictures")
set(host "simulator/host/session simulator/host/report simulator/host/run simulator/host/recording simulator/host/window")
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
    "simulator/boundary: published"
    "simulator/camera: published simulator/files simulator/boundary"
    "simulator/solver: published simulator/files simulator/boundary" # not the camera: it sees frames and registers alone
    "simulator/pictures: simulator/camera"
    "simulator/host/session: ${below_host}"
    "simulator/host/report: ${below_host} simulator/host/session"
    "simulator/host/run: ${below_host} simulator/host/session simulator/host/report"
    "simulator/host/recording: ${below_host} simulator/host/session simulator/host/report simulator/host/run"
    "simulator/host/window: ${below_host} simulator/host/session simulator/host/report simulator/host/run"
    "simulator/host: ${below_host} ${host}"
    "tools/headboard-image: headboard ${floor} simulator/files simulator/camera"
    "tools/window_picture: simulator/files"
    "tools/headboard-config: config_page wizard headboard ${floor} simulator/files simulator/camera tools/window_picture"
    "tools/shading: ${below_host} simulator/solver simulator/host/session simulator/host/report pictures headboard common"
    "tools/screenshots: ${product} ${stand_ins} tests/support tools/window_picture"
    "tests/support: ${product} ${stand_ins}"
    "tests: ${product} ${stand_ins} tools/shading tools/headboard-image tools/headboard-config tests/support"
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

# Own headers are included in quotes and from the root; what the build makes has no folder.
set(wrong "")
set(seen 0)
foreach(root IN ITEMS src simulator tools tests hardening benchmarks)
    foreach(kind IN ITEMS h cpp ui ui.in)
        list(APPEND globs ${SOURCE}/${root}/*.${kind})
    endforeach()
endforeach()
file(GLOB_RECURSE sources RELATIVE ${SOURCE} ${globs})
foreach(source IN LISTS sources)
    string(REGEX REPLACE "^src/" "" file ${source})
    folder_of(${file} from)
    file(STRINGS ${SOURCE}/${source} includes REGEX "^ *# *include *[\"<]|<header")
    foreach(include IN LISTS includes)
        # A form's <header> becomes an include in quotes, unless it says "global".
        string(REGEX REPLACE "^ *<header location=\"global\">([^<]*)<.*" "<\\1>" include "${include}")
        string(REGEX REPLACE "^ *<header[^>]*>([^<]*)<.*" "\"\\1\"" include "${include}")
        string(REGEX MATCH "([\"<])([^\">]*)[\">]" unused "${include}")
        set(quote "${CMAKE_MATCH_1}")
        set(target "${CMAKE_MATCH_2}")
        folder_of(${target} to)
        if(quote STREQUAL "<")
            if(to)
                string(APPEND wrong "\n  ${source} includes <${target}>, which takes quotes")
            endif()
        elseif(NOT target MATCHES "/")
            if(NOT target MATCHES "^(ui|moc)_|\\.moc$")
                string(APPEND wrong "\n  ${source} includes ${target} without its folder")
            endif()
        else()
            math(EXPR seen "${seen} + 1")
            if(NOT from OR NOT to IN_LIST below_${from})
                string(APPEND wrong "\n  ${source} includes ${target}")
            endif()
        endif()
    endforeach()
endforeach()
if(wrong OR seen LESS 700)
    message(FATAL_ERROR "includes that run against the arrows (${seen} seen):${wrong}")
endif()
