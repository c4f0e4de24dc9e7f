# Tests that stand-ins written in Python have themselves.
#
#   orvane_python_peer_tests(folder)   makes "folder.name" of each tests/folder/tests/test_name.py
function(orvane_python_peer_tests folder)
  # The sanitizers see nothing of it.
  if(ORVANE_SANITIZE)
    return()
  endif()
  file(GLOB files CONFIGURE_DEPENDS RELATIVE ${CMAKE_CURRENT_SOURCE_DIR}/tests
    ${CMAKE_CURRENT_SOURCE_DIR}/tests/test_*.py)
  foreach(file IN LISTS files)
    string(REGEX REPLACE "^test_(.*)\\.py$" "\\1" name ${file})
    add_test(NAME ${folder}.${name}
      COMMAND /usr/bin/python3 -m unittest tests.${folder}.tests.test_${name}
      WORKING_DIRECTORY ${PROJECT_SOURCE_DIR})
    set_tests_properties(${folder}.${name} PROPERTIES LABELS loopback TIMEOUT ${ORVANE_TEST_TIME_LIMIT}
      PROCESSORS ${ORVANE_TEST_PROCESSORS} ENVIRONMENT "PYTHONDONTWRITEBYTECODE=1")
  endforeach()
endfunction()
