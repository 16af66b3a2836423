# The version and commit shown in the properties of the file, and the manifest: UTF-8 as the
# code page of the process, paths of any length. Older systems than Windows 10 refuse to start
# the program.

enable_language(RC)

string(REPLACE "." "," windows_version ${PROJECT_VERSION})
configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/quorvelle.rc.in
  ${CMAKE_BINARY_DIR}/generated/quorvelle.rc @ONLY)

function(quorvelle_add_windows_resource target)
  target_sources(${target} PRIVATE ${CMAKE_BINARY_DIR}/generated/quorvelle.rc)
  set_source_files_properties(${CMAKE_BINARY_DIR}/generated/quorvelle.rc PROPERTIES
    OBJECT_DEPENDS ${SOURCE_VERSION_DIR}/source_version_resource.h)
  add_dependencies(${target} source_version)
  if(MSVC)
    # Its linker would add a manifest of its own beside ours.
    target_link_options(${target} PRIVATE /MANIFEST:NO /SUBSYSTEM:CONSOLE,10.00)
  else()
    target_link_options(${target} PRIVATE
      LINKER:--major-subsystem-version=10 LINKER:--minor-subsystem-version=0)
  endif()
endfunction()
