# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Every target of this project links halvik_flags: the language, the warnings, the sanitizers and the hardening in one
# place.

include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)
include(CheckPIESupported)

add_library(halvik_flags INTERFACE)
target_compile_features(halvik_flags INTERFACE cxx_std_20)
target_compile_options(halvik_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

option(HALVIK_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(HALVIK_SANITIZE)
  target_compile_definitions(halvik_flags INTERFACE HALVIK_SANITIZE)
  target_compile_options(halvik_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(halvik_flags INTERFACE -fsanitize=address,undefined)
  # The module with libcurl finds the classes of the program, whose kind UBSan checks.
  target_link_options(halvik_flags INTERFACE -rdynamic)
endif()

# What users run is hardened where the compiler, processor and linker can do it, as it reads the output of strangers'
# servers. The debugger and the sanitizers go without, as it would hide their own checks.
set(halvik_optimized "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
check_pie_supported(LANGUAGES CXX)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# A compiler that knows a flag, but only for another processor, says so in a warning.
set(CMAKE_REQUIRED_FLAGS -Werror)
# Some compilers define it by themselves, with another value. It needs optimization, which tests go without.
define_property(TARGET PROPERTY HALVIK_IS_TEST BRIEF_DOCS "Whether the target is a program of tests")
set(halvik_fortified "$<AND:${halvik_optimized},$<NOT:$<BOOL:$<TARGET_PROPERTY:HALVIK_IS_TEST>>>>")
target_compile_options(halvik_flags INTERFACE
  "$<${halvik_optimized}:-U_FORTIFY_SOURCE>" "$<${halvik_fortified}:-D_FORTIFY_SOURCE=2>")
foreach(flag IN ITEMS -fstack-protector-strong -fstack-clash-protection -fcf-protection -mbranch-protection=standard)
  string(MAKE_C_IDENTIFIER "halvik_compiler_knows${flag}" known)
  check_cxx_compiler_flag(${flag} ${known})
  if(${known})
    target_compile_options(halvik_flags INTERFACE "$<${halvik_optimized}:${flag}>")
  endif()
endforeach()
foreach(flag IN ITEMS -Wl,-z,relro -Wl,-z,now)
  string(MAKE_C_IDENTIFIER "halvik_linker_knows${flag}" known)
  check_linker_flag(CXX ${flag} ${known})
  if(${known})
    target_link_options(halvik_flags INTERFACE "$<${halvik_optimized}:${flag}>")
  endif()
endforeach()
unset(CMAKE_REQUIRED_FLAGS)

# The same bytes, whatever folder the sources are in.
target_compile_options(halvik_flags INTERFACE "$<${halvik_optimized}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}/=>")
