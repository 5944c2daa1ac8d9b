# SPDX-License-Identifier: GPL-3.0-or-later
# The compiler options that every target of the project shares.
add_library(qorview_options INTERFACE)
target_include_directories(qorview_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(qorview_options INTERFACE
  QORVIEW_VERSION="${PROJECT_VERSION}" $<$<CONFIG:Release>:NDEBUG>)
if(WIN32)
  # Windows 10 is the oldest system that the program is for.
  target_compile_definitions(qorview_options INTERFACE
    _WIN32_WINNT=0x0A00 WIN32_LEAN_AND_MEAN NOMINMAX UNICODE _UNICODE)
endif()

if(MSVC)
  target_compile_options(qorview_options INTERFACE /W4 $<$<BOOL:${QORVIEW_WERROR}>:/WX> /permissive- /utf-8 /fp:precise)
  target_compile_definitions(qorview_options INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
  target_compile_options(qorview_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2
    $<$<BOOL:${QORVIEW_WERROR}>:-Werror>
    # The same value to the last bit on every machine: no fused multiply-add.
    -ffp-contract=off)
  if(QORVIEW_PYTHON_FOUND)
    # Nobody puts another function in the place of one of ours: calls within a module stay direct.
    target_compile_options(qorview_options INTERFACE -fno-semantic-interposition)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    # GCC 12 sees overlapping copies and unset bytes in optimised std::string code that has none.
    target_compile_options(qorview_options INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
  endif()
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(qorview_options INTERFACE -Wthread-safety -Wthread-safety-beta)
    if(CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 17)
      # libstdc++'s own std::stable_sort calls what it has deprecated, and this compiler blames us.
      target_compile_options(qorview_options INTERFACE -Wno-deprecated-declarations)
    endif()
  endif()
  if(QORVIEW_SANITIZE)
    target_compile_options(qorview_options INTERFACE
      -fsanitize=${QORVIEW_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(qorview_options INTERFACE -fsanitize=${QORVIEW_SANITIZE})
  endif()
endif()

# The path of a frame leads through all layers: the program is optimised as a whole. The tests are
# linked the quick way from the same objects.
add_library(qorview_whole INTERFACE)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT WIN32 AND NOT QORVIEW_SANITIZE)
  target_compile_options(qorview_whole INTERFACE $<$<CONFIG:Release>:-flto -ffat-lto-objects>)
  target_link_options(qorview_options INTERFACE
    $<$<CONFIG:Release>:$<IF:$<BOOL:$<TARGET_PROPERTY:QORVIEW_WHOLE>>,-flto=auto,-fno-lto>>)
endif()
