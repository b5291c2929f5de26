# What every target of the project is built with.

add_library(kel_options INTERFACE)
target_compile_features(kel_options INTERFACE cxx_std_20)
target_include_directories(kel_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(kel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
    -Wnon-virtual-dtor -Woverloaded-virtual)
if(KEL_WARNINGS_AS_ERRORS)
    target_compile_options(kel_options INTERFACE -Werror)
endif()
# A forwarding member that forgot its "::" calls itself.
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" OR CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12)
    target_compile_options(kel_options INTERFACE -Werror=infinite-recursion)
endif()
if(KEL_SANITIZE)
    target_compile_options(kel_options INTERFACE -fsanitize=address,undefined -fno-sanitize-recover=undefined
        -fno-omit-frame-pointer)
    target_link_options(kel_options INTERFACE -fsanitize=address,undefined)
endif()

# kel_objects(NAME SOURCE...): one folder's code, compiled once; the plug-in, the tests and the host take
# its objects by linking NAME.
function(kel_objects name)
    add_library(${name} OBJECT ${ARGN})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_link_libraries(${name} PUBLIC kel_options)
endfunction()

# kel_test(NAME SOURCES file... LIBRARIES target...): a GoogleTest program, one CTest test per program.
function(kel_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    target_link_libraries(${name} PRIVATE kel_options ${arg_LIBRARIES} GTest::gtest_main)
    add_test(NAME ${name} COMMAND ${name})
endfunction()
