# The build runs two programs that it builds itself, describe and nodal. A cross build runs native ones from
# KESTREL_NATIVE_TOOLS, or else runs its own with an emulator.
set(KESTREL_NATIVE_TOOLS "" CACHE PATH "Folder of a native describe and nodal, for cross builds")

if(CMAKE_CROSSCOMPILING AND NOT KESTREL_NATIVE_TOOLS AND NOT CMAKE_CROSSCOMPILING_EMULATOR)
  message(FATAL_ERROR
    "The build runs programs that it builds, but this machine cannot run those of a cross build. Give CMake one of:\n"
    "  -D CMAKE_CROSSCOMPILING_EMULATOR=PROGRAM  an emulator that runs them, such as qemu-aarch64-static, or\n"
    "  -D KESTREL_NATIVE_TOOLS=DIR               a folder with a native describe and nodal, such as build/release/bin"
  )
endif()

# Sets VARIABLE to the target of the tool or to the native program, for COMMAND and DEPENDS of add_custom_command.
function(get_built_tool variable tool)
  if(NOT CMAKE_CROSSCOMPILING OR NOT KESTREL_NATIVE_TOOLS)
    set(${variable} ${tool} PARENT_SCOPE)
    return()
  endif()
  set(program ${KESTREL_NATIVE_TOOLS}/${tool})
  if(NOT EXISTS ${program})
    message(FATAL_ERROR "KESTREL_NATIVE_TOOLS: ${program} does not exist. Build it with: scripts/build release ${tool}")
  endif()
  set(${variable} ${program} PARENT_SCOPE)
endfunction()
