# ribkit_tests(NAME files... [WAITS] [SERVICES library] [LIBRARIES ...]): one test binary a folder. Natively every test is
# a ctest entry of its own; under emulation and sanitizers, where a process is dear, the binary is one entry. The services
# that the core calls are recording fakes unless SERVICES names a library that really offers them. What all tests include
# is compiled once. WAITS says that the tests wait more than they work: they begin first, beside the others.
if(RIBKIT_TESTS)
    set(RIBKIT_TEST_OPTIONS $<$<CONFIG:Release>:-O1>) # compiling them takes longer than running them
    enable_testing()
    if(CMAKE_CROSSCOMPILING)
        set(INSTALL_GTEST OFF CACHE INTERNAL "")
        set(BUILD_GMOCK OFF CACHE INTERNAL "")
        add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
    else()
        find_package(GTest REQUIRED)
        include(GoogleTest)
    endif()
    add_library(ribkit_test_headers OBJECT ${CMAKE_SOURCE_DIR}/testing/headers.cpp)
    target_precompile_headers(ribkit_test_headers PRIVATE $<$<COMPILE_LANGUAGE:CXX>:<gtest/gtest.h>>)
    # As tests, which are programs: else the compiler would not take it.
    set_target_properties(ribkit_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(ribkit_test_headers PRIVATE -fPIE)
    target_compile_options(ribkit_test_headers PRIVATE ${RIBKIT_TEST_OPTIONS})
    target_link_libraries(ribkit_test_headers PRIVATE ribkit_warnings GTest::gtest)
endif()

function(ribkit_tests name)
    if(NOT RIBKIT_TESTS)
        return()
    endif()
    cmake_parse_arguments(PARSE_ARGV 1 arg "WAITS" "SERVICES" "LIBRARIES")
    if(NOT arg_SERVICES)
        set(arg_SERVICES ribkit_fakes)
    endif()
    add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
    target_precompile_headers(${name} REUSE_FROM ribkit_test_headers)
    target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
    target_compile_definitions(${name} PRIVATE RIBKIT_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
        RIBKIT_EMULATED=$<BOOL:${CMAKE_CROSSCOMPILING}>)
    target_compile_options(${name} PRIVATE ${RIBKIT_TEST_OPTIONS})
    target_link_libraries(${name} PRIVATE ribkit_warnings ${arg_LIBRARIES} ribkit_testing
        $<LINK_GROUP:RESCAN,ribkit_static,${arg_SERVICES}> GTest::gtest_main)
    if(CMAKE_CROSSCOMPILING OR RIBKIT_SANITIZE)
        add_test(NAME ${name} COMMAND ${name})
    else()
        set(cost 0)
        if(arg_WAITS)
            set(cost 100)
        endif()
        gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES COST ${cost})
    endif()
endfunction()

# ribkit_starter(TARGET VARIABLE): what tests start to run a program. A program of another processor is started by a script:
# its emulator goes in front of it.
function(ribkit_starter target variable)
    set(starter $<TARGET_FILE:${target}>)
    if(CMAKE_CROSSCOMPILING)
        list(JOIN CMAKE_CROSSCOMPILING_EMULATOR " " emulator)
        set(starter ${CMAKE_CURRENT_BINARY_DIR}/emulated_${target})
        file(GENERATE OUTPUT ${starter} CONTENT "#!/bin/sh\nexec ${emulator} $<TARGET_FILE:${target}> \"$@\"\n"
            FILE_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
    endif()
    set(${variable} ${starter} PARENT_SCOPE)
endfunction()
