# Runs as a CTest test: regenerates the character tables into a scratch
# directory and compares them with the committed ones. Skipped (exit 77 via
# the SKIP_RETURN_CODE property) when this Python has other Unicode data than
# the committed tables were made from, since then they differ by design.
execute_process(COMMAND ${KA_PYTHON} -c "import unicodedata; print(unicodedata.unidata_version)"
                OUTPUT_VARIABLE version OUTPUT_STRIP_TRAILING_WHITESPACE)
file(STRINGS ${KA_TABLES}/ka_unicode.inc data_line REGEX "^// Data: ")
if(NOT data_line MATCHES "Unicode ${version}\\.")
  message("tables are from '${data_line}', this Python has Unicode ${version}: skipped")
  execute_process(COMMAND ${CMAKE_COMMAND} -E false)
  cmake_language(EXIT 77)
endif()
set(scratch ${KA_WORK_DIR}/regenerated-tables)
file(REMOVE_RECURSE ${scratch})
execute_process(COMMAND ${KA_PYTHON} ${KA_GENERATOR} ${scratch} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "the generator failed")
endif()
foreach(name ka_unicode.inc ka_codesets.inc)
  execute_process(COMMAND ${CMAKE_COMMAND} -E compare_files ${scratch}/${name} ${KA_TABLES}/${name}
                  RESULT_VARIABLE differs)
  if(differs)
    message(FATAL_ERROR "i18n/tables/${name} differs from what i18n/tools/gen_tables.py makes; "
                        "regenerate it: python3 i18n/tools/gen_tables.py i18n/tables")
  endif()
endforeach()
