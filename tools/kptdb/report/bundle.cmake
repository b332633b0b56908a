# Makes one page from the modules, the style and the template, and a C++ source from the page.
#
#   cmake -D SOURCES=folder -D OUTPUT=file.cpp -P bundle.cmake
#
# The modules are in the order of their imports, so one script of all of them needs no imports. All names
# at the top level of modules have to differ; otherwise the browser refuses the script.
cmake_minimum_required(VERSION 3.25)

set(modules dom data model search address treemap tree table graph register overview app)

# The policy of the page allows only this script and this style, by their hashes in base64.
function(base64_of_hex hex result)
  set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  set(text "")
  string(APPEND hex 00)  # 66 digits are 44 sextets; the last is padding
  foreach(at RANGE 0 63 3)
    string(SUBSTRING ${hex} ${at} 3 three)
    math(EXPR high "0x${three} >> 6")
    math(EXPR low "0x${three} & 63")
    string(SUBSTRING ${digits} ${high} 1 first)
    string(SUBSTRING ${digits} ${low} 1 second)
    string(APPEND text ${first}${second})
  endforeach()
  string(SUBSTRING ${text} 0 43 text)
  set(${result} "${text}=" PARENT_SCOPE)
endfunction()

set(SCRIPT "")
foreach(module IN LISTS modules)
  file(READ ${SOURCES}/${module}.js text)
  string(REGEX REPLACE "(^|\n)import [^\n]*" "" text "${text}")
  string(REGEX REPLACE "(^|\n)export " "\\1" text "${text}")
  string(APPEND SCRIPT "\n// ${module}.js\n${text}")
endforeach()
file(READ ${SOURCES}/page.css STYLE)

string(SHA256 hash "${SCRIPT}")
base64_of_hex(${hash} SCRIPT_HASH)
string(SHA256 hash "${STYLE}")
base64_of_hex(${hash} STYLE_HASH)

file(READ ${SOURCES}/page.html page)
foreach(part IN ITEMS SCRIPT_HASH STYLE_HASH STYLE SCRIPT)
  string(REPLACE "@${part}@" "${${part}}" page "${page}")
endforeach()
set(around "DATA")
string(FIND "${page}" "@${around}@" place REVERSE)
string(SUBSTRING "${page}" 0 ${place} before)
math(EXPR place "${place} + 6")
string(SUBSTRING "${page}" ${place} -1 after)

file(WRITE ${OUTPUT} "// Made by bundle.cmake.
#include \"report_page.h\"

namespace kptdb {

const std::string_view REPORT_PAGE_BEFORE_DATA = R\"page(${before})page\";
const std::string_view REPORT_PAGE_AFTER_DATA = R\"page(${after})page\";

}  // namespace kptdb
")
