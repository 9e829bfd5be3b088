# What a build for another system takes of this one: libraries that come as sources.

# Of xxHash the header is all that is needed; the folder it lies in holds this system's own.
find_file(HOUSE_XXHASH xxhash.h PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CONFIGURE OUTPUT ${CMAKE_BINARY_DIR}/xxhash/xxhash.h CONTENT "#include \"@HOUSE_XXHASH@\"\n"
    @ONLY)
set(XXHASH_INCLUDE_DIR ${CMAKE_BINARY_DIR}/xxhash)

if(BUILD_TESTING)
    find_path(HOUSE_GOOGLETEST googlemock/CMakeLists.txt PATHS /usr/src/googletest
        NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(CMAKE_UNITY_BUILD OFF)
    set(INSTALL_GTEST OFF)
    add_subdirectory(${HOUSE_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
    set(CMAKE_UNITY_BUILD ON)
endif()
