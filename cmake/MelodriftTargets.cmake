# Flags that all of our own targets share.
add_library(melodrift_flags INTERFACE)
if(MSVC)
  target_compile_options(melodrift_flags INTERFACE /W4 /WX /utf-8)
else()
  target_compile_options(melodrift_flags INTERFACE -Wall -Wextra -Wpedantic -Werror)
endif()
if(MELODRIFT_SANITIZE)
  target_compile_options(melodrift_flags INTERFACE -fsanitize=${MELODRIFT_SANITIZE} -fno-omit-frame-pointer
                                                   -fno-sanitize-recover=undefined)
  target_link_options(melodrift_flags INTERFACE -fsanitize=${MELODRIFT_SANITIZE})
endif()

# melodrift_add_test(NAME [SOURCES ...] [LIBS ...]): one Qt Test program tests/NAME.cpp, run offscreen.
function(melodrift_add_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${name}.cpp ${ARG_SOURCES})
  set_target_properties(${name} PROPERTIES AUTOMOC ON)
  target_link_libraries(${name} PRIVATE melodrift_flags Qt5::Test ${ARG_LIBS})
  # A test's own code need not be fast, but quick to build.
  target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-O0>)
  set(patience "${CMAKE_SOURCE_DIR}/tests/support/patience.h")
  target_compile_options(
    ${name} PRIVATE "$<IF:$<CXX_COMPILER_ID:MSVC>,/FI${patience},SHELL:-include ${patience}>"
  )
  add_test(NAME ${name} COMMAND ${name})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 1800)
  endif()
  set_tests_properties(
    ${name}
    PROPERTIES
      TIMEOUT ${ARG_TIMEOUT}
      ENVIRONMENT
      "QT_QPA_PLATFORM=offscreen;QT_FONT_DPI=72;QTEST_FUNCTION_TIMEOUT=1700000;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0;TSAN_OPTIONS=ignore_noninstrumented_modules=1 suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp;UBSAN_OPTIONS=print_stacktrace=1"
  )
endfunction()

# melodrift_test_on_dense_screen(NAME [FUNCTION ...]): the same program, or these of its tests, once more, on a screen of
# two pixels to the point.
function(melodrift_test_on_dense_screen name)
  add_test(NAME ${name}_2x COMMAND ${name} ${ARGN})
  foreach(property ENVIRONMENT TIMEOUT)
    get_test_property(${name} ${property} value)
    set_tests_properties(${name}_2x PROPERTIES ${property} "${value}")
  endforeach()
  set_property(TEST ${name}_2x APPEND PROPERTY ENVIRONMENT QT_SCALE_FACTOR=2)
endfunction()
