# What every target of this project is compiled with: warnings (the presets make errors of
# them), the sanitizers asked for, and Qt without its lossy text conversions.

option(QUORVELLE_WARNINGS_AS_ERRORS "Let warnings stop the build; the presets do" OFF)
if(QUORVELLE_WARNINGS_AS_ERRORS)
  set(gcc_error -Werror)
  set(msvc_error /WX)
endif()

add_library(quorvelle_options INTERFACE)
target_compile_options(quorvelle_options INTERFACE
  $<$<CXX_COMPILER_ID:GNU,Clang>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion ${gcc_error}>
  $<$<CXX_COMPILER_ID:MSVC>:/W4 ${msvc_error} /utf-8 /permissive->)
target_compile_definitions(quorvelle_options INTERFACE
  QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_KEYWORDS QT_NO_URL_CAST_FROM_STRING
  # Neither macros named min and max nor the old sockets with <windows.h>.
  $<$<PLATFORM_ID:Windows>:NOMINMAX WIN32_LEAN_AND_MEAN>
  # Its compiler warns of functions of the standard library, getenv among them.
  $<$<CXX_COMPILER_ID:MSVC>:_CRT_SECURE_NO_WARNINGS>)

# Distributions' compilers do this by themselves; the one for Windows does not.
if(MINGW)
  target_compile_options(quorvelle_options INTERFACE -fstack-protector-strong)
  target_link_options(quorvelle_options INTERFACE -fstack-protector-strong)
endif()

# What is handed out names no path of the machine, so that two folders give the same bytes;
# other builds keep the paths for debuggers.
if(NOT WIN32)
  add_compile_options(
    "$<$<AND:$<CXX_COMPILER_ID:GNU,Clang>,$<CONFIG:Release>>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>")
endif()

# Several files of a folder compiled as one save half the time; names in their unnamed
# namespaces have to differ for it. To the compiler they look as if they included each other.
if(CMAKE_UNITY_BUILD)
  target_compile_options(quorvelle_options INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()

if(QUORVELLE_SANITIZE)
  target_compile_options(quorvelle_options INTERFACE
    -fsanitize=${QUORVELLE_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quorvelle_options INTERFACE -fsanitize=${QUORVELLE_SANITIZE})
endif()

# One library per layer. What it links says which layers it stands on; the linker does not
# hold it to that, since archives hand out what they hold to all. A test of the include lines
# does.
function(quorvelle_add_layer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE quorvelle_options)
endfunction()
