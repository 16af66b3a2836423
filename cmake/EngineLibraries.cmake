# The libraries of the chunk engine as one target. Linux distributions describe them to
# pkg-config, package managers on Windows to CMake.

add_library(quorvelle_engine_libraries INTERFACE)
if(WIN32)
  find_package(CURL CONFIG REQUIRED)
  find_package(zstd CONFIG REQUIRED)
  find_package(jsoncpp CONFIG REQUIRED)
  # A package of vcpkg; libsodium's own build describes itself to pkg-config only.
  find_package(unofficial-sodium CONFIG QUIET)
  if(NOT TARGET unofficial-sodium::sodium)
    find_library(sodium_library sodium REQUIRED)
    add_library(unofficial-sodium::sodium UNKNOWN IMPORTED)
    set_target_properties(unofficial-sodium::sodium PROPERTIES
      IMPORTED_LOCATION ${sodium_library}
      INTERFACE_COMPILE_DEFINITIONS SODIUM_STATIC)
  endif()
  if(TARGET zstd::libzstd)
    set(zstd_target zstd::libzstd)
  else()
    set(zstd_target zstd::libzstd_static)
  endif()
  target_link_libraries(quorvelle_engine_libraries INTERFACE
    CURL::libcurl unofficial-sodium::sodium ${zstd_target} JsonCpp::JsonCpp)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(engine_dependencies REQUIRED IMPORTED_TARGET
    libcurl>=7.85 libsodium libzstd jsoncpp)
  target_link_libraries(quorvelle_engine_libraries INTERFACE PkgConfig::engine_dependencies)
endif()
