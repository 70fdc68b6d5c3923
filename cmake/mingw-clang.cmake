# As mingw-w64.cmake, with clang as the compiler over the headers and libraries of that GCC, whose
# folder clang does not find by itself when its name tells the thread model.
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
  OUTPUT_VARIABLE libgcc OUTPUT_STRIP_TRAILING_WHITESPACE)
get_filename_component(gcc_folder ${libgcc} DIRECTORY)
set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
string(JOIN " " CMAKE_CXX_FLAGS_INIT
  -isystem ${gcc_folder}/include/c++ -isystem ${gcc_folder}/include/c++/x86_64-w64-mingw32)
# The run-time libraries of the programs need threads; clang names none. The DLL takes none of it.
string(JOIN " " libraries -lstdc++ -lssp -lgcc_eh -lgcc -lpthread -lmingw32 -lmoldname -lmingwex
  -lmsvcrt -lkernel32)
set(CMAKE_CXX_STANDARD_LIBRARIES "-Wl,--start-group ${libraries} -Wl,--end-group" CACHE STRING "")
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -L${gcc_folder})
endforeach()
