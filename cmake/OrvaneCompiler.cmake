# Compiler settings for every target of ours, as one interface target: orvane_compiler.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_AUTOMOC ON)

find_program(CCACHE ccache)
if(CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE}")
endif()

add_library(orvane_compiler INTERFACE)
target_compile_options(orvane_compiler INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -fno-math-errno)
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
