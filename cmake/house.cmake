# How every target of the tree is built. A folder's CMakeLists.txt says what it is in its first
# line, then calls one of these with its files listed by name (headers and .ui files too; a file
# that no list names fails the architecture test):
#
#   house_library(jet Pager.cpp Pager.h ...)              a static library
#   house_library(controls QT Form.cpp Form.h ...)        the same with moc, uic, rcc and Qt Widgets
#   house_program(valtrino-mdb main.cpp ...)              a program in the program folder, <build>/bin
#   house_program(valtrino QT main.cpp ...)
#   house_test(jet_test SOURCES PagerTest.cpp ... LIBS jet)
#   house_test(controls_test QT SOURCES FormTest.cpp ... LIBS controls)
#   house_test(registers_test QT SERVER SOURCES ...)      some over a server: "everywhere()" in tests
#   house_fuzzer(fuzz_file SOURCES FuzzFile.cpp LIBS jet)
#
# and links what else it needs: PUBLIC what its headers show, PRIVATE what its sources use.
#
# Includes are written with their folder, own folder included: "jet/Types.h", "ado/Field.h" for
# the folders under platform/, "shell/Mirtal.h", "registers/frmBancos.h", "support/Samples.h" (tests)
# for the others. "ui_frmX.h" is made from the frmX.ui beside the header or source that includes it,
# and whoever links the library can include that header as well. The source of a class with Q_OBJECT
# ends with an include of what moc makes of its header, "controls/window/moc_Form.cpp": by itself
# that would be compiled apart, with all of Qt's headers once more.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
# Sources are compiled several at once: most of the time goes into reading headers of Qt and the
# test library. So two files of a target don't use one name for two things, even unnamed:
# ./test has clang-tidy read all files of a target as one, and fails where they do.
set(CMAKE_UNITY_BUILD ON)
set(CMAKE_UNITY_BUILD_BATCH_SIZE 16)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)

set(VALTRINO_SAMPLES ${CMAKE_SOURCE_DIR}/../shared/mdb CACHE PATH
    "The folder of real sample databases; tests that read them are skipped where it is absent")
option(VALTRINO_FATAL_WARNINGS "Stop at any warning" ON)
set(VALTRINO_SANITIZE "" CACHE STRING
    "Build with sanitizers: address (and undefined behaviour) or thread; none if empty")
set_property(CACHE VALTRINO_SANITIZE PROPERTY STRINGS "" address thread)
option(VALTRINO_COVERAGE "Build for scripts/coverage.sh: programs note what they run (clang)" OFF)
option(VALTRINO_FUZZ "Build for scripts/fuzz.sh: the fuzzers see each comparison, which is slow" OFF)
if(VALTRINO_SANITIZE STREQUAL "ON")
    # What a build folder made before remembers.
    set_property(CACHE VALTRINO_SANITIZE PROPERTY VALUE address)
endif()

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE})
endif()

# A test program holds most of the tree: linked the ordinary way, all of them take some minutes.
find_program(MOLD mold)
if(MOLD AND NOT WIN32)
    add_link_options(-fuse-ld=mold)
endif()

