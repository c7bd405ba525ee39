# Qt and the standard library are most of what a source is compiled from: the headers that most sources include are
# compiled once, and once more with the settings of test programs. A source includes all the same what it uses; builds
# with CMAKE_DISABLE_PRECOMPILE_HEADERS, as those of the longer proofs are, tell where it does not.
if(NOT CMAKE_CXX_COMPILER_ID STREQUAL GNU OR CMAKE_DISABLE_PRECOMPILE_HEADERS)
    return()
endif()

set(common_headers
    <algorithm> <array> <chrono> <cmath> <cstdint> <functional> <map> <memory> <optional> <span> <string> <utility> <vector>
    <QByteArray> <QDir> <QFile> <QFileInfo> <QImage> <QJsonDocument> <QPointer> <QString> <QStringList> <QtDebug>
    <QApplication> <QComboBox> <QDialog> <QLabel> <QLineEdit> <QPushButton>)

# kestra_precompiled(name headers...): what targets reuse. Each macro that it is compiled with has to be defined in all of
# them, so it has Qt's folders and not the macros of Qt's modules.
function(kestra_precompiled name)
    file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/empty.cpp CONTENT "")
    add_library(${name} OBJECT ${CMAKE_BINARY_DIR}/empty.cpp)
    target_include_directories(${name} SYSTEM PRIVATE $<TARGET_PROPERTY:Qt5::Widgets,INTERFACE_INCLUDE_DIRECTORIES>)
    target_compile_definitions(${name} PRIVATE $<$<NOT:$<CONFIG:Debug>>:QT_NO_DEBUG>)
    target_compile_options(${name} PRIVATE -fPIC)
    target_link_libraries(${name} PRIVATE kestra_options)
    target_precompile_headers(${name} PRIVATE ${ARGN})
endfunction()

# kestra_reuse_precompiled(folder): hands them to the folder's targets, and to those of the folders in it.
function(kestra_reuse_precompiled folder)
    get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
    foreach(target IN LISTS targets)
        get_target_property(libraries ${target} LINK_LIBRARIES)
        get_target_property(is_test ${target} KESTRA_IS_TEST)
        if(is_test)
            set_target_properties(${target} PROPERTIES PRECOMPILE_HEADERS_REUSE_FROM precompiled_for_tests)
        elseif(libraries MATCHES "kestra_options" AND NOT target MATCHES "^precompiled")
            set_target_properties(${target} PROPERTIES PRECOMPILE_HEADERS_REUSE_FROM precompiled)
        endif()
    endforeach()
    get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
    foreach(inner IN LISTS folders)
        kestra_reuse_precompiled(${inner})
    endforeach()
endfunction()

# Compiler caches that look at preprocessed sources have to see which headers those begin with.
target_compile_options(kestra_options INTERFACE -fpch-preprocess)

kestra_precompiled(precompiled ${common_headers})
if(KESTRA_TESTS)
    kestra_precompiled(precompiled_for_tests ${common_headers} <QTemporaryDir> <gtest/gtest.h>)
    target_compile_options(precompiled_for_tests PRIVATE ${KESTRA_TEST_OPTIONS})
    target_link_libraries(precompiled_for_tests PRIVATE GTest::gtest)
endif()
kestra_reuse_precompiled(${PROJECT_SOURCE_DIR})
