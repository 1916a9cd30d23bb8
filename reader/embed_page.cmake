# SPDX-FileCopyrightText: 2026 Halvik
# SPDX-License-Identifier: Apache-2.0
#
# Writes the files of the page into a source file, the scripts as one in the order given, with commas between:
#   cmake -D PAGE=FOLDER -D SCRIPTS=NAME,NAME... -D OUTPUT=FILE -P embed_page.cmake

string(REPLACE "," ";" SCRIPTS "${SCRIPTS}")
set(joined "")
foreach(name IN LISTS SCRIPTS)
  file(READ "${PAGE}/script/${name}" script)
  string(APPEND joined "${script}")
endforeach()
file(WRITE "${OUTPUT}.js" "${joined}")

set(text "// Made of the files in reader/page/.\n\n#include \"reader/output/page.h\"\n\nnamespace reader::page {\n\n")
foreach(part IN ITEMS "markup:${PAGE}/page.html" "style:${PAGE}/page.css" "script:${OUTPUT}.js")
  string(REGEX MATCH "^([a-z]*):(.*)$" part "${part}")
  set(name "${CMAKE_MATCH_1}")
  set(file "${CMAKE_MATCH_2}")
  file(READ "${file}" hex HEX)
  # As numbers: nothing in the file can end them.
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," numbers "${hex}")
  string(APPEND text "static constexpr char ${name}Bytes[] = {${numbers}'\\0'};\n"
    "const std::string_view ${name}(${name}Bytes, sizeof(${name}Bytes) - 1);\n")
  if(NOT name STREQUAL "markup")
    file(SHA256 "${file}" sum)
    string(APPEND text "const std::string_view ${name}Sha256 = \"${sum}\";\n")
  endif()
endforeach()
string(APPEND text "\n}  // namespace reader::page\n")
file(WRITE "${OUTPUT}" "${text}")
