# Compiler settings for every target of ours, as one interface target: orvane_compiler.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)

# One compiler cache serves every checkout: paths below the project are taken as relative, and a
# precompiled header, which is another each time it is made, counts by what it was made from (see
# orvane_precompile).
find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
    CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_PCH_EXTSUM=1 ${CCACHE})
endif()

# What Debian's headers are made of: changes whenever one of them does. Empty elsewhere.
string(REGEX MATCH "^[0-9]+" compiler_major "${CMAKE_CXX_COMPILER_VERSION}")
execute_process(
  COMMAND dpkg-query -W libc6-dev libstdc++-${compiler_major}-dev qt6-base-dev libgtest-dev libgmock-dev
  OUTPUT_VARIABLE ORVANE_HEADER_VERSIONS ERROR_QUIET RESULT_VARIABLE no_packages)
if(no_packages AND NOT ORVANE_HEADER_VERSIONS MATCHES "qt6-base-dev\t[0-9]")
  set(ORVANE_HEADER_VERSIONS "")
endif()

add_library(orvane_compiler INTERFACE)
target_compile_options(orvane_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion $<$<BOOL:${ORVANE_WERROR}>:-Werror> -fno-math-errno)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # GCC 12 reports false positives of these inside inlined Qt and standard library code.
  target_compile_options(orvane_compiler INTERFACE -Wno-maybe-uninitialized -Wno-restrict)
endif()
target_compile_definitions(orvane_compiler INTERFACE
  QT_NO_KEYWORDS
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_NO_CONTEXTLESS_CONNECT
  QT_NO_FOREACH
  QT_USE_QSTRINGBUILDER)

if(ORVANE_SANITIZE)
  set(flags -fsanitize=${ORVANE_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  target_compile_options(orvane_compiler INTERFACE ${flags})
  target_link_options(orvane_compiler INTERFACE ${flags})
  if(ORVANE_SANITIZE MATCHES "thread")
    target_compile_definitions(orvane_compiler INTERFACE ORVANE_TSAN)
    # GCC warns that it cannot instrument std::atomic_thread_fence, which we do not use.
    target_compile_options(orvane_compiler INTERFACE -Wno-tsan)
  endif()
endif()

# Headers of others that nearly every file reads, read once for all targets of a kind: "core",
# "widgets", and the same with GoogleTest. Our own code does not rely on them: scripts/lint looks at
# every file without them. GCC only; its precompiled headers bear that targets define further macros.
function(orvane_precompile kind links)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    return()
  endif()
  set(source "${CMAKE_BINARY_DIR}/precompiled/${kind}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "")
  add_library(orvane_precompiled_${kind} OBJECT "${source}")
  set_target_properties(orvane_precompiled_${kind} PROPERTIES AUTOMOC OFF)
  target_link_libraries(orvane_precompiled_${kind} PRIVATE ${links} orvane_compiler)
  if(kind MATCHES "_tests$")
    target_compile_options(orvane_precompiled_${kind} PRIVATE ${ORVANE_TEST_OPTIONS})
  endif()
  target_precompile_headers(orvane_precompiled_${kind} PRIVATE ${ARGN})
  if(ORVANE_HEADER_VERSIONS)
    file(CONFIGURE @ONLY
      OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/CMakeFiles/orvane_precompiled_${kind}.dir/cmake_pch.hxx.gch.sum"
      CONTENT "@CMAKE_CXX_COMPILER_VERSION@\n@ORVANE_HEADER_VERSIONS@\n@ARGN@\n")
  endif()
endfunction()

# Lets a target use them.
function(orvane_use_precompiled target kind)
  if(TARGET orvane_precompiled_${kind})
    target_precompile_headers(${target} REUSE_FROM orvane_precompiled_${kind})
  endif()
endfunction()

# What is tested is optimised as users get it; optimising the tests themselves only costs time.
set(ORVANE_TEST_OPTIONS -O0)

set(ORVANE_PRECOMPILED_CORE
  <chrono> <deque> <functional> <map> <memory> <optional> <span> <string> <utility> <variant> <vector>
  <QByteArray> <QCoreApplication> <QDateTime> <QHash> <QJsonArray> <QJsonDocument> <QJsonObject>
  <QObject> <QPointer> <QString> <QStringList> <QThread> <QTimer> <QUrl> <QVariant>)
set(ORVANE_PRECOMPILED_WIDGETS ${ORVANE_PRECOMPILED_CORE}
  <QAccessible> <QAccessibleWidget> <QApplication> <QBoxLayout> <QColor> <QComboBox> <QFont> <QIcon>
  <QLabel> <QPainter> <QPushButton> <QScreen> <QScrollArea> <QStyle> <QWidget>)
set(ORVANE_PRECOMPILED_TESTS <gtest/gtest.h> <gmock/gmock.h>)
