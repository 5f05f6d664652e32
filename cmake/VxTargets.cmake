# How every target of the tree is built: one set of warnings, one visibility rule, includes spelled from the root.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_FLAGS_RELEASE "-O2 -DNDEBUG")

add_library(vx_options INTERFACE)
target_include_directories(vx_options INTERFACE "${CMAKE_SOURCE_DIR}")
target_compile_options(vx_options INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fvisibility=hidden -fvisibility-inlines-hidden
  $<$<CONFIG:Debug>:-O1>)
if(WIN32)
  target_compile_definitions(vx_options INTERFACE
    UNICODE _UNICODE NOMINMAX STRICT WINVER=0x0601 _WIN32_WINNT=0x0601)
endif()
if(VX_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -g1)
  add_link_options(-fsanitize=address,undefined)
endif()
if(VX_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "VX_FUZZ needs clang++: use the preset linux-clang")
  endif()
endif()

# vx_library(NAME SOURCES... [LINKS target...]): a static library of one room or of one part of a room. A library
# without sources (a room that is declarations only, or whose bodies are the system's own) becomes an interface.
function(vx_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  if(ARG_SOURCES)
    add_library(${name} STATIC ${ARG_SOURCES})
    target_link_libraries(${name} PUBLIC vx_options ${ARG_LINKS})
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE vx_options ${ARG_LINKS})
  endif()
endfunction()

# vx_test(NAME SOURCES... LINKS target... [ENVIRONMENT NAME=VALUE...]): a GoogleTest program. Natively CTest lists each
# test of it; across, the program is one CTest test, since a process start under Wine costs seconds.
function(vx_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS;ENVIRONMENT" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE vx_options ${ARG_LINKS} GTest::gtest_main)
  # What is tested is built as it ships; the tests themselves need no optimiser, and compile in half the time.
  target_compile_options(${name} PRIVATE -O0)
  if(CMAKE_CROSSCOMPILING)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES ENVIRONMENT "${ARG_ENVIRONMENT}")
    if(ARG_ENVIRONMENT MATCHES "VX_WINE_PREFIX=([^;]+)")
      # Such programs install into the prefix that they share: one at a time.
      set_tests_properties(${name} PROPERTIES RESOURCE_LOCK "${CMAKE_MATCH_1}")
    endif()
  else()
    # As a command before the program: gtest_discover_tests takes properties apart at semicolons, so that only the first
    # variable of a list would arrive.
    if(ARG_ENVIRONMENT)
      set_target_properties(${name} PROPERTIES
        CROSSCOMPILING_EMULATOR "${CMAKE_COMMAND};-E;env;${ARG_ENVIRONMENT}")
    endif()
    gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}: ")
  endif()
endfunction()

# vx_product(TARGET): one of the files that are the product. They stand side by side in bin/, which is how the provider
# finds local MAPI. A library has the same name on every system, NAME.dll or libNAME.so, and shows none of what it is
# made of.
function(vx_product target)
  set_target_properties(${target} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin" LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "SHARED_LIBRARY" AND WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
  elseif(type STREQUAL "SHARED_LIBRARY")
    target_link_options(${target} PRIVATE -Wl,--no-undefined -Wl,--exclude-libs,ALL)
  endif()
endfunction()

# vx_header_only(TARGET FOLDER): a target for a header-only library that the distribution installs as <FOLDER/...>, for
# the native and the cross build alike. Only that folder is linked into the build folder, since the native include
# folder itself must not be seen by a cross compiler.
function(vx_header_only target folder)
  find_path(VX_HEADERS_OF_${folder} "${folder}" PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
  if(NOT VX_HEADERS_OF_${folder})
    message(FATAL_ERROR "The headers <${folder}/...> are not in /usr/include: tools/setup linux installs them")
  endif()
  file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/header-only")
  file(CREATE_LINK "${VX_HEADERS_OF_${folder}}/${folder}" "${CMAKE_BINARY_DIR}/header-only/${folder}" SYMBOLIC)
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE "${CMAKE_BINARY_DIR}/header-only")
endfunction()

vx_header_only(vx_nlohmann_json nlohmann)
vx_header_only(vx_cli11 CLI)
