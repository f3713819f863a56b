# Debian's hardening flags, as dpkg-buildflags gives them to every package:
# fortified string and memory functions, a stack protector, position
# independent programs, and a read-only relocation table bound at start
# (relro, bindnow). The build type keeps choosing the optimisation and the
# debug information, so -O and -g of dpkg-buildflags are left out, and
# so does -ffile-prefix-map, which would name this folder in every command
# line and keep ccache from sharing objects between checkouts. Sanitizer
# and fuzz builds bring their own instrumentation and go without.
option(VELMORIC_HARDENING "Build with the hardening flags of dpkg-buildflags" ON)
find_program(DPKG_BUILDFLAGS dpkg-buildflags)
if(NOT VELMORIC_HARDENING OR VELMORIC_SANITIZE OR VELMORIC_WITH_FUZZ)
  return()
endif()
if(EMSCRIPTEN OR NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
  # The flags are for ELF programs on Linux; wasm and other targets have their own.
  return()
endif()
if(NOT DPKG_BUILDFLAGS)
  message(STATUS "dpkg-buildflags not found: no hardening flags")
  return()
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
  # _FORTIFY_SOURCE needs an optimising build.
  message(STATUS "Debug build: no hardening flags")
  return()
endif()

function(velmoric_buildflags name out)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env DEB_BUILD_MAINT_OPTIONS=hardening=+all
                          ${DPKG_BUILDFLAGS} --get ${name}
                  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  list(FILTER flags EXCLUDE REGEX "^-(O.*|g|ffile-prefix-map=.*)$")
  set(${out} ${flags} PARENT_SCOPE)
endfunction()
velmoric_buildflags(CPPFLAGS cppflags)
velmoric_buildflags(CXXFLAGS cxxflags)
velmoric_buildflags(LDFLAGS ldflags)
add_compile_options(${cppflags} ${cxxflags})
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping copies in std::string's operator+ once the
  # string functions are fortified (its bug 105329), for code that has none.
  add_compile_options(-Wno-restrict)
endif()
add_link_options(${ldflags})
message(STATUS "Hardening flags of dpkg-buildflags: ${cppflags} ${cxxflags} ${ldflags}")
