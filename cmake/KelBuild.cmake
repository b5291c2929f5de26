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

# kel_objects(NAME SOURCE... [DEPENDS target...]): one folder's code, compiled once, and what it needs; the
# plug-in, the tests and the host take its objects by kel_link.
function(kel_objects name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "DEPENDS")
    add_library(${name} OBJECT ${arg_UNPARSED_ARGUMENTS})
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE ON KEL_DEPENDS "${arg_DEPENDS}")
    target_link_libraries(${name} PUBLIC kel_options ${arg_DEPENDS})
endfunction()

# kel_link(TARGET target...): links these and all that they depend on; CMake by itself passes on an object
# library's requirements, but not its objects.
function(kel_link target)
    set(open ${ARGN})
    while(open)
        list(POP_FRONT open next)
        if(next IN_LIST all)
            continue()
        endif()
        list(APPEND all ${next})
        get_target_property(depends ${next} KEL_DEPENDS)
        if(depends)
            list(APPEND open ${depends})
        endif()
    endwhile()
    target_link_libraries(${target} PRIVATE kel_options ${all})
endfunction()

# kel_test(NAME SOURCES file... LIBRARIES target...): a GoogleTest program, one CTest test per program.
function(kel_test name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES")
    add_executable(${name} ${arg_SOURCES})
    kel_link(${name} ${arg_LIBRARIES} GTest::gtest_main)
    add_test(NAME ${name} COMMAND ${name})
endfunction()
