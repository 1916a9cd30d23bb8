# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Every target of this project links halvik_flags: the language, the warnings and the sanitizers in one place.

add_library(halvik_flags INTERFACE)
target_compile_features(halvik_flags INTERFACE cxx_std_20)
target_compile_options(halvik_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)

option(HALVIK_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(HALVIK_SANITIZE)
  target_compile_options(halvik_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(halvik_flags INTERFACE -fsanitize=address,undefined)
endif()
