# Builds for Windows x64 with MinGW-w64 on another system. Libraries are found below
# QUORVELLE_WINDOWS_PREFIX, which make-dependencies prints, and in the compiler's own
# folder, never among the building system's.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# The variant with POSIX threads: the other one's C++ library has no std::thread.
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Windows 10, the oldest release that the UTF-8 code page of the manifest works on.
set(CMAKE_C_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00")
set(CMAKE_CXX_FLAGS_INIT "-D_WIN32_WINNT=0x0A00 -DWINVER=0x0A00")
# The compiler's run-time libraries go into the program as well: one file, nothing to
# install beside it.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static")

set(QUORVELLE_WINDOWS_PREFIX "" CACHE PATH "Where make-dependencies put the libraries")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUORVELLE_WINDOWS_PREFIX)
set(CMAKE_FIND_ROOT_PATH ${QUORVELLE_WINDOWS_PREFIX} /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ZLIB_USE_STATIC_LIBS ON)

# Qt's own tools (moc) come from the building system, in the same release.
set(QT_HOST_PATH /usr CACHE PATH "Where the building system's Qt is")
file(GLOB qt_host_cmake_folders LIST_DIRECTORIES true /usr/lib/*/cmake/Qt6HostInfo)
if(qt_host_cmake_folders)
  list(GET qt_host_cmake_folders 0 qt_host_cmake_folder)
  cmake_path(GET qt_host_cmake_folder PARENT_PATH qt_host_cmake_folder)
  set(QT_HOST_PATH_CMAKE_DIR ${qt_host_cmake_folder} CACHE PATH "Its CMake packages")
endif()
