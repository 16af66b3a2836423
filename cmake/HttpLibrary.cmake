# The HTTP server library of the tests and the development server as one target.

add_library(quorvelle_httplib INTERFACE)
if(WIN32)
  find_package(httplib CONFIG REQUIRED)
  target_link_libraries(quorvelle_httplib INTERFACE httplib::httplib)
else()
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(cpp_httplib REQUIRED IMPORTED_TARGET cpp-httplib)
  target_link_libraries(quorvelle_httplib INTERFACE PkgConfig::cpp_httplib)
endif()
