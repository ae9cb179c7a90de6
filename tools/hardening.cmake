# The hardening that Debian gives its packages: stack checks, checks of buffers of known size, position-independent
# programs, and loader tables that are read-only before the program runs.
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
add_compile_options(-Wformat -Werror=format-security -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
# Restrict the targets of indirect jumps.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64)$")
  add_compile_options(-fcf-protection)
elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
  add_compile_options(-mbranch-protection=standard)
endif()
# On arm64, clang supports this only since version 18.
if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang" OR CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64)$")
  add_compile_options(-fstack-clash-protection)
endif()
add_link_options(-Wl,-z,relro -Wl,-z,now $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie>)
