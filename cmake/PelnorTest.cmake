# pelnor_test(NAME SOURCES... [PARALLEL] [ALSO_WESTERN] [LIBRARIES ...])
#
# Builds one suite of GoogleTest cases from SOURCES (linked to pelnor_core, the resources and tests/support) and
# registers it as one CTest entry, because a start of Wine costs more than most suites.
#   PARALLEL      the suite touches neither windows nor the registry, so another may run beside it
#   ALSO_WESTERN  a second entry, NAME.western, runs it where the system code page is 1252 instead of 932
#   LIBRARIES     further libraries to link
function(pelnor_test name)
  cmake_parse_arguments(PARSE_ARGV 1 ARG "PARALLEL;ALSO_WESTERN" "" "LIBRARIES")
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  set_target_properties(${name} PROPERTIES CROSSCOMPILING_EMULATOR ${CMAKE_SOURCE_DIR}/tools/wine_run)
  target_compile_options(${name} PRIVATE ${PELNOR_TEST_WARNINGS})
  target_link_libraries(${name} PRIVATE
    pelnor_resources pelnor_test_support pelnor_core GTest::gmock GTest::gtest_main ${ARG_LIBRARIES})
  pelnor_register_suite(${name} ${name} ja_JP.UTF-8 "${ARG_PARALLEL}")
  if(ARG_ALSO_WESTERN)
    pelnor_register_suite(${name}.western ${name} C.UTF-8 "${ARG_PARALLEL}")
  endif()
  foreach(source IN LISTS ARG_UNPARSED_ARGUMENTS)
    get_filename_component(path ${source} ABSOLUTE)
    set_property(GLOBAL APPEND PROPERTY PELNOR_TEST_SOURCES ${path})
  endforeach()
endfunction()

# One CTest entry that runs the executable `target` under Wine with the locale `locale`. It counts as hung only long
# after the slowest suite has ended on a busy machine.
function(pelnor_register_suite entry target locale parallel)
  add_test(NAME ${entry} COMMAND ${target})
  set_tests_properties(${entry} PROPERTIES
    TIMEOUT 400
    FIXTURES_REQUIRED wine
    ENVIRONMENT "${PELNOR_WINE_ENVIRONMENT};LC_ALL=${locale}")
  # Windows share one display and its focus, settings one registry.
  if(NOT parallel)
    set_tests_properties(${entry} PROPERTIES RESOURCE_LOCK display)
  endif()
endfunction()

# Fails the run for a *_test.cpp below tests/ which no pelnor_test() names. Call it last.
function(pelnor_check_every_test_is_run)
  get_property(sources GLOBAL PROPERTY PELNOR_TEST_SOURCES)
  list(JOIN sources "\n" lines)
  file(WRITE ${CMAKE_BINARY_DIR}/test_sources.txt "${lines}\n")
  add_test(NAME every_test_is_run
    COMMAND ${CMAKE_SOURCE_DIR}/tools/check_tests_listed ${CMAKE_BINARY_DIR}/test_sources.txt)
endfunction()
