# The libraries of the chunk engine as one target. Linux distributions describe them to
# pkg-config, package managers on Windows to CMake.

add_library(quorvelle_engine_libraries INTERFACE)
if(WIN32)
  find_package(CURL REQUIRED)
  find_package(unofficial-sodium CONFIG REQUIRED)
  find_package(zstd CONFIG REQUIRED)
  find_package(jsoncpp CONFIG REQUIRED)
  target_link_libraries(quorvelle_engine_libraries INTERFACE
    CURL::libcurl unofficial-sodium::sodium zstd::libzstd JsonCpp::JsonCpp)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(engine_dependencies REQUIRED IMPORTED_TARGET
    libcurl>=7.85 libsodium libzstd jsoncpp)
  target_link_libraries(quorvelle_engine_libraries INTERFACE PkgConfig::engine_dependencies)
endif()
