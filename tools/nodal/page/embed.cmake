# Writes a C++ file that contains the given files as texts. Usage:
#
#   cmake -D ESBUILD=PROGRAM -D OUTPUT=FILE -D STYLE=FILE -D TEMPLATE=FILE -D "SCRIPTS=FILE;..." -P embed.cmake
#
# Joins the scripts in the order of SCRIPTS. Minifies the scripts and the style sheet with esbuild.
function(append_text name text)
  string(HEX "${text}" bytes)
  string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
  string(REPEAT "....." 24 line)
  string(REGEX REPLACE "(${line})" "\\1\n" bytes "${bytes}")
  file(APPEND ${OUTPUT}.new
    "static const unsigned char ${name}Bytes[] = {\n${bytes}};\n"
    "const std::string_view ${name}(reinterpret_cast<const char *>(${name}Bytes), sizeof ${name}Bytes);\n")
endfunction()

# `loader` is css or js. The scripts form a module, so esbuild also shortens the names that they declare.
function(read_small variable loader)
  set(all "")
  foreach(file ${ARGN})
    file(READ ${file} text)
    string(APPEND all "${text}")
  endforeach()
  set(options --minify --charset=utf8 --loader=${loader})
  if(loader STREQUAL "js")
    list(APPEND options --format=esm)
  endif()
  file(WRITE ${OUTPUT}.${loader} "${all}")
  execute_process(COMMAND ${ESBUILD} ${options} INPUT_FILE ${OUTPUT}.${loader} OUTPUT_VARIABLE small
    COMMAND_ERROR_IS_FATAL ANY)
  file(REMOVE ${OUTPUT}.${loader})
  string(STRIP "${small}" small)
  set(${variable} "${small}" PARENT_SCOPE)
endfunction()

file(READ ${TEMPLATE} template)
read_small(style css ${STYLE})
read_small(script js ${SCRIPTS})
file(WRITE ${OUTPUT}.new "#include \"tools/nodal/page/page_sources.h\"\n\nnamespace nodal {\n")
append_text(kPageTemplate "${template}")
append_text(kPageStyle "${style}")
append_text(kPageScript "${script}")
file(APPEND ${OUTPUT}.new "}  // namespace nodal\n")
file(RENAME ${OUTPUT}.new ${OUTPUT})
