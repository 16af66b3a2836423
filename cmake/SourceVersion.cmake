# Makes ${CMAKE_BINARY_DIR}/generated/source_version.h, and the same for the resources of a
# Windows program, anew at every build, so
# that the version names the commit that was built and not the one that was
# configured. The file is only touched when its text changes.

set(SOURCE_VERSION_DIR ${CMAKE_BINARY_DIR}/generated)
add_custom_target(source_version
  COMMAND ${CMAKE_COMMAND}
    -DSOURCE_DIR=${PROJECT_SOURCE_DIR}
    -DVERSION=${PROJECT_VERSION}
    -DOUTPUT=${SOURCE_VERSION_DIR}/source_version
    -P ${PROJECT_SOURCE_DIR}/cmake/WriteSourceVersion.cmake
  BYPRODUCTS
    ${SOURCE_VERSION_DIR}/source_version.h
    ${SOURCE_VERSION_DIR}/source_version_resource.h
  VERBATIM)
