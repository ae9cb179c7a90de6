# Compiles the sources of a target together if they are in the same folder. They are short, and most of the time to
# compile them is spent in the headers that they share. Names in their anonymous namespaces must then differ.
function(unite_folders target)
  if(NOT KESTREL_UNITY)
    return()
  endif()
  set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    get_filename_component(folder ${source} DIRECTORY)
    string(MAKE_C_IDENTIFIER "in_${folder}" group)
    set_source_files_properties(${source} PROPERTIES UNITY_GROUP ${group})
  endforeach()
endfunction()

# Compiles a target without optimization if it is built with the sanitizers. This halves the time that clang needs. For
# programs that tests run seldom. It does nothing in fuzzing builds, which need speed.
function(compile_quickly_if_sanitized target)
  if(KESTREL_SANITIZE AND NOT KESTREL_FUZZ)
    target_compile_options(${target} PRIVATE -O0)
  endif()
endfunction()
