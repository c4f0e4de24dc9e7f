# One function for each kind of target, so that a folder's CMakeLists.txt is only its list of
# files and its link line.

# A folder of src/. Its headers are found only by those who link it: the link lines are the arrows
# between the folders, and an include against them does not compile.
#   orvane_library(settings SOURCES A.cpp A.h LINKS orvane_support Qt6::Core)
#   WIDGETS: most of its files read headers of QtWidgets.
function(orvane_library name)
  cmake_parse_arguments(arg "WIDGETS" "" "SOURCES;LINKS;PRIVATE_LINKS" ${ARGN})
  add_library(orvane_${name} STATIC ${arg_SOURCES})
  target_include_directories(orvane_${name} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(orvane_${name}
    PUBLIC ${arg_LINKS} PRIVATE ${arg_PRIVATE_LINKS} orvane_compiler)
  if(arg_WIDGETS)
    orvane_use_precompiled(orvane_${name} widgets)
  else()
    orvane_use_precompiled(orvane_${name} core)
  endif()
endfunction()

# One GoogleTest program; every test in it is a CTest test of its own. Tests of a program share
# nothing: each runs in a process of its own, with a home of its own (see tests/support).
#   orvane_test(settings SOURCES ATest.cpp LINKS orvane_settings [GUI] [LABELS loopback])
function(orvane_test name)
  cmake_parse_arguments(arg "GUI" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_executable(orvane_${name}_tests ${arg_SOURCES})
  set(support orvane_test_support)
  if(arg_GUI)
    set(support orvane_test_support_gui)
  endif()
  target_link_libraries(orvane_${name}_tests
    PRIVATE ${arg_LINKS} ${support} GTest::gtest GTest::gmock orvane_compiler)
  target_compile_options(orvane_${name}_tests PRIVATE ${ORVANE_TEST_OPTIONS})
  if(arg_GUI)
    orvane_use_precompiled(orvane_${name}_tests widgets_tests)
  else()
    orvane_use_precompiled(orvane_${name}_tests core_tests)
  endif()
  gtest_discover_tests(orvane_${name}_tests
    TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 TEST_LIST orvane_${name}_test_names
    PROPERTIES TIMEOUT ${arg_TIMEOUT} PROCESSORS ${ORVANE_TEST_PROCESSORS})
  # Discovery takes lists apart and drops empty values, so lists are set once the names are known.
  set(properties "ENVIRONMENT \"${ORVANE_TEST_ENVIRONMENT}\"")
  if(arg_LABELS)
    string(APPEND properties " LABELS \"${arg_LABELS}\"")
  endif()
  set(script "${CMAKE_CURRENT_BINARY_DIR}/orvane_${name}_test_properties.cmake")
  file(WRITE "${script}" "if(orvane_${name}_test_names)
  set_tests_properties(\${orvane_${name}_test_names} PROPERTIES ${properties})
endif()
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}")
endfunction()

# One libFuzzer program with its seed corpus in fuzz/corpus/<name>.
function(orvane_fuzzer name)
  cmake_parse_arguments(arg "" "" "SOURCES;INCLUDES;LINKS" ${ARGN})
  add_executable(orvane_fuzz_${name} ${arg_SOURCES})
  target_include_directories(orvane_fuzz_${name} PRIVATE ${arg_INCLUDES})
  target_compile_options(orvane_fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_options(orvane_fuzz_${name} PRIVATE -fsanitize=fuzzer)
  target_link_libraries(orvane_fuzz_${name} PRIVATE ${arg_LINKS} orvane_compiler)
endfunction()
