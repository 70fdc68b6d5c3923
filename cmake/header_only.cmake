# Header-only libraries of the machine that builds, for the programs around the library. Of its
# include folder only these two may be seen: a cross compiler would find another system's headers
# beside them.
add_library(caixora_header_only INTERFACE)
foreach(header CLI/CLI.hpp nlohmann/json.hpp)
  get_filename_component(folder ${header} DIRECTORY)
  find_path(CAIXORA_${folder}_PARENT ${header} PATHS /usr/include /usr/local/include
    NO_CMAKE_FIND_ROOT_PATH)
  if(NOT CAIXORA_${folder}_PARENT)
    message(FATAL_ERROR "${header} is missing (Debian: libcli11-dev and nlohmann-json3-dev)")
  endif()
  file(COPY ${CAIXORA_${folder}_PARENT}/${folder} DESTINATION ${CMAKE_BINARY_DIR}/header_only)
endforeach()
target_include_directories(caixora_header_only SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/header_only)
