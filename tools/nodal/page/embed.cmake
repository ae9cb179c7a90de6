# Writes a C++ file with the contents of files as texts:
#   cmake -D OUTPUT=FILE -D STYLE=FILE -D TEMPLATE=FILE -D "SCRIPTS=FILE;..." -P embed.cmake
# The scripts are joined in this order. Their comments and indentation, and the indentation of the style, are omitted, so
# that pages are small.
function(append_text name text)
  string(HEX "${text}" bytes)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(REPEAT "....." 24 line)
  string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
  file(APPEND ${OUTPUT}.new
    "static const unsigned char ${name}Bytes[] = {\n${bytes}};\n"
    "const std::string_view ${name}(reinterpret_cast<const char *>(${name}Bytes), sizeof ${name}Bytes);\n")
endfunction()

# A comment of the scripts is a line of its own. No text of a script contains one of the operators between spaces.
function(read_small variable)
  set(all "")
  foreach(file ${ARGN})
    file(READ ${file} text)
    string(REGEX REPLACE "\n *//[^\n]*" "" text "\n${text}")
    string(REGEX REPLACE "\n[ \n]+" "\n" text "${text}")
    foreach(operator "=>" "=" "===" "!==" "&&" "||" "??" ">=" "+" "*" "?" ":" "<" ">")
      string(REPLACE " ${operator} " "${operator}" text "${text}")
    endforeach()
    string(REPLACE "{ " "{" text "${text}")
    string(REPLACE " }" "}" text "${text}")
    string(APPEND all "${text}")
  endforeach()
  set(${variable} "${all}" PARENT_SCOPE)
endfunction()

file(READ ${TEMPLATE} template)
read_small(style ${STYLE})
foreach(mark ":" ";" "," ">")
  string(REPLACE "${mark} " "${mark}" style "${style}")
endforeach()
string(REPLACE " {" "{" style "${style}")
read_small(script ${SCRIPTS})
file(WRITE ${OUTPUT}.new "#include \"tools/nodal/page/page_sources.h\"\n\nnamespace nodal {\n")
append_text(kPageTemplate "${template}")
append_text(kPageStyle "${style}")
append_text(kPageScript "${script}")
file(APPEND ${OUTPUT}.new "}  // namespace nodal\n")
file(RENAME ${OUTPUT}.new ${OUTPUT})
