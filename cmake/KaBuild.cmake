# Compiler flags shared by every target of the project, and the helper that
# declares one of the three libraries.

set(KA_WARNING_FLAGS -Wall -Wextra -Wformat=2)
if(KA_WERROR)
  list(APPEND KA_WARNING_FLAGS -Werror)
endif()

set(KA_SANITIZE_FLAGS "")
if(KA_SANITIZE)
  set(KA_SANITIZE_FLAGS -fsanitize=address,undefined -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
  add_compile_options(${KA_SANITIZE_FLAGS})
  add_link_options(${KA_SANITIZE_FLAGS})
endif()

# ThreadSanitizer cannot share a build with AddressSanitizer: a preset of its own.
option(KA_TSAN "Build with ThreadSanitizer" OFF)
if(KA_TSAN)
  if(KA_SANITIZE)
    message(FATAL_ERROR "KA_TSAN and KA_SANITIZE exclude each other")
  endif()
  set(KA_SANITIZE_FLAGS -fsanitize=thread -fno-omit-frame-pointer)
  add_compile_options(${KA_SANITIZE_FLAGS})
  add_link_options(${KA_SANITIZE_FLAGS})
endif()

# Fuzzing instruments every library for coverage; the fuzz targets add the
# libFuzzer driver themselves.
if(KA_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "KA_FUZZ needs clang (configure with the fuzz preset)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# The libraries exported to consumers; KaInstall.cmake installs exactly these.
set_property(GLOBAL PROPERTY KA_EXPORTED_LIBRARIES "")

# ka_add_library(<name> SOURCES ... [DEPENDS ...] [PC_DESCRIPTION text])
# Declares a project library with its public include/ directory, adds it to
# the export set and records what its pkg-config file requires.
#
# The sources are compiled once, into the object library <name>_objects, with
# hidden visibility: the shared library exports only what its public headers
# mark (KABASE_API, KAI18N_API, KATYPEMGR_API). Tests of internal helpers link
# <name>_objects instead of the shared library, so they reach the helpers
# without the library exporting them.
function(ka_add_library name)
  cmake_parse_arguments(ARG "" "INCLUDE_DIR;PC_DESCRIPTION" "SOURCES;DEPENDS" ${ARGN})
  add_library(${name}_objects OBJECT ${ARG_SOURCES})
  set_target_properties(${name}_objects PROPERTIES
    POSITION_INDEPENDENT_CODE ON
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_include_directories(${name}_objects PUBLIC ${ARG_INCLUDE_DIR})
  target_compile_features(${name}_objects PUBLIC cxx_std_20)
  target_compile_options(${name}_objects PRIVATE ${KA_WARNING_FLAGS})
  # Calls between a library's own exported functions go direct, not through
  # its PLT: no program replaces a symbol of these libraries.
  target_compile_options(${name}_objects PRIVATE -fno-semantic-interposition)
  if(ARG_DEPENDS)
    target_link_libraries(${name}_objects PUBLIC ${ARG_DEPENDS})
  endif()

  add_library(${name} $<TARGET_OBJECTS:${name}_objects>)
  add_library(KaTypeMgr::${name} ALIAS ${name})
  target_include_directories(${name} PUBLIC
    $<BUILD_INTERFACE:${ARG_INCLUDE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
  target_compile_features(${name} PUBLIC cxx_std_20)
  if(ARG_DEPENDS)
    target_link_libraries(${name} PUBLIC ${ARG_DEPENDS})
  endif()
  # Every symbol a library needs comes from its companions or the C++
  # runtime; a missing one fails the link, not the engine at load time.
  # (clang's sanitizer runtimes are linked into programs only, so the fuzz
  # build cannot check this.)
  if(NOT KA_FUZZ)
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
  target_link_options(${name} PRIVATE
    -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/hide_std.map)
  set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/hide_std.map)
  # Installed, each library finds its companions in its own folder.
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    EXPORT_NAME ${name}
    INSTALL_RPATH "$ORIGIN")
  set_property(TARGET ${name} PROPERTY KA_INCLUDE_DIR "${ARG_INCLUDE_DIR}")
  set_property(TARGET ${name} PROPERTY KA_PC_DESCRIPTION "${ARG_PC_DESCRIPTION}")
  set_property(TARGET ${name} PROPERTY KA_PC_REQUIRES "${ARG_DEPENDS}")
  set_property(GLOBAL APPEND PROPERTY KA_EXPORTED_LIBRARIES ${name})
endfunction()

# ka_add_program(<name> SOURCES ... [LIBS ...]): a test, benchmark or tool
# program built with the project's warnings.
function(ka_add_program name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_compile_options(${name} PRIVATE ${KA_WARNING_FLAGS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS})
endfunction()
