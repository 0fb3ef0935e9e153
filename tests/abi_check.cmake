# Compares the dynamic symbols that each installed library defines with the
# list checked in under abi/. An export that no public header declares, or a
# symbol that disappeared, fails here; the lists change only on purpose.
# Regenerate them with:  KA_ABI_UPDATE=1 ctest -R install.consumer
# (then review the diff and say in the commit why the interface changed).
#
# Included by install_test.cmake with `prefix` and KA_SOURCE_DIR set.
find_program(KA_NM NAMES nm REQUIRED)
foreach(lib kabase kai18n katypemgr)
  file(GLOB sofile ${prefix}/*/lib${lib}.so)
  if(NOT sofile)
    message(FATAL_ERROR "lib${lib}.so was not installed")
  endif()
  execute_process(COMMAND ${KA_NM} -D --defined-only --format=posix ${sofile}
                  OUTPUT_VARIABLE listing RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "nm failed on ${sofile}")
  endif()
  # "name type value size" per line; the name is what the interface is.
  string(REGEX REPLACE " [^\n]*" "" listing "${listing}")
  string(REPLACE "\n" ";" names "${listing}")
  list(REMOVE_ITEM names "")
  list(REMOVE_DUPLICATES names)
  list(SORT names)
  list(JOIN names "\n" actual)
  set(expected_file ${KA_SOURCE_DIR}/abi/lib${lib}.symbols)
  if("$ENV{KA_ABI_UPDATE}" STREQUAL "1")
    file(WRITE ${expected_file} "${actual}\n")
    message(STATUS "wrote ${expected_file}")
    continue()
  endif()
  file(STRINGS ${expected_file} expected)
  set(added ${names})
  list(REMOVE_ITEM added ${expected})
  set(removed ${expected})
  list(REMOVE_ITEM removed ${names})
  if(added OR removed)
    list(TRANSFORM added PREPEND "  + exported, not listed: ")
    list(TRANSFORM removed PREPEND "  - listed, not exported: ")
    list(JOIN added "\n" added_text)
    list(JOIN removed "\n" removed_text)
    message(FATAL_ERROR "lib${lib}.so exports other symbols than abi/lib${lib}.symbols:\n"
            "${added_text}\n${removed_text}\n"
            "(c++filt demangles them; if the change is intended, regenerate the list)")
  endif()
  list(LENGTH names count)
  message(STATUS "lib${lib}.so: ${count} exports, as listed")
endforeach()
