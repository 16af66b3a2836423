# What makes a memory fault harder to use in programs that are handed out, as Linux
# distributions build theirs. It goes to everything that is compiled here, BLAKE3 included.

option(QUORVELLE_HARDENING "Build with checks of buffers and of the stack, fully relocatable" OFF)
if(NOT QUORVELLE_HARDENING OR WIN32)
  return()
endif()

include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# A distribution's compiler may define it already, with a lower level.
add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:-U_FORTIFY_SOURCE>
  $<$<COMPILE_LANGUAGE:C,CXX>:-D_FORTIFY_SOURCE=3>)
add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
# The last is for one family of processors.
foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
  string(MAKE_C_IDENTIFIER "accepts${flag}" accepted)
  check_cxx_compiler_flag(${flag} ${accepted})
  if(${accepted})
    add_compile_options($<$<COMPILE_LANGUAGE:C,CXX>:${flag}>)
  endif()
endforeach()
add_link_options(LINKER:-z,relro LINKER:-z,now)
