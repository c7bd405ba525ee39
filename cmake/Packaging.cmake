# The archive that users unpack into the folder where the host looks for plug-ins: the plug-in, and beside it a folder of
# its name with the guide and the list of the files.
install(TARGETS KestraMfr RUNTIME DESTINATION . LIBRARY DESTINATION .)
install(FILES docs/users-guide.md DESTINATION KestraMfr)
install(SCRIPT cmake/write_file_list.cmake)

set(CPACK_PACKAGE_VENDOR "KestraMfr")
set(CPACK_PACKAGE_CHECKSUM SHA256)
set(CPACK_INCLUDE_TOPLEVEL_DIRECTORY OFF)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/package)
string(TOLOWER ${CMAKE_SYSTEM_NAME} system)
set(CPACK_PACKAGE_FILE_NAME KestraMfr-${PROJECT_VERSION}-${system}-x86_64)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
else()
    set(CPACK_GENERATOR TGZ)
endif()
include(CPack)
