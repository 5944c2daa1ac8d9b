# SPDX-License-Identifier: GPL-3.0-or-later
# The headers that most files include, compiled once, where Clang is the compiler: a quarter less time for a build from
# nothing. (GCC 12 lays at the door of who includes them what it suspects of its own library, and gains less.) Off
# unless asked for, here or by the environment, since a compiler cache shares nothing between folders then.
set(wanted OFF)
if(DEFINED ENV{QORVIEW_PCH})
  set(wanted $ENV{QORVIEW_PCH})
endif()
option(QORVIEW_PCH "Precompile the headers that most files include (Clang)" ${wanted})
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
  set(QORVIEW_PCH OFF)
endif()

set(qorview_std_headers <algorithm> <array> <atomic> <cmath> <condition_variable> <cstdint> <deque> <functional> <map>
    <memory> <mutex> <optional> <set> <span> <string> <string_view> <thread> <utility> <variant> <vector>)

# qorview_precompile(TARGET HEADER...) or, for one that is compiled with the same options as another that has them,
# qorview_precompile(TARGET OTHER).
function(qorview_precompile target)
  if(NOT QORVIEW_PCH)
    return()
  endif()
  if(TARGET "${ARGV1}")
    target_precompile_headers(${target} REUSE_FROM ${ARGV1})
  else()
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
if(QORVIEW_PCH AND CMAKE_CXX_COMPILER_LAUNCHER)
  list(PREPEND CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros)
endif()
