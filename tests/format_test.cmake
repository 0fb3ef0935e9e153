# Runs as a CTest test: every C++ file of the project follows .clang-format.
file(GLOB_RECURSE files
  ${KA_SOURCE_DIR}/base/*.cpp ${KA_SOURCE_DIR}/base/*.h
  ${KA_SOURCE_DIR}/i18n/src/*.cpp ${KA_SOURCE_DIR}/i18n/include/*.h
  ${KA_SOURCE_DIR}/src/*.cpp ${KA_SOURCE_DIR}/src/*.h ${KA_SOURCE_DIR}/include/*.h
  ${KA_SOURCE_DIR}/tests/*.cpp ${KA_SOURCE_DIR}/tests/*.h ${KA_SOURCE_DIR}/bench/*.cpp ${KA_SOURCE_DIR}/fuzz/*.cpp
  ${KA_SOURCE_DIR}/tools/*.cpp)
execute_process(COMMAND ${KA_CLANG_FORMAT} --dry-run --Werror ${files} RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "files above differ from clang-format's layout")
endif()
