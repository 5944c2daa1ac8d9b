# SPDX-License-Identifier: GPL-3.0-or-later
# qorview_windows_program(TARGET DESCRIPTION): icon, manifest and version of a program; nothing elsewhere.
function(qorview_windows_program program description)
  if(NOT WIN32)
    return()
  endif()
  set(resources ${CMAKE_CURRENT_BINARY_DIR}/${program}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/program.rc.in ${resources} @ONLY)
  set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS
    "${PROJECT_SOURCE_DIR}/packaging/windows/program.manifest;${PROJECT_SOURCE_DIR}/packaging/windows/qorview.ico")
  target_sources(${program} PRIVATE ${resources})
  if(MSVC)
    target_link_options(${program} PRIVATE /MANIFEST:NO) # the resource is the manifest
  endif()
endfunction()
