# Flags that all of our own targets share.
add_library(melodrift_flags INTERFACE)
if(MSVC)
  target_compile_options(melodrift_flags INTERFACE /W4 $<$<BOOL:${MELODRIFT_WERROR}>:/WX> /utf-8)
else()
  target_compile_options(melodrift_flags INTERFACE -Wall -Wextra -Wpedantic $<$<BOOL:${MELODRIFT_WERROR}>:-Werror>)
endif()
if(MELODRIFT_SANITIZE)
  target_compile_options(
    melodrift_flags INTERFACE -fsanitize=${MELODRIFT_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined
                              $<$<BOOL:$<TARGET_PROPERTY:MELODRIFT_OF_TESTS>>:-fno-sanitize=undefined>
  )
  target_link_options(melodrift_flags INTERFACE -fsanitize=${MELODRIFT_SANITIZE})
endif()

# Much that is compiled as one is large: to look for memory to use again takes a tenth of the compiler's time.
if(MELODRIFT_UNITY)
  target_compile_options(melodrift_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=524288>)
endif()

# What the programs are made of is a part of each. Where their tests were compiled by another build, it is beside them,
# and calls its own functions: those of its headers that a test has, too, are compiled as the other build does.
set(MELODRIFT_PART STATIC)
if(MELODRIFT_TESTS_OF)
  set(MELODRIFT_PART SHARED)
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY})
  target_link_options(
    melodrift_flags INTERFACE $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:LINKER:-Bsymbolic-functions>
  )
endif()

# The programs of some ninety tests are linked twice over.
option(MELODRIFT_LINK_FAST "Link with mold, lld or gold where there is one" ON)
if(UNIX AND NOT APPLE AND MELODRIFT_LINK_FAST)
  include(CheckLinkerFlag)
  foreach(linker mold lld gold)
    check_linker_flag(CXX -fuse-ld=${linker} MELODRIFT_LINKS_WITH_${linker})
    if(MELODRIFT_LINKS_WITH_${linker})
      target_link_options(melodrift_flags INTERFACE -fuse-ld=${linker})
      break()
    endif()
  endforeach()
endif()

# melodrift_is_of_tests(NAME): code that tests is compiled without the checks of undefined behaviour, which are there for
# the code that is tested and take a third of the time, but with Qt's own in every build.
function(melodrift_is_of_tests name)
  set_property(TARGET ${name} PROPERTY MELODRIFT_OF_TESTS ON)
  target_compile_definitions(${name} PRIVATE QT_FORCE_ASSERTS)
endfunction()

# Where all of the program lies once it is installed, as it does in a build: program, libraries, skin and help.
set(MELODRIFT_INSTALL_FOLDER ${CMAKE_INSTALL_LIBDIR}/melodrift)

# melodrift_lies_beside_the_program(NAME): a library that is loaded with the programs, or by them at its first use.
function(melodrift_lies_beside_the_program name)
  set_target_properties(
    ${name}
    PROPERTIES OUTPUT_NAME melodrift-${name}
               LIBRARY_OUTPUT_DIRECTORY ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}
               WINDOWS_EXPORT_ALL_SYMBOLS ON
  )
  # Nothing steps in front of our own functions, whose calls need no way round for it.
  target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU,Clang>:-fno-semantic-interposition>)
  melodrift_install(${name})
endfunction()

# melodrift_install(NAME): a program or a library into the program's folder, where it finds the others.
function(melodrift_install name)
  set_target_properties(${name} PROPERTIES BUILD_RPATH_USE_ORIGIN ON INSTALL_RPATH $ORIGIN)
  install(TARGETS ${name} RUNTIME DESTINATION ${MELODRIFT_INSTALL_FOLDER} LIBRARY DESTINATION ${MELODRIFT_INSTALL_FOLDER})
endfunction()

# melodrift_install_command(NAME): a program that is started by its name from anywhere. Its link leads to the program's
# folder, since skin and libraries are looked for beside the file that runs.
function(melodrift_install_command name)
  melodrift_install(${name})
  if(UNIX)
    file(RELATIVE_PATH target ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR}/melodrift/${name})
    file(MAKE_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/link)
    file(CREATE_LINK ${target} ${CMAKE_CURRENT_BINARY_DIR}/link/${name} SYMBOLIC)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/link/${name} DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endfunction()

