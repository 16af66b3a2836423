# BLAKE3 as the target quorvelle_blake3: the system's library where there is one, else
# compiled from the C and assembly sources that a distribution installs with its Rust
# package. Both pick the widest SIMD instructions of the processor at run time.

set(QUORVELLE_BLAKE3_SOURCE_DIR "" CACHE PATH
  "BLAKE3's C sources; empty looks where librust-blake3-dev installs them")

add_library(quorvelle_blake3 INTERFACE)

find_package(BLAKE3 CONFIG QUIET)
find_package(PkgConfig QUIET)
if(NOT TARGET BLAKE3::blake3 AND PkgConfig_FOUND)
  pkg_check_modules(blake3 QUIET IMPORTED_TARGET libblake3)
endif()

# Sets `assembly` and `definitions` in the caller for the processor that is built for.
# Without assembly the portable C code is left, which needs to be told so.
function(quorvelle_blake3_variant source_dir)
  string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}" processor)
  set(definitions "")
  set(sources "")
  if(processor MATCHES "^(x86_64|amd64)$")
    if(MSVC)
      enable_language(ASM_MASM)
      set(suffix x86-64_windows_msvc.asm)
    elseif(WIN32)
      set(suffix x86-64_windows_gnu.S)
    else()
      set(suffix x86-64_unix.S)
    endif()
    foreach(set_name sse2 sse41 avx2 avx512)
      list(APPEND sources ${source_dir}/blake3_${set_name}_${suffix})
    endforeach()
  elseif(processor MATCHES "^(aarch64|arm64)$")
    set(sources ${source_dir}/blake3_neon.c)
    set(definitions BLAKE3_USE_NEON=1)
  else()
    set(definitions
      BLAKE3_NO_SSE2 BLAKE3_NO_SSE41 BLAKE3_NO_AVX2 BLAKE3_NO_AVX512 BLAKE3_USE_NEON=0)
  endif()
  set(assembly ${sources} PARENT_SCOPE)
  set(definitions ${definitions} PARENT_SCOPE)
endfunction()

if(TARGET BLAKE3::blake3)
  target_link_libraries(quorvelle_blake3 INTERFACE BLAKE3::blake3)
elseif(TARGET PkgConfig::blake3)
  target_link_libraries(quorvelle_blake3 INTERFACE PkgConfig::blake3)
else()
  set(blake3_dir ${QUORVELLE_BLAKE3_SOURCE_DIR})
  if(NOT blake3_dir)
    file(GLOB blake3_candidates /usr/share/cargo/registry/blake3-*/c)
    list(SORT blake3_candidates COMPARE NATURAL ORDER DESCENDING)
    list(APPEND blake3_candidates "")
    list(GET blake3_candidates 0 blake3_dir)
  endif()
  if(NOT EXISTS "${blake3_dir}/blake3.c")
    message(FATAL_ERROR
      "BLAKE3 not found: install libblake3 or, on Debian 12, librust-blake3-dev")
  endif()
  enable_language(C)
  if(NOT MSVC)
    enable_language(ASM)
  endif()
  quorvelle_blake3_variant(${blake3_dir})
  add_library(blake3_sources STATIC
    ${blake3_dir}/blake3.c ${blake3_dir}/blake3_dispatch.c ${blake3_dir}/blake3_portable.c
    ${assembly})
  set_target_properties(blake3_sources PROPERTIES AUTOMOC OFF)
  target_include_directories(blake3_sources SYSTEM PUBLIC ${blake3_dir})
  target_compile_definitions(blake3_sources PRIVATE ${definitions})
  target_link_libraries(quorvelle_blake3 INTERFACE blake3_sources)
endif()
