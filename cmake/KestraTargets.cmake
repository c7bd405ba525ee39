# Options that every target of this project is built with.
add_library(kestra_options INTERFACE)
# The product's headers are included as "folder/file.h", all others by their path from the root.
target_include_directories(kestra_options INTERFACE ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR})
target_compile_definitions(kestra_options INTERFACE QT_NO_CAST_TO_ASCII QT_DEPRECATED_WARNINGS)
if(WIN32)
    # Its headers would define macros by the names min and max.
    target_compile_definitions(kestra_options INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN)
endif()
if(MSVC)
    target_compile_definitions(kestra_options INTERFACE _CRT_SECURE_NO_WARNINGS)
    target_compile_options(kestra_options INTERFACE /W4 /wd4251 /utf-8 /permissive- /Zc:__cplusplus)
else()
    target_compile_options(kestra_options INTERFACE -Wall -Wextra -Wconversion -Wshadow)
endif()
if(KESTRA_WERROR AND NOT MSVC)
    target_compile_options(kestra_options INTERFACE -Werror)
endif()
if(KESTRA_SANITIZE)
    target_compile_options(kestra_options INTERFACE
        -fsanitize=${KESTRA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(kestra_options INTERFACE -fsanitize=${KESTRA_SANITIZE})
endif()

# A test's own sources run once: what they test is optimised, they are not.
set(KESTRA_TEST_OPTIONS $<$<CXX_COMPILER_ID:GNU>:-Og>)

# One static library per folder.
function(kestra_folder name)
    cmake_parse_arguments(ARG "" "" "SOURCES;DEPENDS" ${ARGN})
    add_library(kestra_${name} STATIC ${ARG_SOURCES})
    target_link_libraries(kestra_${name} PUBLIC ${ARG_DEPENDS} PRIVATE kestra_options)
endfunction()

# Data files that a library looks for beside its own file, at the same place below it as below the folder; a changed
# one is copied by the next build.
function(kestra_data_beside library pattern)
    file(GLOB_RECURSE names RELATIVE ${CMAKE_CURRENT_SOURCE_DIR} CONFIGURE_DEPENDS
        ${CMAKE_CURRENT_SOURCE_DIR}/${pattern})
    set(installed_files "")
    foreach(name IN LISTS names)
        set(installed ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/${name})
        add_custom_command(OUTPUT ${installed}
            COMMAND ${CMAKE_COMMAND} -E copy ${CMAKE_CURRENT_SOURCE_DIR}/${name} ${installed}
            DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${name} VERBATIM)
        list(APPEND installed_files ${installed})
    endforeach()
    add_custom_target(${library}_data DEPENDS ${installed_files})
    add_dependencies(${library} ${library}_data)
endfunction()

# What every program with windows asks of the address sanitizer, when it is built with it.
if(KESTRA_SANITIZE MATCHES address)
    add_library(sanitizer_options OBJECT ${CMAKE_CURRENT_LIST_DIR}/sanitizer_options.cpp)
    target_link_libraries(sanitizer_options PRIVATE kestra_options)
else()
    add_library(sanitizer_options INTERFACE)
endif()
