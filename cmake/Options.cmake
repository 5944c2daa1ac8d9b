# SPDX-License-Identifier: GPL-3.0-or-later
# The compiler options that every target of the project shares.
add_library(qorview_options INTERFACE)
target_include_directories(qorview_options INTERFACE ${PROJECT_SOURCE_DIR}/src)
target_compile_definitions(qorview_options INTERFACE
  QORVIEW_VERSION="${PROJECT_VERSION}" $<$<CONFIG:Release>:NDEBUG>)

if(MSVC)
  target_compile_options(qorview_options INTERFACE /W4 /WX /permissive- /utf-8 /fp:precise)
  target_compile_definitions(qorview_options INTERFACE _CRT_SECURE_NO_WARNINGS NOMINMAX)
else()
  target_compile_options(qorview_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wformat=2 -Werror
    # The same value to the last bit on every machine: no fused multiply-add.
    -ffp-contract=off)
  if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(qorview_options INTERFACE -Wthread-safety -Wthread-safety-beta)
  endif()
  if(QORVIEW_SANITIZE)
    target_compile_options(qorview_options INTERFACE
      -fsanitize=${QORVIEW_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(qorview_options INTERFACE -fsanitize=${QORVIEW_SANITIZE})
  endif()
endif()
