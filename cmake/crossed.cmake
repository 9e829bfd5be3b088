# What a build for another system takes of this one: libraries that come as sources.

# Of xxHash the header is all that is needed; the folder it lies in holds this system's own.
find_file(HOUSE_XXHASH xxhash.h PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/xxhash/xxhash.h CONTENT "#include \"@HOUSE_XXHASH@\"\n"
    @ONLY)
set(XXHASH_INCLUDE_DIR ${CMAKE_BINARY_DIR}/xxhash)

# SQLite as one source, put together of Debian's, with what Debian's own is built with of what is
# asked of it here.
enable_language(C)
execute_process(COMMAND ${CMAKE_SOURCE_DIR}/packaging/windows/sources sqlite3
    OUTPUT_VARIABLE HOUSE_SQLITE OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
set(HOUSE_SQLITE_MADE ${CMAKE_BINARY_DIR}/sqlite3)
add_custom_command(OUTPUT ${HOUSE_SQLITE_MADE}/sqlite3.c ${HOUSE_SQLITE_MADE}/sqlite3.h
    COMMAND ${CMAKE_SOURCE_DIR}/packaging/windows/one-sqlite ${HOUSE_SQLITE} ${HOUSE_SQLITE_MADE}
    DEPENDS ${CMAKE_SOURCE_DIR}/packaging/windows/one-sqlite VERBATIM)
add_library(house_sqlite STATIC ${HOUSE_SQLITE_MADE}/sqlite3.c ${HOUSE_SQLITE_MADE}/sqlite3.h)
target_compile_options(house_sqlite PRIVATE -O2 -w)
target_compile_definitions(house_sqlite PRIVATE SQLITE_ENABLE_COLUMN_METADATA
    SQLITE_OMIT_LOOKASIDE SQLITE_OMIT_LOAD_EXTENSION SQLITE_THREADSAFE=1
    SQLITE_MAX_VARIABLE_NUMBER=250000 SQLITE_MAX_SCHEMA_RETRY=25)
target_include_directories(house_sqlite SYSTEM PUBLIC ${HOUSE_SQLITE_MADE})
add_library(SQLite::SQLite3 ALIAS house_sqlite)
# Who looks for it finds that.
file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/sqlite3-config.cmake "")
file(WRITE ${CMAKE_FIND_PACKAGE_REDIRECTS_DIR}/sqlite3-config-version.cmake
    "set(PACKAGE_VERSION_COMPATIBLE TRUE)\n")

if(BUILD_TESTING)
    find_path(HOUSE_GOOGLETEST googlemock/CMakeLists.txt PATHS /usr/src/googletest
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(CMAKE_UNITY_BUILD OFF)
    set(INSTALL_GTEST OFF)
    add_subdirectory(${HOUSE_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    set(CMAKE_UNITY_BUILD ON)
endif()

if(NOT VALTRINO_CONSOLE_ONLY)
    include(cmake/crossed_qt.cmake)
endif()