# What a target of ours is compiled with, in one place.
add_library(house INTERFACE)
target_compile_options(house INTERFACE -Wall -Wextra -Wconversion -Wshadow
    $<$<BOOL:${VALTRINO_FATAL_WARNINGS}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 sees overlapping copies in any "literal" + std::string it has optimised.
    target_compile_options(house INTERFACE -Wno-restrict)
    # And it takes sources that are compiled several at once for headers.
    target_compile_options(house INTERFACE -Wno-subobject-linkage)
endif()
if(WIN32)
    # Several sources at once are more sections than an object file has by itself.
    target_compile_options(house INTERFACE -Wa,-mbig-obj)
endif()
target_include_directories(house INTERFACE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform)
if(VALTRINO_COVERAGE)
    target_compile_options(house INTERFACE -fprofile-instr-generate -fcoverage-mapping)
    target_link_options(house INTERFACE -fprofile-instr-generate)
endif()
if(VALTRINO_SANITIZE STREQUAL "thread")
    target_compile_options(house INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
    target_link_options(house INTERFACE -fsanitize=thread)
elseif(VALTRINO_SANITIZE)
    target_compile_options(house INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(house INTERFACE -fsanitize=address,undefined)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
        # What tells the fuzzers which paths an input has taken, in the libraries only.
        set(HOUSE_PATHS -fsanitize-coverage=inline-8bit-counters,pc-table)
        if(VALTRINO_FUZZ)
            set(HOUSE_PATHS -fsanitize=fuzzer-no-link)
        endif()
    endif()
endif()

# moc, uic and rcc for a target. What uic makes is public, as the form headers include it, and
# counts as a system header: its warnings are not ours.
function(house_qt name)
    set_target_properties(${name} PROPERTIES AUTOMOC ON AUTOUIC ON AUTORCC ON)
    target_include_directories(${name} SYSTEM PUBLIC
        ${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/include)
    target_link_libraries(${name} PUBLIC Qt6::Widgets)
endfunction()

function(house_library name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "QT" "" "")
    add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PUBLIC house)
    if(HOUSE_PATHS)
        target_compile_options(${name} PRIVATE ${HOUSE_PATHS})
    endif()
    if(arg_QT)
        house_qt(${name})
    elseif(CMAKE_BUILD_TYPE STREQUAL "Debug")
        # The tests turn the engine over millions of times.
        target_compile_options(${name} PRIVATE -O1)
        # Of an inline function that several compiled, mold takes what comes first on its command
        # line: this library's, as a program's own sources aren't optimised.
        target_link_options(${name} INTERFACE $<TARGET_FILE:${name}>)
    endif()
endfunction()

function(house_program name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "QT" "" "")
    add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE house)
    if(arg_QT)
        house_qt(${name})
    endif()
endfunction()

# The tests of a program as so many of ctest's, each some of them one after the other in one
# process: the start and end of a process cost as much as a test of a window. The address sanitizer
# remembers no more than the processor's cache holds, and where memory came from not in full depth:
# that is a third of what it takes.
function(house_test_in_shards name shards filter)
    math(EXPR last "${shards} - 1")
    foreach(shard RANGE ${last})
        add_test(NAME ${name}.shard_${shard} COMMAND ${name})
        set_tests_properties(${name}.shard_${shard} PROPERTIES TIMEOUT 1800 ENVIRONMENT
            "QT_QPA_PLATFORM=offscreen;GTEST_FILTER=${filter};GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${shard};ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=8")
    endforeach()
endfunction()

# A GoogleTest program in <build>/tests, known to ctest in four parts, "<name>.shard_<number>"; with
# the thread sanitizer, whose tests are chosen by name, by "<name>.<Suite>.<Test>". With SERVER those
# that have a server for the data are a part of their own, "<name>.server", as each process starts
# one. Windows, which take ten times as long under the address sanitizer, are tested there over files
# of the newer version alone.
# With QT it gets its main() from tests/support/QtMain.cpp (a QApplication on the offscreen platform)
# and Qt Test's simulated keys and clicks; without, GoogleTest's own main().
function(house_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "QT;SERVER" "" "SOURCES;LIBS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE house ${arg_LIBS} GTest::gmock)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    target_compile_definitions(${name} PRIVATE VALTRINO_SAMPLES="${VALTRINO_SAMPLES}")
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    if(VALTRINO_SANITIZE STREQUAL "address")
        # Undefined behaviour is looked for in what is tested; in the tests' own sources that takes a
        # quarter of their compile time.
        target_compile_options(${name} PRIVATE -fno-sanitize=undefined)
    endif()
    if(arg_QT)
        target_link_libraries(${name} PRIVATE test_support Qt6::Test)
    else()
        target_link_libraries(${name} PRIVATE GTest::gtest_main)
    endif()
    if(NOT VALTRINO_SANITIZE STREQUAL "thread")
        set(filter "*")
        if(arg_SERVER)
            set(filter "-*/PostgreSQL")
            if(arg_QT AND VALTRINO_SANITIZE)
                string(APPEND filter ":*/Jet3")
            else()
                add_test(NAME ${name}.server COMMAND ${name} --gtest_filter=*/PostgreSQL)
                set_tests_properties(${name}.server PROPERTIES TIMEOUT 1800 ENVIRONMENT
                    "QT_QPA_PLATFORM=offscreen;ASAN_OPTIONS=quarantine_size_mb=16:malloc_context_size=8")
            endif()
        endif()
        house_test_in_shards(${name} 4 "${filter}")
        return()
    endif()
    include(GoogleTest)
    gtest_discover_tests(${name} TEST_PREFIX ${name}. DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
        PROPERTIES TIMEOUT 300 ENVIRONMENT "QT_QPA_PLATFORM=offscreen")
endfunction()

# A libFuzzer program in <build>/tests, made by clang's sanitizer build only. ctest replays
# corpus/<name> and looks for new paths from there for 5 seconds.
function(house_fuzzer name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBS")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE house ${arg_LIBS} -fsanitize=fuzzer)
    target_compile_options(${name} PRIVATE ${HOUSE_PATHS} -O1)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR}/tests)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/tests)
    add_test(NAME fuzz.${name} COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/fuzz.sh
        $<TARGET_FILE:${name}> ${CMAKE_CURRENT_SOURCE_DIR}/corpus/${name} 5)
    set_tests_properties(fuzz.${name} PROPERTIES TIMEOUT 120)
endfunction()