# melodrift_precompile(NAME HEADERS ...): compiles them once for all sources of the target, where that is asked for. A
# build that reads each file with what it includes itself finds what is missing there.
function(melodrift_precompile name)
  if(MELODRIFT_PRECOMPILE)
    target_precompile_headers(${name} PRIVATE ${ARGN})
  endif()
endfunction()

# melodrift_check_by_calls(NAME ...): has the address sanitizer's checks called, not compiled into each place. That takes a
# tenth less of the compiler's time, but reading a library takes half as long again: for what mostly calls others.
function(melodrift_check_by_calls)
  if(MELODRIFT_SANITIZE MATCHES "address" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    foreach(name ${ARGN})
      target_compile_options(${name} PRIVATE --param=asan-instrumentation-with-call-threshold=0)
    endforeach()
  endif()
endfunction()

# melodrift_unite(NAME ...): compiles several sources of each library as one, where that is asked for: most of a file's
# time goes into what it includes.
function(melodrift_unite)
  if(MELODRIFT_UNITY)
    set_target_properties(${ARGN} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  endif()
endfunction()

# A test's own code need not be fast, but quick to build. Where it fails says Qt Test; what a debugger wants to know is for
# the build that is made for it.
function(melodrift_build_quickly name)
  target_compile_options(
    ${name} PRIVATE $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-O0 $<$<CONFIG:RelWithDebInfo>:-g0>>
  )
  melodrift_is_of_tests(${name})
endfunction()

# melodrift_tell_compiled(NAME), melodrift_take_compiled(NAME): a library or program of tests leaves word of what it was
# compiled to, and that of a build that compiles no tests takes it. They take as long to compile as all else, and with a
# sanitizer would again, which is there for the code that they test.
function(melodrift_tell_compiled name)
  file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/compiled/${name} CONTENT "$<FILTER:$<TARGET_OBJECTS:${name}>,INCLUDE,[.]o(bj)?$>")
endfunction()

function(melodrift_take_compiled name)
  set(compiled ${MELODRIFT_TESTS_OF}/compiled/${name})
  if(NOT EXISTS ${compiled})
    message(FATAL_ERROR "${MELODRIFT_TESTS_OF} has to be configured first: it compiles ${name}")
  endif()
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${compiled})
  file(READ ${compiled} objects)
  list(TRANSFORM objects REPLACE "/[.]/" "/")
  set_source_files_properties(${objects} PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
  target_sources(${name} PRIVATE ${objects})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  add_dependencies(${name} compiled_tests)
  set_property(GLOBAL APPEND PROPERTY MELODRIFT_COMPILED_TESTS ${objects})
endfunction()

# melodrift_have_tests_compiled(): the other build compiles what was taken.
function(melodrift_have_tests_compiled)
  get_property(objects GLOBAL PROPERTY MELODRIFT_COMPILED_TESTS)
  set(targets ${objects})
  list(TRANSFORM targets REPLACE "^${MELODRIFT_TESTS_OF}/" "")
  add_custom_target(
    compiled_tests
    COMMAND ${CMAKE_COMMAND} --build ${MELODRIFT_TESTS_OF} --target ${targets}
    BYPRODUCTS ${objects}
    COMMENT "Compiling tests in ${MELODRIFT_TESTS_OF}"
    VERBATIM
  )
endfunction()

# melodrift_test_headers(NAME LIBS HEADERS ...): what comes before every test of a kind, compiled once for all of them,
# and what most of them include.
function(melodrift_test_headers name libs)
  file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp "")
  add_library(${name} OBJECT ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  target_link_libraries(${name} PRIVATE melodrift_flags Qt5::Test ${libs})
  melodrift_build_quickly(${name})
  target_precompile_headers(${name} PRIVATE ${PATIENCE})
  melodrift_precompile(${name} ${ARGN})
endfunction()

# The test runs the program; cmake/once leaves out what did not change, where that is asked for.
macro(melodrift_run_as_test test program)
  get_target_property(reads_sources ${program} MELODRIFT_READS_SOURCES)
  get_target_property(reads ${program} MELODRIFT_READS)
  set(launcher)
  if(CMAKE_SYSTEM_NAME STREQUAL "Linux" AND NOT reads_sources)
    set(launcher ${CMAKE_SOURCE_DIR}/cmake/once ${CMAKE_BINARY_DIR}/passed/${test}
                 ${CMAKE_CURRENT_SOURCE_DIR}/${program}.cpp)
    foreach(folder ${reads})
      if(folder)
        list(APPEND launcher ${CMAKE_SOURCE_DIR}/${folder})
      endif()
    endforeach()
    list(APPEND launcher --)
  endif()
  add_test(NAME ${test} COMMAND ${launcher} ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${program}${CMAKE_EXECUTABLE_SUFFIX} ${ARGN})
endmacro()

# What every test runs in. Where the memory that a library has for each thread begins 16 bytes into a page, as it now and
# then does, the sanitizers of GCC before 14 take what lies before it for its address and size, and the leak checker falls
# over there: they are kept from looking.
# Of an allocation the address sanitizer keeps who asked for it, not the whole stack, which takes a tenth of all tests'
# time; a program that is run by hand keeps it.
function(melodrift_set_test_environment)
  set(sanitizers intercept_tls_get_addr=0)
  set_tests_properties(
    ${ARGN}
    PROPERTIES
      TIMEOUT 1800
      SKIP_RETURN_CODE 77
      ENVIRONMENT
      "QT_QPA_PLATFORM=offscreen;QT_FONT_DPI=72;QTEST_FUNCTION_TIMEOUT=1700000;ASAN_OPTIONS=${sanitizers}:malloc_context_size=2;LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/lsan.supp:print_suppressions=0;TSAN_OPTIONS=${sanitizers} ignore_noninstrumented_modules=1 suppressions=${CMAKE_SOURCE_DIR}/tests/tsan.supp;UBSAN_OPTIONS=print_stacktrace=1"
  )
endfunction()

# melodrift_add_test_program(NAME SOURCES... LIBS ... MOCS ... DEFINITIONS ...): builds what one test, or several, run in.
function(melodrift_add_test_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;MOCS;DEFINITIONS;PROGRAMS" ${ARGN})
  add_executable(${name})
  target_link_libraries(${name} PRIVATE melodrift_flags sanitized Qt5::Test Qt5::Gui ${ARG_LIBS})
  if(MELODRIFT_TESTS_OF)
    melodrift_take_compiled(${name})
  else()
    melodrift_compile_test_program(${name} ${ARGN})
  endif()
  if(ARG_PROGRAMS)
    add_dependencies(${name} ${ARG_PROGRAMS})
  endif()
  if(MELODRIFT_SANITIZE STREQUAL "thread" AND "single_threaded" IN_LIST ARG_LIBS)
    set_property(TARGET ${name} PROPERTY EXCLUDE_FROM_ALL ON)
  endif()
endfunction()

function(melodrift_compile_test_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;MOCS;DEFINITIONS;PROGRAMS" ${ARGN})
  target_sources(${name} PRIVATE ${ARG_SOURCES})
  list(GET ARG_SOURCES 0 source)
  set_property(SOURCE ${source} APPEND PROPERTY OBJECT_DEPENDS ${ARG_MOCS})
  target_include_directories(
    ${name} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR} ${CMAKE_CURRENT_BINARY_DIR}/moc ${CMAKE_SOURCE_DIR}/tests
  )
  target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
  target_compile_options(${name} PRIVATE $<$<BOOL:${MELODRIFT_TESTS_WERROR}>:-Werror>)
  melodrift_build_quickly(${name})
  if("melodrift_app" IN_LIST ARG_LIBS)
    target_precompile_headers(${name} REUSE_FROM widget_test_headers)
  elseif("Qt5::Network" IN_LIST ARG_LIBS)
    # The one of its kind: precompiling takes longer than reading. It includes patience.h itself.
  else()
    target_precompile_headers(${name} REUSE_FROM core_test_headers)
  endif()
  melodrift_tell_compiled(${name})
endfunction()

# melodrift_join_test(NAME ...): has the test run in a program that it shares with others of its folder, under a name of
# its own. Most of the time of building a test goes into what it includes, and they include the same. Those share one that
# load the same of our libraries at their start, and have the same step in front of the system's calls.
function(melodrift_join_test name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS;MOCS;DEFINITIONS;PROGRAMS" ${ARGN})
  set(kind)
  foreach(library melodrift_app playback identify Qt5::Network single_threaded interposed shortage nameserver)
    if(library IN_LIST ARG_LIBS)
      string(APPEND kind _${library})
    endif()
  endforeach()
  get_property(kinds DIRECTORY PROPERTY MELODRIFT_KINDS)
  if(NOT kinds)
    cmake_language(DEFER CALL melodrift_build_joined_tests)
  endif()
  if(NOT kind IN_LIST kinds)
    set_property(DIRECTORY APPEND PROPERTY MELODRIFT_KINDS "kind${kind}")
  endif()
  set_property(DIRECTORY APPEND PROPERTY "MELODRIFT_kind${kind}" ${name})
  add_custom_target(${name})
  foreach(what SOURCES LIBS MOCS DEFINITIONS PROGRAMS)
    set_property(TARGET ${name} PROPERTY MELODRIFT_${what} "${ARG_${what}}")
  endforeach()
endfunction()

# Builds the programs that the folder's tests share, of so many tests each.
function(melodrift_build_joined_tests)
  set(together 16)
  get_property(kinds DIRECTORY PROPERTY MELODRIFT_KINDS)
  list(REMOVE_DUPLICATES kinds)
  set(number 0)
  foreach(kind ${kinds})
    get_property(tests DIRECTORY PROPERTY MELODRIFT_${kind})
    list(LENGTH tests length)
    math(EXPR last "${length} - 1")
    foreach(begin RANGE 0 ${last} ${together})
      list(SUBLIST tests ${begin} ${together} joined)
      math(EXPR number "${number} + 1")
      melodrift_build_joined(${number} ${joined})
    endforeach()
  endforeach()
endfunction()

function(melodrift_build_joined number)
  cmake_path(GET CMAKE_CURRENT_SOURCE_DIR FILENAME folder)
  set(program joined_${folder}_${number})
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${program}.cpp)
  set(links)
  foreach(test ${ARGN})
    foreach(what SOURCES LIBS MOCS DEFINITIONS PROGRAMS)
      get_target_property(of_test ${test} MELODRIFT_${what})
      list(APPEND all_${what} ${of_test})
    endforeach()
    list(APPEND links COMMAND ${CMAKE_COMMAND} -E create_hardlink $<TARGET_FILE:${program}>
         ${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${test}${CMAKE_EXECUTABLE_SUFFIX}
    )
    add_dependencies(${test} ${program})
  endforeach()
  list(REMOVE_DUPLICATES all_LIBS)
  set(tests ${all_SOURCES})
  list(FILTER tests INCLUDE REGEX "tst_[a-z0-9_]+\\.cpp$")
  list(REMOVE_ITEM all_SOURCES ${tests})
  list(TRANSFORM tests PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  add_custom_command(
    OUTPUT ${source}
    COMMAND ${CMAKE_COMMAND} "-DTESTS=${tests}" -DJOINED=${source} -P ${CMAKE_SOURCE_DIR}/cmake/join.cmake
    DEPENDS ${tests} ${CMAKE_SOURCE_DIR}/cmake/join.cmake
    VERBATIM
  )
  melodrift_add_test_program(
    ${program}
    SOURCES ${source} ${all_SOURCES}
    LIBS ${all_LIBS}
    MOCS ${all_MOCS}
    DEFINITIONS ${all_DEFINITIONS}
    PROGRAMS ${all_PROGRAMS}
  )
  add_custom_command(TARGET ${program} POST_BUILD ${links} VERBATIM)
endfunction()

# melodrift_add_test(NAME [SOURCES ...] [LIBS ...] [DEFINITIONS ...] [PROGRAMS ...] [READS_SOURCES | READS FOLDER ...]
# [SECONDS N] [PARTS N] [ALONE] [UNSANITIZED] [DISK]): one Qt Test program NAME.cpp, run offscreen. It starts those targets,
# or looks at sources, or at those folders alone. The longest begin first, so that none is waited for alone; one that
# runs in parts takes "--part K N" (tests/parts.h). One that starts no thread says so by the library single_threaded,
# which holds it to that: the thread sanitizer runs the others. One that must be a program of its own says ALONE: its
# own code stands for the system's, or tells Qt of types. One for builds without a sanitizer is told as UNSANITIZED.
# What is promised of files when a program is killed is looked at on the DISK, also when all else is written into memory.
function(melodrift_add_test name)
  cmake_parse_arguments(ARG "READS_SOURCES;ALONE;UNSANITIZED;DISK" "SECONDS;PARTS" "SOURCES;LIBS;DEFINITIONS;PROGRAMS;READS" ${ARGN})
  # Each test's source holds its one class: a moc of its own takes a twentieth of what automoc takes to look for it.
  set(moc ${CMAKE_CURRENT_BINARY_DIR}/moc/${name}.moc)
  qt5_generate_moc(${name}.cpp ${moc})
  set(parts SOURCES ${name}.cpp ${ARG_SOURCES} LIBS ${ARG_LIBS} MOCS ${moc} DEFINITIONS ${ARG_DEFINITIONS} PROGRAMS
            ${ARG_PROGRAMS}
  )
  if(MELODRIFT_JOIN_TESTS AND NOT ARG_ALONE)
    melodrift_join_test(${name} ${parts})
  else()
    melodrift_add_test_program(${name} ${parts})
  endif()
  if(MELODRIFT_SANITIZE AND ARG_UNSANITIZED)
    return()
  endif()
  set_target_properties(${name} PROPERTIES MELODRIFT_READS_SOURCES "${ARG_READS_SOURCES}" MELODRIFT_READS "${ARG_READS}")
  set(tests)
  if(ARG_PARTS)
    foreach(part RANGE 1 ${ARG_PARTS})
      melodrift_run_as_test(${name}_${part} ${name} --part ${part} ${ARG_PARTS})
      list(APPEND tests ${name}_${part})
    endforeach()
  else()
    melodrift_run_as_test(${name} ${name})
    set(tests ${name})
  endif()
  melodrift_set_test_environment(${tests})
  if("shortage" IN_LIST ARG_LIBS) # whose own code asks for all memory: who wanted it stands further below
    set_property(TEST ${tests} APPEND PROPERTY ENVIRONMENT "ASAN_OPTIONS=intercept_tls_get_addr=0")
  endif()
  if(ARG_DISK AND NOT MELODRIFT_SANITIZE)
    set_tests_properties(${tests} PROPERTIES ENVIRONMENT_MODIFICATION TMPDIR=unset:)
  endif()
  set_tests_properties(${tests} PROPERTIES COST "0${ARG_SECONDS}")
  if(NOT "single_threaded" IN_LIST ARG_LIBS)
    set_tests_properties(${tests} PROPERTIES LABELS threads)
  endif()
endfunction()

# melodrift_test_on_dense_screen(NAME [FUNCTION ...]): the same program, or these of its tests, once more, on a screen of
# two pixels to the point.
function(melodrift_test_on_dense_screen name)
  melodrift_run_as_test(${name}_2x ${name} ${ARGN})
  foreach(property ENVIRONMENT TIMEOUT SKIP_RETURN_CODE LABELS)
    get_test_property(${name} ${property} value)
    if(value)
      set_tests_properties(${name}_2x PROPERTIES ${property} "${value}")
    endif()
  endforeach()
  set_property(TEST ${name}_2x APPEND PROPERTY ENVIRONMENT QT_SCALE_FACTOR=2)
endfunction()
