# Two kinds of library: logic on the standard library alone, and windows on Qt. A logic target never
# sees a Qt include path, so a Qt header in it fails to compile. Each takes every source of one
# folder.

add_library(ampdesk_options INTERFACE)
target_include_directories(ampdesk_options INTERFACE ${PROJECT_SOURCE_DIR})
# -Wrestrict sees overlaps in std::string that are none (GCC 12, with optimisation). -Wconversion is to mean the
# same with both compilers.
target_compile_options(ampdesk_options INTERFACE -Wall -Wextra -Wconversion -Wshadow
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict> $<$<CXX_COMPILER_ID:Clang>:-Wno-sign-conversion>)
if(AMPDESK_STRICT)
  target_compile_options(ampdesk_options INTERFACE -Werror)
endif()
if(AMPDESK_SANITIZE)
  # The assertions see what no sanitizer does: an index past the end of a string_view.
  target_compile_definitions(ampdesk_options INTERFACE _GLIBCXX_ASSERTIONS)
  target_compile_options(ampdesk_options INTERFACE
    -fsanitize=${AMPDESK_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(ampdesk_options INTERFACE -fsanitize=${AMPDESK_SANITIZE})
endif()

# The .cpp files of a folder, relative to the calling list file, without those excluded, and the
# headers of a folder of windows, so that a new one among them reaches moc in an old build tree.
function(ampdesk_sources result folder)
  set(patterns ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.cpp)
  if(folder MATCHES "^(ui|qt|windows)$")
    list(APPEND patterns ${CMAKE_CURRENT_SOURCE_DIR}/${folder}/*.h)
  endif()
  file(GLOB sources CONFIGURE_DEPENDS ${patterns})
  foreach(name IN LISTS ARGN)
    list(FILTER sources EXCLUDE REGEX "/${name}$")
  endforeach()
  set(${result} ${sources} PARENT_SCOPE)
endfunction()

# ampdesk_logic(NAME FOLDER folder [EXCLUDE file…] [LINK lib…])
function(ampdesk_logic name)
  cmake_parse_arguments(ARG "" "FOLDER" "EXCLUDE;LINK" ${ARGN})
  ampdesk_sources(sources ${ARG_FOLDER} ${ARG_EXCLUDE})
  if(sources)
    add_library(${name} STATIC ${sources})
    target_link_libraries(${name} PUBLIC ampdesk_options ${ARG_LINK})
    if(AMPDESK_FUZZ)
      target_compile_options(${name} PRIVATE -fsanitize=fuzzer-no-link)
    endif()
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ampdesk_options ${ARG_LINK})
  endif()
endfunction()

# Moc runs again when the list of files has changed: of itself it looks, in an old build tree, at the
# files it knows and misses a header that is new.
function(ampdesk_use_moc name)
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  get_target_property(sources ${name} SOURCES)
  set(record ${CMAKE_CURRENT_BINARY_DIR}/${name}_moc_files.txt)
  set(known "")
  if(EXISTS ${record})
    file(READ ${record} known)
  endif()
  if(NOT known STREQUAL sources)
    file(REMOVE ${CMAKE_CURRENT_BINARY_DIR}/${name}_autogen/timestamp)
    file(WRITE ${record} "${sources}")
  endif()
endfunction()

# ampdesk_windows(NAME FOLDER folder [LINK lib…]); nothing in a build without windows.
function(ampdesk_windows name)
  if(NOT AMPDESK_WINDOWS)
    return()
  endif()
  ampdesk_logic(${name} ${ARGN})
  get_target_property(type ${name} TYPE)
  if(type STREQUAL "STATIC_LIBRARY")
    ampdesk_use_moc(${name})
    target_compile_definitions(${name} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS)
    target_link_libraries(${name} PUBLIC Qt6::Widgets)
  else()
    target_link_libraries(${name} INTERFACE Qt6::Widgets)
  endif()
endfunction()

include(GoogleTest)

# What is compiled for one run is not optimised, whatever the program is.
function(ampdesk_test_options name)
  target_compile_options(${name} PRIVATE $<$<CONFIG:Release>:-O0>)
  target_compile_definitions(${name} PRIVATE TEST_DATA="${PROJECT_SOURCE_DIR}/tests/data")
endfunction()

# ampdesk_test(NAME FOLDER folder [LINK lib…]): a GoogleTest program, one ctest entry a case, labelled with the
# folder.
function(ampdesk_test name)
  cmake_parse_arguments(ARG "" "FOLDER" "LINK" ${ARGN})
  ampdesk_sources(sources ${ARG_FOLDER})
  if(sources)
    add_executable(${name} ${sources})
    target_link_libraries(${name} PRIVATE test_support ${ARG_LINK} GTest::gtest GTest::gtest_main)
    ampdesk_test_options(${name})
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120 LABELS ${ARG_FOLDER})
  endif()
endfunction()

# As ampdesk_test, with windows on the offscreen platform; brings its own main().
function(ampdesk_widget_test name)
  if(NOT AMPDESK_WINDOWS)
    return()
  endif()
  cmake_parse_arguments(ARG "" "FOLDER" "LINK" ${ARGN})
  ampdesk_sources(sources ${ARG_FOLDER})
  if(sources)
    add_executable(${name} ${sources})
    ampdesk_use_moc(${name})
    target_link_libraries(${name} PRIVATE test_support ${ARG_LINK} Qt6::Test Qt6::Widgets GTest::gtest)
    ampdesk_test_options(${name})
    set(offscreen "QT_QPA_PLATFORM=offscreen;QT_ACCESSIBILITY=0")
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 60
      PROPERTIES TIMEOUT 120 LABELS ${ARG_FOLDER} ENVIRONMENT "${offscreen}")
  endif()
endfunction()
