# Writes the headers <OUTPUT>.h for C++ and <OUTPUT>_resource.h for a resource compiler, with
# the version "<VERSION>+g<short commit hash>"; the hash is "unknown" where SOURCE_DIR is no
# checkout (a source archive). Without a number, git would choose the digits by the size of the
# repository, so that two clones of a commit differ.

cmake_minimum_required(VERSION 3.25)

set(hash "unknown")
if(EXISTS ${SOURCE_DIR}/.git)
  execute_process(COMMAND git -C ${SOURCE_DIR} rev-parse --short=10 HEAD
    OUTPUT_VARIABLE printed OUTPUT_STRIP_TRAILING_WHITESPACE
    RESULT_VARIABLE failed ERROR_QUIET)
  if(NOT failed)
    set(hash ${printed})
  endif()
endif()

file(CONFIGURE OUTPUT ${OUTPUT}.h CONTENT
"#pragma once

namespace quorvelle {
inline constexpr char kSourceVersion[] = \"@VERSION@+g@hash@\";
}
" @ONLY)
file(CONFIGURE OUTPUT ${OUTPUT}_resource.h CONTENT
"#define QUORVELLE_SOURCE_VERSION \"@VERSION@+g@hash@\"
" @ONLY)
