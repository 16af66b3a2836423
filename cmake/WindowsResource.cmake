# The version shown in the properties of the file, and the manifest: UTF-8 as the code
# page of the process, paths of any length, Windows 10 and newer.

enable_language(RC)

string(REPLACE "." "," windows_version ${PROJECT_VERSION})
configure_file(${PROJECT_SOURCE_DIR}/packaging/windows/quorvelle.rc.in
  ${CMAKE_BINARY_DIR}/generated/quorvelle.rc @ONLY)

function(quorvelle_add_windows_resource target)
  target_sources(${target} PRIVATE ${CMAKE_BINARY_DIR}/generated/quorvelle.rc)
  if(MSVC)
    # Its linker would add a manifest of its own beside ours.
    target_link_options(${target} PRIVATE /MANIFEST:NO)
  endif()
endfunction()
