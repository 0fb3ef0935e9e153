# Runs as a CTest test: install the build tree into a scratch prefix, then
# build and run a consumer project against the installed package, through
# find_package and through pkg-config.
cmake_minimum_required(VERSION 3.25)

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    list(JOIN ARGN " " shown)
    message(FATAL_ERROR "failed (${rc}): ${shown}")
  endif()
endfunction()

set(prefix ${KA_WORK_DIR}/prefix)
file(REMOVE_RECURSE ${KA_WORK_DIR})
run(${CMAKE_COMMAND} --install ${KA_BINARY_DIR} --prefix ${prefix})

# The installed libraries export exactly the checked-in interface.
include(${CMAKE_CURRENT_LIST_DIR}/abi_check.cmake)

# Each installed library finds its companions in its own folder: a program
# without a run path loads it by path, with no LD_LIBRARY_PATH.
unset(ENV{LD_LIBRARY_PATH})
file(GLOB_RECURSE installed_lib ${prefix}/*/libkatypemgr.so)
run(${KA_CXX_COMPILER} ${KA_CXX_FLAGS} ${KA_CONSUMER_DIR}/load_by_path.cpp -ldl
    -o ${KA_WORK_DIR}/load-by-path)
run(${KA_WORK_DIR}/load-by-path ${installed_lib})
find_program(ldd ldd)
if(ldd)
  execute_process(COMMAND ${ldd} ${installed_lib} OUTPUT_VARIABLE deps)
  foreach(companion kai18n kabase)
    if(NOT deps MATCHES "lib${companion}\\.so[^\n]*=> ${prefix}/")
      message(FATAL_ERROR "ldd does not find lib${companion} beside libkatypemgr.so:\n${deps}")
    endif()
  endforeach()
endif()

# CMake package, with the version the engine asks for.
list(JOIN KA_CXX_FLAGS " " flags)
run(${CMAKE_COMMAND} -S ${KA_CONSUMER_DIR} -B ${KA_WORK_DIR}/cmake-build -G ${KA_GENERATOR}
    -DCMAKE_CXX_COMPILER=${KA_CXX_COMPILER} -DCMAKE_PREFIX_PATH=${prefix}
    "-DCMAKE_CXX_FLAGS=${flags}" "-DCMAKE_EXE_LINKER_FLAGS=${flags}")
run(${CMAKE_COMMAND} --build ${KA_WORK_DIR}/cmake-build)
run(${KA_WORK_DIR}/cmake-build/consumer)

# A request for another minor release must not find this package.
run(${CMAKE_COMMAND} -S ${KA_CONSUMER_DIR} -B ${KA_WORK_DIR}/cmake-build-wrong -G ${KA_GENERATOR}
    -DCMAKE_CXX_COMPILER=${KA_CXX_COMPILER} -DCMAKE_PREFIX_PATH=${prefix}
    -DKA_REQUESTED_VERSION=12.1 -DKA_EXPECT_MISSING=ON)

# pkg-config: compile and link the same program by hand.
find_program(pkgconfig pkg-config REQUIRED)
file(GLOB_RECURSE pcfile ${prefix}/*/katypemgr.pc)
if(NOT pcfile)
  message(FATAL_ERROR "katypemgr.pc was not installed")
endif()
get_filename_component(pcdir ${pcfile} DIRECTORY)
set(ENV{PKG_CONFIG_PATH} ${pcdir})
execute_process(COMMAND ${pkgconfig} --cflags --libs katypemgr
                OUTPUT_VARIABLE pcflags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "pkg-config does not know katypemgr")
endif()
separate_arguments(pcflags UNIX_COMMAND "${pcflags}")
run(${KA_CXX_COMPILER} ${KA_CXX_FLAGS} ${KA_CONSUMER_DIR}/main.cpp ${pcflags}
    -o ${KA_WORK_DIR}/pc-consumer)
set(ENV{LD_LIBRARY_PATH} ${pcdir}/..)
run(${KA_WORK_DIR}/pc-consumer)
